#include "engine/entities/mesh.hpp"

#include "engine/model/pick_distance.hpp"
#include "engine/model/outline.hpp"
#include "engine/model/frame_lines.hpp"

namespace kova::engine {

using math::Vector2;
using math::Vector3;

std::size_t MeshEntity::filledRows() const {
    const std::size_t columns = filledColumns();
    if (columns == 0 || rows <= 0) return 0;
    return std::min<std::size_t>(static_cast<std::size_t>(rows), vertices.size() / columns);
}

Path MeshEntity::edges() const {
    Path path;
    const std::size_t m = filledRows();
    const std::size_t n = filledColumns();
    if (m == 0) return path;
    path.reserve(2 * m * n + m + n);
    for (std::size_t i = 0; i < m; ++i) {
        for (std::size_t j = 0; j < n; ++j) {
            const Vector2 p = vertices[i * n + j].xy();
            if (j == 0)
                path.moveTo(p);
            else
                path.lineTo(p);
        }
        if (closedN && n > 2) path.close();
    }
    for (std::size_t j = 0; j < n; ++j) {
        for (std::size_t i = 0; i < m; ++i) {
            const Vector2 p = vertices[i * n + j].xy();
            if (i == 0)
                path.moveTo(p);
            else
                path.lineTo(p);
        }
        if (closedM && m > 2) path.close();
    }
    return path;
}

math::Bounds2 MeshEntity::bounds() const {
    math::Bounds2 box;
    for (const Vector3& p : vertices) box.expand(p.xy());
    return box;
}

void MeshEntity::transform(const math::Matrix4& m) {
    for (Vector3& p : vertices) p = m.transform_point(p);
    for (Vector3& p : frame) p = m.transform_point(p);
}

double MeshEntity::distanceTo(const Vector2& p) const { return distanceToShape(*this, p, vertices.empty()); }
Vector2 MeshEntity::nearestPoint(const Vector2& p) const { return nearestOnPath(edges(), p); }

std::vector<Vector2> MeshEntity::gripPoints() const {
    std::vector<Vector2> grips;
    grips.reserve(vertices.size());
    for (const Vector3& p : vertices) grips.push_back(p.xy());
    return grips;
}

void MeshEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (index < vertices.size()) vertices[index] = Vector3(to, vertices[index].z);
}

void MeshEntity::describe(FieldVisitor& v) {
    v.integer("rows", rows);
    v.integer("cols", cols);
    v.boolean("closedM", closedM);
    v.boolean("closedN", closedN);
    v.points("vertices", vertices);
    v.integer("surfaceType", surfaceType, 0);
    v.integer("frameRows", frameRows, 0);
    v.integer("frameCols", frameCols, 0);
    v.points("frame", frame, true);
}

void MeshEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    const Path grid = edges();
    if (!grid.empty()) sink.stroke(grid, style);
    if (frameRows < 2 || frameCols < 2 || !FrameLines::emitted(FrameKind::Control)) return;
    const auto rowTotal = static_cast<std::size_t>(frameRows);
    const auto columnTotal = static_cast<std::size_t>(frameCols);
    if (frame.size() != rowTotal * columnTotal) return;
    Path control;
    for (std::size_t r = 0; r < rowTotal; ++r)
        for (std::size_t c = 0; c < columnTotal; ++c) {
            const Vector2 p = frame[r * columnTotal + c].xy();
            if (c > 0) control.moveTo(frame[r * columnTotal + c - 1].xy()).lineTo(p);
            if (r > 0) control.moveTo(frame[(r - 1) * columnTotal + c].xy()).lineTo(p);
        }
    sink.stroke(control, style);
}

std::size_t MeshEntity::sizeInBytes() const {
    return sizeof *this + extrasSize() + (vertices.capacity() + frame.capacity()) * sizeof(Vector3);
}

}  // namespace kova::engine
