#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "doc/document.hpp"
#include "engine/entities/hatch.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/outline/line_work.hpp"
#include "math/curves/path.hpp"
#include "math/kernels/boundary_search.hpp"

namespace kova::cmd {

/// Said when a search was given up.
inline constexpr const char* kBoundaryGaveUp = "The boundary set crosses itself too often: choose a smaller one.";

/// Line work for a boundary search, and whose it is.
struct BoundaryWork {
    std::vector<math::BoundaryPiece> pieces;  ///< source: index into ids
    std::vector<std::uint64_t> ids;
    std::vector<math::BoundaryLoop> texts;  ///< boxes of texts, which count as islands; source as of the pieces
};

/// What the visible entities of the current space show as lines and arcs, other curves within 1e-6 of their size.
/// Hatches, points, pictures' contents and texts' letters are no boundaries. `only`: of these entities; null: of all.
BoundaryWork boundaryWork(doc::Document& document, const std::vector<std::uint64_t>* only = nullptr);

/// What selected objects enclose: their closed figures, and the areas that their open ones make together.
struct ClosedFigures {
    std::vector<engine::HatchLoop> loops;  ///< polylines where they can be, else edges; with their sources
    std::vector<std::uint64_t> used;       ///< entities with a part in them
    bool gaveUp = false;                   ///< the open ones meet too often to be worked out
};
ClosedFigures closedFigures(doc::Document& document, std::span<const std::uint64_t> ids, double gap = 0.0);

/// What selected curves close by themselves or end to end, as lines and arcs.
struct ClosedLoops {
    struct Loop {
        math::BoundaryLoop outline;  ///< counter-clockwise
        double elevation = 0.0;
    };
    std::vector<Loop> loops;
    std::vector<std::uint64_t> used;  ///< entities with a part in them
    std::size_t rejected = 0;         ///< figures that cross themselves or enclose nothing
};
ClosedLoops closedLoops(doc::Document& document, std::span<const std::uint64_t> ids);

using engine::hatchLoop;
using engine::polylineLoop;
/// A closed polyline along a loop.
std::unique_ptr<engine::PolylineEntity> polylineOf(const math::BoundaryLoop& loop);

}  // namespace kova::cmd
