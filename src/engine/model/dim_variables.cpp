#include "engine/model/drawing.hpp"
#include "engine/model/styles.hpp"
#include "strings/case_fold.hpp"

namespace kova::engine {

namespace {

using S = DimStyle;

// By name, for the binary search. The code is that of a DIMSTYLE record.
constexpr DimVariable kVariables[] = {
    {"DIMADEC", &S::angularDecimals, 179},
    {"DIMALT", &S::altUnits, 170},
    {"DIMALTD", &S::altDecimals, 171},
    {"DIMALTF", &S::altFactor, 143},
    {"DIMALTRND", &S::altRounding, 148},
    {"DIMALTTD", &S::altToleranceDecimals, 274},
    {"DIMALTTZ", &S::altToleranceZeros, 286},
    {"DIMALTU", &S::altFormat, 273},
    {"DIMALTZ", &S::altZeros, 285},
    {"DIMAPOST", &S::altPostfix, 4},
    {"DIMARCSYM", &S::arcSymbol, 90},
    {"DIMASZ", &S::arrowSize, 41},
    {"DIMATFIT", &S::fitOption, 289},
    {"DIMAUNIT", &S::angularUnitFormat, 275},
    {"DIMAZIN", &S::angularZeroSuppression, 79},
    {"DIMBLK", &S::arrowBlock, 342},
    {"DIMBLK1", &S::arrowBlock1, 343},
    {"DIMBLK2", &S::arrowBlock2, 344},
    {"DIMCEN", &S::centerMark, 141},
    {"DIMCLRD", &S::dimLineColor, 176},
    {"DIMCLRE", &S::extLineColor, 177},
    {"DIMCLRT", &S::textColor, 178},
    {"DIMDEC", &S::decimalPlaces, 271},
    {"DIMDLE", &S::dimLineGap, 46},
    {"DIMDLI", &S::baselineSpacing, 43},
    {"DIMDSEP", &S::decimalSeparator, 278},
    {"DIMEXE", &S::extExtension, 44},
    {"DIMEXO", &S::extGap, 42},
    {"DIMFRAC", &S::fractionFormat, 276},
    {"DIMFXL", &S::fixedExtLength, 49},
    {"DIMFXLON", &S::fixedExtLines, 290},
    {"DIMGAP", &S::textGap, 147},
    {"DIMJOGANG", &S::jogAngle, 50},
    {"DIMJUST", &S::textJustify, 280},
    {"DIMLDRBLK", &S::leaderArrowBlock, 341},
    {"DIMLFAC", &S::linearScale, 144},
    {"DIMLIM", &S::showLimits, 72},
    {"DIMLTEX1", &S::extLine1Linetype, 346},
    {"DIMLTEX2", &S::extLine2Linetype, 347},
    {"DIMLTYPE", &S::dimLineLinetype, 345},
    {"DIMLUNIT", &S::linearUnitFormat, 277},
    {"DIMLWD", &S::dimLineLineweight, 371},
    {"DIMLWE", &S::extLineLineweight, 372},
    {"DIMPOST", &S::postfix, 3},
    {"DIMRND", &S::rounding, 45},
    {"DIMSAH", &S::separateArrowBlocks, 173},
    {"DIMSCALE", &S::scaleFactor, 40},
    {"DIMSD1", &S::suppressDimLine1, 281},
    {"DIMSD2", &S::suppressDimLine2, 282},
    {"DIMSE1", &S::suppressExtLine1, 75},
    {"DIMSE2", &S::suppressExtLine2, 76},
    {"DIMSOXD", &S::suppressOutsideDimLines, 175},
    {"DIMTAD", &S::textVertical, 77},
    {"DIMTDEC", &S::toleranceDecimals, 272},
    {"DIMTFAC", &S::toleranceTextScale, 146},
    {"DIMTFILL", &S::textFill, 69},
    {"DIMTFILLCLR", &S::textFillColor, 70},
    {"DIMTIH", &S::textInsideHorizontal, 73},
    {"DIMTIX", &S::textInsideForced, 174},
    {"DIMTM", &S::toleranceMinus, 48},
    {"DIMTMOVE", &S::textMovement, 279},
    {"DIMTOFL", &S::forceDimLineInside, 172},
    {"DIMTOH", &S::textOutsideHorizontal, 74},
    {"DIMTOL", &S::showTolerance, 71},
    {"DIMTOLJ", &S::toleranceVertical, 283},
    {"DIMTP", &S::tolerancePlus, 47},
    {"DIMTSZ", &S::tickSize, 142},
    {"DIMTVP", &S::textVerticalPosition, 145},
    {"DIMTXSTY", &S::textStyle, 340},
    {"DIMTXT", &S::textHeight, 140},
    {"DIMTZIN", &S::toleranceZeros, 284},
    {"DIMUPT", &S::userPositionedText, 288},
    {"DIMZIN", std::monostate{}, 78},
};

constexpr bool inOrder() {
    for (std::size_t i = 1; i < std::size(kVariables); ++i)
        if (!(kVariables[i - 1].name < kVariables[i].name)) return false;
    return true;
}
static_assert(std::size(kVariables) == kDimVariableCount);
static_assert(inOrder(), "dimension variables must stand in the order of their names");

/// A whole number of an int32's range.
std::optional<std::int32_t> wholeNumber(double value) {
    if (!(std::abs(value) <= 2147483647.0) || value != std::trunc(value)) return std::nullopt;
    return static_cast<std::int32_t>(value);
}

/// Reads the member a variable stands for.
struct Getter {
    const DimStyle& style;
    DimValue operator()(double S::*m) const { return style.*m; }
    DimValue operator()(std::int32_t S::*m) const { return static_cast<double>(style.*m); }
    DimValue operator()(bool S::*m) const { return style.*m ? 1.0 : 0.0; }
    DimValue operator()(Name S::*m) const { return (style.*m).str(); }
    DimValue operator()(Color S::*m) const { return static_cast<double>((style.*m).bareIndex()); }
    DimValue operator()(std::string S::*m) const { return style.*m; }
    DimValue operator()(std::monostate) const { return static_cast<double>(style.zeroSuppression()); }
};

struct NumberSetter {
    DimStyle& style;
    double value;
    bool operator()(double S::*m) const {
        if (!std::isfinite(value)) return false;
        style.*m = value;
        return true;
    }
    bool operator()(std::int32_t S::*m) const {
        const std::optional<std::int32_t> number = wholeNumber(value);
        if (number) style.*m = *number;
        return number.has_value();
    }
    bool operator()(bool S::*m) const {
        if (!std::isfinite(value)) return false;
        style.*m = value != 0.0;
        return true;
    }
    bool operator()(Color S::*m) const {
        const std::optional<std::int32_t> number = wholeNumber(value);
        const std::optional<Color> color = number ? Color::fromBareIndex(*number) : std::nullopt;
        // A true colour stays when it is set to the index that it is shown as.
        if (color && (style.*m).bareIndex() != *number) style.*m = *color;
        return color.has_value();
    }
    bool operator()(std::monostate) const {
        const std::optional<std::int32_t> number = wholeNumber(value);
        if (!number || *number < 0 || *number > 15) return false;
        style.setZeroSuppression(*number);
        return true;
    }
    template <class Other>
    bool operator()(Other) const {
        return false;
    }
};

struct TextSetter {
    DimStyle& style;
    const std::string& value;
    bool operator()(Name S::*m) const {
        style.*m = Name(value);
        return true;
    }
    bool operator()(std::string S::*m) const {
        style.*m = value;
        return true;
    }
    template <class Other>
    bool operator()(Other) const {
        return false;
    }
};

}  // namespace

std::span<const DimVariable> dimVariables() { return kVariables; }

const DimVariable* findDimVariable(std::string_view name) {
    char upper[16];
    if (name.size() > sizeof upper) return nullptr;
    std::transform(name.begin(), name.end(), upper, strings::upperAscii);
    const std::string_view key(upper, name.size());
    const auto* it = std::lower_bound(std::begin(kVariables), std::end(kVariables), key,
                                      [](const DimVariable& v, std::string_view k) { return v.name < k; });
    return it != std::end(kVariables) && it->name == key ? it : nullptr;
}

DimValue dimValue(const DimStyle& style, const DimVariable& variable) {
    return std::visit(Getter{style}, variable.member);
}

bool setDimValue(DimStyle& style, const DimVariable& variable, const DimValue& value) {
    if (const double* number = std::get_if<double>(&value))
        return std::visit(NumberSetter{style, *number}, variable.member);
    return std::visit(TextSetter{style, std::get<std::string>(value)}, variable.member);
}

void overrideDimStyle(DimStyle& style, const std::map<std::string, double>& numbers,
                      const std::map<std::string, std::string>& names) {
    for (const auto& [name, value] : numbers)
        if (const DimVariable* variable = findDimVariable(name)) setDimValue(style, *variable, value);
    for (const auto& [name, value] : names)
        if (const DimVariable* variable = findDimVariable(name)) setDimValue(style, *variable, value);
}

DimStyle Drawing::effectiveDimStyle() const {
    DimStyle style = dimStyleOrStandard(currentDimStyle);
    overrideDimStyle(style, dimStyleOverrides, dimStyleNameOverrides);
    return style;
}

}  // namespace kova::engine
