#pragma once

#include "engine/model/entity.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

/// A circular arc, counter-clockwise from startAngle to endAngle (radians); equal angles are a full turn.
/// Coordinates are those of the object plane of its normal (the world plane for +z).
class ArcEntity final : public Entity {
    KOVA_ENTITY(ArcEntity, Arc)

    ArcEntity(const math::Vector2& middle, double r, double from, double to)
        : center(middle), radius(r), startAngle(from), endAngle(to) {}

    math::Vector2 center;
    double radius = 1.0;
    double startAngle = 0.0;
    double endAngle = math::kPi;

    /// Counter-clockwise sweep in (0, 2 pi].
    double sweep() const { return math::sweepAngle(startAngle, endAngle); }
    /// Points of the object plane.
    math::Vector2 pointAt(double angle) const { return center + radius * math::unitAt(angle); }
    math::Vector2 startPoint() const { return pointAt(startAngle); }
    math::Vector2 endPoint() const { return pointAt(endAngle); }
    math::Vector2 midPoint() const { return pointAt(startAngle + sweep() / 2.0); }
    double arcLength() const { return std::abs(radius) * sweep(); }
};

}  // namespace kova::engine
