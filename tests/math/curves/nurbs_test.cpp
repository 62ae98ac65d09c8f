#include "math/curves/nurbs.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace kova::math {
namespace {

void expectNear(const Vector2& a, const Vector2& b, double eps = 1e-9) {
    EXPECT_NEAR(a.x, b.x, eps);
    EXPECT_NEAR(a.y, b.y, eps);
}

/// The defining sum with the recursive basis functions of Cox and de Boor, as slow and plain as can be.
double basis(const std::vector<double>& k, std::size_t i, int p, double u) {
    if (p == 0) return u >= k[i] && u < k[i + 1] ? 1.0 : 0.0;
    double sum = 0.0;
    const auto width = static_cast<std::size_t>(p);
    if (k[i + width] > k[i]) sum += (u - k[i]) / (k[i + width] - k[i]) * basis(k, i, p - 1, u);
    if (k[i + width + 1] > k[i + 1])
        sum += (k[i + width + 1] - u) / (k[i + width + 1] - k[i + 1]) * basis(k, i + 1, p - 1, u);
    return sum;
}
Vector2 plainPoint(const SplineView& s, double u) {
    const std::vector<double> k(s.knots.begin(), s.knots.end());
    Vector2 sum;
    double weight = 0.0;
    for (std::size_t i = 0; i < s.points.size(); ++i) {
        const double b = basis(k, i, s.degree, u) * (s.weights.empty() ? 1.0 : s.weights[i]);
        sum += s.points[i] * b;
        weight += b;
    }
    return sum / weight;
}

const std::vector<Vector2> kPoints{{0, 0}, {1, 3}, {3, 3}, {4, -1}, {6, 0}, {7, 4}, {9, 1}};

TEST(Spline, AgreesWithTheDefiningSum) {
    const std::vector<double> weights{1, 2, 0.5, 1, 3, 1, 1};
    for (const int degree : {1, 2, 3, 5}) {
        std::vector<double> knots = clampedUniformKnots(degree, kPoints.size());
        if (degree == 3) knots[5] = knots[4];  // a double knot inside
        for (const bool rational : {false, true}) {
            SplineView s{degree, kPoints, knots};
            if (rational) s.weights = weights;
            ASSERT_TRUE(s.usable());
            EXPECT_EQ(s.rational(), rational);
            for (int i = 0; i < 50; ++i) {
                const double u = s.domainEnd() * i / 50.0;
                expectNear(splinePoint(s, u), plainPoint(s, u), 1e-12);
            }
            EXPECT_EQ(splinePoint(s, s.domainEnd()), kPoints.back());
            EXPECT_EQ(splinePoint(s, 1e9), kPoints.back());
            EXPECT_EQ(splinePoint(s, -1), kPoints.front());
        }
    }
}

TEST(Spline, DerivativesMatchDifferences) {
    const std::vector<double> weights{1, 2, 0.5, 1, 3, 1, 1};
    const std::vector<double> knots = clampedUniformKnots(3, kPoints.size());
    const SplineView s{3, kPoints, knots, weights};
    for (const double u : {0.3, 1.7, 3.2}) {
        const double h = 1e-4;
        const SplineDerivatives d = splineDerivatives(s, u);
        const Vector2 before = splinePoint(s, u - h);
        const Vector2 after = splinePoint(s, u + h);
        expectNear(d.first, (after - before) / (2 * h), 1e-5);
        expectNear(d.second, (after - d.point * 2.0 + before) / (h * h), 1e-4);
    }
}

TEST(Spline, UnusableDataIsToldApart) {
    const std::vector<double> knots = clampedUniformKnots(3, kPoints.size());
    EXPECT_FALSE((SplineView{3, kPoints, std::span(knots).first(5)}.usable()));
    std::vector<double> falling = knots;
    falling[5] = -3;
    EXPECT_FALSE((SplineView{3, kPoints, falling}.usable()));
    const std::vector<double> flat(knots.size(), 1.0);
    EXPECT_FALSE((SplineView{3, kPoints, flat}.usable()));
    const std::vector<double> weights(kPoints.size(), 0.0);
    EXPECT_FALSE((SplineView{3, kPoints, knots, weights}.usable()));
    EXPECT_FALSE((SplineView{0, kPoints, knots}.usable()));
    EXPECT_FALSE((SplineView{kMaxDegree + 1, kPoints, knots}.usable()));
    EXPECT_TRUE(clampedUniformKnots(3, 3).empty());
    // Whatever the numbers: an end is reached.
    std::vector<double> bad = knots;
    bad[4] = std::numeric_limits<double>::quiet_NaN();
    for (const auto& k : {falling, flat, bad}) {
        const SplineView s{3, kPoints, k};
        splinePoint(s, 0.5);
        splineDerivatives(s, 0.5);
        splineToCubics(s, 1e-3);
        splineBounds(s);
        closestSplineParameter(s, {1, 1});
    }
    EXPECT_TRUE(splineToCubics({}, 1e-3).empty());
}

TEST(Spline, CubicsAreExactForPolynomials) {
    for (const int degree : {1, 2, 3}) {
        // Free ends too: the domain begins and ends inside the knots.
        for (const auto& knots : {clampedUniformKnots(degree, kPoints.size()), uniformKnots(degree, kPoints.size())}) {
            const SplineView s{degree, kPoints, knots};
            const std::vector<Cubic> cubics = splineToCubics(s, 0.0);
            ASSERT_EQ(cubics.size(), kPoints.size() - static_cast<std::size_t>(degree));
            for (std::size_t i = 0; i < cubics.size(); ++i) {
                for (const double t : {0.0, 0.25, 0.9}) {
                    const double u = s.domainStart() + static_cast<double>(i) + t;
                    expectNear(cubicPoint(cubics[i], t), splinePoint(s, u), 1e-12);
                }
                if (i > 0) {
                    EXPECT_EQ(cubics[i][0], cubics[i - 1][3]);
                }
            }
        }
    }
}

/// A full circle of radius 2 about (1, 1) as a rational quadratic of nine points.
struct RationalCircle {
    std::vector<Vector2> points{{3, 1}, {3, 3}, {1, 3}, {-1, 3}, {-1, 1}, {-1, -1}, {1, -1}, {3, -1}, {3, 1}};
    std::vector<double> knots{0, 0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 4};
    std::vector<double> weights;
    RationalCircle() {
        for (std::size_t i = 0; i < points.size(); ++i) weights.push_back(i % 2 == 0 ? 1.0 : std::sqrt(0.5));
    }
    SplineView view() const { return {2, points, knots, weights}; }
};

TEST(Spline, RationalCircleStaysRound) {
    const RationalCircle circle;
    const std::vector<Cubic> cubics = splineToCubics(circle.view(), 1e-6);
    for (const Cubic& c : cubics)
        for (const double t : {0.0, 0.2, 0.5, 0.8}) EXPECT_NEAR(cubicPoint(c, t).distance_to({1, 1}), 2.0, 1e-6);
    EXPECT_LT(cubics.size(), 400u);
    const Bounds2 box = splineBounds(circle.view());
    expectNear(box.min, {-1, -1}, 1e-12);
    expectNear(box.max, {3, 3}, 1e-12);
    for (const Vector2& p : {Vector2{10, 4}, Vector2{1.3, 0.2}, Vector2{-5, -7}}) {
        const Vector2 q = splinePoint(circle.view(), closestSplineParameter(circle.view(), p));
        expectNear(q, Vector2{1, 1} + (p - Vector2{1, 1}).normalized() * 2.0, 1e-9);
    }
}

TEST(Spline, BoundsAreTheCurvesNotTheControlPoints) {
    for (const int degree : {2, 3, 6}) {
        const std::vector<double> knots = clampedUniformKnots(degree, kPoints.size());
        const SplineView s{degree, kPoints, knots};
        Bounds2 sampled;
        for (int i = 0; i <= 100000; ++i) sampled.expand(splinePoint(s, s.domainEnd() * i / 100000));
        const Bounds2 box = splineBounds(s);
        expectNear(box.min, sampled.min, 1e-7);
        expectNear(box.max, sampled.max, 1e-7);
    }
}

TEST(Interpolation, RunsThroughItsPointsAndIsSmooth) {
    const std::vector<Vector2> fit{{0, 0}, {1, 5}, {1.5, 5}, {10, 0}, {12, 7}};
    const CubicSpline c = interpolateCubic(fit, false);
    const SplineView s{3, c.points, c.knots};
    ASSERT_TRUE(s.usable());
    ASSERT_EQ(c.points.size(), fit.size() + 2);
    ASSERT_EQ(c.fitParameters.size(), fit.size());
    for (std::size_t i = 0; i < fit.size(); ++i) expectNear(splinePoint(s, c.fitParameters[i]), fit[i], 1e-12);
    // Free ends have no curvature.
    expectNear(splineDerivatives(s, 0.0).second, {0, 0}, 1e-9);
    expectNear(splineDerivatives(s, s.domainEnd()).second, {0, 0}, 1e-9);
    // The second derivative does not jump at a fit point.
    const double u = c.fitParameters[2];
    expectNear(splineDerivatives(s, u - 1e-9).second, splineDerivatives(s, u + 1e-9).second, 1e-6);
}

TEST(Interpolation, TangentsAndClosedCurves) {
    const std::vector<Vector2> fit{{0, 0}, {4, 0}, {4, 4}, {0, 4}};
    const CubicSpline clamped = interpolateCubic(fit, false, {0, -7}, {0, 2});
    const SplineView s{3, clamped.points, clamped.knots};
    expectNear(splineDerivatives(s, 0.0).first.normalized(), {0, -1}, 1e-9);
    expectNear(splineDerivatives(s, s.domainEnd()).first.normalized(), {0, 1}, 1e-9);

    const CubicSpline ring = interpolateCubic(fit, true);
    const SplineView r{3, ring.points, ring.knots};
    ASSERT_TRUE(r.usable());
    expectNear(splinePoint(r, 0.0), fit[0], 1e-12);
    expectNear(splinePoint(r, r.domainEnd()), fit[0], 1e-12);
    expectNear(splineDerivatives(r, 0.0).first, splineDerivatives(r, r.domainEnd()).first, 1e-9);
    expectNear(splineDerivatives(r, 0.0).second, splineDerivatives(r, r.domainEnd()).second, 1e-9);
    // As round as the square it goes through.
    const Vector2 q = splinePoint(r, 2.0) - Vector2{2, 2};
    expectNear(splinePoint(r, 6.0) - Vector2{2, 2}, {-q.y, q.x}, 1e-9);
}

TEST(Interpolation, KnotsMayStandCloserThanTheChords) {
    const std::vector<Vector2> fit{{0, 0}, {9, 0}, {9, 4}, {0, 4}};
    for (const double power : {0.5, 0.0}) {
        const CubicSpline c = interpolateCubic(fit, false, {0, 1}, {0, -1}, power);
        const SplineView s{3, c.points, c.knots};
        for (std::size_t i = 0; i < fit.size(); ++i) expectNear(splinePoint(s, c.fitParameters[i]), fit[i], 1e-12);
        EXPECT_NEAR(c.fitParameters[2] - c.fitParameters[1], power == 0.5 ? 2.0 : 1.0, 1e-12);
        // A tangent bends the curve as much as with any other knots: by a third of the piece.
        expectNear(c.points[1], {0, 3}, 1e-12);
        expectNear(c.points[c.points.size() - 2], {0, 7}, 1e-12);
        const double u = c.fitParameters[1];
        expectNear(splineDerivatives(s, u - 1e-9).second, splineDerivatives(s, u + 1e-9).second, 1e-5);
    }
}

TEST(Interpolation, DegenerateInput) {
    EXPECT_TRUE(interpolateCubic({}, false).points.empty());
    const std::vector<Vector2> same{{1, 1}, {1, 1}, {1, 1}};
    EXPECT_TRUE(interpolateCubic(same, false).points.empty());
    EXPECT_TRUE(interpolateCubic(same, true).points.empty());
    const std::vector<Vector2> two{{0, 0}, {0, 0}, {3, 0}, {std::numeric_limits<double>::quiet_NaN(), 0}};
    const CubicSpline line = interpolateCubic(two, false);
    ASSERT_EQ(line.points.size(), 4u);
    expectNear(splinePoint({3, line.points, line.knots}, 1.5), {1.5, 0}, 1e-12);
    const CubicSpline there = interpolateCubic(two, true);
    EXPECT_TRUE((SplineView{3, there.points, there.knots}.usable()));
    // Very unequal chords stay bounded.
    const std::vector<Vector2> uneven{{0, 0}, {1e-7, 1e-7}, {1000, 0}, {1000, 1e-7}, {2000, 5}};
    const CubicSpline u = interpolateCubic(uneven, false);
    const Bounds2 box = splineBounds({3, u.points, u.knots});
    EXPECT_LT(box.height(), 2000.0);
    ASSERT_EQ(u.fitParameters.size(), uneven.size());
    for (std::size_t i = 0; i < uneven.size(); ++i)
        expectNear(splinePoint({3, u.points, u.knots}, u.fitParameters[i]), uneven[i], 1e-6);
}

}  // namespace
}  // namespace kova::math
