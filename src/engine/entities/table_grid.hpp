#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "math/bounds2.hpp"

namespace kova::engine {

class TableEntity;

/// The cells of a table laid out in the table's frame: x to the right, y up from the insertion point, unrotated.
class TableGrid {
public:
    /// A cell with everything it covers.
    struct Span {
        std::int32_t row = 0;
        std::int32_t col = 0;
        std::int32_t lastRow = 0;
        std::int32_t lastCol = 0;
    };

    explicit TableGrid(const TableEntity& table);

    std::int32_t rows() const { return rows_; }
    std::int32_t cols() const { return cols_; }
    /// The area that a cell belongs to; row and column lie within the table.
    Span spanAt(std::int32_t row, std::int32_t col) const;
    math::Bounds2 box(const Span& span) const;
    /// The first cell of the area at a point; false outside the table.
    bool cellAt(const math::Vector2& p, std::int32_t& row, std::int32_t& col) const;
    /// The lines of the outer border, or the inner ones: as long as possible, left out within merged areas.
    void lines(bool border, const std::function<void(const math::Vector2&, const math::Vector2&)>& line) const;

private:
    bool sameArea(std::int32_t row0, std::int32_t col0, std::int32_t row1, std::int32_t col1) const;

    std::int32_t rows_;
    std::int32_t cols_;
    std::vector<double> x_;  ///< column borders
    std::vector<double> y_;  ///< row borders in row order
    std::vector<Span> merged_;
    std::vector<std::uint32_t> area_;  ///< by cell: 1 + index into merged_, 0: a plain cell; empty without merges
};

}  // namespace kova::engine
