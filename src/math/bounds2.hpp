#pragma once

#include <limits>
#include <string>

#include "math/vector2.hpp"

namespace kova::math {

/// An axis-aligned box in the drawing plane; empty while a minimum exceeds its maximum.
/// All tests are inclusive: touching edges count as inside or overlapping. An empty box contains
/// nothing and meets nothing; it is contained in every box.
struct Bounds2 {
    Vector2 min{std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
    Vector2 max{-std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};

    constexpr Bounds2() = default;
    constexpr Bounds2(const Vector2& lo, const Vector2& hi) : min(lo), max(hi) {}

    constexpr void expand(const Vector2& p) {
        if (p.x < min.x) min.x = p.x;
        if (p.y < min.y) min.y = p.y;
        if (p.x > max.x) max.x = p.x;
        if (p.y > max.y) max.y = p.y;
    }
    constexpr void expand(const Bounds2& b) {
        if (b.is_empty()) return;
        expand(b.min);
        expand(b.max);
    }
    constexpr bool is_empty() const { return min.x > max.x || min.y > max.y; }
    constexpr Vector2 center() const { return (min + max) / 2.0; }
    constexpr double width() const { return max.x - min.x; }
    constexpr double height() const { return max.y - min.y; }
    constexpr double area() const { return is_empty() ? 0.0 : width() * height(); }
    constexpr bool contains_point(const Vector2& p) const {
        return p.x >= min.x && p.x <= max.x && p.y >= min.y && p.y <= max.y;
    }
    constexpr bool contains_box(const Bounds2& b) const {
        return b.is_empty() || (contains_point(b.min) && contains_point(b.max));
    }
    constexpr bool intersects(const Bounds2& b) const {
        return !is_empty() && !b.is_empty() && b.min.x <= max.x && b.max.x >= min.x && b.min.y <= max.y &&
               b.max.y >= min.y;
    }
    /// The box grown by `margin` on every side; an empty box stays empty.
    constexpr Bounds2 inflated(double margin) const {
        return is_empty() ? *this : Bounds2{min - Vector2{margin, margin}, max + Vector2{margin, margin}};
    }
    constexpr bool operator==(const Bounds2& o) const { return min == o.min && max == o.max; }

    /// "BoundingBox2(min=(x, y), max=(x, y))".
    std::string text() const;
};

}  // namespace kova::math
