#pragma once

#include <memory>

#include "engine/model/entity.hpp"

namespace kova::engine {

/// The entity as it shows in plan, in the plane z = 0 and without thickness, with a new id. Null when it lies there
/// already, and for kinds that have no flat form (solids). 3-D polylines become polylines, a line on edge a point.
std::unique_ptr<Entity> flattened(const Entity& entity);

}  // namespace kova::engine
