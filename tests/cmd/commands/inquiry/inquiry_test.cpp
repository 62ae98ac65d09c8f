#include <gtest/gtest.h>

#include "cmd/draw_harness.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/ellipse.hpp"
#include "engine/entities/hatch.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/polyline3d.hpp"
#include "engine/entities/region.hpp"
#include "engine/entities/text.hpp"
#include "math/curves/path.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::CircleEntity;
using engine::PolylineEntity;
using math::Vector2;

double variable(Console& c, const char* name) { return engine::sysVarReal(c.drawing(), name); }
bool contains(const Lines& lines, const std::string& wanted) {
    return std::find(lines.begin(), lines.end(), wanted) != lines.end();
}

// LIST -------------------------------------------------------------------------------------------------------

TEST(List, TellsWhatAnObjectIsAndWhereItLies) {
    DrawConsole c;
    c.addLine(1, 2, 4, 6).color = engine::Color::index(1);
    const Lines line = c.run({"LIST", "ALL", ""});
    ASSERT_GT(line.size(), 3u);
    EXPECT_EQ(line[0], "Line    Layer: \"0\"");
    EXPECT_EQ(line[1], "    Space: Model space");
    EXPECT_TRUE(contains(line, "    Color: red"));
    EXPECT_TRUE(contains(line, "    from point X=1.0000  Y=2.0000  Z=0.0000"));
    EXPECT_TRUE(contains(line, "    Length = 5.0000,  Angle in XY Plane = 53"));
    // Points are told in the current system.
    c.run({"UCS", "1,2", ""});
    EXPECT_TRUE(contains(c.run({"LIST", "ALL", ""}), "    to point X=3.0000  Y=4.0000  Z=0.0000"));
    EXPECT_FALSE(c.document.history().canUndo() && c.lastStep() == "LIST");
}

TEST(List, TellsWhatIsOwnToSurfacesAndRegions) {
    DrawConsole c;
    engine::RegionEntity region;
    region.vertices = {{0, 0}, {4, 0}, {4, 2}, {0, 2}};
    c.add(region);
    Lines lines = c.run({"LIST", "L", ""});
    EXPECT_TRUE(contains(lines, "    1 boundary loop"));
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "    area 8.0000"), 1);
    engine::Polyline3DEntity way({{0, 0, 0}, {3, 0, 4}});
    c.add(way);
    lines = c.run({"LIST", "L", ""});
    EXPECT_TRUE(contains(lines, "    length 5.0000"));
    EXPECT_TRUE(contains(lines, "    at point X=3.0000  Y=0.0000  Z=4.0000"));
}

TEST(List, SurvivesEveryKindOfObject) {
    DrawConsole c;
    for (int type = 0; type < engine::kEntityTypeCount; ++type)
        c.drawing().modelSpace().append(engine::makeEntity(static_cast<engine::EntityType>(type)));
    const Lines lines = c.feed("DBLIST");
    for (int type = 0; type < engine::kEntityTypeCount; ++type) {
        const std::string head =
            std::string(engine::displayName(static_cast<engine::EntityType>(type))) + "    Layer: \"0\"";
        EXPECT_TRUE(contains(lines, head)) << head;
    }
}

// AREA ---------------------------------------------------------------------------------------------------------

TEST(Area, OfPointsLinesAndArcs) {
    DrawConsole c;
    c.feed("AREA");
    EXPECT_EQ(c.prompt(), "Specify first corner point or [Object/Add area/Subtract area] <Object>:");
    c.run({"0,0", "10,0"});
    EXPECT_EQ(c.prompt(), "Specify next point or [Arc/Length/Undo]:");
    c.feed("10,5");
    EXPECT_EQ(c.prompt(), "Specify next point or [Arc/Length/Undo/Total] <Total>:");
    EXPECT_EQ(c.run({"0,5", ""}), Lines{"Area = 50.0000, Perimeter = 30.0000"});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(variable(c, "AREA"), 50.0);
    EXPECT_EQ(variable(c, "PERIMETER"), 30.0);
    // Half a disc on top of a square, by an arc that leaves straight up.
    const Lines lines = c.run({"AREA", "0,0", "2,0", "2,2", "A", "0,2", "L", "U", "A", "S", "1,3", "0,2", "L", ""});
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NEAR(variable(c, "AREA"), 4.0 + math::kPi / 2.0, 1e-9);
    EXPECT_NEAR(variable(c, "PERIMETER"), 6.0 + math::kPi, 1e-9);
    // Far away the area keeps its digits.
    c.run({"AREA", "1e7,1e7", "@0.001,0", "@0,0.001", "@-0.001,0", ""});
    EXPECT_NEAR(variable(c, "AREA"), 1e-6, 1e-11);
}

TEST(Area, InFeetAndInches) {
    DrawConsole c;
    c.run({"LUNITS 4", "LUPREC 2"});
    EXPECT_TRUE(contains(c.run({"AREA", "0,0", "12,0", "12,24", "0,24", ""}),
                         "Area = 288.00 square in. (2.00 square ft.), Perimeter = 6'"));
    c.add(CircleEntity({0, 0}, 12.0));
    EXPECT_TRUE(contains(c.run({"LIST", "L", ""}), "    area 452.39 square in. (3.14 square ft.)"));
}

TEST(Area, AddsUpAndTakesOff) {
    DrawConsole c;
    c.add(CircleEntity({50, 50}, 2.0));
    PolylineEntity square({{0, 0}, {10, 0}, {10, 10}, {0, 10}}, true);
    c.add(std::move(square));
    c.run({"AREA", "A"});
    EXPECT_EQ(c.prompt(), "Specify first corner point or [Object/Subtract area]:");
    c.feed("O");
    EXPECT_EQ(c.prompt(), "(ADD mode) Select objects:");
    EXPECT_EQ(c.feed("0,5"), (Lines{"Area = 100.0000, Perimeter = 40.0000", "Total area = 100.0000"}));
    c.run({"", "S", "O"});
    EXPECT_EQ(c.feed("52,50"), (Lines{"Area = 12.5664, Circumference = 12.5664", "Total area = 87.4336"}));
    c.run({"", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_NEAR(variable(c, "AREA"), 100.0 - 4.0 * math::kPi, 1e-9);
    c.addLine(100, 100, 200, 100);
    EXPECT_EQ(c.run({"AREA", "O", "150,100"}), Lines{"Object cannot be used here."});
}

TEST(PathArea, IsExactForEveryKindOfElement) {
    engine::Path path;
    path.ellipticArc({1e6, 1e6}, {3, 0}, {0, 2}, 0.0, math::kTwoPi);
    EXPECT_NEAR(engine::pathArea(path), 6.0 * math::kPi, 1e-8);
    engine::Path clockwise;
    clockwise.moveTo({0, 0}).lineTo({0, 3}).lineTo({4, 0});
    EXPECT_NEAR(engine::pathArea(clockwise), -6.0, 1e-12);
    // y = x^2 from (0,0) to (1,1) as a cubic: between it and the chord lies 1/6.
    engine::Path parabola;
    parabola.moveTo({0, 0}).cubicTo({1.0 / 3.0, 0}, {2.0 / 3.0, 1.0 / 3.0}, {1, 1});
    EXPECT_NEAR(engine::pathArea(parabola), 1.0 / 6.0, 1e-12);
    EXPECT_EQ(engine::pathArea({}), 0.0);
}

// MEASUREGEOM ------------------------------------------------------------------------------------------------

TEST(Measuregeom, MeasuresUntilItIsLeft) {
    DrawConsole c;
    c.addLine(0, 0, 10, 0);
    c.addLine(0, 0, 10, 10);
    c.add(engine::ArcEntity({100, 100}, 5.0, 0.0, math::kPi / 2.0));
    c.feed("MEASUREGEOM");
    EXPECT_EQ(c.prompt(), "Enter an option [Distance/Radius/Angle/ARea/Volume] <Distance>:");
    EXPECT_EQ(c.run({"", "0,0", "3,4"}).front(),
              "Distance = 5.0000,  Angle in XY Plane = 53,  Angle from XY Plane = 0");
    EXPECT_EQ(c.prompt(), "Enter an option [Distance/Radius/Angle/ARea/Volume/eXit] <Distance>:");
    EXPECT_EQ(c.run({"R", "105,100"}), (Lines{"Radius = 5.0000", "Diameter = 10.0000"}));
    EXPECT_EQ(c.run({"A", "8,0", "8,8"}), Lines{"Angle = 45"});
    EXPECT_EQ(c.run({"A", "105,100"}), Lines{"Angle = 90"});
    EXPECT_EQ(c.run({"A", "", "0,0", "1,0", "-1,1"}), Lines{"Angle = 135"});
    EXPECT_EQ(c.run({"AR", "0,0", "4,0", "4,4", ""}), Lines{"Area = 8.0000, Perimeter = 13.6569"});
    EXPECT_EQ(c.run({"V", "0,0", "4,0", "4,4", "", "10"}).back(), "Volume = 80.0000");
    c.feed("X");
    EXPECT_TRUE(c.idle());
}

// QSELECT ----------------------------------------------------------------------------------------------------

TEST(Qselect, FindsObjectsByTheirProperties) {
    DrawConsole c;
    c.run({"LAYER", "N", "Walls", ""});
    c.addLine(0, 0, 1, 0).layer = "Walls";
    c.addLine(0, 5, 1, 5).color = engine::Color::index(1);
    c.add(CircleEntity({0, 0}, 3.0));
    c.add(CircleEntity({0, 0}, 8.0)).layer = "Walls";
    c.feed("QSELECT");
    EXPECT_EQ(c.prompt(), "Apply to [Entire drawing/Current selection] <Entire drawing>:");
    c.feed("");
    EXPECT_EQ(c.feed("Blob"), Lines{"Unknown object type \"Blob\"."});
    c.feed("circle");
    EXPECT_EQ(c.feed("weight"), Lines{"Unknown property \"weight\"."});
    c.run({"Radius", ">", "5"});
    EXPECT_EQ(c.feed(""), Lines{"1 item(s) selected."});
    ASSERT_EQ(c.selected().size(), 1u);
    EXPECT_EQ(c.selected()[0], c.entities()[3]->id());
    EXPECT_EQ(c.run({"QSELECT", "E", "", "", "*", "W*", ""}), Lines{"2 item(s) selected."});
    // Among those: what is no circle's layer; then everything but the red ones.
    EXPECT_EQ(c.run({"QSELECT", "", "Line", "", "", "walls", ""}), Lines{"1 item(s) selected."});
    EXPECT_EQ(c.run({"QSELECT", "E", "", "color", "=", "red", "E"}), Lines{"3 item(s) selected."});
    EXPECT_EQ(c.run({"QSELECT", "E", "Line", "thickness", "", "0", ""}), Lines{"2 item(s) selected."});
    c.feed("ERASE");
    EXPECT_EQ(c.count(), 2u);
}

// PURGE and RENAME -----------------------------------------------------------------------------------------------

TEST(Purge, DeletesWhatNothingUsesAlsoNested) {
    DrawConsole c;
    for (const char* name : {"Inner", "Outer", "Used"}) c.drawing().addBlock(name);
    c.drawing().findBlock("Outer")->entities.append(std::make_unique<engine::BlockReferenceEntity>("Inner", Vector2{}));
    c.add(engine::BlockReferenceEntity("Used", {0, 0}));
    c.run({"LAYER", "N", "Idle", ""});
    c.run({"PURGE", "B"});
    EXPECT_EQ(c.prompt(), "Enter name(s) to purge <*>:");
    c.feed("");
    EXPECT_EQ(c.prompt(), "Verify each name to be purged? [Yes/No] <Y>:");
    c.feed("");
    EXPECT_EQ(c.prompt(), "Purge block \"Outer\"? <N>:");
    c.feed("Y");
    EXPECT_EQ(c.prompt(), "Purge block \"Inner\"? <N>:");
    EXPECT_EQ(c.feed("N"), Lines{"1 item purged."});
    EXPECT_EQ(c.drawing().findBlock("Outer"), nullptr);
    EXPECT_NE(c.drawing().findBlock("Inner"), nullptr);
    c.run({"PURGE", "A", "", "N"});
    EXPECT_EQ(c.drawing().blocks().size(), 1u);
    EXPECT_FALSE(c.drawing().layers.contains("Idle"));
    EXPECT_TRUE(c.drawing().layers.contains("0"));
    EXPECT_TRUE(c.drawing().textStyles.contains("Standard"));
    EXPECT_EQ(c.run({"PURGE", "A", "", "N"}), Lines{"No unreferenced items found."});
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: PURGE"});
    EXPECT_TRUE(c.drawing().layers.contains("Idle"));
    EXPECT_EQ(c.run({"PURGE", "LA", "x*", "N"}), Lines{"No unreferenced layers found."});
    EXPECT_EQ(c.run({"PURGE", "MA"}), Lines{"No unreferenced materials found."});
}

TEST(Purge, TakesAwayWhatHasNoLengthOrNoText) {
    DrawConsole c;
    c.addLine(1, 1, 1, 1);
    c.addLine(1, 1, 2, 1);
    c.add(PolylineEntity({{3, 3}, {3, 3}}));
    c.run({"LAYER", "N", "Kept", ""});
    c.addLine(5, 5, 5, 5).layer = "Kept";
    c.run({"LAYER", "LO", "Kept", ""});
    engine::TextEntity blank;
    blank.content = "  ";
    c.add(std::move(blank));
    EXPECT_EQ(c.run({"PURGE", "Z"}), Lines{"2 zero-length objects deleted."});
    EXPECT_EQ(c.run({"PURGE", "E"}), Lines{"1 empty text object deleted."});
    EXPECT_EQ(c.run({"PURGE", "E"}), Lines{"No empty text objects found."});
    EXPECT_EQ(c.count(), 2u);
}

TEST(Rename, GivesNewNamesToRecordsAndTheirUsers) {
    DrawConsole c;
    c.drawing().addBlock("Old");
    c.add(engine::BlockReferenceEntity("Old", {0, 0}));
    c.run({"RENAME", "B"});
    EXPECT_EQ(c.prompt(), "Enter old block name:");
    EXPECT_EQ(c.feed("Nix"), Lines{"Cannot find block \"Nix\"."});
    c.feed("old");
    EXPECT_EQ(c.prompt(), "Enter new block name:");
    EXPECT_EQ(c.feed("a|b"), Lines{"Invalid block name \"a|b\"."});
    c.feed("New");
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.only<engine::BlockReferenceEntity>().blockName.str(), "New");
    EXPECT_EQ(c.run({"RENAME", "LA", "0"}), Lines{"Cannot rename layer \"0\"."});
    c.processor.cancel();
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: RENAME"});
    EXPECT_NE(c.drawing().findBlock("Old"), nullptr);
}

// UNITS and STATUS -------------------------------------------------------------------------------------------------

TEST(Units, AreAskedForInTheClassicOrder) {
    DrawConsole c;
    c.feed("UNITS");
    EXPECT_EQ(c.prompt(), "Enter choice, 1 to 5 <2>:");
    c.feed("4");
    EXPECT_EQ(c.prompt().substr(0, 50), "Enter denominator of smallest fraction to display ");
    EXPECT_EQ(c.feed("3"), Lines{"Invalid value."});
    c.feed("8");
    EXPECT_EQ(c.prompt(), "Enter choice, 1 to 5 <1>:");
    c.run({"2", "3"});
    EXPECT_EQ(c.prompt(), "Enter direction for angle 0 <0>:");
    c.feed("90");
    EXPECT_EQ(c.prompt(), "Measure angles clockwise? [Yes/No] <N>:");
    c.feed("Y");
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "LUNITS"), 4);
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "LUPREC"), 3);
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "AUNITS"), 1);
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "AUPREC"), 3);
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "ANGDIR"), 1);
    EXPECT_NEAR(variable(c, "ANGBASE"), math::kPi / 2.0, 1e-12);
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: UNITS"});
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "LUNITS"), 2);
    EXPECT_EQ(variable(c, "ANGBASE"), 0.0);
}

TEST(Status, TellsTheStateOfTheDrawing) {
    DrawConsole c;
    c.addLine(-5, 0, 10, 20);
    const Lines lines = c.feed("STATUS");
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(lines[0], "1 object in Unnamed drawing");
    EXPECT_TRUE(contains(lines, "Model space uses        X: -5.0000   Y: 0.0000  **Over"));
    EXPECT_TRUE(contains(lines, "Current space:          Model space"));
}

}  // namespace
}  // namespace kova::cmd
