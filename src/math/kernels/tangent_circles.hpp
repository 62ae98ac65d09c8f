#pragma once

#include <array>
#include <vector>

#include "math/vector2.hpp"

namespace kova::math {

/// A line (through a and b, unbounded) or a circle that another circle is to touch.
struct TangentCurve {
    bool isLine = true;
    Vector2 a;
    Vector2 b;
    Vector2 center;
    double radius = 0.0;

    static TangentCurve line(const Vector2& a, const Vector2& b) { return {true, a, b, {}, 0.0}; }
    static TangentCurve circle(const Vector2& center, double radius) { return {false, {}, {}, center, radius}; }
};

/// A circle that touches others, and where.
struct TangentCircle {
    Vector2 center;
    double radius = 0.0;
    std::array<Vector2, 3> touch;
};

/// All circles of that radius (above 0) which touch both curves, from within or without.
std::vector<TangentCircle> tangentCircles(const TangentCurve& first, const TangentCurve& second, double radius);
/// All circles that touch the three curves: at most eight, none for curves whose solutions are not isolated.
std::vector<TangentCircle> tangentCircles(const TangentCurve& first, const TangentCurve& second,
                                          const TangentCurve& third);

}  // namespace kova::math
