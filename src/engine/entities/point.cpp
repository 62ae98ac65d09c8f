#include "engine/entities/point.hpp"

#include "engine/model/object_plane.hpp"
#include "engine/model/outline.hpp"

namespace kova::engine {

using math::Vector2;

math::Bounds2 PointEntity::bounds() const {
    math::Bounds2 box;
    box.expand(position);
    return box;
}

void PointEntity::transform(const math::Matrix4& m) {
    const math::Vector3 moved = m.transform_point(math::Vector3(position, elevation));
    position = moved.xy();
    elevation = moved.z;
    transformExtrusion(*this, m);
}

double PointEntity::distanceTo(const Vector2& p) const { return p.distance_to(position); }
Vector2 PointEntity::nearestPoint(const Vector2& /*p*/) const { return position; }
std::vector<Vector2> PointEntity::gripPoints() const { return {position}; }

void PointEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (index == 0) position = to;
}

void PointEntity::describe(FieldVisitor& v) { v.point("", position); }
void PointEntity::emit(OutlineSink& sink, const OutlineStyle& style) const { sink.point(position, style); }
std::size_t PointEntity::sizeInBytes() const { return sizeof *this + extrasSize(); }

}  // namespace kova::engine
