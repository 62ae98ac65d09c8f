#pragma once

#include <functional>
#include <span>
#include <vector>

#include "math/bounds2.hpp"
#include "math/vector2.hpp"

namespace kova::render {

/// A stretch of a dashed line that is drawn; a dot has two equal ends.
struct Dash {
    math::Vector2 from;
    math::Vector2 to;
};

/// Lays a dash pattern along a chain of points (pixels). The pattern is centred, so that both ends of the line are
/// drawn, as drafting asks; a line too short for it is continuous, and so is a pattern finer than a pixel can show.
/// `mark` (optional) gets the position and direction where each pattern entry ends: there stands the shape or text of
/// a complex linetype, measured from that point on. The line's own end has none.
/// `dot`: pixels that can be told apart. Returns false when the line is to be drawn continuous.
bool layDashes(std::span<const math::Vector2> points, std::span<const double> pattern, const math::Bounds2& visible,
               double dot, const std::function<void(std::span<const math::Vector2>)>& dash,
               const std::function<void(std::size_t entry, const math::Vector2& at, double angle)>& mark = {});

}  // namespace kova::render
