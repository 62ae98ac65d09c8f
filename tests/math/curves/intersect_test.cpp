#include "math/curves/intersect.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "math/curves/polygon.hpp"

namespace kova::math {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

void expectNear(const Vector2& a, const Vector2& b, double eps = 1e-9) {
    EXPECT_NEAR(a.x, b.x, eps);
    EXPECT_NEAR(a.y, b.y, eps);
}

TEST(Intersect, LinesAndSegments) {
    const auto x = lineLine({0, 0}, {1, 1}, {0, 4}, {1, 3});
    ASSERT_TRUE(x);
    expectNear(*x, {2, 2});
    EXPECT_FALSE(lineLine({0, 0}, {1, 1}, {5, 0}, {6, 1}));
    EXPECT_FALSE(lineLine({0, 0}, {0, 0}, {5, 0}, {6, 1}));
    EXPECT_FALSE(lineLine({0, kNan}, {1, 0}, {5, 0}, {6, 1}));
    // The size of the drawing does not matter to what is parallel.
    EXPECT_TRUE(lineLine({0, 0}, {1e-6, 0}, {0, 1e-6}, {1e-6, 2e-6}));

    EXPECT_TRUE(segmentSegment({0, 0}, {2, 0}, {1, -1}, {1, 1}));
    EXPECT_FALSE(segmentSegment({0, 0}, {2, 0}, {3, -1}, {3, 1}));
    // An end that touches counts; the point is the end itself.
    const auto touch = segmentSegment({0, 0}, {2, 0}, {2, 0}, {2, 5});
    ASSERT_TRUE(touch);
    expectNear(*touch, {2, 0}, 0.0);
    // In one line: end to end, apart, overlapping.
    const auto end = segmentSegment({0, 0}, {2, 0}, {2, 0}, {5, 0});
    ASSERT_TRUE(end);
    expectNear(*end, {2, 0}, 0.0);
    EXPECT_FALSE(segmentSegment({0, 0}, {2, 0}, {3, 0}, {5, 0}));
    EXPECT_FALSE(segmentSegment({0, 0}, {2, 0}, {1, 0}, {5, 0}));
    // A segment without length is a point.
    EXPECT_TRUE(segmentSegment({0, 0}, {2, 0}, {1, 0}, {1, 0}));
    EXPECT_FALSE(segmentSegment({0, 0}, {2, 0}, {1, 1}, {1, 1}));
}

TEST(Intersect, LineAndCircle) {
    const Hits two = lineCircle({-5, 0}, {5, 0}, {0, 0}, 2);
    ASSERT_EQ(two.count, 2);
    expectNear(two[0], {-2, 0});
    expectNear(two[1], {2, 0});
    const Hits tangent = lineCircle({-5, 2}, {5, 2}, {0, 0}, 2);
    ASSERT_EQ(tangent.count, 1);
    expectNear(tangent[0], {0, 2});
    EXPECT_EQ(lineCircle({-5, 2.1}, {5, 2.1}, {0, 0}, 2).count, 0);
    EXPECT_EQ(lineCircle({1, 1}, {1, 1}, {0, 0}, 2).count, 0);
    EXPECT_EQ(segmentCircle({0, 0}, {5, 0}, {0, 0}, 2).count, 1);
    EXPECT_EQ(segmentCircle({0, 0}, {1, 0}, {0, 0}, 2).count, 0);
    EXPECT_EQ(lineCircle({0, kNan}, {5, 0}, {0, 0}, 2).count, 0);
}

TEST(Intersect, CirclesApartTouchingNestedAndEqual) {
    const Hits two = circleCircle({0, 0}, 5, {6, 0}, 5);
    ASSERT_EQ(two.count, 2);
    expectNear(two[0], {3, 4});
    expectNear(two[1], {3, -4});
    const Hits outside = circleCircle({0, 0}, 1, {3, 0}, 2);
    ASSERT_EQ(outside.count, 1);
    expectNear(outside[0], {1, 0});
    const Hits inside = circleCircle({0, 0}, 1, {2, 0}, 3);
    ASSERT_EQ(inside.count, 1);
    expectNear(inside[0], {-1, 0});
    EXPECT_EQ(circleCircle({0, 0}, 1, {9, 0}, 2).count, 0);
    EXPECT_EQ(circleCircle({0, 0}, 1, {0.1, 0}, 3).count, 0);
    EXPECT_EQ(circleCircle({0, 0}, 1, {0, 0}, 1).count, 0);
}

TEST(Intersect, ArcsCountOnlyWhereTheyRun) {
    const CircularArc upper{{0, 0}, 2, 0, kPi};
    const CircularArc lowerBackwards{{0, 0}, 2, 0, -kPi};
    EXPECT_EQ(lineArc({0, -5}, {0, 5}, upper).count, 1);
    EXPECT_GT(lineArc({0, -5}, {0, 5}, upper)[0].y, 0);
    EXPECT_LT(lineArc({0, -5}, {0, 5}, lowerBackwards)[0].y, 0);
    // Both ends lie on the line.
    EXPECT_EQ(lineArc({-5, 0}, {5, 0}, upper).count, 2);
    EXPECT_EQ(segmentArc({0, 0}, {5, 0}, upper).count, 1);
    EXPECT_EQ(arcArc(upper, {{2, 0}, 2, kPi / 2, kPi / 2}).count, 1);
    EXPECT_EQ(arcArc(upper, {{2, 0}, 2, kPi, kPi / 2}).count, 0);
    // Two halves of one circle meet in their ends.
    EXPECT_EQ(arcArc(upper, lowerBackwards).count, 2);
}

TEST(Intersect, LineAndEllipse) {
    const Hits hits = lineEllipse({-9, 1}, {9, 1}, {1, 1}, {3, 0}, {0, 2});
    ASSERT_EQ(hits.count, 2);
    expectNear(hits[0], {-2, 1});
    expectNear(hits[1], {4, 1});
    EXPECT_EQ(lineEllipse({-9, 3}, {9, 3}, {1, 1}, {3, 0}, {0, 2}).count, 1);
    EXPECT_EQ(lineEllipse({-9, 1}, {9, 1}, {1, 1}, {3, 0}, {6, 0}).count, 0);
}

TEST(Polygon, AreaAndCentroid) {
    const std::vector<Vector2> square{{0, 0}, {4, 0}, {4, 4}, {0, 4}};
    EXPECT_EQ(signedArea(square), 16.0);
    const std::vector<Vector2> back(square.rbegin(), square.rend());
    EXPECT_EQ(signedArea(back), -16.0);
    expectNear(centroid(square), {2, 2});
    EXPECT_EQ(perimeter(square), 16.0);
    // Far from the origin nothing is lost.
    std::vector<Vector2> far = square;
    for (Vector2& p : far) p += Vector2{1e8, 1e8};
    EXPECT_EQ(area(far), 16.0);
    expectNear(centroid(far), {1e8 + 2, 1e8 + 2});
    // No area: the mean; no points: the origin.
    const std::vector<Vector2> line{{0, 0}, {2, 0}, {4, 0}};
    expectNear(centroid(line), {2, 0});
    EXPECT_EQ(centroid({}), Vector2());
    EXPECT_EQ(signedArea({}), 0.0);
}

TEST(Polygon, ArcsCount) {
    // Two half circles: a circle of radius 2 about (2, 0).
    const std::vector<Vector2> points{{0, 0}, {4, 0}};
    const std::vector<double> bulges{1, 1};
    EXPECT_NEAR(signedArea(points, bulges), 4 * kPi, 1e-12);
    expectNear(centroid(points, bulges), {2, 0});
    EXPECT_NEAR(perimeter(points, bulges), 4 * kPi, 1e-12);
    // A half disc: its centroid lies 4 r / 3 pi off the chord.
    const std::vector<double> half{1, 0};
    expectNear(centroid(points, half), {2, -8 / (3 * kPi)});
    // Nearly straight arcs do not spoil the area of a square.
    const std::vector<Vector2> square{{0, 0}, {4, 0}, {4, 4}, {0, 4}};
    const std::vector<double> faint(4, 1e-6);
    EXPECT_NEAR(signedArea(square, faint), 16 + 4 * (2.0 / 3.0 * 4 * 2e-6), 1e-12);
}

TEST(Polygon, EvenOddWithConsistentEdges) {
    const std::vector<Vector2> square{{0, 0}, {4, 0}, {4, 4}, {0, 4}};
    EXPECT_TRUE(pointInPolygon({1, 1}, square));
    EXPECT_FALSE(pointInPolygon({5, 1}, square));
    EXPECT_FALSE(pointInPolygon({-1, 4}, square));
    // The ray runs through a vertex.
    const std::vector<Vector2> diamond{{0, -1}, {1, 0}, {0, 1}, {-1, 0}};
    EXPECT_TRUE(pointInPolygon({0, 0}, diamond));
    EXPECT_FALSE(pointInPolygon({-3, 0}, diamond));
    // A point on the edge between two polygons belongs to exactly one of them.
    const std::vector<Vector2> neighbour{{4, 4}, {4, 0}, {8, 0}, {8, 4}};
    for (const double y : {0.5, 1.0, 3.7})
        EXPECT_NE(pointInPolygon({4, y}, square), pointInPolygon({4, y}, neighbour)) << y;
    EXPECT_FALSE(pointInPolygon({0, 0}, {}));
    EXPECT_FALSE(pointInPolygon({kNan, 0}, square));
}

TEST(Polygon, EvenOddWithArcs) {
    const std::vector<Vector2> points{{-2, 0}, {2, 0}};
    const std::vector<double> circle{1, 1};
    // The centre lies on both chords.
    EXPECT_TRUE(pointInPolygon({0, 0}, points, circle));
    EXPECT_TRUE(pointInPolygon({1.9, 0}, points, circle));
    EXPECT_TRUE(pointInPolygon({0, 1.9}, points, circle));
    EXPECT_FALSE(pointInPolygon({1.9, 1.9}, points, circle));
    EXPECT_FALSE(pointInPolygon({3, 0}, points, circle));
    // A square with one side pushed in.
    const std::vector<Vector2> square{{0, 0}, {4, 0}, {4, 4}, {0, 4}};
    const std::vector<double> bitten{-1, 0, 0, 0};
    EXPECT_FALSE(pointInPolygon({2, 1}, square, bitten));
    EXPECT_TRUE(pointInPolygon({2, 2.5}, square, bitten));
    // More than a half turn: the lens covers the chord's far side too.
    const std::vector<Vector2> pair{{0, 0}, {1, 0}};
    const std::vector<double> large{4, 0};
    EXPECT_TRUE(pointInPolygon({0.5, -1.9}, pair, large));
    EXPECT_FALSE(pointInPolygon({0.5, 0.1}, pair, large));
}

}  // namespace
}  // namespace kova::math
