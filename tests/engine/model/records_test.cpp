#include <gtest/gtest.h>

#include "engine/model/drawing.hpp"
#include "math/angles.hpp"
#include "strings/numbers.hpp"

namespace kova::engine {
namespace {

/// Writes what a file would hold: "key=value" in order, optional fields only where they differ from their default.
class Dump : public FieldVisitor {
public:
    std::vector<std::string> keys;
    std::string text;

protected:
    void put(const Field& f, const std::string& value) {
        keys.emplace_back(f.key);
        text += std::string(f.key) + "=" + value + ";";
    }
    void onNumber(const Field& f, double& v) override {
        if (!f.optional || std::abs(v - f.fallback) > 1e-9) put(f, strings::shortest(v));
    }
    void onInteger(const Field& f, std::int64_t& v) override {
        if (!f.optional || static_cast<double>(v) != f.fallback) put(f, std::to_string(v));
    }
    void onBoolean(const Field& f, bool& v) override {
        if (!f.optional || v != (f.fallback != 0.0)) put(f, v ? "true" : "false");
    }
    void onText(const Field& f, std::string& v) override {
        if (!f.optional || v != f.fallbackText) put(f, v);
    }
    void onName(const Field& f, Name& v) override {
        if (!f.optional || v.view() != f.fallbackText) put(f, v.str());
    }
    void onHandle(const Field& f, std::uint64_t& v) override {
        if (!f.optional || v != 0) put(f, std::to_string(v));
    }
    void onColor(const Field& f, Color& v) override { put(f, colorText(v)); }
    void onPointObject(const Field& f, math::Vector2& v) override { put(f, v.text()); }
    void onPointObject3(const Field& f, math::Vector3& v) override { put(f, v.text()); }
    void onPoints(const Field& f, std::vector<math::Vector2>& v) override { list(f, v.size()); }
    void onPoints3(const Field& f, std::vector<math::Vector3>& v) override { list(f, v.size()); }
    void onNumbers(const Field& f, std::vector<double>& v) override { list(f, v.size()); }
    void onIntegers(const Field& f, std::vector<std::int32_t>& v) override { list(f, v.size()); }
    void onBooleans(const Field& f, std::vector<bool>& v) override { list(f, v.size()); }
    void onHandles(const Field& f, std::vector<std::uint64_t>& v) override { list(f, v.size()); }
    void onTexts(const Field& f, std::vector<std::string>& v) override { list(f, v.size()); }
    void onNames(const Field& f, std::vector<Name>& v) override { list(f, v.size()); }
    void onIntegerLists(const Field& f, std::vector<std::vector<std::int32_t>>& v) override { list(f, v.size()); }
    void onTextLists(const Field& f, std::vector<std::vector<std::string>>& v) override { list(f, v.size()); }
    void onNumberMap(const Field& f, std::map<std::string, double>& v) override { list(f, v.size()); }
    void onTextMap(const Field& f, std::map<std::string, std::string>& v) override { list(f, v.size()); }
    bool beginObject(const Field& f, bool present) override {
        if (present) put(f, "{");
        return present;
    }
    void endObject() override { text += "}"; }
    bool beginList(const Field& f, std::size_t& count) override {
        if (f.optional && count == 0) return false;
        put(f, "[");
        return true;
    }
    void beginItem(std::size_t) override {}
    void endItem() override {}
    void endList() override { text += "]"; }

private:
    void list(const Field& f, std::size_t size) {
        if (!f.optional || size > 0) put(f, "[" + std::to_string(size) + "]");
    }
};

template <class Record>
std::vector<std::string> keysOf(Record record) {
    Dump dump;
    record.describe(dump);
    return dump.keys;
}
template <class Record>
std::string textOf(Record record) {
    Dump dump;
    record.describe(dump);
    return dump.text;
}

using Keys = std::vector<std::string>;

TEST(Records, LayerKeys) {
    const Keys keys{"name",      "color",        "lineweight",  "frozen",   "locked",
                    "plottable", "transparency", "description", "linetype", "plotStyleName"};
    EXPECT_EQ(keysOf(Layer{}), keys);
    Layer off;
    off.on = false;
    Keys withOn = keys;
    withOn.push_back("on");
    EXPECT_EQ(keysOf(off), withOn);
    EXPECT_EQ(keysOf(LayerStateEntry{}), (Keys{"frozen", "locked", "plottable", "color", "lineweight", "transparency",
                                               "linetype", "description", "plotStyle"}));
}

TEST(Records, LayerFilterKinds) {
    LayerFilter filter;
    filter.name = "walls";
    filter.namePattern = "W*";
    EXPECT_EQ(textOf(filter), "name=walls;type=property;parent=;namePattern=W*;");
    filter.kind = LayerFilterKind::Group;
    filter.members = {"W1", "W2"};
    EXPECT_EQ(textOf(filter), "name=walls;type=group;parent=;members=[2];");
}

TEST(Records, StyleKeys) {
    EXPECT_EQ(keysOf(TextStyle{}), (Keys{"name", "fontFile", "bigFontFile", "height", "widthFactor", "obliqueAngle",
                                         "backward", "upsideDown", "vertical"}));
    EXPECT_EQ(textOf(TextStyle{}).substr(0, 31), "name=Standard;fontFile=txt.shx;");
    EXPECT_EQ(keysOf(Linetype{}), (Keys{"name", "description", "pattern", "standard"}));
    Linetype gas;
    gas.elements.emplace_back();
    EXPECT_EQ(keysOf(gas), (Keys{"name", "description", "pattern", "standard", "elements", "flags", "shape", "style",
                                 "scale", "rotation", "text"}));
    EXPECT_EQ(keysOf(TableStyle{}),
              (Keys{"name",       "textHeight",       "headerTextHeight", "titleTextHeight",  "textStyle",
                    "cellMargin", "defaultRowHeight", "defaultColWidth",  "borderLineweight", "gridLineweight",
                    "hasTitle",   "hasHeader",        "flowUp",           "verticalMargin",   "rows",
                    "data",       "alignment",        "textColor",        "fillColor",        "fillEnabled",
                    "header",     "alignment",        "textColor",        "fillColor",        "fillEnabled",
                    "title",      "alignment",        "textColor",        "fillColor",        "fillEnabled"}));
    const Keys mleader = keysOf(MLeaderStyle{});
    ASSERT_EQ(mleader.size(), 42u);
    EXPECT_EQ(mleader.front(), "name");
    EXPECT_EQ(mleader[18], "arrowBlock");
    EXPECT_EQ(mleader.back(), "drawLeaderOrder");
}

TEST(Records, DimStyleKeys) {
    const Keys expected{"name",
                        "arrowSize",
                        "textHeight",
                        "textGap",
                        "extGap",
                        "extExtension",
                        "baselineSpacing",
                        "decimalPlaces",
                        "scaleFactor",
                        "textStyle",
                        "dimLineGap",
                        "suppressLeadingZeros",
                        "suppressTrailingZeros",
                        "linearScale",
                        "rounding",
                        "suppressExtLine1",
                        "suppressExtLine2",
                        "dimLineColor",
                        "extLineColor",
                        "textColor",
                        "textVertical",
                        "textInsideHorizontal",
                        "textJustify",
                        "showTolerance",
                        "showLimits",
                        "tolerancePlus",
                        "toleranceMinus",
                        "toleranceDecimals",
                        "toleranceTextScale",
                        "arrowBlock",
                        "arrowBlock1",
                        "arrowBlock2",
                        "leaderArrowBlock",
                        "dimLineLinetype",
                        "extLine1Linetype",
                        "extLine2Linetype",
                        "separateArrowBlocks",
                        "altUnits",
                        "altFactor",
                        "altDecimals",
                        "altToleranceDecimals",
                        "altFormat",
                        "centerMark",
                        "tickSize",
                        "textMovement",
                        "linearUnitFormat",
                        "fractionFormat",
                        "angularUnitFormat",
                        "angularDecimals",
                        "textOutsideHorizontal",
                        "forceDimLineInside",
                        "angularZeroSuppression",
                        "userPositionedText",
                        "textInsideForced",
                        "suppressDimLine1",
                        "suppressDimLine2",
                        "arcSymbol",
                        "jogAngle"};
    Keys keys = keysOf(DimStyle{});
    ASSERT_GE(keys.size(), expected.size());
    // Behind them only members that a new style's defaults do not cover.
    EXPECT_EQ(Keys(keys.begin(), keys.begin() + static_cast<std::ptrdiff_t>(expected.size())), expected);
    EXPECT_EQ(Keys(keys.begin() + static_cast<std::ptrdiff_t>(expected.size()), keys.end()), Keys{"textFillColor"});
}

TEST(Records, EveryDimensionVariableIsDescribed) {
    for (const DimVariable& variable : dimVariables()) {
        DimStyle style;
        const std::string before = textOf(style);
        const DimValue old = dimValue(style, variable);
        DimValue changed = std::string("Other");
        if (const auto* number = std::get_if<double>(&old)) changed = *number == 1.0 ? 0.0 : 1.0;
        ASSERT_TRUE(setDimValue(style, variable, changed)) << variable.name;
        EXPECT_EQ(dimValue(style, variable), changed) << variable.name;
        EXPECT_NE(textOf(style), before) << variable.name << " is not written";
        ASSERT_TRUE(setDimValue(style, variable, old)) << variable.name;
        EXPECT_EQ(textOf(style), before) << variable.name;
        EXPECT_EQ(findDimVariable(variable.name), &variable);
    }
    EXPECT_EQ(findDimVariable("dimtxt")->dxfCode, 140);
    EXPECT_EQ(findDimVariable("DIMTXTX"), nullptr);
    EXPECT_EQ(findDimVariable(std::string(1000, 'D')), nullptr);
}

TEST(Records, DimensionValuesThatDoNotFit) {
    DimStyle style;
    const std::string before = textOf(style);
    const auto refused = [&](const char* name, const DimValue& value) {
        return !setDimValue(style, *findDimVariable(name), value);
    };
    EXPECT_TRUE(refused("DIMTXT", std::nan("")));
    EXPECT_TRUE(refused("DIMTXT", std::string("2")));
    EXPECT_TRUE(refused("DIMDEC", 2.5));
    EXPECT_TRUE(refused("DIMDEC", 1e300));
    EXPECT_TRUE(refused("DIMCLRD", 257.0));
    EXPECT_TRUE(refused("DIMCLRD", -1.0));
    EXPECT_TRUE(refused("DIMZIN", 16.0));
    EXPECT_TRUE(refused("DIMBLK", 1.0));
    overrideDimStyle(style, {{"NONSENSE", 1.0}, {"DIMDEC", -HUGE_VAL}}, {{"DIMTXT", "x"}});
    EXPECT_EQ(textOf(style), before);
    // A true color stays when its index is set.
    style.dimLineColor = Color::rgb(255, 1, 0);
    EXPECT_TRUE(setDimValue(style, *findDimVariable("DIMCLRD"), 1.0));
    EXPECT_EQ(style.dimLineColor, Color::rgb(255, 1, 0));
}

TEST(Records, ZeroSuppressionHasThreeParts) {
    for (int dimzin = 0; dimzin < 16; ++dimzin) {
        DimStyle style;
        style.setZeroSuppression(dimzin);
        EXPECT_EQ(style.zeroSuppression(), dimzin);
    }
    DimStyle style;
    style.setZeroSuppression(5);
    EXPECT_TRUE(style.suppressLeadingZeros);
    EXPECT_FALSE(style.suppressTrailingZeros);
    EXPECT_EQ(style.feetInches, 1);
}

TEST(Records, UcsThereAndBack) {
    Ucs ucs;
    ucs.origin = {10, -3};
    ucs.xAxis = math::Vector2::from_angle(0.7);
    ucs.yAxis = math::Vector2::from_angle(1.9);  // not square to it
    const math::Vector2 p{4, 5};
    EXPECT_TRUE(ucs.toWorld(ucs.fromWorld(p)).near_equal(p, 1e-12));
    EXPECT_TRUE(ucs.fromWorld(ucs.toWorld(p)).near_equal(p, 1e-12));
    ucs.yAxis = ucs.xAxis;
    EXPECT_EQ(ucs.fromWorld(p), p);
    ucs.yAxis = {std::nan(""), 0};
    EXPECT_EQ(ucs.fromWorld(p), p);
    EXPECT_EQ(keysOf(Ucs{}), (Keys{"name", "originX", "originY", "xAxisX", "xAxisY", "yAxisX", "yAxisY"}));
}

TEST(Records, OtherKeys) {
    EXPECT_EQ(keysOf(Group{}), (Keys{"name", "description", "selectable", "memberHandles"}));
    EXPECT_EQ(keysOf(NamedView{}),
              (Keys{"name", "centerX", "centerY", "width", "height", "zoom", "viewDirection", "target", "upHint"}));
    EXPECT_EQ(keysOf(AnnotationScale{}), (Keys{"name", "paperUnits", "drawingUnits"}));
    EXPECT_EQ(keysOf(PageSetup{}),
              (Keys{"paperWidth",   "paperHeight",    "landscape",           "marginLeft",       "marginRight",
                    "marginTop",    "marginBottom",   "plotDevice",          "paperSizeName",    "plotArea",
                    "scaleType",    "scalePaper",     "scaleDrawing",        "offsetX",          "offsetY",
                    "centerOnPage", "plotStyleTable", "plotWithLineweights", "plotTransparency", "dpi"}));
    PageSetup named;
    named.name = "A3";
    EXPECT_EQ(keysOf(named).front(), "name");
}

/// What other programs keep on layers of their own is in the drawing and not to be seen.
TEST(Records, InternalLayersAreNeverVisible) {
    const auto visible = [](const char* name) {
        Layer layer;
        layer.name = name;
        return layer.isVisible();
    };
    for (const char* name : {"*ADSK_CONSTRAINTS", "*adsk_assoc_entity_backups", "*ADSK_SYSTEM_LIGHTS", "ADSK_CONSTRAINTS",
                             "plan|*ADSK_CONSTRAINTS"})
        EXPECT_FALSE(visible(name)) << name;
    for (const char* name : {"0", "ADSK_WALLS", "CONSTRAINTS", "*Grid", "ADSK_", "plan|Walls"})
        EXPECT_TRUE(visible(name)) << name;
}

TEST(Records, NestedDictionariesAreCutOff) {
    DictionaryEntry root;
    DictionaryEntry* deepest = &root;
    for (int i = 0; i < 1000; ++i) {
        deepest->entries.emplace_back();
        deepest = &deepest->entries.back();
    }
    const Keys keys = keysOf(root);
    const auto levels = std::count(keys.begin(), keys.end(), "entries");
    EXPECT_GT(levels, 16);
    EXPECT_LT(levels, 200);
}

}  // namespace
}  // namespace kova::engine
