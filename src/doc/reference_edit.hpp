#pragma once

#include <cstdint>
#include <memory>
#include <unordered_set>
#include <vector>

#include "engine/model/entity.hpp"
#include "math/matrix4.hpp"

namespace kova::doc {

/// A block reference that is being edited in place: its block's contents stand as entities of their own in a space,
/// and what else stands there is locked until the edit is closed.
struct ReferenceEdit {
    /// An entity of the block that was laid out.
    struct Part {
        std::uint64_t id = 0;                   ///< in the space
        std::uint64_t original = 0;             ///< in the block
        std::unique_ptr<engine::Entity> shown;  ///< as it was laid out: what is still like this was not changed
    };
    engine::Name block;
    math::Matrix4 matrix;                      ///< from block coordinates to those of the space
    std::uint64_t reference = 0;               ///< the entity of the space that is hidden meanwhile
    engine::Name layout;                       ///< where it stands; empty: model space
    std::unordered_set<std::uint64_t> locked;  ///< ids of the space that do not belong to it
    std::unordered_set<std::uint64_t> keeps;   ///< ids of the block that were not laid out
    std::vector<Part> parts;
};

}  // namespace kova::doc
