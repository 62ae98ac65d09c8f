#pragma once

#include <optional>

#include "engine/modify/outline_parts.hpp"

namespace kova::cmd {

/// The most entities that one object may fall into.
inline constexpr std::size_t kMaxParts = 1'000'000;

/// The parts that an entity falls into when it is exploded once, in drawing order; nothing when it cannot be exploded
/// (simple curves, texts of one line, solid fills, blocks that must stay whole, more than kMaxParts parts). The entity
/// stands in its drawing.
///
/// Parts look as the whole did, but for the rules of blocks: what stands in a block keeps its own properties, so layer
/// "0" stays layer "0" and ByBlock stays ByBlock, and attributes become their definitions again. Polylines lose their
/// widths.
std::optional<EntityParts> explodedParts(const engine::Entity& entity);

}  // namespace kova::cmd
