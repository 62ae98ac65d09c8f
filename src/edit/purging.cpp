#include "edit/purging.hpp"

#include <unordered_set>

#include "doc/table_edits.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/line.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/shape.hpp"
#include "engine/entities/text.hpp"

namespace kova::cmd {

namespace {

using engine::Drawing;
using engine::Entity;
using engine::Name;
using engine::SymbolKind;

template <class Visit>
void eachList(const Drawing& drawing, Visit&& visit) {
    visit(drawing.modelSpace());
    for (const auto& layout : drawing.layouts()) visit(layout->entities);
}

template <class Visit>
void eachListAndBlock(const Drawing& drawing, Visit&& visit) {
    eachList(drawing, visit);
    for (const auto& block : drawing.blocks()) visit(block->entities);
}

template <class Records>
void collectUnused(const Records& records, SymbolKind kind, const engine::ReferenceCounts& counts,
                   std::vector<Name>& out) {
    for (const auto& record : records)
        if (!engine::isFixedSymbol(kind, record.name) && counts.of(kind, record.name) == 0) out.push_back(record.name);
}

std::vector<Name> unusedApplications(const Drawing& drawing) {
    std::unordered_set<const void*> used{Name("ACAD").key()};
    eachListAndBlock(drawing, [&](const engine::EntityList& list) {
        for (const Entity& entity : list)
            if (const engine::XData* data = entity.xdata())
                for (const auto& application : data->applications) used.insert(application.name.key());
    });
    std::vector<Name> unused;
    for (const Name& name : drawing.appIds)
        if (!used.contains(name.key())) unused.push_back(name);
    return unused;
}

std::vector<Name> unusedShapeFiles(const Drawing& drawing) {
    std::unordered_set<std::string> used;
    eachListAndBlock(drawing, [&](const engine::EntityList& list) {
        for (const Entity& entity : list)
            if (entity.type() == engine::EntityType::Shape)
                used.insert(engine::foldCase(std::string(static_cast<const engine::ShapeEntity&>(entity).file)));
    });
    // Linetypes name their shapes by number and style: with one of those about, nobody can tell.
    for (const engine::Linetype& linetype : drawing.linetypes)
        for (const engine::LinetypeElement& element : linetype.elements)
            if ((element.flags & 4) != 0) return {};
    std::vector<Name> unused;
    for (const std::string& file : drawing.shapeFiles)
        if (!used.contains(engine::foldCase(file))) unused.emplace_back(file);
    return unused;
}

std::vector<Name> unusedBy(const Drawing& drawing, PurgeKind kind, const engine::ReferenceCounts& counts) {
    std::vector<Name> out;
    switch (kind) {
        case PurgeKind::Block:
            for (const auto& block : drawing.blocks())
                if (block->xrefType == engine::XrefType::None &&
                    !engine::isFixedSymbol(SymbolKind::Block, block->name) &&
                    counts.of(SymbolKind::Block, block->name) == 0)
                    out.push_back(block->name);
            break;
        case PurgeKind::DimStyle:
            collectUnused(drawing.dimStyles, SymbolKind::DimStyle, counts, out);
            break;
        case PurgeKind::Layer:
            collectUnused(drawing.layers, SymbolKind::Layer, counts, out);
            // Dimensions put their points there without naming it.
            std::erase(out, engine::commonNames().defpoints);
            break;
        case PurgeKind::Linetype:
            collectUnused(drawing.linetypes, SymbolKind::Linetype, counts, out);
            break;
        case PurgeKind::MLeaderStyle:
            collectUnused(drawing.mleaderStyles, SymbolKind::MLeaderStyle, counts, out);
            break;
        case PurgeKind::TextStyle:
            collectUnused(drawing.textStyles, SymbolKind::TextStyle, counts, out);
            break;
        case PurgeKind::TableStyle:
            collectUnused(drawing.tableStyles, SymbolKind::TableStyle, counts, out);
            break;
        default:
            break;
    }
    return out;
}

std::vector<Name> emptyGroups(const Drawing& drawing) {
    std::vector<Name> out;
    for (const engine::Group& group : drawing.groups)
        if (std::none_of(group.memberHandles.begin(), group.memberHandles.end(),
                         [&](std::uint64_t handle) { return drawing.findByHandle(handle) != nullptr; }))
            out.push_back(group.name);
    return out;
}

template <class Traits>
std::size_t eraseRecords(doc::Document& document, const std::vector<Name>& names) {
    document.editTable<Traits>([&](auto& table) {
        for (const Name& name : names) table.erase(name);
    });
    return names.size();
}

template <class Remove>
std::size_t each(const std::vector<Name>& names, Remove&& remove) {
    std::size_t count = 0;
    for (const Name& name : names) count += remove(name) ? 1 : 0;
    return count;
}

bool isLocked(const Drawing& drawing, Name name) {
    const engine::Layer* layer = drawing.layers.find(name);
    return layer != nullptr && layer->locked;
}

template <class Test>
std::vector<std::uint64_t> unlockedWhere(const Drawing& drawing, Test&& test) {
    std::vector<std::uint64_t> ids;
    eachList(drawing, [&](const engine::EntityList& list) {
        for (const Entity& entity : list)
            if (test(entity) && !isLocked(drawing, entity.layer)) ids.push_back(entity.id());
    });
    return ids;
}

bool hasNoLength(const Entity& entity) {
    switch (entity.type()) {
        case engine::EntityType::Line: {
            const auto& line = static_cast<const engine::LineEntity&>(entity);
            return line.start3() == line.end3();
        }
        case engine::EntityType::Circle:
            return static_cast<const engine::CircleEntity&>(entity).radius == 0.0;
        case engine::EntityType::Arc:
            return static_cast<const engine::ArcEntity&>(entity).radius == 0.0;
        case engine::EntityType::Polyline: {
            const auto& vertices = static_cast<const engine::PolylineEntity&>(entity).vertices;
            return std::all_of(vertices.begin(), vertices.end(), [&](const auto& v) { return v == vertices.front(); });
        }
        default:
            return false;
    }
}

bool isBlank(const std::string& text) { return text.find_first_not_of(" \t\r\n") == std::string::npos; }

}  // namespace

std::string purgeKindName(PurgeKind kind) {
    switch (kind) {
        case PurgeKind::Block:
            return "block";
        case PurgeKind::DimStyle:
            return "dimension style";
        case PurgeKind::Group:
            return "group";
        case PurgeKind::Layer:
            return "layer";
        case PurgeKind::Linetype:
            return "linetype";
        case PurgeKind::MLeaderStyle:
            return "multileader style";
        case PurgeKind::TextStyle:
            return "text style";
        case PurgeKind::TableStyle:
            return "table style";
        case PurgeKind::ShapeFile:
            return "shape file";
        case PurgeKind::RegApp:
            return "registered application";
    }
    return "record";
}

std::vector<std::vector<Name>> unusedRecords(const doc::Document& document, std::span<const PurgeKind> kinds) {
    const Drawing& drawing = document.drawing();
    std::optional<engine::ReferenceCounts> counts;
    std::vector<std::vector<Name>> unused;
    for (const PurgeKind kind : kinds) {
        if (kind == PurgeKind::Group) {
            unused.push_back(emptyGroups(drawing));
        } else if (kind == PurgeKind::ShapeFile) {
            unused.push_back(unusedShapeFiles(drawing));
        } else if (kind == PurgeKind::RegApp) {
            unused.push_back(unusedApplications(drawing));
        } else {
            if (!counts) counts.emplace(drawing);
            unused.push_back(unusedBy(drawing, kind, *counts));
        }
    }
    return unused;
}

std::size_t purgeRecords(doc::Document& document, PurgeKind kind, const std::vector<Name>& names) {
    if (names.empty()) return 0;
    switch (kind) {
        case PurgeKind::Block:
            return each(names, [&](Name name) { return document.deleteBlock(name); });
        case PurgeKind::DimStyle:
            return each(names, [&](Name name) { return document.deleteStyle<engine::DimStyle>(name); });
        case PurgeKind::Group:
            return eraseRecords<doc::GroupTraits>(document, names);
        case PurgeKind::Layer:
            return each(names, [&](Name name) { return document.deleteLayer(name); });
        case PurgeKind::Linetype:
            return eraseRecords<doc::LineTypeTraits>(document, names);
        case PurgeKind::MLeaderStyle:
            return each(names, [&](Name name) { return document.deleteStyle<engine::MLeaderStyle>(name); });
        case PurgeKind::TextStyle:
            return each(names, [&](Name name) { return document.deleteStyle<engine::TextStyle>(name); });
        case PurgeKind::TableStyle:
            return each(names, [&](Name name) { return document.deleteStyle<engine::TableStyle>(name); });
        case PurgeKind::ShapeFile:
            document.editSettings([&](Drawing& drawing) {
                for (const Name& name : names)
                    std::erase_if(drawing.shapeFiles, [&](const std::string& file) { return name == Name(file); });
            });
            return names.size();
        case PurgeKind::RegApp:
            document.editSettings([&](Drawing& drawing) {
                for (const Name& name : names) std::erase(drawing.appIds, name);
            });
            return names.size();
    }
    return 0;
}

std::size_t purgeAll(doc::Document& document) {
    std::size_t total = 0;
    for (bool more = true; more;) {
        more = false;
        const auto unused = unusedRecords(document, kPurgeKinds);
        for (std::size_t i = 0; i < unused.size(); ++i) {
            const std::size_t purged = purgeRecords(document, kPurgeKinds[i], unused[i]);
            total += purged;
            more = more || purged != 0;
        }
    }
    return total;
}

std::vector<std::uint64_t> zeroLengthGeometry(const Drawing& drawing) { return unlockedWhere(drawing, hasNoLength); }

std::vector<std::uint64_t> emptyTexts(const Drawing& drawing) {
    return unlockedWhere(drawing, [](const Entity& entity) {
        if (entity.type() == engine::EntityType::Text)
            return isBlank(static_cast<const engine::TextEntity&>(entity).content);
        return entity.type() == engine::EntityType::MText &&
               isBlank(static_cast<const engine::MTextEntity&>(entity).content);
    });
}

}  // namespace kova::cmd
