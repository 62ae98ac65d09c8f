#include <cmath>

#include "engine/kinds/all.hpp"
#include "engine/model/object_plane.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

using math::Matrix4;
using math::Vector2;
using math::Vector3;

namespace {

/// How far the arcs that stand for an elliptic arc may leave it, as a part of the ellipse's size.
constexpr double kArcTolerance = 1e-5;
constexpr int kMostHalvings = 8;

template <class... Kinds>
std::unique_ptr<Entity> makeOneOf(EntityType type) {
    std::unique_ptr<Entity> made;
    (void)((Kinds::kType == type && (made = std::make_unique<Kinds>())) || ...);
    return made;
}

/// A circle or arc (center, radius and angles in the object plane of `source`) as the ellipse that m makes of it.
std::unique_ptr<Entity> ellipseOf(const Entity& source, const Vector2& center, double radius, double from, double to,
                                  const Matrix4& m) {
    auto ellipse = std::make_unique<EllipseEntity>();
    ellipse->copyCommonFrom(source);
    ellipse->setHandle(source.handle());
    const Matrix4 toWorld = m * objectPlane(source);
    const Vector3 moved = toWorld.transform_point(Vector3(center));
    ellipse->center = moved.xy();
    ellipse->elevation = moved.z;
    ellipse->startParam = from;
    ellipse->endParam = to;
    const bool plan = isPlanar(m) && inWorldPlane(source);
    const Vector3 up = plan ? Vector3{0, 0, 1} : toWorld.transform_direction(Vector3{0, 0, 1});
    transformExtrusion(*ellipse, m);
    ellipse->setConjugate(toWorld.transform_direction(Vector3{radius, 0, 0}),
                          toWorld.transform_direction(Vector3{0, radius, 0}), up);
    return ellipse;
}

/// Bulges and break points of arcs that follow an elliptic arc within the tolerance.
struct ArcChain {
    std::vector<Vector2> points;  ///< between the ends
    std::vector<double> bulges;   ///< one more than the points
};

/// Appends arcs that follow the curve between the parameters t0 and t1, where it has the points a and b.
void followCurve(const math::EllipticArc& curve, double t0, const Vector2& a, double t1, const Vector2& b,
                 double allowed, int halvings, ArcChain& chain) {
    const double middle = 0.5 * (t0 + t1);
    const Vector2 between = curve.pointAt(middle);
    const double bulge = math::bulgeThrough(a, between, b);
    const auto arc = math::arcFromBulge(a, b, bulge);
    const auto follows = [&](double t) {
        const Vector2 p = curve.pointAt(t);
        return (arc ? std::abs(p.distance_to(arc->center) - arc->radius)
                    : p.distance_to(math::closestOnSegment(p, a, b))) <= allowed;
    };
    // The whole arc is never taken as it is: three points in line say nothing about what lies between.
    const bool whole = halvings == kMostHalvings;
    if (halvings == 0 || (!whole && follows(0.5 * (t0 + middle)) && follows(0.5 * (middle + t1)))) {
        if (!chain.bulges.empty()) chain.points.push_back(a);
        chain.bulges.push_back(bulge);
        return;
    }
    followCurve(curve, t0, a, middle, between, allowed, halvings - 1, chain);
    followCurve(curve, middle, between, t1, b, allowed, halvings - 1, chain);
}

ArcChain arcsAlong(const math::EllipticArc& curve, const Vector2& from, const Vector2& to) {
    ArcChain chain;
    followCurve(curve, curve.t0, from, curve.t1, to, kArcTolerance * std::max(curve.u.length(), curve.v.length()),
                kMostHalvings, chain);
    return chain;
}

/// A polyline with arcs under a map of its plane that makes ellipses of them: every arc becomes a chain of arcs that
/// keeps the shape within 1e-5 of the arc's size; widths run on evenly along the chain.
std::unique_ptr<Entity> polylineInArcs(const PolylineEntity& source, const Matrix4& m) {
    auto result = std::make_unique<PolylineEntity>(source);
    const Matrix4 plane = transformObjectPlane(*result, m);
    const double scale = std::sqrt(std::abs(plane.plane_determinant()));
    const std::size_t n = source.vertices.size();
    const std::size_t segments = source.segmentCount();
    result->vertices.clear();
    result->bulges.clear();
    result->startWidths.clear();
    result->endWidths.clear();
    std::vector<std::int32_t> newIndex(n);
    for (std::size_t i = 0; i < n; ++i) {
        newIndex[i] = static_cast<std::int32_t>(result->vertices.size());
        const Vector2 a = plane.transform_point(source.vertices[i]);
        const double w0 = source.startWidth(i) * scale;
        const double w1 = source.endWidth(i) * scale;
        const auto arc =
            i < segments ? math::arcFromBulge(source.vertices[i], source.segmentEnd(i), source.bulge(i)) : std::nullopt;
        if (!arc) {
            result->addVertex(a, 0.0, w0, w1);
            continue;
        }
        math::EllipticArc curve;
        curve.center = plane.transform_point(arc->center);
        curve.u = plane.transform_direction(Vector2{arc->radius, 0.0});
        curve.v = plane.transform_direction(Vector2{0.0, arc->radius});
        curve.t0 = arc->start;
        curve.t1 = arc->end();
        const ArcChain chain = arcsAlong(curve, a, plane.transform_point(source.segmentEnd(i)));
        const std::size_t parts = chain.bulges.size();
        for (std::size_t k = 0; k < parts; ++k) {
            const auto width = [&](std::size_t j) {
                return w0 + (w1 - w0) * static_cast<double>(j) / static_cast<double>(parts);
            };
            result->addVertex(k == 0 ? a : chain.points[k - 1], chain.bulges[k], width(k), width(k + 1));
        }
    }
    for (Vector2& p : result->fit) p = plane.transform_point(p);
    for (PolylineRecord& record : result->records) {
        if (record.vertex >= 0 && static_cast<std::size_t>(record.vertex) < n)
            record.vertex = newIndex[static_cast<std::size_t>(record.vertex)];
        record.tangent = math::normalizeAngle(plane.transform_direction(math::unitAt(record.tangent)).angle());
    }
    return result;
}

/// Does m keep circles of the entity's plane circles?
bool keepsCircles(const Entity& entity, const Matrix4& m) {
    if (isPlanar(m) && inWorldPlane(entity)) return math::planeParts(m).uniform;
    const Matrix4 toWorld = m * objectPlane(entity);
    const Vector3 x = toWorld.transform_direction(Vector3{1, 0, 0});
    const Vector3 y = toWorld.transform_direction(Vector3{0, 1, 0});
    const double size = std::max(x.length(), y.length());
    return std::abs(x.length() - y.length()) <= 1e-9 * size && std::abs(x.dot(y)) <= 1e-9 * size * size;
}

}  // namespace

std::unique_ptr<Entity> makeEntity(EntityType type) {
    return makeOneOf<LineEntity, CircleEntity, ArcEntity, PolylineEntity, PointEntity, TextEntity, MTextEntity,
                     HatchEntity, DimensionEntity, BlockReferenceEntity, ImageEntity, SplineEntity, EllipseEntity,
                     XlineEntity, RayEntity, LeaderEntity, MLineEntity, MLeaderEntity, TableEntity, WipeoutEntity,
                     RegionEntity, ToleranceEntity, AttributeDefinitionEntity, ViewportEntity, Face3DEntity,
                     Polyline3DEntity, MeshEntity, Solid3DEntity, Solid2DEntity, PolyfaceEntity, ShapeEntity>(type);
}

bool canTransform(const Entity& entity, const Matrix4& m) {
    return entity.type() != EntityType::Solid3D || static_cast<const Solid3DEntity&>(entity).canTransform(m);
}

std::unique_ptr<Entity> transformedEntity(const Entity& entity, const Matrix4& m) {
    if (entity.type() == EntityType::Circle && !keepsCircles(entity, m)) {
        const auto& circle = static_cast<const CircleEntity&>(entity);
        return ellipseOf(circle, circle.center, std::abs(circle.radius), 0.0, math::kTwoPi, m);
    }
    if (entity.type() == EntityType::Arc && !keepsCircles(entity, m)) {
        const auto& arc = static_cast<const ArcEntity&>(entity);
        return ellipseOf(arc, arc.center, arc.radius, arc.startAngle, arc.startAngle + arc.sweep(), m);
    }
    if (entity.type() == EntityType::Polyline && !keepsCircles(entity, m)) {
        const auto& polyline = static_cast<const PolylineEntity&>(entity);
        if (polyline.hasBulges()) return polylineInArcs(polyline, m);
    }
    std::unique_ptr<Entity> copy = entity.clone();
    copy->transform(m);
    return copy;
}

}  // namespace kova::engine
