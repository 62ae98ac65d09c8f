#include "engine/entities/polyline3d.hpp"

#include "engine/model/pick_distance.hpp"
#include "engine/model/outline.hpp"
#include "engine/model/frame_lines.hpp"

namespace kova::engine {

using math::Vector2;
using math::Vector3;

Path Polyline3DEntity::path() const {
    Path path;
    path.reserve(vertices.size() + 1);
    for (const Vector3& p : vertices) {
        if (path.empty())
            path.moveTo(p.xy());
        else
            path.lineTo(p.xy());
    }
    if (closed && vertices.size() > 2) path.close();
    return path;
}

double Polyline3DEntity::length() const {
    double sum = 0.0;
    for (std::size_t i = 1; i < vertices.size(); ++i) sum += (vertices[i] - vertices[i - 1]).length();
    if (closed && vertices.size() > 2) sum += (vertices.front() - vertices.back()).length();
    return sum;
}

math::Bounds2 Polyline3DEntity::bounds() const {
    math::Bounds2 box;
    for (const Vector3& p : vertices) box.expand(p.xy());
    return box;
}

void Polyline3DEntity::transform(const math::Matrix4& m) {
    for (Vector3& p : vertices) p = m.transform_point(p);
    for (Vector3& p : frame) p = m.transform_point(p);
}

double Polyline3DEntity::distanceTo(const Vector2& p) const { return distanceToShape(*this, p, vertices.empty()); }
Vector2 Polyline3DEntity::nearestPoint(const Vector2& p) const { return nearestOnPath(path(), p); }

std::vector<Vector2> Polyline3DEntity::gripPoints() const {
    std::vector<Vector2> grips;
    grips.reserve(vertices.size());
    for (const Vector3& p : vertices) grips.push_back(p.xy());
    return grips;
}

void Polyline3DEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (index < vertices.size()) vertices[index] = Vector3(to, vertices[index].z);
}

void Polyline3DEntity::describe(FieldVisitor& v) {
    v.points("vertices", vertices);
    v.boolean("closed", closed);
    v.integer("curveType", curveType, 0);
    v.points("frame", frame, true);
}

void Polyline3DEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    if (!vertices.empty()) sink.stroke(path(), style);
    if (frame.size() < 2 || !FrameLines::emitted(FrameKind::Control)) return;
    Path control;
    control.moveTo(frame.front().xy());
    for (std::size_t i = 1; i < frame.size(); ++i) control.lineTo(frame[i].xy());
    if (closed) control.close();
    sink.stroke(control, style);
}

std::size_t Polyline3DEntity::sizeInBytes() const {
    return sizeof *this + extrasSize() + (vertices.capacity() + frame.capacity()) * sizeof(Vector3);
}

}  // namespace kova::engine
