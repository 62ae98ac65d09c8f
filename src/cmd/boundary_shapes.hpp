#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "doc/document.hpp"
#include "engine/entities/hatch.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/path.hpp"
#include "math/boundary_search.hpp"

namespace kova::cmd {

/// Line work for a boundary search, and whose it is.
struct BoundaryWork {
    std::vector<math::BoundaryPiece> pieces;  ///< source: index into ids
    std::vector<std::uint64_t> ids;
    std::vector<math::BoundaryLoop> texts;  ///< boxes of texts, which count as islands
};

/// What the visible entities of the current space show as lines and arcs, other curves within 1e-6 of their size.
/// Hatches, points, pictures' contents and texts' letters are no boundaries. `only`: of these entities; null: of all.
BoundaryWork boundaryWork(doc::Document& document, const std::vector<std::uint64_t>* only = nullptr);

/// What selected objects enclose: their closed figures, and the areas that their open ones make together.
struct ClosedFigures {
    std::vector<engine::HatchLoop> loops;  ///< polylines where they can be, else edges
    std::vector<std::uint64_t> used;       ///< entities with a part in them
};
ClosedFigures closedFigures(doc::Document& document, std::span<const std::uint64_t> ids, double gap = 0.0);

/// A loop as a hatch keeps it.
engine::HatchLoop hatchLoop(const math::BoundaryLoop& loop, bool island);
/// A hatch's loop as lines and arcs (other edges approximated).
math::BoundaryLoop polylineLoop(const engine::HatchLoop& loop);
/// A closed polyline along a loop.
std::unique_ptr<engine::PolylineEntity> polylineOf(const math::BoundaryLoop& loop);

}  // namespace kova::cmd
