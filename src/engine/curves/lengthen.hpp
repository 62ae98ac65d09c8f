#pragma once

#include <memory>
#include <optional>

#include "engine/curves/edit_curve.hpp"

namespace kova::engine {

/// Included angle of a circular arc, radians; nothing for any other curve.
std::optional<double> includedAngle(const EditCurve& curve);

/// The open, bounded curve with another length (drawing units), changed at its start or its end. Null when the length
/// is not above 0, an arc would close, or the curve (a spline) cannot grow.
std::unique_ptr<Entity> withLength(const EditCurve& curve, bool atEnd, double length);

/// The curve changed at one end so that it ends at the place of its line or arc nearest to p. Null as above.
std::unique_ptr<Entity> withEndNear(const EditCurve& curve, bool atEnd, const math::Vector2& p);

}  // namespace kova::engine
