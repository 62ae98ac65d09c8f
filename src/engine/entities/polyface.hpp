#pragma once

#include "engine/model/entity.hpp"
#include "math/curves/path.hpp"

namespace kova::engine {

/// Faces over a common list of vertices in space.
class PolyfaceEntity final : public Entity {
    KOVA_ENTITY(PolyfaceEntity, Polyface)

    std::vector<math::Vector3> vertices;
    /// Corners of each face as vertex numbers from 1; negative: the edge from this corner to the next is not drawn.
    std::vector<std::vector<std::int32_t>> faces;

    /// Position of a face corner in `vertices`; nothing for a number outside the list.
    std::optional<std::size_t> vertexIndex(std::int32_t corner) const;
    /// The visible edges in plan.
    Path edges() const;
};

}  // namespace kova::engine
