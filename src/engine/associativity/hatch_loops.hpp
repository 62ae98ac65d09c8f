#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "engine/outline/line_work.hpp"
#include "math/curves/boundary_curve.hpp"
#include "math/curves/box_tree.hpp"

namespace kova::engine {

/// Lines and texts of entities, found by the loops that run along them.
class LoopCover {
public:
    LoopCover(const Drawing& drawing, const std::vector<const Entity*>& entities);

    /// Handles of the entities that a loop runs along, as few as may be; empty when a part of it lies on none. Parts
    /// up to `gap` long need no entity.
    std::vector<std::uint64_t> under(const HatchLoop& loop, double gap) const;

private:
    const Entity* textUnder(const HatchLoop& loop) const;

    std::vector<const Entity*> entities_;
    std::vector<math::BoundaryCurve> curves_;  ///< source: index into entities_
    std::vector<std::pair<HatchLoop, const Entity*>> texts_;
    std::optional<math::BoxTree> tree_;
    std::optional<math::BoxTree> textTree_;
};

/// Makes loops of hatches anew from their boundary objects. Searches among the same objects are shared.
class LoopMaker {
public:
    explicit LoopMaker(const Drawing& drawing, double gap) : drawing_(drawing), gap_(gap) {}

    struct Made {
        HatchLoop loop;
        /// For a loop round a picked point: a point of the area, to be picked from now on.
        std::optional<math::Vector2> seed;
    };
    /// The loop of a hatch as its objects make it now; the loop as it stands when they still make that. Nothing when
    /// they make none. `before`: extents of the objects when the loop was made; `all`: whether all of them changed.
    std::optional<Made> again(const HatchEntity& hatch, std::size_t loop, const math::Bounds2& before, bool all);

private:
    struct Search {
        std::vector<math::BoundaryPiece> pieces;
        std::unique_ptr<math::BoundarySearch> search;
        math::Bounds2 box;
    };
    /// The closed figures of an object, and the loops of the hatch that are made of it alone.
    struct Figures {
        std::vector<HatchLoop> figures;
        std::vector<std::size_t> loops;
        bool taken = false;
    };
    Search& searchAmong(const HatchLoop& loop);
    std::optional<Made> around(const HatchLoop& old, const math::Vector2& seed, const math::Bounds2& before, bool all);
    std::optional<Made> outline(const HatchLoop& old, const math::Bounds2& before);
    std::optional<Made> figure(const HatchEntity& hatch, std::size_t loop);

    const Drawing& drawing_;
    double gap_;
    std::map<std::vector<std::uint64_t>, Search> searches_;
    const HatchEntity* figuresOf_ = nullptr;
    std::unordered_map<std::uint64_t, Figures> figures_;  ///< by the object's handle, of the hatch that is worked on
};

/// Whether two loops have the same extents and area, within rounding and the approximation of curves.
bool sameFigure(const HatchLoop& a, const HatchLoop& b);

}  // namespace kova::engine
