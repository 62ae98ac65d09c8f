#include "engine/fonts/font_sources.hpp"
#include "engine/fonts/stroke_font_table.hpp"

namespace kova::engine {

namespace {

constexpr double kItalicSlant = 0.2679491924311227;  // tan 15 degrees

/// Characters are decoded at their first use.
class StrokeFont final : public Font {
public:
    explicit StrokeFont(double slant) : slant_(slant) {}

    const Glyph& glyph(char32_t c) const override {
        if (c < ascii_.size()) {
            if (ascii_[c] == nullptr) ascii_[c] = &make(c);
            return *ascii_[c];
        }
        const auto it = glyphs_.find(c);
        return it != glyphs_.end() ? it->second : make(c);
    }
    double ascent() const override { return 1.0; }
    double descent() const override { return 1.0 / 3.0; }

private:
    const Glyph& make(char32_t c) const {
        Glyph& g = glyphs_[c];
        const auto table = strokeGlyphData();
        const auto at = std::lower_bound(table.begin(), table.end(), c,
                                         [](const StrokeGlyphData& d, char32_t code) { return d.code < code; });
        if (at != table.end() && at->code == c) {
            decode(*at, g);
        } else if (isBlank(c)) {
            g.advance = c == '\t' ? 3.0 : 0.0;
        } else if (!systemGlyph(c, g)) {
            box(g);
        }
        return g;
    }

    math::Vector2 point(const char* pair) const {
        const double x = static_cast<unsigned char>(pair[0]) - kStrokeZeroX;
        const double y = static_cast<unsigned char>(pair[1]) - kStrokeZeroY;
        return math::Vector2{x + slant_ * y, y} / kStrokeUnits;
    }

    void decode(const StrokeGlyphData& data, Glyph& g) const {
        g.advance = static_cast<double>(data.advance) / kStrokeUnits;
        bool penUp = true;
        for (const char* s = data.strokes; *s != '\0';) {
            if (*s == ' ') {
                penUp = true;
                ++s;
                continue;
            }
            const math::Vector2 p = point(s);
            if (penUp)
                g.shape.moveTo(p);
            else
                g.shape.lineTo(p);
            g.box.expand(p);
            penUp = false;
            s += 2;
        }
    }

    /// What stands for a character that no font has.
    void box(Glyph& g) const {
        const math::Vector2 corners[] = {{0.1, 0.0}, {0.7, 0.0}, {0.7, 1.0}, {0.1, 1.0}};
        std::array<math::Vector2, 4> ring;
        for (std::size_t i = 0; i < 4; ++i) {
            ring[i] = {corners[i].x + slant_ * corners[i].y, corners[i].y};
            g.box.expand(ring[i]);
        }
        g.shape.polygon(ring);
        g.advance = 0.8;
    }

    double slant_;
    mutable std::unordered_map<char32_t, Glyph> glyphs_;  // nodes keep their addresses
    mutable std::array<const Glyph*, 128> ascii_{};
};

/// The letters of the GDT symbol font.
char32_t gdtSymbol(char32_t c) {
    switch (c) {
        case 'a':
            return U'\u2220';  // angularity
        case 'b':
            return U'\u22A5';  // perpendicularity
        case 'c':
            return U'\u23E5';  // flatness
        case 'd':
            return U'\u2313';  // profile of a surface
        case 'e':
            return U'\u25CB';  // circularity
        case 'f':
            return U'\u2225';  // parallelism
        case 'g':
            return U'\u232D';  // cylindricity
        case 'h':
            return U'\u2197';  // circular run-out
        case 'i':
            return U'\u232F';  // symmetry
        case 'j':
            return U'\u2316';  // position
        case 'k':
            return U'\u2312';  // profile of a line
        case 'l':
            return U'\u24C1';  // least material condition
        case 'm':
            return U'\u24C2';  // maximum material condition
        case 'n':
            return U'\u2300';  // diameter
        case 'o':
            return U'\u25A1';  // square
        case 'p':
            return U'\u24C5';  // projected tolerance zone
        case 'r':
            return U'\u25CE';  // concentricity
        case 's':
            return U'\u24C8';  // regardless of feature size
        case 't':
            return U'\u2330';  // total run-out
        case 'u':
            return U'\u23E4';  // straightness
        default:
            return c;
    }
}

class GdtFont final : public Font {
public:
    const Glyph& glyph(char32_t c) const override { return strokeFont().glyph(gdtSymbol(c)); }
    double ascent() const override { return 1.2; }
    double descent() const override { return 1.0 / 3.0; }
};

}  // namespace

bool isBlank(char32_t c) {
    if (c <= 0x20 || c == 0x7F || c == 0xA0) return true;
    if (c < 0x1680) return false;
    return c == 0x1680 || c == 0x180E || (c >= 0x2000 && c <= 0x200F) || (c >= 0x2028 && c <= 0x202F) ||
           (c >= 0x205F && c <= 0x206F) || c == 0x3000 || (c >= 0xFE00 && c <= 0xFE0F) || c == 0xFEFF ||
           (c >= 0xE0000 && c <= 0xE0FFF);
}

const Font& strokeFont() {
    static const StrokeFont font(0.0);
    return font;
}

const Font& slantedStrokeFont() {
    static const StrokeFont font(kItalicSlant);
    return font;
}

const Font& gdtFont() {
    static const GdtFont font;
    return font;
}

}  // namespace kova::engine
