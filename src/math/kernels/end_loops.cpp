#include "math/kernels/end_loops.hpp"

#include <algorithm>
#include <cmath>

#include "math/curves/boundary_curve.hpp"
#include "math/curves/box_tree.hpp"
#include "math/curves/polygon.hpp"

namespace kova::math {

namespace {

/// Pairs of pieces that are looked at before a figure is taken to be simple.
constexpr std::size_t kMaxPairs = 20'000'000;
constexpr double kSameSpoke = 1e-9;

/// Pieces as a graph of their ends. Half edge 2 i runs along piece i, 2 i + 1 against it.
class EndGraph {
public:
    EndGraph(std::span<const BoundaryPiece> pieces, double tolerance) {
        NodeTable nodes;
        nodes.setTolerance(tolerance);
        for (const BoundaryPiece& p : pieces) {
            if (!p.a.is_finite() || !p.b.is_finite() || !std::isfinite(p.bulge)) continue;
            const int a = nodes.at(p.a);
            const int b = nodes.at(p.b);
            if (a == b) continue;
            curves_.push_back(boundaryCurve(p.a, p.b, p.bulge, p.source));
            ends_.push_back(static_cast<std::size_t>(a));
            ends_.push_back(static_cast<std::size_t>(b));
        }
        alive_.assign(curves_.size(), 1);
        dropTwins();
        dropLooseEnds();
        link();
        // What has the same face on both sides only ties figures together.
        const std::vector<std::size_t> face = faces();
        bool any = false;
        for (std::size_t i = 0; i < curves_.size(); ++i) {
            if (alive_[i] == 0 || face[2 * i] != face[2 * i + 1]) continue;
            alive_[i] = 0;
            any = true;
        }
        if (any) link();
    }

    /// Calls use(loop) for the figures with the inside on their left.
    template <class Use>
    void eachLoop(const Use& use) const {
        std::vector<char> seen(next_.size(), 0);
        BoundaryLoop loop;
        for (std::size_t start = 0; start < next_.size(); ++start) {
            if (seen[start] != 0 || alive_[start / 2] == 0) continue;
            loop = {};
            std::size_t at = start;
            do {
                seen[at] = 1;
                const BoundaryCurve& c = curves_[at / 2];
                loop.points.push_back(at % 2 == 0 ? c.a : c.b);
                loop.bulges.push_back(at % 2 == 0 ? c.bulge : -c.bulge);
                loop.sources.push_back(c.source);
                at = next_[at];
            } while (at != start);
            if (!(signedArea(loop.points, loop.bulges) > 0.0)) continue;
            std::sort(loop.sources.begin(), loop.sources.end());
            loop.sources.erase(std::unique(loop.sources.begin(), loop.sources.end()), loop.sources.end());
            use(loop);
        }
    }

private:
    /// The node where a half edge begins.
    std::size_t from(std::size_t half) const { return ends_[half]; }
    std::size_t to(std::size_t half) const { return ends_[half ^ 1U]; }

    /// Of pieces that lie on each other one stays.
    void dropTwins() {
        struct Key {
            std::size_t low, high, piece;
            double bulge;
        };
        std::vector<Key> keys;
        keys.reserve(curves_.size());
        for (std::size_t i = 0; i < curves_.size(); ++i) {
            const bool turned = ends_[2 * i] > ends_[2 * i + 1];
            keys.push_back({std::min(ends_[2 * i], ends_[2 * i + 1]), std::max(ends_[2 * i], ends_[2 * i + 1]), i,
                            turned ? -curves_[i].bulge : curves_[i].bulge});
        }
        std::sort(keys.begin(), keys.end(), [](const Key& a, const Key& b) {
            return std::tie(a.low, a.high, a.bulge, a.piece) < std::tie(b.low, b.high, b.bulge, b.piece);
        });
        for (std::size_t k = 1; k < keys.size(); ++k)
            if (keys[k].low == keys[k - 1].low && keys[k].high == keys[k - 1].high &&
                keys[k].bulge - keys[k - 1].bulge <= 1e-9)
                alive_[keys[k].piece] = 0;
    }

    void dropLooseEnds() {
        std::size_t nodes = 0;
        for (const std::size_t end : ends_) nodes = std::max(nodes, end + 1);
        // The sum of the pieces at a node names the last one.
        std::vector<std::size_t> degree(nodes, 0);
        std::vector<std::size_t> sum(nodes, 0);
        for (std::size_t half = 0; half < ends_.size(); ++half) {
            if (alive_[half / 2] == 0) continue;
            ++degree[ends_[half]];
            sum[ends_[half]] += half / 2;
        }
        for (std::size_t n = 0; n < nodes; ++n)
            for (std::size_t at = n; degree[at] == 1;) {
                const std::size_t piece = sum[at];
                alive_[piece] = 0;
                const std::size_t other = ends_[2 * piece] == at ? ends_[2 * piece + 1] : ends_[2 * piece];
                for (const std::size_t node : {at, other}) {
                    --degree[node];
                    sum[node] -= piece;
                }
                at = other;
            }
    }

    /// Finds for each half edge the one that goes on round the same face: the first clockwise from where it came.
    void link() {
        struct Spoke {
            std::size_t node;
            double direction;
            double curvature;
            std::size_t half;
        };
        std::vector<Spoke> spokes;
        for (std::size_t half = 0; half < ends_.size(); ++half) {
            if (alive_[half / 2] == 0) continue;
            const BoundaryCurve& c = curves_[half / 2];
            const Vector2 d = half % 2 == 0 ? c.tangentAt(0.0) : -c.tangentAt(1.0);
            double direction = normalizeAngle(d.angle());
            if (direction > kTwoPi - kSameSpoke) direction = 0.0;
            spokes.push_back({from(half), direction, half % 2 == 0 ? c.curvature() : -c.curvature(), half});
        }
        std::sort(spokes.begin(), spokes.end(), [](const Spoke& a, const Spoke& b) {
            return std::tie(a.node, a.direction) < std::tie(b.node, b.direction);
        });
        next_.assign(ends_.size(), 0);
        for (std::size_t i = 0; i < spokes.size();) {
            std::size_t end = i + 1;
            while (end < spokes.size() && spokes[end].node == spokes[i].node) ++end;
            // Tangent ones stand in the order of their bends.
            for (std::size_t k = i; k < end;) {
                std::size_t stop = k + 1;
                while (stop < end && spokes[stop].direction - spokes[stop - 1].direction <= kSameSpoke) ++stop;
                std::sort(spokes.begin() + static_cast<std::ptrdiff_t>(k),
                          spokes.begin() + static_cast<std::ptrdiff_t>(stop),
                          [](const Spoke& a, const Spoke& b) { return a.curvature < b.curvature; });
                k = stop;
            }
            for (std::size_t k = i; k < end; ++k) next_[spokes[k].half ^ 1U] = spokes[k == i ? end - 1 : k - 1].half;
            i = end;
        }
    }

    /// By half edge the number of its face.
    std::vector<std::size_t> faces() const {
        std::vector<std::size_t> face(next_.size(), 0);
        std::size_t count = 0;
        for (std::size_t start = 0; start < next_.size(); ++start) {
            if (face[start] != 0 || alive_[start / 2] == 0) continue;
            ++count;
            for (std::size_t at = start; face[at] == 0; at = next_[at]) face[at] = count;
        }
        return face;
    }

    std::vector<BoundaryCurve> curves_;
    std::vector<std::size_t> ends_;  ///< by half edge: the node where it begins
    std::vector<char> alive_;
    std::vector<std::size_t> next_;
};

}  // namespace

bool crossesItself(const BoundaryLoop& loop, double tolerance) {
    const std::size_t n = loop.points.size();
    if (n < 3) return false;
    std::vector<BoundaryCurve> curves;
    curves.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        const Vector2& a = loop.points[i];
        const Vector2& b = loop.points[i + 1 < n ? i + 1 : 0];
        if (a.distance_to(b) > tolerance)
            curves.push_back(boundaryCurve(a, b, i < loop.bulges.size() ? loop.bulges[i] : 0.0, 0));
    }
    const std::size_t count = curves.size();
    if (count < 3) return false;
    bool crosses = false;
    std::size_t pairs = 0;
    std::vector<Vector2> points;
    const auto test = [&](std::size_t i, std::size_t k) {
        if (k <= i || !curves[i].box.inflated(tolerance).intersects(curves[k].box)) return;
        points.clear();
        meetCurves(curves[i], curves[k], tolerance, points);
        for (const Vector2& p : points) {
            // Neighbours meet where they are tied.
            const bool tied = (k == i + 1 && p.distance_to(curves[i].b) <= 4.0 * tolerance) ||
                              (i == 0 && k + 1 == count && p.distance_to(curves[i].a) <= 4.0 * tolerance);
            crosses = crosses || !tied;
        }
    };
    constexpr std::size_t kFew = 16;
    if (count <= kFew) {
        for (std::size_t i = 0; i < count && !crosses; ++i)
            for (std::size_t k = i + 1; k < count && !crosses; ++k) test(i, k);
        return crosses;
    }
    std::vector<Bounds2> boxes;
    boxes.reserve(count);
    for (const BoundaryCurve& curve : curves) boxes.push_back(curve.box);
    const BoxTree tree(std::move(boxes));
    for (std::size_t i = 0; i < count && !crosses && pairs < kMaxPairs; ++i)
        tree.query(curves[i].box.inflated(tolerance), [&](std::size_t k) {
            test(i, k);
            return !crosses && ++pairs < kMaxPairs;
        });
    return crosses;
}

EndLoops endLoops(std::span<const BoundaryPiece> pieces, double tolerance) {
    EndLoops out;
    const EndGraph graph(pieces, tolerance);
    graph.eachLoop([&](BoundaryLoop& loop) {
        if (crossesItself(loop, tolerance))
            ++out.crossing;
        else
            out.loops.push_back(std::move(loop));
    });
    return out;
}

}  // namespace kova::math
