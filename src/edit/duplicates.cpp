#include "edit/duplicates.hpp"

#include <unordered_map>
#include <unordered_set>

#include "edit/cell_index.hpp"
#include "edit/entity_copies.hpp"
#include "engine/inquiry/fingerprint.hpp"
#include "edit/overlaps.hpp"
#include "engine/associativity/associativity.hpp"
#include "engine/kinds/all.hpp"
#include "strings/numbers.hpp"

namespace kova::cmd {

using engine::Entity;

namespace {

/// The kind and the properties that must agree.
std::string propertiesOf(const Entity& entity, unsigned ignore) {
    std::string out = std::to_string(static_cast<int>(entity.type()));
    const auto add = [&](unsigned bit, std::string_view value) {
        out += '\n';
        if ((ignore & bit) == 0) out += value;
    };
    add(DuplicateRules::kColor, engine::colorText(entity.color));
    add(DuplicateRules::kLayer, entity.layer.folded());
    add(DuplicateRules::kLinetype, entity.linetype.folded());
    add(DuplicateRules::kLinetypeScale, strings::fixed(entity.linetypeScale(), 6));
    add(DuplicateRules::kLineweight, std::to_string(entity.lineweight));
    add(DuplicateRules::kThickness, strings::fixed(entity.thickness(), 6));
    add(DuplicateRules::kTransparency, std::to_string(entity.transparency));
    add(DuplicateRules::kPlotStyle, entity.plotStyleName().folded());
    const math::Vector3 n = entity.normal();
    add(0, strings::fixed(n.x, 6) + ' ' + strings::fixed(n.y, 6) + ' ' + strings::fixed(n.z, 6));
    return out;
}

struct Candidate {
    Entity* entity;
    std::string properties;
    std::vector<double> numbers;
};

/// What agrees in its properties and is left to be compared stretch by stretch.
struct Alike {
    std::vector<Entity*> segments;  ///< lines and polylines
    std::vector<Entity*> rounds;    ///< circles and arcs
};

/// Same numbers; the ends of a line may be exchanged.
bool sameShape(const Candidate& a, const Candidate& b, double tolerance) {
    const auto* la = dynamic_cast<const engine::LineEntity*>(a.entity);
    const auto* lb = dynamic_cast<const engine::LineEntity*>(b.entity);
    if (la != nullptr && lb != nullptr) {
        const auto equal = [&](const math::Vector3& p, const math::Vector3& q) {
            return near(p.x, q.x, tolerance) && near(p.y, q.y, tolerance) && near(p.z, q.z, tolerance);
        };
        return (equal(la->start3(), lb->start3()) && equal(la->end3(), lb->end3())) ||
               (equal(la->start3(), lb->end3()) && equal(la->end3(), lb->start3()));
    }
    if (a.numbers.size() != b.numbers.size() || !near(a.entity->elevation, b.entity->elevation, tolerance))
        return false;
    for (std::size_t i = 0; i < a.numbers.size(); ++i)
        if (!near(a.numbers[i], b.numbers[i], tolerance)) return false;
    return true;
}

/// Handles of what dimensions are tied to.
std::unordered_set<std::uint64_t> measuredHandles(engine::Drawing& drawing) {
    std::unordered_set<std::uint64_t> out;
    for (const Entity& entity : drawing.currentSpace()) {
        if (entity.type() != engine::EntityType::Dimension) continue;
        for (const auto& link : engine::dimensionLinks(static_cast<const engine::DimensionEntity&>(entity)))
            out.insert(link.handle);
    }
    return out;
}

}  // namespace

DuplicateCounts removeDuplicates(doc::Document& document, const std::vector<std::uint64_t>& ids,
                                 const DuplicateRules& rules) {
    DuplicateCounts counts;
    OverlapRemover overlaps(document, rules);
    if (rules.optimizePolylines)
        for (Entity* entity : entitiesInOrder(document, ids))
            if (auto* polyline = dynamic_cast<engine::PolylineEntity*>(entity))
                counts.overlaps += overlaps.polyline(*polyline);

    std::vector<Candidate> kept;
    CellIndex index(rules.tolerance);
    std::vector<std::uint64_t> gone;
    const std::unordered_set<std::uint64_t> tied =
        rules.keepAssociated ? measuredHandles(document.drawing()) : std::unordered_set<std::uint64_t>{};
    for (Entity* entity : entitiesInOrder(document, ids)) {
        Fingerprint print;
        entity->describe(print);
        Candidate candidate{entity, propertiesOf(*entity, rules.ignore), std::move(print.numbers)};
        // Which end of a line is in space does not matter: its ends are compared whole.
        if (entity->type() != engine::EntityType::Line) candidate.properties += '\n' + print.text;
        const math::Bounds2 box = entity->bounds();
        CellIndex::Place place{};
        if (!box.is_empty()) place = {box.center().x, box.center().y, box.width(), box.height()};
        const std::size_t seed = std::hash<std::string>{}(candidate.properties);
        std::size_t like = 0;
        const bool known = index.look(seed, place, [&](std::size_t other) {
            like = other;
            return kept[other].properties == candidate.properties && sameShape(kept[other], candidate, rules.tolerance);
        });
        if (known && !tied.contains(entity->handle())) {
            gone.push_back(entity->id());
            continue;
        }
        if (known && !tied.contains(kept[like].entity->handle())) {
            gone.push_back(kept[like].entity->id());
            kept[like] = std::move(candidate);
            continue;
        }
        index.insert(kept.size(), seed, place);
        kept.push_back(std::move(candidate));
    }
    counts.duplicates = document.removeEntities(gone);

    // The kind stands first in the properties: different kinds may belong together.
    std::unordered_map<std::string, Alike> alike;
    std::vector<Alike*> order;
    for (const Candidate& candidate : kept) {
        using engine::EntityType;
        const EntityType type = candidate.entity->type();
        const bool segment = type == EntityType::Line || type == EntityType::Polyline;
        if (!segment && type != EntityType::Circle && type != EntityType::Arc) continue;
        const std::string properties = propertiesOf(*candidate.entity, rules.ignore);
        const auto [it, fresh] = alike.try_emplace(properties.substr(properties.find('\n')));
        if (fresh) order.push_back(&it->second);
        (segment ? it->second.segments : it->second.rounds).push_back(candidate.entity);
    }
    for (Alike* set : order) {
        if (rules.optimizePolylines) {
            std::vector<std::uint64_t> ids;
            for (const Entity* entity : set->segments) ids.push_back(entity->id());
            counts.overlaps += overlaps.segments(set->segments);
            set->segments = entitiesInOrder(document, ids);
        }
        if (!rules.partialOverlap && !rules.endToEnd) continue;
        std::vector<engine::LineEntity*> lines;
        for (Entity* entity : set->segments)
            if (auto* line = dynamic_cast<engine::LineEntity*>(entity)) lines.push_back(line);
        counts.overlaps += overlaps.lines(lines);
        counts.overlaps += overlaps.arcs(set->rounds);
    }
    return counts;
}

}  // namespace kova::cmd
