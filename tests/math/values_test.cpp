#include <gtest/gtest.h>

#include <cmath>

#include "math/angles.hpp"
#include "math/bounds2.hpp"
#include "math/matrix4.hpp"
#include "math/vector2.hpp"
#include "math/vector3.hpp"

namespace kova::math {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(Vector2, AnglesBetweenVectorsAreUnsignedAndNeverNan) {
    EXPECT_EQ(Vector2(0, 0).angle_to({1, 0}), 0.0);
    EXPECT_DOUBLE_EQ(Vector2(1, 0).angle_to({-1, 0}), kPi);
    EXPECT_DOUBLE_EQ(Vector2(1, 0).angle_to({0, -1}), kPi / 2);
    EXPECT_DOUBLE_EQ(Vector2(0, -1).angle_to({1, 0}), kPi / 2);
    // The quotient of this pair rounds to below -1.
    const Vector2 a{0.1, 0.3};
    EXPECT_DOUBLE_EQ(a.angle_to(a * -3.0), kPi);
    // The degenerate threshold lies on the product of the lengths.
    EXPECT_EQ(Vector2(1e-6, 0).angle_to({0, 1e-5}), 0.0);
    EXPECT_DOUBLE_EQ(Vector2(1e-12, 0).angle_to({0, 1e6}), kPi / 2);
}

TEST(Vector2, ComparesExactlyAndNormalizesAboveTheTolerance) {
    EXPECT_FALSE(Vector2(1, 2) == Vector2(1, 2 + 1e-15));
    EXPECT_TRUE(Vector2(1, 2).near_equal({1, 2 + 1e-15}));
    EXPECT_FALSE(Vector2(1, 2).near_equal({1, 2.1}));
    EXPECT_TRUE(Vector2(1, 2).near_equal({1, 2.1}, 0.2));
    EXPECT_EQ(Vector2(0, 5e-11).normalized(), Vector2());
    EXPECT_EQ(Vector2(3, 4).normalized(), Vector2(0.6, 0.8));
    EXPECT_EQ(Vector2(1, 0).perpendicular(), Vector2(0, 1));
    EXPECT_EQ(Vector2(1, 0).cross({0, 1}), 1.0);
    EXPECT_EQ(Vector2(1, 1).lerp({3, 5}, 2.0), Vector2(5, 9));
    EXPECT_TRUE(std::isinf((Vector2(1, 0) / 0.0).x));
}

TEST(Vector2, IndexesAndPrints) {
    const Vector2 v{1.5, -2};
    EXPECT_EQ(v[0], 1.5);
    EXPECT_EQ(v[1], -2.0);
    try {
        (void)v[2];
        FAIL() << "index 2 must fail";
    } catch (const std::out_of_range& e) {
        EXPECT_STREQ(e.what(), "Vector2 index out of range");
    }
    EXPECT_EQ(v.text(), "Vector2(1.5, -2)");
    double sum = 0.0;
    for (const double c : v) sum += c;
    EXPECT_EQ(sum, -0.5);
}

TEST(Vector3, CrossIndexText) {
    EXPECT_EQ(Vector3(1, 0, 0).cross({0, 1, 0}), Vector3(0, 0, 1));
    EXPECT_EQ(Vector3(1, 2, 3).cross({4, 5, 6}), Vector3(-3, 6, -3));
    EXPECT_EQ(Vector3(1, 2, 3).text().rfind("Vector3(", 0), 0u);
    try {
        (void)Vector3()[3];
        FAIL() << "index 3 must fail";
    } catch (const std::out_of_range& e) {
        EXPECT_STREQ(e.what(), "Vector3 index out of range");
    }
}

TEST(Bounds2, StartsEmptyAndHoldsWhatItIsGiven) {
    Bounds2 box;
    EXPECT_TRUE(box.is_empty());
    EXPECT_EQ(box.area(), 0.0);
    box.expand(Bounds2{});
    EXPECT_TRUE(box.is_empty());
    box.expand(Vector2{3, 4});
    EXPECT_FALSE(box.is_empty());
    EXPECT_EQ(box.area(), 0.0);
    EXPECT_EQ(box.min, Vector2(3, 4));
    EXPECT_EQ(box.max, Vector2(3, 4));
    box.expand(Vector2{1, 8});
    EXPECT_EQ(box.area(), 8.0);
    EXPECT_EQ(box.center(), Vector2(2, 6));
    EXPECT_EQ(box.text(), "BoundingBox2(min=(1, 4), max=(3, 8))");
    // A coordinate that is no number leaves no trace.
    box.expand(Vector2{kNan, kNan});
    EXPECT_EQ(box, Bounds2({1, 4}, {3, 8}));
}

TEST(Bounds2, TestsAreInclusive) {
    const Bounds2 box({0, 0}, {2, 1});
    EXPECT_TRUE(box.contains_point({2, 1}));
    EXPECT_FALSE(box.contains_point({2.0001, 1}));
    EXPECT_TRUE(box.contains_box(box));
    EXPECT_FALSE(box.contains_box({{1, 0}, {3, 1}}));
    EXPECT_TRUE(box.contains_box({}));
    EXPECT_TRUE(box.intersects({{2, 1}, {5, 5}}));
    EXPECT_FALSE(box.intersects({{2.1, 0}, {5, 5}}));
    EXPECT_FALSE(box.intersects({}));
}

TEST(Angles, SweepsAreAboveZeroAndAtMostAFullTurn) {
    EXPECT_DOUBLE_EQ(sweepAngle(0, kPi), kPi);
    EXPECT_DOUBLE_EQ(sweepAngle(1.5 * kPi, 0.5 * kPi), kPi);
    EXPECT_DOUBLE_EQ(sweepAngle(2.0, 2.0), kTwoPi);
    EXPECT_DOUBLE_EQ(sweepAngle(0, kTwoPi), kTwoPi);
    EXPECT_TRUE(std::isnan(sweepAngle(0, kNan)));
    EXPECT_EQ(normalizeAngle(-1e-20), 0.0);
    EXPECT_TRUE(angleInSweep(0.0, 1.5 * kPi, 0.5 * kPi));
    EXPECT_FALSE(angleInSweep(kPi, 1.5 * kPi, 0.5 * kPi));
}

TEST(Matrix4, PointsMoveAndDirectionsOnlyTurn) {
    const Matrix4 m = Matrix4::translation(10, 0, 5) * Matrix4::rotation_z(kPi / 2) * Matrix4::scaling(2, 3);
    EXPECT_TRUE(m.transform_point(Vector2{1, 1}).near_equal({7, 2}));
    EXPECT_TRUE(m.transform_point(Vector3{1, 1, 1}).near_equal({7, 2, 6}));
    EXPECT_TRUE(m.transform_direction(Vector2{1, 0}).near_equal({0, 2}));
    const auto inverse = m.inverse();
    ASSERT_TRUE(inverse);
    EXPECT_TRUE(inverse->transform_point(Vector3{7, 2, 6}).near_equal({1, 1, 1}));
    EXPECT_FALSE(Matrix4::scaling(1, 0).inverse());
    const PlaneParts parts = planeParts(Matrix4::mirror({0, 0}, {1, 1}) * Matrix4::scaling(2, 2));
    EXPECT_TRUE(parts.mirrored);
    EXPECT_TRUE(parts.uniform);
    EXPECT_NEAR(parts.scaleX, 2.0, 1e-12);
    EXPECT_FALSE(planeParts(Matrix4::scaling(1, 2)).uniform);
}

TEST(Matrix4, ArbitraryAxisRule) {
    EXPECT_EQ(Matrix4::object_to_world({0, 0, 1}), Matrix4::identity());
    // Below the plane the x axis runs backwards.
    const Matrix4 down = Matrix4::object_to_world({0, 0, -1});
    EXPECT_TRUE(down.transform_point(Vector3{1, 2, 3}).near_equal({-1, 2, -3}));
    const Matrix4 side = Matrix4::object_to_world({1, 0, 0});
    EXPECT_TRUE(side.transform_point(Vector3{1, 0, 0}).near_equal({0, 1, 0}));
    EXPECT_TRUE(side.transform_point(Vector3{0, 1, 0}).near_equal({0, 0, 1}));
    EXPECT_EQ(Matrix4::object_to_world({0, 0, 0}), Matrix4::identity());
}

}  // namespace
}  // namespace kova::math
