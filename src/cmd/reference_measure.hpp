#pragma once

#include "cmd/dialogue.hpp"

namespace kova::cmd {

/// The reference of ROTATE and SCALE: a typed value, or two points whose direction (an angle, radians) or distance (a
/// length above 0) counts; `fallback` for Enter. "@" starts at the command's last point.
Task<double> askReference(Ask& ask, const engine::Drawing& drawing, std::string prompt, bool angle, double fallback);

/// The same by two points only (option Points). Nothing: given up.
Task<std::optional<double>> askByTwoPoints(Ask& ask, bool angle);

}  // namespace kova::cmd
