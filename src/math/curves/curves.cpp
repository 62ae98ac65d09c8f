#include "math/curves/curves.hpp"

#include <algorithm>

namespace kova::math {

namespace {

/// Below this a sine or cosine is the rounding of a quarter turn: no other double lies as near to one.
constexpr double kAxisSnap = 4e-16;

struct Slope {
    double g;   ///< half the derivative of the squared distance
    double dg;  ///< its derivative
};

/// A root of f in [lo, hi] where f rises from below 0 to above: a local minimum of the distance.
/// Newton steps inside a shrinking bracket.
template <class F>
double refineMinimum(const F& f, double lo, double hi) {
    double t = 0.5 * (lo + hi);
    for (int i = 0; i < 120 && hi - lo > 0.0; ++i) {
        const Slope s = f(t);
        if (s.g < 0.0) {
            lo = t;
        } else if (s.g > 0.0) {
            hi = t;
        } else if (s.dg < 0.0) {
            hi = t;  // exactly on a maximum: a minimum lies to its left
        } else {
            return t;
        }
        const double newton = t - s.g / s.dg;
        const double next = newton > lo && newton < hi ? newton : 0.5 * (lo + hi);
        if (next == t || next <= lo || next >= hi) break;
        if (std::abs(next - t) <= 1e-16 * std::max(1.0, std::abs(t)) && s.dg > 0.0) return next;
        t = next;
    }
    return t;
}

/// The parameter in [lo, hi] of the least distance. `f` gives the slope, `distance` the squared distance;
/// `steps` samples separate the minima, and a pair of roots within one step is found by the slope's own extreme.
template <class F, class D>
double closestParameterBySlope(double lo, double hi, int steps, const F& f, const D& distance) {
    double best = lo;
    double bestDistance = distance(lo);
    const auto offer = [&](double t) {
        const double d = distance(t);
        if (d < bestDistance) {
            best = t;
            bestDistance = d;
        }
    };
    double t = lo;
    Slope s = f(lo);
    for (int i = 1; i <= steps; ++i) {
        const double tn = i == steps ? hi : lo + (hi - lo) * i / steps;
        const Slope sn = f(tn);
        if (s.g < 0.0 && sn.g > 0.0) {
            offer(refineMinimum(f, t, tn));
        } else if (s.g < 0.0 && sn.g < 0.0 && s.dg > 0.0 && sn.dg < 0.0) {
            // The slope rises and falls again between two samples below 0: it may cross 0 in between.
            double a = t;
            double b = tn;
            for (int k = 0; k < 60; ++k) {
                const double mid = 0.5 * (a + b);
                const Slope sm = f(mid);
                if (sm.g > 0.0) {
                    offer(refineMinimum(f, t, mid));
                    break;
                }
                (sm.dg > 0.0 ? a : b) = mid;
            }
        } else if (s.g > 0.0 && sn.g > 0.0 && s.dg < 0.0 && sn.dg > 0.0) {
            double a = t;
            double b = tn;
            for (int k = 0; k < 60; ++k) {
                const double mid = 0.5 * (a + b);
                const Slope sm = f(mid);
                if (sm.g < 0.0) {
                    offer(refineMinimum(f, mid, tn));
                    break;
                }
                (sm.dg < 0.0 ? a : b) = mid;
            }
        }
        offer(tn);
        t = tn;
        s = sn;
    }
    return best;
}

constexpr std::array<double, 4> kGaussNodes{0.1834346424956498, 0.5255324099163290, 0.7966664774136267,
                                            0.9602898564975363};
constexpr std::array<double, 4> kGaussWeights{0.3626837833783620, 0.3137066458778873, 0.2223810344533745,
                                              0.1012285362903763};

template <class F>
double gauss8(const F& f, double lo, double hi) {
    const double mid = 0.5 * (lo + hi);
    const double half = 0.5 * (hi - lo);
    double sum = 0.0;
    for (std::size_t i = 0; i < kGaussNodes.size(); ++i)
        sum += kGaussWeights[i] * (f(mid - half * kGaussNodes[i]) + f(mid + half * kGaussNodes[i]));
    return sum * half;
}

template <class F>
double integrate(const F& f, double lo, double hi, double whole, double allowed, int depth) {
    const double mid = 0.5 * (lo + hi);
    const double left = gauss8(f, lo, mid);
    const double right = gauss8(f, mid, hi);
    if (depth == 0 || !std::isfinite(whole) || std::abs(left + right - whole) <= allowed) return left + right;
    return integrate(f, lo, mid, left, 0.5 * allowed, depth - 1) +
           integrate(f, mid, hi, right, 0.5 * allowed, depth - 1);
}

template <class F>
double integrate(const F& f, double lo, double hi) {
    const double whole = gauss8(f, lo, hi);
    return integrate(f, lo, hi, whole, 1e-10 * std::abs(whole), 20);
}

}  // namespace

Vector2 unitAt(double radians) {
    Vector2 d{std::cos(radians), std::sin(radians)};
    if (std::abs(d.x) < kAxisSnap) d = {0.0, d.y > 0.0 ? 1.0 : -1.0};
    if (std::abs(d.y) < kAxisSnap) d = {d.x > 0.0 ? 1.0 : -1.0, 0.0};
    return d;
}

double closestParameterOnSegment(const Vector2& p, const Vector2& a, const Vector2& b) {
    const Vector2 d = b - a;
    const double lengthSquared = d.length_squared();
    if (!(lengthSquared > 0.0)) return 0.0;
    return std::clamp((p - a).dot(d) / lengthSquared, 0.0, 1.0);
}

Vector2 closestOnSegment(const Vector2& p, const Vector2& a, const Vector2& b) {
    const double t = closestParameterOnSegment(p, a, b);
    return t == 1.0 ? b : a.lerp(b, t);
}

// Circular arcs and bulges -------------------------------------------------------------------------------

std::optional<CircularArc> arcFromBulge(const Vector2& a, const Vector2& b, double bulge) {
    if (!(std::abs(bulge) >= kStraightBulge)) return std::nullopt;
    const Vector2 chord = b - a;
    const double length = chord.length();
    if (!(length > 0.0)) return std::nullopt;
    CircularArc arc;
    arc.center = (a + b) * 0.5 + chord.perpendicular() * (0.25 / bulge - 0.25 * bulge);
    arc.radius = length * (0.25 / std::abs(bulge) + 0.25 * std::abs(bulge));
    if (!arc.center.is_finite() || !std::isfinite(arc.radius)) return std::nullopt;
    arc.start = (a - arc.center).angle();
    arc.sweep = 4.0 * std::atan(bulge);
    return arc;
}

double bulgeFromSweep(double sweep) { return std::tan(sweep / 4.0); }

double bulgeFromTangent(const Vector2& a, const Vector2& tangent, const Vector2& b) {
    const Vector2 chord = b - a;
    const double cross = tangent.cross(chord);
    const double dot = tangent.dot(chord);
    if (std::abs(cross) <= 1e-14 * std::abs(dot)) return 0.0;
    return std::tan(std::atan2(cross, dot) / 2.0);
}

double bulgeThrough(const Vector2& a, const Vector2& through, const Vector2& b) {
    const Vector2 d1 = through - a;
    const Vector2 d2 = b - through;
    const double cross = d1.cross(d2);
    const double dot = d1.dot(d2);
    if (!(std::abs(cross) > 1e-14 * std::abs(dot))) return 0.0;
    return std::tan(std::atan2(cross, dot) / 2.0);
}

Vector2 bulgeMidPoint(const Vector2& a, const Vector2& b, double bulge) {
    const Vector2 middle = (a + b) * 0.5;
    return std::isfinite(bulge) ? middle - (b - a).perpendicular() * (bulge * 0.5) : middle;
}

double bulgeLength(const Vector2& a, const Vector2& b, double bulge) {
    const auto arc = arcFromBulge(a, b, bulge);
    return arc ? arc->length() : a.distance_to(b);
}

std::optional<Vector2> circumcenter(const Vector2& a, const Vector2& b, const Vector2& c) {
    const Vector2 ab = b - a;
    const Vector2 ac = c - a;
    const double d = 2.0 * ab.cross(ac);
    if (!(std::abs(d) > 1e-12 * ab.length() * ac.length())) return std::nullopt;
    const double ab2 = ab.length_squared();
    const double ac2 = ac.length_squared();
    const Vector2 center = a + Vector2{ac.y * ab2 - ab.y * ac2, ab.x * ac2 - ac.x * ab2} / d;
    if (!center.is_finite()) return std::nullopt;
    return center;
}

std::optional<CircularArc> arcThrough(const Vector2& a, const Vector2& b, const Vector2& c) {
    const auto center = circumcenter(a, b, c);
    if (!center) return std::nullopt;
    CircularArc arc;
    arc.center = *center;
    arc.radius = center->distance_to(a);
    arc.start = (a - *center).angle();
    const double end = (c - *center).angle();
    arc.sweep = (b - a).cross(c - b) > 0.0 ? sweepAngle(arc.start, end) : -sweepAngle(end, arc.start);
    return arc;
}

Vector2 closestOnArc(const Vector2& p, const Vector2& center, double radius, double start, double end) {
    const Vector2 d = p - center;
    const double distance = d.length();
    const Vector2 first = center + radius * unitAt(start);
    if (!(distance > 0.0) || !std::isfinite(start) || !std::isfinite(end)) return first;
    if (angleInSweep(d.angle(), start, end)) return center + d * (radius / distance);
    const Vector2 last = center + radius * unitAt(end);
    return p.distance_to(last) < p.distance_to(first) ? last : first;
}

// Elliptic arcs ------------------------------------------------------------------------------------------

double principalShift(double uu, double uv, double vv) {
    const double size = uu + vv;
    if (std::abs(uv) <= 1e-14 * size) {
        // At right angles already; the longer one leads.
        return vv > uu * (1.0 + 1e-12) ? kPi / 2.0 : 0.0;
    }
    return 0.5 * std::atan2(2.0 * uv, uu - vv);
}

PrincipalAxes principalAxes(const Vector2& u, const Vector2& v) {
    PrincipalAxes axes;
    axes.shift = principalShift(u.length_squared(), u.dot(v), v.length_squared());
    const Vector2 d = unitAt(axes.shift);
    axes.major = u * d.x + v * d.y;
    axes.minor = v * d.x - u * d.y;
    return axes;
}

double ellipseParameterToAngle(double minorRatio, double t) {
    const Vector2 d = unitAt(t);
    const double angle = std::atan2(minorRatio * d.y, d.x);
    return angle + kTwoPi * std::round((t - angle) / kTwoPi);
}

double ellipseAngleToParameter(double minorRatio, double angle) {
    const Vector2 d = unitAt(angle);
    const double t = std::atan2(d.y, minorRatio * d.x);
    return t + kTwoPi * std::round((angle - t) / kTwoPi);
}

Bounds2 boundsOf(const EllipticArc& arc) {
    Bounds2 box;
    box.expand(arc.pointAt(arc.t0));
    box.expand(arc.pointAt(arc.t1));
    const double lo = std::min(arc.t0, arc.t1);
    const double hi = std::max(arc.t0, arc.t1);
    if (!std::isfinite(lo) || !std::isfinite(hi)) return box;
    // Whether the parameter e, or one that differs by whole turns, lies between the ends.
    const auto passes = [&](double e) { return e + kTwoPi * std::ceil((lo - e) / kTwoPi) <= hi; };
    const double ex = std::atan2(arc.v.x, arc.u.x);
    const double ey = std::atan2(arc.v.y, arc.u.y);
    const double rx = std::hypot(arc.u.x, arc.v.x);
    const double ry = std::hypot(arc.u.y, arc.v.y);
    if (passes(ex)) box.max.x = std::max(box.max.x, arc.center.x + rx);
    if (passes(ex + kPi)) box.min.x = std::min(box.min.x, arc.center.x - rx);
    if (passes(ey)) box.max.y = std::max(box.max.y, arc.center.y + ry);
    if (passes(ey + kPi)) box.min.y = std::min(box.min.y, arc.center.y - ry);
    return box;
}

double closestParameter(const EllipticArc& arc, const Vector2& p) {
    double t1 = arc.t1;
    if (std::abs(t1 - arc.t0) > kTwoPi) t1 = arc.t0 + std::copysign(kTwoPi, t1 - arc.t0);
    if (!std::isfinite(arc.t0) || !std::isfinite(t1)) return arc.t0;
    // Run upwards, so that a minimum is always a rise through 0.
    const double lo = std::min(arc.t0, t1);
    const double hi = std::max(arc.t0, t1);
    const auto slope = [&](double t) {
        const double c = std::cos(t);
        const double s = std::sin(t);
        const Vector2 radial = arc.u * c + arc.v * s;
        const Vector2 tangent = arc.v * c - arc.u * s;
        const Vector2 d = arc.center + radial - p;
        return Slope{d.dot(tangent), tangent.dot(tangent) - d.dot(radial)};
    };
    const auto distance = [&](double t) {
        return (arc.center + arc.u * std::cos(t) + arc.v * std::sin(t) - p).length_squared();
    };
    const int steps = std::clamp(static_cast<int>(std::ceil((hi - lo) / kTwoPi * 48.0)), 6, 48);
    return closestParameterBySlope(lo, hi, steps, slope, distance);
}

double lengthOf(const EllipticArc& arc) {
    const double sweep = std::abs(arc.t1 - arc.t0);
    const double u2 = arc.u.length_squared();
    const double v2 = arc.v.length_squared();
    if (std::abs(u2 - v2) <= 1e-14 * u2 && std::abs(arc.u.dot(arc.v)) <= 1e-14 * u2) return std::sqrt(u2) * sweep;
    return integrate([&](double t) { return (arc.v * std::cos(t) - arc.u * std::sin(t)).length(); },
                     std::min(arc.t0, arc.t1), std::max(arc.t0, arc.t1));
}

// Cubic Bezier curves ------------------------------------------------------------------------------------

Vector2 cubicPoint(const Cubic& c, double t) {
    const double s = 1.0 - t;
    return c[0] * (s * s * s) + c[1] * (3.0 * s * s * t) + c[2] * (3.0 * s * t * t) + c[3] * (t * t * t);
}

Vector2 cubicDerivative(const Cubic& c, double t) {
    const double s = 1.0 - t;
    return (c[1] - c[0]) * (3.0 * s * s) + (c[2] - c[1]) * (6.0 * s * t) + (c[3] - c[2]) * (3.0 * t * t);
}

Vector2 cubicSecondDerivative(const Cubic& c, double t) {
    return (c[2] - c[1] * 2.0 + c[0]) * (6.0 * (1.0 - t)) + (c[3] - c[2] * 2.0 + c[1]) * (6.0 * t);
}

Cubic cubicPart(const Cubic& c, double t0, double t1) {
    const auto blossom = [&](double a, double b, double d) {
        const auto mix = [](const Vector2& p, const Vector2& q, double t) { return p * (1.0 - t) + q * t; };
        const Vector2 p01 = mix(c[0], c[1], a);
        const Vector2 p12 = mix(c[1], c[2], a);
        const Vector2 p23 = mix(c[2], c[3], a);
        return mix(mix(p01, p12, b), mix(p12, p23, b), d);
    };
    return {blossom(t0, t0, t0), blossom(t0, t0, t1), blossom(t0, t1, t1), blossom(t1, t1, t1)};
}

Bounds2 boundsOf(const Cubic& c) {
    Bounds2 box;
    box.expand(c[0]);
    box.expand(c[3]);
    if (box.contains_point(c[1]) && box.contains_point(c[2])) return box;
    for (std::size_t axis = 0; axis < 2; ++axis) {
        // The derivative, up to a factor: a t^2 + 2 b t + d.
        const double q0 = c[1][axis] - c[0][axis];
        const double q1 = c[2][axis] - c[1][axis];
        const double q2 = c[3][axis] - c[2][axis];
        const double a = q0 - 2.0 * q1 + q2;
        const double b = q1 - q0;
        const double discriminant = b * b - a * q0;
        if (!(discriminant >= 0.0)) continue;
        // q holds the root sum without cancellation; one root is q / a, the other q0 / q.
        const double q = -(b + std::copysign(std::sqrt(discriminant), b));
        for (const double t : {q / a, q0 / q})
            if (t > 0.0 && t < 1.0) box.expand(cubicPoint(c, t));
    }
    return box;
}

double closestParameter(const Cubic& c, const Vector2& p) {
    const auto slope = [&](double t) {
        const Vector2 d = cubicPoint(c, t) - p;
        const Vector2 first = cubicDerivative(c, t);
        return Slope{d.dot(first), first.dot(first) + d.dot(cubicSecondDerivative(c, t))};
    };
    const auto distance = [&](double t) { return (cubicPoint(c, t) - p).length_squared(); };
    return closestParameterBySlope(0.0, 1.0, 16, slope, distance);
}

double lengthOf(const Cubic& c) {
    return integrate([&](double t) { return cubicDerivative(c, t).length(); }, 0.0, 1.0);
}

}  // namespace kova::math
