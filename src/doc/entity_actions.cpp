#include "doc/entity_actions.hpp"

namespace kova::doc {

engine::EntityList* LayoutPlace::find(engine::Drawing& drawing) const {
    engine::Layout* found = drawing.findLayout(layout);
    return found != nullptr ? &found->entities : nullptr;
}

engine::EntityList* BlockPlace::find(engine::Drawing& drawing) const {
    engine::Block* found = drawing.findBlock(block);
    return found != nullptr ? &found->entities : nullptr;
}

void EntityCustody::takeOut(engine::Drawing& drawing) {
    engine::Entity* entity = drawing.findById(id_);
    if (entity != nullptr) entity_ = entity->owner()->take(*entity);
}

void EntityCustody::putBack(engine::EntityList* list) {
    if (list != nullptr && entity_) list->putBack(std::move(entity_));
}

engine::EntityList* SpacePlace::find(engine::Drawing& drawing) const {
    switch (kind) {
        case Kind::Model:
            return &drawing.modelSpace();
        case Kind::Layout:
            return LayoutPlace{name}.find(drawing);
        case Kind::Block:
            return BlockPlace{name}.find(drawing);
        case Kind::None:
            break;
    }
    return nullptr;
}

std::unique_ptr<IUndoableAction> SpacePlace::addAction(std::uint64_t id) const {
    if (kind == Kind::Model) return std::make_unique<AddEntityAction>(id);
    if (kind == Kind::Layout) return std::make_unique<AddLayoutEntityAction>(id, LayoutPlace{name});
    return std::make_unique<AddBlockEntityAction>(id, BlockPlace{name});
}

std::unique_ptr<IUndoableAction> SpacePlace::removeAction(std::unique_ptr<engine::Entity> taken) const {
    if (kind == Kind::Model) return std::make_unique<RemoveEntityAction>(std::move(taken));
    if (kind == Kind::Layout) return std::make_unique<RemoveLayoutEntityAction>(std::move(taken), LayoutPlace{name});
    return std::make_unique<RemoveBlockEntityAction>(std::move(taken), BlockPlace{name});
}

std::unique_ptr<IUndoableAction> SpacePlace::modifyAction(std::uint64_t id,
                                                          std::unique_ptr<engine::Entity> before) const {
    if (kind == Kind::Model) return std::make_unique<ModifyEntityAction>(id, std::move(before));
    if (kind == Kind::Layout)
        return std::make_unique<ModifyLayoutEntityAction>(id, std::move(before), LayoutPlace{name});
    return std::make_unique<ModifyBlockEntityAction>(id, std::move(before), BlockPlace{name});
}

void DrawOrderAction::swap(engine::Drawing& drawing) {
    engine::EntityList* list = place_.find(drawing);
    if (list == nullptr) return;
    std::vector<engine::Entity*> order = list->entities();
    if (first_ > order.size() || other_.size() > order.size() - first_) return;
    std::vector<std::uint64_t> present;
    present.reserve(other_.size());
    for (std::size_t i = 0; i < other_.size(); ++i) {
        engine::Entity*& place = order[first_ + i];
        present.push_back(place->id());
        place = drawing.findById(other_[i]);
    }
    if (list->reorder(order)) other_ = std::move(present);
}

}  // namespace kova::doc
