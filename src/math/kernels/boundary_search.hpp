#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "math/vector2.hpp"

namespace kova::math {

/// A straight or circular piece of line work; `bulge` as in polylines.
struct BoundaryPiece {
    Vector2 a;
    Vector2 b;
    double bulge = 0.0;
    int source = 0;  ///< the caller's number for what it belongs to
};

/// A closed outline: a polyline with a bulge to every vertex, counter-clockwise.
struct BoundaryLoop {
    std::vector<Vector2> points;
    std::vector<double> bulges;
    int depth = 0;             ///< islands: how many other islands surround it
    std::vector<int> sources;  ///< of the pieces along it, each once
};

/// The area around a point: its outline and what lies within.
struct BoundaryArea {
    BoundaryLoop outer;
    std::vector<BoundaryLoop> islands;  ///< outlines of connected line work inside, nested ones too
};

/// Finds areas that lines and arcs enclose. Pieces may cross, touch and overlap each other anywhere; they are cut only
/// where a search comes along, so that many pieces cost little when the area is small.
class BoundarySearch {
public:
    /// Pieces without length or with values that are not finite are left out. `gap`: loose ends no farther apart than
    /// this count as joined.
    explicit BoundarySearch(const std::vector<BoundaryPiece>& pieces, double gap = 0.0);
    ~BoundarySearch();
    BoundarySearch(const BoundarySearch&) = delete;
    BoundarySearch& operator=(const BoundarySearch&) = delete;

    /// The smallest area around p; nothing when p is not enclosed. Islands are looked for on request.
    std::optional<BoundaryArea> around(const Vector2& p, bool islands = true);
    /// The outlines of all connected line work, as if seen from far outside: what a set of objects encloses.
    std::vector<BoundaryLoop> outlines();
    /// True when nothing was given because the pieces meet too often (some millions of times) to be worked out.
    bool gaveUp() const;

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace kova::math
