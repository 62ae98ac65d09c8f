#include "math/kernels/tangent_circles.hpp"

#include <algorithm>
#include <cmath>
#include <optional>
#include <span>

#include "math/curves/intersect.hpp"

namespace kova::math {

namespace {

/// Roundoff that a solution may be off a curve, as a part of the sizes at hand.
constexpr double kFit = 1e-7;

Vector2 lineNormal(const TangentCurve& line) { return (line.b - line.a).normalized().perpendicular(); }

/// Where the circle comes nearest to the curve's side that it touches.
Vector2 touchPoint(const TangentCurve& curve, const Vector2& center, double radius) {
    if (curve.isLine) {
        const Vector2 n = lineNormal(curve);
        return center - n * (center - curve.a).dot(n);
    }
    const Vector2 d = (center - curve.center).normalized();
    if (d == Vector2{}) return curve.center + Vector2{curve.radius, 0.0};
    // Both circles lie on one side of their common point, or on opposite sides.
    const double outer = std::abs(center.distance_to(curve.center) - (curve.radius + radius));
    const double inner = std::abs(center.distance_to(curve.center) - std::abs(curve.radius - radius));
    const bool around = inner < outer && radius > curve.radius;
    return curve.center + d * (around ? -curve.radius : curve.radius);
}

bool touches(const TangentCurve& curve, const Vector2& center, double radius) {
    const double size = std::max({radius, curve.radius, 1.0});
    if (curve.isLine) {
        return std::abs(std::abs((center - curve.a).dot(lineNormal(curve))) - radius) <=
               kFit * std::max(size, center.distance_to(curve.a));
    }
    const double d = center.distance_to(curve.center);
    return std::min(std::abs(d - (curve.radius + radius)), std::abs(d - std::abs(curve.radius - radius))) <=
           kFit * size;
}

void addSolution(std::vector<TangentCircle>& out, std::span<const TangentCurve* const> curves, const Vector2& center,
                 double radius) {
    if (!center.is_finite() || !std::isfinite(radius) || !(radius > kTolerance)) return;
    TangentCircle circle{center, radius, {}};
    for (std::size_t i = 0; i < curves.size(); ++i) {
        if (!touches(*curves[i], center, radius)) return;
        circle.touch[i] = touchPoint(*curves[i], center, radius);
    }
    const double same = kFit * std::max(radius, 1.0);
    for (const TangentCircle& known : out)
        if (known.center.near_equal(center, same) && std::abs(known.radius - radius) <= same) return;
    out.push_back(circle);
}

/// The curves on which the centre of a circle of that radius lies.
std::vector<TangentCurve> offsets(const TangentCurve& curve, double radius) {
    std::vector<TangentCurve> out;
    if (curve.isLine) {
        const Vector2 n = lineNormal(curve);
        if (n == Vector2{}) return out;
        for (const double side : {radius, -radius})
            out.push_back(TangentCurve::line(curve.a + n * side, curve.b + n * side));
        return out;
    }
    out.push_back(TangentCurve::circle(curve.center, curve.radius + radius));
    const double inner = std::abs(curve.radius - radius);
    if (inner > kTolerance) out.push_back(TangentCurve::circle(curve.center, inner));
    return out;
}

Hits intersect(const TangentCurve& a, const TangentCurve& b) {
    if (a.isLine && b.isLine) {
        Hits hits;
        if (const auto p = lineLine(a.a, a.b, b.a, b.b)) hits.add(*p);
        return hits;
    }
    if (a.isLine) return lineCircle(a.a, a.b, b.center, b.radius);
    if (b.isLine) return lineCircle(b.a, b.b, a.center, a.radius);
    return circleCircle(a.center, a.radius, b.center, b.radius);
}

/// x * p.x + y * p.y + r * radius = d: what a curve with a chosen side asks of the circle sought.
struct LinearCondition {
    double x;
    double y;
    double r;
    double d;
};

std::array<double, 3> cross(const LinearCondition& a, const LinearCondition& b) {
    return {a.y * b.r - a.r * b.y, a.r * b.x - a.x * b.r, a.x * b.y - a.y * b.x};
}

double determinant(const std::array<double, 9>& m) {
    return m[0] * (m[4] * m[8] - m[5] * m[7]) - m[1] * (m[3] * m[8] - m[5] * m[6]) + m[2] * (m[3] * m[7] - m[4] * m[6]);
}

/// The one point that meets three conditions; nothing when they do not cross in one.
std::optional<std::array<double, 3>> solve(const LinearCondition& a, const LinearCondition& b,
                                           const LinearCondition& c) {
    const double det = determinant({a.x, a.y, a.r, b.x, b.y, b.r, c.x, c.y, c.r});
    const auto length = [](const LinearCondition& l) { return std::sqrt(l.x * l.x + l.y * l.y + l.r * l.r); };
    if (!(std::abs(det) > 1e-12 * length(a) * length(b) * length(c))) return std::nullopt;
    return std::array<double, 3>{determinant({a.d, a.y, a.r, b.d, b.y, b.r, c.d, c.y, c.r}) / det,
                                 determinant({a.x, a.d, a.r, b.x, b.d, b.r, c.x, c.d, c.r}) / det,
                                 determinant({a.x, a.y, a.d, b.x, b.y, b.d, c.x, c.y, c.d}) / det};
}

}  // namespace

std::vector<TangentCircle> tangentCircles(const TangentCurve& first, const TangentCurve& second, double radius) {
    std::vector<TangentCircle> out;
    const TangentCurve* curves[2] = {&first, &second};
    for (const TangentCurve& a : offsets(first, radius))
        for (const TangentCurve& b : offsets(second, radius))
            for (const Vector2& center : intersect(a, b)) addSolution(out, curves, center, radius);
    return out;
}

std::vector<TangentCircle> tangentCircles(const TangentCurve& first, const TangentCurve& second,
                                          const TangentCurve& third) {
    std::vector<TangentCircle> out;
    const TangentCurve* curves[3] = {&first, &second, &third};
    const auto firstCircle = std::find_if(curves, curves + 3, [](const TangentCurve* c) { return !c->isLine; });
    // Coordinates about a point of the figure keep the squares small.
    const Vector2 origin = firstCircle != curves + 3 ? (*firstCircle)->center : first.a;
    for (int signs = 0; signs < 8; ++signs) {
        // A line asks n . p - s r = n . a. A circle asks |p - c|^2 = (r + s R)^2; taking one circle's condition from
        // another's leaves a linear one.
        std::vector<LinearCondition> linear;
        const TangentCurve* base = nullptr;
        double baseRadius = 0.0;
        for (int i = 0; i < 3; ++i) {
            const TangentCurve& curve = *curves[i];
            const double sign = (signs & (1 << i)) != 0 ? -1.0 : 1.0;
            if (curve.isLine) {
                const Vector2 n = lineNormal(curve);
                linear.push_back({n.x, n.y, -sign, n.dot(curve.a - origin)});
            } else if (base == nullptr) {
                base = &curve;
                baseRadius = sign * curve.radius;
            } else {
                const Vector2 c = curve.center - base->center;
                const double radius = sign * curve.radius;
                linear.push_back({2.0 * c.x, 2.0 * c.y, 2.0 * (radius - baseRadius),
                                  c.length_squared() - radius * radius + baseRadius * baseRadius});
            }
        }
        if (base == nullptr) {
            if (const auto s = solve(linear[0], linear[1], linear[2]))
                addSolution(out, curves, origin + Vector2{(*s)[0], (*s)[1]}, (*s)[2]);
            continue;
        }
        // The two linear conditions leave a line of (x, y, r), on which the circle's condition picks two points.
        const std::array<double, 3> way = cross(linear[0], linear[1]);
        const double length = std::sqrt(way[0] * way[0] + way[1] * way[1] + way[2] * way[2]);
        if (!(length > 1e-12)) continue;
        const LinearCondition across{way[0] / length, way[1] / length, way[2] / length, 0.0};
        const auto foot = solve(linear[0], linear[1], across);
        if (!foot) continue;
        const auto& [x, y, r] = *foot;
        const double qa = across.x * across.x + across.y * across.y - across.r * across.r;
        const double qb = x * across.x + y * across.y - (r + baseRadius) * across.r;
        const double qc = x * x + y * y - (r + baseRadius) * (r + baseRadius);
        std::vector<double> roots;
        if (std::abs(qa) < 1e-12) {
            if (qb != 0.0) roots.push_back(-0.5 * qc / qb);
        } else {
            double discriminant = qb * qb - qa * qc;
            if (discriminant < 0.0 && discriminant > -1e-12 * std::max(qb * qb, std::abs(qa * qc))) discriminant = 0.0;
            if (discriminant < 0.0) continue;
            for (const double side : {1.0, -1.0}) roots.push_back((-qb + side * std::sqrt(discriminant)) / qa);
        }
        for (const double t : roots)
            addSolution(out, curves, origin + Vector2{x + t * across.x, y + t * across.y}, r + t * across.r);
    }
    return out;
}

}  // namespace kova::math
