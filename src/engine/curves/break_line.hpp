#pragma once

#include <memory>

#include "engine/entities/polyline.hpp"

namespace kova::engine {

/// The line that shows that a part goes on: from a to b, `extension` longer at both ends, with a zigzag of length and
/// height `size` as near to `place` as both fit between a and b. Null when it does not fit or a size is not above 0.
std::unique_ptr<PolylineEntity> breakLine(const math::Vector2& a, const math::Vector2& b, const math::Vector2& place,
                                          double size, double extension);

}  // namespace kova::engine
