#pragma once

#include <optional>

#include "engine/entities/dimensions/dimension.hpp"
#include "math/angles.hpp"

namespace kova::engine {

/// The bare geometry of the kinds of dimensions, from their definition points: what is measured, before sizes and text.

/// Rotated and Aligned.
struct LinearFrame {
    math::Vector2 dir;        ///< along the dimension line, from the first to the second end
    math::Vector2 extension;  ///< direction of the extension lines, length 1
    math::Vector2 p1;         ///< ends of the dimension line
    math::Vector2 p2;
    double length = 0.0;
};
LinearFrame linearFrame(const DimensionEntity& d);

/// Angular2Line, Angular3Point and ArcLength. The dimension arc runs counter-clockwise.
struct AngularFrame {
    math::Vector2 center;
    double radius = 0.0;  ///< of the dimension arc
    double start = 0.0;   ///< radians
    double sweep = 0.0;   ///< in [0, 2 pi]
    /// Where the extension lines begin; none when that side needs no line.
    std::optional<math::Vector2> origin1;  ///< of the start
    std::optional<math::Vector2> origin2;
    bool swapped = false;  ///< the arc starts at the second definition point (or line)

    math::Vector2 pointAt(double angle) const;
    double end() const { return start + sweep; }
};
/// Nothing for parallel lines and points that coincide.
std::optional<AngularFrame> angularFrame(const DimensionEntity& d);

/// Radius and Diameter.
struct RadialFrame {
    math::Vector2 center;
    math::Vector2 dir{1, 0};  ///< from the centre to the near point
    math::Vector2 nearPoint;  ///< where the arrow stands
    math::Vector2 farPoint;   ///< Diameter: the opposite point; Radius: the centre
    double radius = 0.0;
};
RadialFrame radialFrame(const DimensionEntity& d);

/// Ordinate: the direction of the leader's first and last part.
math::Vector2 ordinateAxis(const DimensionEntity& d);

/// The direction of text along a line at `angle` so that it is read from below or from the right: in (-90, 90] degrees.
double readableAngle(double angle);

/// False when a point that the kind uses is not finite.
bool dimensionIsFinite(const DimensionEntity& d);

}  // namespace kova::engine
