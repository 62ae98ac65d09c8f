#include "render/wide_line.hpp"

namespace kova::render {

using math::Vector2;

namespace {
// Sharper corners than this (the mitre reaches farther than about 4 half widths) end flat.
constexpr double kSharpest = 0.12;
}  // namespace

std::vector<std::array<Vector2, 4>> widenLine(std::span<const WidePoint> points, bool closed) {
    std::vector<WidePoint> line;
    for (const WidePoint& p : points) {
        if (!line.empty() && line.back().p.distance_to(p.p) < 1e-9)
            line.back().widthOut = p.widthOut;
        else
            line.push_back(p);
    }
    if (closed && line.size() > 1 && line.front().p.distance_to(line.back().p) < 1e-9) {
        line.front().widthIn = line.back().widthIn;
        line.pop_back();
    }
    const std::size_t n = line.size();
    std::vector<std::array<Vector2, 4>> quads;
    if (n < 2) return quads;
    const std::size_t segments = closed ? n : n - 1;
    const auto direction = [&](std::size_t i) { return (line[(i + 1) % n].p - line[i].p).normalized(); };
    // The offset from a corner to its left side, as the segment `own` needs it, where it meets the segment `other`.
    const auto side = [&](const Vector2& own, const Vector2& other, double half) {
        const Vector2 n1 = own.perpendicular();
        const Vector2 n2 = other.perpendicular();
        const double reach = 1.0 + n1.dot(n2);
        return reach > kSharpest ? (n1 + n2) * (half / reach) : n1 * half;
    };
    for (std::size_t i = 0; i < segments; ++i) {
        const std::size_t j = (i + 1) % n;
        const Vector2 own = direction(i);
        const bool joinsBefore = (closed || i > 0) && line[i].widthIn == line[i].widthOut;
        const bool joinsAfter = (closed || i + 1 < segments) && line[j].widthIn == line[j].widthOut;
        const Vector2 a = side(own, joinsBefore ? direction((i + n - 1) % n) : own, line[i].widthOut / 2.0);
        const Vector2 b = side(own, joinsAfter ? direction(j) : own, line[j].widthIn / 2.0);
        quads.push_back({line[i].p + a, line[j].p + b, line[j].p - b, line[i].p - a});
    }
    return quads;
}

}  // namespace kova::render
