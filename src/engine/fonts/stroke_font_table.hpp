#pragma once

#include <cstdint>
#include <span>

namespace kova::engine {

/// A character of the stroke font. Units: 42 are a capital height.
struct StrokeGlyphData {
    char32_t code;
    std::int16_t advance;
    /// Polylines, parted by blanks; each point is two characters: x + 28 and y + 24, both counted from '!'.
    const char* strokes;
};
inline constexpr int kStrokeUnits = 42;
inline constexpr int kStrokeZeroX = '!' + 28;
inline constexpr int kStrokeZeroY = '!' + 24;

/// All characters, ascending by code.
std::span<const StrokeGlyphData> strokeGlyphData();

}  // namespace kova::engine
