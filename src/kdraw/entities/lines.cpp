#include "kdraw/entities/lines.hpp"

#include "kdraw/groups/describing.hpp"

namespace kdraw {

void LineEntity::describe(Fields& f) {
    f.subclass("AcDbLine");
    if (f.dxf()) {
        f.bd3(10, start);
        f.bd3(11, end);
    } else {
        bool flat = start.z == 0.0 && end.z == 0.0;
        f.b(0, flat);
        f.rd(0, start.x);
        f.dd(0, end.x, start.x);
        f.rd(0, start.y);
        f.dd(0, end.y, start.y);
        if (!flat) {
            f.rd(0, start.z);
            f.dd(0, end.z, start.z);
        }
    }
    f.thickness(39, thickness);
    f.extrusion(210, normal);
}

void PointEntity::describe(Fields& f) {
    f.subclass("AcDbPoint");
    f.bd3(10, position);
    f.thickness(39, thickness);
    f.extrusion(210, normal);
    sparseAngle(f, 50, xAxisAngle);
}

void RayEntity::describeAs(Fields& f, std::string_view marker) {
    f.subclass(marker);
    f.bd3(10, base);
    f.bd3(11, direction);
}

void RayEntity::describe(Fields& f) { describeAs(f, "AcDbRay"); }

void XlineEntity::describe(Fields& f) { describeAs(f, "AcDbXline"); }

void SolidEntity::describe(Fields& f) {
    f.subclass("AcDbTrace");
    f.thickness(39, thickness);
    if (!f.dxf()) f.bd(0, elevation);
    for (int i = 0; i < 4; ++i) {
        Vector2& corner = corners[static_cast<std::size_t>(i)];
        // A triangle may do without its fourth corner.
        if (f.reading() && i == 3) corner = corners[2];
        f.rd2(f.dxf() ? 10 + i : 0, corner);
        if (!f.dxf()) continue;
        double z = elevation;
        f.rd(30 + i, z);
        if (i == 0) elevation = z;
    }
    f.extrusion(210, normal);
}

void FaceEntity::describe(Fields& f) {
    f.subclass("AcDbFace");
    if (f.dxf()) {
        for (int i = 0; i < 4; ++i) {
            Vector3& corner = corners[static_cast<std::size_t>(i)];
            if (f.reading() && i == 3) corner = corners[2];
            f.bd3(10 + i, corner);
        }
        if (wanted(f, invisibleEdges != 0)) f.bs(70, invisibleEdges);
        return;
    }
    bool plain = invisibleEdges == 0;
    bool flat = corners[0].z == 0.0;
    f.b(0, plain);
    f.b(0, flat);
    f.rd(0, corners[0].x);
    f.rd(0, corners[0].y);
    if (!flat) f.rd(0, corners[0].z);
    for (std::size_t i = 1; i < 4; ++i) {
        f.dd(0, corners[i].x, corners[i - 1].x);
        f.dd(0, corners[i].y, corners[i - 1].y);
        f.dd(0, corners[i].z, corners[i - 1].z);
    }
    if (!plain) f.bs(0, invisibleEdges);
}

void ShapeEntity::describe(Fields& f) {
    f.subclass("AcDbShape");
    f.bd3(10, position);
    f.bd(40, size);
    sparseAngle(f, 50, rotation);
    sparseReal(f, 41, widthFactor, 1.0);
    sparseAngle(f, 51, oblique);
    if (f.dxf()) {
        f.text(2, name);
        f.thickness(39, thickness);
    } else {
        f.bd(0, thickness);
        f.bs(0, number);
    }
    plainExtrusion(f, normal);
    f.handle(Ref::HardPointer, 0, style);
}

}  // namespace kdraw
