#pragma once

#include "engine/model/entity.hpp"

namespace kova::engine {

/// A straight segment in world coordinates. Its start lies at z = `elevation`; its end at z = `endZ` when `hasZ` is
/// set, else at `elevation` too.
class LineEntity final : public Entity {
    KOVA_ENTITY(LineEntity, Line)

    LineEntity(const math::Vector2& from, const math::Vector2& to) : start(from), end(to) {}
    /// A line in space: its start's z becomes the elevation.
    LineEntity(const math::Vector3& from, const math::Vector3& to);

    math::Vector2 start;
    math::Vector2 end;
    double endZ = 0.0;  ///< absolute z of the end; counts only when hasZ is set
    bool hasZ = false;  ///< the end has a z of its own

    math::Vector3 start3() const { return math::Vector3(start, elevation); }
    math::Vector3 end3() const { return math::Vector3(end, hasZ ? endZ : elevation); }
    void setEnds(const math::Vector3& from, const math::Vector3& to);
};

static_assert(sizeof(LineEntity) <= 136, "a drawing holds lines by the million");

}  // namespace kova::engine
