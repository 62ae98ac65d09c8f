#include <cmath>

#include "cmd/draw_harness.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/ellipse.hpp"
#include "engine/entities/polyline.hpp"
#include "math/angles.hpp"
#include "math/curves/polygon.hpp"

namespace kova::cmd {
namespace {

using engine::ArcEntity;
using engine::EllipseEntity;
using engine::PolylineEntity;
using math::kPi;
using math::Vector2;

const double kQuarter = std::tan(kPi / 8.0);  // bulge of a quarter circle

TEST(Pline, LinesWidthsUndoAndClose) {
    DrawConsole c;
    c.run({"PLINE", "0,0", "W", "1", "2", "10,0", "H", "", "0", "@0,10", "99,99", "U", "C"});
    auto& p = c.only<PolylineEntity>();
    expectPoints(p.vertices, {{0, 0}, {10, 0}, {10, 10}});
    EXPECT_TRUE(p.closed);
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.lastStep(), "PLINE");
    EXPECT_DOUBLE_EQ(p.startWidth(0), 1);
    EXPECT_DOUBLE_EQ(p.endWidth(0), 2);
    EXPECT_DOUBLE_EQ(p.startWidth(1), 2);
    EXPECT_DOUBLE_EQ(p.endWidth(1), 0);
    EXPECT_DOUBLE_EQ(p.endWidth(2), 0);
    // One step takes all of it back.
    c.feed("U");
    EXPECT_EQ(c.count(), 0u);
}

TEST(Pline, LengthRunsOnAlongLinesAndArcs) {
    DrawConsole c;
    c.run({"PLINE", "0,0", "3,4", "L", "5", "A", "@0,10", "L", "L", "2", ""});
    auto& p = c.only<PolylineEntity>();
    ASSERT_EQ(p.vertices.size(), 5u);
    expectNear(p.vertices[2], {6, 8});
    // The arc leaves along 3,4 and arrives mirrored in its chord: along -3,4.
    expectNear(p.vertices[4] - p.vertices[3], Vector2(-0.6, 0.8) * 2.0);
}

TEST(Pline, ArcsByEveryOption) {
    const struct {
        std::vector<std::string> input;
        Vector2 end;
        double bulge;
    } cases[] = {
        {{"10,10"}, {10, 10}, kQuarter},                               // tangent to the line before
        {{"A", "90", "10,10"}, {10, 10}, kQuarter},                    // angle, end point
        {{"A", "-90", "10,10"}, {10, 10}, -kQuarter},                  //
        {{"A", "90", "CE", "0,10"}, {10, 10}, kQuarter},               // angle, centre
        {{"A", "180", "R", "5", "90"}, {0, 10}, 1.0},                  // angle, radius, chord's direction
        {{"CE", "0,10", "20,10"}, {10, 10}, kQuarter},                 // centre, direction of the end
        {{"CE", "0,10", "A", "90"}, {10, 10}, kQuarter},               //
        {{"CE", "0,10", "L", "20"}, {0, 20}, 1.0},                     // centre, chord
        {{"D", "90", "10,10"}, {10, 10}, -kQuarter},                   // direction at the start
        {{"R", "10", "10,10"}, {10, 10}, kQuarter},                    //
        {{"R", "-10", "10,10"}, {10, 10}, std::tan(3.0 * kPi / 8.0)},  // the longer arc
        {{"R", "5", "A", "180", "0"}, {10, 0}, 1.0},                   //
        {{"S", "5,-5", "10,0"}, {10, 0}, 1.0},                         // three points
    };
    for (const auto& item : cases) {
        SCOPED_TRACE(::testing::PrintToString(item.input));
        DrawConsole c;
        c.run({"PLINE", "-10,0", "0,0", "A"});
        c.run(item.input);
        c.feed("");
        auto& p = c.only<PolylineEntity>();
        ASSERT_EQ(p.vertices.size(), 3u);
        expectNear(p.vertices[2], item.end);
        EXPECT_NEAR(p.bulge(1), item.bulge, 1e-9);
        EXPECT_TRUE(c.idle());
    }
}

TEST(Pline, ArcClosesTangentially) {
    DrawConsole c;
    c.run({"PLINE", "0,0", "10,0", "A", "10,4", "L", "0,4", "A", "CL"});
    auto& p = c.only<PolylineEntity>();
    EXPECT_TRUE(p.closed);
    EXPECT_NEAR(p.bulge(1), 1.0, 1e-12);
    EXPECT_NEAR(p.bulge(3), 1.0, 1e-12);
}

TEST(Pline, CancelKeepsWhatWasDrawn) {
    DrawConsole c;
    c.run({"PLINE", "0,0"});
    c.processor.cancel();
    EXPECT_EQ(c.count(), 0u);
    c.run({"PLINE", "0,0", "5,0", "5,5", "A", "R", "10"});
    c.processor.cancel();
    expectPoints(c.only<PolylineEntity>().vertices, {{0, 0}, {5, 0}, {5, 5}});
    EXPECT_TRUE(c.idle());
}

TEST(Pline, RefusesWithoutLosingItsPlace) {
    DrawConsole c;
    c.run({"PLINE", "0,0"});
    EXPECT_EQ(c.feed("C"), Lines{"Invalid point or option keyword."});  // nothing to close yet
    EXPECT_EQ(c.feed("U"), Lines{"All segments already undone."});
    c.run({"10,0", "A", "R", "1"});
    EXPECT_EQ(c.feed("20,20"), Lines{"Invalid input."});  // farther than the diameter
    EXPECT_EQ(c.prompt(), "Specify endpoint of arc or [Angle]:");
    c.run({"12,0", ""});
    EXPECT_NEAR(c.only<PolylineEntity>().bulge(1), 1.0, 1e-6);
}

TEST(Arc, EveryWay) {
    const struct {
        std::vector<std::string> input;
        Vector2 center;
        double radius;
        double start;  // degrees
        double end;
    } cases[] = {
        {{"10,0", "0,10", "-10,0"}, {0, 0}, 10, 0, 180},         // three points
        {{"-10,0", "0,10", "10,0"}, {0, 0}, 10, 0, 180},         // clockwise
        {{"10,0", "C", "0,0", "0,99"}, {0, 0}, 10, 0, 90},       // start centre end
        {{"10,0", "C", "0,0", "A", "90"}, {0, 0}, 10, 0, 90},    //
        {{"10,0", "C", "0,0", "A", "-90"}, {0, 0}, 10, 270, 0},  //
        {{"10,0", "C", "0,0", "L", "20"}, {0, 0}, 10, 0, 180},   //
        {{"10,0", "E", "0,10", "0,0"}, {0, 0}, 10, 0, 90},       // start end centre
        {{"10,0", "E", "0,10", "A", "90"}, {0, 0}, 10, 0, 90},   //
        {{"10,0", "E", "0,10", "D", "90"}, {0, 0}, 10, 0, 90},   //
        {{"10,0", "E", "0,10", "R", "10"}, {0, 0}, 10, 0, 90},   //
        {{"10,0", "E", "0,10", "R", "-10"}, {10, 10}, 10, 270, 180},
        {{"C", "0,0", "10,0", "0,5"}, {0, 0}, 10, 0, 90},  // centre first
        {{"C", "0,0", "10,0", "A", "90"}, {0, 0}, 10, 0, 90},
        {{"C", "0,0", "10,0", "L", "-14.142135623730951"}, {0, 0}, 10, 0, 270},
    };
    for (const auto& item : cases) {
        SCOPED_TRACE(::testing::PrintToString(item.input));
        DrawConsole c;
        c.feed("ARC");
        c.run(item.input);
        const auto& arc = c.only<ArcEntity>();
        expectNear(arc.center, item.center, 1e-7);
        EXPECT_NEAR(arc.radius, item.radius, 1e-7);
        EXPECT_NEAR(math::toDegrees(arc.startAngle), item.start, 1e-5);
        EXPECT_NEAR(math::toDegrees(arc.endAngle), item.end, 1e-5);
        EXPECT_TRUE(c.idle());
        EXPECT_EQ(c.lastStep(), "ARC");
    }
}

TEST(Arc, ContinuesTheLastCurve) {
    DrawConsole c;
    EXPECT_EQ(c.run({"ARC", ""}), Lines{"No line or arc to continue."});
    c.run({"LINE", "0,0", "10,0", "", "ARC", "", "20,10"});
    const auto arc = c.last<ArcEntity>();
    expectNear(arc.center, {10, 10});
    // An arc ends where it was drawn to: here counter-clockwise, so that the next one leaves upwards.
    c.run({"ARC", "", "10,20"});
    expectNear(c.last<ArcEntity>().center, {10, 10});
    EXPECT_EQ(c.count(), 3u);
}

TEST(Arc, ImpossibleOnes) {
    DrawConsole c;
    EXPECT_EQ(c.run({"ARC", "0,0", "E", "10,0", "R", "4"}).back(), "Arc does not exist.");
    EXPECT_EQ(c.run({"ARC", "0,0", "E", "0,0", "A", "90"}).back(), "Arc does not exist.");
    EXPECT_EQ(c.run({"ARC", "0,0", "1,1", "2,2"}).back(), "The three points lie on one line.");
    EXPECT_EQ(c.prompt(), "Specify end point of arc:");
    c.feed("2,0");
    EXPECT_NEAR(c.only<ArcEntity>().radius, 1.0, 1e-12);
}

TEST(Rectangle, CornersAnywhereAndSettingsStay) {
    DrawConsole c;
    c.run({"REC", "10,10", "0,5"});
    auto& plain = c.only<PolylineEntity>();
    expectPoints(plain.vertices, {{10, 10}, {0, 10}, {0, 5}, {10, 5}});
    EXPECT_TRUE(plain.closed);
    c.run({"RECTANG", "F", "1", "W", "0.5", "E", "7", "T", "3", "0,0", "10,-6"});
    auto& round = c.last<PolylineEntity>();
    ASSERT_EQ(round.vertices.size(), 8u);
    EXPECT_NEAR(round.area(), 60.0 - (4.0 - kPi), 1e-9);
    EXPECT_DOUBLE_EQ(round.startWidth(3), 0.5);
    EXPECT_DOUBLE_EQ(round.elevation, 7);
    EXPECT_DOUBLE_EQ(round.thickness(), 3);
    c.run({"REC", "0,0", "10,6"});
    EXPECT_NEAR(c.last<PolylineEntity>().area(), 60.0 - (4.0 - kPi), 1e-9);
    // A chamfer takes the fillet's place; corners that do not fit stay sharp.
    c.run({"REC", "C", "1", "2", "0,0", "10,6"});
    EXPECT_NEAR(c.last<PolylineEntity>().area(), 60.0 - 4.0, 1e-9);
    c.run({"REC", "0,0", "2,2"});
    EXPECT_EQ(c.last<PolylineEntity>().vertices.size(), 4u);
}

TEST(Rectangle, AreaDimensionsRotation) {
    DrawConsole c;
    c.run({"REC", "0,0", "A", "50", "L", "10"});
    expectPoints(c.last<PolylineEntity>().vertices, {{0, 0}, {10, 0}, {10, 5}, {0, 5}});
    c.run({"REC", "0,0", "A", "", "W", "4"});
    expectNear(c.last<PolylineEntity>().vertices[2], {12.5, 4});
    // The point after Dimensions chooses the side only.
    c.run({"REC", "0,0", "D", "8", "3", "-1,-100"});
    expectNear(c.last<PolylineEntity>().vertices[2], {-8, -3});
    c.run({"REC", "0,0", "R", "45", "0,10"});
    expectNear(c.last<PolylineEntity>().vertices[1], {5, 5});
    EXPECT_EQ(c.run({"REC", "0,0", "5,0"}), Lines{"Invalid input."});
    c.feed("5,1");
    EXPECT_EQ(c.count(), 5u);
}

TEST(Rectangle, FilletAsWideAsTheSideMakesASlot) {
    DrawConsole c;
    c.run({"REC", "F", "2", "0,0", "10,4"});
    const auto& slot = c.only<PolylineEntity>();
    EXPECT_EQ(slot.vertices.size(), 6u);
    EXPECT_NEAR(slot.area(), 24.0 + 4.0 * kPi, 1e-9);
}

TEST(Rectangle, FollowsTheCoordinateSystem) {
    DrawConsole c;
    c.drawing().ucs.xAxis = Vector2(0, 1);
    c.drawing().ucs.yAxis = Vector2(-1, 0);
    c.run({"REC", "0,0", "4,2"});
    expectPoints(c.only<PolylineEntity>().vertices, {{0, 0}, {0, 4}, {-2, 4}, {-2, 0}});
}

TEST(Polygon, InscribedCircumscribedAndByEdge) {
    DrawConsole c;
    c.run({"POLYGON", "6", "0,0", "I", "10"});
    auto& hexagon = c.last<PolylineEntity>();
    ASSERT_EQ(hexagon.vertices.size(), 6u);
    EXPECT_TRUE(hexagon.closed);
    EXPECT_NEAR(hexagon.vertices[0].y, hexagon.vertices[1].y, 1e-12);  // a side at the bottom
    EXPECT_NEAR(hexagon.vertices[0].length(), 10, 1e-12);
    // The number of sides and the kind of circle stay; a point is a corner, or the middle of a side.
    c.run({"POLYGON", "4", "0,0", "C", "10,0"});
    expectPoints(c.last<PolylineEntity>().vertices, {{10, -10}, {10, 10}, {-10, 10}, {-10, -10}});
    EXPECT_EQ(c.run({"POL", "", "5,5", "", "2"}), Lines{});
    EXPECT_NEAR(c.last<PolylineEntity>().area(), 16, 1e-9);
    c.run({"POL", "3", "0,0", "I", "0,7"});
    expectNear(c.last<PolylineEntity>().vertices[0], {0, 7});
    c.run({"POL", "4", "E", "1,1", "3,1"});
    expectPoints(c.last<PolylineEntity>().vertices, {{1, 1}, {3, 1}, {3, 3}, {1, 3}});
    EXPECT_EQ(c.run({"POL", "2"}), Lines{"Invalid value."});
}

TEST(Ellipse, AxesInAnyOrderOfLength) {
    DrawConsole c;
    c.run({"ELLIPSE", "0,0", "10,0", "2"});
    const auto flat = c.last<EllipseEntity>();
    expectNear(flat.center, {5, 0});
    expectNear(flat.major, {5, 0});
    EXPECT_DOUBLE_EQ(flat.minorRatio, 0.4);
    EXPECT_TRUE(flat.isFull());
    c.run({"EL", "C", "0,0", "3,0", "6"});
    const auto tall = c.last<EllipseEntity>();
    expectNear(tall.major, {0, 6});
    EXPECT_DOUBLE_EQ(tall.minorRatio, 0.5);
    c.run({"EL", "C", "0,0", "4,0", "R", "60"});
    EXPECT_NEAR(c.last<EllipseEntity>().minorRatio, 0.5, 1e-12);
    EXPECT_EQ(c.run({"EL", "1,1", "1,1"}).back(), "Invalid input.");
}

TEST(Ellipse, ArcsByAngleParameterAndIncludedAngle) {
    DrawConsole c;
    // Ends lie where their directions from the centre meet the ellipse, whichever axis is longer.
    for (const char* other : {"2", "10"}) {
        c.run({"ELLIPSE", "A", "C", "0,0", "4,0", other, "45", "180"});
        const auto& arc = c.last<EllipseEntity>();
        EXPECT_NEAR(arc.startPoint().x, arc.startPoint().y, 1e-9);
        expectNear(arc.endPoint(), {-4, 0});
        EXPECT_GT(arc.startPoint().x, 0);
    }
    c.run({"EL", "A", "C", "0,0", "4,0", "2", "P", "45", "I", "90"});
    expectNear(c.last<EllipseEntity>().startPoint(), {4 * std::sqrt(0.5), 2 * std::sqrt(0.5)});
    c.run({"EL", "A", "C", "0,0", "4,0", "2", "0", "I", "90"});
    expectNear(c.last<EllipseEntity>().endPoint(), {0, 2});
    // From endpoint to endpoint the angles count from the first one.
    c.run({"EL", "A", "0,0", "8,0", "2", "0", "90"});
    expectNear(c.last<EllipseEntity>().startPoint(), {0, 0});
    expectNear(c.last<EllipseEntity>().endPoint(), {4, -2});
}

TEST(Ellipse, AsAPolylineWithPellipse) {
    DrawConsole c;
    c.run({"PELLIPSE 1", "EL", "C", "0,0", "4,0", "2"});
    const auto& p = c.only<PolylineEntity>();
    EXPECT_TRUE(p.closed);
    EXPECT_NEAR(p.area(), kPi * 8.0, 0.02);
}

}  // namespace
}  // namespace kova::cmd
