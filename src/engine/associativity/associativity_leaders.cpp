#include "engine/associativity/associativity_leaders.hpp"

#include <algorithm>
#include <cmath>
#include <optional>

#include "engine/model/drawing.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/dimensions/leader.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/entities/text.hpp"
#include "engine/entities/dimensions/tolerance.hpp"
#include "math/angles.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Vector2;

namespace {

/// The point by which an annotation is placed, and which of its points that is.
struct Anchor {
    Vector2 point;
    int attachment = 0;
};

std::optional<Anchor> anchorOf(const Entity& entity) {
    switch (entity.type()) {
        case EntityType::MText: {
            const auto& text = static_cast<const MTextEntity&>(entity);
            return Anchor{text.position, text.attachment};
        }
        case EntityType::Text: {
            const auto& text = static_cast<const TextEntity&>(entity);
            return Anchor{text.position, text.hAlign * 16 + text.vAlign};
        }
        case EntityType::Tolerance:
            return Anchor{static_cast<const ToleranceEntity&>(entity).insertion, 0};
        case EntityType::BlockReference:
            return Anchor{static_cast<const BlockReferenceEntity&>(entity).insert, 0};
        default:
            return std::nullopt;
    }
}

/// Only texts and tolerances are met by a hook line.
bool takesHook(const Entity& annotation) { return annotation.type() != EntityType::BlockReference; }

/// A map of the plane that keeps shapes: p -> origin + (p - from) turned and scaled by `turn`, of the mirror image when
/// `mirrored`.
struct Similarity {
    Vector2 from;
    Vector2 to;
    Vector2 turn{1, 0};  ///< cosine and sine, times the scale
    bool mirrored = false;

    Vector2 operator()(const Vector2& p) const {
        Vector2 d = p - from;
        if (mirrored) d.y = -d.y;
        return to + Vector2{d.x * turn.x - d.y * turn.y, d.x * turn.y + d.y * turn.x};
    }
};

/// The map that takes one leader's line to the other's; nothing when none does.
std::optional<Similarity> mapBetween(const LeaderEntity& a, const LeaderEntity& b, bool mirrored) {
    const std::size_t n = a.vertices.size();
    if (n < 2 || b.vertices.size() != n) return std::nullopt;
    Similarity map{a.vertices.front(), b.vertices.front(), {1, 0}, mirrored};
    // The vertex farthest from the first one gives the direction.
    std::size_t far = 1;
    for (std::size_t i = 2; i < n; ++i)
        if (a.vertices[i].distance_to(map.from) > a.vertices[far].distance_to(map.from)) far = i;
    Vector2 d = a.vertices[far] - map.from;
    const Vector2 e = b.vertices[far] - map.to;
    if (mirrored) d.y = -d.y;
    const double square = d.dot(d);
    if (!(square > 0.0)) return std::nullopt;
    map.turn = {d.dot(e) / square, d.cross(e) / square};
    const double reach = 1e-6 * (e.length() + 1e-6 * std::max(std::abs(map.to.x), std::abs(map.to.y)));
    for (std::size_t i = 0; i < n; ++i)
        if (!map(a.vertices[i]).near_equal(b.vertices[i], reach)) return std::nullopt;
    return map;
}

/// The entities of a group that may be copies of annotations, by their places.
class Candidates {
public:
    Candidates(const Drawing& drawing, const std::vector<std::uint64_t>& ids) {
        for (const std::uint64_t id : ids) {
            const Entity* entity = drawing.findById(id);
            if (entity == nullptr || !anchorOf(*entity)) continue;
            const Bounds2 box = entity->bounds();
            if (!box.is_empty()) items_.push_back({box.center(), entity});
        }
        std::stable_sort(items_.begin(), items_.end(), [](const Item& a, const Item& b) { return a.p.x < b.p.x; });
    }
    /// The nearest one of a kind and list within a distance.
    const Entity* nearest(const Vector2& p, double reach, const Entity& like, const EntityList* list) const {
        const Entity* found = nullptr;
        auto it = std::lower_bound(items_.begin(), items_.end(), p.x - reach,
                                   [](const Item& item, double x) { return item.p.x < x; });
        for (; it != items_.end() && it->p.x <= p.x + reach; ++it) {
            const double distance = it->p.distance_to(p);
            if (distance > reach || it->entity->type() != like.type() || it->entity->owner() != list) continue;
            found = it->entity;
            reach = distance;
        }
        return found;
    }

private:
    struct Item {
        Vector2 p;
        const Entity* entity;
    };
    std::vector<Item> items_;
};

/// Handle of the annotation's copy that stands to the leader's copy as the annotation does to the leader; 0: none.
std::uint64_t copyOf(const Entity& annotation, const LeaderEntity& leader, const LeaderEntity& copy,
                     const Candidates& candidates) {
    const Bounds2 box = annotation.bounds();
    if (box.is_empty()) return 0;
    for (const bool mirrored : {false, true}) {
        const auto map = mapBetween(leader, copy, mirrored);
        if (!map) continue;
        // Texts of mirror images stay readable and so lie a little off.
        const double reach = 0.5 * map->turn.length() * (box.max - box.min).length();
        const Entity* found = candidates.nearest((*map)(box.center()), reach, annotation, copy.owner());
        if (found != nullptr) return found->handle();
    }
    return 0;
}

}  // namespace

void LeaderTies::clear() {
    stands_.clear();
    leadersOf_.clear();
    dirty_.clear();
    added_.clear();
    addedLeaders_.clear();
}

void LeaderTies::know(const LeaderEntity& leader) {
    if (leader.annotationHandle == 0 || leader.vertices.empty()) return;
    const Drawing* drawing = leader.drawing();
    const Entity* annotation = drawing != nullptr ? drawing->findByHandle(leader.annotationHandle) : nullptr;
    const auto anchor = annotation != nullptr ? anchorOf(*annotation) : std::nullopt;
    if (!anchor) return;
    stands_[leader.id()] = {leader.annotationHandle, anchor->attachment, anchor->point, leader.vertices.front(),
                            leader.vertices.back()};
    std::vector<std::uint64_t>& ids = leadersOf_[leader.annotationHandle];
    if (std::find(ids.begin(), ids.end(), leader.id()) == ids.end()) ids.push_back(leader.id());
}

void LeaderTies::entityAdded(const Entity& entity) {
    if (entity.type() == EntityType::Leader) {
        if (static_cast<const LeaderEntity&>(entity).annotationHandle != 0) addedLeaders_.push_back(entity.id());
    } else if (!leadersOf_.empty() && anchorOf(entity)) {
        added_.push_back(entity.id());
    }
}

void LeaderTies::entityModified(const Entity& entity) {
    if (entity.type() == EntityType::Leader) dirty_.insert(entity.id());
    if (leadersOf_.empty()) return;
    if (const auto it = leadersOf_.find(entity.handle()); it != leadersOf_.end())
        dirty_.insert(it->second.begin(), it->second.end());
}

void LeaderTies::entityErased(const Entity& entity) { entityModified(entity); }

void LeaderTies::follow(LeaderEntity& leader, const Stand& stand, const Entity& annotation,
                        const Modify& modify) const {
    const auto anchor = anchorOf(annotation);
    const Vector2 step = anchor->point - stand.anchor;
    if (!step.is_finite() || step == Vector2{}) return;
    modify(leader, [&](Entity& e) {
        auto& l = static_cast<LeaderEntity&>(e);
        const std::size_t n = l.vertices.size();
        Vector2 end = l.endPoint() + step;
        if (n < 2 || !takesHook(annotation)) {
            l.vertices.back() += step;
            return;
        }
        // Where the line meets the text: on the other side once the text has passed over to it.
        const Vector2 before = l.vertices[n - 2];
        const Bounds2 box = annotation.bounds();
        if (!box.is_empty() && !l.splined) {
            const bool right = l.hookDir != 0;
            const double gap = right ? box.min.x - end.x : end.x - box.max.x;
            if (gap >= 0.0 && (right ? before.x > box.max.x + gap : before.x < box.min.x - gap)) {
                end.x = right ? box.max.x + gap : box.min.x - gap;
                l.hookDir = right ? 0 : 1;
            }
        }
        const Vector2 way = end - before;
        const bool towards = (way.x < 0.0) == (l.hookDir == 0);
        l.hookLine = !towards || std::abs(std::atan2(way.y, std::abs(way.x))) > kLeaderHookAngle;
        l.vertices.back() = l.hookLine ? end - l.hookDirection() * l.effectiveArrowSize() : end;
    });
}

void LeaderTies::tieCopies(Drawing& drawing, const Modify& modify) {
    const std::vector<std::uint64_t> ids = std::exchange(addedLeaders_, {});
    const Candidates candidates(drawing, added_);
    for (const std::uint64_t id : ids) {
        auto* copy = dynamic_cast<LeaderEntity*>(drawing.findById(id));
        if (copy == nullptr || copy->annotationHandle == 0) continue;
        const Entity* annotation = drawing.findByHandle(copy->annotationHandle);
        const auto known = leadersOf_.find(copy->annotationHandle);
        // The leader of that annotation that was there before; without one this is no copy.
        const LeaderEntity* original = nullptr;
        if (known != leadersOf_.end())
            for (const std::uint64_t other : known->second) {
                const auto* leader = dynamic_cast<const LeaderEntity*>(drawing.findById(other));
                if (leader == nullptr || leader == copy || leader->annotationHandle != copy->annotationHandle) continue;
                original = leader;
                break;
            }
        if (annotation != nullptr && original == nullptr) {
            know(*copy);
            continue;
        }
        const std::uint64_t handle = annotation != nullptr ? copyOf(*annotation, *original, *copy, candidates) : 0;
        modify(*copy, [&](Entity& e) { static_cast<LeaderEntity&>(e).annotationHandle = handle; });
        know(*copy);
    }
}

void LeaderTies::close(Drawing& drawing, const Modify& modify) {
    if (!addedLeaders_.empty()) tieCopies(drawing, modify);
    added_.clear();
    if (dirty_.empty()) return;
    // In the order of their making, so that the history does not depend on hashing.
    std::vector<std::uint64_t> ids(dirty_.begin(), dirty_.end());
    dirty_.clear();
    std::sort(ids.begin(), ids.end());
    for (const std::uint64_t id : ids) {
        auto* leader = dynamic_cast<LeaderEntity*>(drawing.findById(id));
        if (leader == nullptr || leader->annotationHandle == 0 || leader->vertices.empty()) continue;
        const auto it = stands_.find(id);
        const Entity* annotation = drawing.findByHandle(leader->annotationHandle);
        if (annotation == nullptr) {
            // A handle that never named anything came with the file and goes back with it.
            if (it != stands_.end())
                modify(*leader, [](Entity& e) { static_cast<LeaderEntity&>(e).annotationHandle = 0; });
            continue;
        }
        const auto anchor = anchorOf(*annotation);
        if (anchor && it != stands_.end() && it->second.annotation == leader->annotationHandle &&
            it->second.attachment == anchor->attachment && it->second.start == leader->vertices.front() &&
            it->second.end == leader->vertices.back()) {
            const Stand stand = it->second;
            follow(*leader, stand, *annotation, modify);
        }
        know(*leader);
    }
}

void LeaderTies::refresh(const Drawing& drawing) {
    dirty_.clear();
    added_.clear();
    addedLeaders_.clear();
    for (const auto& [id, stand] : stands_)
        if (const auto* leader = dynamic_cast<const LeaderEntity*>(drawing.findById(id));
            leader != nullptr && leader->annotationHandle != 0 && stands_.contains(id))
            know(*leader);
}

}  // namespace kova::engine
