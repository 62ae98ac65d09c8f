// Layouts and page setups.
#include "engine/outline/plot_page.hpp"
#include "io/dxf/writing/writer.hpp"

namespace kova::io::dxf {

using engine::PageSetup;

namespace {

constexpr int kOneToOne = 16;  // in the list of standard scales
constexpr int kOneToTwo = 17;

bool isCustomScale(const PageSetup& setup) {
    return setup.scaleType == engine::kCustomPlotScale ||
           (setup.scaleType == kOneToTwo && setup.scalePaper * 2.0 != setup.scaleDrawing);
}

}  // namespace

void Writer::plotSettings(const PageSetup& setup, std::string_view name, bool model) {
    GroupWriter& out = *out_;
    out.subclass("AcDbPlotSettings");
    out.text(1, name);
    out.text(2, setup.plotDevice);
    out.text(4, setup.paperSizeName);
    out.word(6, "");
    // Margins and size are those of the unrotated sheet: a landscape sheet is a portrait one turned by a quarter.
    const bool turned = setup.landscape;
    out.real(40, turned ? setup.marginBottom : setup.marginLeft);
    out.real(41, turned ? setup.marginRight : setup.marginBottom);
    out.real(42, turned ? setup.marginTop : setup.marginRight);
    out.real(43, turned ? setup.marginLeft : setup.marginTop);
    out.real(44, turned ? setup.paperHeight : setup.paperWidth);
    out.real(45, turned ? setup.paperWidth : setup.paperHeight);
    out.real(46, setup.offsetX);
    out.real(47, setup.offsetY);
    for (const int code : {48, 49, 140, 141}) out.real(code, 0.0);
    out.real(142, setup.scalePaper);
    out.real(143, setup.scaleDrawing);
    int flags = 32 | (setup.centerOnPage ? 4 : 0) | (setup.plotWithLineweights ? 128 : 0) | (model ? 1024 : 0);
    // Without the bit for a standard scale the two numbers count, whatever the scale's place in the list is.
    const bool custom = isCustomScale(setup);
    if (!custom) flags |= 16;
    out.integer(70, flags);
    out.integer(72, setup.paperUnits & 0x7FFF);
    out.integer(73, turned ? 1 : 0);
    out.integer(74, setup.plotArea & 0x7FFF);
    out.text(7, setup.plotStyleTable);
    out.integer(75, custom ? kOneToOne : setup.scaleType & 0x7FFF);
    out.integer(76, 0);
    out.integer(77, 2);
    out.integer(78, setup.dpi & 0x7FFF);
    const double factor = setup.scaleDrawing != 0.0 ? setup.scalePaper / setup.scaleDrawing : 1.0;
    out.real(147, std::isfinite(factor) && factor != 0.0 ? factor : 1.0);
    out.real(148, 0.0);
    out.real(149, 0.0);
}

namespace {

/// What the plot settings do not say exactly.
FieldKeys setupKeys(const PageSetup& setup) {
    FieldKeys keys;
    if (setup.plotTransparency) keys.push_back("plotTransparency");
    if (setup.plotArea < 0 || setup.plotArea > 0x7FFF) keys.push_back("plotArea");
    const bool renumbered = isCustomScale(setup) && setup.scaleType != engine::kCustomPlotScale;
    if (renumbered || setup.scaleType < 0 || setup.scaleType > 0x7FFF) keys.push_back("scaleType");
    if (setup.dpi < 0 || setup.dpi > 0x7FFF) keys.push_back("dpi");
    if (setup.paperUnits < 0 || setup.paperUnits > 0x7FFF) keys.push_back("paperUnits");
    return keys;
}

}  // namespace

void Writer::layoutObjects() {
    GroupWriter& out = *out_;
    Entries entries;
    for (const Space& space : spaces_) entries.emplace_back(space.name, space.object);
    dictionary(fixed_.layouts, fixed_.root, entries, false);
    int lastTab = 0;
    for (std::size_t i = 0; i < spaces_.size(); ++i) {
        const Space& space = spaces_[i];
        const engine::Layout* layout = space.layout;
        PageSetup setup = layout != nullptr ? layout->pageSetup : PageSetup();
        OwnData own;
        if (layout != nullptr) {
            // The layout's own fields and those of its page setup stand side by side: see LayoutOwnFields.
            LayoutOwnFields fields{const_cast<engine::Layout&>(*layout)};
            FieldKeys keys = setupKeys(setup);
            if (!isPlain(layout->name)) keys.push_back("layoutName");
            if (layout->tabOrder != space.tab || layout->tabOrder < 1) keys.push_back("tabOrder");
            if (layout->handle != space.record) keys.push_back("handle");
            own = gatherText(ownDataOf(fields, keys), kOwnRecordApplication, space.object);
        } else if (i > 0) {
            own = placeholderMark();
        }
        objectHead("LAYOUT", space.object, fixed_.layouts, own.dictionary);
        plotSettings(setup, setup.name.view(), i == 0);
        out.subclass("AcDbLayout");
        out.text(1, space.name);
        out.integer(70, 1);
        // Tabs count from 1 without gaps going backwards; the stored order is kept where it is sound.
        const int tab = i == 0 ? 0 : std::max(1, space.tab);
        lastTab = std::max(lastTab, tab);
        out.integer(71, tab);
        const bool model = i == 0;
        const math::Vector2 margin = math::Vector2{setup.marginLeft, setup.marginBottom} / setup.paperUnit();
        const math::Vector2 lower = model ? drawing_.limits.lower : -margin;
        const math::Vector2 upper = model ? drawing_.limits.upper : setup.sheet().max - margin;
        out.point(10, lower);
        out.point(11, upper);
        out.point(12, math::Vector3{});
        out.point(14, math::Vector3{1e20, 1e20, 1e20});
        out.point(15, math::Vector3{-1e20, -1e20, -1e20});
        out.real(146, 0.0);
        out.point(13, math::Vector3{0, 0, 0});
        out.point(16, math::Vector3{1, 0, 0});
        out.point(17, math::Vector3{0, 1, 0});
        out.integer(76, 0);
        out.handle(330, space.record);
        if (space.lastViewport != 0) out.handle(331, space.lastViewport);
        ownXdata(own);
    }
    classCounts_["LAYOUT"] += spaces_.size();
}

void Writer::namedPageSetups() {
    Entries entries;
    for (const PageSetup& setup : drawing_.namedPageSetups) entries.emplace_back(symbol(setup.name), newHandle());
    dictionary(fixed_.plotSettings, fixed_.root, entries, false);
    std::size_t i = 0;
    for (const PageSetup& setup : drawing_.namedPageSetups) {
        const std::uint64_t handle = entries[i++].second;
        FieldKeys keys = setupKeys(setup);
        if (!isPlain(setup.name)) keys.push_back("name");
        const OwnData own = gatherRecord(setup, keys, handle);
        objectHead("PLOTSETTINGS", handle, fixed_.plotSettings, own.dictionary);
        plotSettings(setup, symbol(setup.name), false);
        ownXdata(own);
    }
    classCounts_["PLOTSETTINGS"] += entries.size();
}

}  // namespace kova::io::dxf
