#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "engine/model/entity.hpp"

namespace kova::engine {

class Drawing;

/// The entities of one space (model space, a layout, a block definition) in drawing order.
///
/// Taking an entity out and putting it back at its old place are O(1): each entity keeps the number of its slot, and
/// an emptied slot stays reserved until compact(). Iteration skips empty slots.
class EntityList {
public:
    explicit EntityList(Drawing* drawing = nullptr) : drawing_(drawing) {}
    ~EntityList();
    EntityList(const EntityList&) = delete;
    EntityList& operator=(const EntityList&) = delete;

    /// Adds at the end of the drawing order. An entity without a handle, or whose handle is taken in the
    /// drawing, gets the next one.
    Entity& append(std::unique_ptr<Entity> entity);
    /// Adds at the end what is derived from other entities and only shown: the drawing does not find it by id or handle,
    /// and no observer hears of it. For lists that hold nothing else.
    void appendShown(std::unique_ptr<Entity> entity);
    /// Takes an entity of this list out; it keeps its id, handle and place.
    std::unique_ptr<Entity> take(Entity& entity);
    /// Puts back an entity that take() gave out, at its old place.
    Entity& putBack(std::unique_ptr<Entity> entity);
    /// Replaces an entity by another object, which takes over its id, handle and place; gives the old object out.
    std::unique_ptr<Entity> replace(Entity& old, std::unique_ptr<Entity> with);

    std::size_t size() const { return live_; }
    bool empty() const { return live_ == 0; }
    Entity* first() const;
    Entity* last() const;
    /// The next or previous entity in drawing order; null at the end.
    Entity* after(const Entity& entity) const;
    Entity* before(const Entity& entity) const;

    /// Number of slots, empty ones included, and the entity of a slot (null when empty).
    std::uint32_t slotCount() const { return static_cast<std::uint32_t>(slots_.size()); }
    Entity* atSlot(std::uint32_t slot) const { return slot < slots_.size() ? slots_[slot].get() : nullptr; }

    /// The live entities in drawing order.
    std::vector<Entity*> entities() const;
    /// Rearranges the live entities among the slots they occupy. `order` must hold each exactly once, else
    /// nothing happens and the result is false.
    bool reorder(const std::vector<Entity*>& order);
    /// Gives up empty slots. Only while nothing that was taken out can come back.
    void compact();
    void reserve(std::size_t count) { slots_.reserve(count); }

    Drawing* drawing() const { return drawing_; }
    /// Moves all entities into or out of the indexes of a drawing (null: out), as a whole block or layout is
    /// added to or removed from it.
    void attach(Drawing* drawing);

    /// Grows with every change; lets caches of extents know when they are stale.
    std::uint64_t revision() const { return revision_; }
    /// Notes a change made to an entity of this list in place.
    void touch(Entity& entity);
    /// Exchanges the whole contents for others (already outside any drawing). A null stands for an empty slot, in
    /// what is given and in what comes out.
    void swapContents(std::vector<std::unique_ptr<Entity>>& contents);

    template <class T>
    class Iterator {
    public:
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        Iterator() = default;
        Iterator(const std::unique_ptr<Entity>* at, const std::unique_ptr<Entity>* end) : at_(at), end_(end) { skip(); }
        T& operator*() const { return **at_; }
        T* operator->() const { return at_->get(); }
        Iterator& operator++() {
            ++at_;
            skip();
            return *this;
        }
        Iterator operator++(int) {
            Iterator old = *this;
            ++*this;
            return old;
        }
        bool operator==(const Iterator& o) const { return at_ == o.at_; }

    private:
        void skip() {
            while (at_ != end_ && !*at_) ++at_;
        }
        const std::unique_ptr<Entity>* at_ = nullptr;
        const std::unique_ptr<Entity>* end_ = nullptr;
    };
    Iterator<Entity> begin() { return {slots_.data(), slots_.data() + slots_.size()}; }
    Iterator<Entity> end() { return {slots_.data() + slots_.size(), slots_.data() + slots_.size()}; }
    Iterator<const Entity> begin() const { return {slots_.data(), slots_.data() + slots_.size()}; }
    Iterator<const Entity> end() const { return {slots_.data() + slots_.size(), slots_.data() + slots_.size()}; }

private:
    Drawing* drawing_;
    std::vector<std::unique_ptr<Entity>> slots_;
    std::size_t live_ = 0;
    std::uint64_t revision_ = 0;
};

}  // namespace kova::engine
