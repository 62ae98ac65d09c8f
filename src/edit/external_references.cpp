#include "edit/external_references.hpp"

#include "edit/drawing_transfer.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "strings/wildcards.hpp"
#include "doc/table_edits.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/symbols/external_reference.hpp"

namespace kova::cmd {

using engine::Block;
using engine::Drawing;
using engine::Name;
using engine::SymbolKind;

namespace {

/// Calls back with the traits and kind of every table whose records a reference brings.
template <class Visit>
void eachBroughtTable(Visit&& visit) {
    visit(doc::LineTypeTraits{}, SymbolKind::Linetype);
    visit(doc::LayerTraits{}, SymbolKind::Layer);
    visit(doc::TextStyleTraits{}, SymbolKind::TextStyle);
    visit(doc::DimStyleTraits{}, SymbolKind::DimStyle);
    visit(doc::MLeaderStyleTraits{}, SymbolKind::MLeaderStyle);
    visit(doc::TableStyleTraits{}, SymbolKind::TableStyle);
}

template <class Traits>
void putRecords(doc::Document& document, std::vector<typename Traits::Record>& records, bool keepKnown) {
    if (records.empty()) return;
    document.editTable<Traits>([&](auto& table) {
        for (auto& record : records)
            if (!keepKnown || !table.contains(record.name)) table.add(std::move(record));
    });
}

bool isOf(Name name, const std::string& prefix) {
    return name.view().size() > prefix.size() && engine::equalNoCase(name.view().substr(0, prefix.size()), prefix);
}

/// Blocks that came with a reference.
std::vector<Name> broughtBlocks(const Drawing& drawing, Name reference) {
    const std::string prefix = reference.str() + '|';
    std::vector<Name> names;
    for (const auto& block : drawing.blocks())
        if (isOf(block->name, prefix)) names.push_back(block->name);
    return names;
}

void deleteBroughtBlocks(doc::Document& document, Name reference) {
    for (const Name name : broughtBlocks(document.drawing(), reference)) document.deleteBlock(name);
}

/// Deletes the records that came with a reference and that nothing names any more.
void deleteBroughtRecords(doc::Document& document, Name reference) {
    const std::string prefix = reference.str() + '|';
    // Layers go first: they name linetypes.
    for (int pass = 0; pass < 2; ++pass) {
        const engine::ReferenceCounts counts(document.drawing());
        eachBroughtTable([&](auto traits, SymbolKind kind) {
            using Traits = decltype(traits);
            std::vector<Name> unused;
            for (const auto& record : Traits::table(document.drawing()))
                if (isOf(record.name, prefix) && counts.of(kind, record.name) == 0) unused.push_back(record.name);
            if (unused.empty()) return;
            document.editTable<Traits>([&](auto& table) {
                for (const Name name : unused) table.erase(name);
            });
        });
    }
}

/// Ids of the placements of a block in the spaces; `within` is set to a block that holds one, if any does.
std::vector<std::uint64_t> placements(const Drawing& drawing, Name name, const Block*& within) {
    std::vector<std::uint64_t> ids;
    const auto collect = [&](const engine::EntityList& list) {
        const std::size_t before = ids.size();
        for (const engine::Entity& entity : list)
            if (entity.type() == engine::EntityType::BlockReference &&
                static_cast<const engine::BlockReferenceEntity&>(entity).blockName == name)
                ids.push_back(entity.id());
        return ids.size() > before;
    };
    collect(drawing.modelSpace());
    for (const auto& layout : drawing.layouts()) collect(layout->entities);
    within = nullptr;
    for (const auto& block : drawing.blocks())
        if (block->xrefType == engine::XrefType::None && collect(block->entities)) within = block.get();
    return ids;
}

void makeOwn(Block& block) {
    block.xrefType = engine::XrefType::None;
    block.xrefPath.clear();
    block.xrefStatus = engine::XrefStatus::Unloaded;
}

/// Makes a reference that is shown, and all that came with it, the drawing's own.
void settleBound(doc::Document& document, Name reference) {
    Drawing& drawing = document.drawing();
    Block* block = drawing.findBlock(reference);
    if (block == nullptr) return;
    document.editBlock(*block, makeOwn);
    const std::string prefix = reference.str() + '|';
    std::vector<engine::SymbolRename> renames;
    for (const Name part : broughtBlocks(drawing, reference)) {
        document.editBlock(*drawing.findBlock(part), makeOwn);
        renames.push_back({SymbolKind::Block, part, boundName(drawing, SymbolKind::Block, part)});
    }
    eachBroughtTable([&](auto traits, SymbolKind kind) {
        for (const auto& record : decltype(traits)::table(drawing))
            if (isOf(record.name, prefix))
                renames.push_back({kind, record.name, boundName(drawing, kind, record.name)});
    });
    document.renameSymbolsUnchecked(std::move(renames));
}

}  // namespace

std::vector<Name> referencesMatching(const Drawing& drawing, std::string_view patterns) {
    std::vector<Name> names;
    for (const auto& block : drawing.blocks())
        if (block->xrefType != engine::XrefType::None && engine::referenceOf(drawing, block->name) == nullptr)
            names.push_back(block->name);
    return matchingNames(drawing, std::move(names), patterns);
}

std::string_view referenceStatusName(engine::XrefStatus status) {
    switch (status) {
        case engine::XrefStatus::Loaded:
            return "Loaded";
        case engine::XrefStatus::NotFound:
            return "Not found";
        case engine::XrefStatus::Unresolved:
            return "Unresolved";
        case engine::XrefStatus::Unloaded:
            break;
    }
    return "Unloaded";
}

std::string reloadReference(doc::Document& document, AppServices& services, Name name, int* units) {
    Block* reference = document.drawing().findBlock(name);
    if (reference == nullptr || reference->xrefType == engine::XrefType::None) return "Xref not found: " + name.str();
    Drawing source;
    if (std::string error = services.readReference(reference->xrefPath, source); !error.empty()) {
        // What it showed must not be taken for the drawing's own.
        unloadReference(document, name);
        document.editBlock(*reference, [](Block& b) { b.xrefStatus = engine::XrefStatus::NotFound; });
        return error;
    }
    if (units != nullptr) *units = engine::sysVarInt(source, "INSUNITS");
    engine::ReferenceContents contents = engine::takeReferenceContents(source, reference->name);
    const bool keepLayers = engine::sysVarInt(document.drawing(), "VISRETAIN", 1) != 0;
    putRecords<doc::LineTypeTraits>(document, contents.linetypes, false);
    putRecords<doc::LayerTraits>(document, contents.layers, keepLayers);
    putRecords<doc::TextStyleTraits>(document, contents.textStyles, false);
    putRecords<doc::DimStyleTraits>(document, contents.dimStyles, false);
    putRecords<doc::MLeaderStyleTraits>(document, contents.mleaderStyles, false);
    putRecords<doc::TableStyleTraits>(document, contents.tableStyles, false);
    deleteBroughtBlocks(document, reference->name);
    document.addBlocks(std::move(contents.blocks));
    document.replaceBlockContents(*reference, std::move(contents.entities));
    document.editBlock(*reference, [&](Block& b) {
        b.base = contents.base;
        b.xrefStatus = engine::XrefStatus::Loaded;
    });
    return {};
}

void unloadReference(doc::Document& document, Name name) {
    Block* reference = document.drawing().findBlock(name);
    if (reference == nullptr) return;
    document.replaceBlockContents(*reference, {});
    deleteBroughtBlocks(document, reference->name);
    document.editBlock(*reference, [](Block& b) { b.xrefStatus = engine::XrefStatus::Unloaded; });
}

std::string detachReference(doc::Document& document, Name name) {
    const Block* within = nullptr;
    const std::vector<std::uint64_t> ids = placements(document.drawing(), name, within);
    if (within != nullptr)
        return "Xref " + inQuotes(name.view()) + " is part of block " + inQuotes(within->name.view()) +
               " and cannot be detached.";
    document.removeEntities(ids);
    document.deleteBlock(name);
    deleteBroughtBlocks(document, name);
    deleteBroughtRecords(document, name);
    return {};
}

Name boundName(const Drawing& drawing, SymbolKind kind, Name name) {
    for (int number = 0; number < 1'000'000; ++number) {
        const std::string joint = "$" + std::to_string(number) + "$";
        std::string bound;
        for (const char c : name.view()) c == '|' ? bound += joint : bound += c;
        if (!engine::findSymbol(drawing, kind, Name(bound))) return Name(bound);
    }
    return name;
}

std::string bindReference(doc::Document& document, AppServices& services, Name name, bool merge) {
    Drawing& drawing = document.drawing();
    Block* reference = drawing.findBlock(name);
    if (reference == nullptr) return "Xref not found: " + name.str();
    if (reference->xrefStatus != engine::XrefStatus::Loaded)
        return "Xref " + inQuotes(name.view()) + " is not loaded and cannot be bound.";
    const Name known = reference->name;
    if (merge) {
        Drawing source;
        if (std::string error = services.readReference(reference->xrefPath, source); !error.empty()) return error;
        std::vector<Name> nested = referencesMatching(source, "*");
        std::erase_if(nested, [&](Name n) { return drawing.findBlock(n) != nullptr; });
        if (std::string error = importAsBlock(document, source, known); !error.empty()) return error;
        document.editBlock(*drawing.findBlock(known), makeOwn);
        deleteBroughtBlocks(document, known);
        deleteBroughtRecords(document, known);
        // What the reference refers to came with it under names of its own, and keeps these.
        for (const Name inner : nested) settleBound(document, inner);
        return {};
    }
    settleBound(document, known);
    return {};
}

}  // namespace kova::cmd
