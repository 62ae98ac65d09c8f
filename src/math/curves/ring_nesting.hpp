#pragma once

#include <optional>
#include <span>
#include <vector>

#include "math/curves/path.hpp"

namespace kova::engine {

/// A closed polygon; the edge from the last point to the first is implied (a repeated last point does no harm).
using Ring = std::vector<math::Vector2>;

/// True when p lies inside an odd number of the rings.
bool insideRings(std::span<const Ring> rings, const math::Vector2& p);
/// A point inside the ring, away from its edges; nothing for a ring without area.
std::optional<math::Vector2> pointInside(std::span<const math::Vector2> ring);
/// In how many of the other groups each group of rings lies. Nothing when the groups are so many, or so deep in each
/// other, that finding out would take too long (kMaxRingTests).
std::optional<std::vector<int>> ringDepths(std::span<const std::vector<Ring>> groups);
inline constexpr std::size_t kMaxRingTests = 100'000'000;  ///< edges looked at

/// The rings of a path, its curves within `relative` of the size of its extents.
std::vector<Ring> ringsOf(PathView path, double relative = 1e-4);
/// Area inside an odd number of the path's figures, its curves within 1e-6 of the extents.
double evenOddArea(PathView path);
/// p when it lies inside the path's figures (even-odd), else the nearest point of the path.
math::Vector2 nearestInArea(PathView path, const math::Vector2& p);

}  // namespace kova::engine
