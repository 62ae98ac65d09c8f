#include "doc/document.hpp"
#include "doc/implicit_group.hpp"
#include "doc/settings_actions.hpp"
#include "doc/sysvar_actions.hpp"

namespace kova::doc {

// Blocks -------------------------------------------------------------------------------------------------

bool Document::insertBlock(std::unique_ptr<engine::Block> block) {
    if (!block || block->name.empty() || drawing_->findBlock(block->name) != nullptr) return false;
    if (block->name == "*Model_Space" || block->name == "*Paper_Space") return false;
    drawing_->putBlock(std::move(block));
    return true;
}

engine::Block* Document::addBlock(std::unique_ptr<engine::Block> block) {
    engine::Block* added = block.get();
    if (!insertBlock(std::move(block))) return nullptr;
    record(std::make_unique<AddBlocksAction>(std::vector{added->name}));
    return added;
}

std::size_t Document::addBlocks(std::vector<std::unique_ptr<engine::Block>> blocks) {
    std::vector<engine::Name> names;
    for (auto& block : blocks) {
        const engine::Name name = block ? block->name : engine::Name();
        if (insertBlock(std::move(block))) names.push_back(name);
    }
    const std::size_t added = names.size();
    if (added != 0) record(std::make_unique<AddBlocksAction>(std::move(names)));
    return added;
}

bool Document::deleteBlock(engine::Name name) {
    const engine::Name next = drawing_->blockAfter(name);
    std::unique_ptr<engine::Block> block = drawing_->takeBlock(name);
    if (!block) return false;
    record(std::make_unique<DeleteBlockAction>(std::move(block), next));
    pruneSelection();
    return true;
}

void Document::replaceBlockContents(engine::Block& block, std::vector<std::unique_ptr<engine::Entity>> contents) {
    ImplicitGroup group(*this);
    if (!reactors_.empty())
        for (engine::Entity* entity : block.entities.entities()) notifyErased(*entity);
    std::erase_if(contents, [](const auto& entity) { return !entity; });
    block.entities.swapContents(contents);
    record(std::make_unique<ReplaceBlockContentsAction>(block.name, std::move(contents)));
    if (!reactors_.empty())
        for (engine::Entity* entity : block.entities.entities()) notifyAdded(*entity);
    pruneSelection();
}

void Document::editBlock(engine::Block& block, const std::function<void(engine::Block&)>& change) {
    BlockSettings before = BlockSettings::of(block);
    try {
        change(block);
    } catch (...) {
        before.swapWith(block);
        throw;
    }
    ++drawing_->styleRevision;
    record(std::make_unique<EditBlockAction>(block.name, std::move(before)));
}

// Layouts ------------------------------------------------------------------------------------------------

engine::Layout* Document::addLayout(engine::Name name) {
    if (!engine::isValidSymbolName(name.view())) return nullptr;
    engine::Layout* layout = drawing_->addLayout(name);
    if (layout != nullptr) record(std::make_unique<AddLayoutAction>(name));
    return layout;
}

bool Document::deleteLayout(engine::Name name) {
    const auto& layouts = drawing_->layouts();
    if (layouts.size() < 2) return false;
    const auto it = std::find_if(layouts.begin(), layouts.end(), [&](const auto& l) { return l->name == name; });
    if (it == layouts.end()) return false;
    const auto position = static_cast<std::size_t>(it - layouts.begin());
    const CurrentSpace before = CurrentSpace::of(*drawing_);
    std::unique_ptr<engine::Layout> layout = drawing_->takeLayout(name);
    if (drawing_->activeLayoutName == name)
        drawing_->activeLayoutName = layouts[std::min(position, layouts.size() - 1)]->name;
    record(std::make_unique<DeleteLayoutAction>(std::move(layout), position, before, CurrentSpace::of(*drawing_)));
    pruneSelection();
    noteSpace();
    return true;
}

void Document::editLayout(engine::Layout& layout, const std::function<void(engine::Layout&)>& change) {
    LayoutSettings before = LayoutSettings::of(layout);
    try {
        change(layout);
    } catch (...) {
        before.swapWith(layout);
        throw;
    }
    record(std::make_unique<EditLayoutAction>(layout.name, std::move(before)));
}

// Records and settings -----------------------------------------------------------------------------------

bool Document::deleteLayer(engine::Name name) {
    const engine::Layer* layer = drawing_->layers.find(name);
    if (layer == nullptr || name == engine::commonNames().layerZero || name == drawing_->currentLayer) return false;
    auto action = std::make_unique<DeleteLayerAction>(*layer, drawing_->layers.after(name));
    action->redo(*drawing_);
    record(std::move(action));
    return true;
}

std::string Document::renameSymbol(engine::SymbolKind kind, engine::Name from, engine::Name to) {
    // The name as the table holds it, so that undo gives it back to the letter.
    const engine::Name known = engine::findSymbol(*drawing_, kind, from).value_or(from);
    std::string error = engine::renameSymbol(*drawing_, kind, known, to);
    if (!error.empty() || known.identical(to)) return error;
    record(std::make_unique<RenameSymbolsAction>(std::vector<engine::SymbolRename>{{kind, known, to}}));
    noteSpace();
    return {};
}

std::size_t Document::renameSymbolsUnchecked(std::vector<engine::SymbolRename> renames) {
    engine::renameSymbolsUnchecked(*drawing_, renames);
    const std::size_t renamed = renames.size();
    if (renamed != 0) record(std::make_unique<RenameSymbolsAction>(std::move(renames)));
    noteSpace();
    return renamed;
}

void Document::editSettings(const std::function<void(engine::Drawing&)>& change) {
    DrawingSettings before = DrawingSettings::of(*drawing_);
    try {
        change(*drawing_);
    } catch (...) {
        before.swapWith(*drawing_);
        throw;
    }
    const std::int32_t changes = before.changesIn(*drawing_);
    record(std::make_unique<EditSettingsAction>(std::move(before), changes));
    noteSpace();
}

std::string Document::setVariable(std::string_view name, const engine::SysVarValue& value) {
    const engine::SysVarDef* def = engine::findSysVar(name);
    if (def == nullptr) return engine::setSysVar(*drawing_, name, value);
    const std::optional<engine::SysVarValue> before = engine::getSysVar(*drawing_, name);
    std::optional<DrawingSettings> settings;
    if (def->set != nullptr) settings = DrawingSettings::of(*drawing_);
    std::string error = engine::setSysVar(*drawing_, name, value);
    if (!error.empty()) return error;
    const std::optional<engine::SysVarValue> after = engine::getSysVar(*drawing_, name);
    const bool undoable = !def->programWide();
    if (undoable && before && after && before->index() == after->index() && *before != *after) {
        const engine::Drawing& d = *drawing_;
        // Some variables leave more behind than their value: CTAB the active layout, dimension variables an override.
        const bool exact = !settings || (settings->dimStyleOverrides == d.dimStyleOverrides &&
                                         settings->dimStyleNameOverrides == d.dimStyleNameOverrides &&
                                         settings->activeLayoutName == d.activeLayoutName);
        std::unique_ptr<IUndoableAction> action = sysVarAction(def->name, *before, *after);
        ImplicitGroup group(*this);
        if (!exact)
            record(std::make_unique<EditSettingsAction>(std::move(*settings), changed::kVariables,
                                                        action->description()));
        record(std::move(action));
    }
    noteSpace();
    return {};
}

}  // namespace kova::doc
