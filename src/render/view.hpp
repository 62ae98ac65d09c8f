#pragma once

#include <QPointF>
#include <cmath>

#include "math/bounds2.hpp"
#include "math/matrix4.hpp"
#include "math/vector2.hpp"

namespace kova::render {

/// Maps drawing coordinates to pixels: a similarity with y turned over.
struct View {
    // pixel x = a * x + b * y + dx, pixel y = c * x + d * y + dy
    double a = 1.0, b = 0.0, c = 0.0, d = -1.0, dx = 0.0, dy = 0.0;
    double scale = 1.0;    ///< pixels per drawing unit
    math::Bounds2 pixels;  ///< the visible rectangle in pixels

    /// The view that puts `center` (drawing) on the middle of a picture.
    static View centred(double width, double height, double scale, const math::Vector2& center) {
        View v;
        v.a = scale;
        v.d = -scale;
        v.dx = width / 2.0 - scale * center.x;
        v.dy = height / 2.0 + scale * center.y;
        v.scale = scale;
        v.pixels = {{0.0, 0.0}, {width, height}};
        return v;
    }
    /// This view of what `m` (a similarity of the plane) maps into its drawing coordinates.
    View under(const math::Matrix4& m) const {
        View v = *this;
        v.a = a * m(0, 0) + b * m(1, 0);
        v.b = a * m(0, 1) + b * m(1, 1);
        v.c = c * m(0, 0) + d * m(1, 0);
        v.d = c * m(0, 1) + d * m(1, 1);
        v.dx = a * m(0, 3) + b * m(1, 3) + dx;
        v.dy = c * m(0, 3) + d * m(1, 3) + dy;
        v.scale = std::sqrt(std::abs(v.a * v.d - v.b * v.c));
        return v;
    }
    math::Vector2 map(const math::Vector2& p) const { return {a * p.x + b * p.y + dx, c * p.x + d * p.y + dy}; }
    math::Vector2 mapDirection(const math::Vector2& p) const { return {a * p.x + b * p.y, c * p.x + d * p.y}; }
    math::Vector2 unmap(const math::Vector2& p) const {
        const double det = a * d - b * c;
        const math::Vector2 q{p.x - dx, p.y - dy};
        return {(d * q.x - b * q.y) / det, (a * q.y - c * q.x) / det};
    }
    /// The visible rectangle in drawing coordinates.
    math::Bounds2 visible() const {
        math::Bounds2 box;
        for (const math::Vector2& p : {pixels.min, pixels.max, math::Vector2{pixels.min.x, pixels.max.y},
                                       math::Vector2{pixels.max.x, pixels.min.y}})
            box.expand(unmap(p));
        return box;
    }
};

}  // namespace kova::render
