#pragma once

#include "engine/model/entity.hpp"

namespace kova::engine {

/// A line that starts at its origin and is unbounded one way, in world coordinates.
class RayEntity final : public Entity {
    KOVA_ENTITY(RayEntity, Ray)

    RayEntity(const math::Vector2& point, const math::Vector2& direction) : origin(point), dir(direction) {}

    math::Vector2 origin;
    math::Vector2 dir{1, 0};  ///< direction; any length but 0
};

}  // namespace kova::engine
