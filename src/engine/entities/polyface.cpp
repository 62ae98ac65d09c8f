#include "engine/entities/polyface.hpp"

#include "engine/model/pick_distance.hpp"
#include "engine/model/outline.hpp"

namespace kova::engine {

using math::Vector2;
using math::Vector3;

std::optional<std::size_t> PolyfaceEntity::vertexIndex(std::int32_t corner) const {
    const std::int64_t number = std::abs(static_cast<std::int64_t>(corner));
    if (number == 0 || number > static_cast<std::int64_t>(vertices.size())) return std::nullopt;
    return static_cast<std::size_t>(number - 1);
}

Path PolyfaceEntity::edges() const {
    Path path;
    for (const std::vector<std::int32_t>& face : faces) {
        for (std::size_t i = 0; i < face.size() && face.size() > 1; ++i) {
            const auto a = vertexIndex(face[i]);
            const auto b = vertexIndex(face[(i + 1) % face.size()]);
            if (face[i] < 0 || !a || !b) continue;
            path.moveTo(vertices[*a].xy()).lineTo(vertices[*b].xy());
        }
    }
    return path;
}

math::Bounds2 PolyfaceEntity::bounds() const {
    math::Bounds2 box;
    for (const Vector3& p : vertices) box.expand(p.xy());
    return box;
}

void PolyfaceEntity::transform(const math::Matrix4& m) {
    for (Vector3& p : vertices) p = m.transform_point(p);
}

double PolyfaceEntity::distanceTo(const Vector2& p) const { return distanceToShape(*this, p, vertices.empty()); }
Vector2 PolyfaceEntity::nearestPoint(const Vector2& p) const { return nearestOnPath(edges(), p); }

std::vector<Vector2> PolyfaceEntity::gripPoints() const {
    std::vector<Vector2> grips;
    grips.reserve(vertices.size());
    for (const Vector3& p : vertices) grips.push_back(p.xy());
    return grips;
}

void PolyfaceEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (index < vertices.size()) vertices[index] = Vector3(to, vertices[index].z);
}

void PolyfaceEntity::describe(FieldVisitor& v) {
    v.points("vertices", vertices);
    v.integerLists("faces", faces);
}

void PolyfaceEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    const Path shown = edges();
    if (!shown.empty()) sink.stroke(shown, style);
}

std::size_t PolyfaceEntity::sizeInBytes() const {
    std::size_t size = sizeof *this + extrasSize() + vertices.capacity() * sizeof(Vector3);
    for (const auto& face : faces) size += sizeof face + face.capacity() * sizeof(std::int32_t);
    return size;
}

}  // namespace kova::engine
