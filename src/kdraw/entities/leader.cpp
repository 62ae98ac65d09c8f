#include "kdraw/entities/leader.hpp"

#include "kdraw/groups/describing.hpp"

namespace kdraw {

void LeaderEntity::describe(Fields& f) {
    f.subclass("AcDbLeader");
    bool unknown = false;
    f.b(0, unknown);
    f.bs(73, annotationKind);
    std::uint16_t path = splined ? 1 : 0;
    f.bs(72, path);
    if (f.reading()) splined = path == 1;
    f.list(Width::BL, 76, points, kBitsOfPoint, [&](Vector3& p) { f.bd3(10, p); });
    f.bd3(0, origin);
    if (f.input() != nullptr && !points.empty()) origin = points.front();
    plainExtrusion(f, normal);
    f.bd3(211, xDirection);
    if (wanted(f, !(blockOffset == Vector3{}))) f.bd3(212, blockOffset);
    if (wanted(f, !(endOffset == Vector3{}))) f.bd3(213, endOffset);
    if (f.dxf() || f.before(Version::R2010)) {
        f.bd(40, boxHeight);
        f.bd(41, boxWidth);
    }
    f.b(74, hookAlongX);
    f.b(71, arrow);
    if (f.dxf()) f.b(75, hookLine);
    f.bs(0, arrowKind);
    f.b(0, unknown);
    f.b(0, unknown);
    f.handle(Ref::HardPointer, 340, annotation);
    f.record(Table::DimStyle, 3, style);
    standardWhenMissing(f, Table::DimStyle, style);
}

void ToleranceEntity::describe(Fields& f) {
    f.subclass("AcDbFcf");
    f.bd3(10, position);
    f.bd3(11, xDirection);
    plainExtrusion(f, normal);
    f.text(1, text);
    f.record(Table::DimStyle, 3, style);
    standardWhenMissing(f, Table::DimStyle, style);
}

}  // namespace kdraw
