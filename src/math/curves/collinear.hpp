#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "math/vector2.hpp"

namespace kova::math {

/// A straight stretch in a plane z = const.
struct FlatSegment {
    Vector2 a;
    Vector2 b;
    double z = 0.0;
};

/// Segments that lie in one line: places along it are origin + along * x.
struct CollinearGroup {
    struct Stretch {
        std::size_t index;  ///< of the segment
        double lo;
        double hi;
    };
    Vector2 origin;
    Vector2 along;  ///< unit
    std::vector<Stretch> stretches;
};

/// Groups the segments that lie in one line and one plane within `tolerance` (drawing units). Segments no longer than
/// the tolerance, with values that are not finite, or without company are in no group. Takes n log n.
std::vector<CollinearGroup> collinearGroups(std::span<const FlatSegment> segments, double tolerance);

/// True when a segment lies on the unbounded line of another one, within the tolerance and rounding.
bool inLineWith(const FlatSegment& segment, const FlatSegment& line, double tolerance);

}  // namespace kova::math
