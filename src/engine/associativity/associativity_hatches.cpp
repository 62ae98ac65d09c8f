#include "engine/associativity/associativity_hatches.hpp"

#include <algorithm>
#include <map>

#include "engine/model/drawing.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/associativity/hatch_loops.hpp"
#include "engine/model/sysvar.hpp"
#include "math/curves/polygon.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Vector2;

namespace {

double gapOf(const Drawing& drawing) { return sysVarReal(drawing, "HPGAPTOL", 0.0); }

/// The object of a loop, while it stands in the hatch's space.
const Entity* sourceOf(const HatchEntity& hatch, std::uint64_t handle) {
    const Drawing* drawing = hatch.drawing();
    const Entity* entity = drawing != nullptr && handle != 0 ? drawing->findByHandle(handle) : nullptr;
    return entity != nullptr && entity != &hatch && entity->owner() == hatch.owner() ? entity : nullptr;
}

bool hasAllSources(const HatchEntity& hatch, const HatchLoop& loop) {
    return std::all_of(loop.sources.begin(), loop.sources.end(),
                       [&](std::uint64_t handle) { return sourceOf(hatch, handle) != nullptr; });
}

/// Whether loops of a hatch run along their own objects. `wanted` tells which loops are asked for.
template <class Wanted>
bool liesOnSources(const HatchEntity& hatch, double gap, const Wanted& wanted) {
    if (!inWorldPlane(hatch)) return false;
    std::vector<const Entity*> objects;
    std::unordered_set<std::uint64_t> seen;
    bool any = false;
    for (std::size_t i = 0; i < hatch.loops.size(); ++i) {
        if (hatch.loops[i].sources.empty() || !wanted(i)) continue;
        any = true;
        if (!hasAllSources(hatch, hatch.loops[i])) return false;
        for (const std::uint64_t handle : hatch.loops[i].sources)
            if (seen.insert(handle).second) objects.push_back(sourceOf(hatch, handle));
    }
    if (!any) return true;
    const LoopCover cover(*hatch.drawing(), objects);
    for (std::size_t i = 0; i < hatch.loops.size(); ++i)
        if (!hatch.loops[i].sources.empty() && wanted(i) && cover.under(hatch.loops[i], gap).empty()) return false;
    return true;
}

}  // namespace

void HatchTies::clear() {
    hatchesOf_.clear();
    stands_.clear();
    changes_.clear();
    touched_.clear();
    added_.clear();
    addedHatches_.clear();
}

void HatchTies::index(const HatchEntity& hatch) {
    for (const HatchLoop& loop : hatch.loops)
        for (const std::uint64_t handle : loop.sources) hatchesOf_[handle].insert(hatch.handle());
}

void HatchTies::stand(const HatchEntity& hatch) {
    std::vector<Stand>& stands = stands_[hatch.handle()];
    stands.assign(hatch.loops.size(), {});
    for (std::size_t i = 0; i < stands.size(); ++i) {
        const HatchLoop& loop = hatch.loops[i];
        if (loop.sources.empty()) continue;
        stands[i].loop = pathBounds(loop.path());
        for (const std::uint64_t handle : loop.sources)
            if (const Entity* source = sourceOf(hatch, handle)) stands[i].sources.expand(source->bounds());
    }
}

void HatchTies::know(const HatchEntity& hatch) {
    if (!hatch.isAssociative()) return;
    index(hatch);
    stand(hatch);
}

void HatchTies::entityAdded(const Entity& entity) {
    if (entity.type() == EntityType::Hatch) {
        const auto& hatch = static_cast<const HatchEntity&>(entity);
        if (!hatch.isAssociative()) return;
        index(hatch);
        addedHatches_.push_back(hatch.id());
    } else if (!hatchesOf_.empty()) {
        added_.push_back(entity.id());
    }
}

void HatchTies::entityModified(const Entity& entity) {
    if (entity.type() == EntityType::Hatch) {
        const auto& hatch = static_cast<const HatchEntity&>(entity);
        if (!hatch.isAssociative()) return;
        index(hatch);
        changes_[hatch.handle()].itself = true;
        return;
    }
    if (hatchesOf_.empty()) return;
    const auto it = hatchesOf_.find(entity.handle());
    if (it == hatchesOf_.end()) return;
    for (const std::uint64_t hatch : it->second) changes_[hatch].sources.insert(entity.handle());
}

void HatchTies::entityErased(const Entity& entity) {
    if (entity.type() != EntityType::Hatch) entityModified(entity);
}

void HatchTies::dissociate(HatchEntity& hatch, const Modify& modify) {
    modify(hatch, [](Entity& e) { static_cast<HatchEntity&>(e).dissociate(); });
}

void HatchTies::follow(Drawing& drawing, HatchEntity& hatch, const Change& change, const Modify& modify) {
    const double gap = gapOf(drawing);
    const auto known = stands_.find(hatch.handle());
    const auto standOf = [&](std::size_t i) {
        return known != stands_.end() && i < known->second.size() ? known->second[i] : Stand{};
    };
    const auto lose = [&] {
        dissociate(hatch, modify);
        ++lost_;
    };
    LoopMaker maker(drawing, gap);
    std::vector<bool> changed(hatch.loops.size());
    std::vector<std::pair<std::size_t, LoopMaker::Made>> made;
    for (std::size_t i = 0; i < hatch.loops.size(); ++i) {
        const HatchLoop& loop = hatch.loops[i];
        const auto isChanged = [&](std::uint64_t handle) { return change.sources.contains(handle); };
        const auto count = std::count_if(loop.sources.begin(), loop.sources.end(), isChanged);
        if (count == 0) continue;
        changed[i] = true;
        if (!inWorldPlane(hatch) || !hasAllSources(hatch, loop)) return lose();
        const bool all = static_cast<std::size_t>(count) == loop.sources.size();
        auto again = maker.again(hatch, i, standOf(i).sources, all);
        if (!again) return lose();
        if (!sameFigure(again->loop, loop)) made.emplace_back(i, std::move(*again));
    }
    // Moved alone, in whole or in part?
    if (change.itself && !liesOnSources(hatch, gap, [&](std::size_t i) {
            if (changed[i]) return false;
            const Bounds2 was = standOf(i).loop;
            const Bounds2 now = pathBounds(hatch.loops[i].path());
            return was.is_empty() || was.min != now.min || was.max != now.max;
        }))
        return lose();
    if (made.empty()) return;
    modify(hatch, [&](Entity& e) {
        auto& h = static_cast<HatchEntity&>(e);
        for (auto& [i, fresh] : made) {
            if (fresh.seed) {
                const math::BoundaryLoop old = polylineLoop(h.loops[i]);
                const auto inside = [&](const Vector2& p) { return math::pointInPolygon(p, old.points, old.bulges); };
                const auto seed = std::find_if(h.seedPoints.begin(), h.seedPoints.end(), inside);
                if (seed != h.seedPoints.end())
                    *seed = *fresh.seed;
                else
                    h.seedPoints.push_back(*fresh.seed);
            }
            h.loops[i] = std::move(fresh.loop);
        }
    });
}

void HatchTies::tieCopies(Drawing& drawing, const Modify& modify) {
    const std::vector<std::uint64_t> ids = std::exchange(addedHatches_, {});
    const double gap = gapOf(drawing);
    std::map<const EntityList*, LoopCover> covers;  // what was added, by space
    for (const std::uint64_t id : ids) {
        auto* hatch = dynamic_cast<HatchEntity*>(drawing.findById(id));
        if (hatch == nullptr || !hatch->isAssociative()) continue;
        if (liesOnSources(*hatch, gap, [](std::size_t) { return true; })) {
            know(*hatch);
            continue;
        }
        if (!covers.contains(hatch->owner())) {
            std::vector<const Entity*> entities;
            for (const std::uint64_t added : added_)
                if (const Entity* entity = drawing.findById(added); entity && entity->owner() == hatch->owner())
                    entities.push_back(entity);
            covers.try_emplace(hatch->owner(), drawing, entities);
        }
        const LoopCover& cover = covers.at(hatch->owner());
        std::vector<std::vector<std::uint64_t>> sources(hatch->loops.size());
        bool all = inWorldPlane(*hatch);
        for (std::size_t i = 0; all && i < sources.size(); ++i) {
            if (hatch->loops[i].sources.empty()) continue;
            sources[i] = cover.under(hatch->loops[i], gap);
            all = !sources[i].empty();
        }
        if (!all) {
            dissociate(*hatch, modify);
            continue;
        }
        modify(*hatch, [&](Entity& e) {
            auto& h = static_cast<HatchEntity&>(e);
            for (std::size_t i = 0; i < sources.size(); ++i) h.loops[i].sources = std::move(sources[i]);
        });
        know(*hatch);
    }
}

void HatchTies::close(Drawing& drawing, const Modify& modify) {
    if (!addedHatches_.empty()) tieCopies(drawing, modify);
    added_.clear();
    if (changes_.empty()) return;
    const auto changes = std::exchange(changes_, {});
    // In the order of their making, so that the history does not depend on hashing.
    std::vector<std::uint64_t> handles;
    for (const auto& [handle, change] : changes) handles.push_back(handle);
    std::sort(handles.begin(), handles.end());
    for (const std::uint64_t handle : handles) {
        touched_.insert(handle);
        auto* hatch = dynamic_cast<HatchEntity*>(drawing.findByHandle(handle));
        if (hatch == nullptr || !hatch->isAssociative()) continue;
        follow(drawing, *hatch, changes.at(handle), modify);
        if (hatch = dynamic_cast<HatchEntity*>(drawing.findByHandle(handle)); hatch != nullptr) know(*hatch);
    }
}

void HatchTies::refresh(const Drawing& drawing) {
    changes_.clear();
    added_.clear();
    addedHatches_.clear();
    for (const std::uint64_t handle : touched_)
        if (const auto* hatch = dynamic_cast<const HatchEntity*>(drawing.findByHandle(handle))) know(*hatch);
}

}  // namespace kova::engine
