#include "engine/curves/space_fit.hpp"

#include <algorithm>
#include <cmath>

#include "engine/entities/line.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/entities/polyline.hpp"
#include "math/curves/nurbs.hpp"

namespace kova::engine {

using math::Vector2;
using math::Vector3;

namespace {

/// Vertices that a spline-fit polyline may get.
constexpr std::size_t kMostVertices = 2'000'000;
/// Control points of a Bezier surface in one direction.
constexpr std::size_t kMostBezier = 11;

/// The points of an entity that can be part of a polyline in space; empty for any other one.
std::vector<Vector3> openRun(const Entity& entity) {
    std::vector<Vector3> run;
    if (entity.type() == EntityType::Line) {
        const auto& line = static_cast<const LineEntity&>(entity);
        run = {line.start3(), line.end3()};
    } else if (entity.type() == EntityType::Polyline3D) {
        const auto& polyline = static_cast<const Polyline3DEntity&>(entity);
        if (!polyline.closed) run = polyline.vertices;
    } else if (entity.type() == EntityType::Polyline) {
        const auto& polyline = static_cast<const PolylineEntity&>(entity);
        if (polyline.closed || polyline.hasBulges()) return run;
        const math::Matrix4 plane = objectPlane(polyline);
        for (const Vector2& p : polyline.vertices) run.push_back(plane.transform_point(Vector3(p, 0.0)));
    }
    if (run.size() < 2) run.clear();
    return run;
}

}  // namespace

std::vector<Vector3> frameCurve(std::span<const Vector3> frame, bool closed, int degree, std::size_t steps) {
    std::vector<Vector3> out;
    const std::size_t n = frame.size();
    if (n < 2 || steps == 0) return out;
    degree = std::clamp(degree, 1, static_cast<int>(std::min<std::size_t>(n - 1, math::kMaxDegree)));
    std::vector<Vector2> points;
    std::vector<double> z;
    points.reserve(n + static_cast<std::size_t>(degree));
    const auto add = [&](const Vector3& p) {
        points.push_back(p.xy());
        z.push_back(p.z);
    };
    for (const Vector3& p : frame) add(p);
    for (std::size_t i = 0; closed && i < static_cast<std::size_t>(degree); ++i) add(frame[i]);
    const std::vector<double> knots =
        closed ? math::uniformKnots(degree, points.size()) : math::clampedUniformKnots(degree, points.size());
    const math::SplineView view{degree, points, knots, {}, z};
    if (!view.usable()) return out;
    const double from = view.domainStart();
    const double width = view.domainEnd() - from;
    out.reserve(steps + 1);
    for (std::size_t i = 0; i < steps + (closed ? 0 : 1); ++i)
        out.push_back(math::splinePoint3(view, from + width * static_cast<double>(i) / static_cast<double>(steps)));
    if (!closed) {
        out.front() = frame.front();
        out.back() = frame.back();
    }
    return out;
}

std::size_t curveSteps(int segments, std::size_t points, bool closed) {
    if (points < 2) return 0;
    const auto each = static_cast<std::size_t>(std::clamp(std::abs(segments), 1, 200));
    return std::max<std::size_t>(1, std::min(each, kMostVertices / points)) * (closed ? points : points - 1);
}

void fitWithSpline(Polyline3DEntity& polyline, int degree, int segments) {
    std::vector<Vector3> frame = polyline.frame.empty() ? polyline.vertices : polyline.frame;
    if (frame.size() < 3) return;
    std::vector<Vector3> curve =
        frameCurve(frame, polyline.closed, degree, curveSteps(segments, frame.size(), polyline.closed));
    if (curve.empty()) return;
    polyline.vertices = std::move(curve);
    polyline.frame = std::move(frame);
    polyline.curveType = degree == 2 ? 5 : 6;
}

void decurve(Polyline3DEntity& polyline) {
    if (!polyline.frame.empty()) polyline.vertices = std::move(polyline.frame);
    polyline.frame.clear();
    polyline.curveType = 0;
}

void editFrame(Polyline3DEntity& polyline, int segments, const std::function<void(Polyline3DEntity&)>& edit) {
    const int kind = polyline.frame.empty() ? 0 : polyline.curveType;
    if (kind != 0) decurve(polyline);
    edit(polyline);
    if (kind != 0) fitWithSpline(polyline, kind == 5 ? 2 : 3, segments);
}

SmoothRefusal smoothMesh(MeshEntity& mesh, int type, int u, int v) {
    const bool again = !mesh.frame.empty();
    const std::int32_t rows = again ? mesh.frameRows : mesh.rows;
    const std::int32_t cols = again ? mesh.frameCols : mesh.cols;
    const std::vector<Vector3>& frame = again ? mesh.frame : mesh.vertices;
    const auto m = static_cast<std::size_t>(std::max(rows, 0));
    const auto n = static_cast<std::size_t>(std::max(cols, 0));
    const std::size_t least = type == 5 ? 3 : type == 6 ? 4 : 2;
    if (m < least || n < least || frame.size() / n < m) return SmoothRefusal::TooFew;
    if (type == 8 && (m > kMostBezier || n > kMostBezier)) return SmoothRefusal::TooMany;
    for (const Vector3& p : frame)
        if (!p.is_finite()) return SmoothRefusal::TooFew;
    const auto alongM = static_cast<std::size_t>(std::clamp(u, 2, 200));
    const auto alongN = static_cast<std::size_t>(std::clamp(v, 2, 200));
    // A Bezier curve that is closed comes back to its first point, and is not smooth there.
    const auto curve = [type](std::vector<Vector3> points, bool closed, std::size_t steps) {
        if (type != 8) return frameCurve(points, closed, type == 5 ? 2 : 3, steps);
        if (closed) points.push_back(points.front());
        std::vector<Vector3> out = frameCurve(points, false, static_cast<int>(points.size()) - 1, steps);
        if (closed && !out.empty()) out.pop_back();
        return out;
    };
    // Along the rows first, then over the columns of what they gave.
    std::vector<std::vector<Vector3>> lines;
    for (std::size_t i = 0; i < m; ++i) {
        const auto first = frame.begin() + static_cast<std::ptrdiff_t>(i * n);
        lines.push_back(curve({first, first + static_cast<std::ptrdiff_t>(n)}, mesh.closedN, alongN));
    }
    const std::size_t columns = lines.front().size();
    std::vector<Vector3> surface;
    std::size_t count = 0;
    for (std::size_t j = 0; j < columns; ++j) {
        std::vector<Vector3> column;
        for (const std::vector<Vector3>& line : lines) column.push_back(line[j]);
        const std::vector<Vector3> points = curve(std::move(column), mesh.closedM, alongM);
        count = points.size();
        surface.resize(count * columns);
        for (std::size_t i = 0; i < count; ++i) surface[i * columns + j] = points[i];
    }
    if (surface.empty()) return SmoothRefusal::TooFew;
    if (!again) {
        mesh.frame = std::move(mesh.vertices);
        mesh.frame.resize(m * n);
        mesh.frameRows = rows;
        mesh.frameCols = cols;
    }
    mesh.vertices = std::move(surface);
    mesh.rows = static_cast<std::int32_t>(count);
    mesh.cols = static_cast<std::int32_t>(columns);
    mesh.surfaceType = type;
    return SmoothRefusal::None;
}

void desmoothMesh(MeshEntity& mesh) {
    if (!mesh.frame.empty()) {
        mesh.vertices = std::move(mesh.frame);
        mesh.rows = mesh.frameRows;
        mesh.cols = mesh.frameCols;
    }
    mesh.frame.clear();
    mesh.frameRows = mesh.frameCols = 0;
    mesh.surfaceType = 0;
}

JoinedParts joinInSpace(Polyline3DEntity& polyline, std::span<const Entity* const> entities, double same) {
    JoinedParts joined;
    if (polyline.closed || polyline.vertices.size() < 2) return joined;
    double reach = 1.0;
    for (const Vector3& p : polyline.vertices) reach = std::max({reach, std::abs(p.x), std::abs(p.y), std::abs(p.z)});
    same *= reach;
    struct End {
        Vector3 place;
        std::size_t entity;
    };
    std::vector<std::vector<Vector3>> runs;
    std::vector<End> ends;
    for (std::size_t i = 0; i < entities.size(); ++i) {
        runs.push_back(openRun(*entities[i]));
        if (runs.back().empty()) continue;
        ends.push_back({runs.back().front(), i});
        ends.push_back({runs.back().back(), i});
    }
    std::stable_sort(ends.begin(), ends.end(), [](const End& a, const End& b) { return a.place.x < b.place.x; });
    std::vector<bool> used(entities.size(), false);
    std::vector<Vector3>& line = polyline.vertices;
    const auto near = [same](const Vector3& a, const Vector3& b) { return (a - b).length() <= same; };
    // First on from the end, then, turned round, on from the start.
    for (int side = 0; side < 2; ++side) {
        for (bool grown = true; grown && !near(line.front(), line.back());) {
            grown = false;
            const Vector3 tip = line.back();
            auto it = std::lower_bound(ends.begin(), ends.end(), tip.x - same,
                                       [](const End& e, double x) { return e.place.x < x; });
            for (; it != ends.end() && it->place.x <= tip.x + same; ++it) {
                if (used[it->entity] || !near(it->place, tip)) continue;
                std::vector<Vector3>& run = runs[it->entity];
                if (!near(run.front(), tip)) std::reverse(run.begin(), run.end());
                line.insert(line.end(), run.begin() + 1, run.end());
                used[it->entity] = true;
                joined.push_back(it->entity);
                grown = true;
                break;
            }
        }
        std::reverse(line.begin(), line.end());
    }
    if (!joined.empty() && line.size() > 3 && near(line.front(), line.back())) {
        line.pop_back();
        polyline.closed = true;
    }
    return joined;
}

}  // namespace kova::engine
