// Polylines and what DXF keeps in POLYLINE records.
#include "io/dxf/writer.hpp"

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

bool Writer::write(const Polyline3DEntity& e, const Target& t) {
    if (e.vertices.empty()) return false;
    const OwnData own = gather(e, kNoCommon);
    polylineHead(e, t, own, "AcDb3dPolyline");
    out_->integer(70, 8 | (e.closed ? 1 : 0));
    tail(e, own);
    for (const Vector3& p : e.vertices) {
        vertexHead(e.handle(), e, t, "AcDb3dPolylineVertex");
        out_->point(10, p);
        out_->integer(70, 32);
    }
    sequenceEnd(e.handle(), e, t);
    return true;
}

bool Writer::write(const MeshEntity& e, const Target& t) {
    const std::size_t columns = e.cols > 0 ? static_cast<std::size_t>(e.cols) : 0;
    const std::size_t rows = e.rows > 0 ? static_cast<std::size_t>(e.rows) : 0;
    if (columns < 2 || rows < 2 || columns > 32767 || rows > 32767 || e.vertices.size() != rows * columns) return false;
    const OwnData own = gather(e, kNoCommon);
    polylineHead(e, t, own, "AcDbPolygonMesh");
    out_->integer(70, 16 | (e.closedM ? 1 : 0) | (e.closedN ? 32 : 0));
    out_->integer(71, e.rows);
    out_->integer(72, e.cols);
    tail(e, own);
    for (const Vector3& p : e.vertices) {
        vertexHead(e.handle(), e, t, "AcDbPolygonMeshVertex");
        out_->point(10, p);
        out_->integer(70, 64);
    }
    sequenceEnd(e.handle(), e, t);
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
    tail(e, own);
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
    return true;
}

}  // namespace kova::io::dxf
