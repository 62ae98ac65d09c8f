#include "math/kernels/boundary_search.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <set>
#include <unordered_map>
#include <unordered_set>

#include "math/angles.hpp"
#include "math/curves/boundary_curve.hpp"
#include "math/bounds2.hpp"
#include "math/curves/box_tree.hpp"
#include "math/curves/curves.hpp"
#include "math/curves/intersect.hpp"
#include "math/curves/polygon.hpp"

namespace kova::math {

namespace {

/// Directions closer than this count as one; curvature then tells the curves apart.
constexpr double kSameDirection = 1e-6;
/// Steps of all walks of one search.
constexpr std::size_t kMaxSteps = 4'000'000;
/// Meetings of pieces that one search works out.
constexpr std::size_t kMaxCuts = 4'000'000;
/// Edges that are looked at to find out which islands lie in each other. Beyond that they count as side by side.
constexpr std::size_t kMaxEdges = 50'000'000;

using Piece = BoundaryCurve;

/// A place where a piece meets others, or ends.
struct Split {
    double t = 0.0;
    int node = 0;
    std::vector<int> others;
};

/// An interval of a piece (from split i to i + 1) in one of its two senses.
struct HalfEdge {
    int piece = 0;
    int interval = 0;
    bool forward = true;

    bool operator==(const HalfEdge& o) const {
        return piece == o.piece && interval == o.interval && forward == o.forward;
    }
    std::uint64_t key() const {
        return (static_cast<std::uint64_t>(piece) << 32) | (static_cast<std::uint64_t>(interval) << 1) |
               (forward ? 1U : 0U);
    }
};

using Cycle = std::vector<HalfEdge>;

}  // namespace

class BoundarySearch::Impl {
public:
    Impl(const std::vector<BoundaryPiece>& pieces, double gap) {
        Bounds2 all;
        for (const BoundaryPiece& p : pieces) {
            if (!p.a.is_finite() || !p.b.is_finite() || !std::isfinite(p.bulge)) continue;
            all.expand(p.a);
            all.expand(p.b);
        }
        if (all.is_empty()) return;
        // Work near the origin: coordinates far out keep all their digits for the shape itself.
        origin_ = all.center();
        const double size = std::hypot(all.width(), all.height());
        tolerance_ = std::max({1e-12, 1e-10 * size, 1e-15 * std::max(std::abs(origin_.x), std::abs(origin_.y))});
        nodes_.setTolerance(4.0 * tolerance_);
        pieces_.reserve(pieces.size());
        for (const BoundaryPiece& p : pieces) add({p.a - origin_, p.b - origin_, p.bulge, p.source});
        if (gap > tolerance_) bridge(gap);
        splits_.resize(pieces_.size());
        stamps_.assign(pieces_.size(), 0);
        grid_.build(pieces_, 4.0 * tolerance_);
    }

    std::optional<BoundaryArea> around(const Vector2& seed, bool islands) {
        const Vector2 p = seed - origin_;
        if (!p.is_finite()) return std::nullopt;
        steps_ = 0;
        walked_.clear();
        std::vector<BoundaryLoop> passed;  // islands between p and its outline
        for (const RayHit& hit : cast(p)) {
            const HalfEdge start = halfEdgeAt(hit, p);
            if (walked_.count(start.key()) != 0) continue;
            const auto cycle = walk(start);
            if (!cycle || gaveUp()) return std::nullopt;
            std::vector<BoundaryLoop> loops = loopsOf(*cycle);
            const auto outer = std::find_if(loops.begin(), loops.end(), [&](const BoundaryLoop& loop) {
                return signedArea(loop.points, loop.bulges) > 0.0 && pointInPolygon(p, loop.points, loop.bulges);
            });
            if (outer == loops.end()) {
                for (BoundaryLoop& loop : loops) takeIsland(std::move(loop), passed);
                continue;
            }
            BoundaryArea area;
            area.outer = std::move(*outer);
            loops.erase(outer);
            if (islands) {
                area.islands = std::move(passed);
                // What hangs on the outline by a line is an island as well.
                for (BoundaryLoop& loop : loops) takeIsland(std::move(loop), area.islands);
                findIslands(area, *cycle);
                if (gaveUp()) return std::nullopt;
                nest(area.islands);
            }
            place(area.outer);
            for (BoundaryLoop& loop : area.islands) place(loop);
            return area;
        }
        return std::nullopt;
    }

    std::vector<BoundaryLoop> outlines() {
        steps_ = 0;
        walked_.clear();
        std::vector<BoundaryLoop> loops;
        std::vector<int> all(pieces_.size());
        for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<int>(i);
        outlineComponents(all, loops);
        if (gaveUp()) return {};
        nest(loops);
        for (BoundaryLoop& loop : loops) place(loop);
        return loops;
    }

    bool gaveUp() const { return steps_ > kMaxSteps || cuts_ > kMaxCuts; }

private:
    struct RayHit {
        double distance;
        int piece;
        double t;
    };

    Piece& piece(int i) { return pieces_[static_cast<std::size_t>(i)]; }

    void add(const BoundaryPiece& p) {
        if (!p.a.is_finite() || !p.b.is_finite() || !std::isfinite(p.bulge)) return;
        if (p.a.distance_to(p.b) <= 4.0 * tolerance_) return;
        pieces_.push_back(boundaryCurve(p.a, p.b, p.bulge, p.source));
    }

    /// Joins loose ends across gaps by straight lines.
    void bridge(double gap) {
        struct End {
            Vector2 p;
            std::size_t piece;
        };
        std::map<std::pair<std::int64_t, std::int64_t>, std::vector<End>> cells;
        const auto cellOf = [&](const Vector2& p) {
            return std::pair{static_cast<std::int64_t>(std::floor(p.x / gap)),
                             static_cast<std::int64_t>(std::floor(p.y / gap))};
        };
        for (std::size_t i = 0; i < pieces_.size(); ++i)
            for (const Vector2& p : {pieces_[i].a, pieces_[i].b}) cells[cellOf(p)].push_back({p, i});
        std::vector<BoundaryPiece> bridges;
        for (const auto& [cell, ends] : cells)
            for (const End& end : ends) {
                const End* best = nullptr;
                bool joined = false;
                double least = gap * (1.0 + 1e-9);
                for (std::int64_t dx = -1; dx <= 1 && !joined; ++dx)
                    for (std::int64_t dy = -1; dy <= 1 && !joined; ++dy) {
                        const auto near = cells.find({cell.first + dx, cell.second + dy});
                        if (near == cells.end()) continue;
                        for (const End& other : near->second) {
                            if (other.piece == end.piece) continue;
                            const double distance = other.p.distance_to(end.p);
                            joined = joined || distance <= 4.0 * tolerance_;
                            if (distance > least) continue;
                            least = distance;
                            best = &other;
                        }
                    }
                if (!joined && best != nullptr) bridges.push_back({end.p, best->p, 0.0, pieces_[end.piece].source});
            }
        // Two loose ends find each other from both sides.
        std::set<std::array<double, 4>> made;
        for (const BoundaryPiece& b : bridges)
            if (made.count({b.b.x, b.b.y, b.a.x, b.a.y}) == 0 && made.insert({b.a.x, b.a.y, b.b.x, b.b.y}).second)
                add(b);
    }

    // Cutting -----------------------------------------------------------------------------------------------

    const std::vector<Split>& splitsOf(int index) {
        std::vector<Split>& splits = splits_[static_cast<std::size_t>(index)];
        if (!splits.empty()) return splits;
        const Piece& x = piece(index);
        struct Cut {
            double t;
            Vector2 p;
            int other;
        };
        std::vector<Cut> cuts{{0.0, x.a, -1}, {1.0, x.b, -1}};
        ++stamp_;
        stamps_[static_cast<std::size_t>(index)] = stamp_;
        const Bounds2 box = x.box.inflated(4.0 * tolerance_);
        std::vector<Vector2> points;
        // Past the limit nothing more is cut: what is found then counts for nothing.
        if (cuts_ <= kMaxCuts)
            grid_.near(x, [&](int other) {
                if (stamps_[static_cast<std::size_t>(other)] == stamp_) return;
                stamps_[static_cast<std::size_t>(other)] = stamp_;
                const Piece& y = piece(other);
                if (!y.box.intersects(box)) return;
                points.clear();
                meetCurves(x, y, 2.0 * tolerance_, points);
                for (const Vector2& p : points) cuts.push_back({x.parameterOf(p), p, other});
            });
        cuts_ += cuts.size() - 2;
        std::sort(cuts.begin(), cuts.end(), [](const Cut& l, const Cut& r) { return l.t < r.t; });
        const double length = x.length();
        for (const Cut& cut : cuts) {
            if (splits.empty() || (cut.t - splits.back().t) * length > 4.0 * tolerance_) {
                splits.push_back({cut.t, 0, {}});
            }
            if (cut.other >= 0) splits.back().others.push_back(cut.other);
        }
        // A piece keeps its two ends, however near its last cut lies.
        if (splits.size() == 1) splits.push_back({1.0, 0, {}});
        splits.back().t = 1.0;
        for (Split& split : splits) {
            split.node = nodes_.at(x.pointAt(split.t));
            std::sort(split.others.begin(), split.others.end());
            split.others.erase(std::unique(split.others.begin(), split.others.end()), split.others.end());
        }
        return splits;
    }

    /// The split of a piece at a node; -1: none.
    int splitAt(int index, int node) {
        const std::vector<Split>& splits = splitsOf(index);
        const Vector2& p = nodes_.point(node);
        int best = -1;
        double least = 16.0 * tolerance_;
        // By the parameter first: long pieces have many splits.
        const double t = piece(index).parameterOf(p);
        auto at = std::lower_bound(splits.begin(), splits.end(), t, [](const Split& s, double v) { return s.t < v; });
        const int middle = static_cast<int>(at - splits.begin());
        for (int i = std::max(0, middle - 2); i <= std::min(middle + 2, static_cast<int>(splits.size()) - 1); ++i) {
            const Split& split = splits[static_cast<std::size_t>(i)];
            if (split.node == node) return i;
            const double distance = nodes_.point(split.node).distance_to(p);
            if (distance > least) continue;
            least = distance;
            best = i;
        }
        return best;
    }

    // Walking -----------------------------------------------------------------------------------------------

    struct Outgoing {
        HalfEdge edge;
        double direction;
        double curvature;
    };

    /// Intervals of a piece that leave one of its splits.
    void leaving(int index, int split, std::vector<Outgoing>& out) {
        const std::vector<Split>& splits = splitsOf(index);
        const Piece& p = piece(index);
        const Vector2 tangent = p.tangentAt(splits[static_cast<std::size_t>(split)].t);
        if (split + 1 < static_cast<int>(splits.size()))
            out.push_back({{index, split, true}, tangent.angle(), p.curvature()});
        if (split > 0) out.push_back({{index, split - 1, false}, (-tangent).angle(), -p.curvature()});
    }

    int startNode(const HalfEdge& e) {
        const std::vector<Split>& splits = splitsOf(e.piece);
        return splits[static_cast<std::size_t>(e.forward ? e.interval : e.interval + 1)].node;
    }
    int endSplit(const HalfEdge& e) const { return e.forward ? e.interval + 1 : e.interval; }

    void gather(int index, int split, std::vector<Outgoing>& out) {
        leaving(index, split, out);
        const Split at = splitsOf(index)[static_cast<std::size_t>(split)];
        for (const int other : at.others)
            if (const int there = splitAt(other, at.node); there >= 0) leaving(other, there, out);
    }

    /// Of the edges that leave a node the first one clockwise from a direction (of the edge one came by, looking back).
    static const Outgoing* firstClockwise(const std::vector<Outgoing>& edges, double back, double backCurvature,
                                          const HalfEdge* reverse) {
        const Outgoing* best = nullptr;
        double least = 0.0;
        const double same = 1e-6 * (1.0 + std::abs(backCurvature));
        for (const Outgoing& edge : edges) {
            double turn = normalizeAngle(back - edge.direction);
            if (turn < kSameDirection || turn > kTwoPi - kSameDirection) {
                if (reverse != nullptr && (edge.edge == *reverse || std::abs(edge.curvature - backCurvature) <= same))
                    turn = 2.0 * kTwoPi;  // the way back: the last resort
                else
                    turn = edge.curvature < backCurvature ? 0.0 : kTwoPi;
            }
            bool better = best == nullptr || turn < least - kSameDirection;
            if (!better && std::abs(turn - least) <= kSameDirection) {
                const double bend = edge.curvature - best->curvature;
                const double level = 1e-9 * (std::abs(edge.curvature) + std::abs(best->curvature));
                better = bend > level || (bend >= -level && edge.edge.piece < best->edge.piece);
            }
            if (!better) continue;
            best = &edge;
            least = turn;
        }
        return best;
    }

    /// Round the face on the left of a half edge. Nothing when that takes too long.
    std::optional<Cycle> walk(const HalfEdge& start) {
        Cycle cycle;
        HalfEdge at = start;
        std::vector<Outgoing> edges;
        do {
            if (++steps_ > kMaxSteps || walked_.count(at.key()) > 0) break;
            walked_[at.key()] = true;
            cycle.push_back(at);
            edges.clear();
            const int split = endSplit(at);
            gather(at.piece, split, edges);
            const Piece& p = piece(at.piece);
            const Vector2 tangent = p.tangentAt(splitsOf(at.piece)[static_cast<std::size_t>(split)].t);
            const HalfEdge reverse{at.piece, at.interval, !at.forward};
            const Outgoing* next = firstClockwise(edges, (at.forward ? -tangent : tangent).angle(),
                                                  at.forward ? -p.curvature() : p.curvature(), &reverse);
            if (next == nullptr) break;
            at = next->edge;
        } while (!(at == start));
        if (steps_ > kMaxSteps) return std::nullopt;
        return cycle;
    }

    std::vector<RayHit> cast(const Vector2& p) {
        // An odd direction: no drawing has many corners along it.
        const Vector2 direction = Vector2{0.927184, 0.374607}.normalized();
        std::vector<RayHit> hits;
        for (std::size_t i = 0; i < pieces_.size(); ++i) {
            const Piece& x = pieces_[i];
            if (x.box.max.x < p.x || x.box.max.y < p.y) continue;
            const auto take = [&](const Vector2& q) {
                const double distance = (q - p).dot(direction);
                if (distance > 0.0) hits.push_back({distance, static_cast<int>(i), x.parameterOf(q)});
            };
            if (x.arc) {
                for (const Vector2& q : lineArc(p, p + direction, *x.arc, 0.0)) take(q);
            } else {
                const double sa = direction.cross(x.a - p);
                const double sb = direction.cross(x.b - p);
                if ((sa > 0.0) == (sb > 0.0)) continue;
                take(x.a.lerp(x.b, sa / (sa - sb)));
            }
        }
        std::sort(hits.begin(), hits.end(), [](const RayHit& l, const RayHit& r) { return l.distance < r.distance; });
        return hits;
    }

    /// The half edge at a hit that has p on its left.
    HalfEdge halfEdgeAt(const RayHit& hit, const Vector2& p) {
        const std::vector<Split>& splits = splitsOf(hit.piece);
        int interval = 0;
        while (interval + 2 < static_cast<int>(splits.size()) &&
               splits[static_cast<std::size_t>(interval + 1)].t < hit.t)
            ++interval;
        const Piece& x = piece(hit.piece);
        return {hit.piece, interval, x.tangentAt(hit.t).cross(p - x.pointAt(hit.t)) > 0.0};
    }

    // Loops -------------------------------------------------------------------------------------------------

    /// The closed outlines of a walk, without what it went both ways. Those round which the face lies outside run
    /// clockwise.
    std::vector<BoundaryLoop> loopsOf(const Cycle& cycle) {
        std::vector<BoundaryLoop> loops;
        Cycle stack;
        std::unordered_map<std::uint64_t, std::size_t> place;
        const auto cut = [&](std::size_t from) {
            Cycle part(stack.begin() + static_cast<std::ptrdiff_t>(from), stack.end());
            for (const HalfEdge& e : part) place.erase(e.key());
            stack.resize(from);
            if (part.size() > 1 || (part.size() == 1 && startNode(part[0]) == endNode(part[0]))) addLoop(part, loops);
        };
        for (const HalfEdge& e : cycle) {
            const HalfEdge reverse{e.piece, e.interval, !e.forward};
            const auto back = place.find(reverse.key());
            if (back == place.end()) {
                place[e.key()] = stack.size();
                stack.push_back(e);
                continue;
            }
            const std::size_t index = back->second;
            cut(index + 1);
            place.erase(stack.back().key());
            stack.pop_back();
        }
        cut(0);
        return loops;
    }

    int endNode(const HalfEdge& e) { return splitsOf(e.piece)[static_cast<std::size_t>(endSplit(e))].node; }

    void addLoop(const Cycle& cycle, std::vector<BoundaryLoop>& loops) {
        // Neighbouring intervals of one piece become one segment again.
        struct Run {
            int piece;
            bool forward;
            double from;
            double to;
        };
        std::vector<Run> runs;
        for (const HalfEdge& e : cycle) {
            const std::vector<Split>& splits = splitsOf(e.piece);
            double from = splits[static_cast<std::size_t>(e.interval)].t;
            double to = splits[static_cast<std::size_t>(e.interval + 1)].t;
            if (!e.forward) std::swap(from, to);
            if (!runs.empty() && runs.back().piece == e.piece && runs.back().forward == e.forward &&
                runs.back().to == from)
                runs.back().to = to;
            else
                runs.push_back({e.piece, e.forward, from, to});
        }
        if (runs.size() > 1 && runs.front().piece == runs.back().piece && runs.front().forward == runs.back().forward &&
            runs.back().to == runs.front().from) {
            runs.front().from = runs.back().from;
            runs.pop_back();
        }
        BoundaryLoop loop;
        for (const Run& run : runs) {
            const Piece& p = piece(run.piece);
            loop.points.push_back(p.pointAt(run.from));
            loop.sources.push_back(p.source);
            loop.bulges.push_back(p.arc ? bulgeFromSweep(p.arc->sweep * (run.to - run.from)) : 0.0);
        }
        std::sort(loop.sources.begin(), loop.sources.end());
        loop.sources.erase(std::unique(loop.sources.begin(), loop.sources.end()), loop.sources.end());
        if (std::abs(signedArea(loop.points, loop.bulges)) > tolerance_ * tolerance_ && loop.points.size() > 1)
            loops.push_back(std::move(loop));
    }

    static void reverse(BoundaryLoop& loop) {
        std::reverse(loop.points.begin(), loop.points.end());
        std::reverse(loop.bulges.begin(), loop.bulges.end());
        // The bulge belongs to the vertex where its segment starts.
        std::rotate(loop.bulges.begin(), loop.bulges.begin() + 1, loop.bulges.end());
        for (double& bulge : loop.bulges) bulge = -bulge;
    }

    void takeIsland(BoundaryLoop loop, std::vector<BoundaryLoop>& islands) {
        if (signedArea(loop.points, loop.bulges) >= 0.0) return;
        reverse(loop);
        islands.push_back(std::move(loop));
    }

    void place(BoundaryLoop& loop) const {
        for (Vector2& p : loop.points) p += origin_;
    }

    // Islands -----------------------------------------------------------------------------------------------

    static Bounds2 loopBox(const BoundaryLoop& loop) {
        Bounds2 box;
        for (std::size_t i = 0; i < loop.points.size(); ++i) {
            box.expand(loop.points[i]);
            if (loop.bulges[i] == 0.0) continue;
            const Vector2& next = loop.points[(i + 1) % loop.points.size()];
            if (const auto arc = arcFromBulge(loop.points[i], next, loop.bulges[i])) {
                box.expand(arc->center + Vector2{arc->radius, arc->radius});
                box.expand(arc->center - Vector2{arc->radius, arc->radius});
            }
        }
        return box;
    }

    void findIslands(BoundaryArea& area, const Cycle& outline) {
        std::vector<bool> onOutline(pieces_.size(), false);
        for (const auto& [key, value] : walked_) onOutline[key >> 32] = true;
        // What touches the outline belongs to it: the walk came by, or it lies upon the outline.
        std::unordered_set<int> nodes;
        for (const HalfEdge& e : outline) nodes.insert(startNode(e));
        const auto touches = [&](std::size_t i) {
            const std::vector<Split>& splits = splitsOf(static_cast<int>(i));
            return std::any_of(splits.begin(), splits.end(), [&](const Split& s) { return nodes.count(s.node) != 0; });
        };
        const Bounds2 box = loopBox(area.outer).inflated(tolerance_);
        std::vector<int> inside;
        for (std::size_t i = 0; i < pieces_.size(); ++i) {
            if (onOutline[i] || !box.contains_box(pieces_[i].box)) continue;
            if (pointInPolygon(pieces_[i].pointAt(0.5), area.outer.points, area.outer.bulges) && !touches(i))
                inside.push_back(static_cast<int>(i));
        }
        outlineComponents(inside, area.islands);
    }

    /// The outer outlines of the connected groups among some pieces.
    void outlineComponents(const std::vector<int>& some, std::vector<BoundaryLoop>& loops) {
        std::vector<char> state(pieces_.size(), 0);
        for (const int i : some) state[static_cast<std::size_t>(i)] = 1;
        std::vector<int> group;
        for (const int first : some) {
            if (state[static_cast<std::size_t>(first)] != 1) continue;
            group.assign(1, first);
            state[static_cast<std::size_t>(first)] = 2;
            for (std::size_t next = 0; next < group.size(); ++next)
                for (const Split& split : splitsOf(group[next]))
                    for (const int other : split.others)
                        if (state[static_cast<std::size_t>(other)] == 1) {
                            state[static_cast<std::size_t>(other)] = 2;
                            group.push_back(other);
                        }
            if (gaveUp()) return;
            outlineGroup(group, loops);
        }
    }

    void outlineGroup(const std::vector<int>& group, std::vector<BoundaryLoop>& loops) {
        // From the leftmost place, with the outside on the left.
        int leftmost = group.front();
        for (const int i : group)
            if (piece(i).box.min.x < piece(leftmost).box.min.x) leftmost = i;
        const Piece& x = piece(leftmost);
        const std::vector<Split>& splits = splitsOf(leftmost);
        std::optional<HalfEdge> start;
        if (x.arc) {
            const Vector2 extreme = x.arc->center - Vector2{x.arc->radius, 0.0};
            const double t = x.parameterOf(extreme);
            if (x.pointAt(t).distance_to(extreme) <= 4.0 * tolerance_ && t > 0.0 && t < 1.0) {
                for (int i = 0; i + 1 < static_cast<int>(splits.size()); ++i)
                    if (splits[static_cast<std::size_t>(i)].t < t && t < splits[static_cast<std::size_t>(i + 1)].t)
                        start = HalfEdge{leftmost, i, x.arc->sweep < 0.0};
            }
        }
        if (!start) {
            int at = 0;
            for (int i = 0; i < static_cast<int>(splits.size()); ++i)
                if (x.pointAt(splits[static_cast<std::size_t>(i)].t).x <
                    x.pointAt(splits[static_cast<std::size_t>(at)].t).x)
                    at = i;
            std::vector<Outgoing> edges;
            gather(leftmost, at, edges);
            const Outgoing* first = firstClockwise(edges, kPi, 0.0, nullptr);
            if (first == nullptr) return;
            start = first->edge;
        }
        if (walked_.count(start->key()) != 0) return;
        if (const auto cycle = walk(*start))
            for (BoundaryLoop& loop : loopsOf(*cycle)) takeIsland(std::move(loop), loops);
    }

    static void nest(std::vector<BoundaryLoop>& loops) {
        std::vector<Bounds2> boxes;
        boxes.reserve(loops.size());
        for (const BoundaryLoop& loop : loops) boxes.push_back(loopBox(loop));
        const BoxTree tree(std::move(boxes));
        std::size_t edges = 0;
        for (std::size_t i = 0; i < loops.size(); ++i) {
            const Vector2 p =
                bulgeMidPoint(loops[i].points[0], loops[i].points[1 % loops[i].points.size()], loops[i].bulges[0]);
            loops[i].depth = 0;
            tree.query(Bounds2(p, p), [&](std::size_t j) {
                if (j == i) return true;
                edges += loops[j].points.size();
                if (pointInPolygon(p, loops[j].points, loops[j].bulges)) ++loops[i].depth;
                return edges < kMaxEdges;
            });
        }
    }

    Vector2 origin_;
    double tolerance_ = 1e-10;
    std::vector<Piece> pieces_;
    PieceGrid grid_;
    NodeTable nodes_;
    std::vector<std::vector<Split>> splits_;
    std::vector<std::uint32_t> stamps_;
    std::uint32_t stamp_ = 0;
    std::unordered_map<std::uint64_t, bool> walked_;
    std::size_t steps_ = 0;
    std::size_t cuts_ = 0;
};

BoundarySearch::BoundarySearch(const std::vector<BoundaryPiece>& pieces, double gap)
    : impl_(std::make_unique<Impl>(pieces, gap)) {}
BoundarySearch::~BoundarySearch() = default;

std::optional<BoundaryArea> BoundarySearch::around(const Vector2& p, bool islands) { return impl_->around(p, islands); }
bool BoundarySearch::gaveUp() const { return impl_->gaveUp(); }
std::vector<BoundaryLoop> BoundarySearch::outlines() { return impl_->outlines(); }

}  // namespace kova::math
