#pragma once

#include <span>
#include <vector>

#include "math/kernels/boundary_search.hpp"

namespace kova::math {

/// Closed figures of pieces that meet end to end.
struct EndLoops {
    std::vector<BoundaryLoop> loops;  ///< counter-clockwise
    std::size_t crossing = 0;         ///< figures left out because they cross themselves
};

/// The smallest figures that pieces close which share their ends (within `tolerance`, drawing units): where they
/// branch, one for each cell. Pieces that meet elsewhere do not touch each other for this. Takes n log n.
EndLoops endLoops(std::span<const BoundaryPiece> pieces, double tolerance);

/// True when a closed figure crosses or touches itself.
bool crossesItself(const BoundaryLoop& loop, double tolerance);

}  // namespace kova::math
