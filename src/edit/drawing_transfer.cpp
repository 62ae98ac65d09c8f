#include "edit/drawing_transfer.hpp"

#include <unordered_map>
#include <unordered_set>

#include "edit/purging.hpp"
#include "doc/settings_actions.hpp"
#include "doc/table_edits.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/dimensions/dimension.hpp"
#include "engine/entities/hatch.hpp"
#include "engine/entities/dimensions/leader.hpp"
#include "engine/symbols/symbol_references.hpp"

namespace kova::cmd {

namespace {

using engine::Block;
using engine::Drawing;
using engine::Entity;
using engine::Name;

/// Copied entities and the handles of their originals.
using Copied = std::vector<std::pair<std::uint64_t, Entity*>>;

/// Appends copies of a list's entities to another one.
void copyEntities(const engine::EntityList& from, engine::EntityList& to, Copied& copied) {
    to.reserve(from.size());
    for (const Entity& entity : from) {
        std::unique_ptr<Entity> copy = entity.clone();
        copy->setHandle(0);
        copied.emplace_back(entity.handle(), copy.get());
        to.append(std::move(copy));
    }
}

/// Leaders name their annotation by handle, and hatches their boundary objects: they follow them to their copies.
void followHandles(const Copied& copied) {
    std::unordered_map<std::uint64_t, std::uint64_t> handles;
    for (const auto& [handle, entity] : copied)
        if (entity->type() == engine::EntityType::Leader)
            handles[static_cast<engine::LeaderEntity*>(entity)->annotationHandle] = 0;
        else if (entity->type() == engine::EntityType::Hatch)
            for (const engine::HatchLoop& loop : static_cast<engine::HatchEntity*>(entity)->loops)
                for (const std::uint64_t source : loop.sources) handles[source] = 0;
    handles.erase(0);
    if (handles.empty()) return;
    for (const auto& [handle, entity] : copied)
        if (const auto it = handles.find(handle); it != handles.end()) it->second = entity->handle();
    for (const auto& [handle, entity] : copied) {
        if (entity->type() == engine::EntityType::Leader) {
            std::uint64_t& annotation = static_cast<engine::LeaderEntity*>(entity)->annotationHandle;
            const auto it = handles.find(annotation);
            annotation = it != handles.end() ? it->second : 0;
        } else if (entity->type() == engine::EntityType::Hatch) {
            auto& hatch = *static_cast<engine::HatchEntity*>(entity);
            bool whole = true;
            for (engine::HatchLoop& loop : hatch.loops)
                for (std::uint64_t& source : loop.sources) {
                    source = handles[source];
                    whole = whole && source != 0;
                }
            if (!whole) hatch.dissociate();
        }
    }
}

/// Adds the records that the document's drawing lacks.
template <class Traits>
void addMissing(doc::Document& document, Drawing& source) {
    std::vector<const typename Traits::Record*> missing;
    for (const auto& record : Traits::table(source))
        if (!Traits::table(document.drawing()).contains(record.name)) missing.push_back(&record);
    if (missing.empty()) return;
    document.editTable<Traits>([&](auto& table) {
        for (const auto* record : missing) table.add(*record);
    });
}

/// Gives references to blocks their new names.
class BlockRenamer final : public engine::ReferenceSink {
public:
    std::unordered_map<const void*, Name> names;
    void name(engine::SymbolKind, Name& name, engine::ReferenceStrength) override {
        if (const auto it = names.find(name.key()); it != names.end()) name = it->second;
    }
    void text(engine::SymbolKind, std::string& text, engine::ReferenceStrength) override {
        if (const auto it = names.find(Name(text).key()); it != names.end()) text = it->second.str();
    }
};

/// Anonymous blocks get names that both drawings leave free.
void renameAnonymous(const Drawing& target, Drawing& source, BlockRenamer& renamer) {
    std::unordered_map<std::string, std::size_t> counters;
    for (const auto& block : source.blocks()) {
        if (!block->isAnonymous() || target.findBlock(block->name) == nullptr) continue;
        const std::string& old = block->name.str();
        const std::string prefix = old.substr(0, old.find_last_not_of("0123456789") + 1);
        std::size_t& counter = counters[prefix];
        Name fresh;
        do fresh = Name(prefix + std::to_string(++counter));
        while (target.findBlock(fresh) != nullptr || source.findBlock(fresh) != nullptr);
        renamer.names.emplace(block->name.key(), fresh);
    }
    if (!renamer.names.empty()) engine::visitReferences(source, engine::symbolBit(engine::SymbolKind::Block), renamer);
}

void copyHead(const Block& from, Block& to) { doc::BlockSettings::of(from).swapWith(to); }

/// Brings along the records and blocks that the document's drawing lacks, but not the block of that name. References to
/// blocks in the source have their new names afterwards.
void importDefinitions(doc::Document& document, Drawing& source, Name except, Copied& copied) {
    Drawing& drawing = document.drawing();
    addMissing<doc::LineTypeTraits>(document, source);
    addMissing<doc::LayerTraits>(document, source);
    addMissing<doc::TextStyleTraits>(document, source);
    addMissing<doc::DimStyleTraits>(document, source);
    addMissing<doc::MLeaderStyleTraits>(document, source);
    addMissing<doc::TableStyleTraits>(document, source);
    addMissing<doc::HatchPatternTraits>(document, source);

    BlockRenamer renamer;
    renameAnonymous(drawing, source, renamer);
    std::vector<std::unique_ptr<Block>> blocks;
    for (const auto& block : source.blocks()) {
        const auto renamed = renamer.names.find(block->name.key());
        const Name fresh = renamed != renamer.names.end() ? renamed->second : block->name;
        if (drawing.findBlock(fresh) != nullptr || fresh == except) continue;
        auto copy = std::make_unique<Block>(fresh);
        copyHead(*block, *copy);
        copyEntities(block->entities, copy->entities, copied);
        blocks.push_back(std::move(copy));
    }
    document.addBlocks(std::move(blocks));
}

/// Blocks that entities show, themselves or through other blocks, in no order.
std::vector<const Block*> neededBlocks(const Drawing& source, const std::vector<const Entity*>& entities) {
    std::unordered_set<const Block*> seen;
    std::vector<const Block*> found;
    const auto note = [&](const Entity& entity) {
        const Block* block = nullptr;
        if (entity.type() == engine::EntityType::BlockReference)
            block = source.findBlock(static_cast<const engine::BlockReferenceEntity&>(entity).blockName);
        else if (entity.type() == engine::EntityType::Dimension)
            block = source.findBlock(static_cast<const engine::DimensionEntity&>(entity).blockName);
        if (block != nullptr && seen.insert(block).second) found.push_back(block);
    };
    for (const Entity* entity : entities) note(*entity);
    for (std::size_t i = 0; i < found.size(); ++i)
        for (const Entity& entity : found[i]->entities) note(entity);
    // Arrowheads and leaders' symbols are named by styles and by fields of several kinds.
    for (const auto& block : source.blocks())
        if (!block->isAnonymous() && !seen.contains(block.get())) found.push_back(block.get());
    return found;
}

/// Millimetres of the units of INSUNITS; 0: no length.
constexpr double kMillimetres[] = {0.0,
                                   25.4,
                                   304.8,
                                   1609344.0,
                                   1.0,
                                   10.0,
                                   1000.0,
                                   1e6,
                                   2.54e-5,
                                   0.0254,
                                   914.4,
                                   1e-7,
                                   1e-6,
                                   1e-3,
                                   100.0,
                                   10000.0,
                                   1e5,
                                   1e12,
                                   1.495978707e14,
                                   9.4607304725808e18,
                                   3.0856775814913673e19,
                                   304.80060960121924,
                                   25.400050800101602,
                                   914.4018288036576,
                                   1609347.2186944373};

}  // namespace

double unitFactor(int from, int to) {
    const auto size = [](int unit) {
        return unit >= 0 && unit < static_cast<int>(std::size(kMillimetres)) ? kMillimetres[unit] : 0.0;
    };
    const double a = size(from);
    const double b = size(to);
    return a > 0.0 && b > 0.0 ? a / b : 1.0;
}

double unitFactor(const Drawing& from, const Drawing& to) {
    return unitFactor(engine::sysVarInt(from, "INSUNITS"), engine::sysVarInt(to, "INSUNITS"));
}

std::string importAsBlock(doc::Document& document, Drawing& source, Name name, double scale) {
    Drawing& drawing = document.drawing();
    Copied copied;
    importDefinitions(document, source, name, copied);

    auto block = std::make_unique<Block>(name);
    copyEntities(source.modelSpace(), block->entities, copied);
    block->base = source.basePoint * scale;
    if (scale != 1.0) {
        const math::Matrix4 matrix = math::Matrix4::scaling(scale, scale, scale);
        for (Entity& entity : block->entities) entity.transform(matrix);
    }
    if (Block* known = drawing.findBlock(name)) {
        std::vector<std::unique_ptr<Entity>> contents;
        block->entities.swapContents(contents);
        document.replaceBlockContents(*known, std::move(contents));
        document.editBlock(*known, [&](Block& b) { copyHead(*block, b); });
    } else if (document.addBlock(std::move(block)) == nullptr) {
        return "Invalid block name " + ('"' + name.str() + "\".");
    }
    followHandles(copied);
    if (drawing.blockContainsItself(name)) return "Block \"" + name.str() + "\" references itself.";
    return {};
}

engine::Layout* copyLayout(doc::Document& document, const engine::Layout& layout, Name name) {
    // The settings first: adding moves no layout, but the name may be one of a list that grows.
    const engine::PageSetup page = layout.pageSetup;
    engine::Layout* fresh = document.addLayout(name);
    if (fresh == nullptr) return nullptr;
    document.editLayout(*fresh, [&](engine::Layout& l) { l.pageSetup = page; });
    Copied copied;
    for (const Entity& entity : layout.entities) {
        std::unique_ptr<Entity> copy = entity.clone();
        copy->setHandle(0);
        copied.emplace_back(entity.handle(), copy.get());
        document.addEntity(std::move(copy), fresh->entities);
    }
    followHandles(copied);
    return fresh;
}

std::size_t importLayouts(doc::Document& document, Drawing& source, const std::vector<ImportedLayout>& layouts) {
    Copied copied;
    importDefinitions(document, source, {}, copied);
    followHandles(copied);
    std::size_t count = 0;
    for (const auto& [layout, name] : layouts) count += copyLayout(document, *layout, name) != nullptr ? 1 : 0;
    return count;
}

std::unique_ptr<doc::Document> extractLayout(const Drawing& source, const engine::Layout& layout) {
    std::vector<const Entity*> entities;
    for (const Entity& entity : layout.entities) entities.push_back(&entity);
    std::unique_ptr<doc::Document> part = extractDrawing(source, entities, {});
    Drawing& drawing = part->drawing();
    while (drawing.layouts().size() > 1) drawing.takeLayout(drawing.layouts().back()->name);
    drawing.renameLayout(drawing.layouts().front()->name, layout.name);
    engine::Layout& target = *drawing.layouts().front();
    target.pageSetup = layout.pageSetup;
    std::vector<std::unique_ptr<Entity>> contents;
    drawing.modelSpace().swapContents(contents);
    target.entities.swapContents(contents);
    return part;
}

std::vector<std::uint64_t> importEntities(doc::Document& document, Drawing& source, const math::Matrix4& matrix) {
    Copied copied;
    importDefinitions(document, source, {}, copied);
    std::vector<std::uint64_t> added;
    added.reserve(source.modelSpace().size());
    for (const Entity& entity : source.modelSpace()) {
        std::unique_ptr<Entity> copy = engine::transformedEntity(entity, matrix);
        if (!copy) continue;
        copy->setHandle(0);
        Entity& placed = document.addEntity(std::move(copy));
        copied.emplace_back(entity.handle(), &placed);
        added.push_back(placed.id());
    }
    followHandles(copied);
    return added;
}

std::unique_ptr<doc::Document> extractDrawing(const Drawing& source, const std::vector<const Entity*>& entities,
                                              const math::Vector2& shift) {
    auto fresh = std::make_unique<Drawing>();
    // Settings first: among them are the current names, which the tables copied behind them hold.
    doc::DrawingSettings settings = doc::DrawingSettings::of(source);
    settings.tileMode = true;
    settings.activeLayoutName = fresh->activeLayoutName;
    settings.basePoint = {};
    settings.swapWith(*fresh);
    fresh->integerVariables = source.integerVariables;
    fresh->realVariables = source.realVariables;
    fresh->stringVariables = source.stringVariables;
    fresh->layers = source.layers;
    fresh->linetypes = source.linetypes;
    fresh->textStyles = source.textStyles;
    fresh->dimStyles = source.dimStyles;
    fresh->mleaderStyles = source.mleaderStyles;
    fresh->tableStyles = source.tableStyles;
    fresh->hatchPatterns = source.hatchPatterns;
    fresh->annotationScales = source.annotationScales;
    fresh->ucsList = source.ucsList;
    for (const Block* block : neededBlocks(source, entities)) {
        auto copy = std::make_unique<Block>(block->name);
        copyHead(*block, *copy);
        for (const Entity& entity : block->entities) copy->entities.append(entity.clone());
        fresh->putBlock(std::move(copy));
    }
    const math::Matrix4 matrix = math::Matrix4::translation(shift);
    fresh->modelSpace().reserve(entities.size());
    for (const Entity* entity : entities) {
        std::unique_ptr<Entity> copy = entity->clone();
        if (shift != math::Vector2{}) copy->transform(matrix);
        fresh->modelSpace().append(std::move(copy));
    }
    // The handle of what stays behind may be another entity's there.
    for (Entity& entity : fresh->modelSpace()) {
        if (entity.type() != engine::EntityType::Hatch) continue;
        auto& hatch = static_cast<engine::HatchEntity&>(entity);
        const auto isGone = [&](std::uint64_t source) { return fresh->findByHandle(source) == nullptr; };
        if (std::any_of(hatch.loops.begin(), hatch.loops.end(), [&](const engine::HatchLoop& loop) {
                return std::any_of(loop.sources.begin(), loop.sources.end(), isGone);
            }))
            hatch.dissociate();
    }
    // What the copies do not need stays behind.
    auto document = std::make_unique<doc::Document>(std::move(fresh));
    purgeAll(*document);
    return document;
}

}  // namespace kova::cmd
