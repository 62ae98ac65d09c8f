#pragma once

#include "engine/model/entity.hpp"
#include "math/curves/path.hpp"

namespace kova::engine {

/// Straight segments in space.
class Polyline3DEntity final : public Entity {
    KOVA_ENTITY(Polyline3DEntity, Polyline3D)

    explicit Polyline3DEntity(std::vector<math::Vector3> points, bool isClosed = false)
        : vertices(std::move(points)), closed(isClosed) {}

    std::vector<math::Vector3> vertices;
    bool closed = false;
    std::int32_t curveType = 0;        ///< 0 none, 5 quadratic B-spline, 6 cubic B-spline
    std::vector<math::Vector3> frame;  ///< with a curve: its control points, the vertices before it was fitted

    /// The polyline in plan.
    Path path() const;
    /// Length in space.
    double length() const;
};

}  // namespace kova::engine
