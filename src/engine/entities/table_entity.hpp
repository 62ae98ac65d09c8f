#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "engine/model/entity.hpp"
#include "engine/model/styles.hpp"

namespace kova::engine {

struct MTextBlock;

struct TableCell {
    std::string content;          ///< multiline text with inline codes
    std::int32_t alignment = 0;   ///< 1..9 as MText attachment; 0: the table style's
    std::int32_t mergeRight = 0;  ///< number of further columns that this cell covers
    std::int32_t mergeDown = 0;   ///< number of further rows that this cell covers
    bool isMerged = false;        ///< covered by another cell
    Name textStyle;               ///< empty: the table style's

    void describe(FieldVisitor& v);
    friend bool operator==(const TableCell&, const TableCell&) = default;
};

/// A table of text cells. The insertion point is its upper left corner (lower left when the style flows up).
class TableEntity final : public Entity {
    KOVA_ENTITY(TableEntity, Table)

    math::Vector2 insertion;
    std::int32_t rows = 0;
    std::int32_t cols = 0;
    std::vector<double> rowHeights;           ///< a missing one is the style's default
    std::vector<double> colWidths;            ///< a missing one is the style's default
    double textHeight = 0.0;                  ///< of all cells; 0: by the style's row types
    std::vector<double> rowTextHeights;       ///< by row; a missing or zero one is textHeight
    Name styleName = commonNames().standard;  ///< table style
    std::vector<TableCell> cells;             ///< row by row from the title row on; missing ones are empty
    double rotation = 0.0;                    ///< radians
    double horizontalMargin = -1.0;           ///< between a cell's sides and its text; below 0: the style's
    double verticalMargin = -1.0;             ///< above and below the text; below 0: the style's

    enum class RowType { Title, Header, Data };

    /// Limits of what is laid out and drawn.
    static constexpr std::int32_t kMaxRows = 100000;
    static constexpr std::int32_t kMaxCols = 10000;
    static constexpr std::int32_t kMaxCells = 4000000;
    /// Rows and columns within these limits.
    std::int32_t rowCount() const;
    std::int32_t colCount() const;

    /// Sets the numbers of rows and columns; cells keep their places, new sizes are the style's defaults.
    void resize(std::int32_t newRows, std::int32_t newCols) { resize(newRows, newCols, style()); }
    /// The same for a table that stands in no drawing yet, and so cannot find its style.
    void resize(std::int32_t newRows, std::int32_t newCols, const TableStyle& sizes);
    /// Null outside the table or where no cell is stored.
    TableCell* cell(std::int32_t row, std::int32_t col);
    const TableCell* cell(std::int32_t row, std::int32_t col) const;
    /// The cell, with the cell list completed as needed; throws std::out_of_range outside the table.
    TableCell& ensureCell(std::int32_t row, std::int32_t col);
    RowType rowType(std::int32_t row) const;
    double rowHeight(std::int32_t row) const;
    double colWidth(std::int32_t col) const;
    double totalWidth() const;
    double totalHeight() const;
    /// Text height, alignment and style that a cell shows.
    double cellTextHeight(std::int32_t row) const;
    std::int32_t cellAlignment(std::int32_t row, std::int32_t col) const;
    Name cellTextStyle(std::int32_t row, std::int32_t col) const;
    /// The margins in force, never below 0.
    double marginAcross() const;
    double marginUpright() const;
    /// Merges a range of cells into its first one; false when the range leaves the table.
    bool mergeCells(std::int32_t row0, std::int32_t col0, std::int32_t row1, std::int32_t col1);
    /// Undoes the merge that covers the cell.
    void unmergeCells(std::int32_t row, std::int32_t col);
    /// Row and column of the cell at a point of the drawing; false outside. A merged area gives its first cell.
    bool cellAt(const math::Vector2& p, std::int32_t& row, std::int32_t& col) const;
    /// The cell's area in the table's frame: x to the right, y up from the insertion point, unrotated.
    math::Bounds2 cellBox(std::int32_t row, std::int32_t col) const;
    /// Gives every cell's text as the layout takes it, placed in the drawing, and its colour (ByBlock: the table's own).
    void eachText(const std::function<void(const MTextBlock& text, const Color& color)>& use) const;
    /// Makes every row at least as high as its wrapped text needs.
    void fitRowHeights();
    /// The table style in force.
    const TableStyle& style() const;
};

}  // namespace kova::engine
