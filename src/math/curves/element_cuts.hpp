#pragma once

#include <vector>

#include "math/curves/path.hpp"

namespace kova::engine {

/// Appends the parameters in [0, 1] at which a path element that starts at `from` meets the segment ab (ends included,
/// within `tolerance`), in no order. An element that runs along the segment gives the ends of the stretch they share.
void cutElement(const PathElement& e, const math::Vector2& from, const math::Vector2& a, const math::Vector2& b,
                double tolerance, std::vector<double>& out);

}  // namespace kova::engine
