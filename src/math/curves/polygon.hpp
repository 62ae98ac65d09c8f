#pragma once

#include <span>

#include "math/vector2.hpp"

namespace kova::math {

/// Polygons are closed: the last point is joined to the first.

/// Positive when the points run counter-clockwise; 0 for fewer than three points.
double signedArea(std::span<const Vector2> points);
/// The same with arcs: `bulges` runs parallel to the points and may be shorter.
double signedArea(std::span<const Vector2> points, std::span<const double> bulges);
double area(std::span<const Vector2> points);
/// Centre of area; the mean of the points when the area vanishes, the origin without points.
Vector2 centroid(std::span<const Vector2> points);
/// Centre of area of a polygon with arcs.
Vector2 centroid(std::span<const Vector2> points, std::span<const double> bulges);
/// Length of the outline, closing segment included.
double perimeter(std::span<const Vector2> points, std::span<const double> bulges = {});
/// Even-odd rule; points on the outline may fall on either side.
bool pointInPolygon(const Vector2& p, std::span<const Vector2> points);
/// The same with arcs.
bool pointInPolygon(const Vector2& p, std::span<const Vector2> points, std::span<const double> bulges);

}  // namespace kova::math
