#pragma once

#include "engine/model/entity.hpp"

namespace kova::engine {

/// A point in world coordinates; its z is the elevation. Its symbol is chosen by the drawing (PDMODE, PDSIZE).
class PointEntity final : public Entity {
    KOVA_ENTITY(PointEntity, Point)

    explicit PointEntity(const math::Vector2& at) : position(at) {}

    math::Vector2 position;
};

}  // namespace kova::engine
