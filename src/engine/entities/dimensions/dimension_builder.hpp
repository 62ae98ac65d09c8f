#pragma once

#include "engine/entities/dimensions/dimension_geometry.hpp"
#include "engine/entities/dimensions/dimension_layout.hpp"

namespace kova::engine {

/// What the builders of the kinds of dimensions share: sizes in force, the text with its box, and lines that leave
/// room for it.
class DimensionBuilder {
public:
    explicit DimensionBuilder(const DimensionEntity& dimension);

    const DimensionEntity& dim;
    DimensionPicture picture;
    const DimStyle& style() const { return picture.style; }

    // Sizes in drawing units, DIMSCALE applied.
    double arrowSize = 0.0;  ///< of the arrow blocks; a tick of DIMTSZ is a block twice as large
    double textHeight = 0.0;
    double gap = 0.0;  ///< DIMGAP without its sign
    double extGap = 0.0;
    double extExtension = 0.0;
    double lineExtension = 0.0;  ///< DIMDLE
    bool framed = false;         ///< DIMGAP below 0
    Name arrow1;
    Name arrow2;
    bool ticks1 = false;  ///< the arrow takes no room along its line
    bool ticks2 = false;

    double arrowGap1() const { return arrowGap(arrow1, ticks1); }
    double arrowGap2() const { return arrowGap(arrow2, ticks2); }
    /// Room that both arrows need along the dimension line.
    double arrowRoom() const { return (ticks1 ? 0.0 : arrowSize) + (ticks2 ? 0.0 : arrowSize); }

    // Text -------------------------------------------------------------------------------------------------
    bool hasText() const { return picture.hasText; }
    double textWidth() const { return picture.textWidth; }
    double textBoxHeight() const { return picture.textHeight; }
    bool textSplit() const { return split_; }
    /// The text is there and has its place.
    bool placedText() const { return hasText() && placed_; }
    /// Half of the text's box seen along `angle`, when it is turned to `rotation`.
    double halfExtent(double angle, double rotation) const;
    /// Rotation of the text along a line at `angle`: the user's, horizontal (DIMTIH, DIMTOH), or readable along it.
    double textRotation(double angle, bool inside) const;
    /// DIMTAD as it counts for text turned to `rotation` beside a line at `angle`: 0 in line, 1 above, 2 outside, 4
    /// below.
    int textSide(double angle, double rotation) const;
    /// Lays the text with its middle at `middle`.
    void placeText(const math::Vector2& middle, double rotation);
    /// How far the text's middle lies off its line: DIMGAP and half the text, or DIMTVP for text in line.
    double textOffset(int side, double angle, double rotation) const;

    struct Fit {
        bool text = true;         ///< the text stands between the extension lines
        bool arrows = true;       ///< the arrows do
        bool suppressed = false;  ///< arrows that do not fit are left out (DIMSOXD)
    };
    /// Decides by DIMATFIT and DIMTIX for a room of `length` and a text that takes `textLength` of it.
    Fit fit(double length, double textLength) const;

    // Lines ------------------------------------------------------------------------------------------------
    void addLine(DimPart part, const math::Vector2& a, const math::Vector2& b);
    /// A line that is interrupted by the text.
    void addCutLine(DimPart part, const math::Vector2& a, const math::Vector2& b);
    void addArc(DimPart part, const math::Vector2& center, double radius, double from, double to);
    void addCutArc(DimPart part, const math::Vector2& center, double radius, double from, double to);
    void addPath(DimPart part, Path path);
    /// Extension line from an origin to its end on the dimension line, both gaps and DIMFXL taken into account.
    void addExtension(DimPart part, const math::Vector2& origin, const math::Vector2& end);
    /// The arrow of the first (or second) end; leaves it out when it is suppressed.
    void addArrow(const math::Vector2& tip, const math::Vector2& direction, bool second);
    /// A leader from a point to the text's nearer side, the text underlined when it stands above its line.
    void addTextLeader(const math::Vector2& from);
    /// Centre mark and, for a negative DIMCEN, centre lines.
    void addCenterMark(const math::Vector2& center, double radius);

    /// Frames, fills and the leftovers once everything is placed.
    void finish();

private:
    double arrowGap(Name block, bool tick) const;
    void resolveSizes();
    void layoutText();
    void addPiece(std::string_view content);
    void layoutInspection();
    void addArcSymbol();

    bool split_ = false;
    std::vector<Path> textPaths_;  ///< symbol and frames, about the middle of the text
    bool placed_ = false;
};

// One function a family of kinds.
void buildLinear(DimensionBuilder& b);
void buildOrdinate(DimensionBuilder& b);
void buildAngular(DimensionBuilder& b);
void buildRadial(DimensionBuilder& b);

}  // namespace kova::engine
