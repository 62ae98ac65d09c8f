#include "kdraw/entities/image.hpp"

#include "kdraw/groups/describing.hpp"

namespace kdraw {

void ImageEntity::describeImage(Fields& f, std::string_view marker) {
    f.subclass(marker);
    f.bl(90, version);
    f.bd3(10, position);
    f.bd3(11, u);
    f.bd3(12, v);
    f.rd2(13, size);
    // The order of groups: the definition before the display, the reactor before the boundary.
    if (f.dxf()) f.handle(Ref::HardPointer, 340, definition);
    f.bs(70, display);
    f.b(280, clipping);
    f.rc(281, brightness);
    f.rc(282, contrast);
    f.rc(283, fade);
    if (f.since(Version::R2010) && wanted(f, clipInside)) f.b(290, clipInside);
    if (f.dxf()) f.handle(Ref::HardOwner, 360, reactor);
    f.bs(71, boundaryKind);
    std::size_t count = 2;
    if (f.dxf() || boundaryKind == kPolygon)
        count = f.count(Width::BL, 91, boundary.size(), 128);
    else if (!f.reading())
        boundary.resize(count);
    f.rest(boundary, count, [&](Vector2& p) { f.rd2(14, p); });
    if (f.dxf()) return;
    f.handle(Ref::HardPointer, 0, definition);
    f.handle(Ref::HardOwner, 0, reactor);
}

void UnderlayEntity::describe(Fields& f) {
    f.subclass("AcDbUnderlayReference");
    plainExtrusion(f, normal);
    f.bd3(10, position);
    f.angle(50, rotation);
    f.bd(41, scale.x);
    f.bd(42, scale.y);
    f.bd(43, scale.z);
    f.rc(280, flags);
    f.rc(281, contrast);
    f.rc(282, fade);
    if (DxfInput* in = f.input()) {
        boundary.clear();
        for (bool found = in->find(11); found; found = in->seek(11)) {
            boundary.push_back({in->real(), 0.0});
            in->skip();
            if (in->peek() == 21) boundary.back().y = in->real();
        }
    } else if (DxfOutput* out = f.output()) {
        for (const Vector2& p : boundary) out->point(11, p);
    } else {
        f.list(Width::BL, 0, boundary, 128, [&](Vector2& p) { f.rd2(0, p); });
    }
    f.handle(Ref::HardPointer, 340, definition);
}

}  // namespace kdraw
