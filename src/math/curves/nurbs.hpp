#pragma once

#include <array>
#include <functional>
#include <span>
#include <utility>
#include <vector>

#include "math/bounds2.hpp"
#include "math/curves/curves.hpp"
#include "math/vector2.hpp"
#include "math/vector3.hpp"

namespace kova::math {

/// Degrees above this are treated as this.
inline constexpr int kMaxDegree = 25;

/// A B-spline that somebody else holds: control points, knots (points + degree + 1 values that do not decrease) and,
/// when rational, weights.
struct SplineView {
    int degree = 3;
    std::span<const Vector2> points;
    std::span<const double> knots;
    std::span<const double> weights{};  ///< empty: not rational
    std::span<const double> z{};        ///< z of every point; empty: all 0

    /// True when the counts agree, the knots do not decrease, the domain is not empty, all numbers are finite and the
    /// weights are above 0. Looks at every value: ask once. The functions below check the counts only (an empty result
    /// or the first point when they disagree) and end for any numbers.
    bool usable() const;
    /// True when it has weights that differ.
    bool rational() const;
    double domainStart() const { return knots[static_cast<std::size_t>(degree)]; }
    double domainEnd() const { return knots[knots.size() - 1 - static_cast<std::size_t>(degree)]; }
};

/// The knots 0 0 0 0 1 2 .. n n n n of a clamped uniform spline; empty when there are not enough points.
std::vector<double> clampedUniformKnots(int degree, std::size_t pointCount);
/// The knots 0 1 2 3 ... of a uniform spline whose ends are free (a closed curve repeats its first points).
std::vector<double> uniformKnots(int degree, std::size_t pointCount);

/// The point at parameter u (clamped to the domain), by de Boor's rule.
Vector2 splinePoint(const SplineView& s, double u);
Vector3 splinePoint3(const SplineView& s, double u);
/// The point and its first two derivatives by u.
struct SplineDerivatives {
    Vector2 point;
    Vector2 first;
    Vector2 second;
};
SplineDerivatives splineDerivatives(const SplineView& s, double u);

/// Index i of the knot span [knots[i], knots[i + 1]) of the domain that holds u and is not empty. For counts that
/// agree.
std::size_t splineSpan(const SplineView& s, double u);

/// One polynomial or rational Bezier piece, in homogeneous coordinates (x w, y w, z w, w).
struct BezierPiece {
    double from = 0.0;  ///< the piece of the domain it covers
    double to = 0.0;
    int degree = 3;
    struct Point {
        double x, y, z, w;
    };
    std::array<Point, kMaxDegree + 1> points;
};
/// The polar form of the polynomial of a knot span, `degree` arguments, in homogeneous coordinates: with neighbouring
/// knots as arguments it gives control points. For counts that agree.
BezierPiece::Point splineBlossom(const SplineView& s, std::size_t span, std::span<const double> arguments);

/// Calls use(piece) for the pieces of the curve in order, as knot insertion makes them. Stops when `use` returns false.
void splitToBeziers(const SplineView& s, const std::function<bool(const BezierPiece&)>& use);

/// The curve as cubics: exact for polynomial splines of degree 1 to 3; else approximated by splitting until the
/// curves agree within `tolerance` (drawing units; at most 1024 cubics a knot span). `ends` is filled with the
/// parameter at which each cubic ends; both run through it alike.
std::vector<Cubic> splineToCubics(const SplineView& s, double tolerance, std::vector<double>* ends = nullptr);

/// Extents, exact up to rounding.
Bounds2 splineBounds(const SplineView& s);
/// The parameter of the point nearest to p.
double closestSplineParameter(const SplineView& s, const Vector2& p);

/// A cubic B-spline.
struct CubicSpline {
    std::vector<Vector2> points;
    std::vector<double> knots;
    /// Parameter of every fit point that was used.
    std::vector<double> fitParameters;
};
/// The cubic through the fit points. Knots are as far apart as the chord's length to the power of `knotPower`: 1 chord,
/// 0.5 square root (centripetal), 0 uniform. Coincident neighbours count once. A closed curve runs
/// back to its first point and is smooth there. A tangent is a direction of any length; the
/// zero vector leaves that end free (no curvature). Empty for fewer than two distinct points.
CubicSpline interpolateCubic(std::span<const Vector2> fitPoints, bool closed, const Vector2& startTangent = {},
                             const Vector2& endTangent = {}, double knotPower = 1.0);

}  // namespace kova::math
