#include "cmd/stretching.hpp"

#include "engine/entities/all.hpp"
#include "engine/entities/object_plane.hpp"
#include "math/curves.hpp"

namespace kova::cmd {

using engine::Entity;
using math::Vector2;
using math::Vector3;

namespace {

/// Shows the points of an entity that a stretch may move, each as it stands in plan.
class PointVisitor {
public:
    virtual ~PointVisitor() = default;
    /// May change p.
    virtual void operator()(Vector2& p) = 0;
    void operator()(Vector3& p) {
        Vector2 plan = p.xy();
        (*this)(plan);
        p = Vector3(plan, p.z);
    }
    template <class List>
    void all(List& points) {
        for (auto& p : points) (*this)(p);
    }
};

/// Passes points of an entity's own plane on as they show in plan.
class PlaneVisitor final : public PointVisitor {
public:
    using PointVisitor::operator();
    PlaneVisitor(const Entity& entity, PointVisitor& target) : entity_(entity), target_(target) {}
    void operator()(Vector2& p) override {
        Vector2 plan = engine::planFromObject(entity_, p);
        const Vector2 before = plan;
        target_(plan);
        if (plan == before) return;
        if (const auto moved = engine::objectFromPlan(entity_, plan)) p = *moved;
    }

private:
    const Entity& entity_;
    PointVisitor& target_;
};

void visitArc(engine::ArcEntity& arc, PointVisitor& visit) {
    const Vector2 a = arc.startPoint();
    const Vector2 b = arc.endPoint();
    const double height = std::abs(arc.radius) * (1.0 - std::cos(arc.sweep() / 2.0));
    Vector2 from = a;
    Vector2 to = b;
    visit(from);
    visit(to);
    if (from == a && to == b) return;
    if (from - a == to - b) {
        arc.center += from - a;
        return;
    }
    const double chord = from.distance_to(to);
    if (!(chord > math::kTolerance)) return;
    const auto fresh = math::arcFromBulge(from, to, 2.0 * height / chord);
    if (!fresh) return;
    arc.center = fresh->center;
    arc.radius = fresh->radius;
    arc.startAngle = math::normalizeAngle(fresh->start);
    arc.endAngle = math::normalizeAngle(fresh->end());
}

void visitLoop(engine::HatchLoop& loop, PointVisitor& visit) {
    visit.all(loop.vertices);
    const auto isLine = [](const engine::HatchEdge& e) { return std::holds_alternative<engine::HatchLineEdge>(e); };
    if (std::all_of(loop.edges.begin(), loop.edges.end(), isLine)) {
        for (engine::HatchEdge& edge : loop.edges) {
            visit(std::get<engine::HatchLineEdge>(edge).start);
            visit(std::get<engine::HatchLineEdge>(edge).end);
        }
        return;
    }
    // Curved edges would come apart: such a boundary moves as a whole or stays.
    bool whole = true;
    Vector2 shift;
    const engine::Path path = loop.path();
    for (const engine::PathElement& e : path.view()) {
        Vector2 p = e.p;
        visit(p);
        whole = whole && p != e.p;
        if (p != e.p) shift = p - e.p;
    }
    if (!whole) return;
    const auto move = [&](std::vector<Vector2>& points) {
        for (Vector2& p : points) p += shift;
    };
    for (engine::HatchEdge& edge : loop.edges) {
        if (auto* line = std::get_if<engine::HatchLineEdge>(&edge)) {
            line->start += shift;
            line->end += shift;
        } else if (auto* arc = std::get_if<engine::HatchArcEdge>(&edge)) {
            arc->center += shift;
        } else if (auto* ellipse = std::get_if<engine::HatchEllipseEdge>(&edge)) {
            ellipse->center += shift;
        } else if (auto* spline = std::get_if<engine::HatchSplineEdge>(&edge)) {
            move(spline->control);
            move(spline->fit);
        }
    }
}

void visitDimension(engine::DimensionEntity& dimension, PointVisitor& visit) {
    // The last grip is the text, which follows unless the user put it.
    const std::vector<Vector2> grips = dimension.gripPoints();
    const bool text = dimension.hasUserText();
    for (std::size_t i = 0; i + 1 < grips.size(); ++i) {
        Vector2 p = grips[i];
        visit(p);
        if (p != grips[i]) dimension.moveGrip(i, p);
    }
    if (!text) return;
    Vector2 p = grips.back();
    visit(p);
    if (p != grips.back()) dimension.setUserText(p);
}

/// Entities of one placing point, with what goes along.
void visitPlaced(Entity& entity, const Vector2& at, PointVisitor& visit) {
    Vector2 p = at;
    visit(p);
    if (p != at) entity.transform(math::Matrix4::translation(p - at));
}

/// Shows all points; false for a kind that has none, which moves only as a whole.
bool visitPoints(Entity& entity, PointVisitor& visit) {
    using engine::EntityType;
    PlaneVisitor plane(entity, visit);
    switch (entity.type()) {
        case EntityType::Line: {
            auto& line = static_cast<engine::LineEntity&>(entity);
            visit(line.start);
            visit(line.end);
            return true;
        }
        case EntityType::Arc:
            visitArc(static_cast<engine::ArcEntity&>(entity), plane);
            return true;
        case EntityType::Polyline: {
            auto& polyline = static_cast<engine::PolylineEntity&>(entity);
            plane.all(polyline.vertices);
            plane.all(polyline.fit);
            return true;
        }
        case EntityType::Polyline3D:
            visit.all(static_cast<engine::Polyline3DEntity&>(entity).vertices);
            return true;
        case EntityType::Spline: {
            auto& spline = static_cast<engine::SplineEntity&>(entity);
            const std::vector<Vector2> fit = spline.fitPoints;
            visit.all(spline.fitPoints);
            if (spline.fitPoints.empty())
                visit.all(spline.controlPoints);
            else if (spline.fitPoints != fit)
                spline.fitThroughPoints();
            return true;
        }
        case EntityType::Solid2D:
            plane.all(static_cast<engine::Solid2DEntity&>(entity).corners);
            return true;
        case EntityType::Face3D:
            visit.all(static_cast<engine::Face3DEntity&>(entity).corners);
            return true;
        case EntityType::Mesh:
            visit.all(static_cast<engine::MeshEntity&>(entity).vertices);
            return true;
        case EntityType::Polyface:
            visit.all(static_cast<engine::PolyfaceEntity&>(entity).vertices);
            return true;
        case EntityType::MLine:
            visit.all(static_cast<engine::MLineEntity&>(entity).vertices);
            return true;
        case EntityType::Leader:
            visit.all(static_cast<engine::LeaderEntity&>(entity).vertices);
            return true;
        case EntityType::MLeader: {
            auto& mleader = static_cast<engine::MLeaderEntity&>(entity);
            for (engine::MLeaderHead& head : mleader.heads) visit.all(head.vertices);
            visit(mleader.contentPos);
            return true;
        }
        case EntityType::Hatch:
            for (engine::HatchLoop& loop : static_cast<engine::HatchEntity&>(entity).loops) visitLoop(loop, plane);
            return true;
        case EntityType::Wipeout:
            visit.all(static_cast<engine::WipeoutEntity&>(entity).vertices);
            return true;
        case EntityType::Dimension:
            visitDimension(static_cast<engine::DimensionEntity&>(entity), visit);
            return true;
        case EntityType::Circle:
            visitPlaced(entity, engine::planFromObject(entity, static_cast<engine::CircleEntity&>(entity).center),
                        visit);
            return true;
        case EntityType::Ellipse:
            visitPlaced(entity, static_cast<engine::EllipseEntity&>(entity).center, visit);
            return true;
        case EntityType::Point:
            visitPlaced(entity, static_cast<engine::PointEntity&>(entity).position, visit);
            return true;
        case EntityType::Text:
            visitPlaced(entity, engine::planFromObject(entity, static_cast<engine::TextEntity&>(entity).position),
                        visit);
            return true;
        case EntityType::MText:
            visitPlaced(entity, static_cast<engine::MTextEntity&>(entity).position, visit);
            return true;
        case EntityType::AttributeDefinition:
            visitPlaced(
                entity,
                engine::planFromObject(entity, static_cast<engine::AttributeDefinitionEntity&>(entity).insertion),
                visit);
            return true;
        case EntityType::BlockReference:
            visitPlaced(entity,
                        engine::planFromObject(entity, static_cast<engine::BlockReferenceEntity&>(entity).insert),
                        visit);
            return true;
        case EntityType::Shape:
            visitPlaced(entity, engine::planFromObject(entity, static_cast<engine::ShapeEntity&>(entity).position),
                        visit);
            return true;
        case EntityType::Tolerance:
            visitPlaced(entity, static_cast<engine::ToleranceEntity&>(entity).insertion, visit);
            return true;
        case EntityType::Table:
            visitPlaced(entity, static_cast<engine::TableEntity&>(entity).insertion, visit);
            return true;
        case EntityType::Xline:
            visitPlaced(entity, static_cast<engine::XlineEntity&>(entity).base, visit);
            return true;
        case EntityType::Ray:
            visitPlaced(entity, static_cast<engine::RayEntity&>(entity).origin, visit);
            return true;
        default:
            return false;
    }
}

bool insideAny(const StretchRegions& regions, const Vector2& p) {
    for (const SelectionRegion& region : regions)
        if (region.contains(p)) return true;
    return false;
}

/// Counts the points inside and outside.
class Counter final : public PointVisitor {
public:
    using PointVisitor::operator();
    explicit Counter(const StretchRegions& regions) : regions_(regions) {}
    void operator()(Vector2& p) override { (insideAny(regions_, p) ? inside : outside) += 1; }
    std::size_t inside = 0;
    std::size_t outside = 0;

private:
    const StretchRegions& regions_;
};

class Mover final : public PointVisitor {
public:
    using PointVisitor::operator();
    Mover(const StretchRegions& regions, const Vector2& by) : regions_(regions), by_(by) {}
    void operator()(Vector2& p) override {
        if (insideAny(regions_, p)) p += by_;
    }

private:
    const StretchRegions& regions_;
    Vector2 by_;
};

}  // namespace

StretchEffect stretchEffect(const Entity& entity, const StretchRegions& regions) {
    Counter counter(regions);
    // Counting changes nothing.
    if (!visitPoints(const_cast<Entity&>(entity), counter)) {
        const math::Bounds2 box = entity.bounds();
        if (box.is_empty()) return StretchEffect::None;
        for (const Vector2& corner : {box.min, Vector2{box.max.x, box.min.y}, box.max, Vector2{box.min.x, box.max.y}})
            if (!insideAny(regions, corner)) return StretchEffect::None;
        return StretchEffect::Whole;
    }
    if (counter.inside == 0) return StretchEffect::None;
    return counter.outside == 0 ? StretchEffect::Whole : StretchEffect::Partly;
}

void stretchEntity(Entity& entity, const StretchRegions& regions, const Vector2& by) {
    Mover mover(regions, by);
    visitPoints(entity, mover);
}

}  // namespace kova::cmd
