#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/model/color.hpp"
#include "engine/model/describe.hpp"
#include "engine/model/name.hpp"
#include "engine/model/outline.hpp"
#include "math/bounds2.hpp"

namespace kova::engine {

class Drawing;

/// Attachment of multiline text: which point of its box lies at the insertion point, as stored.
enum MTextAttachment : std::int32_t {
    kAttachTopLeft = 1,
    kAttachTopCenter = 2,
    kAttachTopRight = 3,
    kAttachMiddleLeft = 4,
    kAttachMiddleCenter = 5,
    kAttachMiddleRight = 6,
    kAttachBottomLeft = 7,
    kAttachBottomCenter = 8,
    kAttachBottomRight = 9,
};

/// Columns of multiline text.
struct MTextColumns {
    std::int32_t type = 0;  ///< 0 none, 1 static, 2 dynamic
    std::int32_t count = 0;
    double width = 0.0;
    double gutter = 0.0;
    bool autoHeight = false;      ///< dynamic columns of one common height
    bool flowReversed = false;    ///< the first column stands at the right
    std::vector<double> heights;  ///< one for each column of dynamic columns with heights of their own

    bool used() const { return type != 0; }
    void describe(FieldVisitor& v);
    friend bool operator==(const MTextColumns&, const MTextColumns&) = default;
};

/// A block of multiline text: what MTEXT, dimensions, leaders, table cells and tolerances give to the layout.
struct MTextBlock {
    std::string_view content;  ///< with inline codes
    math::Vector2 position;    ///< where the attachment point lies
    double height = 2.5;       ///< of capital letters
    double width = 0.0;        ///< lines are wrapped here; 0: not wrapped
    double rotation = 0.0;     ///< radians
    std::int32_t attachment = kAttachTopLeft;
    double lineSpacingFactor = 1.0;
    bool lineSpacingExact = false;  ///< lines never move apart for tall characters
    Name textStyle = commonNames().standard;
    double definedHeight = 0.0;  ///< height of static columns, 0: as the text needs
    const MTextColumns* columns = nullptr;
    double widthFactor = 1.0;  ///< on top of the style's
    double oblique = 0.0;      ///< radians, on top of the style's
    bool backward = false;     ///< drawn as a mirror image
};

/// Multiline text laid out in its own frame: x along the lines, y up, the attachment point at the origin, drawing
/// units, before rotation.
struct MTextLayout {
    /// A stretch of text in one font. `run.text` is empty; use runOf().
    struct Piece {
        std::size_t offset = 0;  ///< into `text`
        std::size_t size = 0;
        TextRun run;
        std::optional<Color> color;
    };
    /// A fraction line or bar.
    struct Rule {
        math::Vector2 a;
        math::Vector2 b;
        std::optional<Color> color;
    };
    std::string text;  ///< of all pieces, codes resolved
    std::vector<Piece> pieces;
    std::vector<Rule> rules;
    math::Bounds2 box;                   ///< the whole text's box: wrap width or text width, by its height
    std::vector<math::Bounds2> columns;  ///< box of each column
    std::size_t lineCount = 0;
    double baseline = 0.0;      ///< y of the first line's baseline
    double lastBaseline = 0.0;  ///< y of the last line's baseline

    /// Extents of what is really drawn, under a map of the layout's frame.
    math::Bounds2 ink(const math::Matrix4& matrix) const;
    TextRun runOf(const Piece& piece) const {
        TextRun r = piece.run;
        r.text = std::string_view(text).substr(piece.offset, piece.size);
        return r;
    }
};

/// Never fails: unknown codes are shown as they stand, groups that are open at the end are closed. Position, rotation
/// and mirroring of the block are not applied (see mtextMatrix).
MTextLayout layoutMText(const MTextBlock& block, const Drawing* drawing);
/// From the layout's frame to drawing coordinates.
math::Matrix4 mtextMatrix(const MTextBlock& block);
/// Lays out and emits the text.
void emitMText(const MTextBlock& block, const Drawing* drawing, OutlineSink& sink, const OutlineStyle& style);
/// The same for a layout that is at hand.
void emitMTextLayout(const MTextLayout& layout, const math::Matrix4& matrix, OutlineSink& sink,
                     const OutlineStyle& style);

/// The text of a content with inline codes as a reader sees it: paragraphs and column breaks as '\n', tabs as '\t',
/// stacks as "a/b".
std::string plainText(std::string_view content);
/// A plain text as content: backslashes and braces escaped, '\n' as \P.
std::string mtextFromPlain(std::string_view text);

}  // namespace kova::engine
