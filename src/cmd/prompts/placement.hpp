#pragma once

#include <functional>
#include <optional>

#include "cmd/dialogue.hpp"
#include "engine/entities/block_reference.hpp"

namespace kova::cmd {

/// What is asked where a block or an external reference is placed.
struct PlacementRequest {
    bool external = false;  ///< offers the options of external references in place of Basepoint and Explode
    bool exploded = false;  ///< the name says so: one scale for all axes
    /// True for a block that takes one scale only; looked at when scales are asked for. Empty: none does.
    std::function<bool()> scalesAlike;
    const char* wholeOnly = nullptr;  ///< told at Explode where the command never places parts
    /// False, after a line that says why, where the block cannot be placed as its parts.
    std::function<bool()> mayExplode;
};

/// Where and how a reference stands.
struct Placement {
    math::Vector2 point;
    math::Vector2 base;  ///< another base point, relative to the block's and in its coordinates
    double scaleX = 1.0;
    double scaleY = 1.0;
    std::optional<double> scaleZ;  ///< absent: as X
    double rotation = 0.0;         ///< in the world, radians
    bool exploded = false;

    /// Puts a reference to this place; `factor` multiplies its scales.
    void applyTo(engine::BlockReferenceEntity& reference, const engine::Block& block, double factor = 1.0) const;
};

/// The conversation of INSERT, MINSERT and XATTACH from the insertion point to the rotation. Nothing: given up at the
/// insertion point.
Task<std::optional<Placement>> askPlacement(Ask& ask, doc::Document& document, PlacementRequest request);

}  // namespace kova::cmd
