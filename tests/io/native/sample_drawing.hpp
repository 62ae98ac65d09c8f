#pragma once

#include <memory>
#include <string>

#include "engine/model/drawing.hpp"

namespace kova::test {

/// An entity of the kind with every field set to something else than its default, extended data included.
std::unique_ptr<engine::Entity> filledEntity(engine::EntityType type, int seed);

/// Adds one to a drawing, on a layer that is there.
engine::Entity& addFilledEntity(engine::EntityList& list, engine::EntityType type, int seed);

/// Fills a new drawing with at least one record of every sort and one entity of every kind in model space, in a block
/// and in a layout, every field set.
void fillDrawing(engine::Drawing& drawing);

/// Makes what the general filling leaves without a meaning fit to be drawn.
void soundShapes(engine::Drawing& drawing);

/// Where two texts first differ, with what stands around; empty when they are equal.
std::string firstDifference(const std::string& a, const std::string& b);

}  // namespace kova::test
