#include "math/kernels/boundary_search.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <random>

#include "math/angles.hpp"
#include "math/curves/polygon.hpp"

namespace kova::math {
namespace {

using Pieces = std::vector<BoundaryPiece>;

void addPolygon(Pieces& pieces, const std::vector<Vector2>& points) {
    for (std::size_t i = 0; i < points.size(); ++i) pieces.push_back({points[i], points[(i + 1) % points.size()]});
}
void addBox(Pieces& pieces, double x0, double y0, double x1, double y1) {
    addPolygon(pieces, {{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}});
}
void addCircle(Pieces& pieces, const Vector2& c, double r) {
    pieces.push_back({{c.x + r, c.y}, {c.x - r, c.y}, 1.0});
    pieces.push_back({{c.x - r, c.y}, {c.x + r, c.y}, 1.0});
}
double areaOf(const BoundaryLoop& loop) { return signedArea(loop.points, loop.bulges); }

/// Area found around a point; -1 when there is none.
double areaAround(const Pieces& pieces, const Vector2& p, double gap = 0.0) {
    BoundarySearch search(pieces, gap);
    const auto found = search.around(p);
    return found ? areaOf(found->outer) : -1.0;
}

TEST(BoundarySearch, SmallestAreaOfCrossingLines) {
    Pieces pieces;
    addBox(pieces, 0, 0, 10, 10);
    EXPECT_NEAR(areaAround(pieces, {5, 5}), 100, 1e-9);
    EXPECT_EQ(areaAround(pieces, {15, 5}), -1);
    pieces.push_back({{-5, 4}, {15, 4}});  // right across
    pieces.push_back({{3, -5}, {3, 7}});   // ends in the middle
    EXPECT_NEAR(areaAround(pieces, {1, 1}), 12, 1e-9);
    EXPECT_NEAR(areaAround(pieces, {5, 1}), 28, 1e-9);
    // The loose end does not belong to the outline.
    BoundarySearch search(pieces);
    const auto upper = search.around({5, 8});
    ASSERT_TRUE(upper);
    EXPECT_NEAR(areaOf(upper->outer), 60, 1e-9);
    EXPECT_EQ(upper->outer.points.size(), 4u);
    EXPECT_TRUE(upper->islands.empty());
}

TEST(BoundarySearch, ArcsStayArcs) {
    Pieces pieces;
    addCircle(pieces, {0, 0}, 5);
    addCircle(pieces, {6, 0}, 5);
    BoundarySearch search(pieces);
    const auto lens = search.around({3, 0});
    ASSERT_TRUE(lens);
    const double half = std::acos(3.0 / 5.0);
    EXPECT_NEAR(areaOf(lens->outer), 25.0 * (2.0 * half - std::sin(2.0 * half)), 1e-9);
    const auto moon = search.around({-3, 0});
    ASSERT_TRUE(moon);
    EXPECT_NEAR(areaOf(moon->outer), 25.0 * kPi - areaOf(lens->outer), 1e-9);
    for (const double bulge : moon->outer.bulges) EXPECT_NE(bulge, 0.0);
}

TEST(BoundarySearch, IslandsWithTheirDepth) {
    Pieces pieces;
    addBox(pieces, 0, 0, 100, 100);
    addBox(pieces, 10, 10, 50, 50);
    addCircle(pieces, {30, 30}, 10);
    addBox(pieces, 29, 29, 31, 31);
    addCircle(pieces, {70, 70}, 5);
    addBox(pieces, 68, 60, 72, 80);           // crosses the circle: one island of the two
    pieces.push_back({{50, 30}, {100, 30}});  // a bridge from an island to the outline
    pieces.push_back({{80, 10}, {90, 20}});   // a loose line
    BoundarySearch search(pieces);
    const auto area = search.around({5, 5});
    ASSERT_TRUE(area);
    EXPECT_NEAR(areaOf(area->outer), 10000, 1e-6);
    ASSERT_EQ(area->islands.size(), 4u);
    int depths[3] = {};
    double sizes[3] = {};
    for (const BoundaryLoop& loop : area->islands) {
        ASSERT_LE(loop.depth, 2);
        ++depths[loop.depth];
        sizes[loop.depth] += areaOf(loop);
    }
    EXPECT_EQ(depths[0], 2);
    EXPECT_EQ(depths[1], 1);
    EXPECT_EQ(depths[2], 1);
    EXPECT_NEAR(sizes[1], 100 * kPi, 1e-9);
    EXPECT_NEAR(sizes[2], 4, 1e-9);
    // Within an island: its own outline counts.
    EXPECT_NEAR(areaAround(pieces, {30, 35}), 100 * kPi, 1e-9);
    // From a point inside an island's island, whose ray meets nothing else first.
    EXPECT_NEAR(areaAround(pieces, {30, 30}), 4, 1e-9);
}

TEST(BoundarySearch, TouchingOverlappingAndTangent) {
    Pieces pieces;
    // Two boxes that share part of a side, drawn twice over each other.
    addBox(pieces, 0, 0, 10, 10);
    addBox(pieces, 10, 2, 20, 8);
    addBox(pieces, 0, 0, 10, 10);
    EXPECT_NEAR(areaAround(pieces, {5, 5}), 100, 1e-9);
    EXPECT_NEAR(areaAround(pieces, {15, 5}), 60, 1e-9);
    BoundarySearch search(pieces);
    EXPECT_TRUE(search.around({5, 5})->islands.empty());
    // A circle that touches all four sides from within: the corners and the disc are areas of their own.
    Pieces inscribed;
    addBox(inscribed, -5, -5, 5, 5);
    addCircle(inscribed, {0, 0}, 5);
    EXPECT_NEAR(areaAround(inscribed, {0, 0}), 25 * kPi, 1e-6);
    EXPECT_NEAR(areaAround(inscribed, {4.8, 4.8}), (100 - 25 * kPi) / 4, 1e-6);
    // Circles in each other that touch at one point.
    Pieces nested;
    addCircle(nested, {5, 0}, 5);
    addCircle(nested, {3, 0}, 3);
    EXPECT_NEAR(areaAround(nested, {3, 0}), 9 * kPi, 1e-6);
    EXPECT_NEAR(areaAround(nested, {8, 0}), 16 * kPi, 1e-6);
}

TEST(BoundarySearch, FarOutWithSmallFeatures) {
    const Vector2 far{1e7, -3e7};
    Pieces pieces;
    addBox(pieces, far.x, far.y, far.x + 0.01, far.y + 0.01);
    pieces.push_back({far + Vector2{0.004, -1}, far + Vector2{0.004, 1}});
    EXPECT_NEAR(areaAround(pieces, far + Vector2{0.002, 0.005}), 4e-5, 1e-8);
}

TEST(BoundarySearch, GapsAndBadInput) {
    Pieces pieces{{{0, 0}, {10, 0}}, {{10, 0}, {10, 10}}, {{10, 10}, {0, 10}}, {{0, 9.5}, {0, 0}}};
    EXPECT_EQ(areaAround(pieces, {5, 5}), -1);
    EXPECT_EQ(areaAround(pieces, {5, 5}, 0.1), -1);
    EXPECT_NEAR(areaAround(pieces, {5, 5}, 1.0), 100, 1e-9);
    BoundarySearch search(pieces, 1.0);
    EXPECT_TRUE(search.around({5, 5})->islands.empty());
    const double nan = std::nan("");
    pieces.push_back({{nan, 0}, {1, 1}});
    pieces.push_back({{3, 3}, {3, 3}});
    pieces.push_back({{0, 0}, {1, 1}, HUGE_VAL});
    EXPECT_NEAR(areaAround(pieces, {5, 5}, 1.0), 100, 1e-9);
    EXPECT_EQ(areaAround(pieces, {nan, 5}), -1);
    EXPECT_EQ(areaAround({}, {5, 5}), -1);
}

TEST(BoundarySearch, OutlinesOfObjects) {
    Pieces pieces;
    addBox(pieces, 0, 0, 4, 4);
    addBox(pieces, 3, 3, 6, 6);
    addCircle(pieces, {20, 0}, 2);
    addCircle(pieces, {20, 0}, 1);
    pieces.push_back({{30, 0}, {40, 0}});
    BoundarySearch search(pieces);
    const auto loops = search.outlines();
    ASSERT_EQ(loops.size(), 3u);
    double total = 0.0;
    int inner = 0;
    for (const BoundaryLoop& loop : loops) {
        total += areaOf(loop);
        inner += loop.depth;
    }
    EXPECT_NEAR(total, 24 + 5 * kPi, 1e-9);
    EXPECT_EQ(inner, 1);
}

// Ten thousand long lines that all cross each other: only what lies round the point is cut.
TEST(BoundarySearch, ManyLinesAreQuick) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> place(0.0, 1000.0);
    Pieces pieces;
    for (int i = 0; i < 10000; ++i) pieces.push_back({{place(random), place(random)}, {place(random), place(random)}});
    const auto begin = std::chrono::steady_clock::now();
    BoundarySearch search(pieces);
    const auto area = search.around({500.1, 499.3});
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    ASSERT_TRUE(area);
    EXPECT_TRUE(pointInPolygon({500.1, 499.3}, area->outer.points));
    EXPECT_LT(areaOf(area->outer), 10.0);
    EXPECT_LT(took.count(), 2.0);
}

TEST(BoundarySearch, ManyIslands) {
    Pieces pieces;
    addBox(pieces, -1, -1, 200, 200);
    for (int x = 0; x < 50; ++x)
        for (int y = 0; y < 50; ++y) addBox(pieces, 4 * x, 4 * y, 4 * x + 2, 4 * y + 2);
    BoundarySearch search(pieces);
    const auto area = search.around({3, 3});
    ASSERT_TRUE(area);
    EXPECT_EQ(area->islands.size(), 2500u);
}

}  // namespace
}  // namespace kova::math
