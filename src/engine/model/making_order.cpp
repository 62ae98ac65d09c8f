#include "engine/model/making_order.hpp"

#include "engine/model/drawing.hpp"

namespace kova::engine {

namespace {

/// One space by age.
class Ages {
public:
    explicit Ages(const EntityList& list) : list_(list), drawing_(*list.drawing()) {}

    Entity* oldest() const {
        return best([](std::uint64_t) { return true; }, std::less<>());
    }
    Entity* newest() const {
        if (Entity* near = below(drawing_.nextHandle)) return near;
        return best([](std::uint64_t) { return true; }, std::greater<>());
    }
    Entity* after(const Entity& entity) const {
        const std::uint64_t from = age(entity.handle());
        if (Entity* near = above(entity.handle())) return near;
        return best([&](std::uint64_t a) { return a > from; }, std::less<>());
    }
    Entity* before(const Entity& entity) const {
        const std::uint64_t from = age(entity.handle());
        if (entity.handle() < drawing_.nextHandle)
            if (Entity* near = below(entity.handle())) return near;
        return best([&](std::uint64_t a) { return a < from; }, std::greater<>());
    }

private:
    /// Grows with the time of making. Handles at and above the counter come out of odd files: those are the oldest.
    std::uint64_t age(std::uint64_t handle) const { return handle - drawing_.nextHandle; }
    /// Handles that are looked up one by one before the whole list is looked at.
    std::uint64_t reach() const { return 64 + 4 * std::uint64_t{list_.size()}; }

    Entity* ofList(std::uint64_t handle) const {
        Entity* entity = drawing_.findByHandle(handle);
        return entity != nullptr && entity->owner() == &list_ ? entity : nullptr;
    }
    Entity* below(std::uint64_t handle) const {
        for (std::uint64_t step = 1; step <= reach() && step < handle; ++step)
            if (Entity* entity = ofList(handle - step)) return entity;
        return nullptr;
    }
    Entity* above(std::uint64_t handle) const {
        for (std::uint64_t step = 1; step <= reach() && handle + step < drawing_.nextHandle; ++step)
            if (Entity* entity = ofList(handle + step)) return entity;
        return nullptr;
    }
    template <class Fits, class Before>
    Entity* best(const Fits& fits, const Before& goesBefore) const {
        Entity* found = nullptr;
        for (std::uint32_t slot = 0; slot < list_.slotCount(); ++slot) {
            Entity* entity = list_.atSlot(slot);
            if (entity == nullptr || !fits(age(entity->handle()))) continue;
            if (found == nullptr || goesBefore(age(entity->handle()), age(found->handle()))) found = entity;
        }
        return found;
    }

    const EntityList& list_;
    const Drawing& drawing_;
};

}  // namespace

Entity* oldestEntity(const EntityList& list) {
    return list.drawing() != nullptr ? Ages(list).oldest() : list.first();
}

Entity* newestEntity(const EntityList& list) {
    return list.drawing() != nullptr ? Ages(list).newest() : list.last();
}

Entity* madeAfter(const Entity& entity) {
    const EntityList* list = entity.owner();
    if (list == nullptr) return nullptr;
    return list->drawing() != nullptr ? Ages(*list).after(entity) : list->after(entity);
}

Entity* madeBefore(const Entity& entity) {
    const EntityList* list = entity.owner();
    if (list == nullptr) return nullptr;
    return list->drawing() != nullptr ? Ages(*list).before(entity) : list->before(entity);
}

}  // namespace kova::engine
