#pragma once

#include "engine/entity.hpp"
#include "engine/path.hpp"

namespace kova::engine {

/// Straight segments in space.
class Polyline3DEntity final : public Entity {
    KOVA_ENTITY(Polyline3DEntity, Polyline3D)

    explicit Polyline3DEntity(std::vector<math::Vector3> points, bool isClosed = false)
        : vertices(std::move(points)), closed(isClosed) {}

    std::vector<math::Vector3> vertices;
    bool closed = false;

    /// The polyline in plan.
    Path path() const;
    /// Length in space.
    double length() const;
};

}  // namespace kova::engine
