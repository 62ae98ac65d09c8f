#pragma once

#include "engine/model/entity.hpp"

namespace kova::engine {

/// The distance from p to the nearest point of an entity; infinite when it has no shape, so that nothing invisible is
/// picked.
inline double distanceToShape(const Entity& entity, const math::Vector2& p, bool empty) {
    return empty ? std::numeric_limits<double>::infinity() : p.distance_to(entity.nearestPoint(p));
}

}  // namespace kova::engine
