#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kova::engine {

/// How a colour is given.
enum class ColorMethod : std::uint8_t { ByLayer = 0, ByBlock = 1, ACI = 2, RGB = 3 };

/// Where a bare colour index is used, this value means ByLayer and 0 means ByBlock.
inline constexpr int kAciByLayer = 256;
inline constexpr int kAciByBlock = 0;

/// A colour as entities, layers and styles hold it; a default one is ByLayer.
struct Color {
    ColorMethod method = ColorMethod::ByLayer;
    std::uint8_t aci = 7;  ///< used when the method is ACI
    std::uint8_t red = 255;
    std::uint8_t green = 255;
    std::uint8_t blue = 255;

    static constexpr Color byLayer() { return {}; }
    static constexpr Color byBlock() { return {ColorMethod::ByBlock}; }
    static constexpr Color index(std::uint8_t aci) { return {ColorMethod::ACI, aci}; }
    static constexpr Color rgb(std::uint8_t r, std::uint8_t g, std::uint8_t b) {
        return {ColorMethod::RGB, 7, r, g, b};
    }
    /// From a bare index: 0 ByBlock, 256 ByLayer, 1..255 ACI; nothing for any other value.
    static std::optional<Color> fromBareIndex(int index);
    /// The bare index: 0 ByBlock, 256 ByLayer, the ACI index, or the nearest ACI index of an RGB colour.
    int bareIndex() const;

    /// Equal in what counts for the method (the RGB bytes of an ACI colour do not).
    friend constexpr bool operator==(const Color& a, const Color& b) {
        if (a.method != b.method) return false;
        if (a.method == ColorMethod::ACI) return a.aci == b.aci;
        if (a.method == ColorMethod::RGB) return a.red == b.red && a.green == b.green && a.blue == b.blue;
        return true;
    }
};

/// "ByLayer", "ByBlock", "ACI" or "RGB".
std::string_view colorMethodName(ColorMethod method);
std::optional<ColorMethod> colorMethodFromName(std::string_view name);

struct Rgb {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    friend constexpr bool operator==(const Rgb&, const Rgb&) = default;
};

/// The RGB triple of an ACI index 0..255.
Rgb aciToRgb(std::uint8_t aci);
/// The ACI index 1..255 (never 0, and 7 only for white) that lies nearest to the triple.
std::uint8_t nearestAci(Rgb rgb);

/// The colour as users read it: "BYLAYER", "BYBLOCK", "red", "white", "30", "10,20,30".
std::string colorText(const Color& color);
/// A colour as users type it: ByLayer, ByBlock, 1-255, the seven names, "r,g,b"; nothing when it is none.
std::optional<Color> parseColor(std::string_view text);

}  // namespace kova::engine
