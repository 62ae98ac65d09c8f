#include "engine/entities/dimensions/dimension_text.hpp"

#include <gtest/gtest.h>

#include "engine/entities/dimensions/dimension_samples.hpp"
#include "engine/model/drawing.hpp"
#include "engine/text/mtext_layout.hpp"
#include "math/angles.hpp"

// What dimensions say.

namespace kova::engine {
namespace {

using math::toRadians;

std::string plain(const DimStyle& style, double value, std::string_view given = {},
                  DimMeasure measure = DimMeasure::Length) {
    return plainText(dimTextContent(style, {.value = value, .measure = measure, .textOverride = given}));
}

TEST(DimensionText, UnitsRoundingAndAffixes) {
    DimStyle s;
    EXPECT_EQ(plain(s, 123.456), "123.46");
    EXPECT_EQ(plain(s, 100), "100");
    s.setZeroSuppression(0);
    s.rounding = 0.25;
    EXPECT_EQ(plain(s, 1.13), "1.25");
    s.rounding = 5;
    EXPECT_EQ(plain(s, 12.5), "15.00");
    s = {};
    s.linearScale = 2.0;
    s.decimalSeparator = ',';
    EXPECT_EQ(plain(s, 6.25), "12,5");
    s.linearScale = -2.0;  // counts in layouts only
    EXPECT_EQ(plain(s, 6.25), "6,25");
    EXPECT_EQ(dimTextContent(s, {.value = 6.25, .paperSpace = true}), "12,5");
    s = {};
    s.postfix = " mm";
    EXPECT_EQ(plain(s, 5), "5 mm");
    EXPECT_EQ(dimTextContent(s, {.value = 5, .prefix = "R"}), "R5 mm");
    s.postfix = "ca. <> mm";
    EXPECT_EQ(dimTextContent(s, {.value = 5, .prefix = "R"}), "ca. 5 mm");
    s = {};
    s.linearUnitFormat = 4;
    s.decimalPlaces = 4;
    s.setZeroSuppression(1);
    EXPECT_EQ(dimTextContent(s, {.value = 15.5}), "1'-3{\\A1;\\S1/2;}\"");
    s.toleranceTextScale = 0.6;
    EXPECT_EQ(dimTextContent(s, {.value = 15.5}), "1'-3{\\A1;\\H0.6x;\\S1/2;}\"");
    s.toleranceTextScale = 1.0;
    EXPECT_EQ(plain(s, 15.5), "1'-31/2\"");
    s.fractionFormat = 2;
    EXPECT_EQ(plain(s, 15.5), "1'-3 1/2\"");
}

TEST(DimensionText, Angles) {
    DimStyle s;
    const auto text = [&](double degrees) { return plain(s, toRadians(degrees), {}, DimMeasure::Angle); };
    EXPECT_EQ(text(45.4), "45°");
    s.angularDecimals = -1;  // as many as lengths have
    EXPECT_EQ(text(45.4), "45.40°");
    s.angularZeroSuppression = 2;
    EXPECT_EQ(text(45.4), "45.4°");
    s.angularUnitFormat = 1;
    s.angularDecimals = 4;
    s.angularZeroSuppression = 0;
    EXPECT_EQ(text(45.5), "45°30'0\"");
    s.angularUnitFormat = 2;
    s.angularDecimals = 1;
    EXPECT_EQ(text(45), "50.0g");
    // Neither the scale of lengths nor their affixes nor alternate units belong to angles.
    s = {};
    s.linearScale = 3;
    s.postfix = "mm";
    s.altUnits = true;
    EXPECT_EQ(text(45), "45°");
    s.showTolerance = true;
    s.tolerancePlus = s.toleranceMinus = 0.5;
    EXPECT_EQ(text(45), "45°±0.5°");
}

TEST(DimensionText, TolerancesAndLimits) {
    DimStyle s;
    s.showTolerance = true;
    s.toleranceVertical = 1;
    s.tolerancePlus = s.toleranceMinus = 0.1;
    EXPECT_EQ(plain(s, 25), "25±0.1");
    s.toleranceZeros = 0;
    s.toleranceDecimals = 3;
    EXPECT_EQ(plain(s, 25), "25±0.100");
    s.toleranceTextScale = 0.7;
    EXPECT_EQ(dimTextContent(s, {.value = 25}), "25{\\H0.7x;%%p0.100}");
    s.toleranceMinus = 0.2;
    EXPECT_EQ(dimTextContent(s, {.value = 25}), "25{\\A1;\\H0.7x;\\S+0.100^ -0.200;}");
    s.toleranceTextScale = 1.0;
    s.toleranceVertical = 0;
    s.toleranceMinus = 0;  // nothing has no sign
    EXPECT_EQ(dimTextContent(s, {.value = 25}), "25{\\A0;\\S+0.100^  0.000;}");
    s.toleranceMinus = -0.05;  // both on the same side
    EXPECT_EQ(dimTextContent(s, {.value = 25}), "25{\\A0;\\S+0.100^ +0.050;}");

    s = {};
    s.showLimits = true;
    s.toleranceVertical = 2;
    s.tolerancePlus = 0.1;
    s.toleranceMinus = 0.25;
    EXPECT_EQ(dimTextContent(s, {.value = 25, .prefix = "R"}), "{\\A2;\\SR25.1^ R24.75;}");
    // Fractions and affixes cannot break the stack.
    s.linearUnitFormat = 5;
    s.postfix = ";x";
    EXPECT_EQ(dimTextContent(s, {.value = 25}), "{\\A2;\\S25\\;x^ 24 3\\/4\\;x;}");
    EXPECT_EQ(plain(s, 25), "25;x 24 3/4;x");
}

TEST(DimensionText, AlternateUnits) {
    DimStyle s;
    s.altUnits = true;
    EXPECT_EQ(plain(s, 254), "254 [10.000]");
    s.altDecimals = 1;
    s.altPostfix = "[]\"";
    EXPECT_EQ(plain(s, 254), "254 [10.0\"]");
    s.altRounding = 3;
    EXPECT_EQ(plain(s, 254), "254 [9.0\"]");
    s.altRounding = 0;
    s.postfix = "<>\\X";  // below the line
    EXPECT_EQ(plain(s, 254), "254\n[10.0\"]");
    s.postfix = {};
    s.altFormat = 6;
    s.altDecimals = 4;
    s.altPostfix = {};
    EXPECT_EQ(plain(s, 393.7), "393.7 [1'-3 1/2\"]");
    s.showTolerance = true;
    s.tolerancePlus = s.toleranceMinus = 25.4;
    s.altToleranceDecimals = 2;
    EXPECT_EQ(plain(s, 254), "254±25.4 [10\"±1\"]");
}

TEST(DimensionText, Overrides) {
    DimStyle s;
    EXPECT_EQ(plain(s, 5, "<>"), "5");
    EXPECT_EQ(plain(s, 5, " "), "");
    EXPECT_EQ(plain(s, 5, "about"), "about");
    EXPECT_EQ(plain(s, 5, "2x <> (<>)"), "2x 5 (5)");
    EXPECT_EQ(plain(s, 25.4, "<> or []"), "25.4 or [1.000]");
    s.altUnits = true;
    EXPECT_EQ(plain(s, 25.4, "2x <>"), "2x 25.4 [1.000]");
    EXPECT_EQ(plain(s, 25.4, "[] for <>"), "[1.000] for 25.4");
    std::string many;
    for (int i = 0; i < 100000; ++i) many += "<>";
    EXPECT_LT(plain(s, 5, many).size(), 100000u);

    const DimTextSplit split = splitDimText("a\\\\Xb\\Xc");
    EXPECT_TRUE(split.split);
    EXPECT_EQ(split.above, "a\\\\Xb");
    EXPECT_EQ(split.below, "c");
    EXPECT_FALSE(splitDimText("plain").split);
}

TEST(DimensionText, OfTheKinds) {
    EXPECT_EQ(radial(DimensionType::Radius, {0, 0}, {7.5, 0}, {20, 0}).text(), "R7.5");
    EXPECT_EQ(radial(DimensionType::Diameter, {-5, 0}, {5, 0}, {20, 0}).text(),
              "\u2300"
              "10");
    EXPECT_EQ(angular({0, 0}, {10, 0}, {0, 10}, {9, 9}).text(), "90°");
    DimensionEntity d = linear({0, 0}, {20, 0}, {0, 9});
    d.styleOverrides = {{"DIMDEC", 1}, {"DIMZIN", 0}, {"DIMTOL", 1}, {"DIMTP", 0.2}, {"NOSUCH", 7}};
    d.nameOverrides = {{"DIMPOST", "<>cm"}};
    EXPECT_EQ(d.text(), "20.0cm+0.2cm  0cm");
}

}  // namespace
}  // namespace kova::engine
