#include "script/lisp/entity_codes.hpp"

#include <cmath>

#include "engine/entities/all.hpp"
#include "math/angles.hpp"

namespace kova::script::lisp {

using namespace engine;
using math::Vector2;
using math::Vector3;

// The kinds ---------------------------------------------------------------------------------------------------

namespace {

void normalGroup(const GroupIo& io, const Entity& e) {
    if (!io.reading()) io.out().point(210, e.normal());
}

void lineGroups(const GroupIo& io, LineEntity& e) {
    io.marker("AcDbLine");
    Vector3 start = e.start3();
    Vector3 end = e.end3();
    io.point(10, start);
    io.point(11, end);
    if (io.reading()) e.setEnds(start, end);
    normalGroup(io, e);
}

void arcGroups(const GroupIo& io, ArcEntity& e) {
    io.marker("AcDbCircle");
    io.point(10, e.center, e.elevation);
    io.real(40, e.radius);
    normalGroup(io, e);
    io.marker("AcDbArc");
    io.real(50, e.startAngle);
    io.real(51, e.endAngle);
}

void circleGroups(const GroupIo& io, CircleEntity& e) {
    io.marker("AcDbCircle");
    io.point(10, e.center, e.elevation);
    io.real(40, e.radius);
    normalGroup(io, e);
}

void ellipseGroups(const GroupIo& io, EllipseEntity& e) {
    io.marker("AcDbEllipse");
    io.point(10, e.center, e.elevation);
    Vector3 major = io.reading() ? Vector3(e.major) : e.major3();
    io.point(11, major);
    e.major = major.xy();
    normalGroup(io, e);
    io.real(40, e.minorRatio);
    io.real(41, e.startParam);
    io.real(42, e.endParam);
}

void polylineGroups(const GroupIo& io, PolylineEntity& e) {
    io.marker("AcDbPolyline");
    if (!io.reading()) {
        GroupWriter& out = io.out();
        out.integer(90, static_cast<std::int64_t>(e.vertices.size()));
        out.integer(70, (e.closed ? 1 : 0) | (e.ltgen ? 128 : 0));
        out.real(43, 0.0);
        out.real(38, e.elevation);
        out.real(39, e.thickness());
        for (std::size_t i = 0; i < e.vertices.size(); ++i) {
            out.point(10, e.vertices[i]);
            out.real(40, e.startWidth(i));
            out.real(41, e.endWidth(i));
            out.real(42, e.bulge(i));
        }
        normalGroup(io, e);
        return;
    }
    const GroupList& in = io.in();
    const std::int64_t flags = in.integer(70, (e.closed ? 1 : 0) | (e.ltgen ? 128 : 0));
    e.closed = (flags & 1) != 0;
    e.ltgen = (flags & 128) != 0;
    e.elevation = in.real(38, e.elevation);
    if (!in.has(10)) return;
    const double width = in.real(43);
    PolylineEntity fresh;
    for (const GroupList::Group& g : in.groups()) {
        const std::size_t last = fresh.vertices.size() - 1;
        switch (g.code) {
            case 10:
                fresh.addVertex(GroupList::pointOf(10, *g.value).xy(), 0.0, width, width);
                break;
            case 40:
                if (!fresh.vertices.empty())
                    fresh.setWidths(last, GroupList::realOf(40, *g.value), fresh.endWidth(last));
                break;
            case 41:
                if (!fresh.vertices.empty())
                    fresh.setWidths(last, fresh.startWidth(last), GroupList::realOf(41, *g.value));
                break;
            case 42:
                if (!fresh.vertices.empty()) fresh.setBulge(last, GroupList::realOf(42, *g.value));
                break;
            default:
                break;
        }
    }
    e.vertices = std::move(fresh.vertices);
    e.bulges = std::move(fresh.bulges);
    e.startWidths = std::move(fresh.startWidths);
    e.endWidths = std::move(fresh.endWidths);
    e.records.clear();
    e.fit.clear();
    e.spline = false;
    e.curveType = 0;
}

/// TEXT and what shares its groups. The alignment point of justified text is group 11, else group 10.
template <class E>
void textGroups(const GroupIo& io, E& e, Vector2& position, double& height, std::string& content, int vertical,
                const TextLine& line) {
    const auto justified = [&] { return e.hAlign != 0 || e.vAlign != 0; };
    if (io.reading()) {
        const bool before = justified();
        io.integer(72, e.hAlign);
        io.integer(vertical, e.vAlign);
        if (e.hAlign < 0 || e.hAlign > 5) e.hAlign = 0;
        if (e.vAlign < 0 || e.vAlign > 3) e.vAlign = 0;
        const GroupList& in = io.in();
        const bool two = e.hAlign == kHAlignAligned || e.hAlign == kHAlignFit;
        e.fit = two;
        const int own = justified() && !two && (in.has(11) || before) ? 11 : 10;
        if (in.has(own)) io.point(own, position, e.elevation);
        if (two) io.flat(11, e.fitEnd);
    } else {
        GroupWriter& out = io.out();
        const bool two = e.hasSecondPoint();
        const Vector2 start = justified() && !two ? textLineBaselineStart(line, e.drawing()) : position;
        out.point(10, Vector3(start, e.elevation));
        out.point(11, two ? Vector3(e.fitEnd, e.elevation) : justified() ? Vector3(position, e.elevation) : Vector3());
    }
    io.real(40, height);
    io.text(1, content);
    io.real(50, e.rotation);
    io.real(41, e.widthFactor);
    io.real(51, e.oblique);
    io.name(7, e.textStyle);
    io.integer(71, e.generation);
    if (!io.reading()) {
        io.integer(72, e.hAlign);
        normalGroup(io, e);
    }
}

void plainTextGroups(const GroupIo& io, TextEntity& e) {
    io.marker("AcDbText");
    textGroups(io, e, e.position, e.height, e.content, 73, e.line());
    io.marker("AcDbText");
    if (!io.reading()) io.integer(73, e.vAlign);
}

void attdefGroups(const GroupIo& io, AttributeDefinitionEntity& e) {
    io.marker("AcDbText");
    textGroups(io, e, e.insertion, e.textHeight, e.defaultValue, 74, e.line());
    io.marker("AcDbAttributeDefinition");
    io.text(3, e.prompt);
    io.text(2, e.tag);
    std::int32_t flags = (e.invisible ? 1 : 0) | (e.constant ? 2 : 0) | (e.verify ? 4 : 0) | (e.preset ? 8 : 0);
    io.integer(70, flags);
    e.invisible = (flags & 1) != 0;
    e.constant = (flags & 2) != 0;
    e.verify = (flags & 4) != 0;
    e.preset = (flags & 8) != 0;
    if (!io.reading()) io.integer(74, e.vAlign);
}

void mtextGroups(const GroupIo& io, MTextEntity& e) {
    io.marker("AcDbMText");
    io.point(10, e.position, e.elevation);
    io.real(40, e.height);
    io.real(41, e.width);
    io.integer(71, e.attachment);
    if (io.reading()) {
        const GroupList& in = io.in();
        if (in.has(1) || in.has(3)) {
            e.content.clear();
            for (const GroupList::Group& g : in.groups())
                if (g.code == 3) e.content += GroupList::textOf(3, *g.value);
            e.content += in.text(1);
        }
        e.rotation = in.real(50, e.rotation);
        if (in.has(11)) e.rotation = in.point(11).xy().angle();
        e.lineSpacingExact = in.integer(73, e.lineSpacingExact ? 2 : 1) == 2;
    } else {
        // Texts come in pieces of 250 bytes, none of them cut within a character.
        std::string_view rest = e.content;
        while (rest.size() > 250) {
            std::size_t cut = 250;
            while (cut > 200 && (static_cast<unsigned char>(rest[cut]) & 0xC0) == 0x80) --cut;
            io.out().text(3, rest.substr(0, cut));
            rest.remove_prefix(cut);
        }
        io.out().text(1, rest);
    }
    io.name(7, e.textStyle);
    if (!io.reading()) {
        normalGroup(io, e);
        io.out().point(11, Vector3(Vector2::from_angle(e.rotation)));
        io.real(50, e.rotation);
        io.out().integer(73, e.lineSpacingExact ? 2 : 1);
    }
    io.real(44, e.lineSpacingFactor);
}

void insertGroups(const GroupIo& io, BlockReferenceEntity& e) {
    io.marker("AcDbBlockReference");
    if (!io.reading() && !e.attributes.empty()) io.out().integer(66, 1);
    io.name(2, e.blockName);
    io.point(10, e.insert, e.elevation);
    io.real(41, e.scaleX);
    io.real(42, e.scaleY);
    double z = e.effectiveScaleZ();
    if (!io.reading() || io.in().has(43)) {
        io.real(43, z);
        if (io.reading()) e.scaleZ = z;
    }
    io.real(50, e.rotation);
    io.integer(70, e.columns);
    io.integer(71, e.rows);
    io.real(44, e.columnSpacing);
    io.real(45, e.rowSpacing);
    normalGroup(io, e);
}

void splineGroups(const GroupIo& io, SplineEntity& e) {
    io.marker("AcDbSpline");
    if (!io.reading()) {
        GroupWriter& out = io.out();
        normalGroup(io, e);
        out.integer(70, (e.closed ? 1 : 0) | (e.weights.empty() ? 0 : 4) | 8);
        out.integer(71, e.degree);
        out.integer(72, static_cast<std::int64_t>(e.knots.size()));
        out.integer(73, static_cast<std::int64_t>(e.controlPoints.size()));
        out.integer(74, static_cast<std::int64_t>(e.fitPoints.size()));
        for (const double k : e.knots) out.real(40, k);
        for (const double w : e.weights) out.real(41, w);
        for (std::size_t i = 0; i < e.controlPoints.size(); ++i)
            out.point(10, Vector3(e.controlPoints[i], i < e.controlZ.size() ? e.controlZ[i] : e.elevation));
        for (const Vector2& p : e.fitPoints) out.point(11, Vector3(p, e.elevation));
        return;
    }
    const GroupList& in = io.in();
    if (in.has(70)) e.closed = (in.integer(70) & 1) != 0;
    io.integer(71, e.degree);
    if (in.has(40)) e.knots = in.reals(40);
    if (in.has(41)) e.weights = in.reals(41);
    if (in.has(10)) {
        e.controlPoints.clear();
        e.controlZ.clear();
        bool level = true;
        const std::vector<Vector3> points = in.points(10);
        for (const Vector3& p : points) {
            e.controlPoints.push_back(p.xy());
            e.controlZ.push_back(p.z);
            level = level && p.z == points.front().z;
        }
        if (level) {
            e.elevation = points.front().z;
            e.controlZ.clear();
        }
    }
    if (in.has(11)) {
        e.fitPoints.clear();
        for (const Vector3& p : in.points(11)) e.fitPoints.push_back(p.xy());
        if (!in.has(10)) {
            e.elevation = in.point(11).z;
            e.controlPoints.clear();
            e.fitThroughPoints();
        }
    }
}

void leaderGroups(const GroupIo& io, LeaderEntity& e) {
    io.marker("AcDbLeader");
    io.name(3, e.dimStyleName);
    io.boolean(71, e.hasArrow);
    io.boolean(72, e.splined);
    if (!io.reading()) {
        io.out().integer(73, e.annotationHandle != 0 ? 0 : 3);
        io.out().integer(76, static_cast<std::int64_t>(e.vertices.size()));
        for (const Vector2& p : e.vertices) io.out().point(10, Vector3(p, e.elevation));
        if (e.annotationHandle != 0) io.out().entity(340, e.annotationHandle);
    } else {
        if (io.in().has(10)) {
            e.vertices.clear();
            for (const Vector3& p : io.in().points(10)) e.vertices.push_back(p.xy());
            e.elevation = io.in().point(10).z;
        }
        if (io.in().has(340)) e.annotationHandle = io.in().handle(340);
    }
    io.integer(74, e.hookDir);
    io.boolean(75, e.hookLine);
    io.real(40, e.textHeight);
    io.real(41, e.annotationWidth);
}

void mlineGroups(const GroupIo& io, MLineEntity& e) {
    io.marker("AcDbMline");
    io.name(2, e.styleName);
    io.real(40, e.scale);
    std::int32_t justification = static_cast<std::int32_t>(e.justification);
    io.integer(70, justification);
    e.justification = static_cast<MLineJustification>(std::clamp(justification, 0, 2));
    std::int32_t flags = 1 | (e.closed ? 2 : 0);
    io.integer(71, flags);
    e.closed = (flags & 2) != 0;
    if (!io.reading()) {
        io.out().integer(72, static_cast<std::int64_t>(e.vertices.size()));
        io.out().integer(73, static_cast<std::int64_t>(e.elements.size()));
        if (!e.vertices.empty()) io.out().point(10, Vector3(e.vertices.front(), e.elevation));
        for (const Vector2& p : e.vertices) io.out().point(11, Vector3(p, e.elevation));
        normalGroup(io, e);
    } else if (io.in().has(11)) {
        e.vertices.clear();
        for (const Vector3& p : io.in().points(11)) e.vertices.push_back(p.xy());
    }
}

void imageGroups(const GroupIo& io, ImageEntity& e) {
    io.marker("AcDbRasterImage");
    io.text(1, e.filePath);
    io.point(10, e.insertion, e.elevation);
    const double pixelsX = e.pixelWidth > 0 ? e.pixelWidth : 1;
    const double pixelsY = e.pixelHeight > 0 ? e.pixelHeight : 1;
    if (!io.reading()) {
        const Vector2 x = Vector2::from_angle(e.rotation);
        io.out().point(11, Vector3(x * (e.width / pixelsX)));
        io.out().point(12, Vector3(x.perpendicular() * (e.height / pixelsY)));
        io.out().point(13, Vector2(pixelsX, pixelsY));
    } else {
        const Vector3 size = io.in().point(13, {pixelsX, pixelsY, 0});
        if (io.in().has(13)) {
            e.pixelWidth = static_cast<std::int32_t>(std::clamp(size.x, 0.0, 1e9));
            e.pixelHeight = static_cast<std::int32_t>(std::clamp(size.y, 0.0, 1e9));
        }
        if (io.in().has(11)) {
            const Vector2 u = io.in().point(11).xy();
            e.rotation = u.angle();
            e.width = u.length() * size.x;
        }
        if (io.in().has(12)) e.height = io.in().point(12).xy().length() * size.y;
    }
    io.boolean(280, e.clipEnabled);
    io.integer(281, e.brightness);
    io.integer(282, e.contrast);
    io.integer(283, e.fade);
    if (io.reading()) {
        e.brightness = std::clamp(e.brightness, 0, 100);
        e.contrast = std::clamp(e.contrast, 0, 100);
        e.fade = std::clamp(e.fade, 0, 100);
    }
}

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

void viewportGroups(const GroupIo& io, ViewportEntity& e) {
    io.marker("AcDbViewport");
    io.point(10, e.center, e.elevation);
    io.real(40, e.width);
    io.real(41, e.height);
    std::int32_t on = e.on ? 1 : 0;
    io.integer(68, on);
    e.on = on != 0;
    if (!io.reading()) io.integer(69, e.vpId);
    io.flat(12, e.viewTarget);
    double viewHeight = e.viewScale != 0.0 ? e.height / e.viewScale : e.height;
    io.real(45, viewHeight);
    if (io.reading() && viewHeight > 0.0) e.viewScale = e.height / viewHeight;
    io.real(51, e.viewTwist);
    std::int32_t flags = (e.statusFlags & ~ViewportEntity::kLocked) | (e.locked ? ViewportEntity::kLocked : 0);
    io.integer(90, flags);
    if (io.reading()) {
        e.statusFlags = flags;
        e.locked = (flags & ViewportEntity::kLocked) != 0;
    }
}

void mleaderGroups(const GroupIo& io, MLeaderEntity& e) {
    io.marker("AcDbMLeader");
    std::int32_t content = static_cast<std::int32_t>(e.contentType);
    if (!io.reading()) {
        GroupWriter& out = io.out();
        out.text(3, e.styleName.view());
        out.integer(172, content == 2 ? 2 : content);
        for (const MLeaderHead& head : e.heads) {
            out.text(304, "LEADER_LINE{");
            for (const Vector2& p : head.vertices) out.point(10, Vector3(p, e.elevation));
            out.text(305, "}");
        }
        out.point(12, Vector3(e.contentPos, e.elevation));
        out.text(302, e.textContent);
        if (!e.blockName.empty()) out.text(2, e.blockName.view());
    } else {
        io.flat(12, e.contentPos);
        io.text(302, e.textContent);
    }
    io.boolean(290, e.hasLanding);
    io.boolean(291, e.hasDogleg);
    io.real(41, e.landingDistance);
    io.real(42, e.arrowSize);
    io.real(44, e.textHeight);
}

void tableGroups(const GroupIo& io, TableEntity& e) {
    io.marker("AcDbBlockReference");
    io.point(10, e.insertion, e.elevation);
    io.marker("AcDbTable");
    if (io.reading()) return;
    GroupWriter& out = io.out();
    out.point(11, Vector3(Vector2::from_angle(e.rotation)));
    out.text(7, e.styleName.view());
    out.integer(91, e.rowCount());
    out.integer(92, e.colCount());
    for (std::int32_t r = 0; r < e.rowCount(); ++r) out.real(141, e.rowHeight(r));
    for (std::int32_t c = 0; c < e.colCount(); ++c) out.real(142, e.colWidth(c));
    for (const TableCell& cell : e.cells) {
        out.integer(171, 1);
        out.integer(173, cell.isMerged ? 1 : 0);
        out.text(1, cell.content);
    }
}

void shapeGroups(const GroupIo& io, ShapeEntity& e) {
    io.marker("AcDbShape");
    io.point(10, e.position, e.elevation);
    io.real(40, e.size);
    io.text(2, e.name);
    io.real(50, e.rotation);
    io.real(41, e.widthFactor);
    io.real(51, e.oblique);
    normalGroup(io, e);
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
            return lineGroups(io, static_cast<LineEntity&>(e));
        case EntityType::Circle:
            return circleGroups(io, static_cast<CircleEntity&>(e));
        case EntityType::Arc:
            return arcGroups(io, static_cast<ArcEntity&>(e));
        case EntityType::Polyline:
            return polylineGroups(io, static_cast<PolylineEntity&>(e));
        case EntityType::Point:
            io.marker("AcDbPoint");
            io.point(10, static_cast<PointEntity&>(e).position, e.elevation);
            return normalGroup(io, e);
        case EntityType::Text:
            return plainTextGroups(io, static_cast<TextEntity&>(e));
        case EntityType::MText:
            return mtextGroups(io, static_cast<MTextEntity&>(e));
        case EntityType::Hatch:
            return hatchGroups(io, e);
        case EntityType::Dimension:
            return dimensionGroups(io, e);
        case EntityType::BlockReference:
            return insertGroups(io, static_cast<BlockReferenceEntity&>(e));
        case EntityType::Image:
            return imageGroups(io, static_cast<ImageEntity&>(e));
        case EntityType::Spline:
            return splineGroups(io, static_cast<SplineEntity&>(e));
        case EntityType::Ellipse:
            return ellipseGroups(io, static_cast<EllipseEntity&>(e));
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
            return leaderGroups(io, static_cast<LeaderEntity&>(e));
        case EntityType::MLine:
            return mlineGroups(io, static_cast<MLineEntity&>(e));
        case EntityType::MLeader:
            return mleaderGroups(io, static_cast<MLeaderEntity&>(e));
        case EntityType::Table:
            return tableGroups(io, static_cast<TableEntity&>(e));
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
            return attdefGroups(io, static_cast<AttributeDefinitionEntity&>(e));
        case EntityType::Viewport:
            return viewportGroups(io, static_cast<ViewportEntity&>(e));
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
        case EntityType::Solid3D: {
            auto& s = static_cast<Solid3DEntity&>(e);
            io.marker("AcDbModelerGeometry");
            if (!io.reading()) io.out().integer(70, s.modelerVersion);
            return;
        }
        case EntityType::Shape:
            return shapeGroups(io, static_cast<ShapeEntity&>(e));
    }
}

}  // namespace kova::script::lisp
