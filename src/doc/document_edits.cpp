#include <unordered_set>

#include "doc/document.hpp"
#include "doc/implicit_group.hpp"

namespace kova::doc {

namespace {

/// The ids in their order, each once.
std::vector<std::uint64_t> eachOnce(const std::vector<std::uint64_t>& ids) {
    // Ids of a selection mostly rise.
    if (std::adjacent_find(ids.begin(), ids.end(), std::greater_equal<>()) == ids.end()) return ids;
    std::unordered_set<std::uint64_t> seen;
    seen.reserve(ids.size());
    std::vector<std::uint64_t> once;
    once.reserve(ids.size());
    for (const std::uint64_t id : ids)
        if (seen.insert(id).second) once.push_back(id);
    return once;
}

void reserveMore(UndoGroup* group, std::size_t count) {
    if (group == nullptr) return;
    const std::size_t needed = group->actions.size() + count;
    // At least doubled, so that many small additions stay linear.
    if (needed > group->actions.capacity()) group->actions.reserve(std::max(needed, group->actions.capacity() * 2));
}

/// A similarity within the drawing plane: every kind of entity can hold its image.
bool keepsKinds(const math::Matrix4& m) {
    return m(0, 2) == 0.0 && m(1, 2) == 0.0 && m(2, 0) == 0.0 && m(2, 1) == 0.0 && m(3, 0) == 0.0 && m(3, 1) == 0.0 &&
           m(3, 2) == 0.0 && m(3, 3) == 1.0 && math::planeParts(m).uniform;
}

/// Exchanges what the document keeps about an edit for another state of it.
template <class Edit>
class ExchangeEditAction final : public IUndoableAction {
public:
    ExchangeEditAction(std::shared_ptr<const Edit>& present, std::shared_ptr<const Edit> other, std::string description)
        : present_(present), other_(std::move(other)), description_(std::move(description)) {}
    void undo(engine::Drawing&) override { present_.swap(other_); }
    void redo(engine::Drawing&) override { present_.swap(other_); }
    std::string description() const override { return description_; }

private:
    std::shared_ptr<const Edit>& present_;
    std::shared_ptr<const Edit> other_;
    std::string description_;
};

/// Exchanges the contents of the block editor.
class ExchangeEditedBlockAction final : public IUndoableAction {
public:
    explicit ExchangeEditedBlockAction(std::unique_ptr<engine::Block> other) : other_(std::move(other)) {}
    void undo(engine::Drawing& drawing) override { other_ = drawing.exchangeEditedBlock(std::move(other_)); }
    void redo(engine::Drawing& drawing) override { other_ = drawing.exchangeEditedBlock(std::move(other_)); }
    std::string description() const override { return "Block editor"; }
    std::size_t sizeInBytes() const override { return sizeof *this + (other_ ? bytesOf(*other_) : 0); }

private:
    std::unique_ptr<engine::Block> other_;
};

}  // namespace

SpacePlace Document::placeOf(const engine::EntityList& list) {
    if (&list == &drawing_->modelSpace()) return {SpacePlace::Kind::Model, {}};
    if (lastPlace_.kind != SpacePlace::Kind::None && lastPlace_.find(*drawing_) == &list) return lastPlace_;
    for (const auto& layout : drawing_->layouts())
        if (&layout->entities == &list) return lastPlace_ = {SpacePlace::Kind::Layout, layout->name};
    if (const engine::Block* edited = drawing_->editedBlock(); edited != nullptr && &edited->entities == &list)
        return lastPlace_ = {SpacePlace::Kind::Block, edited->name};
    for (const auto& block : drawing_->blocks())
        if (&block->entities == &list) return lastPlace_ = {SpacePlace::Kind::Block, block->name};
    return {};
}

void Document::notifyAdded(engine::Entity& entity) {
    for (std::size_t i = 0; i < reactors_.size(); ++i) reactors_[i]->entityAdded(*drawing_, entity);
}

void Document::notifyModified(engine::Entity& entity) {
    for (std::size_t i = 0; i < reactors_.size(); ++i) reactors_[i]->entityModified(*drawing_, entity);
}

void Document::notifyErased(engine::Entity& entity) {
    for (std::size_t i = 0; i < reactors_.size(); ++i) reactors_[i]->entityErased(*drawing_, entity);
}

engine::Entity& Document::addEntity(std::unique_ptr<engine::Entity> entity) {
    return addEntity(std::move(entity), drawing_->currentSpace());
}

engine::Entity& Document::addEntity(std::unique_ptr<engine::Entity> entity, engine::EntityList& space) {
    const SpacePlace place = placeOf(space);
    ImplicitGroup group(*this);
    engine::Entity& added = space.append(std::move(entity));
    if (place.kind == SpacePlace::Kind::None) return added;  // a list outside the drawing is nobody's history
    record(place.addAction(added.id()));
    notifyAdded(added);
    return added;
}

void Document::applyCurrentProperties(engine::Entity& entity) const {
    entity.layer = drawing_->currentLayer;
    entity.color = drawing_->currentColor;
    entity.linetype = drawing_->currentLinetype;
    const double scale = engine::sysVarReal(*drawing_, "CELTSCALE", 1.0);
    entity.setLinetypeScale(std::isfinite(scale) && scale > 0.0 ? scale : 1.0);
    entity.lineweight = engine::sysVarInt(*drawing_, "CELWEIGHT", -1);
    entity.transparency = 0;
    if (const auto value = engine::getSysVar(*drawing_, "CETRANSPARENCY")) {
        // "ByLayer" and "ByBlock" stand where no percentage does.
        int percent = 0;
        if (const auto* number = std::get_if<std::int32_t>(&*value)) percent = *number;
        if (const auto* text = std::get_if<std::string>(&*value))
            std::from_chars(text->data(), text->data() + text->size(), percent);
        entity.transparency = std::clamp(percent, 0, 90);
    }
}

void Document::takeOut(engine::Entity& entity) {
    engine::EntityList& list = *entity.owner();
    const SpacePlace place = placeOf(list);
    notifyErased(entity);
    std::unique_ptr<engine::Entity> taken = list.take(entity);
    if (place.kind != SpacePlace::Kind::None) record(place.removeAction(std::move(taken)));
}

void Document::removeEntity(engine::Entity& entity) {
    if (entity.owner() == nullptr) return;
    ImplicitGroup group(*this);
    const std::uint64_t id = entity.id();
    takeOut(entity);
    selection_.remove(id);
}

std::size_t Document::removeEntities(const std::vector<std::uint64_t>& ids) {
    // The caller may hand over the selection's own list, which shrinks below.
    const std::vector<std::uint64_t> wanted(ids);
    ImplicitGroup group(*this);
    reserveMore(open_.get(), wanted.size());
    std::size_t removed = 0;
    for (const std::uint64_t id : wanted) {
        engine::Entity* entity = drawing_->findById(id);
        if (entity == nullptr) continue;
        takeOut(*entity);
        ++removed;
    }
    selection_.remove(wanted);
    return removed;
}

void Document::modifyEntity(engine::Entity& entity, const std::function<void(engine::Entity&)>& change) {
    engine::EntityList* list = entity.owner();
    if (list == nullptr) {
        change(entity);
        return;
    }
    const SpacePlace place = placeOf(*list);
    ImplicitGroup group(*this);
    std::unique_ptr<engine::Entity> before = entity.clone();
    const auto finish = [&] {
        list->touch(entity);
        if (place.kind != SpacePlace::Kind::None) record(place.modifyAction(entity.id(), std::move(before)));
        notifyModified(entity);
    };
    try {
        change(entity);
    } catch (...) {
        finish();
        throw;
    }
    finish();
}

engine::Entity& Document::replaceEntity(engine::Entity& entity, std::unique_ptr<engine::Entity> with) {
    engine::EntityList* list = entity.owner();
    if (list == nullptr || !with) return entity;
    const SpacePlace place = placeOf(*list);
    ImplicitGroup group(*this);
    engine::Entity& fresh = *with;
    std::unique_ptr<engine::Entity> before = list->replace(entity, std::move(with));
    if (place.kind != SpacePlace::Kind::None) record(place.modifyAction(fresh.id(), std::move(before)));
    notifyModified(fresh);
    return fresh;
}

void Document::transformEntities(const std::vector<std::uint64_t>& ids, const math::Matrix4& matrix) {
    if (!std::all_of(matrix.m.begin(), matrix.m.end(), [](double v) { return std::isfinite(v); })) return;
    const std::vector<std::uint64_t> wanted = eachOnce(ids);
    const bool inPlace = keepsKinds(matrix);
    ImplicitGroup group(*this);
    reserveMore(open_.get(), wanted.size());
    for (const std::uint64_t id : wanted) {
        engine::Entity* entity = drawing_->findById(id);
        if (entity == nullptr) continue;
        if (!engine::canTransform(*entity, matrix)) {
            noteUntransformed();
            continue;
        }
        if (!inPlace) {
            std::unique_ptr<engine::Entity> image = engine::transformedEntity(*entity, matrix);
            if (image && image->type() != entity->type()) {
                replaceEntity(*entity, std::move(image));
                continue;
            }
        }
        modifyEntity(*entity, [&](engine::Entity& e) { e.transform(matrix); });
    }
}

bool Document::setDrawOrder(engine::EntityList& space, const std::vector<engine::Entity*>& order) {
    const std::vector<engine::Entity*> present = space.entities();
    if (present.size() != order.size()) return false;
    const auto first = std::mismatch(present.begin(), present.end(), order.begin()).first;
    if (first == present.end()) return true;
    const auto last = std::mismatch(present.rbegin(), present.rend(), order.rbegin()).first.base();
    std::vector<std::uint64_t> before;
    before.reserve(static_cast<std::size_t>(last - first));
    for (auto it = first; it != last; ++it) before.push_back((*it)->id());
    if (!space.reorder(order)) return false;
    const SpacePlace place = placeOf(space);
    if (place.kind != SpacePlace::Kind::None)
        record(std::make_unique<DrawOrderAction>(place, static_cast<std::size_t>(first - present.begin()),
                                                 std::move(before)));
    return true;
}

void Document::setReferenceEdit(std::shared_ptr<const ReferenceEdit> edit) {
    referenceEdit_.swap(edit);
    record(std::make_unique<ExchangeEditAction<ReferenceEdit>>(referenceEdit_, std::move(edit), "Edit reference"));
}

void Document::setBlockEdit(std::shared_ptr<const BlockEdit> edit, std::unique_ptr<engine::Block> working) {
    ImplicitGroup group(*this);
    working = drawing_->exchangeEditedBlock(std::move(working));
    record(std::make_unique<ExchangeEditedBlockAction>(std::move(working)));
    noteBlockEdit(std::move(edit));
    pruneSelection();
}

void Document::noteBlockEdit(std::shared_ptr<const BlockEdit> edit) {
    blockEdit_.swap(edit);
    record(std::make_unique<ExchangeEditAction<BlockEdit>>(blockEdit_, std::move(edit), "Edit block"));
}

bool Document::isSelectable(const engine::Entity& entity) const {
    if (!entity.visible || entity.owner() != &drawing_->currentSpace()) return false;
    if (referenceEdit_ && referenceEdit_->locked.contains(entity.id())) return false;
    const engine::Layer* layer = drawing_->layers.find(entity.layer);
    return layer == nullptr || (layer->isVisible() && !layer->locked);
}

}  // namespace kova::doc
