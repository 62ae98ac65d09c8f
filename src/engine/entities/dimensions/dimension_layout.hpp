#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "engine/entities/dimensions/dimension.hpp"
#include "engine/text/mtext_layout.hpp"
#include "engine/model/outline.hpp"
#include "math/curves/path.hpp"

namespace kova::engine {

/// What a piece of a dimension's picture is; it decides colour, linetype and lineweight. Frame: what belongs to the
/// text.
enum class DimPart : std::uint8_t { DimLine, ExtLine1, ExtLine2, CenterMark, Leader, Frame };

/// A dimension worked out: everything that is drawn, in drawing coordinates.
struct DimensionPicture {
    struct Stroke {
        DimPart part = DimPart::DimLine;
        Path path;
    };
    struct Arrow {
        math::Vector2 tip;
        math::Vector2 direction{1, 0};  ///< the way it points, length 1
        double size = 0.0;
        Name block;
    };
    /// A piece of the text: one as a rule, two when it is split by \X, three with inspection data.
    struct Text {
        MTextLayout layout;
        math::Vector2 middle;  ///< of its box, from the middle of the whole text along its directions
        math::Matrix4 matrix;  ///< from the layout's frame to the drawing
    };
    DimStyle style;      ///< the style in force
    double scale = 1.0;  ///< DIMSCALE in force
    std::vector<Stroke> strokes;
    std::vector<Arrow> arrows;
    std::vector<Text> texts;
    bool hasText = false;
    math::Vector2 textMiddle;   ///< middle of the text's box; also set when there is no text
    double textRotation = 0.0;  ///< radians
    double textWidth = 0.0;     ///< of the box without DIMGAP
    double textHeight = 0.0;
    std::string textContent;  ///< with inline codes
    bool textInside = true;   ///< the text stands between the extension lines
    bool arrowsInside = true;

    /// The text's box grown by `margin`: lower left, lower right, upper right, upper left as read.
    std::array<math::Vector2, 4> textBox(double margin = 0.0) const;
};

/// Works out a dimension's picture. Degenerate or non-finite input gives an empty or partial picture.
DimensionPicture layoutDimension(const DimensionEntity& dimension);
/// Emits a picture; `style` is that of the dimension, its properties take the place of ByBlock ones.
void emitDimensionPicture(const DimensionPicture& picture, const Drawing* drawing, OutlineSink& sink,
                          const OutlineStyle& style);

}  // namespace kova::engine
