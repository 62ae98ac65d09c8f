#include "engine/entities/polyline.hpp"

#include <cmath>

#include "engine/model/object_plane.hpp"
#include "engine/model/outline.hpp"
#include "engine/model/frame_lines.hpp"
#include "math/curves/curves.hpp"
#include "math/curves/polygon.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Vector2;

namespace {

/// Polylines with more segments are drawn in pieces, so that their paths need not all be held at once.
constexpr std::size_t kMostInOnePath = 1 << 18;

/// A list with a value for every vertex in files; in memory a list of zeros is an empty one.
void describeParallel(FieldVisitor& v, std::string_view key, std::vector<double>& list, std::size_t count) {
    if (v.reading()) {
        v.numbers(key, list);
        if (std::all_of(list.begin(), list.end(), [](double value) { return value == 0.0; })) list = {};
        return;
    }
    if (list.size() >= count) {
        v.numbers(key, list);
        return;
    }
    std::vector<double> padded = list;
    padded.resize(count, 0.0);
    v.numbers(key, padded);
}

}  // namespace

void PolylineRecord::describe(FieldVisitor& v) {
    v.integer("vertex", vertex);
    v.integer("flags", flags);
    v.angle("tangent", tangent, 0.0);
    v.integer("id", id, 0);
}

// Vertices -----------------------------------------------------------------------------------------------

void PolylineEntity::setBulge(std::size_t i, double value) {
    if (i >= vertices.size()) return;
    if (i >= bulges.size()) {
        if (value == 0.0) return;
        bulges.resize(vertices.size(), 0.0);
    }
    bulges[i] = value;
}

void PolylineEntity::setWidths(std::size_t i, double start, double end) {
    if (i >= vertices.size()) return;
    if (start == 0.0 && end == 0.0 && i >= startWidths.size() && i >= endWidths.size()) return;
    if (startWidths.size() <= i) startWidths.resize(vertices.size(), 0.0);
    if (endWidths.size() <= i) endWidths.resize(vertices.size(), 0.0);
    startWidths[i] = start;
    endWidths[i] = end;
}

bool PolylineEntity::hasBulges() const {
    return std::any_of(bulges.begin(), bulges.end(), [](double b) { return b != 0.0; });
}

bool PolylineEntity::hasWidths() const {
    const auto wide = [](double w) { return w != 0.0; };
    return std::any_of(startWidths.begin(), startWidths.end(), wide) ||
           std::any_of(endWidths.begin(), endWidths.end(), wide);
}

std::size_t PolylineEntity::segmentCount() const {
    if (vertices.size() < 2) return 0;
    return closed ? vertices.size() : vertices.size() - 1;
}

const Vector2& PolylineEntity::segmentEnd(std::size_t i) const { return vertices[i + 1 < vertices.size() ? i + 1 : 0]; }

void PolylineEntity::addVertex(const Vector2& p, double bulge, double startWidth, double endWidth) {
    insertVertex(vertices.size(), p, bulge, startWidth, endWidth);
}

void PolylineEntity::insertVertex(std::size_t at, const Vector2& p, double bulge, double startWidth, double endWidth) {
    at = std::min(at, vertices.size());
    const bool atEnd = at == vertices.size();
    vertices.insert(vertices.begin() + static_cast<std::ptrdiff_t>(at), p);
    const auto insert = [&](std::vector<double>& list, double value) {
        if (at < list.size()) list.insert(list.begin() + static_cast<std::ptrdiff_t>(at), value);
    };
    insert(bulges, bulge);
    insert(startWidths, startWidth);
    insert(endWidths, endWidth);
    setBulge(at, bulge);
    setWidths(at, startWidth, endWidth);
    if (atEnd) return;
    for (PolylineRecord& record : records)
        if (record.vertex >= 0 && static_cast<std::size_t>(record.vertex) >= at) ++record.vertex;
}

void PolylineEntity::eraseVertex(std::size_t at) {
    if (at >= vertices.size()) return;
    vertices.erase(vertices.begin() + static_cast<std::ptrdiff_t>(at));
    for (std::vector<double>* list : {&bulges, &startWidths, &endWidths})
        if (at < list->size()) list->erase(list->begin() + static_cast<std::ptrdiff_t>(at));
    std::erase_if(records, [&](const PolylineRecord& r) { return r.vertex == static_cast<std::int64_t>(at); });
    for (PolylineRecord& record : records)
        if (record.vertex > static_cast<std::int64_t>(at)) --record.vertex;
}

void PolylineEntity::reverse() {
    const std::size_t n = vertices.size();
    if (n < 2) return;
    // Vertex i carries segment i; turned round, it carries what was the segment before it.
    const auto turn = [&](std::vector<double>& list, double sign) {
        list.resize(n, 0.0);
        std::reverse(list.begin(), list.end() - 1);
        for (double& value : list) value *= sign;
    };
    std::reverse(vertices.begin(), vertices.end());
    if (!bulges.empty()) turn(bulges, -1.0);
    if (!startWidths.empty() || !endWidths.empty()) {
        turn(startWidths, 1.0);
        turn(endWidths, 1.0);
        std::swap(startWidths, endWidths);
    }
    std::reverse(fit.begin(), fit.end());
    for (PolylineRecord& record : records) {
        record.vertex = static_cast<std::int32_t>(n) - 1 - record.vertex;
        if ((record.flags & PolylineRecord::kTangent) != 0)
            record.tangent = math::normalizeAngle(record.tangent + math::kPi);
    }
    std::reverse(records.begin(), records.end());
}

// Shape --------------------------------------------------------------------------------------------------

Path PolylineEntity::path() const {
    Path path;
    if (vertices.empty()) return path;
    path.reserve(vertices.size() + 2);
    path.moveTo(vertices[0]);
    const std::size_t segments = segmentCount();
    for (std::size_t i = 0; i < segments; ++i) {
        // A straight way back to the start is the closing line itself.
        const bool back = i + 1 == vertices.size();
        if (back && std::abs(bulge(i)) < math::kStraightBulge) break;
        path.bulgeTo(segmentEnd(i), bulge(i));
    }
    if (closed && segments > 0) path.close();
    if (segments == 0) path.lineTo(vertices[0]);
    return path;
}

double PolylineEntity::length() const {
    double sum = 0.0;
    for (std::size_t i = 0; i < segmentCount(); ++i) sum += math::bulgeLength(vertices[i], segmentEnd(i), bulge(i));
    return sum;
}

double PolylineEntity::area() const {
    if (vertices.size() < 2) return 0.0;
    if (closed || bulges.size() < vertices.size()) return std::abs(math::signedArea(vertices, bulges));
    // The last vertex of an open polyline carries no segment, whatever bulge it holds.
    return std::abs(math::signedArea(vertices, std::span(bulges).first(vertices.size() - 1)));
}

Bounds2 PolylineEntity::bounds() const {
    if (!inWorldPlane(*this) || hasWidths()) return outlineBounds(*this);
    Bounds2 box;
    for (const Vector2& p : vertices) box.expand(p);
    if (bulges.empty()) return box;
    Path arc;
    for (std::size_t i = 0; i < segmentCount(); ++i) {
        if (bulge(i) == 0.0) continue;
        // Most arcs lie within what the vertices span already: they stay within their height of the chord.
        const Vector2& a = vertices[i];
        const double height = std::abs(bulge(i)) * 0.5 * a.distance_to(segmentEnd(i));
        Bounds2 around{a, a};
        around.expand(segmentEnd(i));
        if (box.contains_box(around.inflated(height))) continue;
        arc.clear();
        arc.moveTo(vertices[i]).bulgeTo(segmentEnd(i), bulge(i));
        box.expand(pathBounds(arc));
    }
    return box;
}

void PolylineEntity::transform(const math::Matrix4& m) {
    const math::Matrix4 plane = transformObjectPlane(*this, m);
    const double det = plane.plane_determinant();
    if (hasBulges()) {
        const bool uniform = math::planeParts(plane).uniform;
        for (std::size_t i = 0; i < bulges.size(); ++i) {
            if (uniform || i >= vertices.size()) {
                if (det < 0.0) bulges[i] = -bulges[i];
                continue;
            }
            // An arc cannot hold its image: keep the three points at its ends and its middle.
            const Vector2& a = vertices[i];
            const Vector2& b = segmentEnd(i);
            bulges[i] = math::bulgeThrough(plane.transform_point(a),
                                           plane.transform_point(math::bulgeMidPoint(a, b, bulges[i])),
                                           plane.transform_point(b));
        }
    }
    for (Vector2& p : vertices) p = plane.transform_point(p);
    for (Vector2& p : fit) p = plane.transform_point(p);
    const double scale = std::sqrt(std::abs(det));
    for (double& w : startWidths) w *= scale;
    for (double& w : endWidths) w *= scale;
    for (PolylineRecord& record : records)
        if ((record.flags & PolylineRecord::kTangent) != 0)
            record.tangent = math::normalizeAngle(plane.transform_direction(math::unitAt(record.tangent)).angle());
}

double PolylineEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }

Vector2 PolylineEntity::nearestPoint(const Vector2& p) const {
    if (!inWorldPlane(*this)) {
        Path plan;
        transformPath(path(), objectPlane(*this), plan);
        return nearestOnPath(plan, p);
    }
    if (vertices.empty()) return p;
    // Without a path in between: picking asks this of every polyline near the cursor.
    Vector2 best = vertices[0];
    double bestSquared = (best - p).length_squared();
    const auto offer = [&](const Vector2& q) {
        const double squared = (q - p).length_squared();
        if (!(squared < bestSquared) && !std::isnan(bestSquared)) return;
        best = q;
        bestSquared = squared;
    };
    const std::size_t segments = segmentCount();
    for (std::size_t i = 0; i < segments; ++i) {
        const Vector2& a = vertices[i];
        const Vector2& b = segmentEnd(i);
        const Vector2 onChord = math::closestOnSegment(p, a, b);
        const double height = bulge(i);
        if (height == 0.0) {
            offer(onChord);
            continue;
        }
        // The arc stays within its height of the chord.
        const double reach = std::sqrt(bestSquared) + std::abs(height) * 0.5 * a.distance_to(b);
        if ((onChord - p).length_squared() > reach * reach) continue;
        const auto arc = math::arcFromBulge(a, b, height);
        if (!arc)
            offer(onChord);
        else
            offer(arc->sweep > 0.0 ? math::closestOnArc(p, arc->center, arc->radius, arc->start, arc->end())
                                   : math::closestOnArc(p, arc->center, arc->radius, arc->end(), arc->start));
    }
    return best;
}

std::vector<Vector2> PolylineEntity::gripPoints() const {
    std::vector<Vector2> grips = vertices;
    if (inWorldPlane(*this)) return grips;
    const math::Matrix4 plane = objectPlane(*this);
    for (Vector2& p : grips) p = plane.transform_point(p);
    return grips;
}

void PolylineEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (index >= vertices.size()) return;
    if (const auto p = objectFromPlan(*this, to)) vertices[index] = *p;
}

void PolylineEntity::describe(FieldVisitor& v) {
    v.boolean("closed", closed);
    v.boolean("ltgen", ltgen, false);
    v.boolean("spline", spline, false);
    v.integer("curveType", curveType, 0);
    v.objects("records", records, true);
    v.points("fit", fit, true);
    v.points("vertices", vertices);
    describeParallel(v, "bulges", bulges, vertices.size());
    describeParallel(v, "startWidths", startWidths, vertices.size());
    describeParallel(v, "endWidths", endWidths, vertices.size());
}

void PolylineEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    const bool wide = hasWidths();
    emitFromObjectPlane(*this, sink, [&](OutlineSink& plane) {
        StrokeOptions options;
        options.patternThroughVertices = ltgen;
        std::vector<Vector2> widths;
        const auto stroke = [&](const Path& part, std::size_t first, std::size_t last) {
            if (wide) {
                widths.clear();
                for (std::size_t i = first; i < last; ++i) widths.push_back({startWidth(i), endWidth(i)});
                // Behind an arc back to the start comes a closing line without length.
                if (part.view().size() > widths.size() + 1 && !widths.empty())
                    widths.push_back({widths.back().y, widths.back().y});
                options.widths = widths;
            }
            plane.stroke(part, style, options);
        };
        if (spline && fit.size() > 1 && FrameLines::emitted(FrameKind::Control)) {
            Path control;
            control.moveTo(fit.front());
            for (std::size_t i = 1; i < fit.size(); ++i) control.lineTo(fit[i]);
            if (closed) control.close();
            plane.stroke(control, style);
        }
        const std::size_t segments = segmentCount();
        if (segments <= kMostInOnePath) {
            stroke(path(), 0, segments);
            return;
        }
        Path part;
        for (std::size_t first = 0; first < segments; first += kMostInOnePath) {
            const std::size_t last = std::min(first + kMostInOnePath, segments);
            part.clear();
            part.moveTo(vertices[first]);
            for (std::size_t i = first; i < last; ++i) part.bulgeTo(segmentEnd(i), bulge(i));
            stroke(part, first, last);
        }
    });
}

std::size_t PolylineEntity::sizeInBytes() const {
    return sizeof *this + extrasSize() + (vertices.capacity() + fit.capacity()) * sizeof(Vector2) +
           (bulges.capacity() + startWidths.capacity() + endWidths.capacity()) * sizeof(double) +
           records.capacity() * sizeof(PolylineRecord);
}

}  // namespace kova::engine
