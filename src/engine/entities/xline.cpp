#include "engine/entities/xline.hpp"

#include "engine/entities/construction_line.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/model/outline.hpp"

namespace kova::engine {

using math::Vector2;

math::Bounds2 XlineEntity::bounds() const {
    math::Bounds2 box;
    box.expand(base);
    return box;
}

void XlineEntity::transform(const math::Matrix4& m) {
    const math::Vector3 moved = m.transform_point(math::Vector3(base, elevation));
    base = moved.xy();
    elevation = moved.z;
    dir = transformedDirection(dir, m);
    transformExtrusion(*this, m);
}

double XlineEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }
Vector2 XlineEntity::nearestPoint(const Vector2& p) const { return nearestOnUnbounded(base, dir, true, p); }
std::vector<Vector2> XlineEntity::gripPoints() const { return {base, base + dir}; }

void XlineEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (index == 0) base = to;
    if (index == 1 && to.distance_to(base) >= math::kTolerance) dir = to - base;
}

void XlineEntity::describe(FieldVisitor& v) {
    v.point("base", base);
    v.point("dir", dir);
}

void XlineEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    const Vector2 unit = unitDirection(dir);
    if (unit != Vector2{}) sink.unbounded(base, unit, true, style);
}

std::size_t XlineEntity::sizeInBytes() const { return sizeof *this + extrasSize(); }

}  // namespace kova::engine
