#include "kdraw/objects/small_objects.hpp"

#include "kdraw/groups/describing_objects.hpp"

namespace kdraw {

void Scale::describe(Fields& f) {
    f.subclass("AcDbScale");
    f.bs(70, unknown);
    f.text(300, name);
    f.bd(140, paperUnits);
    f.bd(141, drawingUnits);
    f.b(290, isUnit);
}

void RasterVariables::describe(Fields& f) {
    f.subclass("AcDbRasterVariables");
    f.bl(90, classVersion);
    f.bs(70, frame);
    f.bs(71, quality);
    f.bs(72, units);
}

void WipeoutVariables::describe(Fields& f) {
    f.subclass("AcDbWipeoutVariables");
    f.bs(70, frame);
}

void BookColor::describe(Fields& f) {
    f.subclass("AcDbColor");
    f.color(62, 420, color);
}

void SortEntities::describe(Fields& f) {
    f.subclass("AcDbSortentsTable");
    if (DxfInput* in = f.input()) {
        f.handle(Ref::SoftPointer, 330, block);
        pairs.clear();
        for (bool more = in->find(331); more && !in->atEnd(); in->skip()) {
            if (in->peek() == 331)
                pairs.push_back({0, in->handle()});
            else if (in->peek() == 5 && pairs.back().sort == 0)
                pairs.back().sort = in->handle();
        }
        return;
    }
    if (DxfOutput* out = f.output()) {
        out->handle(330, block);
        for (const Pair& pair : pairs) {
            out->handle(331, pair.entity);
            out->handle(5, pair.sort);
        }
        return;
    }
    const std::size_t n = f.count(Width::BL, 0, pairs.size(), 8);
    f.rest(pairs, n, [&](Pair& pair) { dataHandle(f, 0, pair.sort); });
    f.handle(Ref::SoftPointer, 0, block);
    for (Pair& pair : pairs) f.handle(Ref::SoftPointer, 0, pair.entity);
}

void FieldList::describe(Fields& f) {
    f.subclass("AcDbIdSet");
    if (f.dxf()) {
        groupHandles(f, 330, fields);
        f.subclass("AcDbFieldList");
        return;
    }
    const std::size_t n = f.count(Width::BL, 0, fields.size(), 8);
    f.b(0, unknown);
    f.restOfHandles(Ref::SoftPointer, 0, fields, n);
}

}  // namespace kdraw
