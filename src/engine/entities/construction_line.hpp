#pragma once

#include <algorithm>
#include <cmath>

#include "math/matrix4.hpp"
#include "math/vector2.hpp"

namespace kova::engine {

/// What construction lines and rays share: a base point and a direction of any length.

/// The point of the line nearest to p; the base when there is no direction. `bothWays` false: not behind the base.
inline math::Vector2 nearestOnUnbounded(const math::Vector2& base, const math::Vector2& dir, bool bothWays,
                                        const math::Vector2& p) {
    const double lengthSquared = dir.length_squared();
    if (!(lengthSquared > 0.0)) return base;
    const double along = (p - base).dot(dir) / lengthSquared;
    return base + dir * (bothWays ? along : std::max(0.0, along));
}

/// The direction under a transform, with its length kept.
inline math::Vector2 transformedDirection(const math::Vector2& dir, const math::Matrix4& m) {
    const math::Vector2 moved = m.transform_direction(dir);
    const double length = moved.length();
    return length > 0.0 ? moved * (dir.length() / length) : dir;
}

/// Of length 1; zero when there is no direction.
inline math::Vector2 unitDirection(const math::Vector2& dir) {
    const double length = dir.length();
    return length > 0.0 && std::isfinite(length) ? dir / length : math::Vector2{};
}

}  // namespace kova::engine
