#pragma once

#include "engine/entities/dimensions/dimension.hpp"

// Dimensions by the points that make them.

namespace kova::engine {

inline DimensionEntity linear(const math::Vector2& a, const math::Vector2& b, const math::Vector2& line,
                              double rotation = 0.0) {
    DimensionEntity d;
    d.subType = DimensionType::Rotated;
    d.def1 = a;
    d.def2 = b;
    d.dimLine = line;
    d.linearRotation = rotation;
    return d;
}

inline DimensionEntity angular(const math::Vector2& vertex, const math::Vector2& a, const math::Vector2& b,
                               const math::Vector2& line) {
    DimensionEntity d;
    d.subType = DimensionType::Angular3Point;
    d.def1 = a;
    d.def2 = b;
    d.def3 = vertex;
    d.dimLine = line;
    return d;
}

inline DimensionEntity radial(DimensionType type, const math::Vector2& a, const math::Vector2& b,
                              const math::Vector2& place) {
    DimensionEntity d;
    d.subType = type;
    d.def1 = a;
    d.def2 = b;
    d.dimLine = place;
    return d;
}

}  // namespace kova::engine
