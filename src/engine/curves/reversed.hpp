#pragma once

#include "engine/model/entity.hpp"

namespace kova::engine {

/// True for the kinds whose direction can be turned round: line, polylines, spline (helices too).
bool canReverse(const Entity& entity);
/// Turns the direction round in place; no effect on other kinds.
void reverseDirection(Entity& entity);

}  // namespace kova::engine
