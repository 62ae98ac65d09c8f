#include "engine/entities/circle.hpp"

#include "engine/model/object_plane.hpp"
#include "engine/model/outline.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

using math::Vector2;

math::Bounds2 CircleEntity::bounds() const {
    if (!inWorldPlane(*this)) return outlineBounds(*this);
    const double r = std::abs(radius);
    math::Bounds2 box;
    box.expand(center - Vector2{r, r});
    box.expand(center + Vector2{r, r});
    return box;
}

void CircleEntity::transform(const math::Matrix4& m) {
    const math::Matrix4 plane = transformObjectPlane(*this, m);
    center = plane.transform_point(center);
    radius *= std::sqrt(std::abs(plane.plane_determinant()));
}

double CircleEntity::distanceTo(const Vector2& p) const {
    if (!inWorldPlane(*this)) return p.distance_to(nearestPoint(p));
    return std::abs(p.distance_to(center) - std::abs(radius));
}

Vector2 CircleEntity::nearestPoint(const Vector2& p) const {
    if (!inWorldPlane(*this)) return nearestOnOutline(*this, p);
    return math::closestOnArc(p, center, std::abs(radius), 0.0, math::kTwoPi);
}

std::vector<Vector2> CircleEntity::gripPoints() const {
    std::vector<Vector2> grips{center, center + Vector2{radius, 0}, center + Vector2{0, radius},
                               center - Vector2{radius, 0}, center - Vector2{0, radius}};
    for (Vector2& p : grips) p = planFromObject(*this, p);
    return grips;
}

void CircleEntity::moveGrip(std::size_t index, const Vector2& to) {
    const auto p = objectFromPlan(*this, to);
    if (!p || index > 4) return;
    if (index == 0) {
        center = *p;
        return;
    }
    const double r = p->distance_to(center);
    if (r >= math::kTolerance) radius = r;
}

void CircleEntity::describe(FieldVisitor& v) {
    v.point("center", center);
    v.length("radius", radius);
}

void CircleEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    emitFromObjectPlane(*this, sink, [&](OutlineSink& plane) {
        StrokeOptions options;
        options.patternThroughVertices = true;
        plane.stroke(Path().arc(center, std::abs(radius), 0.0, math::kTwoPi).close(), style, options);
    });
}

std::size_t CircleEntity::sizeInBytes() const { return sizeof *this + extrasSize(); }

}  // namespace kova::engine
