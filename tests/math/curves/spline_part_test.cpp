#include "math/curves/spline_part.hpp"

#include <gtest/gtest.h>

namespace kova::math {
namespace {

TEST(SplinePart, IsTheSameCurveWithTheSameParameters) {
    const std::vector<Vector2> points{{0, 0}, {1, 3}, {3, 3}, {4, -1}, {6, 0}, {7, 4}, {9, 1}, {10, 2}};
    const std::vector<double> weights{1, 2, 0.5, 1, 3, 1, 1, 2};
    const std::vector<double> z{0, 1, 2, 3, 2, 1, 0, 5};
    for (const int degree : {1, 2, 3, 5}) {
        for (const bool clamped : {true, false}) {
            const auto knots =
                clamped ? clampedUniformKnots(degree, points.size()) : uniformKnots(degree, points.size());
            const SplineView whole{degree, points, knots, weights, z};
            const double a = whole.domainStart();
            const double b = whole.domainEnd();
            for (const auto& [from, to] : {std::pair{0.13, 0.87}, std::pair{0.0, 0.5}, std::pair{0.5, 1.0},
                                           std::pair{0.25, 0.26}, std::pair{-9.0, 9.0}}) {
                const SplineData part = splinePart(whole, a + (b - a) * from, a + (b - a) * to);
                ASSERT_TRUE(part.view().usable()) << degree << clamped << from;
                const double u0 = part.view().domainStart();
                const double u1 = part.view().domainEnd();
                EXPECT_NEAR(u0, std::max(a, a + (b - a) * from), 1e-12);
                EXPECT_NEAR(u1, std::min(b, a + (b - a) * to), 1e-12);
                EXPECT_LT(part.points.front().distance_to(splinePoint(whole, u0)), 1e-12);
                EXPECT_LT(part.points.back().distance_to(splinePoint(whole, u1)), 1e-12);
                for (int i = 0; i <= 20; ++i) {
                    const double u = u0 + (u1 - u0) * i / 20.0;
                    const Vector3 off = splinePoint3(part.view(), u) - splinePoint3(whole, u);
                    EXPECT_LT(std::abs(off.x) + std::abs(off.y) + std::abs(off.z), 1e-11);
                }
            }
            EXPECT_TRUE(splinePart(whole, b, a).points.empty());
            // Two parts put together again.
            SplineData head = splinePart(whole, a + (b - a) * 0.2, a + (b - a) * 0.55);
            appendSpline(head, splinePart(whole, a + (b - a) * 0.55, b));
            ASSERT_TRUE(head.view().usable());
            for (const double at : {0.21, 0.5, 0.55, 0.6, 0.99}) {
                const double u = a + (b - a) * at;
                EXPECT_LT(splinePoint(head.view(), u).distance_to(splinePoint(whole, u)), 1e-11);
            }
        }
    }
    EXPECT_TRUE(splinePart({3, {}, {}}, 0.0, 1.0).points.empty());
}

}  // namespace
}  // namespace kova::math
