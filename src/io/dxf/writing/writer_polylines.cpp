// Polylines and what DXF keeps in POLYLINE records.
#include "io/dxf/writing/writer.hpp"

namespace kova::io::dxf {

using namespace engine;
using math::Vector2;
using math::Vector3;

bool Writer::write(const PolylineEntity& e, const Target& t) {
    const std::size_t count = e.vertices.size();
    if (count == 0) return false;
    FieldKeys keys;
    if (e.spline) keys.push_back("spline");
    if (e.curveType != 0) keys.push_back("curveType");
    if (!e.records.empty()) keys.push_back("records");
    if (!e.fit.empty()) keys.push_back("fit");
    // Lists that are longer than the vertices' come back as they are.
    if (e.bulges.size() > count) keys.push_back("bulges");
    if (e.startWidths.size() > count) keys.push_back("startWidths");
    if (e.endWidths.size() > count) keys.push_back("endWidths");
    const OwnData own = gather(e, kElevation | kThickness | kNormal, keys);
    head("LWPOLYLINE", e, t, own);
    GroupWriter& out = *out_;
    out.subclass("AcDbPolyline");
    out.integer(90, static_cast<std::int64_t>(count));
    out.integer(70, (e.closed ? 1 : 0) | (e.ltgen ? 128 : 0));
    if (e.elevation != 0.0) out.real(38, e.elevation);
    thickness(e);
    const bool wide = e.hasWidths();
    for (std::size_t i = 0; i < count; ++i) {
        out.point(10, e.vertices[i]);
        if (wide) {
            out.real(40, e.startWidth(i));
            out.real(41, e.endWidth(i));
        }
        if (const double bulge = e.bulge(i); bulge != 0.0) out.real(42, bulge);
    }
    normal(e);
    tail(e, own);
    return true;
}

void Writer::polylineHead(const Entity& e, const Target& t, const OwnData& own, std::string_view marker) {
    head("POLYLINE", e, t, own);
    out_->subclass(marker);
    out_->integer(66, 1);
    out_->point(10, Vector3{});
}

void Writer::vertexHead(std::uint64_t owner, const Entity& e, const Target& t, std::string_view marker) {
    GroupWriter& out = *out_;
    out.record("VERTEX");
    out.handle(5, newHandle());
    out.handle(330, owner);
    out.subclass("AcDbEntity");
    if (t.paper) out.integer(67, 1);
    out.text(8, symbol(e.layer));
    out.subclass("AcDbVertex");
    if (!marker.empty()) out.subclass(marker);
}

void Writer::sequenceEnd(std::uint64_t owner, const Entity& e, const Target& t) {
    GroupWriter& out = *out_;
    out.record("SEQEND");
    out.handle(5, newHandle());
    out.handle(330, owner);
    out.subclass("AcDbEntity");
    if (t.paper) out.integer(67, 1);
    out.text(8, symbol(e.layer));
}

void Writer::vertices(std::span<const Vector3> points, int flags, const Entity& e, const Target& t,
                      std::string_view marker) {
    for (const Vector3& p : points) {
        vertexHead(e.handle(), e, t, marker);
        out_->point(10, p);
        out_->integer(70, flags);
    }
}

bool Writer::write(const Polyline3DEntity& e, const Target& t) {
    if (e.vertices.empty()) return false;
    // The frame of a curve stands before its points.
    const bool curved = !e.frame.empty() && (e.curveType == 5 || e.curveType == 6);
    FieldKeys keys;
    if (!curved && !e.frame.empty()) keys.push_back("frame");
    if (!curved && e.curveType != 0) keys.push_back("curveType");
    const OwnData own = gather(e, kNoCommon, keys);
    polylineHead(e, t, own, "AcDb3dPolyline");
    out_->integer(70, 8 | (e.closed ? 1 : 0) | (curved ? 4 : 0));
    if (curved) out_->integer(75, e.curveType);
    tailAndParts(e, own, [&] {
        constexpr std::string_view kMarker = "AcDb3dPolylineVertex";
        if (curved) vertices(e.frame, 32 | PolylineRecord::kFramePoint, e, t, kMarker);
        vertices(e.vertices, curved ? 32 | PolylineRecord::kSplineVertex : 32, e, t, kMarker);
        sequenceEnd(e.handle(), e, t);
    });
    return true;
}

bool Writer::write(const MeshEntity& e, const Target& t) {
    const auto isGrid = [](std::int32_t rows, std::int32_t columns, std::size_t count) {
        return rows >= 2 && columns >= 2 && rows <= 32767 && columns <= 32767 &&
               count == static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns);
    };
    if (!isGrid(e.rows, e.cols, e.vertices.size())) return false;
    const bool typed = e.surfaceType == 5 || e.surfaceType == 6 || e.surfaceType == 8;
    const bool smooth = typed && isGrid(e.frameRows, e.frameCols, e.frame.size());
    FieldKeys keys;
    const bool plain = e.frame.empty() && e.surfaceType == 0 && e.frameRows == 0 && e.frameCols == 0;
    if (!smooth && !plain) keys = FieldKeys{"surfaceType", "frameRows", "frameCols", "frame"};
    const OwnData own = gather(e, kNoCommon, keys);
    polylineHead(e, t, own, "AcDbPolygonMesh");
    out_->integer(70, 16 | (e.closedM ? 1 : 0) | (e.closedN ? 32 : 0) | (smooth ? 4 : 0));
    out_->integer(71, smooth ? e.frameRows : e.rows);
    out_->integer(72, smooth ? e.frameCols : e.cols);
    if (smooth) {
        out_->integer(73, e.rows);
        out_->integer(74, e.cols);
        out_->integer(75, e.surfaceType);
    }
    tailAndParts(e, own, [&] {
        constexpr std::string_view kMarker = "AcDbPolygonMeshVertex";
        if (smooth) vertices(e.frame, 64 | PolylineRecord::kFramePoint, e, t, kMarker);
        vertices(e.vertices, smooth ? 64 | PolylineRecord::kSplineVertex : 64, e, t, kMarker);
        sequenceEnd(e.handle(), e, t);
    });
    return true;
}

bool Writer::write(const PolyfaceEntity& e, const Target& t) {
    if (e.vertices.empty() || e.vertices.size() > 32767) return false;
    // Records hold faces of up to four corners; larger ones become several with hidden edges between.
    std::vector<std::array<std::int32_t, 4>> faces;
    bool exact = true;
    for (const std::vector<std::int32_t>& face : e.faces) {
        const auto valid = [&](std::int32_t corner) { return e.vertexIndex(corner).has_value(); };
        if (face.size() < 3 || !std::all_of(face.begin(), face.end(), valid)) {
            exact = false;
            continue;
        }
        if (face.size() <= 4) {
            std::array<std::int32_t, 4> four{0, 0, 0, 0};
            std::copy(face.begin(), face.end(), four.begin());
            faces.push_back(four);
            continue;
        }
        exact = false;
        const auto hidden = [](std::int32_t corner) { return corner > 0 ? -corner : corner; };
        for (std::size_t i = 1; i + 1 < face.size(); ++i) {
            const bool first = i == 1;
            const bool last = i + 2 == face.size();
            faces.push_back({first ? face[0] : hidden(face[0]), face[i], last ? face[i + 1] : hidden(face[i + 1]), 0});
        }
    }
    if (faces.size() > 32767) return false;
    FieldKeys keys;
    if (!exact) keys.push_back("faces");
    const OwnData own = gather(e, kNoCommon, keys);
    polylineHead(e, t, own, "AcDbPolyFaceMesh");
    out_->integer(70, 64);
    out_->integer(71, static_cast<std::int64_t>(e.vertices.size()));
    out_->integer(72, static_cast<std::int64_t>(faces.size()));
    tailAndParts(e, own, [&] {
        for (const Vector3& p : e.vertices) {
            vertexHead(e.handle(), e, t, "AcDbPolyFaceMeshVertex");
            out_->point(10, p);
            out_->integer(70, 192);
        }
        for (const auto& face : faces) {
            GroupWriter& out = *out_;
            out.record("VERTEX");
            out.handle(5, newHandle());
            out.handle(330, e.handle());
            out.subclass("AcDbEntity");
            if (t.paper) out.integer(67, 1);
            out.text(8, symbol(e.layer));
            out.subclass("AcDbFaceRecord");
            out.point(10, Vector3{});
            out.integer(70, 128);
            for (int i = 0; i < 4; ++i)
                if (face[static_cast<std::size_t>(i)] != 0) out.integer(71 + i, face[static_cast<std::size_t>(i)]);
        }
        sequenceEnd(e.handle(), e, t);
    });
    return true;
}

}  // namespace kova::io::dxf
