#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "math/vector2.hpp"

namespace kova::math {

/// What closes the gap that opens at an outer corner (OFFSETGAPTYPE).
enum class OffsetGap : std::uint8_t { Extended = 0, Round = 1, Bevelled = 2 };

/// A polyline parallel to another one.
struct OffsetPolyline {
    std::vector<Vector2> points;
    std::vector<double> bulges;        ///< as many as points
    std::vector<std::size_t> sources;  ///< of every segment: the one it runs along (a corner's: the one before it)
    bool closed = false;
};

/// The parallels of a polyline with arcs at `distance` (drawing units; positive: to the left of its direction), without
/// the parts that would come nearer to it than that: none, one, or several. Takes n log n for n segments.
/// `bulges` may be shorter than the points. Segments without length are passed over.
std::vector<OffsetPolyline> offsetPolyline(std::span<const Vector2> points, std::span<const double> bulges, bool closed,
                                           double distance, OffsetGap gap);

}  // namespace kova::math
