#include "edit/block_editing.hpp"

#include <unordered_map>

#include "engine/inquiry/value_text.hpp"
#include "engine/entities/dynamic_block.hpp"

namespace kova::cmd {

using doc::BlockEdit;
using engine::Block;
using engine::Entity;
using engine::Name;

engine::DynParameter* visibilityParameter(Block& block) {
    for (engine::DynParameter& parameter : block.dynParams)
        if (engine::kindOf(parameter) == engine::DynParameterKind::Visibility) return &parameter;
    return nullptr;
}

engine::VisibilityState* findState(Block& block, std::string_view name) {
    for (engine::VisibilityState& state : block.visibilityStates)
        if (engine::equalNoCase(state.name, name)) return &state;
    return nullptr;
}

namespace {

void copyProperties(const Block& from, Block& to) {
    to.description = from.description;
    to.base = from.base;
    to.explodable = from.explodable;
    to.scaleUniform = from.scaleUniform;
    to.dynParams = from.dynParams;
    to.dynActions = from.dynActions;
    to.visibilityStates = from.visibilityStates;
    to.lookupTable = from.lookupTable;
    to.isDynamic = !to.dynParams.empty() || !to.dynActions.empty() || !to.visibilityStates.empty();
}

/// The ids that the state shown has.
std::unordered_set<std::uint64_t> shownIds(const Block& block, const BlockEdit& edit) {
    std::unordered_set<std::uint64_t> shown;
    for (const engine::VisibilityState& state : block.visibilityStates) {
        if (!engine::equalNoCase(state.name, edit.state)) continue;
        for (const std::int32_t number : state.visibleEntityIndices)
            if (number >= 0 && static_cast<std::size_t>(number) < edit.ids.size())
                shown.insert(edit.ids[static_cast<std::size_t>(number)]);
    }
    return shown;
}

/// Gives what was drawn lately a number, and puts it into the state shown.
void adopt(const engine::EntityList& entities, Block& block, BlockEdit& edit) {
    const std::unordered_set<std::uint64_t> known(edit.ids.begin(), edit.ids.end());
    engine::VisibilityState* state = findState(block, edit.state);
    for (const Entity& entity : entities) {
        if (known.contains(entity.id())) continue;
        if (state != nullptr) state->visibleEntityIndices.push_back(static_cast<std::int32_t>(edit.ids.size()));
        edit.ids.push_back(entity.id());
    }
}

/// Makes positions of numbers; what is gone is left out.
void renumber(std::vector<std::int32_t>& numbers, const std::vector<std::int32_t>& positions) {
    std::vector<std::int32_t> now;
    for (const std::int32_t number : numbers)
        if (number >= 0 && static_cast<std::size_t>(number) < positions.size() &&
            positions[static_cast<std::size_t>(number)] >= 0)
            now.push_back(positions[static_cast<std::size_t>(number)]);
    std::sort(now.begin(), now.end());
    now.erase(std::unique(now.begin(), now.end()), now.end());
    numbers = std::move(now);
}

}  // namespace

std::string beginBlockEdit(doc::Document& document, Name name) {
    const Block* block = document.drawing().findBlock(name);
    if (document.blockEdit()) return "Block " + inQuotes(document.blockEdit()->block) + " is open in the block editor.";
    if (document.referenceEdit())
        return "Reference " + inQuotes(document.referenceEdit()->block) +
               " is being edited. Use REFCLOSE to end that first.";
    if (block == nullptr) return "Block " + inQuotes(name) + " not found.";
    if (block->xrefType != engine::XrefType::None || name.view().find('|') != std::string_view::npos)
        return "What an external reference holds is edited in its own file.";
    if (block->isAnonymous()) return "Unnamed blocks cannot be edited.";

    auto edit = std::make_shared<BlockEdit>();
    edit->block = block->name;
    auto working = std::make_unique<Block>(engine::Drawing::editedBlockName());
    copyProperties(*block, *working);
    if (!working->visibilityStates.empty()) {
        const engine::DynParameter* parameter = visibilityParameter(*working);
        const auto* state = parameter != nullptr ? findState(*working, parameter->activeVisibility) : nullptr;
        edit->state = state != nullptr ? state->name : working->visibilityStates.front().name;
    }
    for (const Entity& entity : block->entities) {
        std::unique_ptr<Entity> copy = entity.clone();
        edit->ids.push_back(copy->id());
        edit->handles.emplace(copy->id(), entity.handle());
        if (!entity.visible) edit->hidden.insert(copy->id());
        working->entities.append(std::move(copy));
    }
    if (!edit->state.empty()) {
        const auto shown = shownIds(*working, *edit);
        for (Entity& entity : working->entities)
            entity.visible = shown.contains(entity.id()) && !edit->hidden.contains(entity.id());
    }
    document.selection().clear();
    document.setBlockEdit(std::move(edit), std::move(working));
    return {};
}

std::string endBlockEdit(doc::Document& document, bool save) {
    const std::shared_ptr<const BlockEdit> opened = document.blockEdit();
    engine::Drawing& drawing = document.drawing();
    if (!opened || drawing.editedBlock() == nullptr) return "Not in the block editor.";
    if (!save) {
        document.setBlockEdit(nullptr, nullptr);
        return {};
    }
    BlockEdit edit = *opened;
    Block result(edit.block);
    copyProperties(*drawing.editedBlock(), result);
    adopt(drawing.editedBlock()->entities, result, edit);
    std::vector<std::unique_ptr<Entity>> contents;
    std::unordered_map<std::uint64_t, std::int32_t> places;
    for (const Entity& entity : drawing.editedBlock()->entities) {
        places.emplace(entity.id(), static_cast<std::int32_t>(contents.size()));
        std::unique_ptr<Entity> copy = entity.clone();
        if (const auto known = edit.handles.find(entity.id()); known != edit.handles.end())
            copy->setHandle(known->second);
        if (!edit.state.empty()) copy->visible = !edit.hidden.contains(entity.id());
        contents.push_back(std::move(copy));
    }
    std::vector<std::int32_t> positions;
    for (const std::uint64_t id : edit.ids) {
        const auto place = places.find(id);
        positions.push_back(place != places.end() ? place->second : -1);
    }
    for (engine::DynAction& action : result.dynActions) renumber(action.affectedEntityIndices, positions);
    for (engine::VisibilityState& state : result.visibilityStates) renumber(state.visibleEntityIndices, positions);
    for (const engine::DynParameter& parameter : result.dynParams)
        if (engine::kindOf(parameter) == engine::DynParameterKind::Base) result.base = parameter.base;

    document.setBlockEdit(nullptr, nullptr);
    Block* block = drawing.findBlock(edit.block);
    // A definition that was purged meanwhile is there again.
    if (block == nullptr) block = document.addBlock(std::make_unique<Block>(edit.block));
    if (block == nullptr) return "Block " + inQuotes(edit.block) + " not found.";
    document.replaceBlockContents(*block, std::move(contents));
    document.editBlock(*block, [&](Block& b) { copyProperties(result, b); });
    if (drawing.blockContainsItself(block->name)) return "Block " + inQuotes(block->name) + " references itself.";
    return {};
}

std::string insertRefusal(const doc::Document& document, Name block) {
    if (!document.blockEdit()) return {};
    const Name open = document.blockEdit()->block;
    if (block != open && !document.drawing().blockContains(block, open)) return {};
    return "Block " + inQuotes(open) + " references itself.";
}

std::string editorRefusal(const doc::Document& document, std::string_view command) {
    if (document.blockEdit() && document.drawing().editedBlock() != nullptr) return {};
    return std::string(command) + " is allowed in the block editor only.";
}

void changeEditedBlock(doc::Document& document, const std::string& label,
                       const std::function<void(Block&, BlockEdit&)>& change) {
    Block* block = document.drawing().editedBlock();
    if (block == nullptr || !document.blockEdit()) return;
    const doc::GroupScope group(document, label);
    auto edit = std::make_shared<BlockEdit>(*document.blockEdit());
    document.editBlock(*block, [&](Block& b) {
        adopt(b.entities, b, *edit);
        change(b, *edit);
    });
    document.noteBlockEdit(edit);
    showState(document, *block, *edit);
}

std::vector<std::int32_t> numbersOf(BlockEdit& edit, const std::vector<std::uint64_t>& ids) {
    std::unordered_map<std::uint64_t, std::int32_t> known;
    for (std::size_t i = 0; i < edit.ids.size(); ++i) known.emplace(edit.ids[i], static_cast<std::int32_t>(i));
    std::vector<std::int32_t> numbers;
    for (const std::uint64_t id : ids)
        if (const auto it = known.find(id); it != known.end()) numbers.push_back(it->second);
    return numbers;
}

void showState(doc::Document& document, const Block& block, const BlockEdit& edit) {
    if (edit.state.empty()) return;
    const auto shown = shownIds(block, edit);
    for (Entity* entity : block.entities.entities()) {
        const bool visible = shown.contains(entity->id()) && !edit.hidden.contains(entity->id());
        if (entity->visible != visible) document.modifyEntity(*entity, [&](Entity& e) { e.visible = visible; });
    }
}

}  // namespace kova::cmd
