#include "kdraw/objects/layout.hpp"

#include "kdraw/groups/describing_objects.hpp"

namespace kdraw {

namespace {

/// Two numbers whose groups are not ten apart.
void pair(Fields& f, int first, int second, Vector2& v) {
    f.bd(first, v.x);
    f.bd(second, v.y);
}

}  // namespace

void PlotSettings::describe(Fields& f) {
    f.subclass("AcDbPlotSettings");
    f.text(1, pageSetup);
    f.text(2, printer);
    f.bs(70, plotFlags);
    f.bd(40, left);
    f.bd(41, bottom);
    f.bd(42, right);
    f.bd(43, top);
    f.bd(44, paperWidth);
    f.bd(45, paperHeight);
    f.text(4, media);
    pair(f, 46, 47, plotOrigin);
    f.bs(72, paperUnit);
    f.bs(73, rotation);
    f.bs(74, plotType);
    pair(f, 48, 49, windowLower);
    pair(f, 140, 141, windowUpper);
    if (f.before(Version::R2004)) f.text(0, plotViewName);
    f.bd(142, realUnits);
    f.bd(143, drawingUnits);
    f.text(7, styleSheet);
    f.bs(75, scaleType);
    f.bd(147, scaleFactor);
    pair(f, 148, 149, imageOrigin);
    if (f.before(Version::R2004)) return;
    f.bs(76, shadeMode);
    f.bs(77, shadeResolution);
    f.bs(78, shadeDpi);
    if (f.output() != nullptr && plotView == 0)
        f.text(6, plotViewName);
    else
        f.record(Table::View, 6, plotView);
    if (f.since(Version::R2007)) optionalHandle(f, Ref::SoftPointer, 333, shadeObject);
}

void Layout::describe(Fields& f) {
    PlotSettings::describe(f);
    f.subclass("AcDbLayout");
    f.text(1, name);
    f.bl(71, tab);
    f.bs(70, layoutFlags);
    f.bd3(13, ucsOrigin);
    f.rd2(10, limitsMin);
    f.rd2(11, limitsMax);
    f.bd3(12, insertionBase);
    f.bd3(16, ucsXAxis);
    f.bd3(17, ucsYAxis);
    f.bd(146, elevation);
    f.bs(76, orthographic);
    f.bd3(14, extentsMin);
    f.bd3(15, extentsMax);
    std::size_t n = 0;
    if (!f.dxf() && f.since(Version::R2004)) n = f.count(Width::BL, 0, viewports.size(), 8);
    f.handle(Ref::SoftPointer, 330, block);
    optionalHandle(f, Ref::SoftPointer, 331, activeViewport);
    optionalHandle(f, Ref::HardPointer, 346, baseUcs);
    optionalHandle(f, Ref::HardPointer, 345, namedUcs);
    if (!f.dxf() && f.since(Version::R2004)) f.restOfHandles(Ref::SoftPointer, 0, viewports, n);
}

}  // namespace kdraw
