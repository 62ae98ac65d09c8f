#pragma once

#include "engine/model/entity.hpp"
#include "math/curves/path.hpp"

namespace kova::engine {

/// A grid of rows (M) times columns (N) of vertices in space, row after row.
class MeshEntity final : public Entity {
    KOVA_ENTITY(MeshEntity, Mesh)

    std::int32_t rows = 0;
    std::int32_t cols = 0;
    bool closedM = false;  ///< the last row is joined to the first
    bool closedN = false;  ///< the last column is joined to the first
    std::vector<math::Vector3> vertices;
    std::int32_t surfaceType = 0;  ///< 0 none, 5 quadratic B-spline, 6 cubic B-spline, 8 Bezier
    std::int32_t frameRows = 0;    ///< of the frame of a smoothed mesh
    std::int32_t frameCols = 0;
    std::vector<math::Vector3> frame;  ///< of a smoothed mesh: its control points, the vertices before

    /// Rows and columns that the vertices really fill; 0 when there is no grid.
    std::size_t filledRows() const;
    std::size_t filledColumns() const { return cols > 0 ? static_cast<std::size_t>(cols) : 0; }
    /// The lines of the grid in plan.
    Path edges() const;
};

}  // namespace kova::engine
