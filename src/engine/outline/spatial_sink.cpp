#include "engine/outline/spatial_sink.hpp"

#include "engine/entities/line.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/entities/solid3d.hpp"
#include "engine/solids/sat_edges.hpp"
#include "math/angles.hpp"

namespace kova::engine {

using math::Matrix4;
using math::Vector2;
using math::Vector3;

namespace {

/// Upright edges of one entity with a thickness.
constexpr std::size_t kMaxUprights = 100'000;
/// A plane this steep (cosine of its tilt) shows its plan as a line.
constexpr double kOnEdge = 1e-6;

/// The places of a shape where upright edges stand: the ends of its lines and arcs, the quarters of full circles.
class UprightSink final : public OutlineSink {
public:
    using OutlineSink::fill;
    using OutlineSink::stroke;
    void stroke(PathView path, const OutlineStyle&, const StrokeOptions&) override { take(path); }
    void fill(PathView rings, const OutlineStyle&, const FillOptions&) override { take(rings); }
    void text(const TextRun&, const OutlineStyle&) override {}

    std::vector<Vector2> places;

private:
    void take(PathView path) {
        for (const PathElement& e : path) {
            if (places.size() >= kMaxUprights) return;
            if (e.kind == PathElement::Kind::Arc && std::abs(e.t1 - e.t0) > math::kTwoPi - 1e-9) {
                for (const Vector2& way : {e.a, e.b, -e.a, -e.b}) places.push_back(e.center + way);
            } else if (e.kind != PathElement::Kind::Close) {
                places.push_back(e.p);
            }
        }
    }
};

bool hasPointsInSpace(EntityType type) {
    switch (type) {
        case EntityType::Polyline3D:
        case EntityType::Face3D:
        case EntityType::Mesh:
        case EntityType::Polyface:
        case EntityType::Spline:
            return true;
        default:
            return false;
    }
}

/// Kinds whose shape in their own plane needs nothing of the drawing.
bool liesInObjectPlane(EntityType type) {
    switch (type) {
        case EntityType::Circle:
        case EntityType::Arc:
        case EntityType::Polyline:
        case EntityType::Solid2D:
            return true;
        default:
            return false;
    }
}

/// Plan to the tilted plane that shows so in plan; at the elevation for a plane on edge.
Matrix4 lifted(const Entity& entity) {
    const Vector3 n = entity.normal();
    if (inWorldPlane(entity) || std::abs(n.z) < kOnEdge) return Matrix4::translation(0.0, 0.0, entity.elevation);
    Matrix4 m;
    m(2, 0) = -n.x / n.z;
    m(2, 1) = -n.y / n.z;
    m(2, 3) = entity.elevation / n.z;
    return m;
}

ModelerEdges moved(const ModelerEdges& edges, const Matrix4& m) {
    ModelerEdges out = edges;
    for (ModelerEdge& e : out.edges) {
        for (Vector3* p : {&e.start, &e.end, &e.center}) *p = m.transform_point(*p);
        e.u = m.transform_direction(e.u);
        e.v = m.transform_direction(e.v);
        for (Vector3& p : e.points) p = m.transform_point(p);
    }
    return out;
}

}  // namespace

SpatialSink::SpatialSink(OutlineSink& target, const Matrix4& view) : target_(target), space_(view) {}

void SpatialSink::edge(const Vector3& a, const Vector3& b, const Matrix4& m, const OutlineStyle& style) {
    target_.line(m.transform_point(a).xy(), m.transform_point(b).xy(), style);
}

void SpatialSink::drawFlat(const Entity& entity, const Matrix4& plane, double thickness, const OutlineStyle& style) {
    TransformSink* const before = std::exchange(plane_, nullptr);
    TransformSink ground(target_, plane);
    plane_ = &ground;
    entity.emit(*this, style);
    if (thickness != 0.0 && std::isfinite(thickness)) {
        TransformSink roof(target_, plane * Matrix4::translation(0.0, 0.0, thickness));
        plane_ = &roof;
        entity.emit(*this, style);
        UprightSink uprights;
        entity.emit(uprights, style);
        for (const Vector2& p : uprights.places) edge(Vector3(p), Vector3(p, thickness), plane, style);
    }
    plane_ = before;
}

void SpatialSink::drawIn(const Entity& entity, const Matrix4& space, const OutlineStyle& style) {
    const EntityType type = entity.type();
    if (type == EntityType::Line) {
        const auto& line = static_cast<const LineEntity&>(entity);
        const Vector3 a = line.start3();
        const Vector3 b = line.end3();
        edge(a, b, space, style);
        if (entity.thickness() == 0.0 || !std::isfinite(entity.thickness())) return;
        const Vector3 up = entity.normal() * entity.thickness();
        edge(a + up, b + up, space, style);
        edge(a, a + up, space, style);
        edge(b, b + up, space, style);
        return;
    }
    if (hasPointsInSpace(type)) {
        const std::unique_ptr<Entity> seen = entity.clone();
        seen->transform(space);
        seen->emit(target_, style);
        return;
    }
    if (type == EntityType::Solid3D) {
        const Path plan = moved(static_cast<const Solid3DEntity&>(entity).edges(), space).plan();
        if (!plan.empty()) target_.stroke(plan, style, StrokeOptions{});
        return;
    }
    if (liesInObjectPlane(type) && !inWorldPlane(entity)) {
        const Matrix4 plane = space * objectPlane(entity);
        const std::unique_ptr<Entity> flat = entity.clone();
        flat->setNormal({0, 0, 1});
        flat->elevation = 0.0;
        return drawFlat(*flat, plane, entity.thickness(), style);
    }
    const Matrix4 before = std::exchange(space_, space);
    const bool upright = type != EntityType::BlockReference && inWorldPlane(entity);
    drawFlat(entity, space * lifted(entity), upright ? entity.thickness() : 0.0, style);
    space_ = before;
}

void SpatialSink::stroke(PathView path, const OutlineStyle& style, const StrokeOptions& options) {
    if (plane_ != nullptr) plane_->stroke(path, style, options);
}
void SpatialSink::fill(PathView rings, const OutlineStyle& style, const FillOptions& options) {
    if (plane_ != nullptr) plane_->fill(rings, style, options);
}
void SpatialSink::text(const TextRun& run, const OutlineStyle& style) {
    if (plane_ != nullptr) plane_->text(run, style);
}
void SpatialSink::image(const ImageEntity& image, const OutlineStyle& style) {
    if (plane_ != nullptr) plane_->image(image, style);
}
void SpatialSink::point(const Vector2& p, const OutlineStyle& style) {
    if (plane_ != nullptr) plane_->point(p, style);
}
void SpatialSink::unbounded(const Vector2& base, const Vector2& direction, bool bothWays, const OutlineStyle& style) {
    if (plane_ != nullptr) plane_->unbounded(base, direction, bothWays, style);
}
void SpatialSink::pattern(PathView rings, std::span<const HatchFamily> families, const OutlineStyle& style) {
    if (plane_ != nullptr) plane_->pattern(rings, families, style);
}
void SpatialSink::line(const Vector2& a, const Vector2& b, const OutlineStyle& style) {
    if (plane_ != nullptr) plane_->line(a, b, style);
}
void SpatialSink::viewport(const ViewportEntity&, const OutlineStyle&) {}
/// Where things are seen is not known from their extents in plan.
bool SpatialSink::wants(const math::Bounds2&) const { return true; }
bool SpatialSink::wantsLayer(Name layer) const { return target_.wantsLayer(layer); }
void SpatialSink::pushClip(PathView path, bool inverted) {
    if (plane_ != nullptr) plane_->pushClip(path, inverted);
}
void SpatialSink::popClip() {
    if (plane_ != nullptr) plane_->popClip();
}

}  // namespace kova::engine
