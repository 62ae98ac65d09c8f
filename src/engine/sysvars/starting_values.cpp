#include "engine/model/drawing.hpp"
#include "engine/model/sysvar.hpp"
#include "engine/sysvars/host.hpp"

namespace kova::engine {

namespace {

/// A value in a new imperial and in a new metric drawing.
template <class T>
struct Pair {
    std::string_view name;
    T imperial;
    T metric;
};

constexpr Pair<std::int32_t> kIntegers[] = {
    {"INSUNITS", 1, 4},
    {"MEASUREMENT", 0, 1},
};

constexpr Pair<double> kReals[] = {
    {"LTSCALE", 1.0, 1.0},    {"CELTSCALE", 1.0, 1.0},   {"TEXTSIZE", 0.2, 2.5}, {"TRACEWID", 0.05, 1.0},
    {"SKETCHINC", 0.1, 1.0},  {"CMLSCALE", 1.0, 20.0},   {"HPSCALE", 1.0, 1.0},  {"STEPSIZE", 6.0, 50.0},
    {"PSOLWIDTH", 0.25, 5.0}, {"PSOLHEIGHT", 4.0, 80.0},
};

constexpr Pair<std::string_view> kPoints[] = {
    {"SNAPUNIT", "0.5,0.5", "10,10"},
    {"GRIDUNIT", "0.5,0.5", "10,10"},
    {"PLIMMAX", "12,9", "420,297"},
};

MLeaderStyle imperialMLeaderStyle() {
    MLeaderStyle style;
    style.textHeight = 0.18;
    style.arrowSize = 0.18;
    style.landingGap = 0.09;
    style.landingDistance = 0.36;
    style.alignSpace = 0.18;
    style.breakGapSize = 0.125;
    return style;
}

TableStyle imperialTableStyle() {
    TableStyle style;
    style.textHeight = 0.18;
    style.headerTextHeight = 0.18;
    style.titleTextHeight = 0.25;
    style.cellMargin = 0.06;
    style.verticalMargin = 0.06;
    style.defaultRowHeight = 0.36;
    style.defaultColWidth = 2.5;
    return style;
}

void setPaper(PageSetup& page, bool metric) {
    page.paperSizeName = metric ? "ISO A3" : "Letter";
    page.paperWidth = metric ? 420.0 : 279.4;
    page.paperHeight = metric ? 297.0 : 215.9;
    page.paperUnits = metric ? 1 : 0;
    page.landscape = true;
    const double margin = metric ? 7.5 : 6.35;
    page.marginLeft = page.marginRight = page.marginTop = page.marginBottom = margin;
}

}  // namespace

void applyStartingValues(Drawing& drawing, UnitSystem units) {
    const bool metric = units == UnitSystem::Metric;
    for (const auto& v : kIntegers) drawing.integerVariables[std::string(v.name)] = metric ? v.metric : v.imperial;
    for (const auto& v : kReals) drawing.realVariables[std::string(v.name)] = metric ? v.metric : v.imperial;
    for (const auto& v : kPoints)
        drawing.stringVariables[std::string(v.name)] = std::string(metric ? v.metric : v.imperial);

    drawing.limits.lower = {0.0, 0.0};
    drawing.limits.upper = metric ? math::Vector2{420.0, 297.0} : math::Vector2{12.0, 9.0};
    drawing.currentView.center = drawing.limits.upper / 2.0;
    drawing.currentView.width = drawing.limits.upper.x;
    drawing.currentView.height = drawing.limits.upper.y;

    // The sizes of dimensions are those of the style, with nothing put over it.
    drawing.dimStyles.add(metric ? DimStyle{} : DimStyle::imperial());
    drawing.currentDimStyle = commonNames().standard;
    drawing.dimStyleOverrides.clear();
    drawing.dimStyleNameOverrides.clear();
    drawing.mleaderStyles.add(metric ? MLeaderStyle{} : imperialMLeaderStyle());
    drawing.tableStyles.add(metric ? TableStyle{} : imperialTableStyle());
    for (const auto& layout : drawing.layouts()) setPaper(layout->pageSetup, metric);
    ++drawing.styleRevision;

    if (sysVarReal(drawing, "TDCREATE") > 0.0) return;
    for (const char* name : {"TDCREATE", "TDUPDATE", "TDOPENED"}) drawing.realVariables[name] = julianNow();
    for (const char* name : {"TDUCREATE", "TDUUPDATE"}) drawing.realVariables[name] = julianNow(true);
}

}  // namespace kova::engine
