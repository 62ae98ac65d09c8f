#include "script/lisp/entities/entity_codes.hpp"

#include <cmath>

#include "engine/kinds/all.hpp"
#include "math/angles.hpp"

namespace kova::script::lisp {

using namespace engine;
using math::Vector2;
using math::Vector3;

// The kinds ---------------------------------------------------------------------------------------------------

namespace {

void pointListGroups(const GroupIo& io, const char* marker, int code, std::vector<Vector2>& points, const Entity& e) {
    io.marker(marker);
    if (!io.reading()) {
        io.out().integer(91, static_cast<std::int64_t>(points.size()));
        for (const Vector2& p : points) io.out().point(code, Vector3(p, e.elevation));
    } else if (io.in().has(code)) {
        points.clear();
        for (const Vector3& p : io.in().points(code)) points.push_back(p.xy());
    }
}

void polylineHead(const GroupIo& io, const char* marker, std::int32_t flags, std::int64_t m, std::int64_t n) {
    if (io.reading()) return;
    GroupWriter& out = io.out();
    out.text(100, marker);
    out.integer(66, 1);
    out.point(10, Vector3());
    out.integer(70, flags);
    if (m > 0) {
        out.integer(71, m);
        out.integer(72, n);
    }
}

}  // namespace

std::string groupTypeName(const Entity& e) {
    switch (e.type()) {
        case EntityType::Polyline3D:
        case EntityType::Mesh:
        case EntityType::Polyface:
            return "POLYLINE";
        case EntityType::Solid2D:
            return static_cast<const Solid2DEntity&>(e).trace ? "TRACE" : "SOLID";
        case EntityType::Solid3D:
            switch (static_cast<const Solid3DEntity&>(e).kind) {
                case Solid3DEntity::BodyKind::Region:
                    return "REGION";
                case Solid3DEntity::BodyKind::Body:
                    return "BODY";
                case Solid3DEntity::BodyKind::Solid:
                    return "3DSOLID";
            }
            return "3DSOLID";
        default:
            return std::string(dxfName(e.type()));
    }
}

void kindGroups(const GroupIo& io, Entity& e) {
    switch (e.type()) {
        case EntityType::Line:
            return lineGroups(io, e);
        case EntityType::Circle:
            return circleGroups(io, e);
        case EntityType::Arc:
            return arcGroups(io, e);
        case EntityType::Polyline:
            return polylineGroups(io, e);
        case EntityType::Point:
            io.marker("AcDbPoint");
            io.point(10, static_cast<PointEntity&>(e).position, e.elevation);
            return normalGroup(io, e);
        case EntityType::Text:
            return plainTextGroups(io, e);
        case EntityType::MText:
            return mtextGroups(io, e);
        case EntityType::Hatch:
            return hatchGroups(io, e);
        case EntityType::Dimension:
            return dimensionGroups(io, e);
        case EntityType::BlockReference:
            return insertGroups(io, e);
        case EntityType::Image:
            return imageGroups(io, e);
        case EntityType::Spline:
            return splineGroups(io, e);
        case EntityType::Ellipse:
            return ellipseGroups(io, e);
        case EntityType::Xline: {
            auto& x = static_cast<XlineEntity&>(e);
            io.marker("AcDbXline");
            io.point(10, x.base, e.elevation);
            return io.flat(11, x.dir);
        }
        case EntityType::Ray: {
            auto& x = static_cast<RayEntity&>(e);
            io.marker("AcDbRay");
            io.point(10, x.origin, e.elevation);
            return io.flat(11, x.dir);
        }
        case EntityType::Leader:
            return leaderGroups(io, e);
        case EntityType::MLine:
            return mlineGroups(io, e);
        case EntityType::MLeader:
            return mleaderGroups(io, e);
        case EntityType::Table:
            return tableGroups(io, e);
        case EntityType::Wipeout:
            return pointListGroups(io, "AcDbWipeout", 14, static_cast<WipeoutEntity&>(e).vertices, e);
        case EntityType::Region:
            return pointListGroups(io, "AcDbRegion", 10, static_cast<RegionEntity&>(e).vertices, e);
        case EntityType::Tolerance: {
            auto& t = static_cast<ToleranceEntity&>(e);
            io.marker("AcDbFcf");
            io.name(3, t.styleName);
            io.point(10, t.insertion, e.elevation);
            std::string content = t.contentText();
            io.text(1, content);
            if (io.reading() && io.in().has(1)) t.setContentText(content);
            if (!io.reading())
                io.out().point(11, Vector3(Vector2::from_angle(t.rotation)));
            else if (io.in().has(11))
                t.rotation = io.in().point(11).xy().angle();
            return;
        }
        case EntityType::AttributeDefinition:
            return attdefGroups(io, e);
        case EntityType::Viewport:
            return viewportGroups(io, e);
        case EntityType::Face3D: {
            auto& f = static_cast<Face3DEntity&>(e);
            io.marker("AcDbFace");
            for (int i = 0; i < 4; ++i) io.point(10 + i, f.corners[static_cast<std::size_t>(i)]);
            if (io.reading() && io.in().has(12) && !io.in().has(13)) f.corners[3] = f.corners[2];
            return io.integer(70, f.edgeFlags);
        }
        case EntityType::Solid2D: {
            auto& s = static_cast<Solid2DEntity&>(e);
            io.marker("AcDbTrace");
            for (int i = 0; i < 4; ++i) io.point(10 + i, s.corners[static_cast<std::size_t>(i)], e.elevation);
            if (io.reading() && io.in().has(12) && !io.in().has(13)) s.corners[3] = s.corners[2];
            return normalGroup(io, e);
        }
        case EntityType::Polyline3D: {
            auto& p = static_cast<Polyline3DEntity&>(e);
            if (io.reading()) p.closed = (io.in().integer(70, p.closed ? 1 : 0) & 1) != 0;
            return polylineHead(io, "AcDb3dPolyline", 8 | (p.closed ? 1 : 0), 0, 0);
        }
        case EntityType::Mesh: {
            auto& m = static_cast<MeshEntity&>(e);
            return polylineHead(io, "AcDbPolygonMesh", 16 | (m.closedM ? 1 : 0) | (m.closedN ? 32 : 0), m.rows, m.cols);
        }
        case EntityType::Polyface: {
            auto& p = static_cast<PolyfaceEntity&>(e);
            return polylineHead(io, "AcDbPolyFaceMesh", 64, static_cast<std::int64_t>(p.vertices.size()),
                                static_cast<std::int64_t>(p.faces.size()));
        }
        case EntityType::Solid3D:
            return bodyGroups(io, e);
        case EntityType::Shape:
            return shapeGroups(io, e);
    }
}

}  // namespace kova::script::lisp
