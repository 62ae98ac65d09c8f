#pragma once

#include <optional>
#include <vector>

#include "engine/model/drawing.hpp"
#include "engine/entities/block_reference.hpp"

namespace kova::cmd {

/// What lies at a point within a block reference, however deep.
struct NestedPick {
    std::vector<const engine::BlockReferenceEntity*> chain;  ///< the references above it, the outermost first
    std::vector<math::Matrix4> matrices;     ///< of each reference: from its block's coordinates to those of the space
    const engine::Entity* entity = nullptr;  ///< in the block of the last reference, or in its shape
    std::vector<std::shared_ptr<const engine::Block>> shapes;  ///< of dynamic blocks; they keep what is pointed to
};

/// The entity nearest to p of those that the reference shows, which stands in the drawing; nothing for one that shows
/// none. Cycles and what exceeds a million entities are left out.
std::optional<NestedPick> pickNested(const engine::BlockReferenceEntity& reference, const math::Vector2& p);

}  // namespace kova::cmd
