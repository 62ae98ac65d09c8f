#include "edit/reference_editing.hpp"

#include <unordered_map>

#include "cmd/prompts/file_names.hpp"
#include "edit/drawing_transfer.hpp"
#include "edit/external_references.hpp"
#include "engine/inquiry/fingerprint.hpp"
#include "engine/inquiry/value_text.hpp"
#include "doc/table_edits.hpp"
#include "engine/symbols/symbol_references.hpp"

namespace kova::cmd {

using doc::ReferenceEdit;
using engine::Block;
using engine::Entity;
using engine::Name;

std::size_t beginReferenceEdit(doc::Document& document, const ReferenceEditPlan& plan) {
    engine::Drawing& drawing = document.drawing();
    const Block* block = drawing.findBlock(plan.block);
    if (block == nullptr || plan.reference == nullptr) return 0;
    auto edit = std::make_shared<ReferenceEdit>();
    edit->block = block->name;
    edit->matrix = plan.matrix;
    edit->reference = plan.reference->id();
    if (!drawing.currentSpaceIsModel()) edit->layout = drawing.activeLayoutName;
    for (const Entity& entity : drawing.currentSpace()) edit->locked.insert(entity.id());

    std::vector<std::unique_ptr<Entity>> shown;
    for (const Entity& entity : block->entities) {
        const bool definition = entity.type() == engine::EntityType::AttributeDefinition;
        const bool wanted = plan.all ? !definition || plan.withDefinitions : plan.chosen.contains(entity.id());
        std::unique_ptr<Entity> copy = wanted ? engine::transformedEntity(entity, plan.matrix) : nullptr;
        if (!copy) {
            edit->keeps.insert(entity.id());
            continue;
        }
        copy->setHandle(0);
        edit->parts.push_back({copy->id(), entity.id(), nullptr});
        shown.push_back(std::move(copy));
    }
    if (shown.empty()) return 0;
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const Entity& placed = document.addEntity(std::move(shown[i]));
        edit->parts[i].shown = placed.clone();
    }
    document.modifyEntity(*plan.reference, [](Entity& entity) { entity.visible = false; });
    const std::size_t count = edit->parts.size();
    document.setReferenceEdit(std::move(edit));
    return count;
}

namespace {

engine::EntityList* spaceOf(engine::Drawing& drawing, const ReferenceEdit& edit) {
    if (edit.layout.empty()) return &drawing.modelSpace();
    for (const auto& layout : drawing.layouts())
        if (layout->name == edit.layout) return &layout->entities;
    return nullptr;
}

/// The contents that the block is to have: what was not laid out or not changed as it was, in the old order, and behind
/// it what is new.
std::vector<std::unique_ptr<Entity>> newContents(const ReferenceEdit& edit, const Block& block,
                                                 const std::vector<Entity*>& working) {
    std::unordered_map<std::uint64_t, Entity*> present;
    for (Entity* entity : working) present.emplace(entity->id(), entity);
    std::unordered_map<std::uint64_t, const ReferenceEdit::Part*> parts;
    for (const ReferenceEdit::Part& part : edit.parts) parts.emplace(part.original, &part);
    const math::Matrix4 back = edit.matrix.inverse().value_or(math::Matrix4{});

    std::vector<std::unique_ptr<Entity>> contents;
    for (const Entity& original : block.entities) {
        const auto part = parts.find(original.id());
        if (part == parts.end()) {
            if (edit.keeps.contains(original.id())) contents.push_back(original.clone());
            continue;
        }
        const auto found = present.find(part->second->id);
        if (found == present.end()) continue;
        std::unique_ptr<Entity> copy = holdSame(*found->second, *part->second->shown)
                                           ? original.clone()
                                           : engine::transformedEntity(*found->second, back);
        present.erase(found);
        if (!copy) continue;
        copy->setHandle(original.handle());
        contents.push_back(std::move(copy));
    }
    for (const Entity* entity : working) {
        if (!present.contains(entity->id())) continue;
        if (std::unique_ptr<Entity> copy = engine::transformedEntity(*entity, back)) {
            copy->setHandle(entity->handle());
            contents.push_back(std::move(copy));
        }
    }
    return contents;
}

/// Takes "reference|" off names.
class PrefixTaker final : public engine::ReferenceSink {
public:
    explicit PrefixTaker(Name reference) : prefix_(reference.str() + '|') {}
    bool has(std::string_view text) const {
        return text.size() > prefix_.size() && engine::equalNoCase(text.substr(0, prefix_.size()), prefix_);
    }
    void name(engine::SymbolKind, Name& name, engine::ReferenceStrength) override {
        if (has(name.view())) name = Name(name.view().substr(prefix_.size()));
    }
    void text(engine::SymbolKind, std::string& text, engine::ReferenceStrength) override {
        if (has(text)) text.erase(0, prefix_.size());
    }

private:
    std::string prefix_;
};

template <class Traits>
void eraseBrought(doc::Document& part, const PrefixTaker& taker) {
    std::vector<Name> names;
    for (const auto& record : Traits::table(part.drawing()))
        if (taker.has(record.name.view())) names.push_back(record.name);
    if (names.empty()) return;
    part.editTable<Traits>([&](auto& table) {
        for (const Name name : names) table.erase(name);
    });
}

/// Takes a reference's block and all that it brought out of a drawing.
void eraseReference(doc::Document& part, Name reference) {
    const PrefixTaker taker(reference);
    eraseBrought<doc::LineTypeTraits>(part, taker);
    eraseBrought<doc::LayerTraits>(part, taker);
    eraseBrought<doc::TextStyleTraits>(part, taker);
    eraseBrought<doc::DimStyleTraits>(part, taker);
    eraseBrought<doc::MLeaderStyleTraits>(part, taker);
    eraseBrought<doc::TableStyleTraits>(part, taker);
    std::vector<Name> blocks(1, reference);
    for (const auto& block : part.drawing().blocks())
        if (taker.has(block->name.view())) blocks.push_back(block->name);
    for (const Name block : blocks) part.deleteBlock(block);
}

/// Writes the contents of an external reference's block to its file and reads it again.
std::string saveReferenceFile(doc::Document& document, AppServices* services, Name name) {
    const engine::Drawing& drawing = document.drawing();
    const Block* block = drawing.findBlock(name);
    if (services == nullptr || block == nullptr) return "Files cannot be written here.";
    const std::string path = commands::findDrawingFile(drawing, block->xrefPath);
    if (path.empty()) return "Xref file not found: " + block->xrefPath;
    auto source = std::make_unique<engine::Drawing>();
    if (std::string error = services->readDrawing(path, *source); !error.empty()) return error;

    std::vector<const Entity*> entities;
    for (const Entity& entity : block->entities) entities.push_back(&entity);
    const std::unique_ptr<doc::Document> part = extractDrawing(drawing, entities, {});
    PrefixTaker taker(name);
    engine::visitReferences(part->drawing(), ~engine::SymbolKinds{0}, taker);
    // External references that the contents do not show stay behind, this one first of all.
    std::vector<Name> unused(1, name);
    for (const auto& inner : part->drawing().blocks())
        if (inner->xrefType != engine::XrefType::None &&
            engine::countReferences(part->drawing(), engine::SymbolKind::Block, inner->name) == 0)
            unused.push_back(inner->name);
    for (const Name reference : unused) eraseReference(*part, reference);

    doc::Document target(std::move(source));
    const bool model = target.drawing().tileMode;
    target.drawing().tileMode = true;
    std::vector<std::uint64_t> old;
    for (const Entity& entity : target.drawing().modelSpace()) old.push_back(entity.id());
    target.removeEntities(old);
    importEntities(target, part->drawing(), {});
    target.drawing().tileMode = model;
    if (std::string error = services->writeDrawing(target.drawing(), path); !error.empty()) return error;
    return reloadReference(document, *services, name);
}

}  // namespace

std::string endReferenceEdit(doc::Document& document, AppServices* services, bool save) {
    const std::shared_ptr<const ReferenceEdit> edit = document.referenceEdit();
    if (!edit) return "No reference is being edited.";
    engine::Drawing& drawing = document.drawing();
    std::vector<Entity*> working;
    if (engine::EntityList* space = spaceOf(drawing, *edit))
        for (Entity& entity : *space)
            if (!edit->locked.contains(entity.id())) working.push_back(&entity);
    Block* block = drawing.findBlock(edit->block);
    if (save && block == nullptr) return "Block " + inQuotes(edit->block.view()) + " not found.";
    std::vector<std::unique_ptr<Entity>> contents;
    if (save) contents = newContents(*edit, *block, working);
    std::vector<std::uint64_t> ids;
    for (const Entity* entity : working) ids.push_back(entity->id());
    document.removeEntities(ids);
    if (Entity* reference = drawing.findById(edit->reference))
        document.modifyEntity(*reference, [](Entity& entity) { entity.visible = true; });
    document.setReferenceEdit(nullptr);
    if (!save) return {};
    document.replaceBlockContents(*block, std::move(contents));
    if (drawing.blockContainsItself(block->name)) return "Block " + inQuotes(block->name.view()) + " references itself.";
    if (block->xrefType != engine::XrefType::None) return saveReferenceFile(document, services, block->name);
    return {};
}

}  // namespace kova::cmd
