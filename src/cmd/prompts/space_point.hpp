#pragma once

#include "cmd/dialogue.hpp"
#include "math/vector3.hpp"

namespace kova::cmd {

/// A point answer with its typed z: the third coordinate, counted from the last point's behind "@"; without one the
/// last point's z behind "@", else the current elevation.
math::Vector3 spacePoint(const Answer& answer, double lastZ, const engine::Drawing& drawing);

/// Three numbers as typed, "x,y,z" or "x,y" (z 0), whatever the UCS; nothing for other texts.
std::optional<math::Vector3> typedDirection(std::string_view text);

}  // namespace kova::cmd
