#include "engine/curves/polyline_fit.hpp"

#include <cmath>

#include "engine/curves/space_fit.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

/// The frame to fit again: what stood before an earlier fitting, without repeated points.
std::vector<Vector2> frameOf(const PolylineEntity& polyline) {
    std::vector<Vector2> frame;
    for (const Vector2& p : polyline.fit.empty() ? polyline.vertices : polyline.fit)
        if (frame.empty() || frame.back() != p) frame.push_back(p);
    if (polyline.closed && frame.size() > 1 && frame.front() == frame.back()) frame.pop_back();
    return frame;
}

/// The tangents that the user gave, on the vertices of the frame. A spline keeps none.
std::vector<PolylineRecord> tangentsOf(const PolylineEntity& polyline) {
    std::vector<PolylineRecord> given;
    const bool fitted = !polyline.fit.empty();
    if (fitted && polyline.spline) return given;
    for (const PolylineRecord& record : polyline.records) {
        if ((record.flags & PolylineRecord::kTangent) == 0 || record.vertex < 0) continue;
        if ((record.flags & PolylineRecord::kExtraVertex) != 0 || (fitted && record.vertex % 2 != 0)) continue;
        given.push_back(record);
        given.back().flags = PolylineRecord::kTangent;
        if (fitted) given.back().vertex /= 2;
    }
    return given;
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
    std::vector<PolylineRecord> given = tangentsOf(polyline);
    std::erase_if(given, [n](const PolylineRecord& r) { return static_cast<std::size_t>(r.vertex) >= n; });
    for (PolylineRecord& record : given) {
        directions[static_cast<std::size_t>(record.vertex)] = Vector2::from_angle(record.tangent);
        record.vertex *= 2;  // behind each vertex stands the joint of its arcs
    }
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
    out.records.insert(out.records.end(), given.begin(), given.end());
    become(polyline, out, std::move(frame));
    polyline.spline = false;
    polyline.curveType = 0;
}

void fitWithSpline(PolylineEntity& polyline, int degree, int segments) {
    std::vector<Vector2> frame = frameOf(polyline);
    const std::size_t n = frame.size();
    if (n < 3) return;
    const int kind = degree == 2 ? 5 : 6;
    std::vector<math::Vector3> points;
    for (const Vector2& p : frame) points.emplace_back(p);
    PolylineEntity out;
    out.closed = polyline.closed;
    for (const math::Vector3& p : frameCurve(points, out.closed, degree, curveSteps(segments, n, out.closed)))
        out.vertices.push_back(p.xy());
    if (out.vertices.empty()) return;
    if (segments < 0) {
        fitWithArcs(out);
        out.fit.clear();
    }
    become(polyline, out, std::move(frame));
    polyline.spline = true;
    polyline.curveType = kind;
}

void decurve(PolylineEntity& polyline) {
    std::vector<PolylineRecord> given = tangentsOf(polyline);
    if (!polyline.fit.empty()) {
        PolylineEntity out(polyline.fit, polyline.closed);
        become(polyline, out, {});
    }
    polyline.bulges.clear();
    polyline.fit.clear();
    polyline.records = std::move(given);
    polyline.spline = false;
    polyline.curveType = 0;
}

void editFrame(PolylineEntity& polyline, int segments, const std::function<void(PolylineEntity&)>& edit) {
    const bool fitted = !polyline.fit.empty();
    const bool spline = polyline.spline;
    const int degree = polyline.curveType == 5 ? 2 : 3;
    if (fitted) decurve(polyline);
    edit(polyline);
    if (!fitted) return;
    if (spline)
        fitWithSpline(polyline, degree, segments);
    else
        fitWithArcs(polyline);
}

}  // namespace kova::engine
