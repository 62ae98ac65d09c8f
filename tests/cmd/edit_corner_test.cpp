#include <gtest/gtest.h>

#include "cmd/edit_harness.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/ray.hpp"
#include "engine/entities/xline.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::ArcEntity;
using engine::CircleEntity;
using engine::LineEntity;
using engine::PolylineEntity;
using math::Vector2;

// FILLET -------------------------------------------------------------------------------------------------

TEST(Fillet, RoundsACornerOnThePickedSides) {
    Console c;
    c.addLine(-10, 0, 10, 0).layer = engine::Name("WALL");
    c.addLine(0, -10, 0, 10).layer = engine::Name("WALL");
    c.run({"FILLET"});
    EXPECT_EQ(c.prompt(), "Select first object or [Undo/Polyline/Radius/Trim/Multiple]:");
    c.feed("R");
    EXPECT_EQ(c.prompt(), "Specify fillet radius <0>:");
    c.run({"2", "5,0"});
    EXPECT_EQ(c.prompt(), "Select second object or shift-select to apply corner or [Radius]:");
    c.feed("0,5");
    EXPECT_TRUE(c.idle());
    ASSERT_EQ(c.count(), 3u);
    expectLine(c, 0, {2, 0}, {10, 0});
    expectLine(c, 1, {0, 2}, {0, 10});
    const auto& arc = at<ArcEntity>(c, 2);
    expectNear(arc.center, {2, 2});
    EXPECT_NEAR(arc.radius, 2.0, 1e-12);
    EXPECT_NEAR(arc.startAngle, math::kPi, 1e-9);
    EXPECT_NEAR(arc.endAngle, 1.5 * math::kPi, 1e-9);
    EXPECT_EQ(arc.layer, engine::Name("WALL"));
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: FILLET"});
    expectLine(c, 0, {-10, 0}, {10, 0});
    // The radius belonged to the command that is taken back. The other quadrant.
    EXPECT_EQ(engine::sysVarReal(c.drawing(), "FILLETRAD"), 0.0);
    c.run({"F", "R", "2", "-5,0", "0,-5"});
    expectNear(at<ArcEntity>(c, 2).center, {-2, -2});
    EXPECT_EQ(c.run({"UNDO", "F", "R", "20", "5,0", "0,5"}).back(), "Radius is too large.");
}

TEST(Fillet, RadiusZeroMakesACorner) {
    Console c;
    c.addLine(1, 0, 5, 0);
    c.addLine(0, 2, 0, 6);
    c.run({"F", "4,0", "0,5"});
    ASSERT_EQ(c.count(), 2u);
    expectLine(c, 0, {0, 0}, {5, 0});
    expectLine(c, 1, {0, 0}, {0, 6});
    Console far;
    far.addLine(1e7 + 0.001, 1e7, 1e7 + 0.01, 1e7);
    far.addLine(1e7, 1e7 + 0.001, 1e7, 1e7 + 0.01);
    far.run({"F", "10000000.009,10000000", "10000000,10000000.009"});
    expectLine(far, 0, {1e7, 1e7}, {1e7 + 0.01, 1e7}, 1e-8);
}

TEST(Fillet, ParallelLinesGetAHalfCircle) {
    Console c;
    c.addLine(0, 0, 10, 0);
    c.addLine(2, 4, 7, 4);
    c.run({"F", "9,0", "6,4"});
    ASSERT_EQ(c.count(), 3u);
    expectLine(c, 1, {2, 4}, {10, 4});
    const auto& arc = at<ArcEntity>(c, 2);
    expectNear(arc.center, {10, 2});
    EXPECT_NEAR(arc.radius, 2.0, 1e-12);
    expectNear(arc.midPoint(), {12, 2});
    Console same;
    same.addLine(0, 0, 1, 0);
    same.addLine(2, 0, 3, 0);
    EXPECT_EQ(same.run({"F", "0.2,0", "2.8,0"}).back(), "Lines are parallel.");
}

TEST(Fillet, ArcsAndCircles) {
    Console c;
    c.add(CircleEntity(Vector2{0, 0}, 5.0));
    c.add(CircleEntity(Vector2{20, 0}, 5.0));
    c.run({"F", "R", "10", "3,4", "17,4"});
    ASSERT_EQ(c.count(), 3u);
    EXPECT_NEAR(at<CircleEntity>(c, 0).radius, 5.0, 0.0);
    const auto& arc = at<ArcEntity>(c, 2);
    EXPECT_NEAR(arc.radius, 10.0, 1e-9);
    EXPECT_NEAR(arc.center.distance_to({0, 0}), 15.0, 1e-9);
    EXPECT_GT(arc.center.y, 0.0);
    Console d;
    d.add(ArcEntity(Vector2{0, 0}, 10.0, 0.0, math::kPi));
    d.addLine(0, -5, 0, 20);
    d.run({"F", "R", "1", "7,7", "0,3"});
    ASSERT_EQ(d.count(), 3u);
    const auto& rounding = at<ArcEntity>(d, 2);
    expectNear(rounding.center, {1, std::sqrt(80.0)}, 1e-9);
    EXPECT_LT(at<LineEntity>(d, 1).end.y, 10.0);
    EXPECT_NEAR(at<ArcEntity>(d, 0).endPoint().distance_to(rounding.center), 1.0, 1e-9);
}

TEST(Fillet, PolylinesAllAtOnceAndBySegments) {
    Console c;
    c.add(PolylineEntity({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true));
    EXPECT_EQ(c.run({"F", "R", "1", "P", "5,0"}).back(), "4 lines were filleted");
    const auto& all = at<PolylineEntity>(c, 0);
    EXPECT_EQ(all.vertices.size(), 8u);
    EXPECT_NEAR(all.area(), 96.0 + math::kPi, 1e-9);
    c.feed("UNDO");
    c.run({"F", "R", "1", "5,0", "10,5"});
    const auto& one = at<PolylineEntity>(c, 0);
    EXPECT_TRUE(one.closed);
    EXPECT_NEAR(one.area(), 99.0 + math::kPi / 4, 1e-9);
    Console d;
    d.add(PolylineEntity({{0, 0}, {10, 0}, {10, 10}}));
    d.run({"F", "R", "2", "5,0", "10,5"});
    const auto& open = at<PolylineEntity>(d, 0);
    ASSERT_EQ(open.vertices.size(), 4u);
    expectNear(open.vertices[1], {8, 0});
    EXPECT_NEAR(open.bulge(1), std::tan(math::kPi / 8), 1e-9);
    // A line at the end of a polyline becomes part of it.
    Console e;
    e.add(PolylineEntity({{0, 0}, {10, 0}, {10, 10}}));
    e.addLine(20, 15, 12, 15);
    e.run({"F", "R", "1", "10,8", "19,15"});
    ASSERT_EQ(e.count(), 1u);
    const auto& joined = at<PolylineEntity>(e, 0);
    ASSERT_EQ(joined.vertices.size(), 5u);
    expectNear(joined.vertices[2], {10, 14});
    expectNear(joined.vertices[3], {11, 15});
    expectNear(joined.vertices[4], {20, 15});
    EXPECT_NEAR(joined.bulge(2), -std::tan(math::kPi / 8), 1e-9);
}

TEST(Fillet, MultipleUndoAndNoTrim) {
    Console c;
    c.addLine(0, 0, 10, 0);
    c.addLine(0, 0, 0, 10);
    c.addLine(10, 0, 10, 10);
    c.run({"F", "R", "1", "M", "5,0", "0,5", "5,0", "10,5"});
    EXPECT_EQ(c.count(), 5u);
    expectLine(c, 0, {1, 0}, {9, 0});
    c.feed("U");
    EXPECT_EQ(c.count(), 4u);
    c.feed("");
    EXPECT_EQ(c.document.history().undoCount(), 1u);
    c.run({"F", "T", "N", "5,0", "10,5"});
    ASSERT_EQ(c.count(), 5u);
    expectLine(c, 2, {10, 0}, {10, 10});
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "TRIMMODE"), 0);
}

// CHAMFER ------------------------------------------------------------------------------------------------

TEST(Chamfer, ByDistancesAndByAngle) {
    Console c;
    c.addLine(0, 0, 10, 0);
    c.addLine(0, 0, 0, 10);
    c.run({"CHAMFER", "D"});
    EXPECT_EQ(c.prompt(), "Specify first chamfer distance <0>:");
    c.feed("2");
    EXPECT_EQ(c.prompt(), "Specify second chamfer distance <2>:");
    c.run({"3", "5,0", "0,5"});
    ASSERT_EQ(c.count(), 3u);
    expectLine(c, 0, {2, 0}, {10, 0});
    expectLine(c, 1, {0, 3}, {0, 10});
    expectLine(c, 2, {2, 0}, {0, 3});
    Console d;
    d.addLine(-5, 0, 10, 0);
    d.addLine(0, 1, 0, 10);
    d.run({"CHA", "A", "4", "45", "5,0", "0,5"});
    expectLine(d, 2, {4, 0}, {0, 4});
    EXPECT_EQ(d.run({"CHA", "D", "50", "", "5,0", "0,5"}).back(), "Distance is too large.");
    d.processor.cancel();
    Console p;
    p.addLine(0, 0, 5, 0);
    p.addLine(0, 1, 5, 1);
    EXPECT_EQ(p.run({"CHA", "2,0", "2,1"}).back(), "Lines are parallel.");
}

TEST(Chamfer, PolylinesAndMethod) {
    Console c;
    c.add(PolylineEntity({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true));
    EXPECT_EQ(c.run({"CHA", "D", "1", "1", "P", "5,0"}).back(), "4 lines were chamfered");
    EXPECT_NEAR(at<PolylineEntity>(c, 0).area(), 98.0, 1e-9);
    c.run({"CHA", "E", "A", ""});
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "CHAMMODE"), 1);
}

// BREAK --------------------------------------------------------------------------------------------------

TEST(Break, TakesOutSplitsAndCutsOff) {
    Console c;
    c.addLine(0, 0, 10, 0);
    c.run({"BREAK", "3,0"});
    EXPECT_EQ(c.prompt(), "Specify second break point or [First point]:");
    c.feed("7,0");
    ASSERT_EQ(c.count(), 2u);
    expectLine(c, 0, {0, 0}, {3, 0});
    expectLine(c, 1, {7, 0}, {10, 0});
    c.feed("UNDO");
    c.run({"BR", "3,0", "F", "5,0", "@"});
    ASSERT_EQ(c.count(), 2u);
    expectLine(c, 0, {0, 0}, {5, 0});
    expectLine(c, 1, {5, 0}, {10, 0});
    c.run({"BR", "8,0", "99,3"});
    expectLine(c, 1, {5, 0}, {8, 0});
}

TEST(Break, CirclesCounterClockwiseAndClosedPolylines) {
    Console c;
    c.add(CircleEntity(Vector2{0, 0}, 5.0));
    c.run({"BR", "5,0", "0,5"});
    const auto& arc = at<ArcEntity>(c, 0);
    EXPECT_NEAR(arc.startAngle, math::kPi / 2, 1e-9);
    EXPECT_NEAR(arc.sweep(), 1.5 * math::kPi, 1e-9);
    c.feed("UNDO");
    EXPECT_EQ(c.run({"BR", "5,0", "@"}).back(), "Arc cannot be full 360 degrees.");
    Console p;
    p.add(PolylineEntity({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true));
    p.run({"BR", "2,0", "8,0"});
    const auto& rest = at<PolylineEntity>(p, 0);
    EXPECT_FALSE(rest.closed);
    EXPECT_NEAR(rest.length(), 34.0, 1e-9);
    expectNear(rest.vertices.front(), {8, 0});
    Console x;
    x.add(engine::XlineEntity(Vector2{0, 0}, Vector2{1, 0}));
    x.run({"BR", "2,0", "5,0"});
    ASSERT_EQ(x.count(), 2u);
    expectNear(at<engine::RayEntity>(x, 1).origin, {5, 0});
}

// LENGTHEN -----------------------------------------------------------------------------------------------

TEST(Lengthen, ByDeltaPercentTotalAndDynamic) {
    Console c;
    c.addLine(0, 0, 10, 0);
    EXPECT_EQ(c.run({"LENGTHEN", "5,0"}).back(), "Current length: 10.0000");
    c.run({"DE", "2", "9,0"});
    expectLine(c, 0, {0, 0}, {12, 0});
    c.feed("1,0");
    expectLine(c, 0, {-2, 0}, {12, 0});
    c.run({"U", ""});
    expectLine(c, 0, {0, 0}, {12, 0});
    c.run({"LEN", "P", "50", "11,0", "", "LEN", "T", "3", "5,0", "", "LEN", "DY", "2.5,0", "8,7", ""});
    expectLine(c, 0, {0, 0}, {8, 0});
    EXPECT_EQ(c.document.history().undoCount(), 4u);
    EXPECT_EQ(c.run({"LEN", "DE", "-99", "7,0"}).back(), "Invalid length for that object.");
    Console a;
    a.add(ArcEntity(Vector2{0, 0}, 2.0, 0.0, math::kPi / 2));
    EXPECT_EQ(a.run({"LEN", "2,0"}).back(), "Current length: 3.1416, included angle: 90");
    a.run({"T", "A", "180", "0.1,2", ""});
    EXPECT_NEAR(at<ArcEntity>(a, 0).endAngle, math::kPi, 1e-9);
    Console p;
    p.add(PolylineEntity({{0, 0}, {10, 0}, {10, 10}}));
    p.run({"LEN", "T", "5", "10,9", ""});
    EXPECT_NEAR(at<PolylineEntity>(p, 0).length(), 5.0, 1e-9);
    expectNear(at<PolylineEntity>(p, 0).vertices.back(), {5, 0});
}

}  // namespace
}  // namespace kova::cmd
