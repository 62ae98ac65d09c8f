#pragma once

#include "engine/model/entity_list.hpp"

namespace kova::engine {

// The entities of a space in the order in which they were made, whatever the drawing order: handles are given out
// upwards and kept. Null where there is none (any more). A step costs as much as the way to the next handle of the
// space, and never more than a look at all of it. Lists outside a drawing are taken in drawing order.

Entity* oldestEntity(const EntityList& list);
Entity* newestEntity(const EntityList& list);
/// The one made next after, or last before, an entity that stands in a list.
Entity* madeAfter(const Entity& entity);
Entity* madeBefore(const Entity& entity);

}  // namespace kova::engine
