#include "engine/entities/hatch.hpp"
#include "engine/entities/spline.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

using math::Vector2;
using Kind = PathElement::Kind;

namespace {

/// Ends of edges that are nearer than this part of the boundary's size belong together.
constexpr double kJoinTolerance = 1e-5;
/// So many ends near each other are looked through for the one that continues an edge.
constexpr std::ptrdiff_t kMaxCandidates = 64;

Path edgePath(const HatchLineEdge& e) { return Path().moveTo(e.start).lineTo(e.end); }

Path edgePath(const HatchArcEdge& e) { return Path().arc(e.center, e.radius, e.startAngle, e.endAngle); }

Path edgePath(const HatchEllipseEdge& e) { return Path().ellipticArc(e.center, e.u, e.v, e.t0, e.t1); }

Path edgePath(const HatchSplineEdge& e) {
    SplineEntity spline;
    spline.degree = e.degree;
    spline.controlPoints = e.control;
    spline.knots = e.knots;
    spline.weights = e.weights;
    spline.fitPoints = e.fit;
    return spline.path();
}

/// One edge as a path of a single open figure.
struct Piece {
    Path path;
    Vector2 start;
    Vector2 end;
    bool used = false;
};

void appendReversed(Path& out, PathView piece) {
    std::vector<PathElement> back;
    back.reserve(piece.size());
    for (std::size_t i = piece.size(); i-- > 1;) {
        PathElement e = piece[i];
        e.p = piece[i - 1].p;
        if (e.kind == Kind::Cubic) std::swap(e.a, e.b);
        if (e.kind == Kind::Arc) std::swap(e.t0, e.t1);
        back.push_back(e);
    }
    out.append(back);
}

/// The elements of a piece without the Move that it begins with.
PathView continuation(const Path& path) { return path.view().subspan(1); }

/// Finds unused pieces by their ends: all ends in order of x.
class EndIndex {
public:
    EndIndex(const std::vector<Piece>& pieces, double tolerance) : pieces_(pieces), tolerance_(tolerance) {
        ends_.reserve(pieces.size() * 2);
        for (std::size_t i = 0; i < pieces.size(); ++i) {
            ends_.push_back({pieces[i].start, i, false});
            ends_.push_back({pieces[i].end, i, true});
        }
        std::sort(ends_.begin(), ends_.end(), [](const End& a, const End& b) { return a.at.x < b.at.x; });
    }

    struct End {
        Vector2 at;
        std::size_t piece;
        bool isEnd;
    };
    /// The unused piece with an end nearest to p within the tolerance.
    const End* find(const Vector2& p) const {
        const auto first = std::lower_bound(ends_.begin(), ends_.end(), p.x - tolerance_,
                                            [](const End& e, double x) { return e.at.x < x; });
        const End* best = nullptr;
        double bestDistance = tolerance_;
        for (auto it = first; it != ends_.end() && it->at.x <= p.x + tolerance_ && it - first < kMaxCandidates; ++it) {
            if (pieces_[it->piece].used) continue;
            const double distance = it->at.distance_to(p);
            if (distance > bestDistance) continue;
            best = &*it;
            bestDistance = distance;
        }
        return best;
    }

private:
    const std::vector<Piece>& pieces_;
    double tolerance_;
    std::vector<End> ends_;
};

/// Joins edges to closed figures. They are taken in the order they stand in as long as that is a chain; else the edge
/// that continues where the last one ended is looked for, either way round.
Path chainEdges(const std::vector<HatchEdge>& edges) {
    std::vector<Piece> pieces;
    pieces.reserve(edges.size());
    math::Bounds2 box;
    for (const HatchEdge& edge : edges) {
        Piece piece;
        piece.path = std::visit([](const auto& e) { return edgePath(e); }, edge);
        if (piece.path.view().size() < 2) continue;
        piece.start = piece.path.view().front().p;
        piece.end = piece.path.current();
        if (!piece.start.is_finite() || !piece.end.is_finite()) continue;
        box.expand(pathBounds(piece.path));
        pieces.push_back(std::move(piece));
    }
    Path out;
    if (pieces.empty()) return out;
    const double tolerance = std::max(kJoinTolerance * std::max(box.width(), box.height()), math::kTolerance);
    std::optional<EndIndex> index;  // made when the order is found to be broken
    std::size_t next = 0;
    while (true) {
        while (next < pieces.size() && pieces[next].used) ++next;
        if (next == pieces.size()) break;
        Piece& first = pieces[next];
        first.used = true;
        Path figure = first.path;
        Vector2 at = first.end;
        // The first edge may stand the wrong way round for what follows.
        if (next + 1 < pieces.size() && !pieces[next + 1].used) {
            const Piece& second = pieces[next + 1];
            const auto meets = [&](const Vector2& p) {
                return p.distance_to(second.start) <= tolerance || p.distance_to(second.end) <= tolerance;
            };
            if (!meets(first.end) && meets(first.start)) {
                figure.clear();
                figure.moveTo(first.end);
                appendReversed(figure, first.path);
                at = first.start;
            }
        }
        const Vector2 closesAt = at == first.end ? first.start : first.end;
        std::size_t last = next;
        while (at.distance_to(closesAt) > tolerance) {
            std::size_t follow = last + 1;
            bool reversed = false;
            const bool inOrder = follow < pieces.size() && !pieces[follow].used;
            if (inOrder && pieces[follow].start.distance_to(at) <= tolerance) {
                // the usual case
            } else if (inOrder && pieces[follow].end.distance_to(at) <= tolerance) {
                reversed = true;
            } else {
                if (!index) index.emplace(pieces, tolerance);
                const EndIndex::End* end = index->find(at);
                if (end != nullptr) {
                    follow = end->piece;
                    reversed = end->isEnd;
                } else {
                    // A gap: straight to the nearer end of the next edge, or back to the start when that is nearer.
                    if (!inOrder) break;
                    const double toStart = pieces[follow].start.distance_to(at);
                    const double toEnd = pieces[follow].end.distance_to(at);
                    if (at.distance_to(closesAt) <= std::min(toStart, toEnd)) break;
                    reversed = toEnd < toStart;
                    figure.lineTo(reversed ? pieces[follow].end : pieces[follow].start);
                }
            }
            Piece& piece = pieces[follow];
            piece.used = true;
            if (reversed)
                appendReversed(figure, piece.path);
            else
                figure.append(continuation(piece.path));
            at = reversed ? piece.start : piece.end;
            last = follow;
        }
        figure.close();
        out.append(figure);
    }
    return out;
}

/// What a segment of the file holds: a line or an arc itself; for ellipses and splines only that the next one of
/// their own lists comes here.
struct SegmentRecord {
    enum Shape : std::int32_t { kLine = 1, kArc = 2, kEllipse = 3, kSpline = 4 };
    std::int32_t edge = kLine;
    HatchLineEdge line;
    HatchArcEdge arc;

    void describe(FieldVisitor& v) {
        v.integer("edge", edge);
        if (edge == kLine) {
            v.point("start", line.start);
            v.point("end", line.end);
        } else if (edge == kArc) {
            v.point("center", arc.center);
            v.length("radius", arc.radius);
            v.angle("startAngle", arc.startAngle);
            v.angle("endAngle", arc.endAngle);
        }
    }
};

}  // namespace

void HatchEllipseEdge::describe(FieldVisitor& v) {
    v.length("cx", center.x);
    v.length("cy", center.y);
    v.length("ux", u.x);
    v.length("uy", u.y);
    v.length("vx", this->v.x);
    v.length("vy", this->v.y);
    v.angle("t0", t0);
    v.angle("t1", t1);
}

void HatchSplineEdge::describe(FieldVisitor& v) {
    v.integer("degree", degree);
    v.numbers("knots", knots);
    v.points("control", control);
    v.numbers("weights", weights, true);
    v.boolean("periodic", periodic);
    v.points("fit", fit, true);
    v.optionalPointObject("startTangent", startTangent);
    v.optionalPointObject("endTangent", endTangent);
}

void HatchLoop::describe(FieldVisitor& v) {
    v.integer("type", type);
    v.boolean("inner", inner);
    v.handles("sources", sources, true);
    std::vector<SegmentRecord> segments;
    std::vector<HatchEllipseEdge> ellipses;
    std::vector<HatchSplineEdge> splines;
    if (!v.reading()) {
        if (isPolyline()) {
            v.points("vertices", vertices);
            v.numbers("bulges", bulges, true);
            return;
        }
        for (const HatchEdge& edge : edges) {
            SegmentRecord record;
            if (const auto* line = std::get_if<HatchLineEdge>(&edge)) {
                record.line = *line;
            } else if (const auto* arc = std::get_if<HatchArcEdge>(&edge)) {
                record.edge = SegmentRecord::kArc;
                record.arc = *arc;
            } else if (const auto* ellipse = std::get_if<HatchEllipseEdge>(&edge)) {
                record.edge = SegmentRecord::kEllipse;
                ellipses.push_back(*ellipse);
            } else {
                record.edge = SegmentRecord::kSpline;
                splines.push_back(std::get<HatchSplineEdge>(edge));
            }
            segments.push_back(record);
        }
        v.objects("segment", segments);
        v.objects("ellipses", ellipses, true);
        v.objects("splines", splines, true);
        return;
    }
    v.points("vertices", vertices);
    v.numbers("bulges", bulges);
    v.objects("segment", segments);
    v.objects("ellipses", ellipses);
    v.objects("splines", splines);
    edges.clear();
    std::size_t ellipse = 0;
    std::size_t spline = 0;
    for (const SegmentRecord& record : segments) {
        if (record.edge == SegmentRecord::kArc) {
            edges.emplace_back(record.arc);
        } else if (record.edge == SegmentRecord::kEllipse) {
            if (ellipse < ellipses.size()) edges.emplace_back(ellipses[ellipse++]);
        } else if (record.edge == SegmentRecord::kSpline) {
            if (spline < splines.size()) edges.emplace_back(std::move(splines[spline++]));
        } else if (record.edge == SegmentRecord::kLine) {
            edges.emplace_back(record.line);
        }
    }
    // Lists without places of their own come last; the ends tell how they join.
    while (ellipse < ellipses.size()) edges.emplace_back(ellipses[ellipse++]);
    while (spline < splines.size()) edges.emplace_back(std::move(splines[spline++]));
}

Path HatchLoop::path() const {
    if (!isPolyline()) return chainEdges(edges);
    Path path;
    if (vertices.size() < 2) return path;
    path.reserve(vertices.size() + 2);
    path.moveTo(vertices[0]);
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        const double bulge = i < bulges.size() ? bulges[i] : 0.0;
        const bool back = i + 1 == vertices.size();
        // A straight way back to the start is the closing line itself.
        if (back && std::abs(bulge) < math::kStraightBulge) break;
        path.bulgeTo(back ? vertices[0] : vertices[i + 1], bulge);
    }
    path.close();
    return path;
}

}  // namespace kova::engine
