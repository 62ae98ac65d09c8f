#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "engine/model/name.hpp"
#include "engine/model/outline.hpp"
#include "math/bounds2.hpp"

namespace kova::engine {

class Drawing;
struct MTextBlock;

/// Horizontal alignment of single-line text, as stored.
enum TextHAlign : std::int32_t {
    kHAlignLeft = 0,
    kHAlignCenter = 1,
    kHAlignRight = 2,
    kHAlignAligned = 3,  ///< between two points, the height follows from the width
    kHAlignMiddle = 4,   ///< centred both ways on the point
    kHAlignFit = 5,      ///< between two points at the text's height, the width factor follows
};
/// Vertical alignment of single-line text, as stored.
enum TextVAlign : std::int32_t { kVAlignBaseline = 0, kVAlignBottom = 1, kVAlignMiddle = 2, kVAlignTop = 3 };
/// Generation bits of single-line text.
enum TextGeneration : std::int32_t { kTextBackward = 2, kTextUpsideDown = 4 };

/// One line of text as TEXT, attribute definitions and the attributes of block references hold it. Attributes may hold
/// paragraphs instead, which lie in the same frame.
struct TextLine {
    std::string_view content;   ///< with its %% codes
    math::Vector2 position;     ///< the alignment point; of aligned and fit text the first point
    math::Vector2 secondPoint;  ///< of aligned and fit text
    bool hasSecondPoint = false;
    double height = 2.5;
    double rotation = 0.0;  ///< radians; aligned and fit text runs along its two points instead
    std::int32_t hAlign = kHAlignLeft;
    std::int32_t vAlign = kVAlignBaseline;
    Name textStyle = commonNames().standard;
    double widthFactor = 1.0;
    double oblique = 0.0;  ///< radians
    std::int32_t generation = 0;
    bool paragraphs = false;  ///< the content is that of multiline text
    double wrapWidth = 0.0;   ///< of paragraphs; 0: lines are not wrapped
};

/// Where and how large a line of text is drawn.
struct TextLinePlacement {
    math::Vector2 origin;       ///< start of the baseline; of vertical text the top centre of the first character
    math::Vector2 xAxis{1, 0};  ///< one capital height along the baseline
    math::Vector2 yAxis{0, 1};
    double start = 0.0;  ///< where the ink begins and ends, in capital heights from the origin
    double end = 0.0;
    double ascent = 1.0;
    double descent = 0.0;
    bool vertical = false;
    bool valid = false;  ///< false for an empty or non-finite text
    /// Paragraphs: lengths count in drawing units, and the origin is the alignment point.
    bool paragraphs = false;

    /// The text's box: lower left, lower right, upper right, upper left as the reader sees them.
    std::array<math::Vector2, 4> box() const;
};

/// Styles are looked up in `drawing`; null takes the defaults.
TextLinePlacement placeTextLine(const TextLine& line, const Drawing* drawing);
/// Paragraphs as the layout of multiline text takes them: text between two points is wrapped there, and the top of the
/// first line stands where a single line has its baseline.
MTextBlock paragraphBlock(const TextLine& line, const Drawing* drawing);
void emitTextLine(const TextLine& line, const Drawing* drawing, OutlineSink& sink, const OutlineStyle& style);
/// Extents of the ink; for blank text its baseline, for an empty one its position.
math::Bounds2 textLineBounds(const TextLine& line, const Drawing* drawing);
/// p inside the text's box, else the nearest point of the box's edge.
math::Vector2 nearestOnTextLine(const TextLine& line, const Drawing* drawing, const math::Vector2& p);
/// The start of the left-aligned baseline: what DXF keeps as the first point of justified text.
math::Vector2 textLineBaselineStart(const TextLine& line, const Drawing* drawing);

/// p when it lies within the four-cornered box (in order, either sense), else the nearest point of its edges.
math::Vector2 nearestInQuad(const std::array<math::Vector2, 4>& box, const math::Vector2& p);

/// What a transform does to a text's frame: rotation, scale factors and generation bits.
/// The baseline direction and the height direction are carried through the matrix; the slant that remains goes to
/// `oblique` (limited to 85 degrees), a turned-over plane to the backward bit of `generation`.
struct TextFrame {
    double rotation = 0.0;
    double height = 1.0;
    double widthFactor = 1.0;
    double oblique = 0.0;
    std::int32_t generation = 0;
};
void transformTextFrame(TextFrame& frame, const math::Matrix4& m);

/// The fields of a line of text that a transform changes.
struct TextLineFields {
    math::Vector2& position;
    math::Vector2& secondPoint;
    bool hasSecondPoint;
    double& height;
    double& rotation;
    double& widthFactor;
    double& oblique;
    std::int32_t& generation;
    double* wrapWidth = nullptr;  ///< of paragraphs
};
/// Text between two points that is turned over swaps them, so that it keeps its reading direction.
void transformTextLine(const TextLineFields& fields, const math::Matrix4& m);

/// Grips of a line of text: the alignment point, then the second point or the start of the baseline where they differ
/// from it.
std::vector<math::Vector2> textLineGrips(const TextLine& line, const Drawing* drawing);
/// Moves one of these grips; of text between two points only that point moves, else the whole text.
void moveTextLineGrip(const TextLineFields& fields, const TextLine& line, const Drawing* drawing, std::size_t index,
                      const math::Vector2& to);

}  // namespace kova::engine
