#pragma once

#include "engine/model/entity.hpp"

namespace kova::engine {

/// A construction line, unbounded both ways, in world coordinates.
class XlineEntity final : public Entity {
    KOVA_ENTITY(XlineEntity, Xline)

    XlineEntity(const math::Vector2& point, const math::Vector2& direction) : base(point), dir(direction) {}

    math::Vector2 base;
    math::Vector2 dir{1, 0};  ///< direction; any length but 0
};

}  // namespace kova::engine
