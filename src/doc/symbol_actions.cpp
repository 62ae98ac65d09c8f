#include "doc/symbol_actions.hpp"

namespace kova::doc {

std::size_t bytesOf(const engine::EntityList& list) {
    std::size_t bytes = sizeof list + list.slotCount() * sizeof(void*);
    for (const engine::Entity& entity : list) bytes += entity.sizeInBytes();
    return bytes;
}

std::size_t bytesOf(const engine::Block& block) {
    return sizeof block + block.description.capacity() + block.xrefPath.capacity() +
           block.dynParams.capacity() * sizeof(engine::DynParameter) +
           block.dynActions.capacity() * sizeof(engine::DynAction) +
           block.visibilityStates.capacity() * sizeof(engine::VisibilityState) + bytesOf(block.entities);
}

std::size_t bytesOf(const engine::Layout& layout) { return sizeof layout + bytesOf(layout.entities); }

void CurrentSpace::apply(engine::Drawing& drawing) const {
    drawing.tileMode = tileMode;
    drawing.activeLayoutName = layout;
}

void AddBlocksAction::undo(engine::Drawing& drawing) {
    blocks_.clear();
    for (const engine::Name& name : names_) blocks_.push_back(drawing.takeBlock(name));
}

void AddBlocksAction::redo(engine::Drawing& drawing) {
    for (auto& block : blocks_)
        if (block && drawing.findBlock(block->name) == nullptr) drawing.putBlock(std::move(block));
    blocks_.clear();
}

std::size_t AddBlocksAction::sizeInBytes() const {
    std::size_t bytes = sizeof *this + names_.capacity() * sizeof(engine::Name);
    for (const auto& block : blocks_)
        if (block) bytes += bytesOf(*block);
    return bytes;
}

DeleteBlockAction::DeleteBlockAction(std::unique_ptr<engine::Block> block, engine::Name next)
    : name_(block->name), block_(std::move(block)), next_(next) {}
DeleteBlockAction::~DeleteBlockAction() = default;

void DeleteBlockAction::undo(engine::Drawing& drawing) {
    if (block_ && drawing.findBlock(name_) == nullptr) drawing.putBlock(std::move(block_), next_);
}

void DeleteBlockAction::redo(engine::Drawing& drawing) {
    next_ = drawing.blockAfter(name_);
    block_ = drawing.takeBlock(name_);
}

std::size_t DeleteBlockAction::sizeInBytes() const { return sizeof *this + (block_ ? bytesOf(*block_) : 0); }

void ReplaceBlockContentsAction::swap(engine::Drawing& drawing) {
    if (engine::Block* block = drawing.findBlock(name_)) block->entities.swapContents(other_);
}

std::size_t ReplaceBlockContentsAction::sizeInBytes() const {
    std::size_t bytes = sizeof *this + other_.capacity() * sizeof other_[0];
    for (const auto& entity : other_)
        if (entity) bytes += entity->sizeInBytes();
    return bytes;
}

AddLayoutAction::~AddLayoutAction() = default;

void AddLayoutAction::undo(engine::Drawing& drawing) { layout_ = drawing.takeLayout(name_); }

void AddLayoutAction::redo(engine::Drawing& drawing) {
    if (layout_ && drawing.findLayout(name_) == nullptr)
        drawing.putLayout(std::move(layout_), drawing.layouts().size());
}

std::size_t AddLayoutAction::sizeInBytes() const { return sizeof *this + (layout_ ? bytesOf(*layout_) : 0); }

DeleteLayoutAction::DeleteLayoutAction(std::unique_ptr<engine::Layout> layout, std::size_t position,
                                       CurrentSpace before, CurrentSpace after)
    : name_(layout->name), layout_(std::move(layout)), position_(position), before_(before), after_(after) {}
DeleteLayoutAction::~DeleteLayoutAction() = default;

void DeleteLayoutAction::undo(engine::Drawing& drawing) {
    if (!layout_ || drawing.findLayout(name_) != nullptr) return;
    drawing.putLayout(std::move(layout_), position_);
    before_.apply(drawing);
}

void DeleteLayoutAction::redo(engine::Drawing& drawing) {
    layout_ = drawing.takeLayout(name_);
    after_.apply(drawing);
}

std::size_t DeleteLayoutAction::sizeInBytes() const { return sizeof *this + (layout_ ? bytesOf(*layout_) : 0); }

void RenameSymbolsAction::undo(engine::Drawing& drawing) {
    std::vector<engine::SymbolRename> back;
    for (const engine::SymbolRename& rename : renames_) back.push_back({rename.kind, rename.to, rename.from});
    engine::renameSymbolsUnchecked(drawing, back);
}

void RenameSymbolsAction::redo(engine::Drawing& drawing) {
    std::vector<engine::SymbolRename> again = renames_;
    engine::renameSymbolsUnchecked(drawing, again);
}

std::string RenameSymbolsAction::description() const {
    const engine::SymbolRename& first = renames_.front();
    if (renames_.size() > 1) return "Rename " + std::to_string(renames_.size()) + " names";
    return "Rename " + first.from.str() + " to " + first.to.str();
}

}  // namespace kova::doc
