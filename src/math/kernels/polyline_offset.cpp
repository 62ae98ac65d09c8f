#include "math/kernels/polyline_offset.hpp"

#include <algorithm>
#include <cmath>
#include <optional>
#include <unordered_map>

#include "math/angles.hpp"
#include "math/curves/box_tree.hpp"
#include "math/curves/curves.hpp"
#include "math/curves/intersect.hpp"
#include "math/curves/polygon.hpp"

namespace kova::math {

namespace {

/// Sides extended over a corner by more than this many distances may run into others: such a corner is looked at.
constexpr double kHarmlessMiter = 0.5;
/// A corner whose extended sides meet farther away than this many distances is rounded.
constexpr double kLongestMiter = 1000.0;

struct OffsetPiece {
    Vector2 a;
    Vector2 b;
    bool isArc = false;
    bool collapsed = false;  ///< an arc that the distance leaves no radius: a line stands in, to be dropped later
    CircularArc arc;
    std::size_t source = 0;
    double share = 1.0;  ///< part of the distance that it keeps by its nature: less than 1 for a bevel

    Vector2 pointAt(double t) const {
        if (t <= 0.0) return a;
        if (t >= 1.0) return b;
        return isArc ? arc.pointAt(arc.start + arc.sweep * t) : a.lerp(b, t);
    }
    Vector2 direction(double t) const {
        if (!isArc) return (b - a).normalized();
        const Vector2 radial = unitAt(arc.start + arc.sweep * t);
        return arc.sweep > 0.0 ? radial.perpendicular() : -radial.perpendicular();
    }
    double length() const { return isArc ? arc.length() : a.distance_to(b); }
    double bulge(double t0, double t1) const { return isArc ? bulgeFromSweep(arc.sweep * (t1 - t0)) : 0.0; }
    double parameter(const Vector2& p) const {
        if (!isArc) return closestParameterOnSegment(p, a, b);
        const double turn = (p - arc.center).angle() - arc.start;
        const double run = normalizeAngle(arc.sweep > 0.0 ? turn : -turn);
        const double sweep = std::abs(arc.sweep);
        if (run <= sweep) return run / sweep;
        return run - sweep < kTwoPi - run ? 1.0 : 0.0;  // just beyond an end
    }
    double distance(const Vector2& p) const {
        if (!isArc) return closestOnSegment(p, a, b).distance_to(p);
        const double t = parameter(p);
        return pointAt(t).distance_to(p);
    }
    Bounds2 bounds() const {
        Bounds2 box;
        if (isArc) box = boundsOf(EllipticArc{arc.center, {arc.radius, 0.0}, {0.0, arc.radius}, arc.start, arc.end()});
        box.expand(a);
        box.expand(b);
        return box;
    }
};

OffsetPiece linePiece(const Vector2& a, const Vector2& b, std::size_t source) {
    OffsetPiece piece;
    piece.a = a;
    piece.b = b;
    piece.source = source;
    return piece;
}

OffsetPiece arcPiece(const CircularArc& arc, const Vector2& a, const Vector2& b, std::size_t source) {
    OffsetPiece piece = linePiece(a, b, source);
    piece.isArc = true;
    piece.arc = arc;
    return piece;
}

/// Cuts a piece down to the part from t0 to t1.
OffsetPiece part(const OffsetPiece& piece, double t0, double t1) {
    OffsetPiece out = piece;
    out.a = piece.pointAt(t0);
    out.b = piece.pointAt(t1);
    if (piece.isArc) {
        out.arc.start = piece.arc.start + piece.arc.sweep * t0;
        out.arc.sweep = piece.arc.sweep * (t1 - t0);
    }
    return out;
}

/// Where two pieces meet; the ends of a stretch that they share.
void meet(const OffsetPiece& p, const OffsetPiece& q, double eps, std::vector<Vector2>& out) {
    const auto take = [&](const Hits& hits) {
        for (const Vector2& hit : hits) out.push_back(hit);
    };
    if (p.isArc && q.isArc) return take(arcArc(p.arc, q.arc, eps));
    if (p.isArc) return take(segmentArc(q.a, q.b, p.arc, eps));
    if (q.isArc) return take(segmentArc(p.a, p.b, q.arc, eps));
    if (const auto hit = segmentSegment(p.a, p.b, q.a, q.b, eps)) {
        out.push_back(*hit);
        return;
    }
    if (lineParameters(p.a, p.b, q.a, q.b)) return;
    for (const Vector2& end : {p.a, p.b})
        if (q.distance(end) <= eps) out.push_back(end);
    for (const Vector2& end : {q.a, q.b})
        if (p.distance(end) <= eps) out.push_back(end);
}

std::vector<OffsetPiece> sourcePieces(std::span<const Vector2> points, std::span<const double> bulges, bool closed,
                                const Vector2& origin, double eps) {
    std::vector<OffsetPiece> out;
    const std::size_t n = points.size();
    if (n < 2) return out;
    const std::size_t segments = closed ? n : n - 1;
    out.reserve(segments);
    Vector2 at = points[0] - origin;
    for (std::size_t i = 0; i < segments; ++i) {
        const Vector2 to = points[i + 1 < n ? i + 1 : 0] - origin;
        if (at.distance_to(to) <= eps) continue;
        const auto arc = arcFromBulge(at, to, i < bulges.size() ? bulges[i] : 0.0);
        out.push_back(arc ? arcPiece(*arc, at, to, i) : linePiece(at, to, i));
        at = to;
    }
    if (out.size() > 1 || (!out.empty() && out.front().isArc)) return out;
    if (closed && out.size() == 1) out.clear();
    return out;
}

constexpr std::size_t kNoPiece = static_cast<std::size_t>(-1);

/// The parallel of each piece, joined at the corners; parts of it may come too near to the source.
class RawOffset {
public:
    RawOffset(const std::vector<OffsetPiece>& source, const BoxTree& tree, bool closed, double distance, OffsetGap gap,
              double eps)
        : source_(source), tree_(tree), closed_(closed), d_(distance), gap_(gap), eps_(eps) {
        shift();
        join();
    }
    std::vector<OffsetPiece> pieces;

private:
    void shift() {
        for (const OffsetPiece& s : source_) {
            OffsetPiece p = s;
            p.a = s.a + s.direction(0.0).perpendicular() * d_;
            p.b = s.b + s.direction(1.0).perpendicular() * d_;
            if (s.isArc) {
                p.arc.radius = s.arc.radius - (s.arc.sweep > 0.0 ? d_ : -d_);
                if (!(p.arc.radius > eps_)) {
                    p.isArc = false;
                    p.collapsed = true;
                }
            }
            shifted_.push_back(p);
        }
    }

    void join() {
        const std::size_t n = shifted_.size();
        std::vector<std::vector<OffsetPiece>> fillers(n);
        const std::size_t count = closed_ ? n : n - 1;
        for (std::size_t i = 0; i < count; ++i) corner(i, (i + 1) % n, fillers[i]);
        for (std::size_t i = 0; i < n; ++i) {
            const OffsetPiece& p = shifted_[i];
            if (p.isArc ? p.arc.length() > 0.0 : p.a != p.b) pieces.push_back(p);
            pieces.insert(pieces.end(), fillers[i].begin(), fillers[i].end());
        }
    }

    void corner(std::size_t i, std::size_t j, std::vector<OffsetPiece>& filler) {
        OffsetPiece& p = shifted_[i];
        OffsetPiece& q = shifted_[j];
        if (p.b.distance_to(q.a) <= eps_) {
            q.a = p.b;
            return;
        }
        const Vector2 in = source_[i].direction(1.0);
        const Vector2 out = source_[j].direction(0.0);
        double turn = std::atan2(in.cross(out), in.dot(out));
        if (std::abs(std::abs(turn) - kPi) < 1e-9) turn = d_ > 0.0 ? -kPi : kPi;  // straight back: outer on both sides
        if (turn * d_ > 0.0 || p.collapsed || q.collapsed) {
            if (!p.collapsed && !q.collapsed && trim(p, q)) return;
            filler.push_back(linePiece(p.b, q.a, p.source));
            return;
        }
        if (gap_ == OffsetGap::Extended) {
            const double half = std::abs(turn) / 2.0;
            const double along = std::abs(d_) * std::tan(half);
            const Vector2 tip = p.b + in * along;
            if (along <= kHarmlessMiter * std::abs(d_) ||
                (along <= kLongestMiter * std::abs(d_) && isOwnPlace(tip, p, q, i, j))) {
                if (p.isArc)
                    filler.push_back(linePiece(p.b, tip, p.source));
                else
                    p.b = tip;
                if (q.isArc)
                    filler.push_back(linePiece(tip, q.a, q.source));
                else
                    q.a = tip;
                return;
            }
        }
        if (gap_ == OffsetGap::Bevelled) {
            filler.push_back(linePiece(p.b, q.a, p.source));
            filler.back().share = std::cos(turn / 2.0);
            return;
        }
        const Vector2& center = source_[i].b;
        const CircularArc arc{center, std::abs(d_), (p.b - center).angle(), turn};
        filler.push_back(arcPiece(arc, p.b, q.a, p.source));
    }

    /// True when the sides `p` and `q`, of source pieces i and j, may be extended over their corner to the tip: neither
    /// their ends nor the tip are in the reach of other parts of the source, where they would cross others' parallels
    /// at random. The next pieces on either side do not count where the tip lies over them: their parallels are met
    /// for sure (a step lower than the distance).
    bool isOwnPlace(const Vector2& tip, const OffsetPiece& p, const OffsetPiece& q, std::size_t i, std::size_t j) const {
        const std::size_t n = source_.size();
        std::size_t before = i > 0 ? i - 1 : closed_ ? n - 1 : kNoPiece;
        std::size_t after = j + 1 < n ? j + 1 : closed_ ? 0 : kNoPiece;
        if (before == j || !isOver(before, p.a, tip)) before = kNoPiece;
        if (after == i || !isOver(after, q.b, tip)) after = kNoPiece;
        const auto isFree = [&](const Vector2& at, double reach) {
            const double limit = reach * (1.0 - 1e-7) - 16.0 * eps_;
            const auto distance = [&](std::size_t k) {
                return k == before || k == after ? std::numeric_limits<double>::max() : source_[k].distance(at);
            };
            return tree_.least(at, limit, distance, limit) >= limit;
        };
        const Vector2& corner = source_[i].b;
        return isFree(p.b, std::abs(d_)) && isFree(q.a, std::abs(d_)) && isFree(tip, tip.distance_to(corner));
    }

    /// True when a straight side from `foot` to `tip` lies beside a straight source piece and leaves its reach.
    bool isOver(std::size_t piece, const Vector2& foot, const Vector2& tip) const {
        if (piece == kNoPiece || source_[piece].isArc) return false;
        const Vector2& a = source_[piece].a;
        const Vector2 way = source_[piece].b - a;
        const auto isBeside = [&](const Vector2& at) {
            const double along = (at - a).dot(way);
            return along >= 0.0 && along <= way.length_squared();
        };
        return isBeside(foot) && isBeside(tip) && source_[piece].distance(tip) >= std::abs(d_);
    }

    /// Shortens both pieces to where they meet.
    bool trim(OffsetPiece& p, OffsetPiece& q) {
        hits_.clear();
        meet(p, q, eps_, hits_);
        double best = 0.0;
        double other = 1.0;
        for (const Vector2& hit : hits_) {
            const double s = p.parameter(hit);
            const double t = q.parameter(hit);
            if (s <= best || t >= 1.0) continue;
            best = s;
            other = t;
        }
        if (!(best > 0.0)) return false;
        const Vector2 at = p.pointAt(best);
        p = part(p, 0.0, best);
        q = part(q, other, 1.0);
        p.b = q.a = at;  // one point for both, to the last bit
        return true;
    }

    const std::vector<OffsetPiece>& source_;
    const BoxTree& tree_;
    bool closed_;
    double d_;
    OffsetGap gap_;
    double eps_;
    std::vector<OffsetPiece> shifted_;
    std::vector<Vector2> hits_;
};

std::vector<Bounds2> boxesOf(const std::vector<OffsetPiece>& pieces) {
    std::vector<Bounds2> boxes;
    boxes.reserve(pieces.size());
    for (const OffsetPiece& p : pieces) boxes.push_back(p.bounds());
    return boxes;
}

/// Points that lie within a tolerance of each other get one number.
class Nodes {
public:
    explicit Nodes(double eps) : cell_(4.0 * eps), eps_(eps) {}
    std::size_t number(const Vector2& p) {
        const auto x = static_cast<std::int64_t>(std::clamp(std::floor(p.x / cell_), -1e18, 1e18));
        const auto y = static_cast<std::int64_t>(std::clamp(std::floor(p.y / cell_), -1e18, 1e18));
        for (std::int64_t i = x - 1; i <= x + 1; ++i)
            for (std::int64_t j = y - 1; j <= y + 1; ++j) {
                const auto [from, to] = cells_.equal_range(key(i, j));
                for (auto it = from; it != to; ++it)
                    if (points_[it->second].distance_to(p) <= eps_) return it->second;
            }
        cells_.emplace(key(x, y), points_.size());
        points_.push_back(p);
        return points_.size() - 1;
    }
    const Vector2& point(std::size_t n) const { return points_[n]; }
    std::size_t size() const { return points_.size(); }

private:
    static std::uint64_t key(std::int64_t i, std::int64_t j) {
        return static_cast<std::uint64_t>(i) * 0x9E3779B97F4A7C15ULL ^ static_cast<std::uint64_t>(j);
    }
    double cell_;
    double eps_;
    std::vector<Vector2> points_;
    std::unordered_multimap<std::uint64_t, std::size_t> cells_;
};

struct Cut {
    std::size_t piece;
    double t;
    std::size_t node;
};

/// A stretch of the raw parallel between two cuts.
struct Slice {
    Cut from;
    Cut to;
    bool wraps = false;  ///< runs over the start of a closed parallel
    bool keep = false;
};

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

class Pruner {
public:
    Pruner(const std::vector<OffsetPiece>& source, bool closed, double distance, OffsetGap gap, double eps)
        : source_(source),
          closed_(closed),
          d_(distance),
          gap_(gap),
          eps_(eps),
          sourceTree_(boxesOf(source)),
          raw_(std::move(RawOffset(source, sourceTree_, closed, distance, gap, eps).pieces)),
          nodes_(64.0 * eps) {}

    std::vector<OffsetPolyline> run(const Vector2& origin) {
        if (raw_.empty()) return {};
        findDoubtful();
        findCuts();
        makeSlices();
        std::vector<OffsetPolyline> out;
        chain(out);
        for (OffsetPolyline& polyline : out)
            for (Vector2& p : polyline.points) p += origin;
        return out;
    }

private:
    bool neighbours(std::size_t i, std::size_t j) const {
        return j == i + 1 || (closed_ && i == 0 && j + 1 == raw_.size());
    }

    bool holds(std::size_t doubtful, const Vector2& p) const {
        const Doubtful& d = doubtful_[doubtful];
        const double t = raw_[d.piece].parameter(p);
        return t >= d.t0 - 1e-9 && t <= d.t1 + 1e-9;
    }

    void cut(std::size_t piece, const Vector2& p) {
        const double t = raw_[piece].parameter(p);
        if (p.is_finite() && std::isfinite(t)) cuts_.push_back({piece, t, nodes_.number(p)});
    }

    void findCuts() {
        std::vector<Vector2> hits;
        for (std::size_t k = 0; k < doubtful_.size(); ++k) {
            const std::size_t i = doubtful_[k].piece;
            rawTree_->query(rawTree_->box(k), [&](std::size_t other) {
                const std::size_t j = doubtful_[other].piece;
                if (j <= i) return true;
                hits.clear();
                meet(raw_[i], raw_[j], eps_, hits);
                for (const Vector2& hit : hits) {
                    // Each meeting is noted by the two stretches that hold it.
                    if (!holds(k, hit) || !holds(other, hit)) continue;
                    if (neighbours(i, j)) {
                        // The common corner is no crossing.
                        const Vector2& a = j == i + 1 ? raw_[i].b : raw_[i].a;
                        const Vector2& b = raw_.size() == 2 ? raw_[i].a : a;
                        if (a.distance_to(hit) <= 64.0 * eps_ || b.distance_to(hit) <= 64.0 * eps_) continue;
                    }
                    cut(i, hit);
                    cut(j, hit);
                }
                return true;
            });
        }
        if (closed_ && !crossesItself()) return;
        // Beyond an open end, or where the source crosses itself, the parallel may run into the reach of the other
        // side.
        const std::vector<OffsetPiece> dual = RawOffset(source_, sourceTree_, closed_, -d_, gap_, eps_).pieces;
        for (const OffsetPiece& other : dual) cutWith(other, hits);
        if (closed_) return;
        for (const Vector2& end : {source_.front().a, source_.back().b}) {
            const double r = std::abs(d_);
            cutWith(arcPiece({end, r, 0.0, kPi}, end + Vector2{r, 0}, end - Vector2{r, 0}, 0), hits);
            cutWith(arcPiece({end, r, kPi, kPi}, end - Vector2{r, 0}, end + Vector2{r, 0}, 0), hits);
        }
    }

    void cutWith(const OffsetPiece& other, std::vector<Vector2>& hits) {
        rawTree_->query(other.bounds(), [&](std::size_t k) {
            const std::size_t i = doubtful_[k].piece;
            hits.clear();
            meet(raw_[i], other, eps_, hits);
            for (const Vector2& hit : hits)
                if (holds(k, hit)) cut(i, hit);
            return true;
        });
    }

    bool crossesItself() const {
        const std::size_t n = source_.size();
        std::vector<Vector2> hits;
        bool crossing = false;
        for (std::size_t i = 0; i < n && !crossing; ++i)
            sourceTree_.query(sourceTree_.box(i), [&](std::size_t j) {
                if (j <= i || j == i + 1 || (i == 0 && j + 1 == n)) return true;
                hits.clear();
                meet(source_[i], source_[j], eps_, hits);
                crossing = !hits.empty();
                return !crossing;
            });
        return crossing;
    }

    void makeSlices() {
        std::sort(cuts_.begin(), cuts_.end(),
                  [](const Cut& a, const Cut& b) { return a.piece != b.piece ? a.piece < b.piece : a.t < b.t; });
        // Cuts of one place count once.
        const auto last = std::unique(cuts_.begin(), cuts_.end(), [](const Cut& a, const Cut& b) {
            return a.node == b.node && (a.piece == b.piece || (b.piece == a.piece + 1 && b.t <= 0.0 && a.t >= 1.0));
        });
        cuts_.erase(last, cuts_.end());
        const std::size_t n = raw_.size();
        if (cuts_.empty()) {
            const Cut start{0, 0.0, closed_ ? nodes_.number(raw_.front().a) : kNone};
            slices_.push_back({start, {n - 1, 1.0, closed_ ? start.node : kNone}});
        } else {
            if (!closed_) slices_.push_back({{0, 0.0, kNone}, cuts_.front()});
            for (std::size_t i = 0; i + 1 < cuts_.size(); ++i) slices_.push_back({cuts_[i], cuts_[i + 1]});
            if (closed_)
                slices_.push_back({cuts_.back(), cuts_.front(), true});
            else
                slices_.push_back({cuts_.back(), {n - 1, 1.0, kNone}});
        }
        for (Slice& slice : slices_) slice.keep = isFree(slice);
    }

    /// Number of pieces that a slice touches.
    std::size_t span(const Slice& slice) const {
        const std::size_t end = slice.to.piece + (slice.wraps ? raw_.size() : 0);
        return end >= slice.from.piece ? end - slice.from.piece + 1 : 0;
    }

    void range(const Slice& slice, std::size_t k, std::size_t count, std::size_t& piece, double& t0, double& t1) const {
        piece = (slice.from.piece + k) % raw_.size();
        t0 = k == 0 ? slice.from.t : 0.0;
        t1 = k + 1 == count ? slice.to.t : 1.0;
    }

    double length(const Slice& slice) const {
        double sum = 0.0;
        const std::size_t count = span(slice);
        for (std::size_t k = 0; k < count; ++k) {
            std::size_t piece;
            double t0, t1;
            range(slice, k, count, piece, t0, t1);
            sum += raw_[piece].length() * (t1 - t0);
        }
        return sum;
    }

    /// What a piece of the parallel must keep away from the source.
    double reachOf(const OffsetPiece& piece) const { return std::abs(d_) * piece.share * (1.0 - 1e-7) - 16.0 * eps_; }

    /// Distance from the source as far as it matters: at most |d|, and any value below `enough` stands for all such.
    double sourceDistance(const Vector2& p, double enough) const {
        const auto distance = [&](std::size_t i) { return source_[i].distance(p); };
        return sourceTree_.least(p, std::abs(d_), distance, enough);
    }

    /// The stretches of the parallel that are not surely too near to the source all along: a place that lies too near
    /// by more than half a stretch's length condemns all of it. Only in what is left can something begin or end. Pieces
    /// that meet few others are looked at as wholes; where many crowd, looking closer is cheaper than crossing them
    /// all.
    void findDoubtful() {
        constexpr std::size_t kCrowd = 24;
        constexpr int kHalvings = 10;
        for (std::size_t i = 0; i < raw_.size(); ++i)
            if (!condemned(i, 0.0, 1.0)) doubtful_.push_back({i, 0.0, 1.0});
        plant();
        std::vector<Doubtful> closer;
        std::vector<std::pair<Doubtful, int>> parts;
        for (std::size_t k = 0; k < doubtful_.size(); ++k) {
            std::size_t met = 0;
            rawTree_->query(rawTree_->box(k), [&](std::size_t) { return ++met <= kCrowd; });
            if (met <= kCrowd) {
                closer.push_back(doubtful_[k]);
                continue;
            }
            parts.assign(1, {doubtful_[k], 0});
            while (!parts.empty()) {
                const auto [at, depth] = parts.back();
                parts.pop_back();
                if (condemned(at.piece, at.t0, at.t1)) continue;
                if (depth < kHalvings) {
                    const double middle = (at.t0 + at.t1) / 2.0;
                    parts.push_back({{at.piece, middle, at.t1}, depth + 1});
                    parts.push_back({{at.piece, at.t0, middle}, depth + 1});
                } else if (!closer.empty() && closer.back().piece == at.piece && closer.back().t1 == at.t0) {
                    closer.back().t1 = at.t1;
                } else {
                    closer.push_back(at);
                }
            }
        }
        doubtful_ = std::move(closer);
        plant();
    }

    bool condemned(std::size_t i, double t0, double t1) const {
        const double reach = reachOf(raw_[i]);
        const double half = raw_[i].length() * (t1 - t0) / 2.0;
        return half < reach && sourceDistance(raw_[i].pointAt((t0 + t1) / 2.0), reach - half) + half < reach;
    }

    void plant() {
        std::vector<Bounds2> boxes;
        boxes.reserve(doubtful_.size());
        for (const Doubtful& d : doubtful_)
            boxes.push_back(part(raw_[d.piece], d.t0, d.t1).bounds().inflated(4.0 * eps_));
        rawTree_.emplace(std::move(boxes));
    }

    /// True when all of the slice keeps its distance; it is judged at places spread along it.
    bool isFree(const Slice& slice) const {
        if (length(slice) <= 16.0 * eps_) return false;
        const std::size_t count = span(slice);
        const std::size_t step = std::max<std::size_t>(1, count / 8);
        for (std::size_t k = 0; k < count; k += step) {
            std::size_t piece;
            double t0, t1;
            range(slice, k, count, piece, t0, t1);
            if (raw_[piece].length() * (t1 - t0) <= 16.0 * eps_) continue;
            const double reach = reachOf(raw_[piece]);
            if (sourceDistance(raw_[piece].pointAt((t0 + t1) / 2.0), reach) < reach) return false;
        }
        return true;
    }

    void chain(std::vector<OffsetPolyline>& out) {
        std::unordered_multimap<std::size_t, std::size_t> starts;
        std::unordered_map<std::size_t, int> incoming;
        for (std::size_t s = 0; s < slices_.size(); ++s) {
            if (!slices_[s].keep) continue;
            if (slices_[s].from.node != kNone) starts.emplace(slices_[s].from.node, s);
            if (slices_[s].to.node != kNone) ++incoming[slices_[s].to.node];
        }
        std::vector<bool> used(slices_.size(), false);
        const auto follow = [&](std::size_t s) {
            std::vector<std::size_t> run;
            while (s != kNone && !used[s]) {
                used[s] = true;
                run.push_back(s);
                const std::size_t node = slices_[s].to.node;
                std::size_t next = kNone;
                if (node != kNone) {
                    const auto [from, to] = starts.equal_range(node);
                    for (auto it = from; it != to; ++it)
                        if (!used[it->second] && (next == kNone || it->second == s + 1)) next = it->second;
                }
                s = next;
            }
            write(run, out);
        };
        for (std::size_t s = 0; s < slices_.size(); ++s) {
            if (!slices_[s].keep || used[s]) continue;
            const std::size_t node = slices_[s].from.node;
            if (node == kNone || incoming.find(node) == incoming.end()) follow(s);
        }
        for (std::size_t s = 0; s < slices_.size(); ++s)
            if (slices_[s].keep && !used[s]) follow(s);
    }

    void write(const std::vector<std::size_t>& run, std::vector<OffsetPolyline>& out) const {
        /// A stretch of one piece; neighbours on one piece run together again.
        struct Stretch {
            std::size_t piece;
            double t0;
            double t1;
        };
        std::vector<Stretch> stretches;
        for (const std::size_t s : run) {
            const std::size_t count = span(slices_[s]);
            for (std::size_t k = 0; k < count; ++k) {
                Stretch st;
                range(slices_[s], k, count, st.piece, st.t0, st.t1);
                if (raw_[st.piece].length() * (st.t1 - st.t0) <= 4.0 * eps_) continue;
                if (!stretches.empty() && stretches.back().piece == st.piece && stretches.back().t1 == st.t0)
                    stretches.back().t1 = st.t1;
                else
                    stretches.push_back(st);
            }
        }
        if (stretches.empty()) return;
        const std::size_t first = slices_[run.front()].from.node;
        OffsetPolyline polyline;
        polyline.closed = first != kNone && first == slices_[run.back()].to.node;
        if (polyline.closed && stretches.size() > 1 && stretches.back().piece == stretches.front().piece &&
            stretches.back().t1 == stretches.front().t0) {
            stretches.front().t0 = stretches.back().t0;
            stretches.pop_back();
        }
        for (const Stretch& st : stretches) {
            const OffsetPiece& piece = raw_[st.piece];
            polyline.points.push_back(piece.pointAt(st.t0));
            polyline.bulges.push_back(piece.bulge(st.t0, st.t1));
            polyline.sources.push_back(piece.source);
        }
        if (polyline.closed) {
            // A closed run without area is what two parallels that meet half-way leave.
            double perimeterLength = perimeter(polyline.points, polyline.bulges);
            if (std::abs(signedArea(polyline.points, polyline.bulges)) <= 64.0 * eps_ * perimeterLength) return;
        } else {
            const Stretch& end = stretches.back();
            polyline.points.push_back(raw_[end.piece].pointAt(end.t1));
            polyline.bulges.push_back(0.0);
        }
        out.push_back(std::move(polyline));
    }

    const std::vector<OffsetPiece>& source_;
    bool closed_;
    double d_;
    OffsetGap gap_;
    double eps_;
    BoxTree sourceTree_;
    std::vector<OffsetPiece> raw_;
    struct Doubtful {
        std::size_t piece;
        double t0;
        double t1;
    };
    std::vector<Doubtful> doubtful_;
    std::optional<BoxTree> rawTree_;  ///< of the doubtful stretches
    Nodes nodes_;
    std::vector<Cut> cuts_;
    std::vector<Slice> slices_;
};

}  // namespace

std::vector<OffsetPolyline> offsetPolyline(std::span<const Vector2> points, std::span<const double> bulges, bool closed,
                                           double distance, OffsetGap gap) {
    if (points.size() < 2 || !std::isfinite(distance) || distance == 0.0) return {};
    Bounds2 box;
    for (const Vector2& p : points) {
        if (!p.is_finite()) return {};
        box.expand(p);
    }
    // Near the origin far-out coordinates keep their digits.
    const Vector2 origin = box.center();
    const double size = box.width() + box.height() + std::abs(distance);
    const double eps = 1e-12 * size + 4e-16 * (std::abs(origin.x) + std::abs(origin.y));
    if (!std::isfinite(size) || !origin.is_finite()) return {};
    const std::vector<OffsetPiece> source = sourcePieces(points, bulges, closed, origin, eps);
    if (source.empty()) return {};
    return Pruner(source, closed && source.size() > 1, distance, gap, eps).run(origin);
}

}  // namespace kova::math
