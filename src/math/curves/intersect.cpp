#include "math/curves/intersect.hpp"

#include <algorithm>
#include <cmath>

namespace kova::math {

namespace {

constexpr double kParallelSine = 1e-12;

/// Squared distance of p from segment ab is at most eps squared, for a p on the segment's line.
bool withinSegment(const Vector2& p, const Vector2& a, const Vector2& b, double eps) {
    const Vector2 d = b - a;
    const double length = d.length();
    if (!(length > 0.0)) return p.distance_to(a) <= eps;
    const double along = (p - a).dot(d) / length;
    return along >= -eps && along <= length + eps;
}

}  // namespace

std::optional<LineParameters> lineParameters(const Vector2& a, const Vector2& a2, const Vector2& b, const Vector2& b2) {
    const Vector2 d = a2 - a;
    const Vector2 e = b2 - b;
    const double cross = d.cross(e);
    if (!(std::abs(cross) > kParallelSine * d.length() * e.length())) return std::nullopt;
    const Vector2 ab = b - a;
    return LineParameters{ab.cross(e) / cross, ab.cross(d) / cross};
}

std::optional<Vector2> lineLine(const Vector2& a, const Vector2& a2, const Vector2& b, const Vector2& b2) {
    const auto at = lineParameters(a, a2, b, b2);
    if (!at) return std::nullopt;
    return a.lerp(a2, at->s);
}

std::optional<Vector2> segmentSegment(const Vector2& a, const Vector2& a2, const Vector2& b, const Vector2& b2,
                                      double eps) {
    if (const auto at = lineParameters(a, a2, b, b2)) {
        const double la = a.distance_to(a2);
        const double lb = b.distance_to(b2);
        if (at->s * la < -eps || at->s * la > la + eps || at->t * lb < -eps || at->t * lb > lb + eps)
            return std::nullopt;
        return a.lerp(a2, std::clamp(at->s, 0.0, 1.0));
    }
    // Parallel, or a segment without length: they meet in a point only where ends touch.
    std::optional<Vector2> only;
    const auto offer = [&](const Vector2& end, const Vector2& s0, const Vector2& s1) {
        if (closestOnSegment(end, s0, s1).distance_to(end) > eps) return true;
        if (only && only->distance_to(end) > eps) return false;  // a second place: they overlap
        if (!only) only = end;
        return true;
    };
    if (!offer(a, b, b2) || !offer(a2, b, b2) || !offer(b, a, a2) || !offer(b2, a, a2)) return std::nullopt;
    return only;
}

Hits lineCircle(const Vector2& a, const Vector2& b, const Vector2& center, double radius, double eps) {
    Hits hits;
    const Vector2 d = b - a;
    const double length = d.length();
    if (!(length > 0.0) || !(radius >= 0.0)) return hits;
    const Vector2 unit = d / length;
    const double side = unit.cross(center - a);  // signed distance of the centre from the line
    const Vector2 foot = center + unit.perpendicular() * -side;
    const double gap = radius - std::abs(side);
    if (gap < -eps) return hits;
    if (gap <= eps) {
        hits.add(foot);
        return hits;
    }
    const double half = std::sqrt(gap * (radius + std::abs(side)));
    hits.add(foot - unit * half);
    hits.add(foot + unit * half);
    return hits;
}

Hits segmentCircle(const Vector2& a, const Vector2& b, const Vector2& center, double radius, double eps) {
    Hits hits;
    for (const Vector2& p : lineCircle(a, b, center, radius, eps))
        if (withinSegment(p, a, b, eps)) hits.add(p);
    return hits;
}

Hits circleCircle(const Vector2& c1, double r1, const Vector2& c2, double r2, double eps) {
    Hits hits;
    const Vector2 d = c2 - c1;
    const double distance = d.length();
    if (!(distance > 0.0) || !(r1 >= 0.0) || !(r2 >= 0.0)) return hits;
    const Vector2 unit = d / distance;
    if (distance > r1 + r2 + eps || distance < std::abs(r1 - r2) - eps) return hits;
    // Distance of the common chord from c1, in a form that keeps its digits for circles of unequal size.
    const double along = 0.5 * (distance + (r1 - r2) * (r1 + r2) / distance);
    if (std::abs(distance - (r1 + r2)) <= eps || std::abs(distance - std::abs(r1 - r2)) <= eps) {
        hits.add(c1 + unit * std::copysign(r1, along));
        return hits;
    }
    const double half = std::sqrt(std::max(0.0, (r1 - along) * (r1 + along)));
    hits.add(c1 + unit * along + unit.perpendicular() * half);
    hits.add(c1 + unit * along - unit.perpendicular() * half);
    return hits;
}

bool onArc(const Vector2& p, const CircularArc& arc, double eps) {
    const double start = arc.sweep >= 0.0 ? arc.start : arc.start + arc.sweep;
    const double sweep = std::abs(arc.sweep);
    const Vector2 d = p - arc.center;
    if (std::abs(d.length() - arc.radius) > eps) return false;
    if (normalizeAngle(d.angle() - start) <= sweep) return true;
    return p.distance_to(arc.pointAt(start)) <= eps || p.distance_to(arc.pointAt(start + sweep)) <= eps;
}

namespace {

/// For a point that was computed as lying on the arc's circle: rounding must not lose it.
bool withinArc(const Vector2& p, const CircularArc& arc, double eps) {
    return onArc(p, arc, std::max(eps, 1e-12 * (arc.radius + arc.center.length())));
}

}  // namespace

Hits lineArc(const Vector2& a, const Vector2& b, const CircularArc& arc, double eps) {
    Hits hits;
    for (const Vector2& p : lineCircle(a, b, arc.center, arc.radius, eps))
        if (withinArc(p, arc, eps)) hits.add(p);
    return hits;
}

Hits segmentArc(const Vector2& a, const Vector2& b, const CircularArc& arc, double eps) {
    Hits hits;
    for (const Vector2& p : segmentCircle(a, b, arc.center, arc.radius, eps))
        if (withinArc(p, arc, eps)) hits.add(p);
    return hits;
}

Hits arcArc(const CircularArc& a, const CircularArc& b, double eps) {
    Hits hits;
    if (a.center.near_equal(b.center, eps) && std::abs(a.radius - b.radius) <= eps) {
        const auto offer = [&](const Vector2& p, const CircularArc& other) {
            if (!withinArc(p, other, eps)) return;
            for (const Vector2& known : hits)
                if (known.distance_to(p) <= eps) return;
            hits.add(p);
        };
        offer(a.pointAt(a.start), b);
        offer(a.pointAt(a.end()), b);
        offer(b.pointAt(b.start), a);
        offer(b.pointAt(b.end()), a);
        return hits;
    }
    for (const Vector2& p : circleCircle(a.center, a.radius, b.center, b.radius, eps))
        if (withinArc(p, a, eps) && withinArc(p, b, eps)) hits.add(p);
    return hits;
}

Hits lineEllipse(const Vector2& a, const Vector2& b, const Vector2& center, const Vector2& u, const Vector2& v) {
    Hits hits;
    const double det = u.cross(v);
    if (!(std::abs(det) > 0.0)) return hits;
    // In the frame of u and v the ellipse is the unit circle.
    const auto inFrame = [&](const Vector2& d) { return Vector2{d.cross(v) / det, u.cross(d) / det}; };
    for (const Vector2& p : lineCircle(inFrame(a - center), inFrame(b - center), {}, 1.0, 1e-12))
        hits.add(center + u * p.x + v * p.y);
    return hits;
}

}  // namespace kova::math
