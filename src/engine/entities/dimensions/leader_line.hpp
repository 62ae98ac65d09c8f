#pragma once

#include <span>

#include "engine/model/name.hpp"
#include "math/curves/path.hpp"

namespace kova::engine {

/// The line of a leader or multileader through its vertices, straight or smooth, `startGap` shorter at its start (the
/// arrow's place; straight lines only). Points that are not finite are left out; empty for fewer than two.
Path leaderLine(std::span<const math::Vector2> vertices, bool splined, double startGap);

struct LeaderArrow {
    bool visible = false;
    math::Vector2 tip;
    math::Vector2 direction{1, 0};
    double lineGap = 0.0;  ///< the line begins this far behind the tip
};
/// The arrow at the first vertex; a size of 0 gives none.
LeaderArrow leaderArrow(std::span<const math::Vector2> vertices, double size, Name block);

}  // namespace kova::engine
