#include "engine/model/color.hpp"

#include "engine/model/name.hpp"

namespace kova::engine {

namespace {

/// The chromatic part of the palette, indices 10..249: 24 hues of 15 degrees, each in five brightnesses (by the
/// last digit) and, for odd last digits, half saturated. Channels are truncated to whole numbers; everything is
/// counted in 1/800 of a channel step, so that no rounding can creep in.
constexpr Rgb chromatic(int index) {
    constexpr int percent[] = {100, 65, 50, 30, 15};
    const int high = 255 * 8 * percent[index % 10 / 2];
    const int low = index % 2 == 1 ? high / 2 : 0;
    const int hue = index / 10 - 1;
    const int rising = low + (high - low) / 4 * (hue % 4);
    const int falling = high - (high - low) / 4 * (hue % 4);
    const auto rgb = [](int r, int g, int b) {
        return Rgb{static_cast<std::uint8_t>(r / 800), static_cast<std::uint8_t>(g / 800),
                   static_cast<std::uint8_t>(b / 800)};
    };
    switch (hue / 4) {
        case 0:
            return rgb(high, rising, low);
        case 1:
            return rgb(falling, high, low);
        case 2:
            return rgb(low, high, rising);
        case 3:
            return rgb(low, falling, high);
        case 4:
            return rgb(rising, low, high);
        default:
            return rgb(high, low, falling);
    }
}

constexpr std::array<Rgb, 256> makePalette() {
    std::array<Rgb, 256> palette{};
    constexpr Rgb primary[] = {{0, 0, 0},   {255, 0, 0},   {255, 255, 0},   {0, 255, 0},     {0, 255, 255},
                               {0, 0, 255}, {255, 0, 255}, {255, 255, 255}, {128, 128, 128}, {192, 192, 192}};
    constexpr Rgb greys[] = {{51, 51, 51},    {91, 91, 91},    {132, 132, 132},
                             {173, 173, 173}, {214, 214, 214}, {255, 255, 255}};
    for (std::size_t i = 0; i < 10; ++i) palette[i] = primary[i];
    for (std::size_t i = 10; i < 250; ++i) palette[i] = chromatic(static_cast<int>(i));
    for (std::size_t i = 250; i < 256; ++i) palette[i] = greys[i - 250];
    return palette;
}

constexpr std::array<Rgb, 256> kPalette = makePalette();
constexpr std::string_view kColorNames[] = {"red", "yellow", "green", "cyan", "blue", "magenta", "white"};

constexpr bool isBlank(char c) { return c == ' ' || c == '\t'; }

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

/// A whole number from 0 to `limit`, consumed to the end; nothing for any other text.
std::optional<int> wholeNumber(std::string_view text, int limit) {
    text = trimmed(text);
    int value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || result.ec != std::errc{} || result.ptr != text.data() + text.size()) return std::nullopt;
    if (value < 0 || value > limit) return std::nullopt;
    return value;
}

}  // namespace

std::optional<Color> Color::fromBareIndex(int index) {
    if (index == kAciByBlock) return byBlock();
    if (index == kAciByLayer) return byLayer();
    if (index < 1 || index > 255) return std::nullopt;
    return Color::index(static_cast<std::uint8_t>(index));
}

int Color::bareIndex() const {
    switch (method) {
        case ColorMethod::ByLayer:
            return kAciByLayer;
        case ColorMethod::ByBlock:
            return kAciByBlock;
        case ColorMethod::ACI:
            return aci;
        case ColorMethod::RGB:
            return nearestAci({red, green, blue});
    }
    return kAciByLayer;
}

std::string_view colorMethodName(ColorMethod method) {
    constexpr std::string_view names[] = {"ByLayer", "ByBlock", "ACI", "RGB"};
    const auto i = static_cast<std::size_t>(method);
    return i < std::size(names) ? names[i] : names[0];
}

std::optional<ColorMethod> colorMethodFromName(std::string_view name) {
    for (const ColorMethod m : {ColorMethod::ByLayer, ColorMethod::ByBlock, ColorMethod::ACI, ColorMethod::RGB})
        if (colorMethodName(m) == name) return m;
    return std::nullopt;
}

Rgb aciToRgb(std::uint8_t aci) { return kPalette[aci]; }

std::uint8_t nearestAci(Rgb rgb) {
    // 7 is the foreground colour, drawn black on paper: it stands for pure white only.
    if (rgb == kPalette[7]) return 7;
    int best = 1;
    int bestDistance = std::numeric_limits<int>::max();
    for (int i = 1; i < 256 && bestDistance > 0; ++i) {
        if (i == 7) continue;
        const Rgb& p = kPalette[static_cast<std::size_t>(i)];
        const int dr = p.red - rgb.red;
        const int dg = p.green - rgb.green;
        const int db = p.blue - rgb.blue;
        const int distance = dr * dr + dg * dg + db * db;
        if (distance >= bestDistance) continue;
        bestDistance = distance;
        best = i;
    }
    return static_cast<std::uint8_t>(best);
}

std::string colorText(const Color& color) {
    switch (color.method) {
        case ColorMethod::ByLayer:
            return "BYLAYER";
        case ColorMethod::ByBlock:
            return "BYBLOCK";
        case ColorMethod::ACI:
            if (color.aci >= 1 && color.aci <= 7) return std::string(kColorNames[color.aci - 1]);
            return std::to_string(color.aci);
        case ColorMethod::RGB:
            return std::to_string(color.red) + "," + std::to_string(color.green) + "," + std::to_string(color.blue);
    }
    return "BYLAYER";
}

std::optional<Color> parseColor(std::string_view text) {
    text = trimmed(text);
    if (equalNoCase(text, "BYLAYER")) return Color::byLayer();
    if (equalNoCase(text, "BYBLOCK")) return Color::byBlock();
    for (std::size_t i = 0; i < std::size(kColorNames); ++i)
        if (equalNoCase(text, kColorNames[i])) return Color::index(static_cast<std::uint8_t>(i + 1));
    if (text.size() > 4 && equalNoCase(text.substr(0, 4), "RGB:")) text.remove_prefix(4);
    const std::size_t first = text.find(',');
    if (first == std::string_view::npos) {
        const std::optional<int> index = wholeNumber(text, 255);
        if (!index || *index < 1) return std::nullopt;
        return Color::index(static_cast<std::uint8_t>(*index));
    }
    const std::size_t second = text.find(',', first + 1);
    if (second == std::string_view::npos) return std::nullopt;
    const std::optional<int> r = wholeNumber(text.substr(0, first), 255);
    const std::optional<int> g = wholeNumber(text.substr(first + 1, second - first - 1), 255);
    const std::optional<int> b = wholeNumber(text.substr(second + 1), 255);
    if (!r || !g || !b) return std::nullopt;
    return Color::rgb(static_cast<std::uint8_t>(*r), static_cast<std::uint8_t>(*g), static_cast<std::uint8_t>(*b));
}

}  // namespace kova::engine
