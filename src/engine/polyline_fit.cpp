#include "engine/polyline_fit.hpp"

#include <cmath>

#include "math/curves.hpp"
#include "math/nurbs.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

/// Vertices that a spline-fit polyline may get.
constexpr std::size_t kMostVertices = 2'000'000;

/// The frame to fit again: what stood before an earlier fitting, without repeated points.
std::vector<Vector2> frameOf(const PolylineEntity& polyline) {
    std::vector<Vector2> frame;
    for (const Vector2& p : polyline.fit.empty() ? polyline.vertices : polyline.fit)
        if (frame.empty() || frame.back() != p) frame.push_back(p);
    if (polyline.closed && frame.size() > 1 && frame.front() == frame.back()) frame.pop_back();
    return frame;
}

/// Direction at b of the circle through three points.
Vector2 tangentThrough(const Vector2& a, const Vector2& b, const Vector2& c) {
    if (const auto arc = math::arcThrough(a, b, c)) {
        const Vector2 radial = (b - arc->center).normalized();
        return arc->sweep > 0.0 ? radial.perpendicular() : -radial.perpendicular();
    }
    const Vector2 straight = (c - a).normalized();
    return straight == Vector2{} ? (b - a).normalized().perpendicular() : straight;
}

/// The direction with which an arc reaches b when it leaves a in direction `at`.
Vector2 mirrored(const Vector2& at, const Vector2& a, const Vector2& b) {
    const Vector2 chord = (b - a).normalized();
    return chord * (2.0 * chord.dot(at)) - at;
}

/// Where two arcs from a (direction u) to b (direction v) meet smoothly.
Vector2 arcJoint(const Vector2& a, const Vector2& u, const Vector2& b, const Vector2& v) {
    const Vector2 w = b - a;
    const double square = w.length_squared();
    const double along = w.dot(u + v);
    const double spread = 2.0 * (1.0 - u.dot(v));
    double reach = 0.0;
    if (spread > 1e-12)
        reach = (-along + std::sqrt(std::max(0.0, along * along + spread * square))) / spread;
    else if (std::abs(along) > 1e-12 * std::sqrt(square))
        reach = square / (2.0 * along);
    else
        return (a + b) / 2.0;
    return (a + u * reach + b - v * reach) / 2.0;
}

void takeWidths(const PolylineEntity& source, PolylineEntity& out) {
    if (!source.hasWidths()) return;
    // From the first width to the last one, evenly.
    const std::size_t segments = source.segmentCount();
    const double first = source.startWidth(0);
    const double last = segments > 0 ? source.endWidth(segments - 1) : first;
    const auto n = static_cast<double>(std::max<std::size_t>(1, out.segmentCount()));
    for (std::size_t i = 0; i < out.vertices.size(); ++i) {
        const double t = static_cast<double>(i) / n;
        const double next = std::min(1.0, static_cast<double>(i + 1) / n);
        out.setWidths(i, first + (last - first) * std::min(1.0, t), first + (last - first) * next);
    }
}

void become(PolylineEntity& polyline, PolylineEntity& with, std::vector<Vector2> frame) {
    takeWidths(polyline, with);
    polyline.vertices = std::move(with.vertices);
    polyline.bulges = std::move(with.bulges);
    polyline.startWidths = std::move(with.startWidths);
    polyline.endWidths = std::move(with.endWidths);
    polyline.records = std::move(with.records);
    polyline.fit = std::move(frame);
}

}  // namespace

void fitWithArcs(PolylineEntity& polyline) {
    std::vector<Vector2> frame = frameOf(polyline);
    const std::size_t n = frame.size();
    if (n < 3) return;
    std::vector<Vector2> directions(n);
    const bool closed = polyline.closed;
    for (std::size_t i = 0; i < n; ++i)
        if (closed || (i > 0 && i + 1 < n))
            directions[i] = tangentThrough(frame[i > 0 ? i - 1 : n - 1], frame[i], frame[i + 1 < n ? i + 1 : 0]);
    if (!closed) {
        directions[0] = mirrored(directions[1], frame[1], frame[0]);
        directions[n - 1] = mirrored(directions[n - 2], frame[n - 2], frame[n - 1]);
    }
    if (polyline.fit.empty())
        for (const PolylineRecord& record : polyline.records)
            if ((record.flags & PolylineRecord::kTangent) != 0 && record.vertex >= 0 &&
                static_cast<std::size_t>(record.vertex) < n)
                directions[static_cast<std::size_t>(record.vertex)] = Vector2::from_angle(record.tangent);
    PolylineEntity out;
    out.closed = closed;
    for (std::size_t i = 0; i < n; ++i) {
        if (!closed && i + 1 == n) {
            out.addVertex(frame[i]);
            break;
        }
        const Vector2& a = frame[i];
        const Vector2& b = frame[i + 1 < n ? i + 1 : 0];
        const Vector2& u = directions[i];
        const Vector2& v = directions[i + 1 < n ? i + 1 : 0];
        const Vector2 joint = arcJoint(a, u, b, v);
        out.addVertex(a, math::bulgeFromTangent(a, u, joint));
        PolylineRecord extra;
        extra.vertex = static_cast<std::int32_t>(out.vertices.size());
        extra.flags = PolylineRecord::kExtraVertex;
        out.records.push_back(extra);
        out.addVertex(joint, -math::bulgeFromTangent(b, -v, joint));
    }
    become(polyline, out, std::move(frame));
    polyline.spline = false;
    polyline.curveType = 0;
}

void fitWithSpline(PolylineEntity& polyline, int degree, int segments) {
    std::vector<Vector2> frame = frameOf(polyline);
    const std::size_t n = frame.size();
    if (n < 3) return;
    degree = std::clamp(degree, 2, std::min(3, static_cast<int>(n) - 1));
    const bool closed = polyline.closed;
    std::size_t each = static_cast<std::size_t>(std::clamp(segments, 1, 200));
    each = std::max<std::size_t>(1, std::min(each, kMostVertices / n));
    std::vector<Vector2> points = frame;
    if (closed) points.insert(points.end(), frame.begin(), frame.begin() + degree);
    const std::vector<double> knots =
        closed ? math::uniformKnots(degree, points.size()) : math::clampedUniformKnots(degree, points.size());
    const math::SplineView view{degree, points, knots};
    if (!view.usable()) return;
    PolylineEntity out;
    out.closed = closed;
    const std::size_t total = each * (closed ? n : n - 1);
    const double from = view.domainStart();
    const double width = view.domainEnd() - from;
    out.vertices.reserve(total + 1);
    for (std::size_t i = 0; i < total + (closed ? 0 : 1); ++i) {
        out.vertices.push_back(
            math::splinePoint(view, from + width * static_cast<double>(i) / static_cast<double>(total)));
    }
    if (!closed) {
        out.vertices.front() = frame.front();
        out.vertices.back() = frame.back();
    }
    become(polyline, out, std::move(frame));
    polyline.spline = true;
    polyline.curveType = degree == 2 ? 5 : 6;
}

void decurve(PolylineEntity& polyline) {
    if (!polyline.fit.empty()) {
        PolylineEntity out(polyline.fit, polyline.closed);
        become(polyline, out, {});
    }
    polyline.bulges.clear();
    polyline.fit.clear();
    polyline.records.clear();
    polyline.spline = false;
    polyline.curveType = 0;
}

}  // namespace kova::engine
