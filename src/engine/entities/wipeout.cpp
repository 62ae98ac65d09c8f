#include "engine/entities/wipeout.hpp"

#include "engine/model/pick_distance.hpp"
#include "engine/model/outline.hpp"
#include "engine/model/frame_lines.hpp"

namespace kova::engine {

using math::Vector2;

Path WipeoutEntity::path() const {
    Path path;
    path.polygon(vertices);
    return path;
}

math::Bounds2 WipeoutEntity::bounds() const {
    math::Bounds2 box;
    for (const Vector2& p : vertices) box.expand(p);
    return box;
}

void WipeoutEntity::transform(const math::Matrix4& m) {
    for (Vector2& p : vertices) p = m.transform_point(p);
}

double WipeoutEntity::distanceTo(const Vector2& p) const { return distanceToShape(*this, p, vertices.empty()); }

Vector2 WipeoutEntity::nearestPoint(const Vector2& p) const { return nearestOnPath(path(), p); }

std::vector<Vector2> WipeoutEntity::gripPoints() const { return vertices; }

void WipeoutEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (index < vertices.size()) vertices[index] = to;
}

void WipeoutEntity::describe(FieldVisitor& v) {
    v.points("vertices", vertices);
    v.boolean("showFrame", showFrame);
}

void WipeoutEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    if (vertices.size() < 2) return;
    const Path outline = path();
    FillOptions cover;
    cover.background = true;
    sink.fill(outline, style, cover);
    if (!showFrame || !FrameLines::emitted(FrameKind::Wipeout)) return;
    StrokeOptions frame;
    frame.continuous = true;
    sink.stroke(outline, style, frame);
}

std::size_t WipeoutEntity::sizeInBytes() const {
    return sizeof *this + extrasSize() + vertices.capacity() * sizeof(Vector2);
}

}  // namespace kova::engine
