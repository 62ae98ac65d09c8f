#include "engine/modify/mleader_align.hpp"

#include <algorithm>
#include <numeric>

namespace kova::engine {

using math::Vector2;

namespace {

/// Indexes in the order of the contents along a direction.
std::vector<std::size_t> orderAlong(std::span<const MLeaderEntity* const> leaders, const Vector2& direction) {
    std::vector<std::size_t> order(leaders.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return leaders[a]->contentPos.dot(direction) < leaders[b]->contentPos.dot(direction);
    });
    return order;
}

/// How far a content's box reaches from its position along a direction: backwards and forwards.
std::pair<double, double> reachAlong(const MLeaderEntity& leader, const Vector2& direction) {
    const math::Bounds2 box = leader.contentBox();
    double low = 0.0;
    double high = 0.0;
    bool any = false;
    for (const Vector2& p : {box.min, Vector2{box.max.x, box.min.y}, box.max, Vector2{box.min.x, box.max.y}}) {
        const double d = (p - leader.contentPos).dot(direction);
        low = any ? std::min(low, d) : d;
        high = any ? std::max(high, d) : d;
        any = true;
    }
    return {low, high};
}

/// The last two points of the first leader line that has them.
const std::vector<Vector2>* firstLine(const MLeaderEntity& leader) {
    for (const MLeaderHead& head : leader.heads)
        if (head.vertices.size() >= 2) return &head.vertices;
    return nullptr;
}

}  // namespace

Vector2 lastLeaderDirection(const MLeaderEntity& leader) {
    const std::vector<Vector2>* line = firstLine(leader);
    return line != nullptr ? (line->back() - (*line)[line->size() - 2]).normalized() : Vector2{};
}

std::vector<Vector2> alignedSteps(std::span<const MLeaderEntity* const> leaders, const Vector2& base,
                                  Vector2 direction) {
    std::vector<Vector2> steps(leaders.size());
    direction = direction.normalized();
    if (direction == Vector2{}) return steps;
    const Vector2 normal = direction.perpendicular();
    for (std::size_t i = 0; i < leaders.size(); ++i) steps[i] = normal * (base - leaders[i]->contentPos).dot(normal);
    return steps;
}

std::vector<Vector2> spacedSteps(std::span<const MLeaderEntity* const> leaders, std::size_t first, Vector2 direction,
                                 double spacing) {
    std::vector<Vector2> steps(leaders.size());
    direction = direction.normalized();
    if (first >= leaders.size() || direction == Vector2{} || !std::isfinite(spacing)) return steps;
    const Vector2 base = leaders[first]->contentPos;
    const std::vector<std::size_t> order = orderAlong(leaders, direction);
    const auto middle = std::find(order.begin(), order.end(), first);
    const auto [low, high] = reachAlong(*leaders[first], direction);
    double along = high;
    for (auto it = middle + 1; it < order.end(); ++it) {
        const auto [from, to] = reachAlong(*leaders[*it], direction);
        along += spacing - from;
        steps[*it] = base + direction * along - leaders[*it]->contentPos;
        along += to;
    }
    along = low;
    for (auto it = middle; it-- > order.begin();) {
        const auto [from, to] = reachAlong(*leaders[*it], direction);
        along -= spacing + to;
        steps[*it] = base + direction * along - leaders[*it]->contentPos;
        along += from;
    }
    return steps;
}

std::vector<Vector2> distributedSteps(std::span<const MLeaderEntity* const> leaders, const Vector2& a,
                                      const Vector2& b) {
    std::vector<Vector2> steps(leaders.size());
    const std::vector<std::size_t> order = orderAlong(leaders, (b - a).normalized());
    for (std::size_t i = 0; i < order.size(); ++i) {
        const double share = order.size() > 1 ? static_cast<double>(i) / static_cast<double>(order.size() - 1) : 0.0;
        steps[order[i]] = a.lerp(b, share) - leaders[order[i]]->contentPos;
    }
    return steps;
}

std::vector<Vector2> parallelSteps(std::span<const MLeaderEntity* const> leaders, Vector2 direction) {
    std::vector<Vector2> steps(leaders.size());
    direction = direction.normalized();
    if (direction == Vector2{}) return steps;
    for (std::size_t i = 0; i < leaders.size(); ++i) {
        const std::vector<Vector2>* line = firstLine(*leaders[i]);
        if (line == nullptr) continue;
        const Vector2 from = (*line)[line->size() - 2];
        const Vector2 way = line->back() - from;
        // A line that ran across keeps its length.
        double length = way.dot(direction);
        if (std::abs(length) <= 1e-9 * way.length()) length = way.length();
        steps[i] = from + direction * length - line->back();
    }
    return steps;
}

void moveContent(MLeaderEntity& leader, const Vector2& step) {
    leader.contentPos += step;
    for (MLeaderHead& head : leader.heads)
        if (head.vertices.size() >= 2) head.vertices.back() += step;
}

}  // namespace kova::engine
