#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "engine/model/entity.hpp"
#include "engine/model/styles.hpp"

namespace kova::engine {

/// Kinds of dimensions, as stored. 0 to 6 and 8 are those of DXF group 70; OrdinateX is DXF's 6 with bit 64. A radius
/// with `jogged` set is DXF's kind 9 (LARGE_RADIAL_DIMENSION).
enum class DimensionType : std::uint8_t {
    Rotated = 0,       ///< length along linearRotation
    Aligned = 1,       ///< length along the line def1 - def2
    Angular2Line = 2,  ///< angle between two lines
    Diameter = 3,
    Radius = 4,
    Angular3Point = 5,  ///< angle at a vertex
    Ordinate = 6,       ///< y distance from the datum
    OrdinateX = 7,      ///< x distance from the datum
    ArcLength = 8,
};

/// Frame of the inspection data behind a dimension's text.
enum class InspectionShape : std::uint8_t {
    Off = 0,      ///< no inspection data
    Round = 1,    ///< half circles at the ends
    Angular = 2,  ///< pointed ends
    None = 3,     ///< the fields without a frame
};

/// A dimension. Its picture (lines, arrows, text) is built from the points below, the dimension style and the
/// overrides whenever it is needed: see dimension_layout.hpp.
///
/// Meaning of the points, in world coordinates (in brackets the DXF group):
///
///   kind           def1            def2           def3        def4         dimLine
///   Rotated        1st origin [13] 2nd origin[14]                          on the dimension line [10]
///   Aligned        1st origin [13] 2nd origin[14]                          on the dimension line [10]
///   Angular2Line   line 1    [13]  line 1   [14]  line 2 [15] line 2 [10]  on the arc [16]
///   Angular3Point  1st side  [13]  2nd side [14]  vertex [15]              on the arc [10]
///   Diameter       near point[15]  far point[10]                           where the text was put [11]
///   Radius         centre    [10]  on the circle [15]                      where the text was put [11]
///   Ordinate(X)    feature   [13]  leader end[14] datum  [10]
///   ArcLength      arc start [13]  arc end  [14]  centre [15] leader [16]  on the dimension arc [10]
///
/// The near point of a diameter is the one that dimLine is nearer to. A jogged radius has its override centre in
/// jogCenter [13] and the jog at jogPoint [14]; a jogged Rotated or Aligned dimension has a jog symbol in its
/// dimension line at jogPoint. The arc of ArcLength runs counter-clockwise from def1 to def2; def4 is where its leader
/// touches the arc ((0, 0): no leader).
class DimensionEntity final : public Entity {
    KOVA_ENTITY(DimensionEntity, Dimension)

    DimensionType subType = DimensionType::Rotated;
    math::Vector2 def1;
    math::Vector2 def2;
    math::Vector2 dimLine;
    math::Vector2 def3;
    math::Vector2 def4;
    double textHeight = 0.0;      ///< DIMTXT of this dimension, before DIMSCALE; 0: the style's
    std::string textOverride;     ///< "" or "<>": measured; " ": no text; "<>" within is replaced by the measured text,
                                  ///< "[]" by the alternate units; \X parts what stands above and below the line
    double textRotation = 0.0;    ///< radians, absolute; 0: as the style says
    math::Vector2 userText;       ///< middle of the text when the user has put it: see hasUserText
    double linearRotation = 0.0;  ///< Rotated: direction of the dimension line; Ordinate: of the x axis; radians
    double obliqueAngle = 0.0;    ///< direction of the extension lines, radians; 0: square to the dimension line
    double arrowSize = 0.0;       ///< DIMASZ of this dimension, before DIMSCALE; 0: the style's
    double extGap = 0.0;          ///< DIMEXO likewise
    double extExtension = 0.0;    ///< DIMEXE likewise
    Name dimStyleName = commonNames().standard;
    /// Values of dimension variables that differ from the style's, by upper-case name; they win over the four members
    /// above. Colours are bare indexes.
    std::map<std::string, double> styleOverrides;
    std::map<std::string, std::string> nameOverrides;  ///< arrow blocks, linetypes, text style, DIMPOST, DIMAPOST
    bool jogged = false;
    bool textAtOrigin = false;  ///< the user has put the text at exactly (0, 0)
    math::Vector2 jogCenter;
    math::Vector2 jogPoint;
    bool partialArc = false;    ///< ArcLength: of a part of the arc only
    bool angularLines = false;  ///< an Angular3Point that holds two lines: it is read as Angular2Line
    InspectionShape inspectShape = InspectionShape::Off;
    std::string inspectLabel;
    std::string inspectRate;

    Name blockName;  ///< anonymous block with the picture in the file it came from; not saved in native files

    /// The kind with angularLines taken into account; unknown numbers count as Rotated.
    DimensionType kind() const;
    bool isAngular() const;
    /// A radius whose centre lies off: jogged.
    bool isJoggedRadius() const { return jogged && kind() == DimensionType::Radius; }

    /// True when the user has put the text: userText is not (0, 0), or textAtOrigin is set.
    bool hasUserText() const;
    void setUserText(const math::Vector2& p);
    void clearUserText();

    /// The style in force: the named style, else "Standard", with the four size members and the overrides of this
    /// dimension.
    DimStyle style() const;
    /// The measured value, never negative: drawing units without DIMLFAC, or radians. 0 for degenerate input.
    double measurement() const;
    /// The text as it is displayed, without formatting codes; '\n' between lines.
    std::string text() const;
    /// The same with the inline codes of multiline text (stacked tolerances).
    std::string textContent() const;
    /// The same in a given style: for a dimension that stands in no drawing yet.
    std::string textContent(const DimStyle& style, bool paperSpace) const;

private:
    void moveOrigin(math::Vector2& origin, const math::Vector2& to);
    void moveDimLine(const math::Vector2& to);
    void moveText(const math::Vector2& to);
};

}  // namespace kova::engine
