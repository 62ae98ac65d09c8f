#include "math/curves/ring_nesting.hpp"

#include "math/curves/polygon.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Vector2;

namespace {

bool insideRing(std::span<const Vector2> ring, const Vector2& p) {
    bool inside = false;
    for (std::size_t i = 0, j = ring.size() - 1; i < ring.size(); j = i++) {
        const Vector2& a = ring[j];
        const Vector2& b = ring[i];
        if ((a.y > p.y) == (b.y > p.y)) continue;
        if (p.x < a.x + (b.x - a.x) * ((p.y - a.y) / (b.y - a.y))) inside = !inside;
    }
    return inside;
}

Bounds2 boundsOf(std::span<const Vector2> points) {
    Bounds2 box;
    for (const Vector2& p : points) box.expand(p);
    return box;
}

}  // namespace

bool insideRings(std::span<const Ring> rings, const Vector2& p) {
    bool inside = false;
    for (const Ring& ring : rings)
        if (!ring.empty() && insideRing(ring, p)) inside = !inside;
    return inside;
}

std::optional<Vector2> pointInside(std::span<const Vector2> ring) {
    const Bounds2 box = boundsOf(ring);
    if (box.is_empty() || ring.size() < 3) return std::nullopt;
    // The middle of the widest stretch of a horizontal line through the ring. A second height is tried for rings
    // that are thin in the middle.
    for (const double share : {0.5, 0.37, 0.71}) {
        const double y = box.min.y + (box.max.y - box.min.y) * share;
        std::vector<double> crossings;
        for (std::size_t i = 0, j = ring.size() - 1; i < ring.size(); j = i++) {
            const Vector2& a = ring[j];
            const Vector2& b = ring[i];
            if ((a.y > y) != (b.y > y)) crossings.push_back(a.x + (b.x - a.x) * ((y - a.y) / (b.y - a.y)));
        }
        std::sort(crossings.begin(), crossings.end());
        double widest = 0.0;
        double x = 0.0;
        for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) {
            const double width = crossings[i + 1] - crossings[i];
            if (width <= widest) continue;
            widest = width;
            x = (crossings[i] + crossings[i + 1]) / 2.0;
        }
        if (widest > 0.0) return Vector2{x, y};
    }
    return std::nullopt;
}

std::optional<std::vector<int>> ringDepths(std::span<const std::vector<Ring>> groups) {
    struct Group {
        Bounds2 box;
        double area = 0.0;
        std::size_t points = 0;
        std::optional<Vector2> probe;
    };
    std::vector<Group> known(groups.size());
    for (std::size_t i = 0; i < groups.size(); ++i) {
        for (const Ring& ring : groups[i]) {
            known[i].box.expand(boundsOf(ring));
            known[i].area += std::abs(math::signedArea(ring));
            known[i].points += ring.size();
            if (!known[i].probe) known[i].probe = pointInside(ring);
        }
    }
    std::vector<int> depths(groups.size(), 0);
    std::size_t tests = 0;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        tests += groups.size();
        if (tests > kMaxRingTests) return std::nullopt;
        if (!known[i].probe) continue;
        for (std::size_t j = 0; j < groups.size(); ++j) {
            // The larger one is the container: a point inside both does not tell by itself.
            if (i == j || known[j].area < known[i].area || !known[j].box.contains_point(*known[i].probe)) continue;
            if (known[j].area == known[i].area && j > i) continue;
            tests += known[j].points;
            if (tests > kMaxRingTests) return std::nullopt;
            if (insideRings(groups[j], *known[i].probe)) ++depths[i];
        }
    }
    return depths;
}

std::vector<Ring> ringsOf(PathView path, double relative) {
    const Bounds2 box = pathBounds(path);
    if (box.is_empty()) return {};
    const double size = std::max(box.width(), box.height());
    if (!std::isfinite(size)) return {};
    return flattenPath(path, size > 0.0 ? size * relative : 1.0);
}

double evenOddArea(PathView path) {
    std::vector<std::vector<Ring>> single;
    for (Ring& ring : ringsOf(path, 1e-6)) single.push_back({std::move(ring)});
    const std::optional<std::vector<int>> depths = ringDepths(single);
    double area = 0.0;
    for (std::size_t i = 0; i < single.size(); ++i) {
        const double size = std::abs(math::signedArea(single[i].front()));
        area += depths && (*depths)[i] % 2 != 0 ? -size : size;
    }
    return area;
}

Vector2 nearestInArea(PathView path, const Vector2& p) {
    if (!p.is_finite() || insidePath(path, p)) return p;
    return nearestOnPath(path, p);
}

}  // namespace kova::engine
