#include "engine/entities/solid2d.hpp"

#include "engine/model/object_plane.hpp"
#include "engine/model/outline.hpp"

namespace kova::engine {

using math::Vector2;

std::vector<Vector2> Solid2DEntity::outline() const {
    if (isTriangle()) return {corners[0], corners[1], corners[2]};
    return {corners[0], corners[1], corners[3], corners[2]};
}

Path Solid2DEntity::path() const {
    Path path;
    path.polygon(outline());
    return path;
}

math::Bounds2 Solid2DEntity::bounds() const {
    math::Bounds2 box;
    for (const Vector2& p : corners) box.expand(planFromObject(*this, p));
    return box;
}

void Solid2DEntity::transform(const math::Matrix4& m) {
    const math::Matrix4 plane = transformObjectPlane(*this, m);
    for (Vector2& p : corners) p = plane.transform_point(p);
}

double Solid2DEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }
Vector2 Solid2DEntity::nearestPoint(const Vector2& p) const { return nearestOnOutline(*this, p); }

std::vector<Vector2> Solid2DEntity::gripPoints() const {
    std::vector<Vector2> grips;
    for (const Vector2& p : corners) grips.push_back(planFromObject(*this, p));
    return grips;
}

void Solid2DEntity::moveGrip(std::size_t index, const Vector2& to) {
    const auto p = objectFromPlan(*this, to);
    if (!p || index > 3) return;
    const bool triangle = isTriangle();
    corners[index] = *p;
    if (triangle && index >= 2) corners[2] = corners[3] = *p;
}

void Solid2DEntity::describe(FieldVisitor& v) {
    std::vector<Vector2> list(corners.begin(), corners.end());
    v.points("corners", list);
    if (v.reading() && !list.empty())
        for (std::size_t i = 0; i < 4; ++i) corners[i] = list[std::min(i, list.size() - 1)];
    v.boolean("trace", trace);
}

void Solid2DEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    emitFromObjectPlane(*this, sink, [&](OutlineSink& plane) { plane.fill(path(), style); });
}

std::size_t Solid2DEntity::sizeInBytes() const { return sizeof *this + extrasSize(); }

}  // namespace kova::engine
