#include "math/curves/nurbs_edit.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace kova::math {
namespace {

/// A curve with uneven and repeated knots; weights and heights on demand.
SplineData sample(int degree, std::size_t count, bool rational, bool spatial, bool clamped, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> place(-50.0, 50.0);
    std::uniform_real_distribution<double> weight(0.3, 3.0);
    SplineData c;
    c.degree = degree;
    for (std::size_t i = 0; i < count; ++i) {
        c.points.push_back({place(random), place(random)});
        if (rational) c.weights.push_back(weight(random));
        if (spatial) c.z.push_back(place(random));
    }
    c.knots = clamped ? clampedUniformKnots(degree, count) : uniformKnots(degree, count);
    // One inner knot moved, one doubled.
    const auto p = static_cast<std::size_t>(degree);
    if (clamped && count > p + 3) {
        c.knots[p + 1] += 0.35;
        c.knots[p + 3] = c.knots[p + 2];
    }
    return c;
}

void expectSame(const SplineData& a, const SplineData& b, double eps = 1e-9) {
    ASSERT_TRUE(b.view().usable());
    const double from = a.view().domainStart();
    const double to = a.view().domainEnd();
    EXPECT_DOUBLE_EQ(b.view().domainStart(), from);
    EXPECT_DOUBLE_EQ(b.view().domainEnd(), to);
    for (int i = 0; i <= 100; ++i) {
        const double u = from + (to - from) * i / 100.0;
        const Vector3 p = splinePoint3(a.view(), u);
        const Vector3 q = splinePoint3(b.view(), u);
        EXPECT_TRUE(p.near_equal(q, eps)) << u << ' ' << p.text() << ' ' << q.text();
    }
}

TEST(NurbsEdit, ExactOperationsKeepTheCurve) {
    unsigned seed = 1;
    for (const int degree : {1, 2, 3, 4, 5})
        for (const bool rational : {false, true})
            for (const bool clamped : {false, true}) {
                SCOPED_TRACE(testing::Message() << degree << rational << clamped);
                const SplineData before = sample(degree, 9, rational, degree % 2 == 0, clamped, ++seed);
                SplineData c = before;
                clampEnds(c);
                expectSame(before, c);
                EXPECT_EQ(c.knots.front(), c.knots[static_cast<std::size_t>(degree)]);
                EXPECT_EQ(c.points.size(), 9u);

                c = before;
                const double u = before.view().domainStart() + 0.7;
                EXPECT_EQ(insertKnot(c, u), 1);
                EXPECT_EQ(c.points.size(), 10u);
                expectSame(before, c);
                // No knot stands more often than the degree; then a control point lies on the curve.
                EXPECT_EQ(insertKnot(c, u, 100), degree - 1);
                expectSame(before, c);
                const Vector2 on = splinePoint(before.view(), u);
                EXPECT_TRUE(std::any_of(c.points.begin(), c.points.end(),
                                        [&](const Vector2& p) { return p.distance_to(on) < 1e-9; }));

                c = before;
                EXPECT_TRUE(elevateDegree(c, degree + 1));
                expectSame(before, c);
                EXPECT_TRUE(elevateDegree(c, degree + 4));
                EXPECT_EQ(c.degree, degree + 4);
                expectSame(before, c, 1e-8);
            }
}

TEST(NurbsEdit, ElevationAddsNoMoreThanItMust) {
    SplineData line{1, {{0, 0}, {10, 0}}, {0, 0, 1, 1}, {}, {}};
    EXPECT_TRUE(elevateDegree(line, 3));
    ASSERT_EQ(line.points.size(), 4u);
    EXPECT_NEAR(line.points[1].x, 10.0 / 3.0, 1e-12);
    // Six points of degree 3 over three spans: one more for each span.
    SplineData cubic = sample(3, 6, false, false, true, 99);
    cubic.knots = clampedUniformKnots(3, 6);
    EXPECT_TRUE(elevateDegree(cubic, 4));
    EXPECT_EQ(cubic.points.size(), 9u);
    EXPECT_FALSE(elevateDegree(cubic, 4));
    EXPECT_FALSE(elevateDegree(cubic, kMaxDegree + 1));
}

TEST(NurbsEdit, RefusesWhatIsNoCurve) {
    SplineData nothing;
    SplineData bad{3, {{0, 0}, {1, 1}, {2, 0}, {3, std::numeric_limits<double>::quiet_NaN()}}, {}, {}, {}};
    bad.knots = clampedUniformKnots(3, 4);
    for (SplineData* c : {&nothing, &bad}) {
        const auto knots = c->knots;
        clampEnds(*c);
        EXPECT_EQ(insertKnot(*c, 0.5), 0);
        EXPECT_FALSE(elevateDegree(*c, 5));
        EXPECT_FALSE(removeSplinePoint(*c, 0));
        EXPECT_EQ(c->knots, knots);
    }
    SplineData good = sample(3, 6, false, false, true, 7);
    for (const double u : {good.knots.front(), good.knots.back(), -1.0, 1e300}) EXPECT_EQ(insertKnot(good, u), 0);
}

TEST(NurbsEdit, RemovesPoints) {
    SplineData c = sample(3, 7, true, true, true, 3);
    const Vector2 first = c.points.front();
    const Vector2 last = c.points.back();
    EXPECT_TRUE(removeSplinePoint(c, 3));
    EXPECT_EQ(c.points.size(), 6u);
    EXPECT_TRUE(c.view().usable());
    EXPECT_EQ(splinePoint(c.view(), c.view().domainStart()), first);
    EXPECT_EQ(splinePoint(c.view(), c.view().domainEnd()), last);
    while (removeSplinePoint(c, 1)) {
    }
    EXPECT_EQ(c.points.size(), 4u);
}

}  // namespace
}  // namespace kova::math
