#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "engine/model/color.hpp"
#include "engine/model/describe.hpp"

namespace kova::engine {

struct TextStyle {
    Name name = commonNames().standard;
    Name fontFile{"txt.shx"};
    Name bigFontFile;
    double height = 0.0;       ///< 0: asked for with every text
    double widthFactor = 1.0;
    double obliqueAngle = 0.0;  ///< radians
    bool backward = false;
    bool upsideDown = false;
    bool vertical = false;

    void describe(FieldVisitor& v);
};

/// A shape or text standing in a linetype's pattern.
struct LinetypeElement {
    std::int32_t flags = 0;  ///< 1 absolute rotation, 2 text, 4 shape; 0: a plain dash
    std::int32_t shape = 0;
    Name style;
    double scale = 1.0;
    double rotation = 0.0;  ///< radians
    double offsetX = 0.0;
    double offsetY = 0.0;
    std::string text;

    void describe(FieldVisitor& v);
};

struct Linetype {
    Name name;
    std::string description;
    std::vector<double> pattern;            ///< positive dash, negative gap, 0 dot; drawing units
    bool standard = false;                  ///< one of the program's built-in linetypes
    std::int32_t flags = 0;
    std::vector<LinetypeElement> elements;  ///< empty, or one for each entry of the pattern

    /// Sum of the absolute dash lengths.
    double patternLength() const;
    void describe(FieldVisitor& v);
};

/// A dimension style. Each member is the dimension variable named behind it; the initial values are metric.
struct DimStyle {
    /// The style "Standard" with the imperial sizes, which are also those of members that a DXF record leaves out.
    static DimStyle imperial();

    Name name = commonNames().standard;
    double arrowSize = 2.5;             // DIMASZ
    double textHeight = 2.5;            // DIMTXT
    double textGap = 0.625;             // DIMGAP
    double extGap = 0.625;              // DIMEXO
    double extExtension = 1.25;         // DIMEXE
    double baselineSpacing = 3.75;      // DIMDLI
    std::int32_t decimalPlaces = 2;     // DIMDEC
    double scaleFactor = 1.0;           // DIMSCALE
    Name textStyle = commonNames().standard;  // DIMTXSTY
    double dimLineGap = 0.0;            // DIMDLE
    bool suppressLeadingZeros = false;  // DIMZIN bit 4
    bool suppressTrailingZeros = true;  // DIMZIN bit 8
    std::int32_t feetInches = 0;        // DIMZIN bits 1, 2
    double linearScale = 1.0;           // DIMLFAC
    double rounding = 0.0;              // DIMRND
    bool suppressExtLine1 = false;      // DIMSE1
    bool suppressExtLine2 = false;      // DIMSE2
    Color dimLineColor = Color::byBlock();  // DIMCLRD
    Color extLineColor = Color::byBlock();  // DIMCLRE
    Color textColor = Color::byBlock();     // DIMCLRT
    std::int32_t textVertical = 1;      // DIMTAD
    bool textInsideHorizontal = false;  // DIMTIH
    std::int32_t textJustify = 0;       // DIMJUST
    bool showTolerance = false;         // DIMTOL
    bool showLimits = false;            // DIMLIM
    double tolerancePlus = 0.0;         // DIMTP
    double toleranceMinus = 0.0;        // DIMTM
    std::int32_t toleranceDecimals = 2;  // DIMTDEC
    double toleranceTextScale = 1.0;    // DIMTFAC
    Name arrowBlock;                    // DIMBLK
    Name arrowBlock1;                   // DIMBLK1
    Name arrowBlock2;                   // DIMBLK2
    Name leaderArrowBlock;              // DIMLDRBLK
    Name dimLineLinetype = commonNames().byBlock;   // DIMLTYPE
    Name extLine1Linetype = commonNames().byBlock;  // DIMLTEX1
    Name extLine2Linetype = commonNames().byBlock;  // DIMLTEX2
    bool separateArrowBlocks = false;   // DIMSAH
    bool altUnits = false;              // DIMALT
    double altFactor = 0.03937007874;   // DIMALTF
    std::int32_t altDecimals = 3;       // DIMALTD
    std::int32_t altToleranceDecimals = 3;  // DIMALTTD
    std::int32_t altFormat = 2;         // DIMALTU
    double centerMark = 2.5;            // DIMCEN
    double tickSize = 0.0;              // DIMTSZ
    std::int32_t textMovement = 0;      // DIMTMOVE
    std::int32_t linearUnitFormat = 2;  // DIMLUNIT
    std::int32_t fractionFormat = 0;    // DIMFRAC
    std::int32_t angularUnitFormat = 0;  // DIMAUNIT
    std::int32_t angularDecimals = 0;   // DIMADEC
    bool textOutsideHorizontal = false;  // DIMTOH
    bool forceDimLineInside = true;     // DIMTOFL
    std::int32_t angularZeroSuppression = 0;  // DIMAZIN
    bool userPositionedText = false;    // DIMUPT
    bool textInsideForced = false;      // DIMTIX
    bool suppressDimLine1 = false;      // DIMSD1
    bool suppressDimLine2 = false;      // DIMSD2
    std::int32_t arcSymbol = 0;         // DIMARCSYM
    double jogAngle = 0.7853981633974483;  // DIMJOGANG, radians
    std::string postfix;                // DIMPOST
    std::string altPostfix;             // DIMAPOST
    std::int32_t fitOption = 3;         // DIMATFIT
    std::int32_t decimalSeparator = '.';  // DIMDSEP
    std::int32_t dimLineLineweight = -2;  // DIMLWD
    std::int32_t extLineLineweight = -2;  // DIMLWE
    std::int32_t toleranceVertical = 0;  // DIMTOLJ
    std::int32_t toleranceZeros = 8;    // DIMTZIN
    std::int32_t altZeros = 0;          // DIMALTZ
    std::int32_t altToleranceZeros = 0;  // DIMALTTZ
    double altRounding = 0.0;           // DIMALTRND
    double textVerticalPosition = 0.0;  // DIMTVP
    std::int32_t textFill = 0;          // DIMTFILL
    Color textFillColor = Color::byBlock();  // DIMTFILLCLR
    bool suppressOutsideDimLines = false;    // DIMSOXD
    bool fixedExtLines = false;         // DIMFXLON
    double fixedExtLength = 1.0;        // DIMFXL
    bool annotative = false;

    /// DIMZIN as one number.
    std::int32_t zeroSuppression() const {
        return feetInches + (suppressLeadingZeros ? 4 : 0) + (suppressTrailingZeros ? 8 : 0);
    }
    void setZeroSuppression(std::int32_t dimzin);
    void describe(FieldVisitor& v);
};

/// A dimension variable: how its name reaches a member of DimStyle.
struct DimVariable {
    std::string_view name;  ///< "DIMTXT"
    std::variant<double DimStyle::*, std::int32_t DimStyle::*, bool DimStyle::*, Name DimStyle::*, Color DimStyle::*,
                 std::string DimStyle::*, std::monostate>
        member;              ///< monostate: DIMZIN, which is spread over three members
    std::int16_t dxfCode = 0;  ///< group code in a DXF DIMSTYLE record
};
inline constexpr std::size_t kDimVariableCount = 73;
/// All dimension variables, in the order of their names.
std::span<const DimVariable> dimVariables();
/// Null when there is no dimension variable of that name (case ignored).
const DimVariable* findDimVariable(std::string_view name);

/// A dimension variable's value as overrides hold it: numbers, switches (0, 1) and colours (bare index) as a number;
/// names and texts as text.
using DimValue = std::variant<double, std::string>;
DimValue dimValue(const DimStyle& style, const DimVariable& variable);
/// Sets the member; false, with nothing changed, when the value is of the wrong kind, not finite, outside the
/// member's range or no colour.
bool setDimValue(DimStyle& style, const DimVariable& variable, const DimValue& value);
/// Puts overrides (by variable name) over a style; unknown names and unfit values are passed over.
void overrideDimStyle(DimStyle& style, const std::map<std::string, double>& numbers,
                      const std::map<std::string, std::string>& names);

struct MLeaderStyle {
    Name name = commonNames().standard;
    std::int32_t contentType = 2;  ///< 0 none, 1 block, 2 multiline text
    double textHeight = 4.0;
    double arrowSize = 4.0;
    bool hasLanding = true;
    bool hasDogleg = true;
    double landingGap = 2.0;
    double landingDistance = 8.0;
    Name textStyle = commonNames().standard;
    double scaleFactor = 1.0;
    std::string defaultText;
    std::int32_t leaderLineType = 1;  ///< 0 invisible, 1 straight, 2 spline
    Color leaderColor = Color::byBlock();
    Name leaderLinetype = commonNames().byBlock;
    std::int32_t leaderLineweight = -2;
    std::int32_t maxLeaderPoints = 2;
    double firstSegmentAngle = 0.0;   ///< radians
    double secondSegmentAngle = 0.0;  ///< radians
    Name arrowBlock;
    Color textColor = Color::byBlock();
    bool textFrame = false;
    std::int32_t textLeftAttachment = 1;
    std::int32_t textRightAttachment = 1;
    std::int32_t textAngleType = 1;
    std::int32_t textAlignment = 0;
    bool textAlignAlwaysLeft = false;
    double alignSpace = 4.0;
    std::int32_t textAttachmentDirection = 0;
    std::int32_t topTextAttachment = 9;
    std::int32_t bottomTextAttachment = 9;
    bool extendLeaderToText = false;
    Name block;
    Color blockColor = Color::byBlock();
    double blockScale = 1.0;
    bool blockScaleEnabled = true;
    double blockRotation = 0.0;  ///< radians
    bool blockRotationEnabled = true;
    std::int32_t blockConnection = 0;
    double breakGapSize = 3.75;
    bool annotative = false;
    std::int32_t drawMLeaderOrder = 1;
    std::int32_t drawLeaderOrder = 0;

    void describe(FieldVisitor& v);
};

struct TableStyleRow {
    std::int32_t alignment = 5;
    Color textColor = Color::byBlock();
    Color fillColor = Color::byBlock();
    bool fillEnabled = false;

    void describe(FieldVisitor& v);
};

struct TableStyle {
    Name name = commonNames().standard;
    double textHeight = 4.5;
    double headerTextHeight = 4.5;
    double titleTextHeight = 6.0;
    Name textStyle = commonNames().standard;
    double cellMargin = 1.5;
    double defaultRowHeight = 9.0;
    double defaultColWidth = 63.5;
    std::int32_t borderLineweight = -2;
    std::int32_t gridLineweight = -2;
    bool hasTitle = true;
    bool hasHeader = true;
    bool flowUp = false;
    double verticalMargin = 1.5;
    TableStyleRow data{2};
    TableStyleRow header{5};
    TableStyleRow title{5};

    void describe(FieldVisitor& v);
};

}  // namespace kova::engine
