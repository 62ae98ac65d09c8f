#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "engine/model/entity.hpp"

namespace kova::engine {

/// One row of a feature control frame. Symbols are single letters of the GDT symbol font (names are understood too):
/// a angularity, b perpendicularity, c flatness, d profile of a surface, e circularity, f parallelism,
/// g cylindricity, h circular run-out, i symmetry, j position, k profile of a line, r concentricity, t total run-out,
/// u straightness. Material conditions: m maximum, l least, s regardless of size, p projected zone; empty: none.
struct ToleranceRow {
    std::string symbol;
    std::string toleranceValue;  ///< with its codes, such as a leading %%c
    std::string toleranceMC;
    std::string toleranceValue2;
    std::string toleranceMC2;
    std::string datum1;
    std::string datum1MC;
    std::string datum2;
    std::string datum2MC;
    std::string datum3;
    std::string datum3MC;
    bool whole = false;  ///< the row is one text, toleranceValue, without cell marks (projected zone, datum identifier)

    bool empty() const;
    void describe(FieldVisitor& v);
    friend bool operator==(const ToleranceRow&, const ToleranceRow&) = default;
};

/// A geometric tolerance: a frame of one or more rows, its left edge's middle (of the first row) at the insertion
/// point.
class ToleranceEntity final : public Entity {
    KOVA_ENTITY(ToleranceEntity, Tolerance)

    math::Vector2 insertion;
    double textHeight = 0.0;                  ///< 0: the dimension style's
    Name styleName = commonNames().standard;  ///< dimension style
    double rotation = 0.0;                    ///< radians
    ToleranceRow first;
    std::vector<ToleranceRow> rows;  ///< further rows below it

    /// The content as DXF holds it: symbols as {\Fgdt;x}, cells parted by %%v, rows by '\n'.
    std::string contentText() const;
    /// Takes a content in that form ("^J" and '\n' part rows). Never fails; more than 64 rows are left out.
    void setContentText(std::string_view content);
    /// The text height in force.
    double effectiveTextHeight() const;
    static constexpr std::size_t kMaxRows = 64;
};

/// "Position", "Flatness" ... for a symbol letter; empty for any other text.
std::string_view toleranceSymbolName(std::string_view letter);
/// The letter for a symbol's letter or name, without regard to case; empty for any other text.
std::string_view toleranceSymbolLetter(std::string_view letterOrName);

}  // namespace kova::engine
