#pragma once

#include <span>
#include <vector>

#include "math/vector2.hpp"

namespace kova::render {

/// A corner of a line with width: its place, and the widths with which it is reached and left.
struct WidePoint {
    math::Vector2 p;
    double widthIn = 0.0;
    double widthOut = 0.0;
};

/// The area of a line with width as convex quadrilaterals, one a segment, with mitred corners (flat where a corner is
/// too sharp or its widths differ). To be filled with the non-zero rule.
std::vector<std::array<math::Vector2, 4>> widenLine(std::span<const WidePoint> points, bool closed);

}  // namespace kova::render
