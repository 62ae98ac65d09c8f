#include "math/kernels/tangent_circles.hpp"

#include <gtest/gtest.h>

#include <random>

namespace kova::math {
namespace {

double distanceToCurve(const TangentCurve& curve, const Vector2& p) {
    if (curve.isLine) return std::abs((p - curve.a).cross((curve.b - curve.a).normalized()));
    return std::abs(p.distance_to(curve.center) - curve.radius);
}

/// The circle lies on one side of the curve and meets it where it says.
void expectTouches(const TangentCurve& curve, const TangentCircle& circle, const Vector2& touch) {
    const double scale = std::max({1.0, circle.radius, circle.center.length()});
    EXPECT_NEAR(distanceToCurve(curve, touch), 0.0, 1e-6 * scale);
    EXPECT_NEAR(touch.distance_to(circle.center), circle.radius, 1e-6 * scale);
    // A short step along the circle leaves the curve by the square of the step only: they touch, they do not cross.
    const double step = 0.01 * (curve.isLine ? circle.radius : std::min(circle.radius, curve.radius));
    const Vector2 d = (touch - circle.center) / circle.radius;
    for (const double turn : {step / circle.radius, -step / circle.radius}) {
        const Vector2 turned{d.x * std::cos(turn) - d.y * std::sin(turn), d.x * std::sin(turn) + d.y * std::cos(turn)};
        EXPECT_LT(distanceToCurve(curve, circle.center + turned * circle.radius), 0.02 * step + 1e-6 * scale);
    }
}

TEST(TangentCircles, OfGivenRadiusInACorner) {
    const auto x = TangentCurve::line({0, 0}, {1, 0});
    const auto y = TangentCurve::line({0, 0}, {0, 1});
    const auto all = tangentCircles(x, y, 2.0);
    ASSERT_EQ(all.size(), 4u);
    for (const TangentCircle& c : all) EXPECT_NEAR(std::abs(c.center.x) + std::abs(c.center.y), 4.0, 1e-9);
    EXPECT_TRUE(tangentCircles(x, TangentCurve::line({0, 5}, {1, 5}), 2.0).empty());
    EXPECT_TRUE(tangentCircles(x, TangentCurve::line({3, 3}, {3, 3}), 2.0).empty());
    // Two circles 30 apart: from without, from within, and mixed.
    const auto pair = tangentCircles(TangentCurve::circle({0, 0}, 10), TangentCurve::circle({30, 0}, 10), 26.0);
    EXPECT_EQ(pair.size(), 8u);
    for (const TangentCircle& c : pair) {
        expectTouches(TangentCurve::circle({0, 0}, 10), c, c.touch[0]);
        expectTouches(TangentCurve::circle({30, 0}, 10), c, c.touch[1]);
    }
}

TEST(TangentCircles, OfATriangleAreItsFour) {
    const auto all = tangentCircles(TangentCurve::line({0, 0}, {80, 0}), TangentCurve::line({0, 0}, {0, 60}),
                                    TangentCurve::line({80, 0}, {0, 60}));
    ASSERT_EQ(all.size(), 4u);
    std::vector<double> radii;
    for (const TangentCircle& c : all) radii.push_back(c.radius);
    std::sort(radii.begin(), radii.end());
    EXPECT_NEAR(radii[0], 20.0, 1e-9);
    EXPECT_NEAR(radii[1], 40.0, 1e-9);
    EXPECT_NEAR(radii[2], 60.0, 1e-9);
    EXPECT_NEAR(radii[3], 120.0, 1e-9);
}

TEST(TangentCircles, OfAnyThreeCurvesTouchThem) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> place(-50.0, 50.0);
    std::uniform_real_distribution<double> size(1.0, 20.0);
    int found = 0;
    for (int round = 0; round < 500; ++round) {
        std::vector<TangentCurve> curves;
        for (int i = 0; i < 3; ++i) {
            const Vector2 p{place(random), place(random)};
            curves.push_back(random() % 2 == 0 ? TangentCurve::line(p, {place(random), place(random)})
                                               : TangentCurve::circle(p, size(random)));
        }
        const auto all = tangentCircles(curves[0], curves[1], curves[2]);
        EXPECT_LE(all.size(), 8u);
        found += static_cast<int>(all.size());
        for (const TangentCircle& c : all) {
            if (c.radius > 1e4) continue;
            for (std::size_t i = 0; i < 3; ++i) expectTouches(curves[i], c, c.touch[i]);
        }
    }
    EXPECT_GT(found, 1500);
}

// Three circles around a fourth: the known one must be among the solutions.
TEST(TangentCircles, FindTheCircleThatTheCurvesWereMadeFor) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> turn(0.0, 6.28);
    std::uniform_real_distribution<double> size(0.5, 5.0);
    for (int round = 0; round < 300; ++round) {
        const Vector2 center{size(random) * 10, size(random) * -7};
        const double radius = size(random) * 3;
        std::vector<TangentCurve> curves;
        for (int i = 0; i < 3; ++i) {
            const Vector2 d = Vector2::from_angle(turn(random));
            const double r = size(random);
            if (random() % 3 == 0)
                curves.push_back(TangentCurve::line(center + d * radius, center + d * radius + d.perpendicular()));
            else
                curves.push_back(TangentCurve::circle(center + d * (radius + (random() % 2 == 0 ? r : -r)), r));
        }
        const auto all = tangentCircles(curves[0], curves[1], curves[2]);
        const bool known = std::any_of(all.begin(), all.end(), [&](const TangentCircle& c) {
            return c.center.near_equal(center, 1e-4) && std::abs(c.radius - radius) < 1e-4;
        });
        // Curves that nearly touch in one place leave the solution ill-conditioned.
        double spread = 1e9;
        for (int i = 0; i < 3; ++i)
            for (int k = i + 1; k < 3; ++k) {
                const auto touch = [&](const TangentCurve& c) {
                    if (c.isLine) return c.a;
                    const Vector2 d = (c.center - center).normalized();
                    return center + d * radius;
                };
                spread = std::min(
                    spread,
                    touch(curves[static_cast<std::size_t>(i)]).distance_to(touch(curves[static_cast<std::size_t>(k)])));
            }
        EXPECT_TRUE(known || spread < 0.2 * radius) << "round " << round << " of " << all.size();
    }
}

}  // namespace
}  // namespace kova::math
