#include "render/flatten.hpp"

#include "math/angles.hpp"

namespace kova::render {

using engine::PathElement;
using math::Bounds2;
using math::Vector2;

namespace {
constexpr int kMaxDepth = 24;
}

Figure& Flattener::begin(const Vector2& p) {
    if (count_ == figures_.size()) figures_.emplace_back();
    Figure& figure = figures_[count_++];
    figure.points.clear();
    figure.elements.clear();
    figure.closed = false;
    figure.points.push_back(p);
    return figure;
}

void Flattener::add(const Vector2& p, std::uint32_t index) {
    Figure& figure = figures_[count_ - 1];
    figure.points.push_back(p);
    figure.elements.push_back(index);
}

template <class Curve>
void Flattener::subdivide(const Curve& curve, double t0, const Vector2& p0, double t1, const Vector2& p1, int depth,
                          std::uint32_t index) {
    const double tm = (t0 + t1) / 2.0;
    const Vector2 pm = curve(tm);
    const Vector2 chord = p1 - p0;
    const double length = chord.length();
    const auto deviation = [&](const Vector2& p) {
        return length > 1e-9 ? std::abs(chord.cross(p - p0)) / length : p0.distance_to(p);
    };
    double worst = deviation(pm);
    // The middle of an S-curve may lie on its chord; look at the quarters too.
    if (worst <= kTolerance) worst = std::max(deviation(curve((t0 + tm) / 2.0)), deviation(curve((tm + t1) / 2.0)));
    if (depth <= 0 || !(worst > kTolerance)) return add(p1, index);
    Bounds2 box;
    box.expand(p0);
    box.expand(p1);
    box.expand(pm);
    if (!box.inflated(worst + length).intersects(view_.pixels)) return add(p1, index);
    subdivide(curve, t0, p0, tm, pm, depth - 1, index);
    subdivide(curve, tm, pm, t1, p1, depth - 1, index);
}

void Flattener::addArc(const PathElement& e, std::uint32_t index) {
    const Vector2 center = view_.map(e.center);
    const Vector2 u = view_.mapDirection(e.a);
    const Vector2 v = view_.mapDirection(e.b);
    const auto curve = [&](double t) { return center + u * std::cos(t) + v * std::sin(t); };
    const double sweep = std::clamp(e.t1 - e.t0, -64.0 * math::kTwoPi, 64.0 * math::kTwoPi);
    const double radius = std::max(u.length(), v.length());
    if (!std::isfinite(sweep) || !std::isfinite(radius)) return;
    if (radius < 2000.0) {
        // The sagitta of a chord over the angle s is r (1 - cos(s / 2)).
        const double step = 2.0 * std::acos(std::max(0.0, 1.0 - kTolerance / std::max(radius, kTolerance)));
        const int n = std::max(radius < 0.5 ? 1 : 4, static_cast<int>(std::ceil(std::abs(sweep) / step)));
        for (int i = 1; i <= n; ++i) add(curve(e.t0 + sweep * i / n), index);
        return;
    }
    const int quarters = std::max(1, static_cast<int>(std::ceil(std::abs(sweep) / (math::kPi / 2.0))));
    double t0 = e.t0;
    Vector2 p0 = curve(t0);
    for (int i = 1; i <= quarters; ++i) {
        const double t1 = e.t0 + sweep * i / quarters;
        const Vector2 p1 = curve(t1);
        subdivide(curve, t0, p0, t1, p1, kMaxDepth, index);
        t0 = t1;
        p0 = p1;
    }
}

void Flattener::flatten(engine::PathView path) {
    count_ = 0;
    Vector2 start;
    bool open = false;
    std::uint32_t drawn = 0;
    for (const PathElement& e : path) {
        const Vector2 p = view_.map(e.p);
        if (!p.is_finite() && e.kind != PathElement::Kind::Close) {
            open = false;
            continue;
        }
        if (e.kind == PathElement::Kind::Move) {
            begin(p);
            start = p;
            open = true;
            continue;
        }
        if (e.kind == PathElement::Kind::Close) {
            if (open) {
                if (!(figures_[count_ - 1].points.back() == start)) add(start, drawn);
                figures_[count_ - 1].closed = true;
            }
            ++drawn;
            continue;
        }
        if (!open) {
            start = e.kind == PathElement::Kind::Arc ? view_.map(e.center + e.a * std::cos(e.t0) + e.b * std::sin(e.t0))
                                                     : p;
            if (!start.is_finite()) continue;
            begin(start);
            open = true;
        }
        switch (e.kind) {
            case PathElement::Kind::Line:
                add(p, drawn);
                break;
            case PathElement::Kind::Arc:
                addArc(e, drawn);
                break;
            case PathElement::Kind::Cubic: {
                const Vector2 p0 = figures_[count_ - 1].points.back();
                const Vector2 c1 = view_.map(e.a);
                const Vector2 c2 = view_.map(e.b);
                const auto curve = [&](double t) {
                    const double s = 1.0 - t;
                    return p0 * (s * s * s) + c1 * (3.0 * s * s * t) + c2 * (3.0 * s * t * t) + p * (t * t * t);
                };
                if (c1.is_finite() && c2.is_finite()) subdivide(curve, 0.0, p0, 1.0, p, kMaxDepth, drawn);
                break;
            }
            default:
                break;
        }
        ++drawn;
    }
}

bool clipSegment(Vector2& a, Vector2& b, const Bounds2& box) {
    double t0 = 0.0;
    double t1 = 1.0;
    const Vector2 d = b - a;
    const auto edge = [&](double p, double q) {
        if (p == 0.0) return q >= 0.0;
        const double r = q / p;
        if (p < 0.0)
            t0 = std::max(t0, r);
        else
            t1 = std::min(t1, r);
        return t0 <= t1;
    };
    if (!edge(-d.x, a.x - box.min.x) || !edge(d.x, box.max.x - a.x) || !edge(-d.y, a.y - box.min.y) ||
        !edge(d.y, box.max.y - a.y))
        return false;
    const Vector2 from = a;
    if (t1 < 1.0) b = from + d * t1;
    if (t0 > 0.0) a = from + d * t0;
    return true;
}

std::vector<Vector2> clipPolygon(std::vector<Vector2> polygon, const Bounds2& box) {
    std::vector<Vector2> out;
    for (int side = 0; side < 4 && !polygon.empty(); ++side) {
        const bool vertical = side < 2;
        const double limit = side == 0 ? box.min.x : side == 1 ? box.max.x : side == 2 ? box.min.y : box.max.y;
        const double sign = side % 2 == 0 ? 1.0 : -1.0;
        const auto inside = [&](const Vector2& p) { return sign * ((vertical ? p.x : p.y) - limit) >= 0.0; };
        out.clear();
        Vector2 previous = polygon.back();
        for (const Vector2& p : polygon) {
            if (inside(p) != inside(previous)) {
                const double from = vertical ? previous.x : previous.y;
                const double to = vertical ? p.x : p.y;
                Vector2 cut = previous.lerp(p, (limit - from) / (to - from));
                (vertical ? cut.x : cut.y) = limit;
                out.push_back(cut);
            }
            if (inside(p)) out.push_back(p);
            previous = p;
        }
        polygon.swap(out);
    }
    return polygon;
}

}  // namespace kova::render
