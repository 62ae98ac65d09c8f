#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "edit/boundary_shapes.hpp"

namespace kova::cmd::commands {

/// Said when there is no area.
inline constexpr const char* kNoHatchBoundary = "Valid hatch boundary not found.";

/// One area to be filled: its loops with the handles of their objects, and the ids of all those objects.
struct HatchArea {
    std::vector<engine::HatchLoop> loops;
    std::vector<std::uint64_t> sources;
    std::optional<math::Vector2> seed;
    const char* refusal = kNoHatchBoundary;  ///< why there are no loops
    std::optional<math::BoundaryLoop> kept;  ///< a drawn outline that is to stay as a polyline
};

/// Finds the areas round picked points. The line work of the drawing is looked at with the first pick and kept.
class HatchAreaFinder {
public:
    explicit HatchAreaFinder(doc::Document& document) : document_(document) {}

    /// Bounds are looked for among these entities; empty: among all.
    void limitTo(std::optional<std::vector<std::uint64_t>> ids);
    /// Gaps up to this length count as closed.
    void setGap(double gap);
    /// Islands by the style's rule (HatchEntity::IslandStyle) unless `islands` is off. Nothing: no closed outline.
    std::optional<HatchArea> around(const math::Vector2& p, std::int32_t islandStyle, bool islands);
    /// Why the last search gave nothing, in one line.
    const char* refusal() const;

private:
    void take(const math::BoundaryLoop& loop, bool island, HatchArea& area) const;

    doc::Document& document_;
    std::optional<std::vector<std::uint64_t>> only_;
    double gap_ = 0.0;
    std::optional<BoundaryWork> work_;
    std::unique_ptr<math::BoundarySearch> search_;
};

/// What selected objects enclose, as one area, selected texts left free in it. Without loops when they enclose nothing;
/// `refusal` then tells why.
HatchArea areaOfObjects(doc::Document& document, std::span<const std::uint64_t> ids, double gap);

/// Whether one loop runs as the other one, wherever either begins.
bool sameOutline(const engine::HatchLoop& a, const engine::HatchLoop& b);

/// Takes out the loops that have the extents of one of the figures. Gives their number.
std::size_t removeLoops(std::vector<engine::HatchLoop>& loops, const std::vector<engine::HatchLoop>& figures);

}  // namespace kova::cmd::commands
