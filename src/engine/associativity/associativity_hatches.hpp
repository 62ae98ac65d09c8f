#pragma once

#include <cstdint>
#include <functional>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "math/bounds2.hpp"

namespace kova::engine {

class Drawing;
class Entity;
class HatchEntity;

/// Keeps associative hatches on their boundary objects (`HatchLoop::sources`): when a group of changes closes, the
/// loops whose objects changed are made anew from them. A loop that no longer closes, an object that was erased, or a
/// hatch that was moved away alone ends the tie: the hatch stays as it is. The copy of a hatch is tied to the copies of
/// its objects, or to nothing. Part of AssociativityReactor.
class HatchTies {
public:
    /// Changes an entity of the drawing so that the change is recorded.
    using Modify = std::function<void(Entity&, const std::function<void(Entity&)>&)>;

    void clear();
    /// Notes the objects of a hatch and how it stands to them.
    void know(const HatchEntity& hatch);
    void entityAdded(const Entity& entity);
    void entityModified(const Entity& entity);
    void entityErased(const Entity& entity);
    /// Brings the hatches up to date at the end of a group.
    void close(Drawing& drawing, const Modify& modify);
    /// Looks afresh at the hatches that ever changed with their objects: after an undo or redo.
    void refresh(const Drawing& drawing);
    /// How many hatches have lost their boundary since the last call.
    std::size_t takeLost() { return std::exchange(lost_, 0); }

private:
    /// How a loop and its objects stood when the last group closed.
    struct Stand {
        math::Bounds2 loop;
        math::Bounds2 sources;
    };
    struct Change {
        bool itself = false;
        std::unordered_set<std::uint64_t> sources;  ///< handles of changed or erased objects
    };
    void index(const HatchEntity& hatch);
    void stand(const HatchEntity& hatch);
    void follow(Drawing& drawing, HatchEntity& hatch, const Change& change, const Modify& modify);
    void tieCopies(Drawing& drawing, const Modify& modify);
    void dissociate(HatchEntity& hatch, const Modify& modify);

    // Hatches go by their handles. Entries stay, so that they are true again when an undo brings a hatch back.
    std::unordered_map<std::uint64_t, std::unordered_set<std::uint64_t>> hatchesOf_;  ///< by the object's handle
    std::unordered_map<std::uint64_t, std::vector<Stand>> stands_;                    ///< to every loop
    std::unordered_map<std::uint64_t, Change> changes_;  ///< hatches to look at when the group closes
    std::unordered_set<std::uint64_t> touched_;          ///< hatches that were ever looked at
    std::vector<std::uint64_t> added_;                   ///< ids of entities added in the group
    std::vector<std::uint64_t> addedHatches_;            ///< ids of associative hatches added in the group
    std::size_t lost_ = 0;
};

}  // namespace kova::engine
