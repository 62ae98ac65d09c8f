#include "engine/entities/ray.hpp"

#include "engine/entities/construction_line.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/model/outline.hpp"

namespace kova::engine {

using math::Vector2;

math::Bounds2 RayEntity::bounds() const {
    math::Bounds2 box;
    box.expand(origin);
    return box;
}

void RayEntity::transform(const math::Matrix4& m) {
    const math::Vector3 moved = m.transform_point(math::Vector3(origin, elevation));
    origin = moved.xy();
    elevation = moved.z;
    dir = transformedDirection(dir, m);
    transformExtrusion(*this, m);
}

double RayEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }
Vector2 RayEntity::nearestPoint(const Vector2& p) const { return nearestOnUnbounded(origin, dir, false, p); }
std::vector<Vector2> RayEntity::gripPoints() const { return {origin, origin + dir}; }

void RayEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (index == 0) origin = to;
    if (index == 1 && to.distance_to(origin) >= math::kTolerance) dir = to - origin;
}

void RayEntity::describe(FieldVisitor& v) {
    v.point("origin", origin);
    v.point("dir", dir);
}

void RayEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    const Vector2 unit = unitDirection(dir);
    if (unit != Vector2{}) sink.unbounded(origin, unit, false, style);
}

std::size_t RayEntity::sizeInBytes() const { return sizeof *this + extrasSize(); }

}  // namespace kova::engine
