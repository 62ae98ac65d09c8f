#pragma once

#include <array>

#include "engine/model/entity.hpp"
#include "math/curves/path.hpp"

namespace kova::engine {

/// A filled triangle or quadrangle. Corners go zig-zag: the outline is 0, 1, 3, 2; a triangle repeats the third
/// corner. Coordinates are those of the object plane of its normal (the world plane for +z).
class Solid2DEntity final : public Entity {
    KOVA_ENTITY(Solid2DEntity, Solid2D)

    std::array<math::Vector2, 4> corners;
    bool trace = false;  ///< made as a trace: a wide line

    bool isTriangle() const { return corners[2] == corners[3]; }
    /// The outline in the order it is drawn, without a repeated point.
    std::vector<math::Vector2> outline() const;
    Path path() const;
};

}  // namespace kova::engine
