#include "engine/entities/arc.hpp"

#include "engine/model/object_plane.hpp"
#include "engine/model/outline.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

/// A sweep this near to a full turn is one.
constexpr double kFullTurn = math::kTwoPi - 1e-12;

}  // namespace

math::Bounds2 ArcEntity::bounds() const {
    if (!inWorldPlane(*this)) return outlineBounds(*this);
    return math::boundsOf(math::EllipticArc{center, {radius, 0.0}, {0.0, radius}, startAngle, startAngle + sweep()});
}

void ArcEntity::transform(const math::Matrix4& m) {
    const math::Matrix4 plane = transformObjectPlane(*this, m);
    const bool turned = plane.m[0] <= 0.0 || plane.m[4] != 0.0 || plane.m[1] != 0.0 || plane.m[5] <= 0.0;
    const double turn = sweep();
    const double det = plane.plane_determinant();
    center = plane.transform_point(center);
    radius *= std::sqrt(std::abs(det));
    if (!turned && plane.m[0] == plane.m[5]) return;
    const auto image = [&](double angle) {
        return math::normalizeAngle(plane.transform_direction(math::unitAt(angle)).angle());
    };
    const double first = image(startAngle);
    const double last = image(endAngle);
    startAngle = det < 0.0 ? last : first;
    endAngle = det < 0.0 ? first : last;
    if (turn >= kFullTurn) endAngle = startAngle;
}

double ArcEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }

Vector2 ArcEntity::nearestPoint(const Vector2& p) const {
    if (!inWorldPlane(*this)) return nearestOnOutline(*this, p);
    return math::closestOnArc(p, center, radius, startAngle, endAngle);
}

std::vector<Vector2> ArcEntity::gripPoints() const {
    std::vector<Vector2> grips{startPoint(), midPoint(), endPoint(), center};
    for (Vector2& p : grips) p = planFromObject(*this, p);
    return grips;
}

void ArcEntity::moveGrip(std::size_t index, const Vector2& to) {
    const auto p = objectFromPlan(*this, to);
    if (!p || index > 3) return;
    if (index == 3) {
        center = *p;
        return;
    }
    // The other two of start, middle and end stay where they are.
    const auto arc =
        math::arcThrough(index == 0 ? *p : startPoint(), index == 1 ? *p : midPoint(), index == 2 ? *p : endPoint());
    if (!arc) return;
    center = arc->center;
    radius = arc->radius;
    startAngle = math::normalizeAngle(arc->sweep > 0.0 ? arc->start : arc->end());
    endAngle = math::normalizeAngle(arc->sweep > 0.0 ? arc->end() : arc->start);
}

void ArcEntity::describe(FieldVisitor& v) {
    v.point("center", center);
    v.length("radius", radius);
    v.angle("startAngle", startAngle);
    v.angle("endAngle", endAngle);
}

void ArcEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    emitFromObjectPlane(*this, sink, [&](OutlineSink& plane) {
        StrokeOptions options;
        options.patternThroughVertices = true;
        plane.stroke(Path().arc(center, radius, startAngle, startAngle + sweep()), style, options);
    });
}

std::size_t ArcEntity::sizeInBytes() const { return sizeof *this + extrasSize(); }

}  // namespace kova::engine
