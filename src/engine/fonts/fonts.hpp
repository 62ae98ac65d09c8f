#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "engine/model/name.hpp"
#include "engine/model/outline.hpp"
#include "math/curves/path.hpp"
#include "math/bounds2.hpp"

class QRawFont;

namespace kova::engine {

/// The shape of one character, in capital heights from the start of the baseline.
struct Glyph {
    Path shape;  ///< strokes, or closed rings to be filled (non-zero winding)
    bool filled = false;
    double advance = 0.0;  ///< to the start of the next character
    math::Bounds2 box;     ///< ink; empty for a blank
};

/// Where a line of text begins and ends along its direction, in capital heights: the bearings of the first and the
/// last character left out, blanks counted. Alignment works with these.
struct TextSpan {
    double start = 0.0;
    double end = 0.0;
    double length() const { return end - start; }
};

using PathCallback = std::function<void(PathView)>;

/// A font for measuring and painting. All numbers are in capital heights: the capital letters are 1 high.
///
/// There is no shaping: characters follow each other by their advances, one glyph a code point. Combining marks stand
/// over the character before them. A character that no font knows is drawn as a box; no character vanishes.
class Font {
public:
    virtual ~Font() = default;
    /// Never without ink except for blanks and control characters.
    virtual const Glyph& glyph(char32_t c) const = 0;
    /// Highest and lowest reach of ordinary letters, both positive.
    virtual double ascent() const = 0;
    virtual double descent() const = 0;
    static constexpr double capHeight = 1.0;

    /// The installed font behind this one, for devices that write text as text; null for stroke fonts.
    virtual const QRawFont* rawFont() const { return nullptr; }
    /// The height of capitals of rawFont() at its own size, in pixels.
    virtual double rawCapital() const { return 1.0; }
    /// The character's number in rawFont(); 0 when that font does not hold it.
    virtual std::uint32_t rawGlyph(char32_t) const { return 0; }

    /// The advance of a UTF-8 text; `tracking` is a factor on every advance.
    double advance(std::string_view text, double tracking = 1.0) const;
    /// Glyph shapes of the run in drawing coordinates, without its lines under, over and through.
    void emitGlyphs(const TextRun& run, const PathCallback& stroke, const PathCallback& fill) const;
};

/// The font for a font file name or family. Names of shape fonts ("txt.shx", "romans") and empty names give the
/// built-in stroke font ("gdt.shx" the symbols of geometric tolerances); names of outline fonts ("arial.ttf",
/// "DejaVu Sans") an installed one, else the nearest substitute, else the stroke font. Fonts live until the process
/// ends. `bigFont` is accepted for completeness: the stroke font holds all the characters it can offer.
const Font& fontFor(Name font, Name bigFont = {}, bool bold = false, bool italic = false);
/// The built-in single-stroke font.
const Font& strokeFont();

/// The advance of the whole run in capital heights (of a vertical run: downwards).
double textAdvance(const TextRun& run);
/// Where the run begins and ends, in capital heights along x (of a vertical run: downwards).
TextSpan textSpan(const TextRun& run);
/// Extents of a run's ink and lines in drawing coordinates; for a run of blanks its baseline. Empty for an empty or
/// non-finite run.
math::Bounds2 textRunBounds(const TextRun& run);
/// Glyph shapes, underline, overline and strike-through in drawing coordinates. Filled shapes are rings to be filled
/// with the non-zero winding rule, one call for each character.
void emitTextRun(const TextRun& run, const PathCallback& stroke, const PathCallback& fill);

/// The lines under, over and through the run alone.
void emitTextLines(const TextRun& run, const PathCallback& stroke);
/// Visits the characters of a run with their shapes and the offsets of their origins in capital heights.
void forEachGlyph(const TextRun& run, const std::function<void(char32_t, const Glyph&, const math::Vector2&)>& at);
/// A shape at an offset (capital heights) within a run, in drawing coordinates.
void placeGlyph(const TextRun& run, const Glyph& glyph, const math::Vector2& offset, Path& out);

/// Distance from one character to the next in vertical text, in capital heights.
inline constexpr double kVerticalPitch = 1.4;

}  // namespace kova::engine
