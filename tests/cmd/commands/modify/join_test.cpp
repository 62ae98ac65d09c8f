#include <gtest/gtest.h>

#include "cmd/edit_harness.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/ellipse.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/polyline3d.hpp"
#include "engine/entities/spline.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::ArcEntity;
using engine::EllipseEntity;
using engine::LineEntity;
using engine::Polyline3DEntity;
using engine::PolylineEntity;
using engine::SplineEntity;
using math::Vector2;
using math::Vector3;

TEST(JoinInSpace, LinesAndPolylinesEndToEnd) {
    Console c;
    c.add(Polyline3DEntity({{0, 0, 0}, {5, 0, 2}}));
    c.add(LineEntity(Vector3{9, 9, 4}, Vector3{5, 0, 2}));
    PolylineEntity level({{9, 9}, {12, 9}, {12, 20}});
    level.elevation = 4.0;
    c.add(level);
    c.add(LineEntity(Vector3{12, 20, 0}, Vector3{20, 20, 0}));  // meets it in plan only
    const Lines told = c.run({"JOIN", "ALL", ""});
    EXPECT_EQ(told.at(told.size() - 2), "3 objects joined into 1 3D polyline");
    EXPECT_EQ(told.back(), "1 object discarded from the operation.");
    ASSERT_EQ(c.count(), 2u);
    const std::vector<Vector3> want{{0, 0, 0}, {5, 0, 2}, {9, 9, 4}, {12, 9, 4}, {12, 20, 4}};
    EXPECT_EQ(at<Polyline3DEntity>(c, 0).vertices, want);
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: JOIN"});
    EXPECT_EQ(c.count(), 4u);

    Console line;
    line.add(LineEntity(Vector3{0, 0, 0}, Vector3{1, 1, 1}));
    line.add(LineEntity(Vector3{3, 3, 3}, Vector3{1, 1, 1}));
    line.run({"J", "ALL", ""});
    ASSERT_EQ(line.count(), 1u);
    EXPECT_EQ(at<LineEntity>(line, 0).end3(), Vector3(3, 3, 3));

    Console ring;
    ring.add(LineEntity(Vector3{0, 0, 0}, Vector3{4, 0, 1}));
    ring.add(LineEntity(Vector3{4, 0, 1}, Vector3{0, 4, 2}));
    ring.add(LineEntity(Vector3{0, 4, 2}, Vector3{0, 0, 0}));
    ring.run({"J", "ALL", ""});
    EXPECT_TRUE(at<Polyline3DEntity>(ring, 0).closed);
    EXPECT_EQ(at<Polyline3DEntity>(ring, 0).vertices.size(), 3u);
}

TEST(JoinInSpace, SplinesKeepTheirHeights) {
    Console c;
    SplineEntity spline;
    spline.controlPoints = {{0, 0}, {1, 3}, {4, 3}, {5, 0}};
    spline.controlZ = {0, 1, 2, 3};
    c.add(spline);
    c.add(LineEntity(Vector3{9, 0, 6}, Vector3{5, 0, 3}));
    ArcEntity arc(Vector2{12, 0}, 3.0, 0.0, math::kPi);
    arc.elevation = 6.0;
    c.add(arc);
    EXPECT_EQ(c.run({"J", "ALL", ""}).back(), "3 objects joined into 1 spline");
    ASSERT_EQ(c.count(), 1u);
    const auto& made = at<SplineEntity>(c, 0);
    ASSERT_EQ(made.controlZ.size(), made.controlPoints.size());
    EXPECT_NEAR(made.controlZ[0], 0.0, 1e-12);
    EXPECT_NEAR(made.controlZ[1], 1.0, 1e-12);
    EXPECT_NEAR(made.controlZ[3], 3.0, 1e-12);
    EXPECT_NEAR(made.controlZ[6], 6.0, 1e-12);
    EXPECT_NEAR(made.controlZ.back(), 6.0, 1e-12);
    EXPECT_NEAR(made.distanceTo({12, 3}), 0.0, 1e-5);
    EXPECT_NEAR(made.distanceTo({7, 0}), 0.0, 1e-9);
}

TEST(JoinOverlaps, LinesWithoutASourceWhereTheyTouchOrOverlap) {
    Console c;
    c.addLine(0, 0, 6, 0);
    c.addLine(9, 0, 4, 0);
    c.addLine(2, 0, 3, 0);
    c.addLine(9, 0, 12, 0);   // touches
    c.addLine(14, 0, 20, 0);  // a gap: stays
    c.addLine(0, 1, 20, 1);
    const Lines told = c.run({"J", "ALL", ""});
    EXPECT_EQ(told.at(told.size() - 2), "4 objects joined into 1 line");
    EXPECT_EQ(told.back(), "2 objects discarded from the operation.");
    ASSERT_EQ(c.count(), 3u);
    expectLine(c, 0, {0, 0}, {12, 0});
    // An overlapping lot goes on into a chain.
    Console chain;
    chain.addLine(0, 0, 6, 0);
    chain.addLine(4, 0, 9, 0);
    chain.addLine(9, 0, 9, 5);
    EXPECT_EQ(chain.run({"J", "ALL", ""}).back(), "3 objects joined into 1 polyline");
    EXPECT_EQ(at<PolylineEntity>(chain, 0).vertices, (std::vector<Vector2>{{0, 0}, {9, 0}, {9, 5}}));
}

TEST(JoinOverlaps, AllOfOneLineOrCircleOverGaps) {
    Console c;
    c.addLine(0, 0, 6, 0);
    c.addLine(14, 0, 9, 0);
    EXPECT_EQ(c.run({"J", "ALL", ""}).back(), "2 objects joined into 1 line");
    ASSERT_EQ(c.count(), 1u);
    expectLine(c, 0, {0, 0}, {14, 0});
    Console round;
    round.add(ArcEntity(Vector2{0, 0}, 5.0, 0.0, 1.0));
    round.add(ArcEntity(Vector2{0, 0}, 5.0, 2.0, 3.0));
    EXPECT_EQ(round.run({"J", "ALL", ""}).back(), "2 objects joined into 1 arc");
    EXPECT_NEAR(at<ArcEntity>(round, 0).endAngle, 3.0, 1e-9);
    // Arcs that touch stay open at the other side, whichever comes first.
    Console touching;
    touching.add(ArcEntity(Vector2{0, 0}, 5.0, 1.0, 2.0));
    touching.add(ArcEntity(Vector2{0, 0}, 5.0, 0.0, 1.0));
    EXPECT_EQ(touching.run({"J", "ALL", ""}).back(), "2 objects joined into 1 arc");
    EXPECT_NEAR(at<ArcEntity>(touching, 0).sweep(), 2.0, 1e-9);
}

TEST(JoinOverlaps, ArcsAndEllipticArcsOfOneCurve) {
    Console c;
    c.add(ArcEntity(Vector2{0, 0}, 5.0, 0.0, 2.0));
    c.add(ArcEntity(Vector2{0, 0}, 5.0, 1.5, 3.0));
    c.add(ArcEntity(Vector2{0, 0}, 5.0, 6.0, 0.5));  // over the turn
    c.add(ArcEntity(Vector2{0, 0}, 4.0, 0.0, 2.0));
    c.run({"J", "ALL", ""});
    ASSERT_EQ(c.count(), 2u);
    EXPECT_NEAR(at<ArcEntity>(c, 0).startAngle, 6.0, 1e-9);
    EXPECT_NEAR(at<ArcEntity>(c, 0).endAngle, 3.0, 1e-9);

    Console e;
    e.add(EllipseEntity(Vector2{0, 0}, Vector2{10, 0}, 0.5, 0.0, 1.0));
    e.add(EllipseEntity(Vector2{0, 0}, Vector2{-10, 0}, 0.5, 1.0 - math::kPi, 2.0 - math::kPi));  // the same, turned
    EXPECT_EQ(e.run({"J", "ALL", ""}).back(), "2 objects joined into 1 elliptical arc");
    const auto& arc = at<EllipseEntity>(e, 0);
    EXPECT_NEAR(arc.startParam, 0.0, 1e-9);
    EXPECT_NEAR(arc.endParam, 2.0, 1e-9);

    // A source takes what follows counter-clockwise over the gap.
    Console gap;
    gap.add(EllipseEntity(Vector2{0, 0}, Vector2{10, 0}, 0.5, 0.0, 1.0));
    gap.add(EllipseEntity(Vector2{0, 0}, Vector2{10, 0}, 0.5, 2.0, 3.0));
    gap.run({"J", "10,0", ""});
    EXPECT_EQ(gap.prompt(), "Select elliptical arcs to join to source or [cLose]:");
    gap.run({"-9.9,0.705", ""});
    ASSERT_EQ(gap.count(), 1u);
    EXPECT_NEAR(at<EllipseEntity>(gap, 0).endParam, 3.0, 1e-9);
}

TEST(JoinOverlaps, ManyDuplicatesAndManyHeightsTakeNoLonger) {
    Console c;
    constexpr int kCount = 30000;
    for (int i = 0; i < kCount; ++i) {
        c.addLine(0, 0, 10, 0);
        c.addLine(20, 0, 30, i + 1).elevation = i;  // ends above each other
        c.add(ArcEntity(Vector2{0, 50}, 5.0, 0.0001 * i, 0.0001 * i + 1.0));
    }
    c.run({"J", "ALL", ""});
    EXPECT_EQ(c.count(), 2u + kCount);
}

}  // namespace
}  // namespace kova::cmd
