#include "math/curves/nurbs.hpp"

#include <algorithm>
#include <cmath>

namespace kova::math {

namespace {

using Point = BezierPiece::Point;

/// Affine combination: exact at t = 0 and t = 1.
Point mix(const Point& a, const Point& b, double t) {
    const double s = 1.0 - t;
    return {a.x * s + b.x * t, a.y * s + b.y * t, a.z * s + b.z * t, a.w * s + b.w * t};
}

bool countsAgree(const SplineView& s) {
    if (s.degree < 1 || s.degree > kMaxDegree) return false;
    const auto p = static_cast<std::size_t>(s.degree);
    return s.points.size() > p && s.knots.size() == s.points.size() + p + 1 &&
           (s.weights.empty() || s.weights.size() == s.points.size()) && (s.z.empty() || s.z.size() == s.points.size());
}

Point homogeneous(const SplineView& s, std::size_t i) {
    const double w = s.weights.empty() ? 1.0 : s.weights[i];
    const double z = s.z.empty() ? 0.0 : s.z[i];
    return {s.points[i].x * w, s.points[i].y * w, z * w, w};
}

/// Index i of the knot span [knots[i], knots[i + 1]) that holds u, within the domain and not empty.
std::size_t findSpan(const SplineView& s, double u) {
    const auto p = static_cast<std::size_t>(s.degree);
    const auto first = s.knots.begin() + static_cast<std::ptrdiff_t>(p);
    const auto last = s.knots.begin() + static_cast<std::ptrdiff_t>(s.points.size());
    if (!(u < *last)) {
        // The end of the domain belongs to the last span that is not empty.
        const auto it = std::lower_bound(first, last, *last);
        return static_cast<std::size_t>(it - s.knots.begin()) - (it == first ? 0 : 1);
    }
    const auto it = std::upper_bound(first, last, u);
    return it == first ? p : static_cast<std::size_t>(it - s.knots.begin()) - 1;
}

/// The polar form of the polynomial of span i: `argument(r)` gives the r-th of its `degree` arguments, r from 0.
template <class Argument>
Point blossom(const SplineView& s, std::size_t span, const Argument& argument) {
    const auto p = static_cast<std::size_t>(s.degree);
    std::array<Point, kMaxDegree + 1> d;
    for (std::size_t j = 0; j <= p; ++j) d[j] = homogeneous(s, span - p + j);
    for (std::size_t r = 1; r <= p; ++r) {
        const double t = argument(r - 1);
        for (std::size_t j = p; j >= r; --j) {
            const double lo = s.knots[span - p + j];
            const double hi = s.knots[span + 1 + j - r];
            d[j] = mix(d[j - 1], d[j], hi > lo ? (t - lo) / (hi - lo) : 0.0);
        }
    }
    return d[p];
}

void makePiece(const SplineView& s, std::size_t span, BezierPiece& piece) {
    piece.from = s.knots[span];
    piece.to = s.knots[span + 1];
    piece.degree = s.degree;
    const auto p = static_cast<std::size_t>(s.degree);
    for (std::size_t j = 0; j <= p; ++j)
        piece.points[j] = blossom(s, span, [&](std::size_t r) { return r < p - j ? piece.from : piece.to; });
}

Vector2 project(const Point& h) { return {h.x / h.w, h.y / h.w}; }

/// The point of a piece and its derivatives by the piece's own parameter t in [0, 1].
SplineDerivatives evaluatePiece(const BezierPiece& piece, double t) {
    const int p = piece.degree;
    std::array<Point, kMaxDegree + 1> d = piece.points;
    Point first{0, 0, 0, 0};
    Point second{0, 0, 0, 0};
    for (int r = 1; r <= p; ++r) {
        if (r == p - 1) {
            const double k = static_cast<double>(p) * (p - 1);
            second = {k * (d[2].x - 2 * d[1].x + d[0].x), k * (d[2].y - 2 * d[1].y + d[0].y), 0.0,
                      k * (d[2].w - 2 * d[1].w + d[0].w)};
        }
        if (r == p) first = {p * (d[1].x - d[0].x), p * (d[1].y - d[0].y), 0.0, p * (d[1].w - d[0].w)};
        for (std::size_t j = 0; j + static_cast<std::size_t>(r) <= static_cast<std::size_t>(p); ++j)
            d[j] = mix(d[j], d[j + 1], t);
    }
    // Quotient rule for the weights.
    SplineDerivatives result;
    result.point = project(d[0]);
    result.first = (Vector2{first.x, first.y} - result.point * first.w) / d[0].w;
    result.second = (Vector2{second.x, second.y} - result.first * (2.0 * first.w) - result.point * second.w) / d[0].w;
    return result;
}

/// Box of the projected control points: the piece lies inside it while all weights are above 0.
Bounds2 hull(const BezierPiece& piece) {
    Bounds2 box;
    for (int j = 0; j <= piece.degree; ++j) box.expand(project(piece.points[static_cast<std::size_t>(j)]));
    return box;
}

bool isPolynomial(const BezierPiece& piece) {
    for (int j = 1; j <= piece.degree; ++j)
        if (piece.points[static_cast<std::size_t>(j)].w != piece.points[0].w) return false;
    return true;
}

/// A polynomial piece of degree 1 to 3 as a cubic.
Cubic elevate(const BezierPiece& piece) {
    const Vector2 a = project(piece.points[0]);
    const Vector2 b = project(piece.points[1]);
    if (piece.degree == 1) return {a, a.lerp(b, 1.0 / 3.0), a.lerp(b, 2.0 / 3.0), b};
    const Vector2 c = project(piece.points[2]);
    if (piece.degree == 2) return {a, a.lerp(b, 2.0 / 3.0), c.lerp(b, 2.0 / 3.0), c};
    return {a, b, c, project(piece.points[3])};
}

/// Appends cubics that agree with the piece between t0 and t1 in ends and end tangents.
void approximate(const BezierPiece& piece, double t0, const SplineDerivatives& e0, double t1,
                 const SplineDerivatives& e1, double tolerance, int depth, std::vector<Cubic>& out,
                 std::vector<double>* ends) {
    const double step = t1 - t0;
    const Cubic c{e0.point, e0.point + e0.first * (step / 3.0), e1.point - e1.first * (step / 3.0), e1.point};
    const double middle = 0.5 * (t0 + t1);
    const SplineDerivatives em = evaluatePiece(piece, middle);
    bool good = depth == 0 || em.point.distance_to(cubicPoint(c, 0.5)) <= tolerance;
    for (const double t : {0.25, 0.75})
        good = good &&
               (depth == 0 || evaluatePiece(piece, t0 + step * t).point.distance_to(cubicPoint(c, t)) <= tolerance);
    if (good) {
        out.push_back(c);
        if (ends != nullptr) ends->push_back(piece.from + (piece.to - piece.from) * t1);
        return;
    }
    approximate(piece, t0, e0, middle, em, tolerance, depth - 1, out, ends);
    approximate(piece, middle, em, t1, e1, tolerance, depth - 1, out, ends);
}

double boxDistance(const Bounds2& box, const Vector2& p) {
    const double dx = std::max({box.min.x - p.x, 0.0, p.x - box.max.x});
    const double dy = std::max({box.min.y - p.y, 0.0, p.y - box.max.y});
    return std::hypot(dx, dy);
}

/// Solves a tridiagonal system in place (Thomas); `upper` is used up, `x` holds the right sides and then the result.
void solveTridiagonal(std::span<const double> lower, std::span<const double> diagonal, std::span<double> upper,
                      std::span<Vector2> x) {
    const std::size_t n = x.size();
    double pivot = diagonal[0];
    x[0] = x[0] / pivot;
    for (std::size_t i = 1; i < n; ++i) {
        upper[i - 1] /= pivot;
        pivot = diagonal[i] - lower[i] * upper[i - 1];
        x[i] = (x[i] - x[i - 1] * lower[i]) / pivot;
    }
    for (std::size_t i = n - 1; i-- > 0;) x[i] -= x[i + 1] * upper[i];
}

/// End slopes of the pieces of the cubic through q at parameters that lie `h` apart, curvature 0 at free ends.
std::vector<Vector2> openSlopes(std::span<const Vector2> q, std::span<const double> h, const Vector2& startSlope,
                                const Vector2& endSlope) {
    const std::size_t n = q.size();
    std::vector<double> lower(n, 0.0);
    std::vector<double> diagonal(n, 1.0);
    std::vector<double> upper(n, 0.0);
    std::vector<Vector2> m(n);
    if (startSlope == Vector2{}) {
        diagonal[0] = 2.0;
        upper[0] = 1.0;
        m[0] = (q[1] - q[0]) * (3.0 / h[0]);
    } else {
        m[0] = startSlope;
    }
    for (std::size_t i = 1; i + 1 < n; ++i) {
        lower[i] = h[i];
        diagonal[i] = 2.0 * (h[i - 1] + h[i]);
        upper[i] = h[i - 1];
        m[i] = (q[i] - q[i - 1]) * (3.0 * h[i] / h[i - 1]) + (q[i + 1] - q[i]) * (3.0 * h[i - 1] / h[i]);
    }
    if (endSlope == Vector2{}) {
        diagonal[n - 1] = 2.0;
        lower[n - 1] = 1.0;
        m[n - 1] = (q[n - 1] - q[n - 2]) * (3.0 / h[n - 2]);
    } else {
        m[n - 1] = endSlope;
    }
    solveTridiagonal(lower, diagonal, upper, m);
    return m;
}

/// The same for a closed curve: q[0] is repeated at the end. Cyclic system by the Sherman-Morrison formula.
std::vector<Vector2> closedSlopes(std::span<const Vector2> q, std::span<const double> h) {
    const std::size_t n = q.size() - 1;
    std::vector<Vector2> m(n + 1);
    if (n < 3) return m;  // there and back: stands still at both points
    std::vector<double> lower(n);
    std::vector<double> diagonal(n);
    std::vector<double> upper(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double before = h[i == 0 ? n - 1 : i - 1];
        const Vector2& previous = q[i == 0 ? n - 1 : i - 1];
        lower[i] = h[i];
        diagonal[i] = 2.0 * (before + h[i]);
        upper[i] = before;
        m[i] = (q[i] - previous) * (3.0 * h[i] / before) + (q[i + 1] - q[i]) * (3.0 * before / h[i]);
    }
    const double corner0 = lower[0];      // row 0, last column
    const double cornerN = upper[n - 1];  // last row, column 0
    const double gamma = -diagonal[0];
    diagonal[0] -= gamma;
    diagonal[n - 1] -= corner0 * cornerN / gamma;
    std::vector<Vector2> z(n);
    z[0] = {gamma, 0.0};
    z[n - 1] = {cornerN, 0.0};
    std::vector<double> upperCopy = upper;
    solveTridiagonal(lower, diagonal, upper, std::span(m).first(n));
    solveTridiagonal(lower, diagonal, upperCopy, z);
    const double zEnd = z[0].x + corner0 / gamma * z[n - 1].x;
    const Vector2 factor = (m[0] + m[n - 1] * (corner0 / gamma)) / (1.0 + zEnd);
    for (std::size_t i = 0; i < n; ++i) m[i] -= factor * z[i].x;
    m[n] = m[0];
    return m;
}

}  // namespace

bool SplineView::usable() const {
    if (!countsAgree(*this)) return false;
    if (!(domainStart() < domainEnd())) return false;
    for (std::size_t i = 0; i < knots.size(); ++i)
        if (!std::isfinite(knots[i]) || (i > 0 && knots[i] < knots[i - 1])) return false;
    for (const Vector2& p : points)
        if (!p.is_finite()) return false;
    for (const double w : weights)
        if (!(w > 0.0) || !std::isfinite(w)) return false;
    return true;
}

bool SplineView::rational() const {
    return std::any_of(weights.begin(), weights.end(), [&](double w) { return w != weights[0]; });
}

std::vector<double> clampedUniformKnots(int degree, std::size_t pointCount) {
    if (degree < 1 || degree > kMaxDegree) return {};
    const auto p = static_cast<std::size_t>(degree);
    if (pointCount <= p) return {};
    std::vector<double> knots(pointCount + p + 1);
    const std::size_t spans = pointCount - p;
    for (std::size_t i = 0; i < knots.size(); ++i)
        knots[i] = i <= p ? 0.0 : static_cast<double>(std::min(i - p, spans));
    return knots;
}

std::vector<double> uniformKnots(int degree, std::size_t pointCount) {
    if (degree < 1 || degree > kMaxDegree || pointCount <= static_cast<std::size_t>(degree)) return {};
    std::vector<double> knots(pointCount + static_cast<std::size_t>(degree) + 1);
    for (std::size_t i = 0; i < knots.size(); ++i) knots[i] = static_cast<double>(i) - degree;
    return knots;
}

std::size_t splineSpan(const SplineView& s, double u) { return findSpan(s, u); }

BezierPiece::Point splineBlossom(const SplineView& s, std::size_t span, std::span<const double> arguments) {
    return blossom(s, span, [&](std::size_t r) { return arguments[r]; });
}

Vector3 splinePoint3(const SplineView& s, double u) {
    if (!countsAgree(s)) return s.points.empty() ? Vector3{} : Vector3(s.points[0], s.z.empty() ? 0.0 : s.z[0]);
    u = std::clamp(u, s.domainStart(), std::max(s.domainStart(), s.domainEnd()));
    const Point h = blossom(s, findSpan(s, u), [&](std::size_t) { return u; });
    return {h.x / h.w, h.y / h.w, h.z / h.w};
}

Vector2 splinePoint(const SplineView& s, double u) { return splinePoint3(s, u).xy(); }

SplineDerivatives splineDerivatives(const SplineView& s, double u) {
    if (!countsAgree(s)) return {s.points.empty() ? Vector2{} : s.points[0], {}, {}};
    u = std::clamp(u, s.domainStart(), std::max(s.domainStart(), s.domainEnd()));
    BezierPiece piece;
    makePiece(s, findSpan(s, u), piece);
    const double width = piece.to - piece.from;
    if (!(width > 0.0)) return {project(piece.points[0]), {}, {}};
    SplineDerivatives d = evaluatePiece(piece, (u - piece.from) / width);
    d.first = d.first / width;
    d.second = d.second / (width * width);
    return d;
}

void splitToBeziers(const SplineView& s, const std::function<bool(const BezierPiece&)>& use) {
    if (!countsAgree(s)) return;
    BezierPiece piece;
    for (std::size_t i = static_cast<std::size_t>(s.degree); i < s.points.size(); ++i) {
        if (!(s.knots[i] < s.knots[i + 1])) continue;
        makePiece(s, i, piece);
        if (!use(piece)) return;
    }
}

std::vector<Cubic> splineToCubics(const SplineView& s, double tolerance, std::vector<double>* ends) {
    std::vector<Cubic> cubics;
    if (ends != nullptr) ends->clear();
    Bounds2 extents;
    for (const Vector2& p : s.points) extents.expand(p);
    const double size = extents.is_empty() ? 0.0 : std::hypot(extents.width(), extents.height());
    if (!(tolerance > 0.0)) tolerance = 1e-9 * size;
    splitToBeziers(s, [&](const BezierPiece& piece) {
        const std::size_t first = cubics.size();
        if (piece.degree <= 3 && isPolynomial(piece)) {
            cubics.push_back(elevate(piece));
            if (ends != nullptr) ends->push_back(piece.to);
        } else {
            approximate(piece, 0.0, evaluatePiece(piece, 0.0), 1.0, evaluatePiece(piece, 1.0), tolerance, 10, cubics,
                        ends);
        }
        // Pieces meet to the last bit, unless the knots tear the curve apart.
        if (first > 0 && cubics[first - 1][3].distance_to(cubics[first][0]) <= 1e-9 * size)
            cubics[first][0] = cubics[first - 1][3];
        return true;
    });
    return cubics;
}

Bounds2 splineBounds(const SplineView& s) {
    Bounds2 box;
    splitToBeziers(s, [&](const BezierPiece& piece) {
        box.expand(project(piece.points[0]));
        box.expand(project(piece.points[static_cast<std::size_t>(piece.degree)]));
        if (box.contains_box(hull(piece))) return true;
        if (piece.degree <= 3 && isPolynomial(piece)) {
            box.expand(boundsOf(elevate(piece)));
            return true;
        }
        // Where an axis' derivative changes its sign lies an extreme.
        const int steps = 4 * piece.degree;
        Vector2 before = evaluatePiece(piece, 0.0).first;
        for (int i = 1; i <= steps; ++i) {
            const double t1 = static_cast<double>(i) / steps;
            const Vector2 after = evaluatePiece(piece, t1).first;
            for (std::size_t axis = 0; axis < 2; ++axis) {
                if (!(before[axis] * after[axis] < 0.0)) continue;
                double lo = static_cast<double>(i - 1) / steps;
                double hi = t1;
                for (int k = 0; k < 50; ++k) {
                    const double mid = 0.5 * (lo + hi);
                    ((evaluatePiece(piece, mid).first[axis] < 0.0) == (before[axis] < 0.0) ? lo : hi) = mid;
                }
                box.expand(evaluatePiece(piece, 0.5 * (lo + hi)).point);
            }
            box.expand(evaluatePiece(piece, t1).point);
            before = after;
        }
        return true;
    });
    return box;
}

double closestSplineParameter(const SplineView& s, const Vector2& p) {
    if (!countsAgree(s)) return 0.0;
    double best = s.domainStart();
    double bestDistance = splinePoint(s, best).distance_to(p);
    splitToBeziers(s, [&](const BezierPiece& piece) {
        if (boxDistance(hull(piece), p) > bestDistance) return true;
        const auto offer = [&](double t) {
            const double d = evaluatePiece(piece, t).point.distance_to(p);
            if (d < bestDistance) {
                bestDistance = d;
                best = piece.from + (piece.to - piece.from) * t;
            }
        };
        const auto slope = [&](double t) {
            const SplineDerivatives e = evaluatePiece(piece, t);
            return (e.point - p).dot(e.first);
        };
        const int steps = 6 * piece.degree;
        double before = slope(0.0);
        for (int i = 1; i <= steps; ++i) {
            const double t1 = static_cast<double>(i) / steps;
            const double after = slope(t1);
            if (before < 0.0 && after > 0.0) {
                // Newton steps inside a shrinking bracket.
                double lo = static_cast<double>(i - 1) / steps;
                double hi = t1;
                double t = 0.5 * (lo + hi);
                for (int k = 0; k < 80 && hi - lo > 1e-16; ++k) {
                    const SplineDerivatives e = evaluatePiece(piece, t);
                    const Vector2 d = e.point - p;
                    const double g = d.dot(e.first);
                    if (g == 0.0) break;
                    (g < 0.0 ? lo : hi) = t;
                    const double next = t - g / (e.first.length_squared() + d.dot(e.second));
                    const double step = next > lo && next < hi ? next : 0.5 * (lo + hi);
                    if (std::abs(step - t) < 1e-16) break;
                    t = step;
                }
                offer(t);
            }
            offer(t1);
            before = after;
        }
        return true;
    });
    return best;
}

CubicSpline interpolateCubic(std::span<const Vector2> fitPoints, bool closed, const Vector2& startTangent,
                             const Vector2& endTangent, double knotPower) {
    CubicSpline result;
    Bounds2 extents;
    for (const Vector2& p : fitPoints)
        if (p.is_finite()) extents.expand(p);
    if (extents.is_empty()) return result;
    const double same = 1e-12 * std::hypot(extents.width(), extents.height());
    std::vector<Vector2> q;
    q.reserve(fitPoints.size() + 1);
    for (const Vector2& p : fitPoints)
        if (p.is_finite() && (q.empty() || p.distance_to(q.back()) > same)) q.push_back(p);
    while (closed && q.size() > 1 && q.front().distance_to(q.back()) <= same) q.pop_back();
    if (q.size() < 2) return result;
    if (closed) q.push_back(q.front());
    const std::size_t n = q.size() - 1;  // number of pieces
    std::vector<double> h(n);
    std::vector<double>& u = result.fitParameters;
    u.resize(n + 1);
    for (std::size_t i = 0; i < n; ++i) {
        h[i] = q[i].distance_to(q[i + 1]);
        if (knotPower != 1.0) h[i] = std::pow(h[i], knotPower);
        u[i + 1] = u[i] + h[i];
    }
    // Tangents give directions; the speed along them is that of the piece.
    const double startSpeed = q[0].distance_to(q[1]) / h[0];
    const double endSpeed = q[n - 1].distance_to(q[n]) / h[n - 1];
    const std::vector<Vector2> m =
        closed ? closedSlopes(q, h)
               : openSlopes(q, h, startTangent * (startSpeed / std::max(startTangent.length(), 1e-300)),
                            endTangent * (endSpeed / std::max(endTangent.length(), 1e-300)));
    // The control point between the Bezier points of neighbouring pieces is where the polar form has the three
    // knots around it; it is reached from the longer piece, where it is nearer.
    result.points.reserve(n + 3);
    result.points.push_back(q[0]);
    result.points.push_back(q[0] + m[0] * (h[0] / 3.0));
    for (std::size_t i = 1; i < n; ++i) {
        if (h[i] >= h[i - 1]) {
            const Vector2 b1 = q[i] + m[i] * (h[i] / 3.0);
            const Vector2 b2 = q[i + 1] - m[i + 1] * (h[i] / 3.0);
            result.points.push_back(b1.lerp(b2, -h[i - 1] / h[i]));
        } else {
            const Vector2 b1 = q[i - 1] + m[i - 1] * (h[i - 1] / 3.0);
            const Vector2 b2 = q[i] - m[i] * (h[i - 1] / 3.0);
            result.points.push_back(b1.lerp(b2, 1.0 + h[i] / h[i - 1]));
        }
    }
    result.points.push_back(q[n] - m[n] * (h[n - 1] / 3.0));
    result.points.push_back(q[n]);
    result.knots.reserve(n + 7);
    result.knots.assign(3, u[0]);
    result.knots.insert(result.knots.end(), u.begin(), u.end());
    result.knots.insert(result.knots.end(), 3, u[n]);
    return result;
}

}  // namespace kova::math
