#pragma once

#include <cstdint>
#include <string>

#include "engine/entity.hpp"

namespace kova::engine {

/// A shape of a shape file. Shape files are not read, so it is drawn as a box of its size with its name inside.
class ShapeEntity final : public Entity {
    KOVA_ENTITY(ShapeEntity, Shape)

    math::Vector2 position;
    std::string name;
    std::int32_t number = 0;  ///< within the shape file
    std::string file;
    double size = 1.0;
    double rotation = 0.0;     ///< radians
    double widthFactor = 1.0;  ///< negative: mirrored
    double oblique = 0.0;      ///< radians

    /// Map from the unit square of the shape to drawing coordinates.
    math::Matrix4 matrix() const;
};

}  // namespace kova::engine
