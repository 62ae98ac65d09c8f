#include "kdraw/entities/viewport.hpp"

#include "kdraw/groups/describing.hpp"

namespace kdraw {

void ViewportEntity::describe(Fields& f) {
    f.subclass("AcDbViewport");
    f.bd3(10, center);
    f.bd(40, width);
    f.bd(41, height);
    if (f.dxf()) {
        std::int32_t on = !isOn() ? 0 : number == 1 ? 1 : 2;
        if (f.output() != nullptr) f.rs(68, on);
        f.rs(69, number);
    }
    f.bd3(17, target);
    f.bd3(16, direction);
    f.angle(51, twist);
    f.bd(45, viewHeight);
    f.bd(42, lensLength);
    f.bd(43, frontClip);
    f.bd(44, backClip);
    f.angle(50, snapAngle);
    f.rd2(12, viewCenter);
    f.rd2(13, snapBase);
    f.rd2(14, snapSpacing);
    f.rd2(15, gridSpacing);
    f.bs(72, circleZoom);
    if (f.since(Version::R2007)) f.bs(61, gridMajor);
    std::size_t frozen = 0;
    if (!f.dxf()) frozen = f.count(Width::BL, 0, frozenLayers.size(), kBitsOfHandle);
    f.bl(90, status);
    f.text(1, styleSheet);
    f.rc(281, renderMode);
    f.b(74, ucsAtOrigin);
    f.b(71, ownUcs);
    f.bd3(110, ucsOrigin);
    f.bd3(111, ucsXAxis);
    f.bd3(112, ucsYAxis);
    f.bd(146, ucsElevation);
    f.bs(79, orthographicKind);
    if (f.since(Version::R2004)) f.bs(170, shadePlot);
    if (f.since(Version::R2007)) {
        f.b(292, defaultLights);
        f.rc(282, defaultLighting);
        f.bd(141, brightness);
        f.bd(142, contrast);
        f.color(63, 421, ambient);
    }
    if (f.dxf())
        groupHandles(f, 331, frozenLayers);
    else
        f.restOfHandles(f.since(Version::R2004) ? Ref::SoftPointer : Ref::HardPointer, 0, frozenLayers, frozen);
    f.handle(Ref::HardPointer, 340, clipBoundary);
    if (f.before(Version::R2004)) f.handle(Ref::HardPointer, 0, oldHeader);
    f.handle(Ref::HardPointer, 345, namedUcs);
    f.handle(Ref::HardPointer, 346, baseUcs);
    if (f.before(Version::R2007)) return;
    f.handle(Ref::SoftPointer, 332, background);
    f.handle(Ref::HardPointer, 348, visualStyle);
    f.handle(Ref::SoftPointer, 333, shadePlotObject);
    f.handle(Ref::HardOwner, 361, sun);
}

}  // namespace kdraw
