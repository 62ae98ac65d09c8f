#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "engine/model/entity.hpp"
#include "math/kernels/polyline_offset.hpp"

namespace kova::engine {

/// True for the kinds that have parallels: line, circle, arc, ellipse, polyline, spline, construction line and ray.
bool canOffset(const Entity& entity);

/// The distance of the parallel that runs through p (in plan, drawing units): positive to the left of the entity's
/// direction. Nothing when p lies on the entity, or the entity has no parallels.
std::optional<double> offsetDistanceTo(const Entity& entity, const math::Vector2& p);

/// The parallels at a distance (as above) as new entities with the properties of the old one: none when there is no
/// room, several when a polyline falls apart. Parallels of ellipses and splines are splines, within 1e-6 of their size;
/// where they would run back on themselves, polylines.
std::vector<std::unique_ptr<Entity>> offsetEntity(const Entity& entity, double distance, math::OffsetGap gap);

}  // namespace kova::engine
