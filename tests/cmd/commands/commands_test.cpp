#include <gtest/gtest.h>

#include "cmd/console.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/polyline.hpp"

namespace kova::cmd {
namespace {

using math::Vector2;

const engine::CircleEntity& lastCircle(Console& c) {
    const auto* circle = dynamic_cast<const engine::CircleEntity*>(c.drawing().currentSpace().last());
    if (circle == nullptr) throw std::runtime_error("no circle");
    return *circle;
}

void expectCircle(Console& c, Vector2 center, double radius) {
    const engine::CircleEntity& circle = lastCircle(c);
    EXPECT_TRUE(circle.center.near_equal(center, 1e-9)) << circle.center.x << "," << circle.center.y;
    EXPECT_NEAR(circle.radius, radius, 1e-9);
}

// UNDO and its kin ---------------------------------------------------------------------------------------

TEST(UndoCommand, OneStepOrAsManyAsTheNumberSays) {
    Console c;
    EXPECT_EQ(c.feed("UNDO"), Lines{"Nothing to undo."});
    EXPECT_EQ(c.feed("REDO"), Lines{"Nothing to redo."});
    c.run({"LINE 0,0 1,0 2,0 3,0", "", "CIRCLE 0,0 1"});
    EXPECT_EQ(c.feed("U"), Lines{"Undone: CIRCLE"});
    EXPECT_EQ(c.feed("UNDO 2"), (Lines{"Undone: LINE", "Undone: LINE"}));
    EXPECT_EQ(c.count(), 1u);
    EXPECT_EQ(c.feed("UNDO 99"), Lines{"Undone: LINE"});
    EXPECT_EQ(c.feed("REDO"), Lines{"Redone: LINE"});
    EXPECT_EQ(c.feed("REDO 2"), (Lines{"Redone: LINE", "Redone: LINE"}));
    for (const char* word : {"0", "-1", "x", "1.5"}) EXPECT_EQ(c.feed(std::string("UNDO ") + word).size(), 1u) << word;
    EXPECT_EQ(c.count(), 3u);
    c.run({"UNDO 3", "MREDO"});
    EXPECT_EQ(c.prompt(), "Enter number of actions or [All/Last]:");
    EXPECT_EQ(c.feed("0"), Lines{"Invalid value."});
    EXPECT_EQ(c.feed("L"), Lines{"Redone: LINE"});
    EXPECT_EQ(c.feed("MREDO ALL").size(), 3u);
    EXPECT_EQ(c.count(), 4u);
    c.feed("MREDO");
    c.feed("");
    EXPECT_TRUE(c.idle());
}

TEST(UndoCommand, SettingsOfScriptsTakeNothingBack) {
    Console c;
    c.run({"LINE 0,0 1,0", ""});
    for (const char* line : {"UNDO C A", "_.UNDO _Control _All", "UNDO A OFF", "UNDO C C Y", "UNDO C L ON"})
        EXPECT_TRUE(c.feed(line).empty()) << line;
    for (const char* line : {"UNDO C", "UNDO A", "UNDO C N", "UNDO C C", "UNDO C x"})
        EXPECT_EQ(c.feed(line).size(), 1u) << line;
    EXPECT_EQ(c.count(), 1u);
}

TEST(UndoCommand, MarksAndGroups) {
    Console c;
    c.run({"LINE 0,0 1,0", "", "UNDO M", "LINE 0,0 2,0", "", "CIRCLE 0,0 1"});
    EXPECT_EQ(c.feed("UNDO Back"), (Lines{"Undone: CIRCLE", "Undone: LINE", "Mark encountered"}));
    EXPECT_EQ(c.count(), 1u);
    EXPECT_EQ(c.feed("UNDO B"), (Lines{"Undone: LINE", "Everything has been undone."}));
    EXPECT_EQ(c.feed("UNDO B"), Lines{"Nothing to undo."});
    c.run({"UNDO BE", "LINE 0,0 1,0 2,0", "", "CIRCLE 0,0 1", "UNDO END"});
    EXPECT_EQ(c.document.history().undoCount(), 1u);
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: Group"});
    EXPECT_EQ(c.count(), 0u);
    EXPECT_EQ(c.feed("UNDO E"), Lines{"No group is open."});
    // A plain UNDO ends what was begun; beside a command it leaves the group alone.
    c.run({"UNDO BE", "LINE 0,0 1,0"});
    EXPECT_EQ(c.feed("'UNDO"), Lines{"Nothing to undo."});
    c.feed("");
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: Group"});
    EXPECT_FALSE(c.document.isGroupOpen());
}

// MOVE ---------------------------------------------------------------------------------------------------

TEST(MoveCommand, BasePointAndDisplacement) {
    Console c;
    engine::LineEntity& line = c.addLine(0, 0, 10, 0);
    const auto start = [&] { return static_cast<engine::LineEntity*>(c.entities()[0])->start; };
    c.run({"MOVE", "L", ""});
    EXPECT_EQ(c.prompt(), "Specify base point or [Displacement] <Displacement>:");
    c.feed("1,1");
    EXPECT_EQ(c.prompt(), "Specify second point or <use first point as displacement>:");
    c.feed("@5,0");
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(start(), Vector2(5, 0));
    c.run({"M", "ALL", "", "1,2", ""});
    EXPECT_EQ(start(), Vector2(6, 2));
    c.run({"M", "ALL", "", ""});
    EXPECT_EQ(c.prompt(), "Specify displacement <0,0,0>:");
    c.feed("-6,-2,0");
    EXPECT_EQ(start(), Vector2(0, 0));
    EXPECT_EQ(c.document.history().undoCount(), 3u);
    // Nothing selected, no way to go: nothing done.
    c.run({"M", "", "M", "ALL", "", "3,3", "3,3"});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.document.history().undoCount(), 3u);
    // A displacement is no place: the origin of the UCS does not count.
    c.run({"UCS 100,100", "", "M", "ALL", "", "D", "1,0"});
    EXPECT_EQ(start(), Vector2(1, 0));
    c.run({"M", "ALL", "", "1,0", ""});
    EXPECT_EQ(start(), Vector2(2, 0));
    static_cast<void>(line);
}

// CIRCLE -------------------------------------------------------------------------------------------------

TEST(CircleCommand, CentreRadiusDiameterAndTheRememberedRadius) {
    Console c;
    c.feed("C");
    EXPECT_EQ(c.prompt(), "Specify center point for circle or [3P/2P/Ttr (tan tan radius)]:");
    c.feed("10,10");
    EXPECT_EQ(c.prompt(), "Specify radius of circle or [Diameter]:");
    for (const char* text : {"0", "-1", "x"}) EXPECT_EQ(c.feed(text).size(), 1u) << text;
    c.feed("5");
    expectCircle(c, {10, 10}, 5);
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: CIRCLE"});
    c.feed("CIRCLE 0,0");
    EXPECT_EQ(c.prompt(), "Specify radius of circle or [Diameter] <5>:");
    c.feed("");
    expectCircle(c, {0, 0}, 5);
    c.feed("CIRCLE 0,0 D");
    EXPECT_EQ(c.prompt(), "Specify diameter of circle <10>:");
    c.feed("7");
    expectCircle(c, {0, 0}, 3.5);
    c.feed("CIRCLE 1,1 4,5");
    expectCircle(c, {1, 1}, 5);
    c.feed("CIRCLE 2P 0,0 6,8");
    expectCircle(c, {3, 4}, 5);
    c.run({"CIRCLE 3P 0,0 10,0", "20,0"});
    EXPECT_EQ(c.lines.back(), "The three points lie on one line.");
    c.feed("0,10");
    expectCircle(c, {5, 5}, std::sqrt(50.0));
    EXPECT_EQ(c.count(), 5u);
}

TEST(CircleCommand, TangentToObjects) {
    Console c;
    c.addLine(0, 0, 100, 0);
    c.addLine(0, 0, 0, 100);
    c.run({"CIRCLE", "T"});
    EXPECT_EQ(c.prompt(), "Specify point on object for first tangent of circle:");
    c.feed("20,0");
    EXPECT_EQ(c.prompt(), "Specify point on object for second tangent of circle:");
    c.feed("0,20");
    EXPECT_EQ(c.prompt(), "Specify radius of circle:");
    c.feed("10");
    expectCircle(c, {10, 10}, 10);
    // The hypotenuse makes a triangle; its inscribed circle is nearest to the picks.
    c.add(engine::PolylineEntity({{0, 60}, {80, 0}}));
    c.run({"CIRCLE TTT", "25,0", "0,25", "48,24"});
    expectCircle(c, {20, 20}, 20);
    // Outside of two circles, on the side of the picks.
    c.run({"CIRCLE 200,0 10", "CIRCLE 240,0 10", "CIRCLE TTR 205,8.6 235,8.6 15"});
    expectCircle(c, {220, 15}, 15);
    c.addLine(0, 500, 100, 500);
    c.addLine(0, 510, 100, 510);
    EXPECT_EQ(c.feed("CIRCLE T 50,500 50,510 2"), Lines{"Circle does not exist."});
    EXPECT_TRUE(c.idle());
}

// Settings with dialogues of their own --------------------------------------------------------------------

TEST(FormatCommands, ColorLinetypeLineweight) {
    Console c;
    c.feed("COLOR");
    EXPECT_EQ(c.prompt(), "Enter default object color [Truecolor/COlorbook] <BYLAYER>:");
    EXPECT_EQ(c.feed("0"), Lines{"Invalid color. Enter ByLayer/ByBlock/1-255:"});
    EXPECT_EQ(c.feed("pinkish"), Lines{"Invalid color format. Enter color:"});
    c.run({"T", "1,2,3"});
    EXPECT_EQ(c.drawing().currentColor, engine::Color::rgb(1, 2, 3));
    c.feed("U");
    EXPECT_EQ(c.drawing().currentColor, engine::Color::byLayer());

    c.run({"-LINETYPE", "L", "hid*", ""});
    EXPECT_TRUE(c.drawing().linetypes.contains("Hidden"));
    EXPECT_TRUE(c.drawing().linetypes.contains("HiddenX2"));
    c.run({"L", "Hidden", "acad.lin"});
    EXPECT_EQ(c.prompt(), "Linetype \"Hidden\" is already loaded. Reload it? [Yes/No] <Yes>:");
    c.run({"N", "L", "zzz", ""});
    EXPECT_EQ(c.lines.back(), "No matching linetypes found.");
    EXPECT_EQ(c.run({"L", "x", "/nonexistent/file.lin"}), Lines{"Cannot read /nonexistent/file.lin"});
    c.run({"", "S", "nope"});
    EXPECT_EQ(c.lines.back(), "Unknown linetype \"nope\".");
    c.run({"dashed", ""});
    EXPECT_EQ(c.drawing().currentLinetype, "Dashed");
    EXPECT_EQ(c.feed("U"), Lines{"Undone: LINETYPE"});
    EXPECT_FALSE(c.drawing().linetypes.contains("Hidden"));
    EXPECT_EQ(c.drawing().currentLinetype, "ByLayer");

    c.run({"LWEIGHT", "99"});
    EXPECT_EQ(c.lines.back(), "Invalid value.");
    c.feed("0.5");
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "CELWEIGHT"), 50);
    c.feed("LW bylayer");
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "CELWEIGHT"), -1);
}

TEST(FormatCommands, LimitsAndBase) {
    Console c;
    c.feed("LIMITS");
    EXPECT_EQ(c.prompt(), "Specify lower left corner or [ON/OFF] <0,0>:");
    c.feed("10,20");
    EXPECT_EQ(c.prompt(), "Specify upper right corner <420,297>:");
    EXPECT_EQ(c.feed("5,5"), Lines{"Invalid limits."});
    c.feed("110,120");
    EXPECT_EQ(c.drawing().limits.lower, Vector2(10, 20));
    EXPECT_EQ(c.drawing().limits.upper, Vector2(110, 120));
    c.feed("LIMITS ON");
    EXPECT_TRUE(c.drawing().limits.check);
    c.feed("UNDO 2");
    EXPECT_EQ(c.drawing().limits.upper, Vector2(420, 297));
    EXPECT_FALSE(c.drawing().limits.check);
    c.feed("BASE");
    EXPECT_EQ(c.prompt(), "Enter base point <0,0,0>:");
    c.feed("3,4");
    EXPECT_EQ(c.drawing().basePoint, Vector2(3, 4));
}

TEST(UcsCommand, FramesAndNames) {
    Console c;
    const auto& ucs = c.drawing().ucs;
    c.run({"UCS", "10,10", "10,20", ""});
    EXPECT_EQ(ucs.origin, Vector2(10, 10));
    EXPECT_TRUE(ucs.xAxis.near_equal({0, 1}));
    EXPECT_TRUE(ucs.yAxis.near_equal({-1, 0}));
    c.run({"LINE", "1,2", "@1,0", ""});
    const auto* line = static_cast<const engine::LineEntity*>(c.entities()[0]);
    EXPECT_TRUE(line->start.near_equal({8, 11}));
    EXPECT_TRUE(line->end.near_equal({8, 12}));
    EXPECT_EQ(c.run({"ID", "1,2"}), Lines{"X = 1.0000     Y = 2.0000     Z = 0.0000"});
    c.run({"UCS", "NA", "S", "Turned", "UCS", "W"});
    EXPECT_TRUE(ucs.isWorld());
    EXPECT_TRUE(c.drawing().currentUcs.empty());
    EXPECT_EQ(c.run({"UCS", "NA", "R", "nope"}), Lines{"Unknown UCS \"nope\"."});
    c.feed("turned");
    EXPECT_EQ(c.drawing().currentUcs, "Turned");
    EXPECT_EQ(ucs.origin, Vector2(10, 10));
    c.feed("UCS Z -90");
    EXPECT_EQ(ucs.xAxis, Vector2(1, 0));
    EXPECT_TRUE(c.drawing().currentUcs.empty());
    c.feed("UCS P");
    EXPECT_EQ(c.drawing().currentUcs, "Turned");
    c.feed("UCS");
    c.feed("");
    EXPECT_TRUE(ucs.isWorld());
    c.run({"UCS OB", "8,11.1"});
    EXPECT_TRUE(ucs.origin.near_equal({8, 11}));
    // A third point below the x axis turns the plane over.
    c.run({"UCS", "W", "UCS", "0,0", "1,0", "0,-1"});
    EXPECT_EQ(ucs.yAxis, Vector2(0, -1));
    c.run({"UCS", "NA", "D", "Turned"});
    EXPECT_TRUE(c.drawing().ucsList.empty());
    c.feed("UNDO");
    EXPECT_EQ(c.drawing().ucsList.size(), 1u);
    for (const char* word : {"X", "ZA", "View"}) EXPECT_EQ(c.run({"UCS", word}).size(), 1u) << word;
    EXPECT_TRUE(c.idle());
}

// Inquiry and the rest --------------------------------------------------------------------------------------

TEST(InquiryCommands, DistanceAndTime) {
    Console c;
    EXPECT_EQ(c.run({"DIST", "0,0", "3,4"}),
              (Lines{"Distance = 5.0000,  Angle in XY Plane = 53,  Angle from XY Plane = 0",
                     "Delta X = 3.0000,  Delta Y = 4.0000,   Delta Z = 0.0000"}));
    EXPECT_DOUBLE_EQ(engine::sysVarReal(c.drawing(), "DISTANCE"), 5.0);
    c.run({"DIST", "0,0", "M", "3,4", "6,0", "U"});
    EXPECT_EQ(c.lines.back(), "Distance = 5.0000");
    c.feed("6,0");
    EXPECT_EQ(c.lines.back(), "Distance = 10.0000");
    c.feed("");
    EXPECT_TRUE(c.idle());
    EXPECT_DOUBLE_EQ(engine::sysVarReal(c.drawing(), "DISTANCE"), 10.0);
    EXPECT_GE(c.feed("TIME").size(), 6u);
    EXPECT_EQ(c.prompt(), "Enter option [Display/ON/OFF/Reset]:");
    EXPECT_EQ(c.feed("OFF"), Lines{"Timer off."});
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "USRTIMER"), 0);
    c.feed("");
    EXPECT_TRUE(c.idle());
}

TEST(ToolCommands, AliasesAreListedAddedRemovedAndReset) {
    Console c;
    c.feed("ALIASEDIT");
    EXPECT_EQ(c.prompt(), "Enter option [List/Add/Remove] <List>:");
    c.feed("A");
    EXPECT_EQ(c.prompt(), "Enter alias:");
    EXPECT_EQ(c.feed("circle"), Lines{"\"CIRCLE\" is a command name."});
    EXPECT_EQ(c.feed("a b"), Lines{"Invalid input."});
    c.feed("zz");
    EXPECT_EQ(c.prompt(), "Enter command name:");
    EXPECT_EQ(c.feed("nosuch"), Lines{"Unknown command: nosuch"});
    EXPECT_EQ(c.feed("_line"), Lines{"Alias \"ZZ\" stands for LINE, for this process."});
    c.feed("ZZ");
    EXPECT_EQ(c.prompt(), "Specify first point:");
    c.feed("");
    const Lines listed = c.run({"ALIASEDIT", ""});
    EXPECT_NE(std::find(listed.begin(), listed.end(), "ZZ = LINE"), listed.end());
    EXPECT_NE(std::find(listed.begin(), listed.end(), "L = LINE"), listed.end());
    EXPECT_EQ(c.feed("ALIASEDIT R zz"), Lines{"Alias \"ZZ\" removed, for this process."});
    EXPECT_EQ(c.feed("ZZ"), Lines{"Unknown command: ZZ"});
    EXPECT_EQ(c.feed("ALIASEDIT R zz"), Lines{"Unknown alias \"ZZ\"."});
    c.run({"", "ALIASEDIT R L", "REINIT"});
    EXPECT_TRUE(c.lines.back().starts_with("For this process, "));
    EXPECT_TRUE(c.lines.back().ends_with(" aliases loaded."));
    c.feed("L");
    EXPECT_FALSE(c.idle());
}

TEST(ToolCommands, CommandsAreListedWithTheirAliases) {
    Console c;
    c.feed("COMMANDS");
    EXPECT_EQ(c.prompt(), "Enter name filter <*>:");
    EXPECT_GT(c.feed("").size(), 490u);
    EXPECT_EQ(c.feed("COMMANDS LIN?,CIRC#*,CIRCLE"), (Lines{"CIRCLE (C)", "LINE (L)"}));
    EXPECT_EQ(c.feed("COMMANDS Q#"), Lines{"No matching names found."});
}

TEST(ToolCommands, ScreenCommandsEndAtOnce) {
    Console c;
    for (const char* name : {"REGEN", "REGENALL", "REDRAW", "GRAPHSCR", "TEXTSCR", "RE", "REA", "R"}) {
        EXPECT_LE(c.feed(name).size(), 1u) << name;
        EXPECT_TRUE(c.idle()) << name;
    }
}

}  // namespace
}  // namespace kova::cmd
