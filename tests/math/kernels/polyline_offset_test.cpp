#include "math/kernels/polyline_offset.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "math/angles.hpp"
#include "math/curves/box_tree.hpp"
#include "math/curves/curves.hpp"
#include "math/curves/polygon.hpp"

namespace kova::math {
namespace {

using Points = std::vector<Vector2>;

std::vector<OffsetPolyline> offset(const Points& points, double distance, bool closed = true,
                                   const std::vector<double>& bulges = {}, OffsetGap gap = OffsetGap::Extended) {
    return offsetPolyline(points, bulges, closed, distance, gap);
}

double areaOf(const OffsetPolyline& p) { return signedArea(p.points, p.bulges); }

/// Least distance of the result's vertices and middles from the source; a parallel keeps it.
double nearestTo(const OffsetPolyline& result, const Points& source, bool closed) {
    double least = 1e300;
    for (std::size_t i = 0; i < result.points.size(); ++i) {
        const bool last = i + 1 == result.points.size();
        if (last && !result.closed) break;
        const Vector2& b = result.points[last ? 0 : i + 1];
        for (const Vector2& p : {result.points[i], bulgeMidPoint(result.points[i], b, result.bulges[i])})
            for (std::size_t k = 0; k + (closed ? 0 : 1) < source.size(); ++k)
                least = std::min(least, closestOnSegment(p, source[k], source[(k + 1) % source.size()]).distance_to(p));
    }
    return least;
}

const Points kSquare{{0, 0}, {10, 0}, {10, 10}, {0, 10}};

TEST(PolylineOffset, SquareInAndOutWithEachKindOfCorner) {
    const auto in = offset(kSquare, 2);
    ASSERT_EQ(in.size(), 1u);
    EXPECT_TRUE(in[0].closed);
    EXPECT_EQ(in[0].points.size(), 4u);
    EXPECT_NEAR(areaOf(in[0]), 36.0, 1e-9);
    EXPECT_TRUE(offset(kSquare, 5.0001).empty());
    EXPECT_TRUE(offset(kSquare, 7).empty());
    const auto miter = offset(kSquare, -1);
    ASSERT_EQ(miter.size(), 1u);
    EXPECT_EQ(miter[0].points.size(), 4u);
    EXPECT_NEAR(areaOf(miter[0]), 144.0, 1e-9);
    const auto round = offset(kSquare, -1, true, {}, OffsetGap::Round);
    ASSERT_EQ(round.size(), 1u);
    EXPECT_EQ(round[0].points.size(), 8u);
    EXPECT_NEAR(areaOf(round[0]), 100.0 + 40.0 + kPi, 1e-9);
    const auto bevel = offset(kSquare, -1, true, {}, OffsetGap::Bevelled);
    ASSERT_EQ(bevel.size(), 1u);
    EXPECT_NEAR(areaOf(bevel[0]), 142.0, 1e-9);
}

TEST(PolylineOffset, FarOutWithSmallFeatures) {
    Points far = kSquare;
    for (Vector2& p : far) p = p / 100.0 + Vector2{1e7, -1e7};
    const auto in = offset(far, 0.02);
    ASSERT_EQ(in.size(), 1u);
    EXPECT_NEAR(areaOf(in[0]), 0.0036, 1e-9);
}

TEST(PolylineOffset, ArcsKeepTheirCentres) {
    // A stadium: two straight sides and two half circles of radius 2.
    const Points stadium{{0, 0}, {6, 0}, {6, 4}, {0, 4}};
    const std::vector<double> bulges{0, 1, 0, 1};
    const auto in = offset(stadium, 1, true, bulges);
    ASSERT_EQ(in.size(), 1u);
    EXPECT_NEAR(areaOf(in[0]), 12.0 + kPi, 1e-9);
    const auto out = offset(stadium, -1, true, bulges);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_NEAR(areaOf(out[0]), 36.0 + 9.0 * kPi, 1e-9);
    EXPECT_TRUE(offset(stadium, 2.5, true, bulges).empty());
    // A circle as a polyline.
    const auto ring = offset({{0, 0}, {4, 0}}, 0.5, true, {1, 1});
    ASSERT_EQ(ring.size(), 1u);
    EXPECT_NEAR(areaOf(ring[0]), kPi * 1.5 * 1.5, 1e-9);
}

TEST(PolylineOffset, AnHourGlassFallsApart) {
    const Points waist{{0, 0}, {10, 0}, {6, 5}, {10, 10}, {0, 10}, {4, 5}};
    const auto parts = offset(waist, 1.2);
    ASSERT_EQ(parts.size(), 2u);
    for (const OffsetPolyline& part : parts) {
        EXPECT_TRUE(part.closed);
        EXPECT_GT(areaOf(part), 0.5);
        EXPECT_NEAR(nearestTo(part, waist, true), 1.2, 1e-9);
    }
    EXPECT_EQ(offset(waist, 0.5).size(), 1u);
}

TEST(PolylineOffset, OpenOnesAndWhatTheirEndsHide) {
    const auto bend = offset({{0, 0}, {10, 0}, {10, 10}}, 1, false);
    ASSERT_EQ(bend.size(), 1u);
    EXPECT_FALSE(bend[0].closed);
    ASSERT_EQ(bend[0].points.size(), 3u);
    EXPECT_NEAR(bend[0].points[1].distance_to({9, 1}), 0.0, 1e-12);
    EXPECT_EQ(bend[0].points[2], Vector2(9, 10));
    const auto outside = offset({{0, 0}, {10, 0}, {10, 10}}, -1, false);
    ASSERT_EQ(outside.size(), 1u);
    EXPECT_NEAR(outside[0].points[1].distance_to({11, -1}), 0.0, 1e-12);
    // A short end is swallowed where it lies within reach of the other side.
    const Points hook{{0, 0}, {10, 0}, {10, 1}};
    const auto swallowed = offset(hook, 2, false);
    ASSERT_EQ(swallowed.size(), 1u);
    EXPECT_NEAR(nearestTo(swallowed[0], hook, false), 2.0, 1e-9);
    // A U too narrow for the distance loses its arms.
    const Points narrow{{0, 10}, {0, 0}, {2, 0}, {2, 10}};
    for (const OffsetPolyline& part : offset(narrow, 1.5, false)) EXPECT_GE(nearestTo(part, narrow, false), 1.5 - 1e-9);
}

TEST(PolylineOffset, CollinearAndRepeatedPointsDoNoHarm) {
    const auto line = offset({{0, 0}, {5, 0}, {5, 0}, {10, 0}}, 1, false);
    ASSERT_EQ(line.size(), 1u);
    EXPECT_EQ(line[0].points.front(), Vector2(0, 1));
    EXPECT_EQ(line[0].points.back(), Vector2(10, 1));
    EXPECT_TRUE(offset({{3, 3}, {3, 3}}, 1, false).empty());
    EXPECT_TRUE(offset({{0, 0}}, 1).empty());
    EXPECT_TRUE(offset({{0, 0}, {NAN, 1}}, 1).empty());
    // There and back again: both sides of it.
    for (const OffsetPolyline& part : offset({{0, 0}, {10, 0}, {0, 0}}, 1, false))
        EXPECT_GE(nearestTo(part, {{0, 0}, {10, 0}}, false), 1.0 - 1e-9);
}

TEST(PolylineOffset, StepsLowerThanTheDistanceStaySharp) {
    const Points step{{0, 0}, {10, 0}, {10, 1}, {20, 1}, {20, 0}, {30, 0}};
    const auto over = offset(step, 2, false);
    ASSERT_EQ(over.size(), 1u);
    const Points expected{{0, 2}, {8, 2}, {8, 3}, {22, 3}, {22, 2}, {30, 2}};
    ASSERT_EQ(over[0].points.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(over[0].points[i].distance_to(expected[i]), 0.0, 1e-9) << i;
        EXPECT_EQ(over[0].bulges[i], 0.0) << i;
    }
    // Stairs of any steps: as many parallels as with round corners, none of them too near.
    unsigned seed = 7;
    const auto random = [&] { return (seed = seed * 1664525u + 1013904223u) / 4294967296.0; };
    for (int round = 0; round < 300; ++round) {
        Points stairs{{0, 0}};
        for (int i = 0; i < 6; ++i) {
            stairs.push_back(stairs.back() + Vector2{0.5 + 8.0 * random(), 0});
            stairs.push_back(stairs.back() + Vector2{0, 5.0 * random() - 2.5});
        }
        for (const double d : {1.5, -1.5}) {
            const auto sharp = offset(stairs, d, false);
            ASSERT_EQ(sharp.size(), offset(stairs, d, false, {}, OffsetGap::Round).size()) << round;
            for (const OffsetPolyline& part : sharp) EXPECT_GE(nearestTo(part, stairs, false), 1.5 - 1e-6) << round;
        }
    }
}

TEST(PolylineOffset, RandomPolygonsKeepTheirDistance) {
    std::uint32_t seed = 12345;
    const auto random = [&] { return (seed = seed * 1664525u + 1013904223u) / 4294967296.0; };
    for (int round = 0; round < 200; ++round) {
        Points star;
        const int n = 5 + static_cast<int>(random() * 25);
        for (int i = 0; i < n; ++i) star.push_back(Vector2::from_angle(kTwoPi * i / n) * (3.0 + 7.0 * random()));
        const double d = 0.1 + random();
        double inside = 0.0;
        for (const OffsetPolyline& part : offset(star, d)) {
            EXPECT_TRUE(part.closed);
            EXPECT_GE(nearestTo(part, star, true), d - 1e-6) << round;
            inside += areaOf(part);
        }
        EXPECT_LT(inside, signedArea(star));
        const auto out = offset(star, -d);
        ASSERT_GE(out.size(), 1u) << round;
        double outside = 0.0;
        for (const OffsetPolyline& part : out) {
            EXPECT_TRUE(part.closed) << round;
            EXPECT_GE(nearestTo(part, star, true), d - 1e-6) << round;
            outside += areaOf(part);
        }
        EXPECT_GT(outside, signedArea(star)) << round;
    }
}

/// How long this takes is measured in bench/bench_commands.cpp; what grows with the square of it does not end here.
TEST(PolylineOffset, TenThousandVertices) {
    Points wave;
    constexpr int kVertices = 10000;
    for (int i = 0; i < kVertices; ++i)
        wave.push_back(Vector2::from_angle(kTwoPi * i / kVertices) * (1000.0 + (i % 2 == 0 ? 3.0 : 0.0)));
    for (const double distance : {20.0, 0.05, 400.0}) {
        const std::vector<OffsetPolyline> result = offset(wave, distance);
        ASSERT_EQ(result.size(), 1u) << distance;
        EXPECT_TRUE(result.front().closed) << distance;
    }
}

TEST(BoxTree, FindsWhatALoopOverAllFinds) {
    std::uint32_t seed = 7;
    const auto random = [&] { return (seed = seed * 1664525u + 1013904223u) / 4294967296.0; };
    std::vector<Bounds2> boxes;
    for (int i = 0; i < 500; ++i) {
        const Vector2 p{random() * 100.0, random() * 100.0};
        boxes.push_back({p, p + Vector2{random() * 5.0, random() * 5.0}});
    }
    boxes.push_back({});
    const BoxTree tree(boxes);
    for (int i = 0; i < 50; ++i) {
        const Vector2 p{random() * 100.0, random() * 100.0};
        const Bounds2 window{p, p + Vector2{8, 8}};
        std::size_t expected = 0;
        double least = 1e300;
        for (const Bounds2& box : boxes) {
            expected += box.intersects(window) ? 1u : 0u;
            if (!box.is_empty()) least = std::min(least, BoxTree::boxDistance(box, p));
        }
        std::size_t found = 0;
        tree.query(window, [&](std::size_t) { return ++found > 0; });
        EXPECT_EQ(found, expected);
        EXPECT_EQ(tree.least(p, 1e300, [&](std::size_t k) { return BoxTree::boxDistance(boxes[k], p); }), least);
    }
    const BoxTree none({});
    none.query({{0, 0}, {1, 1}}, [](std::size_t) { return ADD_FAILURE(), true; });
}

}  // namespace
}  // namespace kova::math
