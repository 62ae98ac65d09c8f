#pragma once

#include <vector>

#include "math/curves/nurbs.hpp"

namespace kova::math {

/// A B-spline that holds its own data.
struct SplineData {
    int degree = 3;
    std::vector<Vector2> points;
    std::vector<double> knots;
    std::vector<double> weights;  ///< empty: not rational
    std::vector<double> z;        ///< empty: all 0

    SplineView view() const { return {degree, points, knots, weights, z}; }
};

/// The part of a spline between two parameters as a spline of the same degree with clamped ends: the very same curve,
/// by knot insertion (Boehm). Parameters are clamped to the domain; no points when nothing lies between them.
SplineData splinePart(const SplineView& s, double from, double to);

/// Appends a clamped spline of the same degree that starts where `head` ends: its first point and knots give way, its
/// parameters and weights are moved to follow.
void appendSpline(SplineData& head, const SplineData& tail);

}  // namespace kova::math
