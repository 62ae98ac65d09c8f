#include "engine/model/styles.hpp"

namespace kova::engine {

DimStyle DimStyle::imperial() {
    DimStyle style;
    style.arrowSize = 0.18;
    style.textHeight = 0.18;
    style.textGap = 0.09;
    style.extGap = 0.0625;
    style.extExtension = 0.18;
    style.baselineSpacing = 0.38;
    style.decimalPlaces = 4;
    style.setZeroSuppression(0);
    style.textVertical = 0;
    style.textInsideHorizontal = true;
    style.textOutsideHorizontal = true;
    style.forceDimLineInside = false;
    style.toleranceDecimals = 4;
    style.toleranceVertical = 1;
    style.toleranceZeros = 0;
    style.altFactor = 25.4;
    style.altDecimals = 2;
    style.altToleranceDecimals = 2;
    style.centerMark = 0.09;
    return style;
}

void DimStyle::setZeroSuppression(std::int32_t dimzin) {
    feetInches = dimzin & 3;
    suppressLeadingZeros = (dimzin & 4) != 0;
    suppressTrailingZeros = (dimzin & 8) != 0;
}

void DimStyle::describe(FieldVisitor& v) {
    v.name("name", name);
    v.length("arrowSize", arrowSize);
    v.length("textHeight", textHeight);
    v.length("textGap", textGap);
    v.length("extGap", extGap);
    v.length("extExtension", extExtension);
    v.length("baselineSpacing", baselineSpacing);
    v.integer("decimalPlaces", decimalPlaces);
    v.number("scaleFactor", scaleFactor);
    v.name("textStyle", textStyle);
    v.length("dimLineGap", dimLineGap);
    v.boolean("suppressLeadingZeros", suppressLeadingZeros);
    v.boolean("suppressTrailingZeros", suppressTrailingZeros);
    v.number("linearScale", linearScale);
    v.number("rounding", rounding);
    v.boolean("suppressExtLine1", suppressExtLine1);
    v.boolean("suppressExtLine2", suppressExtLine2);
    v.color("dimLineColor", dimLineColor);
    v.color("extLineColor", extLineColor);
    v.color("textColor", textColor);
    v.integer("textVertical", textVertical);
    v.boolean("textInsideHorizontal", textInsideHorizontal);
    v.integer("textJustify", textJustify);
    v.boolean("showTolerance", showTolerance);
    v.boolean("showLimits", showLimits);
    v.number("tolerancePlus", tolerancePlus);
    v.number("toleranceMinus", toleranceMinus);
    v.integer("toleranceDecimals", toleranceDecimals);
    v.number("toleranceTextScale", toleranceTextScale);
    v.name("arrowBlock", arrowBlock);
    v.name("arrowBlock1", arrowBlock1);
    v.name("arrowBlock2", arrowBlock2);
    v.name("leaderArrowBlock", leaderArrowBlock);
    v.name("dimLineLinetype", dimLineLinetype);
    v.name("extLine1Linetype", extLine1Linetype);
    v.name("extLine2Linetype", extLine2Linetype);
    v.boolean("separateArrowBlocks", separateArrowBlocks);
    v.boolean("altUnits", altUnits);
    v.number("altFactor", altFactor);
    v.integer("altDecimals", altDecimals);
    v.integer("altToleranceDecimals", altToleranceDecimals);
    v.integer("altFormat", altFormat);
    v.length("centerMark", centerMark);
    v.length("tickSize", tickSize);
    v.integer("textMovement", textMovement);
    v.integer("linearUnitFormat", linearUnitFormat);
    v.integer("fractionFormat", fractionFormat);
    v.integer("angularUnitFormat", angularUnitFormat);
    v.integer("angularDecimals", angularDecimals);
    v.boolean("textOutsideHorizontal", textOutsideHorizontal);
    v.boolean("forceDimLineInside", forceDimLineInside);
    v.integer("angularZeroSuppression", angularZeroSuppression);
    v.boolean("userPositionedText", userPositionedText);
    v.boolean("textInsideForced", textInsideForced);
    v.boolean("suppressDimLine1", suppressDimLine1);
    v.boolean("suppressDimLine2", suppressDimLine2);
    v.integer("arcSymbol", arcSymbol);
    v.angle("jogAngle", jogAngle);
    // The rest is written only where it differs from a new style.
    v.integer("feetInches", feetInches, 0);
    v.text("postfix", postfix, "");
    v.text("altPostfix", altPostfix, "");
    v.integer("fitOption", fitOption, 3);
    v.integer("decimalSeparator", decimalSeparator, '.');
    v.integer("dimLineLineweight", dimLineLineweight, -2);
    v.integer("extLineLineweight", extLineLineweight, -2);
    v.integer("toleranceVertical", toleranceVertical, 0);
    v.integer("toleranceZeros", toleranceZeros, 8);
    v.integer("altZeros", altZeros, 0);
    v.integer("altToleranceZeros", altToleranceZeros, 0);
    v.number("altRounding", altRounding, 0.0);
    v.number("textVerticalPosition", textVerticalPosition, 0.0);
    v.integer("textFill", textFill, 0);
    v.color("textFillColor", textFillColor);
    v.boolean("suppressOutsideDimLines", suppressOutsideDimLines, false);
    v.boolean("fixedExtLines", fixedExtLines, false);
    v.length("fixedExtLength", fixedExtLength, 1.0);
    v.boolean("annotative", annotative, false);
}

}  // namespace kova::engine
