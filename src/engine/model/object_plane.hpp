#pragma once

#include <optional>

#include "engine/model/entity.hpp"
#include "engine/model/outline.hpp"

namespace kova::engine {

/// The kinds whose coordinates DXF keeps in an object coordinate system (circle, arc, polyline, text, attribute
/// definition, block reference, hatch, shape, 2-D solid ...) hold coordinates of the plane that their normal and
/// elevation span, after the arbitrary axis rule. All other kinds hold world coordinates. Shapes are emitted in plan:
/// as seen down the world's z axis.

/// True when the entity's plane is parallel to the world's: the normal is +z (within 1e-9), as it nearly always is.
bool inWorldPlane(const Entity& entity);
/// Object plane to world: carries (x, y, 0) of the entity's plane to its place in space.
math::Matrix4 objectPlane(const Entity& entity);
/// A point of the entity's plane in plan.
math::Vector2 planFromObject(const Entity& entity, const math::Vector2& p);
/// The point of the entity's plane that shows at p in plan; nothing when the plane stands on edge.
std::optional<math::Vector2> objectFromPlan(const Entity& entity, const math::Vector2& p);
/// The same for a plane that a matrix carries to the world.
std::optional<math::Vector2> planePoint(const math::Matrix4& plane, const math::Vector2& p);

/// Transforms what an object plane kind has in common (normal, elevation, thickness) and returns the affine map
/// of its plane coordinates: the kind then only transforms in two dimensions.
math::Matrix4 transformObjectPlane(Entity& entity, const math::Matrix4& m);
/// Transforms normal and thickness of a kind in world coordinates.
void transformExtrusion(Entity& entity, const math::Matrix4& m);
/// True when m leaves the plane z = 0 parallel to itself and divides by nothing: x and y do not depend on z.
bool isPlanar(const math::Matrix4& m);

/// Calls draw(sink) with a sink that takes coordinates of the entity's plane.
template <class Draw>
void emitFromObjectPlane(const Entity& entity, OutlineSink& sink, const Draw& draw) {
    if (inWorldPlane(entity)) {
        draw(sink);
        return;
    }
    TransformSink plan(sink, objectPlane(entity));
    draw(static_cast<OutlineSink&>(plan));
}

}  // namespace kova::engine
