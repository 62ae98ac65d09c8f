#pragma once

#include <vector>

#include "engine/model/entity.hpp"
#include "math/matrix4.hpp"

namespace kova::engine {
class BlockReferenceEntity;
}

namespace kova::script::lisp {

/// An entity within blocks that a point picks.
struct NestedPick {
    const engine::Entity* entity = nullptr;  ///< null: none; an attribute's reference when `attribute` is set
    std::size_t attribute = 0;               ///< from 1: that attribute of the reference; 0: none
    math::Matrix4 toWorld;                   ///< from the coordinates of the entity's block
    std::vector<std::uint64_t> containers;   ///< handles of the references that it stands in, the innermost first
};

/// The entity nearest to p (world coordinates) among the attributes and the contents of a block reference, however
/// deep. Cyclic blocks, nesting and grids beyond the limits of drawing are passed over.
NestedPick pickNested(const engine::BlockReferenceEntity& reference, const math::Vector2& p);

}  // namespace kova::script::lisp
