#pragma once

#include <span>
#include <vector>

#include "math/curves/path.hpp"
#include "engine/model/records.hpp"
#include "math/bounds2.hpp"

namespace kova::engine {

// Limits of one hatch. A pattern that needs more is too dense to be read as lines.
inline constexpr std::size_t kMaxHatchLines = 1'000'000;   ///< crossings of pattern lines with the boundary, halved
inline constexpr std::size_t kMaxHatchDashes = 2'000'000;  ///< pieces of line and dots

struct HatchSegment2 {
    math::Vector2 a;
    math::Vector2 b;
};

struct HatchLineLimits {
    std::size_t lines = kMaxHatchLines;
    std::size_t dashes = kMaxHatchDashes;
};

/// The lines of a pattern inside an area.
struct HatchLines {
    std::vector<HatchSegment2> segments;  ///< all lines and dashes, family by family
    std::vector<math::Vector2> dots;
    /// The limits were reached: the lists are empty, and the area is best filled solid.
    bool overflow = false;
};

using HatchRing = std::vector<math::Vector2>;

/// Clips families of parallel lines against an area bounded by closed polygons (even-odd; a repeated last point does no
/// harm). Families are in final form: origin in drawing coordinates, lengths as drawn, `shift` along and across the
/// family's direction.
///
/// A dash list without a gap is a continuous line; one of dots alone is dotted at the distance of its lines. Only what
/// crosses `window` is made when one is given. Rings with coordinates that are not finite are left out.
HatchLines hatchLines(std::span<const HatchRing> rings, std::span<const HatchFamily> families,
                      const math::Bounds2* window = nullptr, const HatchLineLimits& limits = {});

/// The same for a path, its curves flattened within `tolerance`.
HatchLines hatchLines(PathView rings, std::span<const HatchFamily> families, double tolerance,
                      const math::Bounds2* window = nullptr, const HatchLineLimits& limits = {});

}  // namespace kova::engine
