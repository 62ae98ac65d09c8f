#include "engine/modify/stretch_points.hpp"

#include "engine/kinds/all.hpp"
#include "engine/model/object_plane.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

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
        Vector2 plan = planFromObject(entity_, p);
        const Vector2 before = plan;
        target_(plan);
        if (plan == before) return;
        if (const auto moved = objectFromPlan(entity_, plan)) p = *moved;
    }

private:
    const Entity& entity_;
    PointVisitor& target_;
};

void visitArc(ArcEntity& arc, PointVisitor& visit) {
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

void visitLoop(HatchLoop& loop, PointVisitor& visit) {
    visit.all(loop.vertices);
    const auto isLine = [](const HatchEdge& e) { return std::holds_alternative<HatchLineEdge>(e); };
    if (std::all_of(loop.edges.begin(), loop.edges.end(), isLine)) {
        for (HatchEdge& edge : loop.edges) {
            visit(std::get<HatchLineEdge>(edge).start);
            visit(std::get<HatchLineEdge>(edge).end);
        }
        return;
    }
    // Curved edges would come apart: such a boundary moves as a whole or stays.
    bool whole = true;
    Vector2 shift;
    const Path path = loop.path();
    for (const PathElement& e : path.view()) {
        Vector2 p = e.p;
        visit(p);
        whole = whole && p != e.p;
        if (p != e.p) shift = p - e.p;
    }
    if (!whole) return;
    const auto move = [&](std::vector<Vector2>& points) {
        for (Vector2& p : points) p += shift;
    };
    for (HatchEdge& edge : loop.edges) {
        if (auto* line = std::get_if<HatchLineEdge>(&edge)) {
            line->start += shift;
            line->end += shift;
        } else if (auto* arc = std::get_if<HatchArcEdge>(&edge)) {
            arc->center += shift;
        } else if (auto* ellipse = std::get_if<HatchEllipseEdge>(&edge)) {
            ellipse->center += shift;
        } else if (auto* spline = std::get_if<HatchSplineEdge>(&edge)) {
            move(spline->control);
            move(spline->fit);
        }
    }
}

void visitDimension(DimensionEntity& dimension, PointVisitor& visit) {
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
    PlaneVisitor plane(entity, visit);
    switch (entity.type()) {
        case EntityType::Line: {
            auto& line = static_cast<LineEntity&>(entity);
            visit(line.start);
            visit(line.end);
            return true;
        }
        case EntityType::Arc:
            visitArc(static_cast<ArcEntity&>(entity), plane);
            return true;
        case EntityType::Polyline: {
            auto& polyline = static_cast<PolylineEntity&>(entity);
            plane.all(polyline.vertices);
            plane.all(polyline.fit);
            return true;
        }
        case EntityType::Polyline3D:
            visit.all(static_cast<Polyline3DEntity&>(entity).vertices);
            visit.all(static_cast<Polyline3DEntity&>(entity).frame);
            return true;
        case EntityType::Spline: {
            auto& spline = static_cast<SplineEntity&>(entity);
            const std::vector<Vector2> fit = spline.fitPoints;
            visit.all(spline.fitPoints);
            if (spline.fitPoints.empty())
                visit.all(spline.controlPoints);
            else if (spline.fitPoints != fit)
                spline.fitThroughPoints();
            return true;
        }
        case EntityType::Solid2D:
            plane.all(static_cast<Solid2DEntity&>(entity).corners);
            return true;
        case EntityType::Face3D:
            visit.all(static_cast<Face3DEntity&>(entity).corners);
            return true;
        case EntityType::Mesh:
            visit.all(static_cast<MeshEntity&>(entity).vertices);
            visit.all(static_cast<MeshEntity&>(entity).frame);
            return true;
        case EntityType::Polyface:
            visit.all(static_cast<PolyfaceEntity&>(entity).vertices);
            return true;
        case EntityType::MLine:
            visit.all(static_cast<MLineEntity&>(entity).vertices);
            return true;
        case EntityType::Leader:
            visit.all(static_cast<LeaderEntity&>(entity).vertices);
            return true;
        case EntityType::MLeader: {
            auto& mleader = static_cast<MLeaderEntity&>(entity);
            for (MLeaderHead& head : mleader.heads) visit.all(head.vertices);
            visit(mleader.contentPos);
            return true;
        }
        case EntityType::Hatch:
            for (HatchLoop& loop : static_cast<HatchEntity&>(entity).loops) visitLoop(loop, plane);
            return true;
        case EntityType::Wipeout:
            visit.all(static_cast<WipeoutEntity&>(entity).vertices);
            return true;
        case EntityType::Dimension:
            visitDimension(static_cast<DimensionEntity&>(entity), visit);
            return true;
        case EntityType::Circle:
            visitPlaced(entity, planFromObject(entity, static_cast<CircleEntity&>(entity).center), visit);
            return true;
        case EntityType::Ellipse:
            visitPlaced(entity, static_cast<EllipseEntity&>(entity).center, visit);
            return true;
        case EntityType::Point:
            visitPlaced(entity, static_cast<PointEntity&>(entity).position, visit);
            return true;
        case EntityType::Text:
            visitPlaced(entity, planFromObject(entity, static_cast<TextEntity&>(entity).position), visit);
            return true;
        case EntityType::MText:
            visitPlaced(entity, static_cast<MTextEntity&>(entity).position, visit);
            return true;
        case EntityType::AttributeDefinition:
            visitPlaced(entity, planFromObject(entity, static_cast<AttributeDefinitionEntity&>(entity).insertion),
                        visit);
            return true;
        case EntityType::BlockReference:
            visitPlaced(entity, planFromObject(entity, static_cast<BlockReferenceEntity&>(entity).insert), visit);
            return true;
        case EntityType::Shape:
            visitPlaced(entity, planFromObject(entity, static_cast<ShapeEntity&>(entity).position), visit);
            return true;
        case EntityType::Tolerance:
            visitPlaced(entity, static_cast<ToleranceEntity&>(entity).insertion, visit);
            return true;
        case EntityType::Table:
            visitPlaced(entity, static_cast<TableEntity&>(entity).insertion, visit);
            return true;
        case EntityType::Xline:
            visitPlaced(entity, static_cast<XlineEntity&>(entity).base, visit);
            return true;
        case EntityType::Ray:
            visitPlaced(entity, static_cast<RayEntity&>(entity).origin, visit);
            return true;
        default:
            return false;
    }
}

/// Counts the points inside and outside.
class Counter final : public PointVisitor {
public:
    using PointVisitor::operator();
    explicit Counter(const PointTest& inside) : test_(inside) {}
    void operator()(Vector2& p) override { (test_(p) ? inside : outside) += 1; }
    std::size_t inside = 0;
    std::size_t outside = 0;

private:
    const PointTest& test_;
};

class Mover final : public PointVisitor {
public:
    using PointVisitor::operator();
    Mover(const PointTest& inside, const Vector2& by) : test_(inside), by_(by) {}
    void operator()(Vector2& p) override {
        if (test_(p)) p += by_;
    }

private:
    const PointTest& test_;
    Vector2 by_;
};

}  // namespace

StretchEffect stretchEffect(const Entity& entity, const PointTest& inside) {
    Counter counter(inside);
    // Counting changes nothing.
    if (!visitPoints(const_cast<Entity&>(entity), counter)) {
        const math::Bounds2 box = entity.bounds();
        if (box.is_empty()) return StretchEffect::None;
        for (const Vector2& corner : {box.min, Vector2{box.max.x, box.min.y}, box.max, Vector2{box.min.x, box.max.y}})
            if (!inside(corner)) return StretchEffect::None;
        return StretchEffect::Whole;
    }
    if (counter.inside == 0) return StretchEffect::None;
    return counter.outside == 0 ? StretchEffect::Whole : StretchEffect::Partly;
}

void stretchPoints(Entity& entity, const PointTest& inside, const Vector2& by) {
    Mover mover(inside, by);
    visitPoints(entity, mover);
}

}  // namespace kova::engine
