#pragma once

#include <QBrush>
#include <QColor>

#include "engine/model/outline.hpp"
#include "math/bounds2.hpp"
#include "render/view.hpp"

namespace kova::render {

/// How far a point of a gradient's unit square (-1 to 1 both ways, the gradient running along u) has come from the
/// first colour (0) to the second (1). The nine kinds: LINEAR, CYLINDER, INVCYLINDER, SPHERICAL, HEMISPHERICAL,
/// CURVED, INVSPHERICAL, INVHEMISPHERICAL, INVCURVED; other names are linear.
double gradientPart(std::string_view kind, double u, double v);

/// The brush for an area with these extents (drawing coordinates). A gradient turns about the middle of its area and
/// always covers all of it; shift 1 moves its light up and left by a quarter of the area.
QBrush gradientBrush(const engine::GradientFill& gradient, const math::Bounds2& box, const View& view,
                     const QColor& from, const QColor& to);

}  // namespace kova::render
