"""Geometry: values (Vector2, Vector3, BoundingBox2, Matrix4), intersections, areas, offsets.

Wherever a point is wanted, a tuple (x, y) serves too. Lengths are drawing units, angles radians.
"""

import math as _math

from _kova import (
    BoundingBox2, Matrix4, Vector2, Vector3, arc_arc, area, centroid, circle_circle, circumcenter, closest_on_segment,
    line_circle, line_line, perimeter, point_in_polygon, segment_arc, segment_circle, segment_segment, signed_area)

__all__ = [
    "BoundingBox2", "Matrix4", "Vector2", "Vector3", "arc_arc", "area", "centroid", "circle_circle", "circumcenter",
    "closest_on_segment", "line_circle", "line_line", "offset_line", "offset_points", "perimeter", "point_in_polygon",
    "segment_arc", "segment_circle", "segment_segment", "signed_area"]


def offset_line(a: "Point", b: "Point", distance: float) -> "tuple[Vector2, Vector2]":
    """The segment a-b moved sideways; a positive distance moves to the left of its direction."""
    a, b = Vector2(*a), Vector2(*b)
    side = (b - a).normalized().perpendicular() * distance
    return a + side, b + side


def offset_points(points: "Iterable[Point]", distance: float, closed: bool = False,
                  miter_limit: float = 10.0) -> "list[Vector2]":
    """A polyline of straight segments at a distance: to the left of its direction when that is positive.

    Corners are mitred; one that would reach farther than `miter_limit` distances is cut off square.
    """
    distance = float(distance)
    if not _math.isfinite(distance):
        raise ValueError("distance must be finite")
    line = []
    for point in points:
        point = Vector2(*point)
        if not line or not line[-1].near_equal(point):
            line.append(point)
    if closed and len(line) > 1 and line[0].near_equal(line[-1]):
        line.pop()
    if len(line) < 2:
        raise ValueError("an offset needs two different points")
    count = len(line)
    sides = []
    for i in range(count if closed else count - 1):
        direction = (line[(i + 1) % count] - line[i]).normalized()
        sides.append((direction, direction.perpendicular() * distance))
    result = []
    for i, point in enumerate(line):
        before = sides[i - 1] if i > 0 or closed else None
        after = sides[i % len(sides)] if i < len(sides) else None
        if before is None or after is None:
            result.append(point + (after or before)[1])
            continue
        turn = 1.0 + before[0].dot(after[0])
        if turn > 2.0 / (miter_limit * miter_limit):
            result.append(point + (before[1] + after[1]) / turn)
        else:
            result += [point + before[1], point + after[1]]
    return result
