#include "engine/model/view_frame.hpp"

#include "engine/model/drawing.hpp"
#include "engine/outline/spatial_sink.hpp"
#include "math/angles.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

using math::Matrix4;
using math::Vector2;
using math::Vector3;

namespace {

/// World to view directions without a twist: the axes of the object system, turned back.
Matrix4 untwisted(const Vector3& direction) {
    const Matrix4 axes = Matrix4::object_to_world(direction);
    Matrix4 back;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column) back(row, column) = axes(column, row);
    return back;
}

}  // namespace

Vector3 usableDirection(const Vector3& direction) {
    const double size = std::max({std::abs(direction.x), std::abs(direction.y), std::abs(direction.z)});
    if (!direction.is_finite() || !(size > 0.0)) return {0, 0, 1};
    const Vector3 unit = (direction / size).normalized();
    // Free of rounding where it decides: straight down is exactly so.
    return unit.near_equal({0, 0, 1}, 1e-12) ? Vector3{0, 0, 1} : unit;
}

bool isPlanView(const Vector3& direction) { return usableDirection(direction) == Vector3{0, 0, 1}; }

Matrix4 worldToView(const Vector3& direction, const Vector3& target, double twist) {
    const Matrix4 turned = untwisted(usableDirection(direction));
    const Matrix4 moved = target.is_finite() ? turned * Matrix4::translation(-target.x, -target.y, -target.z) : turned;
    return twist != 0.0 && std::isfinite(twist) ? Matrix4::rotation_z(twist) * moved : moved;
}

Matrix4 worldToView(const NamedView& view) {
    return worldToView(view.viewDirection, view.target, viewTwist(view.viewDirection, view.upHint));
}

Vector3 viewUp(const Vector3& direction, double twist) {
    const Matrix4 axes = Matrix4::object_to_world(usableDirection(direction));
    const Vector2 up = Vector2::from_angle(math::kPi / 2.0 - (std::isfinite(twist) ? twist : 0.0));
    Vector3 found = axes.transform_direction(Vector3(twist == 0.0 ? Vector2{0, 1} : up));
    // The usual up directions come out exactly.
    for (double* v : {&found.x, &found.y, &found.z})
        if (std::abs(*v - std::round(*v)) < 1e-15) *v = std::round(*v);
    return found;
}

double viewTwist(const Vector3& direction, const Vector3& up) {
    if (!up.is_finite()) return 0.0;
    const Vector2 shown = untwisted(usableDirection(direction)).transform_direction(up).xy();
    if (!(shown.length() > 1e-9 * up.length())) return 0.0;
    const double twist = math::normalizeAngle(math::kPi / 2.0 - shown.angle());
    return twist < 1e-12 || math::kTwoPi - twist < 1e-12 ? 0.0 : twist;
}

std::optional<Vector2> onGround(const Matrix4& toView, const Vector2& shown, double height) {
    const double det = toView.plane_determinant();
    const Vector2 d = shown - toView.transform_point(Vector3{0, 0, height}).xy();
    const Vector2 ix = toView.transform_direction(Vector2::unit_x());
    const Vector2 iy = toView.transform_direction(Vector2::unit_y());
    if (!(std::abs(det) > 1e-9 * std::max(ix.length() * ix.length(), iy.length() * iy.length()))) return std::nullopt;
    return Vector2{d.cross(iy) / det, ix.cross(d) / det};
}

math::Bounds2 windowInView(const NamedView& view, const math::Bounds2& window) {
    const Matrix4 toView = worldToView(view);
    if (window.is_empty() || toView == Matrix4()) return window;
    math::Bounds2 box;
    for (const Vector2& p :
         {window.min, Vector2{window.max.x, window.min.y}, window.max, Vector2{window.min.x, window.max.y}})
        box.expand(toView.transform_point(p));
    return box;
}

math::Bounds2 modelExtentsInView(const Drawing& drawing) {
    const Matrix4 toView = worldToView(drawing.currentView);
    return toView == Matrix4() ? drawing.extents(drawing.modelSpace()) : viewedExtents(drawing.modelSpace(), toView);
}

Vector3 directionByAngles(double inPlane, double fromPlane) {
    const Vector2 flat = math::unitAt(inPlane);
    const Vector2 tilt = math::unitAt(fromPlane);
    return usableDirection({flat.x * tilt.x, flat.y * tilt.x, tilt.y});
}

}  // namespace kova::engine
