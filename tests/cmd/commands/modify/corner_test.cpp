#include <gtest/gtest.h>

#include "cmd/edit_harness.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/ellipse.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/ray.hpp"
#include "engine/entities/spline.hpp"
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

TEST(Fillet, EllipsesAndSplines) {
    Console c;
    c.add(engine::EllipseEntity(Vector2{0, 0}, Vector2{10, 0}, 0.5));
    c.addLine(0, -20, 0, 20);
    c.run({"F", "R", "1", "5,4.330127", "0,15"});
    ASSERT_EQ(c.count(), 3u);
    EXPECT_TRUE(at<engine::EllipseEntity>(c, 0).isFull());
    const auto& arc = at<ArcEntity>(c, 2);
    EXPECT_NEAR(arc.center.x, 1.0, 1e-9);
    EXPECT_GT(arc.center.y, 5.0);
    expectLine(c, 1, {0, arc.center.y}, {0, 20});
    c.feed("UNDO");
    expectLine(c, 1, {0, -20}, {0, 20});
    EXPECT_EQ(c.run({"F", "R", "80", "5,4.330127", "0,15"}).back(), "Radius is too large.");
    c.processor.cancel();
    Console d;
    d.add(engine::EllipseEntity(Vector2{0, 0}, Vector2{10, 0}, 0.5, 0.0, 2.0));
    engine::SplineEntity spline;
    spline.controlPoints = {{2, -3}, {3, 2}, {5, 6}, {4, 12}};
    spline.layer = engine::Name("S");
    d.add(spline);
    d.run({"F", "R", "0.5", "9,2.179", "4.272,8.616"});
    ASSERT_EQ(d.count(), 3u);
    const auto& trimmed = at<engine::SplineEntity>(d, 1);
    EXPECT_EQ(trimmed.layer, engine::Name("S"));
    expectNear(trimmed.controlPoints.back(), {4, 12});
    EXPECT_GT(trimmed.controlPoints.front().y, 3.0);
    EXPECT_NEAR(trimmed.controlPoints.front().distance_to(at<ArcEntity>(d, 2).center), 0.5, 1e-7);
    EXPECT_LT(at<engine::EllipseEntity>(d, 0).endParam, 1.3);
    // To their meeting; what never meets is refused.
    d.run({"UNDO", "F", "R", "0", "9,2.179", "4.272,8.616"});
    ASSERT_EQ(d.count(), 2u);
    expectNear(at<engine::SplineEntity>(d, 1).controlPoints.front(), at<engine::EllipseEntity>(d, 0).endPoint(), 1e-7);
    d.addLine(100, 0, 100, 9);
    EXPECT_EQ(d.run({"F", "100,5", "4.272,8.616"}).back(), "No valid fillet with radius 0.0000.");
    EXPECT_EQ(d.run({"", "F", "4.272,8.616", "4.128,11.115"}).back(), "The two objects must be different.");
}

TEST(Fillet, PolylinesWithOthersAndThemselves) {
    // Closed polylines stay whole.
    Console c;
    c.add(PolylineEntity({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true));
    c.addLine(15, 5, 30, 5);
    c.run({"F", "R", "1", "10,8", "25,5"});
    ASSERT_EQ(c.count(), 3u);
    EXPECT_NEAR(at<PolylineEntity>(c, 0).area(), 100.0, 1e-9);
    expectLine(c, 1, {11, 5}, {30, 5});
    // An arc becomes part of the polyline; so does a bevel.
    Console d;
    d.add(PolylineEntity({{0, 0}, {10, 0}}));
    d.add(ArcEntity(Vector2{20, 5}, 5.0, math::kPi / 2, math::kPi * 1.5));
    d.run({"F", "R", "0.5", "5,0", "15.67,7.5"});
    ASSERT_EQ(d.count(), 1u);
    EXPECT_EQ(at<PolylineEntity>(d, 0).vertices.size(), 4u);
    Console e;
    e.add(PolylineEntity({{0, 0}, {10, 0}, {10, 10}}));
    e.addLine(20, 15, 12, 15);
    e.run({"CHA", "D", "1", "2", "M", "10,8", "19,15", "5,0", "10,3", "U", ""});
    ASSERT_EQ(e.count(), 1u);
    EXPECT_EQ(at<PolylineEntity>(e, 0).vertices.size(), 5u);
    expectNear(at<PolylineEntity>(e, 0).vertices[3], {12, 15});
    EXPECT_EQ(e.document.history().undoCount(), 1u);
    // A spline is only trimmed.
    Console s;
    s.add(PolylineEntity({{0, 0}, {10, 0}, {10, 4}}));
    engine::SplineEntity spline;
    spline.controlPoints = {{3, 12}, {6, 9}, {13, 9}, {16, 12}};
    s.add(spline);
    s.run({"F", "R", "0.5", "10,3", "4,11.1"});
    ASSERT_EQ(s.count(), 3u);
    EXPECT_GT(at<PolylineEntity>(s, 0).vertices.back().y, 8.0);
}

// Older scripts set the value in a call of its own.
TEST(Corners, NameAfterAValueBeginsAnew) {
    Console c;
    c.addLine(0, 0, 20, 0);
    c.addLine(0, 0, 0, 20);
    c.run({"FILLET", "R", "2", "_FILLET 10,0 0,10"});
    EXPECT_TRUE(c.idle());
    ASSERT_EQ(c.count(), 3u);
    c.addLine(50, 0, 70, 0);
    c.addLine(50, 0, 50, 20);
    c.run({"CHAMFER", "D", "1", "3", "CHAMFER", "60,0", "50,10"});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.count(), 6u);
    // Elsewhere it is no answer.
    EXPECT_EQ(c.run({"FILLET", "FILLET"}).back(), "Invalid point or option keyword.");
    EXPECT_FALSE(c.idle());
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
    // By angle at a corner of 60 degrees: 30 degrees from the first line meet the second at a right angle.
    Console d;
    d.add(PolylineEntity({{0, 0}, {10, 0}, {5, 5 * std::sqrt(3.0)}}));
    EXPECT_EQ(d.run({"CHA", "A", "2", "30", "P", "5,0"}).back(), "1 line was chamfered");
    const auto& cut = at<PolylineEntity>(d, 0);
    expectNear(cut.vertices[1], {8, 0});
    EXPECT_NEAR(cut.vertices[2].distance_to({10, 0}), 1.0, 1e-9);
    // Two segments of one, and what has no bevel.
    d.feed("UNDO");
    d.run({"CHA", "A", "2", "30", "5,0", "7.5,4.330127"});
    EXPECT_NEAR(at<PolylineEntity>(d, 0).vertices[2].distance_to({10, 0}), 1.0, 1e-9);
    EXPECT_EQ(d.run({"UNDO", "CHA", "A", "2", "130", "5,0", "7.5,4.330127"}).back(), "Distance is too large.");
    d.processor.cancel();
    d.add(CircleEntity(Vector2{30, 0}, 5.0));
    EXPECT_EQ(d.run({"CHA", "5,0", "35,0"}).back(), "Object cannot be used here.");
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
    // The last option and its value are offered again.
    c.run({"", "LEN"});
    EXPECT_EQ(c.prompt(), "Select an object to measure or [DElta/Percent/Total/DYnamic] <Delta>:");
    c.feed("");
    EXPECT_EQ(c.prompt(), "Enter delta length or [Angle] <-99>:");
    c.run({"-2", "7,0", "", "LEN", "", "", "5.5,0", ""});
    expectLine(c, 0, {0, 0}, {4, 0});
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

// OFFSET, EXOFFSET, BREAKLINE ---------------------------------------------------------------------------------------

TEST(Offset, AsksAgainForAnotherSideAndStepsBack) {
    Console c;
    c.addLine(0, 0, 10, 0);
    EXPECT_EQ(c.run({"OFFSET", "2", "5,0", "7,0"}).back(), "Requires a point off the object.");
    EXPECT_EQ(c.prompt(), "Specify point on side to offset or [Exit/Multiple/Undo] <Exit>:");
    // Multiple goes on from the last one, and after a step back from the one before.
    c.run({"M", "5,9", "5,9", "U", "5,-9", "", "E"});
    ASSERT_EQ(c.count(), 3u);
    expectLine(c, 1, {0, 2}, {10, 2});
    expectLine(c, 2, {0, 0}, {10, 0});
    EXPECT_EQ(c.document.history().undoCount(), 1u);
}

TEST(ExtendedOffset, AsksForItsOptionsAnywhere) {
    Console c;
    c.add(PolylineEntity({{0, 0}, {10, 0}, {10, 10}}));
    c.run({"EXOFFSET"});
    c.feed("2");
    EXPECT_EQ(c.prompt(), "Select object to offset or [Options/Undo]:");
    c.run({"O", "G", "F", "5,0"});
    EXPECT_EQ(c.prompt(), "Specify point on side to offset or [Options/Multiple/Undo]:");
    c.run({"O", "L", "C", "5,-9"});
    ASSERT_EQ(c.count(), 2u);
    EXPECT_EQ(at<PolylineEntity>(c, 1).vertices.size(), 4u);
    EXPECT_NEAR(at<PolylineEntity>(c, 1).length(), 20.0 + math::kPi, 1e-9);
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "OFFSETGAPTYPE"), 1);
    // On and on from the last one; a step back goes on from the one before.
    c.run({"U", "O", "D", "1", "5,0", "M", "5,5", "5,6", "U", "5,6", "", ""});
    ASSERT_EQ(c.count(), 3u);
    EXPECT_NEAR(at<PolylineEntity>(c, 2).vertices[0].y, 2.0, 1e-9);
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.document.history().undoCount(), 1u);
    c.feed("UNDO");
    EXPECT_EQ(c.count(), 1u);
    c.run({"EXOFFSET", "T", "5,0", "3,4", ""});
    EXPECT_NEAR(at<PolylineEntity>(c, 1).vertices[0].y, 4.0, 1e-9);
}

TEST(BreakLine, DrawsItsSymbolAndRemembersSizes) {
    Console c;
    c.run({"BREAKLINE", "S"});
    EXPECT_EQ(c.prompt(), "Breakline symbol size <1>:");
    c.run({"2", "E", "0.5", "0,0", "10,0"});
    EXPECT_EQ(c.prompt(), "Specify location for break symbol <Midpoint>:");
    c.feed("");
    ASSERT_EQ(c.count(), 1u);
    expectNear(at<PolylineEntity>(c, 0).vertices[0], {-0.5, 0});
    expectNear(at<PolylineEntity>(c, 0).vertices[1], {4, 0});
    // DIMSCALE enlarges both; then it does not fit.
    c.run({"DIMSCALE", "4", "BREAKLINE", "0,20", "10,20", "0,0"});
    expectNear(at<PolylineEntity>(c, 1).vertices[0], {-2, 20});
    expectNear(at<PolylineEntity>(c, 1).vertices[4], {8, 20});
    c.run({"BREAKLINE", "0,0", "0,0", "9,0", ""});
    EXPECT_EQ(c.count(), 3u);
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.run({"BREAKLINE", "B"}).back(),
              "\"Break Line\" needs its dialog, which kovacad-cli cannot show; cancelled.");
    c.run({"BREAKLINE", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.run({"BREAKLINE", "0,0", "1,0", ""}).back(),
              "The points are too close together for a symbol of size 8.0000.");
}

}  // namespace
}  // namespace kova::cmd
