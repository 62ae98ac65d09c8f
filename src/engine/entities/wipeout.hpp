#pragma once

#include "engine/model/entity.hpp"
#include "math/curves/path.hpp"

namespace kova::engine {

/// A polygon that covers what lies below it with the background colour.
class WipeoutEntity final : public Entity {
    KOVA_ENTITY(WipeoutEntity, Wipeout)

    explicit WipeoutEntity(std::vector<math::Vector2> polygon) : vertices(std::move(polygon)) {}

    std::vector<math::Vector2> vertices;  ///< closed by the edge from the last to the first
    bool showFrame = true;

    Path path() const;
};

}  // namespace kova::engine
