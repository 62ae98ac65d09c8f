#pragma once

#include <functional>

#include "engine/model/entity.hpp"

namespace kova::engine {

/// Tells which points of the drawing plane move.
using PointTest = std::function<bool(const math::Vector2&)>;

/// What moving the points inside does to an entity.
enum class StretchEffect {
    None,    ///< none of its points lies inside
    Partly,  ///< some of its points move
    Whole    ///< all of them lie inside, or it moves as a whole by the point that places it
};
StretchEffect stretchEffect(const Entity& entity, const PointTest& inside);

/// Moves the points of an entity that lie inside: ends of lines and arcs (an arc keeps its height over the chord),
/// vertices, fit and control points, boundaries of hatches, definition points of dimensions. What has one placing
/// point only (circles by their centre, texts and block references by their insertion point) moves with it.
void stretchPoints(Entity& entity, const PointTest& inside, const math::Vector2& by);

}  // namespace kova::engine
