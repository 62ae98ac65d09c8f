#pragma once

#include <cstdint>

namespace kova::engine {

// Bits of LinetypeElement::flags. An element stands at the end of the pattern's entry that carries it; its offsets count
// from there, along the line and to its left.
inline constexpr std::int32_t kElementAbsolute = 1;  ///< the rotation counts from the x axis, not from the line
inline constexpr std::int32_t kElementText = 2;
inline constexpr std::int32_t kElementShape = 4;
inline constexpr std::int32_t kElementUpright = 8;  ///< a text that is never read upside down

}  // namespace kova::engine
