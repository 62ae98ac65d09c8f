#include "engine/curves/spline_edit.hpp"

#include <algorithm>
#include <cmath>

#include "math/curves/nurbs_edit.hpp"

namespace kova::engine {

using math::SplineData;
using math::Vector2;

namespace {

double reachOf(const std::vector<Vector2>& points) {
    math::Bounds2 box;
    for (const Vector2& p : points) box.expand(p);
    return box.is_empty() ? 0.0 : std::hypot(box.width(), box.height());
}

/// How many control points at the end of a closed curve repeat the first ones.
std::size_t repeated(const SplineData& c, bool closed) {
    if (!closed || c.points.size() < 3) return 0;
    const double same = 1e-9 * reachOf(c.points);
    const auto p = static_cast<std::size_t>(c.degree);
    const std::size_t n = c.points.size();
    const bool free = c.knots[p] > c.knots[0];  // an end that is not clamped
    std::size_t count = free && n > p ? p : 1;
    for (std::size_t i = 0; i < count; ++i)
        if (c.points[i].distance_to(c.points[n - count + i]) > same) return 0;
    return count;
}

/// Closed curves by their different vertices, all knots alike.
SplineData closedCurve(SplineData c, std::size_t distinct) {
    c.degree = std::min(c.degree, static_cast<int>(distinct) - 1);
    const auto wrap = [&](auto& list) {
        if (list.empty()) return;
        list.resize(distinct);
        list.reserve(distinct + static_cast<std::size_t>(c.degree));
        for (std::size_t i = 0; i < static_cast<std::size_t>(c.degree); ++i) list.push_back(list[i]);
    };
    wrap(c.points);
    wrap(c.weights);
    wrap(c.z);
    c.knots = math::uniformKnots(c.degree, c.points.size());
    return c;
}

/// Applies `edit(i)` to a vertex and to the one that repeats it.
template <class Edit>
void onTwins(const SplineData& c, bool closed, std::size_t index, const Edit& edit) {
    const std::size_t count = repeated(c, closed);
    edit(index);
    if (index < count) edit(c.points.size() - count + index);
}

void takeShape(SplineEntity& spline, SplineData curve) {
    spline.setCurve(std::move(curve));
    spline.fitPoints.clear();
}

/// The curve through the points with its kinks; without points when it cannot be made.
SplineData curveThrough(const SplineFit& fit) {
    const std::size_t n = fit.points.size();
    SplineData out;
    std::vector<std::size_t> ends;
    for (const std::size_t kink : fit.kinks)
        if (kink < n && (fit.closed || (kink > 0 && kink + 1 < n))) ends.push_back(kink);
    if (ends.empty()) {
        math::CubicSpline whole = math::interpolateCubic(fit.points, fit.closed, fit.startTangent, fit.endTangent);
        return {3, std::move(whole.points), std::move(whole.knots), {}, {}};
    }
    // Piece after piece, free at the kinks. A closed curve with kinks is one piece more, back to its start.
    std::vector<Vector2> points = fit.points;
    if (fit.closed) points.push_back(points.front());
    std::erase(ends, std::size_t{0});
    ends.push_back(points.size() - 1);
    std::size_t from = 0;
    for (const std::size_t to : ends) {
        const std::span<const Vector2> part = std::span(points).subspan(from, to - from + 1);
        const bool first = from == 0 && !fit.closed;
        const bool last = to + 1 == points.size() && !fit.closed;
        math::CubicSpline piece = math::interpolateCubic(part, false, first ? fit.startTangent : Vector2{},
                                                         last ? fit.endTangent : Vector2{});
        from = to;
        if (piece.points.empty()) continue;
        math::appendSpline(out, {3, std::move(piece.points), std::move(piece.knots), {}, {}});
    }
    return out;
}

/// The fewest points found whose curve comes as near to all of them as the tolerance asks.
SplineFit thinned(const SplineFit& fit) {
    const std::size_t n = fit.points.size();
    std::vector<bool> taken(n, false);
    taken[0] = true;
    if (fit.closed)
        taken[n / 3] = taken[2 * n / 3] = true;
    else
        taken[n - 1] = true;
    for (const std::size_t kink : fit.kinks)
        if (kink < n) taken[kink] = true;
    for (;;) {
        SplineFit some = fit;
        some.points.clear();
        some.kinks.clear();
        for (std::size_t i = 0; i < n; ++i) {
            if (!taken[i]) continue;
            if (std::binary_search(fit.kinks.begin(), fit.kinks.end(), i)) some.kinks.push_back(some.points.size());
            some.points.push_back(fit.points[i]);
        }
        const SplineData curve = curveThrough(some);
        if (!curve.view().usable()) return fit;
        // The worst point of each gap joins.
        bool good = true;
        std::size_t worst = n;
        double off = fit.tolerance;
        for (std::size_t i = 0; i <= n; ++i) {
            if (i == n || taken[i]) {
                if (worst < n) {
                    taken[worst] = true;
                    good = false;
                }
                worst = n;
                off = fit.tolerance;
                continue;
            }
            const double u = math::closestSplineParameter(curve.view(), fit.points[i]);
            const double d = math::splinePoint(curve.view(), u).distance_to(fit.points[i]);
            if (d > off) {
                off = d;
                worst = i;
            }
        }
        if (good) return some;
    }
}

}  // namespace

// Fit points ---------------------------------------------------------------------------------------------

void SplineFit::insert(std::size_t at, const Vector2& p) {
    at = std::min(at, points.size());
    points.insert(points.begin() + static_cast<std::ptrdiff_t>(at), p);
    for (std::size_t& kink : kinks)
        if (kink >= at) ++kink;
}

void SplineFit::erase(std::size_t at) {
    if (at >= points.size()) return;
    points.erase(points.begin() + static_cast<std::ptrdiff_t>(at));
    std::erase(kinks, at);
    for (std::size_t& kink : kinks)
        if (kink > at) --kink;
}

std::optional<SplineFit> splineFit(const SplineEntity& spline) {
    if (spline.fitPoints.size() < 2 || !spline.controlZ.empty()) return {};
    SplineFit fit;
    fit.points = spline.fitPoints;
    fit.closed = spline.closed;
    std::tie(fit.startTangent, fit.endTangent) = spline.endTangents();
    // Knots of full multiplicity are kinks where fit points stand; both run along the curve.
    const SplineData curve = spline.curve();
    if (!curve.view().usable()) return fit;
    const double same = 1e-9 * reachOf(curve.points);
    const auto degree = static_cast<std::size_t>(curve.degree);
    std::size_t next = 1;
    for (std::size_t i = degree + 1; i + degree <= curve.points.size(); ++i) {
        if (curve.knots[i] != curve.knots[i + degree - 1] || curve.knots[i] >= curve.view().domainEnd()) continue;
        const Vector2 p = math::splinePoint(curve.view(), curve.knots[i]);
        std::size_t at = next;
        while (at < fit.points.size() && fit.points[at].distance_to(p) > same) ++at;
        if (at == fit.points.size()) break;
        fit.kinks.push_back(at);
        next = at + 1;
        i += degree - 1;
    }
    return fit;
}

bool applySplineFit(SplineEntity& spline, SplineFit fit) {
    for (const Vector2& p : fit.points)
        if (!p.is_finite()) return false;
    if (fit.closed && fit.points.size() > 2 && fit.points.front() == fit.points.back())
        fit.erase(fit.points.size() - 1);
    if (fit.points.size() < 2) return false;
    const bool rough = fit.tolerance > 0.0 && fit.points.size() > 2;
    if (rough && fit.points.size() > kMostToleranced) return false;
    SplineData curve = curveThrough(rough ? thinned(fit) : fit);
    if (!curve.view().usable()) return false;
    spline.setCurve(std::move(curve));
    spline.closed = fit.closed;
    spline.fitPoints = std::move(fit.points);
    return true;
}

// Control vertices ---------------------------------------------------------------------------------------

std::size_t splineVertexCount(const SplineEntity& spline) {
    const SplineData c = spline.curve();
    return c.points.empty() ? 0 : c.points.size() - repeated(c, spline.closed);
}

void moveSplineVertex(SplineEntity& spline, std::size_t index, const Vector2& to) {
    SplineData c = spline.curve();
    if (index >= c.points.size() || !to.is_finite()) return;
    const SplineData before = c;
    onTwins(before, spline.closed, index, [&](std::size_t i) { c.points[i] = to; });
    takeShape(spline, std::move(c));
}

double splineWeight(const SplineEntity& spline, std::size_t index) {
    return index < spline.weights.size() ? spline.weights[index] : 1.0;
}

void setSplineWeight(SplineEntity& spline, std::size_t index, double weight) {
    SplineData c = spline.curve();
    if (index >= c.points.size() || !(weight > 0.0) || !std::isfinite(weight)) return;
    c.weights.resize(c.points.size(), 1.0);
    onTwins(c, spline.closed, index, [&](std::size_t i) { c.weights[i] = weight; });
    takeShape(spline, std::move(c));
}

bool addSplineVertex(SplineEntity& spline, const Vector2& p) {
    SplineData c = spline.curve();
    if (c.points.empty()) return false;
    if (math::insertKnot(c, math::closestSplineParameter(c.view(), p)) == 0) return false;
    takeShape(spline, std::move(c));
    return true;
}

bool removeSplineVertex(SplineEntity& spline, std::size_t index) {
    SplineData c = spline.curve();
    const std::size_t count = repeated(c, spline.closed);
    const std::size_t distinct = c.points.size() - count;
    if (index >= distinct) return false;
    if (count > 1 || (count == 1 && index == 0)) {
        // Round and round: the others close the curve again.
        if (distinct <= static_cast<std::size_t>(c.degree) || distinct < 4) return false;
        const auto at = static_cast<std::ptrdiff_t>(index);
        c.points.erase(c.points.begin() + at);
        if (!c.weights.empty()) c.weights.erase(c.weights.begin() + at);
        if (!c.z.empty()) c.z.erase(c.z.begin() + at);
        c = closedCurve(std::move(c), distinct - 1);
    } else if (!math::removeSplinePoint(c, index)) {
        return false;
    }
    takeShape(spline, std::move(c));
    return true;
}

bool elevateSpline(SplineEntity& spline, int degree) {
    SplineData c = spline.curve();
    if (!math::elevateDegree(c, degree)) return false;
    takeShape(spline, std::move(c));
    return true;
}

bool addSplineKink(SplineEntity& spline, const Vector2& p) {
    SplineData c = spline.curve();
    if (c.points.empty()) return false;
    const double u = math::closestSplineParameter(c.view(), p);
    const Vector2 on = math::splinePoint(c.view(), u);
    if (math::insertKnot(c, u, c.degree) == 0) return false;
    std::vector<Vector2> fit = std::move(spline.fitPoints);
    // Before the first fit point that lies farther along.
    const auto place = [&](const Vector2& q) { return math::closestSplineParameter(c.view(), q); };
    const double same = 1e-9 * reachOf(c.points);
    if (!fit.empty() &&
        std::none_of(fit.begin(), fit.end(), [&](const Vector2& q) { return q.distance_to(on) <= same; })) {
        std::size_t at = 1;
        while (at < fit.size() && place(fit[at]) < u) ++at;
        fit.insert(fit.begin() + static_cast<std::ptrdiff_t>(at), on);
    }
    spline.setCurve(std::move(c));
    spline.fitPoints = std::move(fit);
    return true;
}

bool setSplineClosed(SplineEntity& spline, bool closed) {
    if (spline.closed == closed) return true;
    if (auto fit = splineFit(spline)) {
        if (closed && fit->points.size() < 3) return false;
        fit->closed = closed;
        fit->startTangent = fit->endTangent = {};
        return applySplineFit(spline, std::move(*fit));
    }
    SplineData c = spline.curve();
    if (c.points.empty()) return false;
    if (closed) {
        math::clampEnds(c);
        const std::size_t distinct = c.points.size() - repeated(c, true);
        if (distinct < 3) return false;
        c = closedCurve(std::move(c), distinct);
    } else if (const std::size_t count = repeated(c, true); count > 1) {
        const std::size_t distinct = c.points.size() - count;
        if (distinct < 2) return false;
        c.degree = std::min(c.degree, static_cast<int>(distinct) - 1);
        c.points.resize(distinct);
        if (!c.weights.empty()) c.weights.resize(distinct);
        if (!c.z.empty()) c.z.resize(distinct);
        c.knots = math::clampedUniformKnots(c.degree, distinct);
    }
    takeShape(spline, std::move(c));
    spline.closed = closed;
    return true;
}

// Conversion ---------------------------------------------------------------------------------------------

std::unique_ptr<SplineEntity> splineByVertices(const std::vector<Vector2>& vertices, int degree, bool closed) {
    if (vertices.size() < 2) return nullptr;
    auto spline = std::make_unique<SplineEntity>();
    spline->closed = closed;
    SplineData c;
    c.degree = std::min(degree, static_cast<int>(std::min<std::size_t>(vertices.size() - 1, math::kMaxDegree)));
    c.points = vertices;
    if (closed)
        c = closedCurve(std::move(c), vertices.size());
    else
        c.knots = math::clampedUniformKnots(c.degree, vertices.size());
    spline->setCurve(std::move(c));
    return spline;
}

std::unique_ptr<SplineEntity> splineOfFrame(const PolylineEntity& polyline) {
    if (!polyline.spline || polyline.fit.size() < 3) return nullptr;
    auto spline = splineByVertices(polyline.fit, polyline.curveType == 5 ? 2 : 3, polyline.closed);
    if (spline) spline->copyCommonFrom(polyline);
    return spline;
}

std::unique_ptr<Polyline3DEntity> polyline3dFrom(const SplineEntity& spline, int precision) {
    const SplineData c = spline.curve();
    if (!c.view().usable()) return nullptr;
    auto out = std::make_unique<Polyline3DEntity>();
    const auto spans = c.points.size();
    const auto most = static_cast<int>(std::max<std::size_t>(1, math::kMaxSplinePoints / spans));
    const int count = std::clamp(precision, 1, std::min(99, most));
    const auto add = [&](double u) {
        math::Vector3 p = math::splinePoint3(c.view(), u);
        if (c.z.empty()) p.z = spline.elevation;
        out->vertices.push_back(p);
    };
    add(c.view().domainStart());
    for (std::size_t i = static_cast<std::size_t>(c.degree); i < c.points.size(); ++i)
        if (c.knots[i] < c.knots[i + 1])
            for (int k = 1; k <= count; ++k)
                add(c.knots[i] + (c.knots[i + 1] - c.knots[i]) * (static_cast<double>(k) / count));
    if (spline.closed && out->vertices.size() > 3 && out->vertices.front().near_equal(out->vertices.back(), 1e-9)) {
        out->vertices.pop_back();
        out->closed = true;
    }
    out->copyCommonFrom(spline);
    out->elevation = 0.0;
    return out;
}

}  // namespace kova::engine
