#pragma once

#include <array>

#include "engine/model/entity.hpp"
#include "math/curves/path.hpp"

namespace kova::engine {

/// A face with three or four corners in space; a triangle repeats its third corner.
class Face3DEntity final : public Entity {
    KOVA_ENTITY(Face3DEntity, Face3D)

    std::array<math::Vector3, 4> corners;
    std::int32_t edgeFlags = 0;  ///< bit i (1, 2, 4, 8): the edge from corner i to the next is not drawn

    bool isTriangle() const { return corners[2] == corners[3]; }
    bool isEdgeVisible(std::size_t edge) const { return (edgeFlags & (1 << (edge & 3U))) == 0; }
    /// The visible edges in plan.
    Path edges() const;
};

}  // namespace kova::engine
