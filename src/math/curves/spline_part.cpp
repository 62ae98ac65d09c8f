#include "math/curves/spline_part.hpp"

#include <algorithm>

namespace kova::math {

namespace {

/// A control point in homogeneous coordinates.
struct Point {
    double x, y, z, w;

    static Point mix(const Point& a, const Point& b, double t) {
        const auto at = [t](double p, double q) { return p + (q - p) * t; };
        return {at(a.x, b.x), at(a.y, b.y), at(a.z, b.z), at(a.w, b.w)};
    }
};

/// Inserts u (within the domain) until it stands `degree` times.
void insertKnot(std::vector<double>& knots, std::vector<Point>& points, std::size_t degree, double u) {
    for (;;) {
        const auto [first, last] = std::equal_range(knots.begin(), knots.end(), u);
        const auto multiplicity = static_cast<std::size_t>(last - first);
        if (multiplicity >= degree) return;
        const auto span = static_cast<std::size_t>(last - knots.begin()) - 1;
        const std::size_t begin = span - degree + 1;
        const std::size_t end = span - multiplicity;
        std::vector<Point> fresh;
        for (std::size_t i = begin; i <= end; ++i)
            fresh.push_back(Point::mix(points[i - 1], points[i], (u - knots[i]) / (knots[i + degree] - knots[i])));
        points.insert(points.begin() + static_cast<std::ptrdiff_t>(end), fresh.back());
        std::copy(fresh.begin(), fresh.end(), points.begin() + static_cast<std::ptrdiff_t>(begin));
        knots.insert(last, u);
    }
}

}  // namespace

SplineData splinePart(const SplineView& s, double from, double to) {
    SplineData part;
    part.degree = s.degree;
    if (!s.usable()) return part;
    const double width = s.domainEnd() - s.domainStart();
    // A cut next to a knot is a cut at it: no spans of rounding errors.
    const auto settle = [&](double u) {
        u = std::clamp(u, s.domainStart(), s.domainEnd());
        const auto after = std::lower_bound(s.knots.begin(), s.knots.end(), u);
        if (after != s.knots.end() && *after - u <= 1e-12 * width) return *after;
        if (after != s.knots.begin() && u - *std::prev(after) <= 1e-12 * width) return *std::prev(after);
        return u;
    };
    from = settle(from);
    to = settle(to);
    if (!(from < to)) return part;
    const auto degree = static_cast<std::size_t>(s.degree);
    std::vector<double> knots(s.knots.begin(), s.knots.end());
    std::vector<Point> points(s.points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        const double w = s.weights.empty() ? 1.0 : s.weights[i];
        points[i] = {s.points[i].x * w, s.points[i].y * w, i < s.z.size() ? s.z[i] * w : 0.0, w};
    }
    insertKnot(knots, points, degree, from);
    insertKnot(knots, points, degree, to);
    // The points of the curve at both places are control points now.
    const auto lastFrom =
        static_cast<std::size_t>(std::upper_bound(knots.begin(), knots.end(), from) - knots.begin()) - 1;
    const auto firstTo = static_cast<std::size_t>(std::lower_bound(knots.begin(), knots.end(), to) - knots.begin());
    for (std::size_t i = lastFrom - degree; i < firstTo; ++i) {
        const Point& p = points[i];
        part.points.emplace_back(p.x / p.w, p.y / p.w);
        if (!s.weights.empty()) part.weights.push_back(p.w);
        if (!s.z.empty()) part.z.push_back(p.z / p.w);
    }
    part.knots.assign(degree + 1, from);
    part.knots.insert(part.knots.end(), knots.begin() + static_cast<std::ptrdiff_t>(lastFrom + 1),
                      knots.begin() + static_cast<std::ptrdiff_t>(firstTo));
    part.knots.insert(part.knots.end(), degree + 1, to);
    return part;
}

void appendSpline(SplineData& head, const SplineData& tail) {
    if (tail.points.empty()) return;
    if (head.points.empty()) {
        head = tail;
        return;
    }
    if (head.degree != tail.degree) return;
    const auto degree = static_cast<std::size_t>(head.degree);
    const double shift = head.knots.back() - tail.knots.front();
    head.knots.pop_back();
    for (std::size_t i = degree + 1; i < tail.knots.size(); ++i) head.knots.push_back(tail.knots[i] + shift);
    head.points.insert(head.points.end(), tail.points.begin() + 1, tail.points.end());
    if (!tail.z.empty()) head.z.insert(head.z.end(), tail.z.begin() + 1, tail.z.end());
    if (tail.weights.empty()) return;
    // One weight for the common point: all weights of a spline may be multiplied by a number.
    const double factor = head.weights.back() / tail.weights.front();
    for (std::size_t i = 1; i < tail.weights.size(); ++i) head.weights.push_back(tail.weights[i] * factor);
}

}  // namespace kova::math
