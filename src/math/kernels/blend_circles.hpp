#pragma once

#include <functional>
#include <vector>

#include "math/curves/nurbs.hpp"

namespace kova::math {

/// A plane curve by its parameter, as a search along it needs it.
struct ParametricCurve {
    std::function<SplineDerivatives(double)> at;  ///< point and first two derivatives
    std::vector<double> stops;  ///< rising: the ends, and where the curve may have corners or changes its bending fast
    int chords = 32;            ///< looked at between two stops; 1: a straight curve
    bool closed = false;        ///< the last stop is the first one again
};

/// A circle that touches two curves, or (radius 0) a point where they meet.
struct BlendCircle {
    Vector2 center;
    double s = 0.0;  ///< parameter on the first curve
    double t = 0.0;
    Vector2 first;  ///< where it touches the first curve
    Vector2 second;
};

/// The circles of a radius (0 or above) that touch two curves: the meetings of their parallels on all sides, found
/// along chords and refined by Newton's method to rounding. The work is bounded: what more than 4096 pairs of chords
/// would give is left out, and so are curves that run along each other.
/// Coordinates should be small beside the curves' size; those who call move them.
std::vector<BlendCircle> blendCircles(const ParametricCurve& first, const ParametricCurve& second, double radius);

}  // namespace kova::math
