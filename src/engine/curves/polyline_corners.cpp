#include <cmath>

#include "engine/curves/corner.hpp"
#include "math/curves/intersect.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

/// Moves one end of a segment along its line or arc: to parameter t of it, as its end or its start.
void stretchSegment(PolylineEntity& polyline, std::size_t segment, double t, bool atEnd) {
    const Vector2 a = polyline.vertices[segment];
    const Vector2 b = polyline.segmentEnd(segment);
    const double bulge = polyline.bulge(segment);
    const auto arc = math::arcFromBulge(a, b, bulge);
    const Vector2 p = arc ? arc->pointAt(arc->start + arc->sweep * t) : a + (b - a) * t;
    polyline.vertices[atEnd ? (segment + 1) % polyline.vertices.size() : segment] = p;
    if (arc) polyline.setBulge(segment, std::tan(std::atan(bulge) * (atEnd ? t : 1.0 - t)));
}

/// A vertex with the segment that leaves it; `arc`: it stands for an arc between two lines, where these meet.
struct Node {
    Vector2 point;
    double bulge = 0.0;
    double startWidth = 0.0;
    double endWidth = 0.0;
    bool arc = false;
    Vector2 arcFrom;
    Vector2 arcTo;
    double arcBulge = 0.0;
    double arcStartWidth = 0.0;
    double arcEndWidth = 0.0;
};

/// The polyline's vertices, arcs that round the corner of two lines (`sharpen`) taken back to it.
std::vector<Node> nodesOf(const PolylineEntity& source, bool sharpen) {
    const std::size_t n = source.vertices.size();
    const std::size_t segments = source.segmentCount();
    // Where the lines before and behind an arc meet, if they come together towards it.
    const auto corner = [&](std::size_t i) -> std::optional<Vector2> {
        if (!sharpen || i >= segments || source.bulge(i) == 0.0 || segments < 3) return std::nullopt;
        if (!source.closed && (i == 0 || i + 1 >= segments)) return std::nullopt;
        const std::size_t before = (i + n - 1) % n;
        const std::size_t behind = (i + 1) % n;
        if (source.bulge(before) != 0.0 || source.bulge(behind) != 0.0) return std::nullopt;
        const auto at = math::lineParameters(source.vertices[before], source.vertices[i], source.vertices[behind],
                                             source.segmentEnd(behind));
        if (!at || at->s < 1.0 - 1e-9 || at->t > 1e-9) return std::nullopt;
        return source.vertices[before] + (source.vertices[i] - source.vertices[before]) * at->s;
    };
    std::vector<Node> out;
    out.reserve(n);
    bool skipFirst = false;
    for (std::size_t i = 0; i < n; ++i) {
        Node node{source.vertices[i], source.bulge(i), source.startWidth(i), source.endWidth(i)};
        if (const auto p = corner(i)) {
            const std::size_t next = (i + 1) % n;
            node.arc = true;
            node.arcFrom = node.point;
            node.arcTo = source.vertices[next];
            node.arcBulge = node.bulge;
            node.arcStartWidth = node.startWidth;
            node.arcEndWidth = node.endWidth;
            node.point = *p;
            node.bulge = source.bulge(next);
            node.startWidth = source.startWidth(next);
            node.endWidth = source.endWidth(next);
            if (next == 0)
                skipFirst = true;
            else
                ++i;
        }
        out.push_back(node);
    }
    if (skipFirst) out.erase(out.begin());
    return out;
}

/// What is taken from both ends of the segments at a corner.
struct Cut {
    double in = 0.0;
    double away = 0.0;
    double bulge = 0.0;
    bool any() const { return in + away > 0.0; }
};

Cut cutOf(const CornerMeasure& measure, double turn) {
    Cut cut{measure.first, measure.second};
    if (measure.round) {
        cut.in = cut.away = measure.radius * std::tan(std::abs(turn) / 2.0);
        cut.bulge = std::tan(turn / 4.0);
    } else if (measure.angle) {
        // The bevel, the two lines and the angles between them: the law of sines.
        const double rest = std::abs(turn) - *measure.angle;
        cut.away = rest > 1e-9 ? measure.first * std::sin(*measure.angle) / std::sin(rest)
                               : std::numeric_limits<double>::infinity();
    }
    return cut;
}

}  // namespace

std::unique_ptr<Entity> cornerInPolyline(const EditCurve& curve, const Corner& corner) {
    if (curve.entity().type() != EntityType::Polyline || corner.first.keepsStart == corner.second.keepsStart)
        return nullptr;
    const bool forward = corner.first.keepsStart;
    const CornerCut& in = forward ? corner.first : corner.second;
    const CornerCut& out = forward ? corner.second : corner.first;
    const double bulge = forward ? corner.bulge : -corner.bulge;
    double before = in.u;
    double behind = out.u;
    const bool closing = !curve.closed() && in.piece > out.piece;
    const std::unique_ptr<Entity> copy = curve.entity().clone();
    auto& source = static_cast<PolylineEntity&>(*copy);
    if (!closing) {
        // Over a segment that goes both neighbours may grow.
        const double t = before - static_cast<double>(in.piece);
        if (t > 1.0) {
            stretchSegment(source, in.piece, t, true);
            before = static_cast<double>(in.piece) + 1.0;
        }
        const double s = behind - static_cast<double>(out.piece);
        if (s < 0.0) {
            stretchSegment(source, out.piece, s, false);
            behind = static_cast<double>(out.piece);
        }
    }
    const auto stretched = EditCurve::of(source);
    if (!stretched) return nullptr;
    std::unique_ptr<Entity> made;
    if (curve.closed() || closing) {
        made = stretched->part(behind, before);
        if (!made) return nullptr;
        static_cast<PolylineEntity&>(*made).closed = true;
    } else {
        if (!(before <= behind)) return nullptr;
        made = stretched->part(0.0, before);
    }
    if (!made) return nullptr;
    auto& polyline = static_cast<PolylineEntity&>(*made);
    if (corner.sharp)
        polyline.eraseVertex(polyline.vertices.size() - 1);
    else
        polyline.setBulge(polyline.vertices.size() - 1, bulge);
    if (polyline.closed) return made;
    const std::unique_ptr<Entity> rest = stretched->part(behind, stretched->end());
    if (!rest) return nullptr;
    const auto& tail = static_cast<const PolylineEntity&>(*rest);
    for (std::size_t i = 0; i < tail.vertices.size(); ++i)
        polyline.addVertex(tail.vertices[i], tail.bulge(i), tail.startWidth(i), tail.endWidth(i));
    return made;
}

PolylineCorners cutPolylineCorners(const PolylineEntity& source, const CornerMeasure& measure) {
    PolylineCorners result;
    result.polyline = std::make_unique<PolylineEntity>();
    PolylineEntity& out = *result.polyline;
    out.copyCommonFrom(source);
    out.ltgen = source.ltgen;
    out.closed = source.closed;
    const std::vector<Node> nodes = nodesOf(source, measure.round);
    const std::size_t n = nodes.size();
    const std::size_t segments = source.closed ? n : n - std::min<std::size_t>(n, 1);
    std::vector<Cut> cuts(n);
    std::vector<bool> done(n, false);
    std::vector<double> taken(segments, 0.0);
    const auto previous = [&](std::size_t i) { return (i + n - 1) % n; };
    const auto next = [&](std::size_t i) { return (i + 1) % n; };
    // Arcs that stay where their corner has no room for another one take their share from the start.
    const auto keepArc = [&](std::size_t i, double sign) {
        taken[previous(i)] += sign * nodes[i].point.distance_to(nodes[i].arcFrom);
        taken[i] += sign * nodes[i].point.distance_to(nodes[i].arcTo);
    };
    for (std::size_t i = 0; i < n; ++i)
        if (nodes[i].arc) keepArc(i, 1.0);
    for (std::size_t i = 0; i < n && segments > 1; ++i) {
        if (!source.closed && (i == 0 || i + 1 >= n)) continue;
        const std::size_t before = previous(i);
        if (nodes[before].bulge != 0.0 || nodes[i].bulge != 0.0) continue;
        const Vector2 in = nodes[i].point - nodes[before].point;
        const Vector2 away = nodes[next(i)].point - nodes[i].point;
        const double turn = std::atan2(in.cross(away), in.dot(away));
        if (!(std::abs(turn) > 1e-9) || !(math::kPi - std::abs(turn) > 1e-9)) {
            ++result.parallel;
            continue;
        }
        const Cut cut = cutOf(measure, turn);
        if (nodes[i].arc) keepArc(i, -1.0);
        const auto room = [&](std::size_t segment, double length) { return length * (1.0 + 1e-12) - taken[segment]; };
        if (!(cut.in <= room(before, in.length())) || !(cut.away <= room(i, away.length()))) {
            ++result.tooShort;
            if (nodes[i].arc) keepArc(i, 1.0);
            continue;
        }
        taken[before] += cut.in;
        taken[i] += cut.away;
        cuts[i] = cut;
        done[i] = true;
        ++result.cut;
    }
    for (std::size_t i = 0; i < n; ++i) {
        const Node& node = nodes[i];
        if (node.arc && !done[i]) {
            out.addVertex(node.arcFrom, node.arcBulge, node.arcStartWidth, node.arcEndWidth);
            out.addVertex(node.arcTo, node.bulge, node.startWidth, node.endWidth);
        } else if (!cuts[i].any()) {
            out.addVertex(node.point, node.bulge, node.startWidth, node.endWidth);
        } else {
            const Vector2 a = node.point + (nodes[previous(i)].point - node.point).normalized() * cuts[i].in;
            const Vector2 b = node.point + (nodes[next(i)].point - node.point).normalized() * cuts[i].away;
            out.addVertex(a, cuts[i].bulge, node.startWidth, node.startWidth);
            out.addVertex(b, 0.0, node.startWidth, node.endWidth);
        }
    }
    return result;
}

}  // namespace kova::engine
