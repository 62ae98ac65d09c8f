// The DIMSTYLE table, and the overrides of single dimensions, which use the same codes.
#include "io/dxf/writing/writer.hpp"

namespace kova::io::dxf {

using engine::DimStyle;
using engine::DimVariable;
using engine::Name;

namespace {

bool isArrow(std::string_view variable) {
    return variable == "DIMBLK" || variable == "DIMBLK1" || variable == "DIMBLK2" || variable == "DIMLDRBLK";
}
bool isLinetype(std::string_view variable) {
    return variable.starts_with("DIMLTYPE") || variable.starts_with("DIMLTEX");
}

/// The variables in the order of their codes.
const std::vector<const DimVariable*>& variablesByCode() {
    static const std::vector<const DimVariable*> sorted = [] {
        std::vector<const DimVariable*> list;
        for (const DimVariable& v : engine::dimVariables()) list.push_back(&v);
        std::stable_sort(list.begin(), list.end(),
                         [](const DimVariable* a, const DimVariable* b) { return a->dxfCode < b->dxfCode; });
        return list;
    }();
    return sorted;
}

/// True for a colour that a colour index says exactly.
bool isIndexed(const engine::Color& c) { return c.method != engine::ColorMethod::RGB; }

}  // namespace

void Writer::dimStyleRecord(const DimStyle& style, const OwnData& own) {
    GroupWriter& out = *out_;
    recordHead("DIMSTYLE", dimStyles_.at(style.name.key()), tables_.dimStyles, "AcDbDimStyleTableRecord", own, 105);
    out.text(2, symbol(style.name));
    out.integer(70, 0);
    std::uint64_t linetypes[3] = {0, 0, 0};
    for (const DimVariable* variable : variablesByCode()) {
        const int code = variable->dxfCode;
        if (const auto* real = std::get_if<double DimStyle::*>(&variable->member)) {
            // Of all the variables only DIMJOGANG is an angle. Header and overrides have it in radians.
            if (code == kJogAngleCode)
                out.angle(code, style.**real);
            else
                out.real(code, style.**real);
        } else if (const auto* name = std::get_if<Name DimStyle::*>(&variable->member)) {
            const Name value = style.**name;
            if (isArrow(variable->name)) {
                if (const std::uint64_t handle = arrowHandle(value); handle != 0) out.handle(code, handle);
            } else if (isLinetype(variable->name)) {
                if (value.empty() || value == engine::commonNames().byBlock) continue;
                linetypes[code - 345] = linetypeHandle(value);
                out.handle(code, linetypes[code - 345]);
            } else {
                out.handle(code, textStyleHandle(value));
            }
        } else if (const auto* text = std::get_if<std::string DimStyle::*>(&variable->member)) {
            out.text(code, style.**text);
        } else {
            const double value = std::get<double>(engine::dimValue(style, *variable));
            out.integer(code, static_cast<std::int64_t>(value));
        }
    }
    constexpr std::string_view applications[] = {"ACAD_DSTYLE_DIM_LINETYPE", "ACAD_DSTYLE_DIM_EXT1_LINETYPE",
                                                 "ACAD_DSTYLE_DIM_EXT2_LINETYPE"};
    for (int i = 0; i < 3; ++i) {
        if (linetypes[i] == 0) continue;
        out.word(1001, applications[i]);
        out.integer(1070, 380 + i);
        out.handle(1005, linetypes[i]);
    }
    ownXdata(own);
}

void Writer::dimStyleTable() {
    GroupWriter& out = *out_;
    tableHead("DIMSTYLE", tables_.dimStyles, saved_.dimStyles.size() + missingDimStyles_.size());
    out.subclass("AcDbDimStyleTable");
    out.integer(71, static_cast<std::int64_t>(saved_.dimStyles.size()));
    for (const DimStyle* each : saved_.dimStyles) {
        const DimStyle& style = *each;
        FieldKeys keys;
        if (!isPlain(style.name)) keys.push_back("name");
        // Names stand as handles, which lose an arrow's spelling; colours as indexes.
        for (const auto& [key, value] : {std::pair<std::string_view, Name>{"arrowBlock", style.arrowBlock},
                                         {"arrowBlock1", style.arrowBlock1},
                                         {"arrowBlock2", style.arrowBlock2},
                                         {"leaderArrowBlock", style.leaderArrowBlock}})
            if (!value.empty()) keys.push_back(key);
        if (!isIndexed(style.dimLineColor)) keys.push_back("dimLineColor");
        if (!isIndexed(style.extLineColor)) keys.push_back("extLineColor");
        if (!isIndexed(style.textColor)) keys.push_back("textColor");
        if (!isIndexed(style.textFillColor)) keys.push_back("textFillColor");
        for (const auto& [key, value] : {std::pair<std::string_view, Name>{"dimLineLinetype", style.dimLineLinetype},
                                         {"extLine1Linetype", style.extLine1Linetype},
                                         {"extLine2Linetype", style.extLine2Linetype},
                                         {"textStyle", style.textStyle}})
            if (value.empty() || !isPlain(value)) keys.push_back(key);
        if (style.annotative) keys.push_back("annotative");
        if (style.feetInches < 0 || style.feetInches > 3) keys.push_back("feetInches");
        dimStyleRecord(style, gatherRecord(style, keys, dimStyles_.at(style.name.key())));
    }
    for (std::size_t i = 0; i < missingDimStyles_.size(); ++i) {
        DimStyle plain;
        plain.name = missingDimStyles_[i];
        dimStyleRecord(plain, placeholderMark());
    }
    out.record("ENDTAB");
}

void Writer::dimensionOverrides(const engine::DimensionEntity& e) {
    GroupWriter& out = *out_;
    std::map<int, std::pair<const DimVariable*, engine::DimValue>> values;
    const auto add = [&](std::string_view name, engine::DimValue value) {
        if (const DimVariable* variable = engine::findDimVariable(name))
            values.insert_or_assign(variable->dxfCode, std::pair(variable, std::move(value)));
    };
    if (e.textHeight > 0.0) add("DIMTXT", e.textHeight);
    if (e.arrowSize > 0.0) add("DIMASZ", e.arrowSize);
    if (e.extGap > 0.0) add("DIMEXO", e.extGap);
    if (e.extExtension > 0.0) add("DIMEXE", e.extExtension);
    for (const auto& [name, value] : e.styleOverrides)
        if (std::isfinite(value)) add(name, value);
    for (const auto& [name, value] : e.nameOverrides) add(name, value);
    if (values.empty()) return;
    application("ACAD");
    out.word(1001, "ACAD");
    out.word(1000, "DSTYLE");
    out.word(1002, "{");
    for (const auto& [code, entry] : values) {
        const auto& [variable, value] = entry;
        const bool isName = std::holds_alternative<Name DimStyle::*>(variable->member);
        const bool isReal = std::holds_alternative<double DimStyle::*>(variable->member);
        const bool isText = std::holds_alternative<std::string DimStyle::*>(variable->member);
        const auto* number = std::get_if<double>(&value);
        if ((number == nullptr) != (isName || isText)) continue;
        if (number != nullptr && !isReal && !(std::abs(*number) <= 32767.0)) continue;
        out.integer(1070, code);
        if (isReal) {
            out.real(1040, *number);
        } else if (number != nullptr) {
            out.integer(1070, static_cast<std::int64_t>(*number));
        } else if (isText) {
            std::string_view text = std::get<std::string>(value);
            if (text.empty()) out.word(1000, "");
            eachPiece(text, 255, [&, first = true](std::string_view piece) mutable {
                if (first) out.text(1000, piece);
                first = false;
            });
        } else {
            const Name name(std::get<std::string>(value));
            std::uint64_t handle = 0;
            if (isArrow(variable->name))
                handle = arrowHandle(name);
            else if (isLinetype(variable->name))
                handle = linetypeHandle(name.empty() ? engine::commonNames().byBlock : name);
            else
                handle = textStyleHandle(name);
            out.handle(1005, handle);
        }
    }
    out.word(1002, "}");
}

}  // namespace kova::io::dxf
