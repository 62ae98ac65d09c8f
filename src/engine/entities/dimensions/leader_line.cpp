#include "engine/entities/dimensions/leader_line.hpp"

#include <cmath>

#include "engine/entities/dimensions/arrowheads.hpp"
#include "math/curves/nurbs.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

/// Beyond this many points a leader stays straight: it is no longer a leader, but it must be drawn in finite time.
constexpr std::size_t kMaxSplinePoints = 10'000;

Path smoothLine(std::span<const Vector2> points) {
    const math::CubicSpline spline = math::interpolateCubic(points, false);
    math::SplineView view;
    view.points = spline.points;
    view.knots = spline.knots;
    Path path;
    if (!view.usable()) return path;
    for (const math::Cubic& c : math::splineToCubics(view, 1e-6)) {
        if (path.empty()) path.moveTo(c[0]);
        path.cubicTo(c[1], c[2], c[3]);
    }
    return path;
}

}  // namespace

Path leaderLine(std::span<const Vector2> vertices, bool splined, double startGap) {
    std::vector<Vector2> points;
    points.reserve(vertices.size());
    for (const Vector2& p : vertices)
        if (p.is_finite()) points.push_back(p);
    if (points.size() < 2) return {};
    if (splined && points.size() > 2 && points.size() <= kMaxSplinePoints) {
        Path path = smoothLine(points);
        if (!path.empty()) return path;
    }
    const double first = points[0].distance_to(points[1]);
    if (startGap > 0.0 && startGap < first) points[0] = points[0].lerp(points[1], startGap / first);
    return Path().polygon(points, false);
}

LeaderArrow leaderArrow(std::span<const Vector2> vertices, double size, Name block) {
    LeaderArrow arrow;
    if (vertices.size() < 2 || !(size > 0.0)) return arrow;
    arrow.tip = vertices[0];
    for (std::size_t i = 1; i < vertices.size(); ++i) {
        arrow.direction = (vertices[0] - vertices[i]).normalized();
        if (arrow.direction == Vector2{}) continue;
        arrow.visible = arrow.direction.is_finite();
        break;
    }
    if (arrow.visible) arrow.lineGap = arrowLineGap(arrowKind(block)) * size;
    return arrow;
}

}  // namespace kova::engine
