#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "math/bounds2.hpp"

namespace kova::math {

/// Finds boxes by place: built once for a list of boxes, which are named by their index in it. Building takes
/// n log n, a question about a small place log n. Empty boxes are never found.
class BoxTree {
public:
    explicit BoxTree(std::vector<Bounds2> boxes);

    const Bounds2& box(std::size_t index) const { return boxes_[index]; }

    /// Calls use(index) for each box that meets `box`, in no order, until it returns false.
    template <class Use>
    void query(const Bounds2& box, const Use& use) const {
        if (nodes_.empty() || box.is_empty()) return;
        std::uint32_t stack[64];
        int depth = 0;
        stack[depth++] = 0;
        while (depth > 0) {
            const Node& node = nodes_[stack[--depth]];
            if (!node.box.intersects(box)) continue;
            if (node.count == 0) {
                stack[depth++] = node.right;
                stack[depth++] = static_cast<std::uint32_t>(&node - nodes_.data()) + 1;
                continue;
            }
            for (std::uint32_t i = node.first; i < node.first + node.count; ++i)
                if (boxes_[order_[i]].intersects(box) && !use(static_cast<std::size_t>(order_[i]))) return;
        }
    }

    /// The least distance(index) below `limit`, where no item lies nearer to p than its box; `limit` when there is
    /// none. Stops as soon as something nearer than `enough` is found.
    template <class Distance>
    double least(const Vector2& p, double limit, const Distance& distance, double enough = 0.0) const {
        if (nodes_.empty()) return limit;
        std::uint32_t stack[64];
        int depth = 0;
        stack[depth++] = 0;
        while (depth > 0) {
            const std::uint32_t at = stack[--depth];
            const Node& node = nodes_[at];
            if (!(boxDistance(node.box, p) < limit)) continue;
            if (node.count == 0) {
                std::uint32_t near = at + 1;
                std::uint32_t far = node.right;
                if (boxDistance(nodes_[far].box, p) < boxDistance(nodes_[near].box, p)) std::swap(near, far);
                stack[depth++] = far;
                stack[depth++] = near;
                continue;
            }
            for (std::uint32_t i = node.first; i < node.first + node.count; ++i) {
                if (!(boxDistance(boxes_[order_[i]], p) < limit)) continue;
                limit = std::min(limit, distance(static_cast<std::size_t>(order_[i])));
                if (limit < enough) return limit;
            }
        }
        return limit;
    }

    /// Distance of p from a box; 0 inside.
    static double boxDistance(const Bounds2& box, const Vector2& p) {
        const double dx = std::max({box.min.x - p.x, 0.0, p.x - box.max.x});
        const double dy = std::max({box.min.y - p.y, 0.0, p.y - box.max.y});
        return std::sqrt(dx * dx + dy * dy);
    }

private:
    /// A leaf holds `count` items from `first` on; any other node has its left child right behind it.
    struct Node {
        Bounds2 box;
        std::uint32_t first = 0;
        std::uint32_t count = 0;
        std::uint32_t right = 0;
    };
    std::uint32_t build(std::uint32_t first, std::uint32_t count);

    std::vector<Bounds2> boxes_;
    std::vector<std::uint32_t> order_;
    std::vector<Node> nodes_;
};

}  // namespace kova::math
