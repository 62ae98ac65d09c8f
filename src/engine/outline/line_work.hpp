#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "engine/entities/hatch.hpp"
#include "math/curves/path.hpp"
#include "math/kernels/boundary_search.hpp"

namespace kova::engine {

/// Takes down what entities show as lines and curves in plan, for searches of what they enclose.
class LineWork {
public:
    /// The extents that unbounded lines have to cross; asked when there is such a line only.
    using Reach = std::function<math::Bounds2()>;
    LineWork(const Drawing& drawing, Reach reach);
    ~LineWork();
    LineWork(const LineWork&) = delete;
    LineWork& operator=(const LineWork&) = delete;

    /// All lines of an entity; parts of blocks on layers that are off are left out. Good until the next call.
    PathView of(const Entity& entity);
    /// Whether an entity is visible, its layer too.
    bool shows(const Entity& entity) const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

/// Hatches, points, texts and viewports bound nothing.
bool boundsAreas(EntityType type);
/// Appends the elements of a path as lines and arcs; other curves within 1e-6 of their size.
void addPieces(PathView path, int source, std::vector<math::BoundaryPiece>& out);
/// The box round a text with a margin, as it is left free in a hatch; nothing for what is no text.
std::optional<math::BoundaryLoop> textIsland(const Entity& entity);

/// The next figure of a path from element `i` on; i is moved behind it.
PathView nextFigure(PathView path, std::size_t& i);
bool isClosedFigure(PathView figure);
/// A closed figure as a hatch keeps it: a polyline, or edges when it has other curves.
HatchLoop figureLoop(PathView figure);
/// A found loop as a hatch keeps it.
HatchLoop hatchLoop(const math::BoundaryLoop& loop, bool island);
/// A hatch's loop as lines and arcs (other edges approximated).
math::BoundaryLoop polylineLoop(const HatchLoop& loop);

}  // namespace kova::engine
