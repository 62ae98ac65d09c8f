#include <algorithm>
#include <cmath>

#include "math/curves/path.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Cubic;
using math::EllipticArc;
using math::Vector2;
using Kind = PathElement::Kind;

namespace {

constexpr int kMaxChords = 4096;

Cubic cubicOf(const PathElement& e, const Vector2& from) { return {from, e.a, e.b, e.p}; }

EllipticArc arcOf(const PathElement& e) { return {e.center, e.a, e.b, e.t0, e.t1}; }

bool isCircular(const PathElement& e) {
    return (e.b.x == -e.a.y && e.b.y == e.a.x) || (e.b.x == e.a.y && e.b.y == -e.a.x);
}

/// A box that holds the element and costs next to nothing.
Bounds2 roughBounds(const PathElement& e, const Vector2& from) {
    Bounds2 box;
    box.expand(from);
    box.expand(e.p);
    if (e.kind == Kind::Cubic) {
        box.expand(e.a);
        box.expand(e.b);
    } else if (e.kind == Kind::Arc) {
        const Vector2 reach{std::abs(e.a.x) + std::abs(e.b.x), std::abs(e.a.y) + std::abs(e.b.y)};
        box.expand(e.center - reach);
        box.expand(e.center + reach);
    }
    return box;
}

double boxDistanceSquared(const Bounds2& box, const Vector2& p) {
    const double dx = std::max({box.min.x - p.x, 0.0, p.x - box.max.x});
    const double dy = std::max({box.min.y - p.y, 0.0, p.y - box.max.y});
    return dx * dx + dy * dy;
}

/// Parameter in [0, 1] of the point of an arc element nearest to p.
double closestOnArcElement(const PathElement& e, const Vector2& p) {
    const double sweep = e.t1 - e.t0;
    if (!(std::abs(sweep) > 0.0) || !std::isfinite(sweep)) return 0.0;
    if (!isCircular(e)) return (math::closestParameter(arcOf(e), p) - e.t0) / sweep;
    const Vector2 d = p - e.center;
    const double t = std::atan2(e.b.dot(d), e.a.dot(d));
    const double run = math::normalizeAngle(sweep > 0.0 ? t - e.t0 : e.t0 - t);
    if (run <= std::abs(sweep)) return run / std::abs(sweep);
    const Vector2 first = arcOf(e).pointAt(e.t0);
    return p.distance_to(first) <= p.distance_to(e.p) ? 0.0 : 1.0;
}

double closestOnElement(const PathElement& e, const Vector2& from, const Vector2& p) {
    switch (e.kind) {
        case Kind::Arc:
            return closestOnArcElement(e, p);
        case Kind::Cubic:
            return math::closestParameter(cubicOf(e, from), p);
        default:
            return math::closestParameterOnSegment(p, from, e.p);
    }
}

/// Number of chords that keep an element within the tolerance.
int chordCount(const PathElement& e, const Vector2& from, double tolerance) {
    double count = 1.0;
    if (e.kind == Kind::Arc) {
        const double radius = std::sqrt(e.a.length_squared() + e.b.length_squared());
        const double reach = isCircular(e) ? e.a.length() : radius;
        if (tolerance < reach) {
            // The height of a chord over a step of s radians is at most reach (1 - cos(s / 2)).
            const double step = 2.0 * std::acos(1.0 - tolerance / reach);
            count = std::abs(e.t1 - e.t0) / step;
        } else {
            count = std::abs(e.t1 - e.t0) / math::kPi * 2.0;
        }
    } else if (e.kind == Kind::Cubic) {
        const Vector2 d0 = from - e.a * 2.0 + e.b;
        const Vector2 d1 = e.a - e.b * 2.0 + e.p;
        count = std::sqrt(0.75 * std::sqrt(std::max(d0.length_squared(), d1.length_squared())) / tolerance);
    }
    if (!(count < kMaxChords)) return std::isnan(count) ? 1 : kMaxChords;
    return std::max(1, static_cast<int>(std::ceil(count)));
}

/// Which side of the line from a to b p lies on, above 0 to its left. A p on the line counts as moved a little to the
/// right, or up when the line is level: every p has exactly one side.
double side(const Vector2& a, const Vector2& b, const Vector2& p) {
    const double cross = (b - a).cross(p - a);
    if (cross != 0.0) return cross;
    return a.y == b.y ? b.x - a.x : a.y - b.y;
}

/// +1 or -1 when the ray from p to +x crosses the edge upwards or downwards.
int crossing(const Vector2& a, const Vector2& b, const Vector2& p) {
    if ((a.y > p.y) == (b.y > p.y)) return 0;
    if (a.y < b.y) return side(a, b, p) > 0.0 ? 1 : 0;
    return side(b, a, p) > 0.0 ? -1 : 0;
}

/// What the area between an arc and its chord adds to the winding number of p.
int arcWinding(const PathElement& e, const Vector2& from, const Vector2& p) {
    const double det = e.a.cross(e.b);
    if (!(std::abs(det) > 0.0)) return 0;
    const Vector2 d = p - e.center;
    if (!(Vector2{d.cross(e.b) / det, e.a.cross(d) / det}.length_squared() < 1.0)) return 0;
    const int turn = (e.t1 > e.t0) == (det > 0.0) ? 1 : -1;
    if (std::abs(e.t1 - e.t0) >= math::kTwoPi - 1e-12) return turn;
    const bool lower = from.y < e.p.y || (from.y == e.p.y && from.x < e.p.x);
    const double s = lower ? side(from, e.p, p) : -side(e.p, from, p);
    return (turn > 0 ? s < 0.0 : s > 0.0) ? turn : 0;
}

}  // namespace

Vector2 elementPoint(const PathElement& e, const Vector2& from, double t) {
    if (t == 1.0) return e.p;
    switch (e.kind) {
        case Kind::Arc:
            return arcOf(e).pointAt(e.t0 + (e.t1 - e.t0) * t);
        case Kind::Cubic:
            return math::cubicPoint(cubicOf(e, from), t);
        default:
            return from.lerp(e.p, t);
    }
}

Vector2 elementTangent(const PathElement& e, const Vector2& from, double t) {
    switch (e.kind) {
        case Kind::Arc:
            return arcOf(e).derivativeAt(e.t0 + (e.t1 - e.t0) * t) * (e.t1 - e.t0);
        case Kind::Cubic:
            return math::cubicDerivative(cubicOf(e, from), t);
        default:
            return e.p - from;
    }
}

double elementLength(const PathElement& e, const Vector2& from) {
    switch (e.kind) {
        case Kind::Move:
            return 0.0;
        case Kind::Arc:
            return math::lengthOf(arcOf(e));
        case Kind::Cubic:
            return math::lengthOf(cubicOf(e, from));
        default:
            return from.distance_to(e.p);
    }
}

Bounds2 elementBounds(const PathElement& e, const Vector2& from) {
    Bounds2 box;
    if (e.kind == Kind::Move) return box;
    box.expand(from);
    box.expand(e.p);
    if (e.kind == Kind::Arc && !box.contains_box(roughBounds(e, from))) {
        // The ends are known better than the arc's own functions give them, its extremes are not.
        const Bounds2 arc = math::boundsOf(arcOf(e));
        const double slack = 1e-12 * (e.a.length() + e.b.length());
        if (arc.min.x < box.min.x - slack) box.min.x = arc.min.x;
        if (arc.min.y < box.min.y - slack) box.min.y = arc.min.y;
        if (arc.max.x > box.max.x + slack) box.max.x = arc.max.x;
        if (arc.max.y > box.max.y + slack) box.max.y = arc.max.y;
    } else if (e.kind == Kind::Cubic) {
        box.expand(math::boundsOf(cubicOf(e, from)));
    }
    return box;
}

Bounds2 pathBounds(PathView path) {
    Bounds2 box;
    Vector2 from;
    for (const PathElement& e : path) {
        if (e.kind == Kind::Line || e.kind == Kind::Close) {
            box.expand(from);
            box.expand(e.p);
        } else if (e.kind != Kind::Move) {
            box.expand(elementBounds(e, from));
        }
        from = e.p;
    }
    return box;
}

double pathLength(PathView path) {
    double sum = 0.0;
    Vector2 from;
    for (const PathElement& e : path) {
        sum += elementLength(e, from);
        from = e.p;
    }
    return sum;
}

std::vector<std::vector<Vector2>> flattenPath(PathView path, double tolerance) {
    std::vector<std::vector<Vector2>> figures;
    std::vector<Vector2> figure;
    const auto put = [&](const Vector2& p) {
        if (p.is_finite()) figure.push_back(p);
    };
    const auto finish = [&] {
        if (figure.size() > 1) figures.push_back(std::move(figure));
        figure.clear();
    };
    if (!(tolerance > 0.0)) tolerance = 1e-6;
    Vector2 from;
    for (const PathElement& e : path) {
        if (e.kind == Kind::Move) {
            finish();
            put(e.p);
        } else if (e.kind == Kind::Line || e.kind == Kind::Close) {
            if (figure.empty()) put(from);
            if (e.kind == Kind::Line || figure.empty() || figure.back() != e.p) put(e.p);
            if (e.kind == Kind::Close) finish();
        } else {
            if (figure.empty()) put(from);
            const int count = chordCount(e, from, tolerance);
            for (int i = 1; i < count; ++i) put(elementPoint(e, from, static_cast<double>(i) / count));
            put(e.p);
        }
        from = e.p;
    }
    finish();
    return figures;
}

std::optional<PathPlace> nearestPlace(PathView path, const Vector2& p) {
    std::optional<PathPlace> best;
    double bestSquared = std::numeric_limits<double>::infinity();
    Vector2 from;
    for (std::size_t i = 0; i < path.size(); ++i) {
        const PathElement& e = path[i];
        const Vector2 start = from;
        from = e.p;
        if (e.kind == Kind::Move) continue;
        if (best && boxDistanceSquared(roughBounds(e, start), p) > bestSquared) continue;
        const double t = closestOnElement(e, start, p);
        const Vector2 point = elementPoint(e, start, t);
        const double squared = (point - p).length_squared();
        if (!best || squared < bestSquared) {
            best = PathPlace{point, std::sqrt(squared), i, t};
            bestSquared = std::isnan(squared) ? std::numeric_limits<double>::infinity() : squared;
        }
    }
    return best;
}

Vector2 nearestOnPath(PathView path, const Vector2& p) {
    const auto place = nearestPlace(path, p);
    return place ? place->point : p;
}

bool insidePath(PathView rings, const Vector2& p, bool evenOdd) {
    int winding = 0;
    Vector2 from;
    Vector2 start;
    for (const PathElement& e : rings) {
        switch (e.kind) {
            case Kind::Move:
                winding += crossing(from, start, p);
                start = e.p;
                break;
            case Kind::Line:
            case Kind::Close:
                winding += crossing(from, e.p, p);
                break;
            case Kind::Arc:
                winding += crossing(from, e.p, p) + arcWinding(e, from, p);
                break;
            case Kind::Cubic: {
                const Bounds2 box = roughBounds(e, from);
                if (!box.contains_point(p)) {
                    // Outside the hull the curve and its chord are crossed alike.
                    winding += crossing(from, e.p, p);
                    break;
                }
                const double size = std::max(box.width(), box.height());
                const int count = chordCount(e, from, 1e-6 * size);
                Vector2 a = from;
                for (int i = 1; i <= count; ++i) {
                    const Vector2 b = elementPoint(e, from, static_cast<double>(i) / count);
                    winding += crossing(a, b, p);
                    a = b;
                }
                break;
            }
        }
        from = e.p;
    }
    winding += crossing(from, start, p);
    return evenOdd ? (winding & 1) != 0 : winding != 0;
}

double pathArea(PathView path) {
    double doubled = 0.0;
    // Areas are taken about each figure's start, where large coordinates cancel least.
    Vector2 start;
    Vector2 from;
    for (const PathElement& e : path) {
        switch (e.kind) {
            case Kind::Move:
                start = e.p;
                break;
            case Kind::Line:
            case Kind::Close:
                doubled += (from - start).cross(e.p - start);
                break;
            case Kind::Arc:
                doubled += (e.center - start).cross(e.p - from) + e.a.cross(e.b) * (e.t1 - e.t0);
                break;
            case Kind::Cubic: {
                const double offset = std::sqrt(0.6) / 2.0;
                constexpr double weights[] = {5.0 / 18.0, 8.0 / 18.0, 5.0 / 18.0};
                const double places[] = {0.5 - offset, 0.5, 0.5 + offset};
                for (int i = 0; i < 3; ++i)
                    doubled += weights[i] *
                               (elementPoint(e, from, places[i]) - start).cross(elementTangent(e, from, places[i]));
                break;
            }
        }
        from = e.p;
    }
    return doubled / 2.0;
}

}  // namespace kova::engine
