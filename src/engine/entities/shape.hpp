#pragma once

#include <cstdint>
#include <string>

#include "engine/model/entity.hpp"
#include "math/curves/path.hpp"

namespace kova::engine {

/// A shape of a shape file: drawn from the file (beside the drawing) or the built-in shapes; when neither knows it, as
/// a box of its size with its name inside.
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
    /// What the pen draws, in the shape's own units; empty when nobody knows the shape.
    Path outline() const;
};

}  // namespace kova::engine
