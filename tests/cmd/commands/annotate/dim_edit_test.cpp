// Commands that edit dimensions, and those of dimension and text styles.
#include "cmd/draw_harness.hpp"
#include "engine/entities/dimensions/dimension.hpp"
#include "engine/entities/dimensions/dimension_layout.hpp"
#include "engine/entities/text.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::DimensionEntity;
using math::Vector2;

class DimEdit : public ::testing::Test {
protected:
    void SetUp() override { c.run({"DIMASSOC", "1", "DLI", "0,0", "100,0", "50,20"}); }
    DimensionEntity& d() { return dynamic_cast<DimensionEntity&>(*c.entities().front()); }
    DrawConsole c;
};

TEST_F(DimEdit, NewRotateObliqueHome) {
    c.run({"DIMEDIT", "N", "<> mm", "ALL", ""});
    EXPECT_EQ(d().text(), "100 mm");
    c.run({"DED", "R", "30", "ALL", ""});
    EXPECT_NEAR(d().textRotation, math::kPi / 6, 1e-12);
    c.run({"DED", "O", "ALL", "", "60"});
    EXPECT_NEAR(d().obliqueAngle, math::kPi / 3, 1e-12);
    c.run({"DED", "O", "ALL", "", ""});
    EXPECT_EQ(d().obliqueAngle, 0.0);
    c.run({"DED", "H", "ALL", ""});
    EXPECT_EQ(d().textRotation, 0.0);
    EXPECT_EQ(d().textOverride, "<> mm");
    c.feed("U");
    EXPECT_NEAR(d().textRotation, math::kPi / 6, 1e-12);
    EXPECT_EQ(c.run({"DED", "N", "x", ""}).back(), "No dimensions selected.");
}

TEST_F(DimEdit, TextPlaces) {
    c.run({"DIMTEDIT", "50,20", "150,30"});
    expectNear(engine::layoutDimension(d()).textMiddle, {150, 30});
    EXPECT_NEAR(d().dimLine.y, 30 - 0.625 - 1.25, 0.5);  // the line goes with its text
    c.run({"DIMTEDIT", "0,15", "L"});
    EXPECT_FALSE(d().hasUserText());
    EXPECT_LT(engine::layoutDimension(d()).textMiddle.x, 30);
    c.run({"DIMTED", "0,15", "R"});
    EXPECT_GT(engine::layoutDimension(d()).textMiddle.x, 70);
    c.run({"DIMTED", "0,15", "C"});
    EXPECT_NEAR(engine::layoutDimension(d()).textMiddle.x, 50, 1e-9);
    c.run({"DIMTED", "0,15", "A", "45"});
    EXPECT_NEAR(d().textRotation, math::kPi / 4, 1e-12);
    c.run({"DIMTED", "0,15", "H"});
    EXPECT_EQ(d().textRotation, 0.0);
}

TEST_F(DimEdit, SpacedFromABase) {
    c.run({"DLI", "0,0", "100,0", "50,33", "DLI", "0,0", "100,0", "50,90", "DLI", "0,0", "100,0", "120,50"});
    c.run({"DLI", "0,0", "100,50", "130,20"});
    const Lines lines = c.run({"DIMSPACE", "20,20", "ALL", "", "10"});
    EXPECT_EQ(lines.back(), "1 dimension not parallel to the base.");
    const auto all = c.entities();
    EXPECT_NEAR(static_cast<DimensionEntity*>(all[1])->dimLine.y, 30, 1e-9);
    EXPECT_NEAR(static_cast<DimensionEntity*>(all[3])->dimLine.y, 40, 1e-9);
    EXPECT_NEAR(static_cast<DimensionEntity*>(all[2])->dimLine.y, 50, 1e-9);
    c.run({"DIMSPACE", "20,20", "ALL", "", "0"});
    EXPECT_NEAR(static_cast<DimensionEntity*>(all[2])->dimLine.y, 20, 1e-9);
}

TEST_F(DimEdit, InspectionData) {
    c.run({"DIMINSPECT", "", "ALL", "", "A", "A1", "50%"});
    EXPECT_EQ(d().inspectShape, engine::InspectionShape::Angular);
    EXPECT_EQ(d().inspectLabel, "A1");
    EXPECT_EQ(d().inspectRate, "50%");
    c.run({"DIMINSPECT", "R", "ALL", ""});
    EXPECT_EQ(d().inspectShape, engine::InspectionShape::Off);
    EXPECT_TRUE(d().inspectLabel.empty());
}

TEST_F(DimEdit, Overrides) {
    c.run({"DIMOVERRIDE", "dimtxt", "-1"});
    EXPECT_EQ(c.prompt(), "Enter new value for dimension variable <2.5>:");  // asked again
    c.run({"7", "DIMBLK", "_DOT", "NOSUCH", "", "ALL", ""});
    EXPECT_DOUBLE_EQ(d().style().textHeight, 7);
    EXPECT_EQ(d().style().arrowBlock, "_DOT");
    EXPECT_TRUE(c.drawing().dimStyleOverrides.empty());  // new dimensions are not concerned
    c.run({"DOV", "C", "ALL", ""});
    EXPECT_DOUBLE_EQ(d().style().textHeight, 2.5);
    EXPECT_TRUE(c.idle());
}

TEST_F(DimEdit, StylesSavedRestoredApplied) {
    c.run({"DIMTXT", "6", "-DIMSTYLE", "S", "Big"});
    EXPECT_EQ(c.drawing().currentDimStyle, "Big");
    EXPECT_TRUE(c.drawing().dimStyleOverrides.empty());
    EXPECT_DOUBLE_EQ(c.drawing().dimStyles.find("big")->textHeight, 6);
    c.run({"DIMSTYLE", "A", "ALL", ""});
    EXPECT_EQ(d().dimStyleName, "Big");
    c.feed("U");
    EXPECT_EQ(d().dimStyleName, "Standard");
    c.run({"DIMASZ", "9", "DIMSTYLE", "R", "nosuch"});
    EXPECT_FALSE(c.idle());
    c.run({"standard"});
    EXPECT_EQ(c.drawing().currentDimStyle, "Standard");
    EXPECT_TRUE(c.drawing().dimStyleOverrides.empty());
    // An existing name is asked about, and kept when the answer is no.
    c.run({"DIMTXT", "8", "DIMSTYLE", "S", "Big", "N", ""});
    EXPECT_DOUBLE_EQ(c.drawing().dimStyles.find("Big")->textHeight, 6);
    const Lines compared = c.run({"DIMSTYLE", "R", "~Big", "Big"});
    EXPECT_NE(std::find(compared.begin(), compared.end(), "DIMTXT  6  8"), compared.end());
    EXPECT_EQ(c.run({"DIMSTYLE", "?", "B*"}).back(), "Big");
    EXPECT_GT(c.run({"DIMSTYLE", "ST"}).size(), 70u);
    c.run({"DIMSTYLE", "AN", "Y", "Notes"});
    EXPECT_TRUE(c.drawing().dimStyles.find("Notes")->annotative);
    c.run({"CANNOSCALE", "1:50", "DLI", "0,0", "100,0", "50,500"});
    EXPECT_NEAR(engine::layoutDimension(c.last<DimensionEntity>()).scale, 50, 1e-9);  // sizes suit the paper
    c.feed("U");
    // From a dimension the style comes with the dimension's own values.
    c.run({"DOV", "DIMTXT", "11", "", "ALL", "", "DIMSTYLE", "R", "", "0,15"});
    EXPECT_EQ(c.drawing().currentDimStyle, "Standard");
    EXPECT_DOUBLE_EQ(c.drawing().effectiveDimStyle().textHeight, 11);
    c.feed("U");
    EXPECT_EQ(c.drawing().currentDimStyle, "Notes");
}

TEST(TextStyles, MadeChangedListed) {
    DrawConsole c;
    c.run({"-STYLE", "Notes", "arial.ttf", "0", "0.8", "15", "N", "Y"});
    EXPECT_TRUE(c.idle());  // an outline font is never vertical
    const engine::TextStyle* style = c.drawing().textStyles.find("notes");
    ASSERT_NE(style, nullptr);
    EXPECT_EQ(style->fontFile, "arial.ttf");
    EXPECT_DOUBLE_EQ(style->widthFactor, 0.8);
    EXPECT_NEAR(style->obliqueAngle, math::toRadians(15), 1e-12);
    EXPECT_TRUE(style->upsideDown);
    EXPECT_EQ(c.drawing().currentTextStyle, "Notes");
    c.run({"STYLE", "", "romans,bigfont", "5", "-1", "", "120", "", "", "", "Y"});
    style = c.drawing().textStyles.find("notes");
    EXPECT_EQ(style->bigFontFile, "bigfont");
    EXPECT_DOUBLE_EQ(style->height, 5);
    EXPECT_DOUBLE_EQ(style->widthFactor, 0.8);  // what is out of range is asked again
    EXPECT_TRUE(style->vertical);
    EXPECT_TRUE(c.idle());
    c.run({"TEXT", "0,0", "0", "five high", ""});
    EXPECT_DOUBLE_EQ(c.last<engine::TextEntity>().height, 5);
    EXPECT_EQ(c.run({"ST", "?", "N*"}).size(), 2u);
    c.run({"a/b"});
    EXPECT_EQ(c.lines.back(), "Invalid style name.");
    c.run({"Other", "", "", "", "", "", "", ""});
    EXPECT_EQ(c.drawing().currentTextStyle, "Other");
    c.feed("U");
    EXPECT_EQ(c.drawing().textStyles.find("Other"), nullptr);
    EXPECT_EQ(c.drawing().currentTextStyle, "Notes");
}

}  // namespace
}  // namespace kova::cmd
