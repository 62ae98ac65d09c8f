#pragma once

#include "cmd/tool.hpp"

namespace kova::cmd {

/// What LIMCHECK says of a point outside the limits of model space; empty: the point is taken.
const char* limitsRefusal(const engine::Drawing& drawing, const math::Vector2& p);
/// The same for a point of the running command: those that draw, place or change objects keep to the limits, looking
/// and measuring go anywhere.
const char* limitsRefusal(ToolHost* host, const engine::Drawing& drawing, const math::Vector2& p);

}  // namespace kova::cmd
