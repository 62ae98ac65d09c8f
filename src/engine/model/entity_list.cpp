#include "engine/model/entity_list.hpp"

#include "engine/model/drawing.hpp"
#include "engine/model/space_observer.hpp"

namespace kova::engine {

EntityList::~EntityList() {
    // The drawing's indexes go with the drawing; a block that outlives it was detached before.
    for (auto& slot : slots_)
        if (slot) slot->owner_ = nullptr;
}

Entity& EntityList::append(std::unique_ptr<Entity> entity) {
    Entity& e = *entity;
    e.owner_ = this;
    e.slot_ = static_cast<std::uint32_t>(slots_.size());
    if (drawing_ != nullptr) {
        if (e.handle_ == 0 || drawing_->byHandle_.find(e.handle_) != nullptr) e.handle_ = drawing_->takeHandle();
        drawing_->byId_.insert(&e);
        drawing_->byHandle_.insert(&e);
        ++drawing_->revision_;
    }
    slots_.push_back(std::move(entity));
    ++live_;
    ++revision_;
    if (drawing_ != nullptr && drawing_->observer != nullptr) drawing_->observer->entityAdded(*this, e);
    return e;
}

void EntityList::appendShown(std::unique_ptr<Entity> entity) {
    entity->owner_ = this;
    entity->slot_ = static_cast<std::uint32_t>(slots_.size());
    slots_.push_back(std::move(entity));
    ++live_;
    ++revision_;
}

void EntityList::touch(Entity& entity) {
    ++revision_;
    if (drawing_ == nullptr) return;
    ++drawing_->revision_;
    if (drawing_->observer != nullptr) drawing_->observer->entityChanged(*this, entity);
}

void EntityList::swapContents(std::vector<std::unique_ptr<Entity>>& contents) {
    // Empty slots are kept on both sides, so that what was taken out of them before still finds its place.
    std::vector<std::unique_ptr<Entity>> old(slots_.size());
    for (Entity* e : entities()) old[e->slot_] = take(*e);
    slots_.clear();
    for (auto& entity : contents) {
        if (entity)
            append(std::move(entity));
        else
            slots_.emplace_back();
    }
    contents = std::move(old);
    if (drawing_ != nullptr && drawing_->observer != nullptr) drawing_->observer->listChanged(*this);
}

std::unique_ptr<Entity> EntityList::take(Entity& entity) {
    if (entity.owner_ != this) return nullptr;
    if (drawing_ != nullptr) {
        if (drawing_->observer != nullptr) drawing_->observer->entityRemoved(*this, entity);
        drawing_->byId_.erase(&entity);
        drawing_->byHandle_.erase(&entity);
        ++drawing_->revision_;
    }
    entity.owner_ = nullptr;
    --live_;
    ++revision_;
    return std::move(slots_[entity.slot_]);
}

Entity& EntityList::putBack(std::unique_ptr<Entity> entity) {
    Entity& e = *entity;
    if (e.slot_ >= slots_.size() || slots_[e.slot_] != nullptr) return append(std::move(entity));
    e.owner_ = this;
    slots_[e.slot_] = std::move(entity);
    if (drawing_ != nullptr) {
        if (e.handle_ == 0 || drawing_->byHandle_.find(e.handle_) != nullptr) e.handle_ = drawing_->takeHandle();
        drawing_->byId_.insert(&e);
        drawing_->byHandle_.insert(&e);
        ++drawing_->revision_;
    }
    ++live_;
    ++revision_;
    if (drawing_ != nullptr && drawing_->observer != nullptr) drawing_->observer->entityAdded(*this, e);
    return e;
}

std::unique_ptr<Entity> EntityList::replace(Entity& old, std::unique_ptr<Entity> with) {
    if (drawing_ != nullptr) {
        if (drawing_->observer != nullptr) drawing_->observer->entityRemoved(*this, old);
        drawing_->byId_.erase(&old);
        drawing_->byHandle_.erase(&old);
        ++drawing_->revision_;
    }
    with->id_ = old.id_;
    with->handle_ = old.handle_;
    with->slot_ = old.slot_;
    with->owner_ = this;
    old.owner_ = nullptr;
    Entity* fresh = with.get();
    with.swap(slots_[old.slot_]);
    if (drawing_ != nullptr) {
        drawing_->byId_.insert(fresh);
        drawing_->byHandle_.insert(fresh);
        if (drawing_->observer != nullptr) drawing_->observer->entityAdded(*this, *fresh);
    }
    ++revision_;
    return with;
}

Entity* EntityList::first() const {
    for (const auto& slot : slots_)
        if (slot) return slot.get();
    return nullptr;
}

Entity* EntityList::last() const {
    for (auto it = slots_.rbegin(); it != slots_.rend(); ++it)
        if (*it) return it->get();
    return nullptr;
}

Entity* EntityList::after(const Entity& entity) const {
    for (std::size_t i = entity.slot_ + std::size_t{1}; i < slots_.size(); ++i)
        if (slots_[i]) return slots_[i].get();
    return nullptr;
}

Entity* EntityList::before(const Entity& entity) const {
    for (std::size_t i = entity.slot_; i-- > 0;)
        if (slots_[i]) return slots_[i].get();
    return nullptr;
}

std::vector<Entity*> EntityList::entities() const {
    std::vector<Entity*> all;
    all.reserve(live_);
    for (const auto& slot : slots_)
        if (slot) all.push_back(slot.get());
    return all;
}

bool EntityList::reorder(const std::vector<Entity*>& order) {
    if (order.size() != live_) return false;
    std::vector<bool> seen(slots_.size(), false);
    for (const Entity* e : order) {
        if (e == nullptr || e->owner_ != this || seen[e->slot_]) return false;
        seen[e->slot_] = true;
    }
    std::vector<std::uint32_t> free;
    free.reserve(live_);
    for (std::uint32_t i = 0; i < slots_.size(); ++i)
        if (slots_[i]) {
            free.push_back(i);
            static_cast<void>(slots_[i].release());
        }
    for (std::size_t i = 0; i < order.size(); ++i) {
        order[i]->slot_ = free[i];
        slots_[free[i]].reset(order[i]);
    }
    ++revision_;
    if (drawing_ != nullptr) {
        ++drawing_->revision_;
        if (drawing_->observer != nullptr) drawing_->observer->listChanged(*this);
    }
    return true;
}

void EntityList::compact() {
    if (live_ == slots_.size()) return;
    std::uint32_t to = 0;
    for (auto& slot : slots_) {
        if (!slot) continue;
        slot->slot_ = to;
        if (&slots_[to] != &slot) slots_[to] = std::move(slot);
        ++to;
    }
    slots_.resize(to);
}

void EntityList::attach(Drawing* drawing) {
    for (auto& slot : slots_) {
        if (!slot) continue;
        if (drawing_ != nullptr) {
            drawing_->byId_.erase(slot.get());
            drawing_->byHandle_.erase(slot.get());
        }
        if (drawing != nullptr) {
            if (slot->handle_ == 0 || drawing->byHandle_.find(slot->handle_) != nullptr)
                slot->handle_ = drawing->takeHandle();
            drawing->byId_.insert(slot.get());
            drawing->byHandle_.insert(slot.get());
        }
    }
    for (Drawing* d : {drawing_, drawing})
        if (d != nullptr) {
            ++d->revision_;
            if (d->observer != nullptr) d->observer->listChanged(*this);
        }
    drawing_ = drawing;
    ++revision_;
}

}  // namespace kova::engine
