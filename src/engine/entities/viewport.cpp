#include "engine/entities/viewport.hpp"

#include "engine/model/drawing.hpp"
#include "engine/model/outline.hpp"
#include "math/curves/path.hpp"
#include "engine/model/view_frame.hpp"
#include "math/angles.hpp"

namespace kova::engine {

using math::Matrix4;
using math::Vector2;
using math::Vector3;

bool ViewportEntity::isFrozenHere(Name layer) const {
    return std::find(vpFrozenLayers.begin(), vpFrozenLayers.end(), layer) != vpFrozenLayers.end();
}

math::Bounds2 ViewportEntity::frame() const {
    const Vector2 half{std::abs(width) / 2.0, std::abs(height) / 2.0};
    return {center - half, center + half};
}

const Entity* ViewportEntity::clipEntity() const {
    const Drawing* home = drawing();
    if (clipHandle == 0 || home == nullptr) return nullptr;
    const Entity* found = home->findByHandle(clipHandle);
    return found != this && found != nullptr && found->owner() == owner() ? found : nullptr;
}

Matrix4 ViewportEntity::modelToPaper() const {
    const Matrix4 onSheet = Matrix4::translation(center) * Matrix4::rotation_z(viewTwist) *
                            Matrix4::scaling(viewScale, viewScale, viewScale);
    if (showsPlan()) return onSheet * Matrix4::translation(-viewTarget.x, -viewTarget.y, -viewTargetZ);
    return onSheet * worldToView(viewDirection, Vector3(viewTarget, viewTargetZ), 0.0);
}

bool ViewportEntity::showsPlan() const { return isPlanView(viewDirection); }

Vector2 ViewportEntity::toModel(const Vector2& paper) const {
    if (!showsPlan()) return onGround(modelToPaper(), paper, viewTargetZ).value_or(viewTarget);
    const auto inverse = modelToPaper().inverse();
    return inverse ? inverse->transform_point(paper) : viewTarget;
}

void ViewportEntity::aimAt(const Vector2& paper) {
    if (showsPlan()) {
        viewTarget = toModel(paper);
        return;
    }
    // The way on paper, turned and scaled back, lies along the axes of the view.
    const Vector2 way = Matrix4::rotation_z(-viewTwist).transform_direction(paper - center) / viewScale;
    const Vector3 by = Matrix4::object_to_world(usableDirection(viewDirection)).transform_direction(Vector3(way));
    if (!by.is_finite()) return;
    viewTarget = viewTarget + by.xy();
    viewTargetZ += by.z;
}

math::Bounds2 ViewportEntity::modelWindow() const {
    math::Bounds2 box;
    const math::Bounds2 paper = frame();
    for (const Vector2& p :
         {paper.min, Vector2{paper.max.x, paper.min.y}, paper.max, Vector2{paper.min.x, paper.max.y}})
        box.expand(toModel(p));
    return box;
}

math::Bounds2 ViewportEntity::bounds() const { return isSheet() ? math::Bounds2{} : frame(); }

void ViewportEntity::transform(const Matrix4& m) {
    const math::PlaneParts parts = math::planeParts(m);
    center = m.transform_point(center);
    // The frame stays along the axes of the sheet: it takes quarter turns, the view inside it every turn. The view
    // grows with the window, so that the window shows the same part of the model.
    width *= parts.scaleX;
    height *= parts.scaleY;
    if (std::lround(parts.rotation / (math::kPi / 2.0)) % 2 != 0) std::swap(width, height);
    const double scale = std::sqrt(std::abs(m.plane_determinant()));
    if (scale > 0.0 && std::isfinite(scale)) viewScale *= scale;
    if (!parts.mirrored && parts.rotation != 0.0) viewTwist = math::normalizeAngle(viewTwist + parts.rotation);
}

double ViewportEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }

Vector2 ViewportEntity::nearestPoint(const Vector2& p) const {
    if (const Entity* border = clipEntity()) return border->nearestPoint(p);
    const math::Bounds2 f = frame();
    Path path;
    const std::array<Vector2, 4> box{f.min, Vector2{f.max.x, f.min.y}, f.max, Vector2{f.min.x, f.max.y}};
    path.polygon(box);
    return nearestOnPath(path, p);
}

std::vector<Vector2> ViewportEntity::gripPoints() const {
    const math::Bounds2 f = frame();
    return {f.min, {f.max.x, f.min.y}, f.max, {f.min.x, f.max.y}, center};
}

void ViewportEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (index == 4) {
        center = to;
        return;
    }
    if (index > 3) return;
    const Vector2 fixed = gripPoints()[(index + 2) % 4];
    const Vector2 size = to - fixed;
    if (!(std::abs(size.x) > math::kTolerance) || !(std::abs(size.y) > math::kTolerance) || !size.is_finite()) return;
    // What is seen keeps its place on the sheet.
    const Vector2 middle = (to + fixed) / 2.0;
    aimAt(middle);
    center = middle;
    width = std::abs(size.x);
    height = std::abs(size.y);
}

void ViewportEntity::describe(FieldVisitor& v) {
    v.point("center", center);
    v.length("width", width);
    v.length("height", height);
    v.point("viewTarget", viewTarget);
    v.number("viewScale", viewScale);
    v.angle("viewTwist", viewTwist);
    v.boolean("on", on);
    v.boolean("locked", locked);
    v.integer("vpId", vpId);
    v.pointObject("snapBase", snapBase);
    v.pointObject("snapSpacing", snapSpacing);
    v.pointObject("gridSpacing", gridSpacing);
    v.angle("snapAngle", snapAngle);
    v.integer("statusFlags", statusFlags);
    v.names("vpFrozenLayers", vpFrozenLayers);
    v.optionalHandle("clipHandle", clipHandle);
    v.number("viewDirectionX", viewDirection.x, 0.0);
    v.number("viewDirectionY", viewDirection.y, 0.0);
    v.number("viewDirectionZ", viewDirection.z, 1.0);
    v.length("viewTargetZ", viewTargetZ, 0.0);
}

void ViewportEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    if (isSheet()) return;
    const math::Bounds2 f = frame();
    const std::array<Vector2, 4> corners{f.min, Vector2{f.max.x, f.min.y}, f.max, Vector2{f.min.x, f.max.y}};
    Path path;
    path.polygon(corners);
    sink.viewport(*this, style);
    // The bounding entity is drawn for itself, in the frame's stead.
    if (clipEntity() != nullptr) return;
    StrokeOptions frameLine;
    frameLine.continuous = true;
    sink.stroke(path, style, frameLine);
}

std::size_t ViewportEntity::sizeInBytes() const {
    return sizeof *this + extrasSize() + vpFrozenLayers.capacity() * sizeof(Name);
}

}  // namespace kova::engine
