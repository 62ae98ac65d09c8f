#pragma once

#include <span>
#include <vector>

#include "cmd/shape_test.hpp"
#include "engine/entity.hpp"

namespace kova::cmd {

/// The parts of the drawing plane within which points move: any of several regions.
using StretchRegions = std::vector<SelectionRegion>;

/// What moving the points inside the regions does to an entity.
enum class StretchEffect {
    None,    ///< none of its points lies inside
    Partly,  ///< some of its points move
    Whole    ///< all of them lie inside, or it moves as a whole by the point that places it
};
StretchEffect stretchEffect(const engine::Entity& entity, const StretchRegions& regions);

/// Moves the points of an entity that lie inside the regions: ends of lines and arcs (an arc keeps its height over the
/// chord), vertices, fit and control points, boundaries of hatches, definition points of dimensions. What has one
/// placing point only (circles by their centre, texts and block references by their insertion point) moves with it.
void stretchEntity(engine::Entity& entity, const StretchRegions& regions, const math::Vector2& by);

}  // namespace kova::cmd
