// The reactor that keeps dimensions, leaders and hatches on what they are tied to.
#include "engine/associativity/associativity.hpp"
#include "engine/model/drawing.hpp"
#include "engine/entities/hatch.hpp"
#include "engine/entities/dimensions/leader.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

/// The points of entities that dimensions may be tied to, in the order of x, so that those near a place are found
/// fast.
class LinkablePoints {
public:
    LinkablePoints(const Drawing& drawing, const std::vector<std::uint64_t>& ids) {
        for (const std::uint64_t id : ids) {
            const Entity* entity = drawing.findById(id);
            if (entity == nullptr) continue;
            eachLinkablePoint(*entity, [&](DimensionLink link, const Vector2& p) {
                link.handle = entity->handle();
                items_.push_back({p, link, entity});
            });
        }
        std::stable_sort(items_.begin(), items_.end(), [](const Item& a, const Item& b) { return a.p.x < b.p.x; });
    }

    /// The link to the point at p, one of the same kind as `like` before any other; its `point` is like's.
    std::optional<DimensionLink> at(const Vector2& p, const DimensionLink& like) const {
        std::optional<DimensionLink> found;
        each(p, [&](const Item& item) {
            const bool alike = item.link.kind == like.kind && item.link.index == like.index;
            if (!found || alike) found = item.link;
            return alike;
        });
        if (found) found->point = like.point;
        return found;
    }
    /// The link to the circle or arc on which a radial or arc length dimension stands.
    std::optional<DimensionLink> arcOf(const DimensionEntity& d) const {
        Vector2 center = d.def1;
        double radius = d.def1.distance_to(d.def2);
        if (d.kind() == DimensionType::Diameter) {
            center = (d.def1 + d.def2) / 2.0;
            radius /= 2.0;
        } else if (d.kind() == DimensionType::ArcLength) {
            center = d.def3;
            radius = d.def1.distance_to(center);
        }
        std::optional<DimensionLink> found;
        each(center, [&](const Item& item) {
            if (item.link.kind != LinkKind::Center) return false;
            const auto arc = measuredArc(*item.entity, item.link.index);
            if (!arc || std::abs(arc->radius - radius) > reach(center) + 1e-8 * radius) return false;
            found = DimensionLink{0, LinkKind::Arc, item.link.handle, item.link.index, 0.0};
            return true;
        });
        return found;
    }

private:
    struct Item {
        Vector2 p;
        DimensionLink link;
        const Entity* entity;
    };
    static double reach(const Vector2& p) { return 1e-8 * std::max({1.0, std::abs(p.x), std::abs(p.y)}); }
    /// Until `take` says that it is done.
    template <class Take>
    void each(const Vector2& p, Take take) const {
        const double r = reach(p);
        auto it = std::lower_bound(items_.begin(), items_.end(), p.x - r,
                                   [](const Item& item, double x) { return item.p.x < x; });
        for (; it != items_.end() && it->p.x <= p.x + r; ++it)
            if (it->p.near_equal(p, r) && take(*it)) return;
    }

    std::vector<Item> items_;
};

/// True when the dimension stands where its links say.
bool standsOnLinks(const DimensionEntity& dimension, const Drawing& drawing) {
    DimensionEntity probe(dimension);
    return !followLinks(probe, drawing, dimension.owner());
}

}  // namespace

void AssociativityReactor::know(Drawing& drawing) {
    if (known_ == &drawing) return;
    known_ = &drawing;
    tied_.clear();
    dirty_.clear();
    added_.clear();
    copies_.clear();
    leaders_.clear();
    hatches_.clear();
    const auto scan = [this](const EntityList& list) {
        for (const Entity& entity : list) {
            if (hasDimensionLinks(entity)) index(static_cast<const DimensionEntity&>(entity));
            if (entity.type() == EntityType::Leader) leaders_.know(static_cast<const LeaderEntity&>(entity));
            if (entity.type() == EntityType::Hatch) hatches_.know(static_cast<const HatchEntity&>(entity));
        }
    };
    scan(drawing.modelSpace());
    for (const auto& layout : drawing.layouts()) scan(layout->entities);
    for (const auto& block : drawing.blocks()) scan(block->entities);
}

void AssociativityReactor::index(const DimensionEntity& dimension) {
    const auto tie = [&](std::uint64_t handle) {
        std::vector<std::uint64_t>& ids = tied_[handle];
        if (std::find(ids.begin(), ids.end(), dimension.id()) == ids.end()) ids.push_back(dimension.id());
    };
    for (const DimensionLink& link : dimensionLinks(dimension)) {
        tie(link.handle);
        if (link.viewport != 0) tie(link.viewport);
    }
}

void AssociativityReactor::entityAdded(Drawing& drawing, Entity& entity) {
    know(drawing);
    leaders_.entityAdded(entity);
    hatches_.entityAdded(entity);
    if (hasDimensionLinks(entity)) {
        index(static_cast<const DimensionEntity&>(entity));
        if (!standsOnLinks(static_cast<const DimensionEntity&>(entity), drawing)) copies_.push_back(entity.id());
    } else if (!tied_.empty()) {
        added_.push_back(entity.id());
    }
}

void AssociativityReactor::entityModified(Drawing& drawing, Entity& entity) {
    if (updating_) return;
    know(drawing);
    leaders_.entityModified(entity);
    hatches_.entityModified(entity);
    if (hasDimensionLinks(entity)) {
        index(static_cast<const DimensionEntity&>(entity));
        dirty_.insert(entity.id());
    }
    if (tied_.empty()) return;
    if (const auto it = tied_.find(entity.handle()); it != tied_.end())
        dirty_.insert(it->second.begin(), it->second.end());
}

void AssociativityReactor::entityErased(Drawing& drawing, Entity& entity) {
    know(drawing);
    leaders_.entityErased(entity);
    hatches_.entityErased(entity);
    // Dimensions stay where they are; their links come to life again when the entity comes back.
}

void AssociativityReactor::groupClosing(Drawing& drawing) {
    if (!copies_.empty()) tieCopies(drawing);
    added_.clear();
    updating_ = true;
    leaders_.close(drawing, modify_);
    hatches_.close(drawing, modify_);
    updating_ = false;
    if (dirty_.empty()) return;
    // In the order of their making, so that the history does not depend on hashing.
    std::vector<std::uint64_t> ids(dirty_.begin(), dirty_.end());
    dirty_.clear();
    std::sort(ids.begin(), ids.end());
    for (const std::uint64_t id : ids) {
        Entity* entity = drawing.findById(id);
        if (entity == nullptr || !hasDimensionLinks(*entity)) continue;
        auto& dimension = static_cast<DimensionEntity&>(*entity);
        if (!standsOnLinks(dimension, drawing)) change(dimension, [&](DimensionEntity& d) { followLinks(d, drawing); });
    }
}

void AssociativityReactor::change(DimensionEntity& dimension, const std::function<void(DimensionEntity&)>& edit) {
    updating_ = true;
    modify_(dimension, [&](Entity& entity) { edit(static_cast<DimensionEntity&>(entity)); });
    updating_ = false;
}

void AssociativityReactor::tieCopies(Drawing& drawing) {
    const std::vector<std::uint64_t> ids = std::exchange(copies_, {});
    const LinkablePoints points(drawing, added_);
    for (const std::uint64_t id : ids) {
        auto* dimension = dynamic_cast<DimensionEntity*>(drawing.findById(id));
        if (dimension == nullptr) continue;
        std::vector<DimensionLink> links;
        for (const DimensionLink& link : dimensionLinks(*dimension)) {
            const auto found = link.kind == LinkKind::Arc ? points.arcOf(*dimension)
                                                          : points.at(definitionPoint(*dimension, link.point), link);
            if (found) links.push_back(*found);
        }
        change(*dimension, [&](DimensionEntity& d) { setDimensionLinks(d, links); });
        index(*dimension);
    }
}

void AssociativityReactor::documentRestored(Drawing& drawing) {
    // The history brings dimensions, leaders and hatches back with what they are tied to.
    if (known_ == &drawing) {
        leaders_.refresh(drawing);
        hatches_.refresh(drawing);
    }
    know(drawing);
}

std::size_t AssociativityReactor::refreshAll(Drawing& drawing) {
    know(drawing);
    std::unordered_set<std::uint64_t> all;
    for (const auto& [handle, dimensions] : tied_) all.insert(dimensions.begin(), dimensions.end());
    std::size_t count = 0;
    for (const std::uint64_t id : all) {
        const Entity* entity = drawing.findById(id);
        if (entity == nullptr || !hasDimensionLinks(*entity)) continue;
        ++count;
        dirty_.insert(id);
    }
    return count;
}

}  // namespace kova::engine
