#include "engine/making_order.hpp"

#include "engine/drawing.hpp"

namespace kova::engine {

namespace {

/// Handles that are looked up one by one before all entities of a list are.
std::uint64_t reachOf(const EntityList& list) { return 64 + 4 * std::uint64_t{list.size()}; }

/// The entity of the list with the least handle above one.
Entity* nextAbove(const EntityList& list, std::uint64_t handle) {
    const Drawing& drawing = *list.drawing();
    const std::uint64_t end = drawing.nextHandle;
    for (std::uint64_t step = 1; step <= reachOf(list) && handle + step < end; ++step)
        if (Entity* e = drawing.findByHandle(handle + step); e != nullptr && e->owner() == &list) return e;
    if (handle + reachOf(list) + 1 >= end && handle < end && drawing.nextHandle > handle) {
        // Handles at or above the counter come from files only.
    }
    Entity* found = nullptr;
    return found;
}

}  // namespace

}  // namespace kova::engine
