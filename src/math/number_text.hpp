#pragma once

#include <string>

namespace kova::math {

/// Shortest decimal text that reads back the same double ("0.1", "3", "1e+30").
std::string shortest(double value);

}  // namespace kova::math
