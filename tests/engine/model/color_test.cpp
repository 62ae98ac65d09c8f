#include "engine/model/color.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace kova::engine {
namespace {

TEST(Color, PaletteFollowsItsRule) {
    // Hue by 15 degrees, brightness by the last digit, odd digits half saturated, channels truncated: worked out here
    // in floating point, apart from the table's own whole-number way.
    const double brightness[] = {1.0, 0.65, 0.5, 0.3, 0.15};
    for (int i = 10; i < 250; ++i) {
        const double high = 255.0 * brightness[i % 10 / 2];
        const double low = i % 2 == 1 ? high / 2.0 : 0.0;
        const double hue = (i / 10 - 1) * 15.0;
        const auto channel = [&](double shift) {
            const double h = std::fmod(hue + shift, 360.0);
            const double share = h < 60 ? h / 60.0 : h < 180 ? 1.0 : h < 240 ? (240.0 - h) / 60.0 : 0.0;
            return static_cast<std::uint8_t>(low + (high - low) * share + 1e-9);
        };
        const Rgb expected{channel(120), channel(0), channel(240)};
        EXPECT_EQ(aciToRgb(static_cast<std::uint8_t>(i)), expected) << i;
    }
}

TEST(Color, PaletteIsTheOneOfFiles) {
    // FNV-1a over index, red, green, blue of all 256 rows of the palette's table.
    std::uint64_t hash = 0xcbf29ce484222325ull;
    for (int i = 0; i < 256; ++i) {
        const Rgb c = aciToRgb(static_cast<std::uint8_t>(i));
        for (const int v : {i, static_cast<int>(c.red), static_cast<int>(c.green), static_cast<int>(c.blue)})
            hash = (hash ^ static_cast<std::uint64_t>(v)) * 0x100000001b3ull;
    }
    EXPECT_EQ(hash, 0x2c6ab8fa986692c2ull);
    EXPECT_EQ(aciToRgb(8), (Rgb{128, 128, 128}));
    EXPECT_EQ(aciToRgb(109), (Rgb{19, 38, 23}));
    EXPECT_EQ(aciToRgb(250), (Rgb{51, 51, 51}));
}

TEST(Color, NearestIndex) {
    for (int i = 1; i < 256; ++i) {
        const Rgb c = aciToRgb(static_cast<std::uint8_t>(i));
        EXPECT_EQ(aciToRgb(nearestAci(c)), c) << i;
    }
    EXPECT_EQ(nearestAci({255, 255, 255}), 7);
    EXPECT_NE(nearestAci({254, 255, 255}), 7);
    EXPECT_EQ(nearestAci({255, 1, 0}), 1);
    EXPECT_NE(nearestAci({0, 0, 0}), 0);
}

TEST(Color, BareIndices) {
    EXPECT_EQ(Color::fromBareIndex(0), Color::byBlock());
    EXPECT_EQ(Color::fromBareIndex(256), Color::byLayer());
    EXPECT_EQ(Color::fromBareIndex(255), Color::index(255));
    EXPECT_FALSE(Color::fromBareIndex(257));
    EXPECT_FALSE(Color::fromBareIndex(-1));
    for (int i = 0; i <= 256; ++i) EXPECT_EQ(Color::fromBareIndex(i)->bareIndex(), i);
    EXPECT_EQ(Color::rgb(255, 0, 0).bareIndex(), 1);
}

TEST(Color, Texts) {
    for (const char* text : {"BYLAYER", "BYBLOCK", "red", "white", "8", "255", "10,20,30", "0,0,0"}) {
        const std::optional<Color> color = parseColor(text);
        ASSERT_TRUE(color) << text;
        EXPECT_EQ(colorText(*color), text);
    }
    EXPECT_EQ(parseColor(" ByLayer "), Color::byLayer());
    EXPECT_EQ(parseColor("CYAN"), Color::index(4));
    EXPECT_EQ(parseColor("7"), Color::index(7));
    EXPECT_EQ(parseColor("RGB:1, 2 ,3"), Color::rgb(1, 2, 3));
    for (const char* text : {"", "0", "256", "-1", "reddish", "1,2", "1,2,256", "1,2,3,4", "1.5", ",,", "RGB:"})
        EXPECT_FALSE(parseColor(text)) << text;
}

TEST(Color, MethodNames) {
    for (const ColorMethod m : {ColorMethod::ByLayer, ColorMethod::ByBlock, ColorMethod::ACI, ColorMethod::RGB})
        EXPECT_EQ(colorMethodFromName(colorMethodName(m)), m);
    EXPECT_FALSE(colorMethodFromName("aci"));
    EXPECT_FALSE(colorMethodFromName(""));
}

}  // namespace
}  // namespace kova::engine
