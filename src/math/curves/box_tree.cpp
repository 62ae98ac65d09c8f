#include "math/curves/box_tree.hpp"

namespace kova::math {

namespace {

constexpr std::uint32_t kLeafSize = 8;

}  // namespace

BoxTree::BoxTree(std::vector<Bounds2> boxes) : boxes_(std::move(boxes)) {
    order_.reserve(boxes_.size());
    for (std::uint32_t i = 0; i < boxes_.size(); ++i)
        if (boxes_[i].min.is_finite() && boxes_[i].max.is_finite() && !boxes_[i].is_empty()) order_.push_back(i);
    if (order_.empty()) return;
    nodes_.reserve(order_.size() / (kLeafSize / 2) * 2 + 1);
    build(0, static_cast<std::uint32_t>(order_.size()));
}

std::uint32_t BoxTree::build(std::uint32_t first, std::uint32_t count) {
    const auto at = static_cast<std::uint32_t>(nodes_.size());
    nodes_.emplace_back();
    Bounds2 box;
    for (std::uint32_t i = first; i < first + count; ++i) box.expand(boxes_[order_[i]]);
    nodes_[at].box = box;
    if (count <= kLeafSize) {
        nodes_[at].first = first;
        nodes_[at].count = count;
        return at;
    }
    const bool wide = box.width() >= box.height();
    const std::uint32_t half = count / 2;
    const auto begin = order_.begin() + first;
    std::nth_element(begin, begin + half, begin + count, [&](std::uint32_t a, std::uint32_t b) {
        const Vector2 p = boxes_[a].min + boxes_[a].max;
        const Vector2 q = boxes_[b].min + boxes_[b].max;
        return wide ? p.x < q.x : p.y < q.y;
    });
    build(first, half);
    const std::uint32_t right = build(first + half, count - half);
    nodes_[at].right = right;
    return at;
}

}  // namespace kova::math
