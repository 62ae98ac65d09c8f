#pragma once

#include <optional>

#include "engine/model/records.hpp"
#include "math/bounds2.hpp"
#include "math/matrix4.hpp"
#include "math/vector3.hpp"

namespace kova::engine {

class Drawing;

/// Views of space are parallel projections. View coordinates have x to the right, y up and z towards the viewer;
/// without a twist their axes follow the arbitrary axis rule of DXF for the direction from the target to the viewer.

/// A direction of length 1; straight down (0, 0, 1) for one that is no direction.
math::Vector3 usableDirection(const math::Vector3& direction);
/// True for a view straight down, which shows the plan.
bool isPlanView(const math::Vector3& direction);
/// World to view coordinates about the target; the view appears turned counter-clockwise by `twist`, radians.
math::Matrix4 worldToView(const math::Vector3& direction, const math::Vector3& target, double twist);
math::Matrix4 worldToView(const NamedView& view);
/// The direction that is up in a view of that twist.
math::Vector3 viewUp(const math::Vector3& direction, double twist);
/// The twist that lets `up` be up, in [0, 2 pi); 0 when `up` lies along the direction.
double viewTwist(const math::Vector3& direction, const math::Vector3& up);
/// The point of the plane z = `height` that shows at a point in view coordinates (for a matrix of worldToView); nothing
/// when that plane stands on edge.
std::optional<math::Vector2> onGround(const math::Matrix4& toView, const math::Vector2& shown, double height = 0.0);

/// The box round a window of the plan in the coordinates of a view.
math::Bounds2 windowInView(const NamedView& view, const math::Bounds2& window);
/// Extents of model space in the coordinates of the current view.
math::Bounds2 modelExtentsInView(const Drawing& drawing);

/// Direction of view by the angle in the xy plane from the x axis and the angle from that plane, radians.
math::Vector3 directionByAngles(double inPlane, double fromPlane);

}  // namespace kova::engine
