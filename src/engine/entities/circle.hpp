#pragma once

#include "engine/model/entity.hpp"

namespace kova::engine {

/// A circle. Coordinates are those of the object plane of its normal (the world plane for +z).
class CircleEntity final : public Entity {
    KOVA_ENTITY(CircleEntity, Circle)

    CircleEntity(const math::Vector2& middle, double r) : center(middle), radius(r) {}

    math::Vector2 center;
    double radius = 1.0;
};

}  // namespace kova::engine
