#pragma once

#include <cstdint>
#include <functional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "math/vector2.hpp"

namespace kova::engine {

class Drawing;
class Entity;
class LeaderEntity;

/// Keeps leaders on their annotations (`LeaderEntity::annotationHandle`): when a group of changes closes, the end of a
/// leader has gone with its text, tolerance or block; a leader whose annotation was erased is tied to nothing; and the
/// copy of a leader is tied to the copy of its annotation, or to nothing. A leader that moves alone stays tied, from
/// where it then stands. Part of AssociativityReactor.
class LeaderTies {
public:
    /// Changes an entity of the drawing so that the change is recorded.
    using Modify = std::function<void(Entity&, const std::function<void(Entity&)>&)>;

    void clear();
    /// Notes how a leader stands to its annotation.
    void know(const LeaderEntity& leader);
    void entityAdded(const Entity& entity);
    void entityModified(const Entity& entity);
    void entityErased(const Entity& entity);
    /// Brings the leaders up to date at the end of a group.
    void close(Drawing& drawing, const Modify& modify);
    /// Looks at all known leaders afresh: after an undo or redo.
    void refresh(const Drawing& drawing);

private:
    /// How a leader stood when the last group closed.
    struct Stand {
        std::uint64_t annotation = 0;
        int attachment = 0;  ///< which point of the annotation `anchor` is
        math::Vector2 anchor;
        math::Vector2 start;  ///< first and last vertex
        math::Vector2 end;
    };
    void follow(LeaderEntity& leader, const Stand& stand, const Entity& annotation, const Modify& modify) const;
    void tieCopies(Drawing& drawing, const Modify& modify);

    /// By the leader's id; entries stay, so that they are true again when an undo brings a leader back.
    std::unordered_map<std::uint64_t, Stand> stands_;
    /// Annotation's handle to the ids of leaders that were ever tied to it.
    std::unordered_map<std::uint64_t, std::vector<std::uint64_t>> leadersOf_;
    std::unordered_set<std::uint64_t> dirty_;  ///< leaders to look at when the group closes
    std::vector<std::uint64_t> added_;         ///< ids of entities added in the group that may be annotations
    std::vector<std::uint64_t> addedLeaders_;  ///< ids of leaders added in the group with an annotation
};

}  // namespace kova::engine
