#pragma once

#include <span>
#include <vector>

#include "engine/entities/dimensions/mleader.hpp"

namespace kova::engine {

// Where multileaders' contents go when they are lined up. Each function gives, for every multileader, how far its
// content and the ends of its leader lines move together (see moveContent).

/// Straight onto the line through `base` along `direction`; no moves for a direction without length.
std::vector<math::Vector2> alignedSteps(std::span<const MLeaderEntity* const> leaders, const math::Vector2& base,
                                        math::Vector2 direction);
/// The same, with `spacing` from the box of one content to the next along the line; `first` (an index) keeps its place
/// and the others follow on both of its sides in the order in which they lie.
std::vector<math::Vector2> spacedSteps(std::span<const MLeaderEntity* const> leaders, std::size_t first,
                                       math::Vector2 direction, double spacing);
/// At even distances between two points, in the order in which they lie along the way.
std::vector<math::Vector2> distributedSteps(std::span<const MLeaderEntity* const> leaders, const math::Vector2& a,
                                            const math::Vector2& b);
/// So that the last part of each one's first leader line runs as `direction` does, as long as it is along it.
std::vector<math::Vector2> parallelSteps(std::span<const MLeaderEntity* const> leaders, math::Vector2 direction);

/// The direction of the last part of the first leader line, towards the content; (0, 0): there is none.
math::Vector2 lastLeaderDirection(const MLeaderEntity& leader);

/// Moves the content with the ends of the leader lines; the arrows stay.
void moveContent(MLeaderEntity& leader, const math::Vector2& step);

}  // namespace kova::engine
