#pragma once

#include <vector>

#include "math/curves/spline_part.hpp"

namespace kova::math {

/// Most control points that the functions below make.
inline constexpr std::size_t kMaxSplinePoints = 5'000'000;

// Exact operations: the curve stays the same, point for point and parameter for parameter. They leave a curve that is
// not usable() as it is. By polar forms: a control point is the form at the knots around it.

/// Lets the curve begin and end at its first and last control point, with knots of multiplicity degree + 1.
void clampEnds(SplineData& curve);
/// Inserts the knot u (inside the domain) so often, up to a multiplicity of `degree`; clamps the ends. Gives the number
/// of control points added.
int insertKnot(SplineData& curve, double u, int times = 1);
/// Raises the degree; clamps the ends. False: not above the degree, above kMaxDegree, or too many points.
bool elevateDegree(SplineData& curve, int degree);

/// Takes out a control point, which changes the shape, and the inner knot nearest to where it acts. False when as few
/// as degree + 1 are left.
bool removeSplinePoint(SplineData& curve, std::size_t index);

}  // namespace kova::math
