#include "engine/symbols/external_reference.hpp"

#include <filesystem>

#include <array>

#include "engine/associativity/associativity.hpp"
#include "engine/entities/dimensions/arrowheads.hpp"
#include "engine/entities/hatch.hpp"
#include "engine/entities/dimensions/leader.hpp"
#include "engine/symbols/symbol_references.hpp"

namespace kova::engine {

namespace {

constexpr SymbolKinds kBroughtKinds = symbolBit(SymbolKind::Block) | symbolBit(SymbolKind::DimStyle) |
                                      symbolBit(SymbolKind::Layer) | symbolBit(SymbolKind::Linetype) |
                                      symbolBit(SymbolKind::MLeaderStyle) | symbolBit(SymbolKind::TextStyle) |
                                      symbolBit(SymbolKind::TableStyle);

/// Gives names of a referenced drawing the form they have in its host.
class Prefixer final : public ReferenceSink {
public:
    Prefixer(const Drawing& source, Name reference) : source_(source), prefix_(reference.str() + '|') {}

    Name operator()(SymbolKind kind, Name name) {
        const auto [it, fresh] = known_[static_cast<std::size_t>(kind)].try_emplace(name.key());
        if (fresh) it->second = isShared(kind, name) ? name : Name(prefix_ + name.str());
        return it->second;
    }
    void name(SymbolKind kind, Name& name, ReferenceStrength) override { name = (*this)(kind, name); }
    void text(SymbolKind kind, std::string& text, ReferenceStrength) override {
        text = (*this)(kind, Name(text)).str();
    }

private:
    bool isShared(SymbolKind kind, Name name) const {
        const CommonNames& names = commonNames();
        switch (kind) {
            case SymbolKind::Layer:
                return name == names.layerZero || name == names.defpoints;
            case SymbolKind::Linetype:
                return name == names.byLayer || name == names.byBlock || name == names.continuous;
            case SymbolKind::Block:
                // Standard arrowheads are known by their names.
                return source_.findBlock(name) == nullptr || arrowKind(name.view()) != ArrowKind::User;
            default:
                return false;
        }
    }

    const Drawing& source_;
    std::string prefix_;
    std::array<std::unordered_map<const void*, Name>, kSymbolKindCount> known_;
};

template <class Record>
void takeRecords(Table<Record>& table, SymbolKind kind, Prefixer& prefix, std::vector<Record>& out) {
    for (Record& record : table) {
        const Name name = prefix(kind, record.name);
        if (name.identical(record.name)) continue;
        out.push_back(record);
        out.back().name = name;
    }
}

/// Handles mean something in the drawing they come from only. The entity still stands there.
void cutLoose(Entity& entity, const Drawing& source) {
    switch (entity.type()) {
        case EntityType::Leader: {
            auto& leader = static_cast<LeaderEntity&>(entity);
            // A text of its own draws itself, here too.
            if (!leader.drawsText()) leader.annotation.clear();
            leader.annotationHandle = 0;
            break;
        }
        case EntityType::Dimension:
            if (hasDimensionLinks(entity)) setDimensionLinks(static_cast<DimensionEntity&>(entity), {});
            break;
        case EntityType::Hatch: {
            auto& hatch = static_cast<HatchEntity&>(entity);
            hatch.dissociate();
            const HatchPattern* pattern = source.hatchPatterns.find(hatch.patternName);
            if (hatch.ownPattern.empty() && pattern != nullptr) hatch.ownPattern = pattern->families;
            break;
        }
        default:
            break;
    }
}

void cutLoose(EntityList& list, const Drawing& source) {
    for (Entity& entity : list) cutLoose(entity, source);
}

void forgetHandles(std::vector<std::unique_ptr<Entity>>& entities) {
    for (auto& entity : entities)
        if (entity) entity->setHandle(0);
}

template <class Record>
void putRecords(Table<Record>& table, std::vector<Record>& records, bool keepKnown) {
    for (Record& record : records)
        if (!keepKnown || !table.contains(record.name)) table.add(std::move(record));
}

}  // namespace

ReferenceContents takeReferenceContents(Drawing& source, Name reference) {
    Prefixer prefix(source, reference);
    visitReferences(source, kBroughtKinds, prefix);
    ReferenceContents out;
    out.base = source.basePoint;
    takeRecords(source.layers, SymbolKind::Layer, prefix, out.layers);
    takeRecords(source.linetypes, SymbolKind::Linetype, prefix, out.linetypes);
    takeRecords(source.textStyles, SymbolKind::TextStyle, prefix, out.textStyles);
    takeRecords(source.dimStyles, SymbolKind::DimStyle, prefix, out.dimStyles);
    takeRecords(source.mleaderStyles, SymbolKind::MLeaderStyle, prefix, out.mleaderStyles);
    takeRecords(source.tableStyles, SymbolKind::TableStyle, prefix, out.tableStyles);
    // Leaders ask for the entities that they name: everything still stands.
    cutLoose(source.modelSpace(), source);
    for (const auto& block : source.blocks()) {
        cutLoose(block->entities, source);
        prefix(SymbolKind::Block, block->name);
    }
    for (std::unique_ptr<Block>& block : source.takeBlocks()) {
        const Name name = prefix(SymbolKind::Block, block->name);
        if (name.identical(block->name)) continue;
        block->name = name;
        block->handle = 0;
        for (Entity& entity : block->entities) entity.setHandle(0);
        out.blocks.push_back(std::move(block));
    }
    source.modelSpace().swapContents(out.entities);
    forgetHandles(out.entities);
    return out;
}

void showReference(Drawing& host, Block& reference, ReferenceContents contents) {
    const std::uint64_t counter = host.nextHandle;
    const bool keepLayers = sysVarInt(host, "VISRETAIN", 1) != 0;
    putRecords(host.linetypes, contents.linetypes, false);
    putRecords(host.layers, contents.layers, keepLayers);
    putRecords(host.textStyles, contents.textStyles, false);
    putRecords(host.dimStyles, contents.dimStyles, false);
    putRecords(host.mleaderStyles, contents.mleaderStyles, false);
    putRecords(host.tableStyles, contents.tableStyles, false);
    for (std::unique_ptr<Block>& block : contents.blocks) {
        if (host.findBlock(block->name) != nullptr) host.takeBlock(block->name);
        host.putBlock(std::move(block));
    }
    reference.base = contents.base;
    reference.entities.swapContents(contents.entities);
    reference.xrefStatus = XrefStatus::Loaded;
    host.nextHandle = counter;
    ++host.styleRevision;
}

const Block* referenceOf(const Drawing& drawing, Name name) {
    const std::size_t bar = name.view().find('|');
    if (bar == std::string_view::npos) return nullptr;
    const Block* block = drawing.findBlock(Name(name.view().substr(0, bar)));
    return block != nullptr && block->xrefType != XrefType::None ? block : nullptr;
}

bool comesWithReference(const Drawing& drawing, SymbolKind kind, Name name) {
    const Block* reference = referenceOf(drawing, name);
    if (reference == nullptr || reference->xrefStatus != XrefStatus::Loaded) return false;
    return kind != SymbolKind::Layer || sysVarInt(drawing, "VISRETAIN", 1) == 0;
}

SavedRecords::SavedRecords(const Drawing& drawing) {
    const auto gather = [&](const auto& table, SymbolKind kind, auto& out) {
        out.reserve(table.size());
        for (const auto& record : table)
            if (!comesWithReference(drawing, kind, record.name)) out.push_back(&record);
    };
    gather(drawing.layers, SymbolKind::Layer, layers);
    gather(drawing.linetypes, SymbolKind::Linetype, linetypes);
    gather(drawing.textStyles, SymbolKind::TextStyle, textStyles);
    gather(drawing.dimStyles, SymbolKind::DimStyle, dimStyles);
    gather(drawing.mleaderStyles, SymbolKind::MLeaderStyle, mleaderStyles);
    gather(drawing.tableStyles, SymbolKind::TableStyle, tableStyles);
    blocks.reserve(drawing.blocks().size());
    for (const auto& block : drawing.blocks())
        if (!comesWithReference(drawing, SymbolKind::Block, block->name)) blocks.push_back(block.get());
}

std::string findReferencedFile(const std::string& path, const std::string& hostFile) {
    if (path.empty()) return {};
    std::string plain = path;
    std::replace(plain.begin(), plain.end(), '\\', '/');
    const std::filesystem::path folder = std::filesystem::path(hostFile).parent_path();
    // Paths of other machines lead nowhere; the file often lies beside its host.
    const std::filesystem::path candidates[] = {path, folder / plain, folder / std::filesystem::path(plain).filename()};
    for (const std::filesystem::path& candidate : candidates) {
        if (candidate == candidates[0] && candidate.is_relative() && !folder.empty()) continue;
        std::error_code error;
        if (std::filesystem::is_regular_file(candidate, error)) return candidate.string();
    }
    return {};
}

}  // namespace kova::engine
