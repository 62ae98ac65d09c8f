#pragma once

#include <vector>

#include "engine/pick/selection_region.hpp"
#include "engine/modify/stretch_points.hpp"

namespace kova::cmd {

/// The parts of the drawing plane within which points move: any of several regions.
using StretchRegions = std::vector<SelectionRegion>;

using engine::StretchEffect;
StretchEffect stretchEffect(const engine::Entity& entity, const StretchRegions& regions);
/// Moves the points inside the regions, see engine::stretchPoints.
void stretchEntity(engine::Entity& entity, const StretchRegions& regions, const math::Vector2& by);

}  // namespace kova::cmd
