#include "math/curves/nurbs_edit.hpp"

#include <algorithm>
#include <cmath>

namespace kova::math {

namespace {

using Point = BezierPiece::Point;

/// A parameter inside a span that is not empty, of those that a control point with these knots around it acts on.
double insideSupport(const std::vector<double>& knots, int degree, std::size_t j) {
    const auto p = static_cast<std::size_t>(degree);
    const std::size_t last = knots.size() - p - 1;  // the domain ends at this knot
    double best = 0.5 * (knots[p] + knots[last]);
    double bestOff = -1.0;
    for (std::size_t m = std::max(j, p); m <= j + p && m < last; ++m) {
        if (!(knots[m] < knots[m + 1])) continue;
        const double off = std::abs(2.0 * static_cast<double>(m) - 2.0 * static_cast<double>(j) - degree);
        if (bestOff >= 0.0 && off >= bestOff) continue;
        bestOff = off;
        best = 0.5 * (knots[m] + knots[m + 1]);
    }
    return best;
}

void put(SplineData& out, const Point& h, bool rational, bool spatial) {
    out.points.push_back({h.x / h.w, h.y / h.w});
    if (rational) out.weights.push_back(h.w);
    if (spatial) out.z.push_back(h.z / h.w);
}

/// The same curve over knots that hold all old ones of its domain.
void refine(SplineData& curve, std::vector<double> knots) {
    const SplineView view = curve.view();
    SplineData out;
    out.degree = curve.degree;
    const auto p = static_cast<std::size_t>(curve.degree);
    const std::size_t count = knots.size() - p - 1;
    out.points.reserve(count);
    for (std::size_t j = 0; j < count; ++j) {
        const std::size_t span = splineSpan(view, insideSupport(knots, curve.degree, j));
        put(out, splineBlossom(view, span, std::span(knots).subspan(j + 1, p)), !curve.weights.empty(),
            !curve.z.empty());
    }
    out.knots = std::move(knots);
    curve = std::move(out);
}

/// The knots within the domain with `more` of each inner one, and ends of multiplicity degree + 1 + more.
std::vector<double> clampedKnots(const SplineData& curve, int more) {
    const auto ends = static_cast<std::size_t>(curve.degree + 1 + more);
    const double from = curve.view().domainStart();
    const double to = curve.view().domainEnd();
    std::vector<double> knots(ends, from);
    for (std::size_t i = 0; i < curve.knots.size(); ++i) {
        const double u = curve.knots[i];
        if (!(u > from && u < to)) continue;
        const bool again = !(knots.back() < u);
        knots.insert(knots.end(), static_cast<std::size_t>(again ? 1 : 1 + more), u);
    }
    knots.insert(knots.end(), ends, to);
    return knots;
}

}  // namespace

void clampEnds(SplineData& curve) {
    const SplineView view = curve.view();
    if (view.usable()) curve = splinePart(view, view.domainStart(), view.domainEnd());
}

int insertKnot(SplineData& curve, double u, int times) {
    const SplineView view = curve.view();
    if (!view.usable() || !(u > view.domainStart() && u < view.domainEnd())) return 0;
    std::vector<double> knots = clampedKnots(curve, 0);
    const auto [first, last] = std::equal_range(knots.begin(), knots.end(), u);
    const int added = std::clamp(times, 0, std::max(0, curve.degree - static_cast<int>(last - first)));
    if (knots.size() + static_cast<std::size_t>(added) > kMaxSplinePoints) return 0;
    knots.insert(last, static_cast<std::size_t>(added), u);
    if (added > 0) refine(curve, std::move(knots));
    return added;
}

bool elevateDegree(SplineData& curve, int degree) {
    if (degree <= curve.degree || degree > kMaxDegree || !curve.view().usable()) return false;
    if (clampedKnots(curve, degree - curve.degree).size() > kMaxSplinePoints) return false;
    std::vector<double> arguments;
    while (curve.degree < degree) {
        // The form of the next degree is the mean of the forms that leave out one argument each.
        const SplineView view = curve.view();
        SplineData out;
        out.degree = curve.degree + 1;
        out.knots = clampedKnots(curve, 1);
        const auto p = static_cast<std::size_t>(out.degree);
        const std::size_t count = out.knots.size() - p - 1;
        out.points.reserve(count);
        for (std::size_t j = 0; j < count; ++j) {
            const std::size_t span = splineSpan(view, insideSupport(out.knots, out.degree, j));
            Point sum{0, 0, 0, 0};
            for (std::size_t skip = 0; skip < p; ++skip) {
                arguments.clear();
                for (std::size_t i = 0; i < p; ++i)
                    if (i != skip) arguments.push_back(out.knots[j + 1 + i]);
                const Point h = splineBlossom(view, span, arguments);
                sum = {sum.x + h.x, sum.y + h.y, sum.z + h.z, sum.w + h.w};
            }
            const auto n = static_cast<double>(p);
            put(out, {sum.x / n, sum.y / n, sum.z / n, sum.w / n}, !curve.weights.empty(), !curve.z.empty());
        }
        curve = std::move(out);
    }
    return true;
}

bool removeSplinePoint(SplineData& curve, std::size_t index) {
    const auto p = static_cast<std::size_t>(curve.degree);
    if (!curve.view().usable() || index >= curve.points.size() || curve.points.size() <= p + 1) return false;
    // Where the point acts most: the mean of the knots around it.
    double middle = 0.0;
    for (std::size_t i = 1; i <= p; ++i) middle += curve.knots[index + i] / static_cast<double>(p);
    std::size_t nearest = p + 1;
    for (std::size_t i = p + 1; i < curve.points.size(); ++i)
        if (std::abs(curve.knots[i] - middle) < std::abs(curve.knots[nearest] - middle)) nearest = i;
    const auto at = static_cast<std::ptrdiff_t>(index);
    curve.points.erase(curve.points.begin() + at);
    if (!curve.weights.empty()) curve.weights.erase(curve.weights.begin() + at);
    if (!curve.z.empty()) curve.z.erase(curve.z.begin() + at);
    curve.knots.erase(curve.knots.begin() + static_cast<std::ptrdiff_t>(nearest));
    return true;
}

}  // namespace kova::math
