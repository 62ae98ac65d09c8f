#include "cmd/draw_harness.hpp"
#include "engine/entities/line.hpp"

namespace kova::cmd {
namespace {

math::Vector3 point(Console& c, const char* name) {
    return std::get<math::Vector3>(*engine::getSysVar(c.drawing(), name));
}
int integer(Console& c, const char* name) { return engine::sysVarInt(c.drawing(), name); }

TEST(SnapGrid, SpacingsAndSwitches) {
    DrawConsole c;
    c.run({"SNAP", "A", "5", "2"});
    EXPECT_EQ(point(c, "SNAPUNIT"), math::Vector3(5, 2, 0));
    EXPECT_EQ(integer(c, "SNAPMODE"), 1);
    c.feed("U");
    EXPECT_EQ(point(c, "SNAPUNIT"), math::Vector3(10, 10, 0));
    EXPECT_EQ(c.run({"SNAP", "0"}).back(), "Invalid value.");
    c.run({"4", "SN", "S", "I", "SN", "OFF"});
    EXPECT_EQ(integer(c, "SNAPSTYL"), 1);
    EXPECT_EQ(integer(c, "SNAPMODE"), 0);
    c.run({"GRID", "2x"});
    EXPECT_EQ(point(c, "GRIDUNIT"), math::Vector3(8, 8, 0));
    EXPECT_EQ(integer(c, "GRIDMODE"), 1);
    c.run({"GRID", "A", "3", "0"});
    EXPECT_EQ(point(c, "GRIDUNIT"), math::Vector3(3, 4, 0));
    c.run({"GRID", "M", "7", "GRID", "D", "N", "GRID", "L", ""});
    EXPECT_EQ(integer(c, "GRIDMAJOR"), 7);
    EXPECT_EQ(integer(c, "GRIDDISPLAY"), 1);
    c.run({"POLAR", "OFF", "POLAR", "30"});
    EXPECT_EQ(integer(c, "AUTOSNAP") & 8, 0);
    EXPECT_DOUBLE_EQ(engine::sysVarReal(c.drawing(), "POLARANG"), 30);
}

TEST(CreationModes, OneStepForAll) {
    DrawConsole c;
    c.run({"DDEMODES", "C", "red", "LT", "DASHED", "LW", "0.5", "E", "3", ""});
    EXPECT_EQ(c.drawing().currentColor, engine::Color::index(1));
    EXPECT_EQ(c.drawing().currentLinetype, "DASHED");
    EXPECT_EQ(integer(c, "CELWEIGHT"), 50);
    c.feed("U");
    EXPECT_EQ(c.drawing().currentColor, engine::Color::byLayer());
    EXPECT_EQ(integer(c, "CELWEIGHT"), -1);
    c.run({"DDPTYPE", "34", "-5"});
    EXPECT_EQ(integer(c, "PDMODE"), 34);
    c.run({"POINTSTYLE", "7", "2", ""});  // 7 is no point symbol
    EXPECT_EQ(integer(c, "PDMODE"), 2);
    EXPECT_DOUBLE_EQ(engine::sysVarReal(c.drawing(), "PDSIZE"), -5);
}

TEST(DwgUnits, ScalesWhatIsDrawn) {
    DrawConsole c;
    engine::LineEntity& line = c.addLine(0, 0, 254, 0);
    c.run({"DWGUNITS", "1", "4", "3", "", "", "", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(integer(c, "INSUNITS"), 1);
    EXPECT_EQ(integer(c, "LUNITS"), 4);
    EXPECT_NEAR(line.end.x, 10, 1e-12);
    c.feed("U");
    EXPECT_DOUBLE_EQ(c.last<engine::LineEntity>().end.x, 254);
    EXPECT_EQ(integer(c, "INSUNITS"), 4);
    // The same unit: nothing to scale, and no question about it.
    c.run({"DWGUNITS", "", "", "", "", ""});
    EXPECT_TRUE(c.idle());
}

TEST(WindowFurniture, RefusedOrKept) {
    DrawConsole c;
    const Lines options{"\"Options\" needs its dialog, which kovacad-cli cannot show; cancelled.",
                        "Use SETVAR instead."};
    EXPECT_EQ(c.feed("OP"), options);
    EXPECT_EQ(c.feed("DS").front(),
              "\"Drafting Settings\" needs its dialog, which kovacad-cli cannot show; cancelled.");
    EXPECT_TRUE(c.idle());
    EXPECT_TRUE(c.feed("CLEANSCREENON").empty());
    EXPECT_EQ(c.feed("MENUBAR"), Lines{"MENUBAR = 1"});
    EXPECT_EQ(c.feed("MENUBAR"), Lines{"MENUBAR = 0"});
    EXPECT_EQ(c.feed("'THEME"), Lines{"COLORTHEME = 1"});
    EXPECT_FALSE(c.document.history().canUndo());
}

TEST(WindowFurniture, WorkspacesByName) {
    DrawConsole c;
    c.run({"WORKSPACE", "SA", "Mine"});
    EXPECT_EQ(c.run({"WS", "D", "mine"}).back(), "The current workspace cannot be deleted.");
    c.run({"WS", "", "Drafting"});
    c.run({"WS", "D", "mine"});
    EXPECT_EQ(c.run({"WS", "?"}), Lines{"Drafting (current)"});
    EXPECT_EQ(c.run({"WS", "E"}).back(), "\"Customize\" needs its dialog, which kovacad-cli cannot show; cancelled.");
}

TEST(PlotStyles, ConvertedBothWays) {
    DrawConsole c;
    EXPECT_EQ(c.run({"CONVERTPSTYLES", "office.stb"}).back(),
              "Drawing converted from Color dependent mode to Named plot style mode.");
    EXPECT_EQ(integer(c, "PSTYLEMODE"), 0);
    c.feed("U");
    EXPECT_EQ(integer(c, "PSTYLEMODE"), 1);
    c.feed("REDO");
    EXPECT_EQ(c.run({"CONVERTPSTYLES"}).back(),
              "Drawing converted from Named plot style mode to Color dependent mode.");
    EXPECT_EQ(integer(c, "PSTYLEMODE"), 1);
}

}  // namespace
}  // namespace kova::cmd
