#include "engine/curves/offset_entity.hpp"

#include <cmath>

#include "engine/curves/edit_curve.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/line.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/ray.hpp"
#include "engine/entities/xline.hpp"
#include "math/curves/intersect.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

/// Deviation of the spline that stands for the parallel of a curve, as part of its size.
constexpr double kFitTolerance = 1e-6;
constexpr int kMostHalvings = 8;
/// Chords of a curve whose parallel folds back.
constexpr std::size_t kMostChords = 4096;

/// Left of the direction counts in plan; in an object plane that is seen from behind it is the other way round.
double planeSign(const Entity& entity) {
    return inWorldPlane(entity) || objectPlane(entity).plane_determinant() > 0.0 ? 1.0 : -1.0;
}

/// The parallel of one piece of a curve as cubics.
class ParallelFit {
public:
    ParallelFit(const CurvePiece& piece, double distance, double tolerance)
        : piece_(piece), d_(distance), tolerance_(tolerance) {}

    std::vector<math::Cubic> cubics;
    bool foldsBack = false;

    void run() { fit(0.0, 1.0, 0); }

private:
    Vector2 pointAt(double t) const {
        return piece_.pointAt(t) + piece_.tangentAt(t).normalized().perpendicular() * d_;
    }
    Vector2 speedAt(double t) const {
        constexpr double kStep = 1e-5;
        if (t < kStep) return (pointAt(t + kStep) * 4.0 - pointAt(t) * 3.0 - pointAt(t + 2.0 * kStep)) / (2.0 * kStep);
        if (t > 1.0 - kStep)
            return (pointAt(t) * 3.0 - pointAt(t - kStep) * 4.0 + pointAt(t - 2.0 * kStep)) / (2.0 * kStep);
        return (pointAt(t + kStep) - pointAt(t - kStep)) / (2.0 * kStep);
    }
    void fit(double t0, double t1, int depth) {
        const double third = (t1 - t0) / 3.0;
        const Vector2 v0 = speedAt(t0);
        const Vector2 v1 = speedAt(t1);
        const Vector2 vm = speedAt((t0 + t1) / 2.0);
        for (const auto& [v, t] : {std::pair{v0, t0}, std::pair{v1, t1}, std::pair{vm, (t0 + t1) / 2.0}})
            if (v.dot(piece_.tangentAt(t)) <= 0.0) foldsBack = true;
        const Vector2 a = pointAt(t0);
        const Vector2 b = pointAt(t1);
        const math::Cubic cubic{a, a + v0 * third, b - v1 * third, b};
        bool good = true;
        for (const double s : {0.25, 0.5, 0.75})
            good = good && math::cubicPoint(cubic, s).distance_to(pointAt(t0 + (t1 - t0) * s)) <= tolerance_;
        if (good || foldsBack || depth >= kMostHalvings) {
            cubics.push_back(cubic);
            return;
        }
        fit(t0, (t0 + t1) / 2.0, depth + 1);
        fit((t0 + t1) / 2.0, t1, depth + 1);
    }

    const CurvePiece& piece_;
    double d_;
    double tolerance_;
};

std::vector<std::unique_ptr<Entity>> polylinesAlong(const std::vector<math::OffsetPolyline>& parts,
                                                    const Entity& like) {
    std::vector<std::unique_ptr<Entity>> out;
    const auto* source = dynamic_cast<const PolylineEntity*>(&like);
    const bool wide = source != nullptr && source->hasWidths();
    for (const math::OffsetPolyline& part : parts) {
        auto polyline = std::make_unique<PolylineEntity>(part.points, part.closed);
        polyline->copyCommonFrom(like);
        for (std::size_t i = 0; i < part.points.size(); ++i) polyline->setBulge(i, part.bulges[i]);
        if (source != nullptr) polyline->ltgen = source->ltgen;
        for (std::size_t i = 0; wide && i < part.sources.size(); ++i)
            polyline->setWidths(i, source->startWidth(part.sources[i]), source->endWidth(part.sources[i]));
        polyline->setHandle(0);
        out.push_back(std::move(polyline));
    }
    return out;
}

std::vector<std::unique_ptr<Entity>> offsetCurve(const Entity& entity, double distance, math::OffsetGap gap) {
    std::vector<std::unique_ptr<Entity>> out;
    const auto curve = EditCurve::of(entity);
    if (!curve) return out;
    math::Bounds2 box;
    for (const CurvePiece& piece : curve->pieces()) box.expand(piece.bounds());
    const double size = box.width() + box.height();
    std::vector<math::Cubic> cubics;
    bool foldsBack = false;
    for (const CurvePiece& piece : curve->pieces()) {
        if (piece.element.p == piece.from && piece.element.kind != PathElement::Kind::Arc) continue;
        ParallelFit fit(piece, distance, kFitTolerance * size);
        fit.run();
        foldsBack = foldsBack || fit.foldsBack;
        // A corner of the source leaves a gap.
        if (!cubics.empty() && cubics.back()[3].distance_to(fit.cubics.front()[0]) > 10.0 * kFitTolerance * size)
            foldsBack = true;
        cubics.insert(cubics.end(), fit.cubics.begin(), fit.cubics.end());
    }
    if (cubics.empty()) return out;
    if (foldsBack) {
        // Chopped finely, but into no more chords than are quick to work with.
        const std::size_t chords = std::min<std::size_t>(curve->pieces().size() * 64, kMostChords);
        std::vector<Vector2> points;
        for (std::size_t i = 0; i <= chords; ++i)
            points.push_back(curve->pointAt(curve->end() * static_cast<double>(i) / static_cast<double>(chords)));
        if (curve->closed()) points.pop_back();
        return polylinesAlong(math::offsetPolyline(points, {}, curve->closed(), distance, gap), entity);
    }
    for (std::size_t i = 1; i < cubics.size(); ++i) cubics[i][0] = cubics[i - 1][3];
    if (curve->closed()) cubics.back()[3] = cubics.front()[0];
    out.push_back(splineAlong(cubics, curve->closed(), entity));
    out.back()->setNormal({0, 0, 1});
    return out;
}

}  // namespace

bool canOffset(const Entity& entity) {
    return entity.type() != EntityType::Polyline3D && EditCurve::of(entity).has_value();
}

std::optional<double> offsetDistanceTo(const Entity& entity, const Vector2& p) {
    const auto curve = EditCurve::of(entity);
    if (!curve || !p.is_finite()) return std::nullopt;
    const double u = curve->nearest(p);
    Vector2 foot = curve->pointAt(u);
    const double gone = p.distance_to(foot);
    if (!(gone > 1e-12 * curve->scale())) return std::nullopt;
    const auto& pieces = curve->pieces();
    const double whole = std::round(u);
    const auto corner = static_cast<std::size_t>(whole);
    const bool atCorner = !curve->isUnbounded() && pieces.size() > 1 && std::abs(u - whole) < 1e-9 &&
                          (curve->closed() || (corner > 0 && corner < pieces.size()));
    if (atCorner) {
        // Left of a corner to the left is left of both sides, left of one to the right is left of either.
        const CurvePiece& in = pieces[corner > 0 ? corner - 1 : pieces.size() - 1];
        const CurvePiece& next = pieces[corner < pieces.size() ? corner : 0];
        const Vector2 a = in.tangentAt(1.0).normalized();
        const Vector2 b = next.tangentAt(0.0).normalized();
        const double la = a.cross(p - foot);
        const double lb = b.cross(p - foot);
        const bool left = a.cross(b) > 0.0 ? la > 0.0 && lb > 0.0 : la > 0.0 || lb > 0.0;
        // The parallel of a straight corner that runs through p is the one of the farther side.
        const bool outer = (a.cross(b) > 0.0) != left;
        const double reach =
            outer && in.isStraight() && next.isStraight() ? std::max(std::abs(la), std::abs(lb)) : gone;
        return left ? reach : -reach;
    }
    const Vector2 along = curve->tangentAt(u).normalized();
    const double side = along.cross(p - foot);
    // Beyond the end of a line its prolongation counts.
    const bool straight = pieces.size() == 1 && pieces[0].isStraight();
    if (straight && !(std::abs(side) > 1e-12 * curve->scale())) return std::nullopt;
    if (pieces.size() == 1 && pieces[0].isCircular()) {
        const double radius = pieces[0].element.a.length();
        const double inwards = radius - p.distance_to(pieces[0].element.center);
        return along.cross(pieces[0].element.center - foot) > 0.0 ? inwards : -inwards;
    }
    return straight ? side : std::copysign(gone, side);
}

std::vector<std::unique_ptr<Entity>> offsetEntity(const Entity& entity, double distance, math::OffsetGap gap) {
    std::vector<std::unique_ptr<Entity>> out;
    if (!canOffset(entity) || !std::isfinite(distance) || distance == 0.0) return out;
    const auto shift = [&](Vector2& p, const Vector2& dir) { p += dir.normalized().perpendicular() * distance; };
    std::unique_ptr<Entity> copy = entity.clone();
    copy->setHandle(0);
    switch (entity.type()) {
        case EntityType::Line: {
            auto& line = static_cast<LineEntity&>(*copy);
            const Vector2 dir = line.end - line.start;
            shift(line.start, dir);
            shift(line.end, dir);
            break;
        }
        case EntityType::Xline:
            shift(static_cast<XlineEntity&>(*copy).base, static_cast<XlineEntity&>(*copy).dir);
            break;
        case EntityType::Ray:
            shift(static_cast<RayEntity&>(*copy).origin, static_cast<RayEntity&>(*copy).dir);
            break;
        case EntityType::Circle:
        case EntityType::Arc: {
            double& radius = entity.type() == EntityType::Circle ? static_cast<CircleEntity&>(*copy).radius
                                                                 : static_cast<ArcEntity&>(*copy).radius;
            const double size = radius;
            radius -= distance * planeSign(entity);
            if (!(radius > 1e-12 * size)) return out;
            break;
        }
        case EntityType::Polyline: {
            const auto& polyline = static_cast<const PolylineEntity&>(entity);
            return polylinesAlong(math::offsetPolyline(polyline.vertices, polyline.bulges, polyline.closed,
                                                       distance * planeSign(entity), gap),
                                  entity);
        }
        default:
            return offsetCurve(entity, distance, gap);
    }
    out.push_back(std::move(copy));
    return out;
}

}  // namespace kova::engine
