#include "engine/entities/face3d.hpp"

#include "engine/model/outline.hpp"
#include "engine/model/frame_lines.hpp"

namespace kova::engine {

using math::Vector2;
using math::Vector3;

Path Face3DEntity::edges() const {
    Path path;
    for (std::size_t i = 0; i < 4; ++i) {
        const Vector3& a = corners[i];
        const Vector3& b = corners[(i + 1) % 4];
        if (!isEdgeVisible(i) || (i == 2 && isTriangle())) continue;
        path.moveTo(a.xy()).lineTo(b.xy());
    }
    return path;
}

math::Bounds2 Face3DEntity::bounds() const {
    math::Bounds2 box;
    for (const Vector3& p : corners) box.expand(p.xy());
    return box;
}

void Face3DEntity::transform(const math::Matrix4& m) {
    for (Vector3& p : corners) p = m.transform_point(p);
}

double Face3DEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }

Vector2 Face3DEntity::nearestPoint(const Vector2& p) const {
    const Path shown = edges();
    if (!shown.empty()) return nearestOnPath(shown, p);
    // A face all of whose edges are hidden is still to be found.
    Path outline;
    outline.moveTo(corners[0].xy()).lineTo(corners[1].xy()).lineTo(corners[2].xy()).lineTo(corners[3].xy()).close();
    return nearestOnPath(outline, p);
}

std::vector<Vector2> Face3DEntity::gripPoints() const {
    std::vector<Vector2> grips;
    for (const Vector3& p : corners) grips.push_back(p.xy());
    return grips;
}

void Face3DEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (index > 3) return;
    const bool triangle = isTriangle();
    corners[index] = Vector3(to, corners[index].z);
    if (triangle && index >= 2) corners[2] = corners[3] = corners[index];
}

void Face3DEntity::describe(FieldVisitor& v) {
    std::vector<Vector3> list(corners.begin(), corners.end());
    v.points("vertices", list);
    if (v.reading() && !list.empty())
        // Three corners are a triangle, which repeats the third.
        for (std::size_t i = 0; i < 4; ++i) corners[i] = list[std::min(i, list.size() - 1)];
    v.integer("edgeFlags", edgeFlags);
}

void Face3DEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    const Path shown = edges();
    if (!shown.empty()) sink.stroke(shown, style);
    if (!FrameLines::emitted(FrameKind::Control)) return;
    Path hidden;
    for (std::size_t i = 0; i < 4; ++i) {
        if (isEdgeVisible(i) || (i == 2 && isTriangle())) continue;
        hidden.moveTo(corners[i].xy()).lineTo(corners[(i + 1) % 4].xy());
    }
    if (!hidden.empty()) sink.stroke(hidden, style);
}

std::size_t Face3DEntity::sizeInBytes() const { return sizeof *this + extrasSize(); }

}  // namespace kova::engine
