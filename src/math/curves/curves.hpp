#pragma once

#include <array>
#include <optional>
#include <span>
#include <vector>

#include "math/angles.hpp"
#include "math/bounds2.hpp"
#include "math/vector2.hpp"

namespace kova::math {

/// The unit vector at `radians`, exact on the axes: cos and sin of quarter turns are 0 and 1 to the last bit.
Vector2 unitAt(double radians);

// Segments -----------------------------------------------------------------------------------------------

/// Parameter in [0, 1] of the point of segment ab nearest to p; 0 for a segment without length.
double closestParameterOnSegment(const Vector2& p, const Vector2& a, const Vector2& b);
Vector2 closestOnSegment(const Vector2& p, const Vector2& a, const Vector2& b);

// Circular arcs and bulges -------------------------------------------------------------------------------

/// A circular arc; a negative sweep runs clockwise.
struct CircularArc {
    Vector2 center;
    double radius = 0.0;
    double start = 0.0;  ///< angle of the start point, radians
    double sweep = 0.0;  ///< signed included angle, in [-2 pi, 2 pi]

    double end() const { return start + sweep; }
    Vector2 pointAt(double angle) const { return center + radius * unitAt(angle); }
    Vector2 midPoint() const { return pointAt(start + sweep / 2.0); }
    double length() const { return radius * std::abs(sweep); }
};

/// Bulges below this magnitude are straight: the arc's height would drown in the rounding of its centre.
inline constexpr double kStraightBulge = 1e-8;

/// The arc from a to b whose included angle has the tangent `bulge` of its quarter (positive: counter-clockwise);
/// nothing for a straight segment, coincident ends or a value that is not finite.
std::optional<CircularArc> arcFromBulge(const Vector2& a, const Vector2& b, double bulge);
/// The bulge of an included angle in (-2 pi, 2 pi).
double bulgeFromSweep(double sweep);
/// The bulge of the arc that leaves a in direction `tangent` and ends in b; 0 when b lies straight ahead.
double bulgeFromTangent(const Vector2& a, const Vector2& tangent, const Vector2& b);
/// The bulge of the arc from a over `through` to b; 0 when they are in line.
double bulgeThrough(const Vector2& a, const Vector2& through, const Vector2& b);
/// The point half-way along a bulged segment.
Vector2 bulgeMidPoint(const Vector2& a, const Vector2& b, double bulge);
/// Length of a bulged segment.
double bulgeLength(const Vector2& a, const Vector2& b, double bulge);

/// The centre of the circle through three points; nothing when they are in line or coincide.
std::optional<Vector2> circumcenter(const Vector2& a, const Vector2& b, const Vector2& c);
/// The arc from a over b to c, with the sign of its sense of turning; nothing when they are in line.
std::optional<CircularArc> arcThrough(const Vector2& a, const Vector2& b, const Vector2& c);

/// The point nearest to p on the circular arc that runs counter-clockwise from start to end.
/// At the centre the start point is as near as any.
Vector2 closestOnArc(const Vector2& p, const Vector2& center, double radius, double start, double end);

// Elliptic arcs: point(t) = center + u cos t + v sin t, for any two vectors u and v (conjugate radii) ----------

struct EllipticArc {
    Vector2 center;
    Vector2 u;
    Vector2 v;
    double t0 = 0.0;     ///< radians
    double t1 = kTwoPi;  ///< t1 < t0 runs clockwise

    Vector2 pointAt(double t) const {
        const Vector2 d = unitAt(t);
        return center + u * d.x + v * d.y;
    }
    Vector2 derivativeAt(double t) const {
        const Vector2 d = unitAt(t);
        return v * d.x - u * d.y;
    }
};

/// The principal axes of the ellipse with conjugate radii u and v: major and minor at right angles, minor a quarter
/// turn further in t; point(t) = center + major cos(t - shift) + minor sin(t - shift).
struct PrincipalAxes {
    Vector2 major;
    Vector2 minor;
    double shift = 0.0;
};
PrincipalAxes principalAxes(const Vector2& u, const Vector2& v);
/// The shift of the parameter at which u cos t + v sin t is longest, from the dot products of u and v (2-D or 3-D);
/// 0 for a circle.
double principalShift(double uu, double uv, double vv);

/// Angle from the major axis, seen from the centre, of the point with parameter t, and back. Both keep the turn:
/// a full turn of the one is a full turn of the other.
double ellipseParameterToAngle(double minorRatio, double t);
double ellipseAngleToParameter(double minorRatio, double angle);

/// Exact extents.
Bounds2 boundsOf(const EllipticArc& arc);
/// The parameter between t0 and t1 of the point nearest to p.
double closestParameter(const EllipticArc& arc, const Vector2& p);
/// Length by adaptive integration, relative error below 1e-9.
double lengthOf(const EllipticArc& arc);

// Cubic Bezier curves -------------------------------------------------------------------------------------

using Cubic = std::array<Vector2, 4>;

Vector2 cubicPoint(const Cubic& c, double t);
Vector2 cubicDerivative(const Cubic& c, double t);
Vector2 cubicSecondDerivative(const Cubic& c, double t);
/// The part of the curve from parameter t0 to t1.
Cubic cubicPart(const Cubic& c, double t0, double t1);
/// Exact extents (extremes of the curve, not its control points).
Bounds2 boundsOf(const Cubic& c);
/// The parameter in [0, 1] of the point nearest to p.
double closestParameter(const Cubic& c, const Vector2& p);
/// Length by adaptive integration, relative error below 1e-9.
double lengthOf(const Cubic& c);

}  // namespace kova::math
