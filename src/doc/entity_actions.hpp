#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "doc/undoable_action.hpp"
#include "engine/model/drawing.hpp"

namespace kova::doc {

// Where an action's entity belongs. A place finds its list anew each time, since a layout or block may have gone out
// of the drawing and come back meanwhile.

struct ModelPlace {
    static constexpr const char* noun = "entity";
    engine::EntityList* find(engine::Drawing& drawing) const { return &drawing.modelSpace(); }
};

struct LayoutPlace {
    static constexpr const char* noun = "layout entity";
    engine::Name layout;
    engine::EntityList* find(engine::Drawing& drawing) const;
};

struct BlockPlace {
    static constexpr const char* noun = "block entity";
    engine::Name block;
    engine::EntityList* find(engine::Drawing& drawing) const;
};

/// Keeps an entity while it is out of the drawing. Actions of this kind are made by the million: an id and a pointer.
class EntityCustody {
public:
    explicit EntityCustody(std::uint64_t id) : id_(id) {}
    explicit EntityCustody(std::unique_ptr<engine::Entity> taken) : id_(taken->id()), entity_(std::move(taken)) {}

    /// Takes the entity out of whatever list it stands in; nothing happens when it is gone.
    void takeOut(engine::Drawing& drawing);
    /// Puts the kept entity back at its old place, under its id and handle. Without a list it stays here.
    void putBack(engine::EntityList* list);
    /// The entity while it is kept here; null while it stands in the drawing.
    const engine::Entity* kept() const { return entity_.get(); }
    std::size_t heldBytes() const { return entity_ ? entity_->sizeInBytes() : 0; }

private:
    std::uint64_t id_;
    std::unique_ptr<engine::Entity> entity_;
};

/// An entity came into the drawing.
template <class Place>
class AddAction final : public IUndoableAction {
public:
    explicit AddAction(std::uint64_t id, Place place = {}) : entity_(id), place_(place) {}
    void undo(engine::Drawing& drawing) override { entity_.takeOut(drawing); }
    void redo(engine::Drawing& drawing) override { entity_.putBack(place_.find(drawing)); }
    std::string description() const override { return std::string("Add ") + Place::noun; }
    std::size_t sizeInBytes() const override { return sizeof *this + entity_.heldBytes(); }

private:
    EntityCustody entity_;
    [[no_unique_address]] Place place_;
};

/// An entity left the drawing: the mirror image of AddAction.
template <class Place>
class RemoveAction final : public IUndoableAction {
public:
    explicit RemoveAction(std::unique_ptr<engine::Entity> taken, Place place = {})
        : entity_(std::move(taken)), place_(place) {}
    void undo(engine::Drawing& drawing) override { entity_.putBack(place_.find(drawing)); }
    void redo(engine::Drawing& drawing) override { entity_.takeOut(drawing); }
    std::string description() const override { return std::string("Remove ") + Place::noun; }
    /// The entity that is out of the drawing by this action, and the list it came from (null: gone).
    const engine::Entity* removed() const { return entity_.kept(); }
    engine::EntityList* list(engine::Drawing& drawing) const { return place_.find(drawing); }
    std::size_t sizeInBytes() const override { return sizeof *this + entity_.heldBytes(); }

private:
    EntityCustody entity_;
    [[no_unique_address]] Place place_;
};

/// An entity took on another state, or another object stands in its place under its id and handle.
template <class Place>
class ModifyAction final : public IUndoableAction {
public:
    ModifyAction(std::uint64_t id, std::unique_ptr<engine::Entity> other, Place place = {})
        : id_(id), other_(std::move(other)), place_(place) {}
    void undo(engine::Drawing& drawing) override { swap(drawing); }
    void redo(engine::Drawing& drawing) override { swap(drawing); }
    std::string description() const override { return std::string("Modify ") + Place::noun; }
    std::size_t sizeInBytes() const override { return sizeof *this + (other_ ? other_->sizeInBytes() : 0); }

private:
    void swap(engine::Drawing& drawing) {
        engine::Entity* current = drawing.findById(id_);
        if (current != nullptr && other_) other_ = current->owner()->replace(*current, std::move(other_));
    }

    std::uint64_t id_;
    std::unique_ptr<engine::Entity> other_;
    [[no_unique_address]] Place place_;
};

using AddEntityAction = AddAction<ModelPlace>;
using RemoveEntityAction = RemoveAction<ModelPlace>;
using ModifyEntityAction = ModifyAction<ModelPlace>;
using AddLayoutEntityAction = AddAction<LayoutPlace>;
using RemoveLayoutEntityAction = RemoveAction<LayoutPlace>;
using ModifyLayoutEntityAction = ModifyAction<LayoutPlace>;
using AddBlockEntityAction = AddAction<BlockPlace>;
using RemoveBlockEntityAction = RemoveAction<BlockPlace>;
using ModifyBlockEntityAction = ModifyAction<BlockPlace>;

static_assert(sizeof(RemoveEntityAction) <= 24, "a history holds these by the million");

/// Any of the three places, as the document finds it for a list.
struct SpacePlace {
    enum class Kind : std::uint8_t { None, Model, Layout, Block };
    Kind kind = Kind::None;
    engine::Name name;

    engine::EntityList* find(engine::Drawing& drawing) const;

    std::unique_ptr<IUndoableAction> addAction(std::uint64_t id) const;
    std::unique_ptr<IUndoableAction> removeAction(std::unique_ptr<engine::Entity> taken) const;
    std::unique_ptr<IUndoableAction> modifyAction(std::uint64_t id, std::unique_ptr<engine::Entity> before) const;
};

/// The space was drawn in another order.
class DrawOrderAction final : public IUndoableAction {
public:
    /// `before`: the ids in their previous order; those that the two orders share at both ends are left out.
    DrawOrderAction(SpacePlace place, std::size_t first, std::vector<std::uint64_t> before)
        : place_(place), first_(first), other_(std::move(before)) {}
    void undo(engine::Drawing& drawing) override { swap(drawing); }
    void redo(engine::Drawing& drawing) override { swap(drawing); }
    std::string description() const override { return "Draw order"; }
    std::size_t sizeInBytes() const override { return sizeof *this + other_.capacity() * sizeof(std::uint64_t); }

private:
    void swap(engine::Drawing& drawing);

    SpacePlace place_;
    std::size_t first_;
    std::vector<std::uint64_t> other_;
};

}  // namespace kova::doc
