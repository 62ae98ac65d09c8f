#include "engine/entities/table_grid.hpp"

#include "engine/entities/table_entity.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Vector2;

TableGrid::TableGrid(const TableEntity& table) : rows_(table.rowCount()), cols_(table.colCount()) {
    const double down = table.style().flowUp ? 1.0 : -1.0;
    x_.reserve(static_cast<std::size_t>(cols_) + 1);
    y_.reserve(static_cast<std::size_t>(rows_) + 1);
    x_.push_back(0.0);
    y_.push_back(0.0);
    for (std::int32_t c = 0; c < cols_; ++c) x_.push_back(x_.back() + table.colWidth(c));
    for (std::int32_t r = 0; r < rows_; ++r) y_.push_back(y_.back() + down * table.rowHeight(r));

    // A cell covers what lies in its merge range, as far as no cell before it does.
    for (std::int32_t r = 0; r < rows_; ++r) {
        for (std::int32_t c = 0; c < cols_; ++c) {
            const TableCell* cell = table.cell(r, c);
            if (cell == nullptr || (cell->mergeRight <= 0 && cell->mergeDown <= 0) || cell->isMerged) continue;
            if (area_.empty()) area_.resize(static_cast<std::size_t>(rows_) * static_cast<std::size_t>(cols_), 0);
            const auto at = [&](std::int32_t row, std::int32_t col) -> std::uint32_t& {
                return area_[static_cast<std::size_t>(row) * static_cast<std::size_t>(cols_) +
                             static_cast<std::size_t>(col)];
            };
            if (at(r, c) != 0) continue;
            Span span{r, c, r, c};
            const std::int32_t right = std::min(std::max(cell->mergeRight, 0), cols_ - 1 - c);
            const std::int32_t below = std::min(std::max(cell->mergeDown, 0), rows_ - 1 - r);
            while (span.lastCol < c + right && at(r, span.lastCol + 1) == 0) ++span.lastCol;
            const auto rowIsFree = [&](std::int32_t row) {
                for (std::int32_t col = c; col <= span.lastCol; ++col)
                    if (at(row, col) != 0) return false;
                return true;
            };
            while (span.lastRow < r + below && rowIsFree(span.lastRow + 1)) ++span.lastRow;
            merged_.push_back(span);
            for (std::int32_t row = r; row <= span.lastRow; ++row)
                for (std::int32_t col = c; col <= span.lastCol; ++col)
                    at(row, col) = static_cast<std::uint32_t>(merged_.size());
        }
    }
}

TableGrid::Span TableGrid::spanAt(std::int32_t row, std::int32_t col) const {
    if (!area_.empty()) {
        const std::uint32_t area =
            area_[static_cast<std::size_t>(row) * static_cast<std::size_t>(cols_) + static_cast<std::size_t>(col)];
        if (area != 0) return merged_[area - 1];
    }
    return {row, col, row, col};
}

Bounds2 TableGrid::box(const Span& span) const {
    Bounds2 box;
    box.expand(Vector2{x_[static_cast<std::size_t>(span.col)], y_[static_cast<std::size_t>(span.row)]});
    box.expand(Vector2{x_[static_cast<std::size_t>(span.lastCol) + 1], y_[static_cast<std::size_t>(span.lastRow) + 1]});
    return box;
}

bool TableGrid::cellAt(const Vector2& p, std::int32_t& row, std::int32_t& col) const {
    if (rows_ == 0 || cols_ == 0 || !p.is_finite()) return false;
    const double sign = y_.back() < 0.0 ? -1.0 : 1.0;
    const double down = p.y * sign;
    if (p.x < 0.0 || p.x > x_.back() || down < 0.0 || down > y_.back() * sign) return false;
    const auto x = std::upper_bound(x_.begin() + 1, x_.end() - 1, p.x);
    const auto y =
        std::upper_bound(y_.begin() + 1, y_.end() - 1, down, [&](double a, double b) { return a < b * sign; });
    const Span span =
        spanAt(static_cast<std::int32_t>(y - y_.begin() - 1), static_cast<std::int32_t>(x - x_.begin() - 1));
    row = span.row;
    col = span.col;
    return true;
}

bool TableGrid::sameArea(std::int32_t row0, std::int32_t col0, std::int32_t row1, std::int32_t col1) const {
    if (area_.empty()) return false;
    const auto at = [&](std::int32_t row, std::int32_t col) {
        return area_[static_cast<std::size_t>(row) * static_cast<std::size_t>(cols_) + static_cast<std::size_t>(col)];
    };
    return at(row0, col0) != 0 && at(row0, col0) == at(row1, col1);
}

void TableGrid::lines(bool border, const std::function<void(const Vector2&, const Vector2&)>& line) const {
    if (rows_ == 0 || cols_ == 0) return;
    if (border) {
        const Vector2 ring[] = {{0.0, 0.0}, {x_.back(), 0.0}, {x_.back(), y_.back()}, {0.0, y_.back()}, {0.0, 0.0}};
        for (int i = 0; i < 4; ++i) line(ring[i], ring[i + 1]);
        return;
    }
    // Runs of border between neighbouring cells of different areas.
    for (std::int32_t r = 1; r < rows_; ++r) {
        const double y = y_[static_cast<std::size_t>(r)];
        std::int32_t from = 0;
        for (std::int32_t c = 0; c <= cols_; ++c) {
            if (c < cols_ && !sameArea(r - 1, c, r, c)) continue;
            if (c > from) line({x_[static_cast<std::size_t>(from)], y}, {x_[static_cast<std::size_t>(c)], y});
            from = c + 1;
        }
    }
    for (std::int32_t c = 1; c < cols_; ++c) {
        const double x = x_[static_cast<std::size_t>(c)];
        std::int32_t from = 0;
        for (std::int32_t r = 0; r <= rows_; ++r) {
            if (r < rows_ && !sameArea(r, c - 1, r, c)) continue;
            if (r > from) line({x, y_[static_cast<std::size_t>(from)]}, {x, y_[static_cast<std::size_t>(r)]});
            from = r + 1;
        }
    }
}

}  // namespace kova::engine
