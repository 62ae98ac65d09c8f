#pragma once

#include "cmd/dialogue.hpp"

namespace kova::cmd {

/// The reference of ROTATE and SCALE: a typed value, or two points whose direction (an angle, radians) or distance (a
/// length above 0) counts; `fallback` for Enter. "@" starts at the command's last point.
Task<double> askReference(Ask& ask, doc::Document& document, std::string prompt, bool angle, double fallback);

/// The same by two points only (option Points). Nothing: given up.
Task<std::optional<double>> askByTwoPoints(Ask& ask, bool angle);

/// A point whose typed coordinates are meant as a displacement: the way to it from the origin of the UCS.
math::Vector2 displacementOf(const engine::Drawing& drawing, const math::Vector2& point);

/// The base point and second point of MOVE, or a displacement; zero when given up.
Task<math::Vector2> askDisplacement(Ask& ask, const engine::Drawing& drawing);

}  // namespace kova::cmd
