#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "cmd/dialogue.hpp"
#include "engine/entities/hatch.hpp"

namespace kova::cmd::commands {

/// What a hatch is filled with.
struct HatchFill {
    engine::Name pattern{"ANSI31"};
    bool user = false;  ///< parallel lines `spacing` apart instead of the pattern
    double scale = 1.0;
    double angle = 0.0;  ///< radians
    double spacing = 1.0;
    bool doubled = false;
    std::optional<engine::HatchGradient> gradient;  ///< instead of all above
    std::int32_t islandStyle = engine::HatchEntity::kOuter;

    /// What the HP variables say.
    static HatchFill current(const engine::Drawing& drawing);
    static HatchFill of(const engine::HatchEntity& hatch);
    /// Sets the HP variables, which new hatches start from.
    void store(engine::Drawing& drawing) const;
    void applyTo(engine::HatchEntity& hatch) const;

    /// Takes a pattern by its name, with ",N" ",O" or ",I" behind it for the island style. False: no such pattern.
    bool choose(const engine::Drawing& drawing, std::string_view text);
};

/// Prints the patterns that can be named, those of the drawing first.
Dialogue listHatchPatterns(Ask& ask, const engine::Drawing& drawing);
/// The questions behind Properties: pattern, solid, user defined or gradient, with their values.
Dialogue askHatchFill(Ask& ask, const engine::Drawing& drawing, HatchFill& fill);
/// Scale and angle of a pattern; a solid fill has none.
Dialogue askHatchScale(Ask& ask, const engine::Drawing& drawing, HatchFill& fill);
Dialogue askHatchGradient(Ask& ask, const engine::Drawing& drawing, HatchFill& fill);

/// Ignore, Outer or Normal.
Dialogue askIslandStyle(Ask& ask, const char* question, std::int32_t& style);
/// The place in the drawing order as HPDRAWORDER counts: 0 none, 1 back, 2 front, 3 behind and 4 before the boundary.
/// Nothing: Enter.
Task<std::optional<int>> askHatchOrder(Ask& ask);
/// The corner of the boundary's box where a pattern starts, as HPORIGINMODE counts from 1.
Task<int> askOriginCorner(Ask& ask);
/// That point of the loops' box; nothing for mode 0 and for loops without extents.
std::optional<math::Vector2> hatchOriginAt(int mode, const std::vector<engine::HatchLoop>& loops);

/// Moves hatches to their place in the drawing order, as part of the open group. `boundary`: ids of what bounds them.
void orderHatches(doc::Document& document, const std::vector<engine::Entity*>& hatches,
                  const std::vector<std::uint64_t>& boundary, int mode);

}  // namespace kova::cmd::commands
