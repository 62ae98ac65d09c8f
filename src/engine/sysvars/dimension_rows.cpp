// The dimension variables. Each reads the current dimension style with the overrides in force and sets an override,
// which goes again when it equals the style's own value.
#include "engine/model/drawing.hpp"
#include "engine/entities/dimensions/arrowheads.hpp"
#include "engine/sysvars/rows.hpp"
#include "math/angles.hpp"
#include "strings/utf8.hpp"

namespace kova::engine::rows {

namespace {

/// What a dimension variable's row holds besides its member.
struct Extra {
    std::string_view name;
    double minimum;
    double maximum;
    int headerCode;
    std::string_view description;
    bool aboveMinimum = false;
};

constexpr double kAny = kSysVarNoLimit;

// In the order of dimVariables(); equal limits: no range.
constexpr Extra kExtras[] = {
    {"DIMADEC", -1, 8, 70, "Decimals of angles; -1: as many as lengths"},
    {"DIMALT", 0, 1, 70, "Alternate units shown"},
    {"DIMALTD", 0, 8, 70, "Decimals of alternate units"},
    {"DIMALTF", 0, kAny, 40, "Factor of alternate units", true},
    {"DIMALTRND", 0, kAny, 40, "Rounding of alternate units"},
    {"DIMALTTD", 0, 8, 70, "Decimals of tolerances in alternate units"},
    {"DIMALTTZ", 0, 15, 70, "Zeros left out of tolerances in alternate units"},
    {"DIMALTU", 1, 8, 70,
     "Format of alternate units: 1 scientific, 2 decimal, 3 engineering, 4 architectural stacked, 5 fractional "
     "stacked, "
     "6 architectural, 7 fractional, 8 as the drawing"},
    {"DIMALTZ", 0, 15, 70, "Zeros left out of alternate units"},
    {"DIMAPOST", 0, 0, 1, "Text round alternate units, with [] for the value"},
    {"DIMARCSYM", 0, 2, 70, "Arc symbol: 0 before the text, 1 above it, 2 none"},
    {"DIMASZ", 0, kAny, 40, "Size of arrows"},
    {"DIMATFIT", 0, 3, 70, "What goes outside when space is short: 0 both, 1 arrows first, 2 text first, 3 the better"},
    {"DIMAUNIT", 0, 4, 70, "Format of angles, as AUNITS"},
    {"DIMAZIN", 0, 3, 70, "Zeros left out of angles, sum of: 1 leading, 2 trailing"},
    {"DIMBLK", 0, 0, 1, "Arrow block of both ends; . for the closed filled arrow"},
    {"DIMBLK1", 0, 0, 1, "Arrow block of the first end"},
    {"DIMBLK2", 0, 0, 1, "Arrow block of the second end"},
    {"DIMCEN", -kAny, kAny, 40, "Size of center marks; 0: none, negative: with lines"},
    {"DIMCLRD", 0, 256, 70, "Color of dimension lines and arrows"},
    {"DIMCLRE", 0, 256, 70, "Color of extension lines"},
    {"DIMCLRT", 0, 256, 70, "Color of dimension text"},
    {"DIMDEC", 0, 8, 70, "Decimals of lengths"},
    {"DIMDLE", 0, kAny, 40, "Dimension line beyond the extension lines, with ticks"},
    {"DIMDLI", 0, kAny, 40, "Distance of baseline dimensions"},
    {"DIMDSEP", 0, 0, 70, "Decimal separator, one character"},
    {"DIMEXE", 0, kAny, 40, "Extension line beyond the dimension line"},
    {"DIMEXO", 0, kAny, 40, "Gap between object and extension line"},
    {"DIMFRAC", 0, 2, 70, "Form of fractions: 0 stacked, 1 diagonal, 2 in one line"},
    {"DIMFXL", 0, kAny, 40, "Fixed length of extension lines"},
    {"DIMFXLON", 0, 1, 70, "Extension lines of a fixed length"},
    {"DIMGAP", -kAny, kAny, 40, "Gap round the text; negative: in a box"},
    {"DIMJOGANG", 5, 90, 40, "Angle of the jog in jogged radius dimensions"},
    {"DIMJUST", 0, 4, 70,
     "Place of the text along the line: 0 middle, 1 at the first, 2 at the second extension line, 3 above the first, "
     "4 above the second"},
    {"DIMLDRBLK", 0, 0, 1, "Arrow block of leaders"},
    {"DIMLFAC", -kAny, kAny, 40, "Factor on measured lengths; negative: in paper space only"},
    {"DIMLIM", 0, 1, 70, "Limits shown as the text"},
    {"DIMLTEX1", 0, 0, 6, "Linetype of the first extension line"},
    {"DIMLTEX2", 0, 0, 6, "Linetype of the second extension line"},
    {"DIMLTYPE", 0, 0, 6, "Linetype of the dimension line"},
    {"DIMLUNIT", 1, 6, 70,
     "Format of lengths: 1 scientific, 2 decimal, 3 engineering, 4 architectural, 5 fractional, 6 as the drawing"},
    {"DIMLWD", -3, 211, 70, "Lineweight of the dimension line"},
    {"DIMLWE", -3, 211, 70, "Lineweight of extension lines"},
    {"DIMPOST", 0, 0, 1, "Text round the measured value, with <> for the value"},
    {"DIMRND", 0, kAny, 40, "Rounding of measured lengths"},
    {"DIMSAH", 0, 1, 70, "Arrows of the two ends are chosen separately"},
    {"DIMSCALE", 0, kAny, 40, "Factor on all sizes; 0: from viewport or annotation scale"},
    {"DIMSD1", 0, 1, 70, "First half of the dimension line left out"},
    {"DIMSD2", 0, 1, 70, "Second half of the dimension line left out"},
    {"DIMSE1", 0, 1, 70, "First extension line left out"},
    {"DIMSE2", 0, 1, 70, "Second extension line left out"},
    {"DIMSOXD", 0, 1, 70, "Arrows outside the extension lines left out"},
    {"DIMTAD", 0, 4, 70, "Text and dimension line: 0 centered, 1 above, 2 outside, 3 JIS, 4 below"},
    {"DIMTDEC", 0, 8, 70, "Decimals of tolerances"},
    {"DIMTFAC", 0, kAny, 40, "Height of tolerance text as a factor", true},
    {"DIMTFILL", 0, 2, 70, "Background of the text: 0 none, 1 as the drawing's, 2 DIMTFILLCLR"},
    {"DIMTFILLCLR", 0, 256, 70, "Color of the text's background"},
    {"DIMTIH", 0, 1, 70, "Text inside always horizontal"},
    {"DIMTIX", 0, 1, 70, "Text always between the extension lines"},
    {"DIMTM", -kAny, kAny, 40, "Lower tolerance"},
    {"DIMTMOVE", 0, 2, 70, "A moved text: 0 moves the line, 1 gets a leader, 2 is free"},
    {"DIMTOFL", 0, 1, 70, "Line between the extension lines although the text is outside"},
    {"DIMTOH", 0, 1, 70, "Text outside always horizontal"},
    {"DIMTOL", 0, 1, 70, "Tolerances appended"},
    {"DIMTOLJ", 0, 2, 70, "Place of tolerances: 0 bottom, 1 middle, 2 top"},
    {"DIMTP", -kAny, kAny, 40, "Upper tolerance"},
    {"DIMTSZ", 0, kAny, 40, "Size of ticks; 0: arrows"},
    {"DIMTVP", -kAny, kAny, 40, "Height of the text above the line as a factor, with DIMTAD 0"},
    {"DIMTXSTY", 0, 0, 7, "Text style of dimensions"},
    {"DIMTXT", 0, kAny, 40, "Height of the text", true},
    {"DIMTZIN", 0, 15, 70, "Zeros left out of tolerances"},
    {"DIMUPT", 0, 1, 70, "The text stands where the dimension line is pointed at"},
    {"DIMZIN", 0, 15, 70,
     "Zeros left out: 0 feet and inches of 0, 1 neither, 2 inches, 3 feet; added 4 leading, 8 trailing"},
};
static_assert(std::size(kExtras) == kDimVariableCount);

bool isArrow(std::string_view name) {
    return name == "DIMBLK" || name == "DIMBLK1" || name == "DIMBLK2" || name == "DIMLDRBLK";
}
bool isLinetype(std::string_view name) { return name == "DIMLTYPE" || name == "DIMLTEX1" || name == "DIMLTEX2"; }

/// The value in force: the override, when it is one that the member can take, else the style's.
DimValue valueInForce(const Drawing& d, const DimVariable& variable) {
    const std::string name(variable.name);
    const auto number = d.dimStyleOverrides.find(name);
    const auto text = d.dimStyleNameOverrides.find(name);
    DimStyle style = d.dimStyleOrStandard(d.currentDimStyle);
    if (number != d.dimStyleOverrides.end()) setDimValue(style, variable, number->second);
    if (text != d.dimStyleNameOverrides.end()) setDimValue(style, variable, text->second);
    return dimValue(style, variable);
}

/// A character as UTF-8, and the single character of a text; 0 when it has more or none.
std::string characterText(double code) {
    if (!(code >= 1 && code < 0x110000)) return ".";
    std::string text;
    strings::appendUtf8(text, static_cast<char32_t>(code));
    return text;
}
char32_t singleCharacter(std::string_view text) {
    if (text.empty()) return U'.';  // "." at a prompt is the empty text
    std::size_t i = 0;
    const char32_t c = strings::nextCodePoint(text, i);
    return i == text.size() ? c : 0;
}

SysVarValue getDimension(const Drawing& d, std::size_t index) {
    const DimVariable& variable = dimVariables()[index];
    const DimValue value = valueInForce(d, variable);
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    const double number = std::get<double>(value);
    if (variable.name == "DIMDSEP") return characterText(number);
    if (std::holds_alternative<double DimStyle::*>(variable.member)) return number;
    return static_cast<std::int32_t>(number);
}

/// Writes or removes the override that makes `value` the one in force.
void putOverride(Drawing& d, const DimVariable& variable, const DimValue& value) {
    const DimValue own = dimValue(d.dimStyleOrStandard(d.currentDimStyle), variable);
    const std::string name(variable.name);
    if (const auto* number = std::get_if<double>(&value)) {
        if (own == value)
            d.dimStyleOverrides.erase(name);
        else
            d.dimStyleOverrides[name] = *number;
        return;
    }
    const std::string& text = std::get<std::string>(value);
    const bool isName = std::holds_alternative<Name DimStyle::*>(variable.member);
    if (isName ? equalNoCase(std::get<std::string>(own), text) : own == value)
        d.dimStyleNameOverrides.erase(name);
    else
        d.dimStyleNameOverrides[name] = text;
}

/// A name as its table holds it; an error text when there is no such record.
std::string findName(Drawing& d, std::string_view variable, std::string& text) {
    if (isArrow(variable)) {
        const ArrowKind kind = arrowKind(text);
        if (kind != ArrowKind::User) {
            text = arrowBlockName(kind);
            return {};
        }
        const Block* block = d.findBlock(Name(text));
        if (block == nullptr) return "Block \"" + text + "\" not found.";
        text = block->name.str();
        return {};
    }
    if (isLinetype(variable)) {
        const Linetype* linetype = d.loadLinetype(Name(text));
        if (linetype == nullptr) return "Unknown linetype \"" + text + "\".";
        text = linetype->name.str();
    } else if (variable == "DIMTXSTY") {
        const TextStyle* style = d.textStyles.find(Name(text));
        if (style == nullptr) return "Unknown text style \"" + text + "\".";
        text = style->name.str();
    }
    return {};
}

std::string setDimension(Drawing& d, std::size_t index, const SysVarValue& value) {
    const DimVariable& variable = dimVariables()[index];
    if (variable.name == "DIMDSEP") {
        const char32_t c = singleCharacter(std::get<std::string>(value));
        if (c == 0) return "Cannot set DIMDSEP to that value.";
        putOverride(d, variable, static_cast<double>(c));
        return {};
    }
    if (const auto* text = std::get_if<std::string>(&value)) {
        std::string name = *text;
        if (std::string error = findName(d, variable.name, name); !error.empty()) return error;
        putOverride(d, variable, name);
        return {};
    }
    const auto* whole = std::get_if<std::int32_t>(&value);
    const double number = whole != nullptr ? *whole : std::get<double>(value);
    putOverride(d, variable, number);
    // A dimension shows tolerances or limits, not both.
    if (number != 0.0 && variable.name == "DIMTOL") putOverride(d, *findDimVariable("DIMLIM"), 0.0);
    if (number != 0.0 && variable.name == "DIMLIM") putOverride(d, *findDimVariable("DIMTOL"), 0.0);
    return {};
}

template <std::size_t kIndex>
SysVarValue get(const Drawing& d) {
    return getDimension(d, kIndex);
}
template <std::size_t kIndex>
std::string set(Drawing& d, const SysVarValue& value) {
    return setDimension(d, kIndex, value);
}

/// One getter and setter per variable: the rows hold plain functions.
template <std::size_t... kIndices>
void addHooks(std::vector<SysVarDef>& rows, std::index_sequence<kIndices...>) {
    ((rows[kIndices].get = get<kIndices>, rows[kIndices].set = set<kIndices>), ...);
}

bool isLineweight(const SysVarValue& value) { return findSysVar("CELWEIGHT")->accepts(value); }
bool isNotZero(const SysVarValue& value) { return std::get<double>(value) != 0.0; }

SysVarType typeOf(const DimVariable& variable) {
    if (std::holds_alternative<double DimStyle::*>(variable.member)) return SysVarType::Real;
    if (std::holds_alternative<Name DimStyle::*>(variable.member)) return SysVarType::String;
    if (std::holds_alternative<std::string DimStyle::*>(variable.member)) return SysVarType::String;
    return variable.name == "DIMDSEP" ? SysVarType::String : SysVarType::Integer;
}

SysVarValue fallbackOf(const DimVariable& variable, SysVarType type) {
    const DimValue value = dimValue(DimStyle{}, variable);
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    const double number = std::get<double>(value);
    if (type == SysVarType::String) return characterText(number);
    if (type == SysVarType::Real) return number;
    return static_cast<std::int32_t>(number);
}

std::string setCurrentStyle(Drawing& d, const SysVarValue& value) {
    const std::string& text = std::get<std::string>(value);
    const DimStyle* style = d.dimStyles.find(Name(text));
    if (style == nullptr) return "Unknown dimension style \"" + text + "\".";
    d.currentDimStyle = style->name;
    d.dimStyleOverrides.clear();  // overrides last until a style is restored
    d.dimStyleNameOverrides.clear();
    return {};
}

}  // namespace

std::vector<SysVarDef> dimensionVariables() {
    const std::span<const DimVariable> variables = dimVariables();
    std::vector<SysVarDef> rows;
    for (const DimVariable& variable : variables) {
        const Extra& extra = *std::find_if(std::begin(kExtras), std::end(kExtras),
                                           [&](const Extra& e) { return e.name == variable.name; });
        const SysVarType type = typeOf(variable);
        SysVarDef def = row(variable.name, type, fallbackOf(variable, type), saved::Header, extra.description)
                            .code(extra.headerCode);
        def.aboveMinimum = extra.aboveMinimum;
        def.degrees = variable.name == "DIMJOGANG";
        def.minimum = def.degrees ? math::toRadians(extra.minimum) : extra.minimum;
        def.maximum = def.degrees ? math::toRadians(extra.maximum) : extra.maximum;
        def.color = std::holds_alternative<Color DimStyle::*>(variable.member);
        if (std::holds_alternative<bool DimStyle::*>(variable.member)) def.command = SysVarCommand::Toggle;
        if (variable.name == "DIMLWD" || variable.name == "DIMLWE") def.accepts = isLineweight;
        if (variable.name == "DIMLFAC") def.accepts = isNotZero;
        rows.push_back(std::move(def));
    }
    addHooks(rows, std::make_index_sequence<kDimVariableCount>{});

    rows.push_back(string("DIMSTYLE", "Standard", saved::Header, "Current dimension style")
                       .code(2)
                       .own()
                       .get([](const Drawing& d) -> SysVarValue { return d.currentDimStyle.str(); })
                       .set(setCurrentStyle));
    rows.push_back(
        integer("DIMASSOC", 2, 0, 2, kHeader, "New dimensions: 0 exploded, 1 not linked, 2 linked to the geometry")
            .code(280));
    rows.push_back(toggle("DIMASO", 1, kHeader, "New dimensions are objects (old form of DIMASSOC)").code(70));
    rows.push_back(toggle("DIMSHO", 1, kHeader, "Dimensions are measured anew while dragged").code(70));
    rows.push_back(toggle("DIMCONTINUEMODE", 1, kProfile,
                          "DIMCONTINUE and DIMBASELINE take the style of the dimension they go on from"));
    rows.push_back(string("DIMLAYER", "", kDrawing, "Layer of new dimensions; empty: the current one"));
    return rows;
}

}  // namespace kova::engine::rows
