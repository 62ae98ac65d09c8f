#include "kdraw/objects/views.hpp"

#include <cmath>

#include "kdraw/groups/describing_objects.hpp"

namespace kdraw {

void ViewFields::describeLens(Fields& f) {
    f.bd(42, lens);
    f.bd(43, front);
    f.bd(44, back);
}

void ViewFields::describeLights(Fields& f) {
    f.rc(281, render);
    if (!f.since(Version::R2007)) return;
    f.b(292, defaultLights);
    f.rc(282, lighting);
    f.bd(141, brightness);
    f.bd(142, contrast);
    f.color(63, 421, ambient);
}

void UcsFields::describe(Fields& f) {
    f.bd3(110, origin);
    f.bd3(111, xAxis);
    f.bd3(112, yAxis);
    f.bd(146, elevation);
    f.bs(79, orthographic);
}

void ViewRecord::describe(Fields& f) {
    int flags = paper ? 1 : 0;
    describeHead(f, "AcDbViewTableRecord", flags);
    f.bd(40, view.height);
    f.bd(41, view.width);
    f.rd2(10, view.center);
    f.bd3(12, view.target);
    f.bd3(11, view.direction);
    f.angle(50, view.twist);
    view.describeLens(f);
    if (f.dxf())
        f.bs(71, view.mode);
    else
        viewModeBits(f, view.mode);
    view.describeLights(f);
    if (f.dxf())
        paper = (flags & 1) != 0;
    else
        f.b(0, paper);
    f.b(72, hasUcs);
    if (hasUcs) ucs.describe(f);
    const bool late = f.since(Version::R2007);
    if (late) {
        f.b(73, plottableCamera);
        optionalHandle(f, Ref::SoftPointer, 332, background);
        optionalHandle(f, Ref::HardPointer, 348, visualStyle);
        optionalHandle(f, Ref::HardOwner, 361, sun);
    }
    if (hasUcs) {
        optionalHandle(f, Ref::HardPointer, 346, baseUcs);
        optionalHandle(f, Ref::HardPointer, 345, namedUcs);
    }
    if (late) optionalHandle(f, Ref::SoftPointer, 334, liveSection);
}

void UcsRecord::describe(Fields& f) {
    describeHead(f, "AcDbUCSTableRecord");
    f.bd3(10, origin);
    f.bd3(11, xAxis);
    f.bd3(12, yAxis);
    f.bd(146, elevation);
    f.bs(79, viewType);
    if (!f.dxf())
        f.list(Width::BS, 0, orthographic, 8, [&](Orthographic& o) {
            f.bs(0, o.type);
            f.bd3(0, o.origin);
        });
    optionalHandle(f, Ref::HardPointer, 346, base);
    f.handle(Ref::HardPointer, 0, named);
}

void ViewportRecord::describe(Fields& f) {
    if (f.dxf()) {
        describeGroups(f);
        return;
    }
    describeHead(f, {});
    f.bd(0, view.height);
    f.bd(0, view.width);
    f.rd2(0, view.center);
    f.bd3(0, view.target);
    f.bd3(0, view.direction);
    f.bd(0, view.twist);
    view.describeLens(f);
    viewModeBits(f, view.mode);
    view.describeLights(f);
    f.rd2(0, lower);
    f.rd2(0, upper);
    f.b(0, ucsFollow);
    f.bs(0, circleZoom);
    f.b(0, fastZoom);
    // Two bits, the one of lower value first.
    bool shown = (ucsIcon & 1) != 0, atOrigin = (ucsIcon & 2) != 0;
    f.b(0, shown);
    f.b(0, atOrigin);
    if (f.reading()) ucsIcon = static_cast<std::uint8_t>((shown ? 1 : 0) | (atOrigin ? 2 : 0));
    f.b(0, grid);
    f.rd2(0, gridSpacing);
    f.b(0, snap);
    f.b(0, snapStyle);
    f.bs(0, snapPair);
    f.bd(0, snapAngle);
    f.rd2(0, snapBase);
    f.rd2(0, snapSpacing);
    f.b(0, ucsAtOrigin);
    f.b(0, ucsPerViewport);
    ucs.describe(f);
    if (f.since(Version::R2007)) {
        f.bs(0, gridFlags);
        f.bs(0, gridMajor);
        f.handle(Ref::SoftPointer, 0, background);
        f.handle(Ref::HardPointer, 0, visualStyle);
        f.handle(Ref::HardOwner, 0, sun);
    }
    f.handle(Ref::HardPointer, 0, namedUcs);
    f.handle(Ref::HardPointer, 0, baseUcs);
}

void ViewportRecord::describeGroups(Fields& f) {
    describeHead(f, "AcDbViewportTableRecord");
    f.rd2(10, lower);
    f.rd2(11, upper);
    f.rd2(12, view.center);
    f.rd2(13, snapBase);
    f.rd2(14, snapSpacing);
    f.rd2(15, gridSpacing);
    f.bd3(16, view.direction);
    f.bd3(17, view.target);
    f.bd(40, view.height);
    // Here the width stands as its ratio to the height.
    double aspect = view.height != 0.0 ? view.width / view.height : 1.0;
    if (!std::isfinite(aspect) || aspect <= 0.0) aspect = 1.0;
    f.bd(41, aspect);
    if (f.reading()) view.width = view.height * aspect;
    view.describeLens(f);
    f.angle(50, snapAngle);
    f.angle(51, view.twist);
    int mode = view.mode | (ucsFollow ? 8 : 0);
    f.bs(71, mode);
    if (f.reading()) {
        view.mode = mode & ~8;
        ucsFollow = (mode & 8) != 0;
    }
    f.bs(72, circleZoom);
    f.b(73, fastZoom);
    f.rc(74, ucsIcon);
    f.b(75, snap);
    f.b(76, grid);
    f.b(77, snapStyle);
    f.bs(78, snapPair);
    f.b(65, ucsPerViewport);
    ucs.describe(f);
    optionalHandle(f, Ref::HardPointer, 345, namedUcs);
    optionalHandle(f, Ref::HardPointer, 346, baseUcs);
    optionalHandle(f, Ref::HardPointer, 348, visualStyle);
    f.bs(60, gridFlags);
    f.bs(61, gridMajor);
    view.describeLights(f);
    optionalHandle(f, Ref::SoftPointer, 332, background);
    optionalHandle(f, Ref::HardOwner, 361, sun);
}

void ViewportHeader::describe(Fields& f) {
    int flags = on ? 2 : 0;
    describeHead(f, "AcDbVXTableRecord", flags);
    if (f.dxf())
        on = (flags & 2) != 0;
    else
        f.b(0, on);
    f.handle(Ref::SoftPointer, 0, viewport);
    f.handle(Ref::HardPointer, 0, previous);
}

}  // namespace kdraw
