// Which entities a list of groups can make, and which are sound.

#include "engine/kinds/all.hpp"
#include "engine/solids/sat_records.hpp"
#include "script/lisp/entities/entity_codes.hpp"

namespace kova::script::lisp {

using namespace engine;

namespace {

std::unique_ptr<Entity> emptyBody(Solid3DEntity::BodyKind kind) {
    auto made = std::make_unique<Solid3DEntity>();
    made->kind = kind;
    return made;
}

}  // namespace

std::unique_ptr<Entity> entityForGroups(const GroupList& groups) {
    struct Row {
        std::string_view type;
        EntityType kind;
        std::array<int, 3> needed;  // 0: nothing more
    };
    static constexpr Row rows[] = {
        {"LINE", EntityType::Line, {10, 11}},
        {"CIRCLE", EntityType::Circle, {10, 40}},
        {"ARC", EntityType::Arc, {10, 40}},
        {"LWPOLYLINE", EntityType::Polyline, {10}},
        {"POINT", EntityType::Point, {10}},
        {"TEXT", EntityType::Text, {10, 40, 1}},
        {"MTEXT", EntityType::MText, {10, 1}},
        {"HATCH", EntityType::Hatch, {2, 91}},
        {"DIMENSION", EntityType::Dimension, {70, 10}},
        {"INSERT", EntityType::BlockReference, {2, 10}},
        {"IMAGE", EntityType::Image, {1, 10}},
        {"SPLINE", EntityType::Spline, {}},
        {"ELLIPSE", EntityType::Ellipse, {10, 11, 40}},
        {"XLINE", EntityType::Xline, {10, 11}},
        {"RAY", EntityType::Ray, {10, 11}},
        {"LEADER", EntityType::Leader, {10}},
        {"MLINE", EntityType::MLine, {11}},
        {"MULTILEADER", EntityType::MLeader, {300}},
        {"ACAD_TABLE", EntityType::Table, {10, 91, 92}},
        {"WIPEOUT", EntityType::Wipeout, {14}},
        {"3DSOLID", EntityType::Solid3D, {}},
        {"BODY", EntityType::Solid3D, {}},
        {"REGION", EntityType::Region, {}},
        {"TOLERANCE", EntityType::Tolerance, {10, 1}},
        {"ATTDEF", EntityType::AttributeDefinition, {10, 40, 2}},
        {"VIEWPORT", EntityType::Viewport, {10, 40, 41}},
        {"3DFACE", EntityType::Face3D, {10, 11, 12}},
        {"SOLID", EntityType::Solid2D, {10, 11, 12}},
        {"TRACE", EntityType::Solid2D, {10, 11, 12}},
        {"SHAPE", EntityType::Shape, {10, 40, 2}},
    };
    const std::string type = upperCase(groups.text(0));
    for (const Row& row : rows) {
        if (row.type != type) continue;
        for (const int code : row.needed)
            if (code != 0 && !groups.has(code) && !(code == 1 && groups.has(3))) return nullptr;
        const bool hasBody = groups.has(1) || groups.has(310);
        // A region is a list of points, or a body.
        if (type == "REGION" && hasBody) return emptyBody(Solid3DEntity::BodyKind::Region);
        if (row.kind == EntityType::Solid3D) {
            if (!hasBody) return nullptr;
            return emptyBody(type == "BODY" ? Solid3DEntity::BodyKind::Body : Solid3DEntity::BodyKind::Solid);
        }
        std::unique_ptr<Entity> made = makeEntity(row.kind);
        if (type == "TRACE") static_cast<Solid2DEntity&>(*made).trace = true;
        return made;
    }
    return nullptr;
}

bool isUnderstood(const Entity& e) {
    if (e.type() != EntityType::Solid3D) return true;
    const auto& body = static_cast<const Solid3DEntity&>(e);
    return readModelerData(body.sab.empty() ? body.sat : body.sab).has_value();
}

bool isSound(const Entity& e) {
    switch (e.type()) {
        case EntityType::Circle:
            return static_cast<const CircleEntity&>(e).radius > 0.0;
        case EntityType::Arc:
            return static_cast<const ArcEntity&>(e).radius > 0.0;
        case EntityType::Ellipse: {
            const auto& x = static_cast<const EllipseEntity&>(e);
            return x.major.length() > 0.0 && x.minorRatio > 0.0 && x.minorRatio <= 1.0;
        }
        case EntityType::Polyline:
            return !static_cast<const PolylineEntity&>(e).vertices.empty();
        case EntityType::Text:
            return static_cast<const TextEntity&>(e).height > 0.0;
        case EntityType::MText: {
            const auto& t = static_cast<const MTextEntity&>(e);
            return t.height > 0.0 && t.width >= 0.0 && t.attachment >= 1 && t.attachment <= 9;
        }
        case EntityType::AttributeDefinition: {
            const auto& a = static_cast<const AttributeDefinitionEntity&>(e);
            return a.textHeight > 0.0 && !a.tag.empty();
        }
        case EntityType::Xline:
            return static_cast<const XlineEntity&>(e).dir.length() > 0.0;
        case EntityType::Ray:
            return static_cast<const RayEntity&>(e).dir.length() > 0.0;
        case EntityType::Leader:
            return static_cast<const LeaderEntity&>(e).vertices.size() >= 2;
        case EntityType::MLine:
            return static_cast<const MLineEntity&>(e).vertices.size() >= 2;
        case EntityType::Wipeout:
            return static_cast<const WipeoutEntity&>(e).vertices.size() >= 3;
        case EntityType::Region:
            return static_cast<const RegionEntity&>(e).vertices.size() >= 3;
        case EntityType::Viewport: {
            const auto& v = static_cast<const ViewportEntity&>(e);
            return v.width > 0.0 && v.height > 0.0;
        }
        case EntityType::Spline: {
            const auto& s = static_cast<const SplineEntity&>(e);
            if (s.degree < 1 || s.degree > 25) return false;
            if (s.controlPoints.empty()) return s.fitPoints.size() >= 2;
            return s.controlPoints.size() > static_cast<std::size_t>(s.degree) &&
                   (s.knots.empty() ||
                    s.knots.size() == s.controlPoints.size() + static_cast<std::size_t>(s.degree) + 1) &&
                   std::is_sorted(s.knots.begin(), s.knots.end()) &&
                   (s.weights.empty() || s.weights.size() == s.controlPoints.size());
        }
        case EntityType::MLeader: {
            const auto& l = static_cast<const MLeaderEntity&>(e);
            return !l.heads.empty() || l.contentType != MLeaderContent::None;
        }
        case EntityType::Table: {
            const auto& t = static_cast<const TableEntity&>(e);
            return t.rows >= 1 && t.cols >= 1;
        }
        case EntityType::Polyline3D:
            return static_cast<const Polyline3DEntity&>(e).vertices.size() >= 2;
        case EntityType::Image: {
            const auto& i = static_cast<const ImageEntity&>(e);
            return i.width != 0.0 && i.height != 0.0 && !i.filePath.empty();
        }
        default:
            return true;
    }
}

}  // namespace kova::script::lisp
