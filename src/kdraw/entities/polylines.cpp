#include "kdraw/entities/polylines.hpp"

#include <cmath>

#include "kdraw/groups/describing.hpp"

namespace kdraw {

namespace {

// Of a light polyline's record; DXF has other values for closed (1) and linetype generation (128).
constexpr std::uint16_t kHasNormal = 0x1, kHasThickness = 0x2, kHasConstantWidth = 0x4, kHasElevation = 0x8,
                        kHasBulges = 0x10, kHasWidths = 0x20, kLinetypeGeneration = 0x100, kClosed = 0x200,
                        kHasIds = 0x400;

}  // namespace

void LwPolylineEntity::describe(Fields& f) {
    f.subclass("AcDbPolyline");
    if (DxfInput* in = f.input()) {
        readGroups(*in);
        f.extrusion(210, normal);
        return;
    }
    if (DxfOutput* out = f.output()) {
        writeGroups(*out);
        f.extrusion(210, normal);
        return;
    }
    std::uint16_t flags = 0;
    if (!(normal == Vector3{0.0, 0.0, 1.0})) flags |= kHasNormal;
    if (thickness != 0.0) flags |= kHasThickness;
    if (constantWidth != 0.0) flags |= kHasConstantWidth;
    if (elevation != 0.0) flags |= kHasElevation;
    if (!bulges.empty()) flags |= kHasBulges;
    if (!widths.empty()) flags |= kHasWidths;
    if (linetypeGeneration) flags |= kLinetypeGeneration;
    if (closed) flags |= kClosed;
    if (!ids.empty()) flags |= kHasIds;
    f.bs(0, flags);
    if (f.reading()) {
        linetypeGeneration = (flags & kLinetypeGeneration) != 0;
        closed = (flags & kClosed) != 0;
    }
    if ((flags & kHasConstantWidth) != 0) f.bd(0, constantWidth);
    if ((flags & kHasElevation) != 0) f.bd(0, elevation);
    if ((flags & kHasThickness) != 0) f.bd(0, thickness);
    if ((flags & kHasNormal) != 0) f.bd3(0, normal);
    std::size_t bulgeCount = 0, idCount = 0, widthCount = 0;
    const std::size_t count = f.count(Width::BL, 0, vertices.size(), 4);
    if ((flags & kHasBulges) != 0) bulgeCount = f.count(Width::BL, 0, bulges.size(), kBitsOfReal);
    if ((flags & kHasIds) != 0 && f.since(Version::R2010)) idCount = f.count(Width::BL, 0, ids.size(), 2);
    if ((flags & kHasWidths) != 0) widthCount = f.count(Width::BL, 0, widths.size(), 2 * kBitsOfReal);
    if (f.reading()) {
        vertices.reserve(count);
        bulges.reserve(bulgeCount);
        widths.reserve(widthCount);
    }
    const Vector2* before = nullptr;
    Vector2 last;
    f.rest(vertices, count, [&](Vector2& p) {
        if (before == nullptr) {
            f.rd2(0, p);
        } else {
            f.dd(0, p.x, last.x);
            f.dd(0, p.y, last.y);
        }
        last = p;
        before = &last;
    });
    f.rest(bulges, bulgeCount, [&](double& bulge) { f.bd(0, bulge); });
    f.rest(ids, idCount, [&](std::int32_t& id) { f.bl(0, id); });
    f.rest(widths, widthCount, [&](Taper& width) {
        f.bd(0, width.start);
        f.bd(0, width.end);
    });
}

void LwPolylineEntity::readGroups(DxfInput& in) {
    // Lists become as long as the vertices' when one vertex has a value.
    const auto at = [&](auto& list) -> auto& {
        list.resize(std::max<std::size_t>(vertices.size(), 1));
        return list.back();
    };
    for (; !in.atEnd(); in.skip()) {
        switch (in.peek()) {
            case 10:
                vertices.push_back({in.real(), 0.0});
                break;
            case 20:
                if (!vertices.empty()) vertices.back().y = in.real();
                break;
            case 40:
                at(widths).start = in.real();
                break;
            case 41:
                at(widths).end = in.real();
                break;
            case 42:
                at(bulges) = in.real();
                break;
            case 91:
                at(ids) = static_cast<std::int32_t>(in.integer());
                break;
            case 38:
                elevation = in.real();
                break;
            case 39:
                thickness = in.real();
                break;
            case 43:
                constantWidth = in.real();
                break;
            case 70:
                closed = (in.integer() & 1) != 0;
                linetypeGeneration = (in.integer() & 128) != 0;
                break;
            default:
                break;
        }
    }
    if (!widths.empty()) widths.resize(vertices.size());
    if (!bulges.empty()) bulges.resize(vertices.size());
    if (!ids.empty()) ids.resize(vertices.size());
}

void LwPolylineEntity::writeGroups(DxfOutput& out) {
    out.integer(90, static_cast<std::int64_t>(vertices.size()));
    out.integer(70, (closed ? 1 : 0) | (linetypeGeneration ? 128 : 0));
    if (constantWidth != 0.0 && widths.empty()) out.real(43, constantWidth);
    if (elevation != 0.0) out.real(38, elevation);
    if (thickness != 0.0) out.real(39, thickness);
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        out.point(10, vertices[i]);
        if (i < ids.size() && ids[i] != 0) out.integer(91, ids[i]);
        if (!widths.empty()) {
            const Taper width = i < widths.size() ? widths[i] : Taper{};
            out.real(40, width.start);
            out.real(41, width.end);
        }
        if (i < bulges.size() && bulges[i] != 0.0) out.real(42, bulges[i]);
    }
}

void VertexOwner::describeOwned(Fields& f) {
    if (f.dxf()) return;
    if (f.before(Version::R2004)) {
        vertices.resize(2);
        f.handle(Ref::SoftPointer, 0, vertices[0]);
        f.handle(Ref::SoftPointer, 0, vertices[1]);
    } else {
        f.handles(Width::BL, Ref::HardOwner, 0, 0, vertices);
    }
    f.handle(Ref::HardOwner, 0, end);
}

void Polyline2dEntity::describe(Fields& f) {
    f.subclass("AcDb2dPolyline");
    f.constant(66, 1);
    if (f.dxf()) {
        Vector3 base{0.0, 0.0, elevation};
        f.bd3(10, base);
        elevation = base.z;
    }
    f.bs(70, flags);
    if (wanted(f, curveType != 0)) f.bs(75, curveType);
    sparseReal(f, 40, startWidth, 0.0);
    sparseReal(f, 41, endWidth, 0.0);
    f.thickness(39, thickness);
    f.bd(0, elevation);
    f.extrusion(210, normal);
    describeOwned(f);
}

void Polyline3dEntity::describe(Fields& f) {
    constexpr std::uint16_t kIs3d = 8, kSplined = 4;
    f.subclass("AcDb3dPolyline");
    f.constant(66, 1);
    if (f.dxf()) {
        Vector3 base;
        if (f.output() != nullptr) f.bd3(10, base);
        auto flags = static_cast<std::uint16_t>(kIs3d | (closed ? 1 : 0) | (curveType != 0 ? kSplined : 0));
        f.bs(70, flags);
        closed = (flags & 1) != 0;
        if (wanted(f, curveType != 0)) f.bs(75, curveType);
        return;
    }
    std::uint8_t curve = curveType == 5 ? 1 : curveType == 6 ? 2 : 0;
    std::uint8_t flags = closed ? 1 : 0;
    f.rc(0, curve);
    f.rc(0, flags);
    if (f.reading()) {
        curveType = (curve & 1) != 0 ? 5 : (curve & 2) != 0 ? 6 : 0;
        closed = (flags & 1) != 0;
    }
    describeOwned(f);
}

void PolygonMeshEntity::describe(Fields& f) {
    constexpr std::uint16_t kMesh = 16;
    f.subclass("AcDbPolygonMesh");
    f.constant(66, 1);
    if (f.dxf()) {
        Vector3 base;
        if (f.output() != nullptr) f.bd3(10, base);
        auto packed = static_cast<std::uint16_t>(flags | kMesh);
        f.bs(70, packed);
        flags = static_cast<std::uint16_t>(packed & ~kMesh);
    } else {
        f.bs(0, flags);
    }
    if (wanted(f, curveType != 0)) f.bs(75, curveType);
    f.bs(71, mCount);
    f.bs(72, nCount);
    if (wanted(f, mDensity != 0)) f.bs(73, mDensity);
    if (wanted(f, nDensity != 0)) f.bs(74, nDensity);
    describeOwned(f);
}

void PolyfaceMeshEntity::describe(Fields& f) {
    f.subclass("AcDbPolyFaceMesh");
    f.constant(66, 1);
    if (f.output() != nullptr) {
        Vector3 base;
        f.bd3(10, base);
    }
    f.constant(70, 64);
    f.bs(71, vertexCount);
    f.bs(72, faceCount);
    describeOwned(f);
}

void Vertex2dEntity::describe(Fields& f) {
    f.subclass("AcDbVertex");
    f.subclass("AcDb2dVertex");
    f.rc(70, flags);
    f.bd3(10, position);
    if (f.dxf()) {
        sparseReal(f, 40, startWidth, 0.0);
        sparseReal(f, 41, endWidth, 0.0);
    } else {
        // A negative start stands for both.
        double packed = startWidth == endWidth && startWidth > 0.0 ? -startWidth : std::abs(startWidth);
        f.bd(0, packed);
        if (f.reading()) startWidth = endWidth = std::abs(packed);
        if (packed >= 0.0) f.bd(0, endWidth);
    }
    sparseReal(f, 42, bulge, 0.0);
    if (f.since(Version::R2010) && wanted(f, id != 0)) f.bl(91, id);
    sparseAngle(f, 50, tangent);
}

void PointVertexEntity::describeAs(Fields& f, std::string_view marker) {
    f.subclass("AcDbVertex");
    f.subclass(marker);
    f.rc(70, flags);
    f.bd3(10, position);
}

void PolyfaceFaceEntity::describe(Fields& f) {
    f.subclass("AcDbFaceRecord");
    if (f.output() != nullptr) {
        Vector3 base;
        f.bd3(10, base);
    }
    f.constant(70, 128);
    for (int i = 0; i < 4; ++i) {
        std::int16_t& corner = corners[static_cast<std::size_t>(i)];
        if (wanted(f, corner != 0)) f.bs(71 + i, corner);
    }
}

}  // namespace kdraw
