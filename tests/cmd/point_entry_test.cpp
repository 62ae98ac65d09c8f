#include "cmd/point_entry.hpp"

#include <cmath>

#include "cmd/draw_harness.hpp"
#include "doc/pick/object_snap.hpp"
#include "engine/kinds/all.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::CircleEntity;
using engine::LineEntity;
using math::Vector2;

constexpr const char* kFirst = "Specify first point:";
constexpr const char* kNext = "Specify next point or [Close/Undo]:";

/// Draws a line with these answers for its ends and gives it.
LineEntity& drawn(DrawConsole& c, const std::vector<std::string>& answers) {
    c.feed("LINE");
    c.run(answers);
    c.feed("");
    EXPECT_TRUE(c.idle());
    return c.last<LineEntity>();
}

TEST(PointEntry, SnapWordsOnOneLineAndAlone) {
    DrawConsole c;
    c.addLine(0, 0, 100, 0);
    c.add(CircleEntity(Vector2{200, 50}, 50));
    LineEntity& a = drawn(c, {"END 99.6,0.3", "cen of 150.2,50"});
    expectNear(a.start, {100, 0});
    expectNear(a.end, {200, 50});
    c.feed("LINE");
    EXPECT_TRUE(c.feed("_endp").empty());
    EXPECT_EQ(c.prompt(), "of");
    c.feed("1,0");
    EXPECT_EQ(c.prompt(), kNext);
    c.feed("TAN");
    EXPECT_EQ(c.prompt(), "to");
    c.feed("160,80");
    EXPECT_EQ(c.prompt(), kNext);
    const auto& tangent = c.last<LineEntity>();
    EXPECT_NEAR((tangent.end - Vector2(200, 50)).dot(tangent.end - tangent.start), 0.0, 1e-6);
    EXPECT_NEAR(tangent.end.distance_to({200, 50}), 50.0, 1e-9);
    // The words behind a command's name are answers one by one.
    c.feed("");
    c.run({"LINE END 0,0 MIDPOINT 30,0", ""});
    expectNear(c.last<LineEntity>().end, {50, 0});
}

TEST(PointEntry, PicksAreRelativeAndMayMiss) {
    DrawConsole c;
    c.addLine(0, 0, 100, 0);
    c.feed("LINE");
    EXPECT_EQ(c.feed("MID of 50,40"), Lines{"No midpoint found for specified point."});
    EXPECT_EQ(c.prompt(), kFirst);
    c.run({"END,INT", "50,40"});
    EXPECT_EQ(c.lines.back(), "No endpoint or intersection found for specified point.");
    EXPECT_EQ(c.prompt(), kFirst);
    EXPECT_EQ(c.feed("PER 50,0"), Lines{"PER and TAN need a point to start from."});
    EXPECT_EQ(c.feed("EXT 50,0").size(), 1u);
    // Enter gives a word up, not the command.
    c.run({"QUA", ""});
    EXPECT_EQ(c.prompt(), kFirst);
    EXPECT_TRUE(c.feed("WHAT 0,0").empty());
    EXPECT_TRUE(c.feed("EN 0,0").empty());
    EXPECT_TRUE(c.feed("END 0,0 5,5").empty());
    EXPECT_EQ(c.prompt(), kFirst);
    c.run({"30,20", "MID of @20,-20"});
    ASSERT_EQ(c.count(), 2u);
    expectNear(c.last<LineEntity>().end, {50, 0});
    // Keywords of the command go before, also while a word waits.
    c.run({"END", "U"});
    EXPECT_EQ(c.count(), 1u);
    EXPECT_EQ(c.prompt(), kNext);
}

TEST(PointEntry, InCircleMoveAndDistances) {
    DrawConsole c;
    c.addLine(0, 0, 100, 0);
    c.addLine(0, 0, 0, 80);
    c.run({"CIRCLE", "END 0.2,79.9", "PER 20,0"});
    expectNear(c.last<CircleEntity>().center, {0, 80});
    EXPECT_NEAR(c.last<CircleEntity>().radius, 80.0, 1e-9);
    c.run({"CIRCLE", "M2P", "END 100,0", "END 0,80"});
    EXPECT_EQ(c.prompt().substr(0, 24), "Specify radius of circle");
    c.feed("END");
    EXPECT_EQ(c.prompt(), "of");
    EXPECT_EQ(c.feed("50,70").back(), "No endpoint found for specified point.");
    EXPECT_EQ(c.prompt().substr(0, 24), "Specify radius of circle");
    // Without a word a number is the radius, within one a point.
    c.run({"FRO", "END 100,0", "@0,0"});
    EXPECT_NEAR(c.last<CircleEntity>().radius, std::hypot(50.0, 40.0), 1e-9);
    c.run({"MOVE", "L", "", "CEN 50,40", "QUA 0,160"});
    expectNear(c.last<CircleEntity>().center, {0, 160});
}

TEST(PointEntry, ACircleTouchesWhatTanNames) {
    DrawConsole c;
    c.addLine(0, 0, 100, 0);
    c.addLine(0, 0, 0, 80);
    c.addLine(100, 0, 0, 80);
    c.run({"CIRCLE", "3P", "TAN 40,0", "TAN"});
    EXPECT_EQ(c.prompt(), "to");
    EXPECT_EQ(c.run({"30,30"}), Lines{"No tangent found for specified point."});
    c.run({"_tan to 0,30", "TAN 50,40"});
    // The inscribed circle of a right triangle.
    const double radius = (100 + 80 - std::hypot(100.0, 80.0)) / 2;
    EXPECT_NEAR(c.last<CircleEntity>().radius, radius, 1e-6);
    expectNear(c.last<CircleEntity>().center, {radius, radius}, 1e-6);
    // Two points and a line: 40,20 and 60,20 and the axis.
    c.run({"CIRCLE", "3P", "40,20", "@20,0", "TAN 45,0"});
    expectNear(c.last<CircleEntity>().center, {50, 12.5}, 1e-6);
    EXPECT_NEAR(c.last<CircleEntity>().radius, 12.5, 1e-6);
    c.run({"CIRCLE", "3P", "0,0", "END 100,0", "50,0"});
    EXPECT_EQ(c.lines.back(), "The three points lie on one line.");
    c.feed("_non 50,50");
    EXPECT_NEAR(c.last<CircleEntity>().radius, 50, 1e-9);
}

TEST(PointEntry, FromMiddleTrackingAndFilters) {
    DrawConsole c;
    c.addLine(0, 0, 100, 0);
    c.addLine(0, 0, 0, 80);
    c.feed("LINE");
    c.feed("FROM");
    EXPECT_EQ(c.prompt(), "Base point:");
    c.feed("END");
    EXPECT_EQ(c.prompt(), "of");
    // A miss ends the snap only.
    c.feed("50,60");
    EXPECT_EQ(c.prompt(), "Base point:");
    c.feed("END 100,0");
    EXPECT_EQ(c.prompt(), "<Offset>:");
    c.feed("@3,4");
    EXPECT_EQ(c.prompt(), kNext);
    c.feed("M2P");
    EXPECT_EQ(c.prompt(), "First point of mid:");
    c.feed("MID 50,0");
    EXPECT_EQ(c.prompt(), "Second point of mid:");
    c.feed("@0,80");
    expectNear(c.last<LineEntity>().start, {103, 4});
    expectNear(c.last<LineEntity>().end, {50, 40});
    c.feed(".X");
    EXPECT_EQ(c.prompt(), "of");
    c.feed("MID 50,0");
    EXPECT_EQ(c.prompt(), "(need YZ):");
    c.feed("MID 0,40");
    EXPECT_EQ(c.prompt(), kNext);
    expectNear(c.last<LineEntity>().end, {50, 40});
    c.run({".x of 7,0", ".y", "0,9"});
    EXPECT_EQ(c.prompt(), "(need Z):");
    c.feed("12");
    expectNear(c.last<LineEntity>().end, {7, 9});
    c.feed(".XZ 1,1 2,2");
    expectNear(c.last<LineEntity>().end, {1, 2});
    c.feed(".XY END 100,0 0");
    expectNear(c.last<LineEntity>().end, {100, 0});
    EXPECT_TRUE(c.feed(".XX 1,1 2,2").empty());
    c.feed("TK");
    EXPECT_EQ(c.prompt(), "First tracking point:");
    c.run({"MID 50,0", "MID 0,40", "@0,-5"});
    EXPECT_EQ(c.prompt(), "Next point (Press ENTER to end tracking):");
    c.feed("");
    EXPECT_EQ(c.prompt(), kNext);
    // 50 across is longer than 40 up: the tracking goes along x, then 5 down.
    expectNear(c.last<LineEntity>().end, {0, -5});
    c.feed("FROM MID 50,0 @1<90");
    expectNear(c.last<LineEntity>().end, {50, 1});
}

TEST(PointEntry, InAUserCoordinateSystemAndWithOtherAngles) {
    DrawConsole c;
    c.addLine(1000, 1000, 1010, 1000);
    c.run({"UCS", "1000,1000", "1000,1010", ""});
    ASSERT_FALSE(c.drawing().ucs.isWorld());
    // The end of the line lies at 0,-10 in a system a quarter turned.
    LineEntity& a = drawn(c, {"END 0,-9.95", "*5,6"});
    expectNear(a.start, {1010, 1000});
    expectNear(a.end, {5, 6});
    LineEntity& b = drawn(c, {".X END 0,-10 3,7", "#2,0"});
    expectNear(b.start, {993, 1000});
    expectNear(b.end, {1000, 1002});
    c.run({"UCS", "W"});
    c.drawing().realVariables["ANGBASE"] = math::kPi / 2;
    c.drawing().integerVariables["ANGDIR"] = 1;
    LineEntity& d = drawn(c, {"1,1", "@2<<90", "@2<<<0", "@2<0"});
    const auto all = c.entities();
    expectNear(static_cast<LineEntity*>(all[all.size() - 3])->end, {1, 3});
    expectNear(static_cast<LineEntity*>(all[all.size() - 2])->end, {3, 3});
    // A plain angle obeys them.
    expectNear(d.end, {3, 5});
}

TEST(PointEntry, FarFromTheOriginAndAmongMany) {
    DrawConsole c;
    const Vector2 o{1e7, -2e7};
    for (int i = 0; i < 300; ++i)
        for (int k = 0; k < 30; ++k) {
            LineEntity line(o + Vector2(i * 10.0, k * 100.0), o + Vector2(i * 10.0 + 7, k * 100.0));
            c.add(line);
        }
    LineEntity& a = drawn(c, {"MID 10001201,-19999000", "@5,20", "PER 10001103,-19999000"});
    expectNear(a.start, o + Vector2(1208.5, 1020), 1e-6);
    expectNear(a.end, o + Vector2(1208.5, 1000), 1e-6);
}

TEST(PointEntry, ObjectsOffAndLocked) {
    DrawConsole c;
    c.addLine(0, 0, 100, 0).layer = engine::Name("Walls");
    c.addLine(0, 50, 100, 50);
    c.run({"-LAYER", "N", "Walls", "LO", "Walls", ""});
    EXPECT_TRUE(snapTo(c.document, engine::snap::kEnd, {100, 0}));
    c.run({"-LAYER", "OFF", "Walls", ""});
    EXPECT_FALSE(snapTo(c.document, engine::snap::kEnd, {100, 0}));
}

TEST(PointEntry, ReferencesAreShownBySnapWords) {
    DrawConsole c;
    LineEntity& line = c.addLine(10, 10, 40, 50);
    c.run({"ROTATE", "L", "", "END 10,10", "R", "END"});
    EXPECT_EQ(c.prompt(), "of");
    c.feed("10,10");
    EXPECT_EQ(c.prompt(), "Specify second point:");
    c.run({"END 40,50", "90"});
    expectNear(line.start, {10, 10});
    expectNear(line.end, {10, 60});
    c.run({"SCALE", "L", "", "END 10,10", "R"});
    EXPECT_EQ(c.feed("END 30,30"), Lines{"No endpoint found for specified point."});
    EXPECT_EQ(c.prompt(), "Specify reference length <1>:");
    c.run({"END 10,10", "END 10,60", "100"});
    expectNear(line.end, {10, 110});
}

TEST(PointEntry, EveryCommandSnapsThroughTheViewportOfASheet) {
    DrawConsole c;
    c.addLine(100, 100, 900, 100);
    c.add(CircleEntity(Vector2{1500, 700}, 200));
    c.run({"LAYOUT", "S", "Layout1"});
    std::vector<engine::Entity*> own = c.entities();
    for (engine::Entity* e : own) c.drawing().currentSpace().take(*e);
    engine::ViewportEntity window;
    window.center = {120, 95};
    window.width = 200;
    window.height = 150;
    window.viewScale = 0.1;
    window.viewTarget = {1000, 750};
    window.vpId = 2;
    c.add(window);
    // On paper the line runs from 30,30 to 110,30 and the circle stands at 170,90 with a radius of 20.
    LineEntity& a = drawn(c, {"END 109,30.2", "TAN 180,72"});
    expectNear(a.start, {110, 30});
    EXPECT_NEAR(a.end.distance_to({170, 90}), 20.0, 1e-9);
    EXPECT_NEAR((a.end - Vector2(170, 90)).dot(a.end - a.start), 0.0, 1e-6);
    // What stands on the sheet itself counts, too.
    LineEntity& b = drawn(c, {"END 110,30", "MID 30.5,30"});
    expectNear(b.end, {70, 30});
}

TEST(PointEntry, ObjectPicksTakeSnapWords) {
    DrawConsole c;
    c.addLine(0, 0, 100, 0);
    c.addLine(0, 50, 100, 50);
    c.run({"LENGTHEN", "DE", "10"});
    c.run({"END 99.5,50.2", ""});
    expectNear(static_cast<LineEntity*>(c.entities()[1])->end, {110, 50});
    // Selections take them on one line.
    c.run({"ERASE", "MID 20,0", "W", "FROM END 0,50 @-1,-1", "FROM END 110,50 @1,1"});
    EXPECT_EQ(c.prompt().substr(0, 7), "2 found");
    c.feed("");
    EXPECT_EQ(c.count(), 0u);
}

}  // namespace
}  // namespace kova::cmd
