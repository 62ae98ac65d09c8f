#include "engine/entities/table_entity.hpp"

#include <array>

#include "engine/model/drawing.hpp"
#include "engine/text/mtext_layout.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/entities/table_grid.hpp"
#include "engine/text/text_line.hpp"
#include "math/angles.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Matrix4;
using math::Vector2;

namespace {

constexpr double kSmallest = 1e-9;  ///< rows and columns never get smaller than this part of the table's text
constexpr std::size_t kMaxColumnGrips = 1000;

double usable(double stored, double otherwise) { return std::isfinite(stored) && stored > 0.0 ? stored : otherwise; }

Matrix4 placement(const TableEntity& t) {
    return Matrix4::translation(t.insertion) * Matrix4::rotation_z(std::isfinite(t.rotation) ? t.rotation : 0.0);
}

std::array<Vector2, 4> corners(const Bounds2& b, const Matrix4& m) {
    return {m.transform_point(b.min), m.transform_point(Vector2{b.max.x, b.min.y}), m.transform_point(b.max),
            m.transform_point(Vector2{b.min.x, b.max.y})};
}

/// The whole table in its frame.
Bounds2 tableBox(const TableEntity& t) {
    const double height = t.totalHeight();
    const double width = t.totalWidth();
    return t.style().flowUp ? Bounds2{{0.0, 0.0}, {width, height}} : Bounds2{{0.0, -height}, {width, 0.0}};
}

const TableStyleRow& rowStyle(const TableStyle& style, TableEntity::RowType type) {
    return type == TableEntity::RowType::Title    ? style.title
           : type == TableEntity::RowType::Header ? style.header
                                                  : style.data;
}

/// The text of a cell within its area; the content is only looked at.
MTextBlock cellBlock(const TableEntity& t, const TableCell& cell, std::int32_t row, std::int32_t col,
                     const Bounds2& box) {
    const double height = t.cellTextHeight(row);
    MTextBlock block;
    block.content = cell.content;
    block.height = height;
    block.attachment = t.cellAlignment(row, col);
    block.textStyle = t.cellTextStyle(row, col);
    const double marginX = std::min(t.marginAcross(), box.width() / 4.0);
    const double marginY = std::min(t.marginUpright(), box.height() / 4.0);
    block.width = std::max(box.width() - 2.0 * marginX, kSmallest * height);
    const std::int32_t across = (block.attachment - 1) % 3;
    const std::int32_t down = (block.attachment - 1) / 3;
    block.position.x = across == 0 ? box.min.x + marginX : across == 1 ? box.center().x : box.max.x - marginX;
    block.position.y = down == 0 ? box.max.y - marginY : down == 1 ? box.center().y : box.min.y + marginY;
    return block;
}

}  // namespace

void TableCell::describe(FieldVisitor& v) {
    v.text("content", content);
    v.integer("alignment", alignment);
    v.integer("mergeRight", mergeRight);
    v.integer("mergeDown", mergeDown);
    v.boolean("isMerged", isMerged);
    v.name("textStyle", textStyle);
}

const TableStyle& TableEntity::style() const {
    static const TableStyle standard;
    const Drawing* d = drawing();
    if (d == nullptr) return standard;
    if (const TableStyle* known = d->tableStyles.find(styleName)) return *known;
    const TableStyle* fallback = d->tableStyles.find(commonNames().standard);
    return fallback != nullptr ? *fallback : standard;
}

std::int32_t TableEntity::colCount() const { return std::clamp(cols, 0, kMaxCols); }

std::int32_t TableEntity::rowCount() const {
    const std::int32_t columns = colCount();
    return columns == 0 ? 0 : std::clamp(rows, 0, std::min(kMaxRows, kMaxCells / columns));
}

TableEntity::RowType TableEntity::rowType(std::int32_t row) const {
    const TableStyle& s = style();
    if (s.hasTitle && row == 0) return RowType::Title;
    if (s.hasHeader && row == (s.hasTitle ? 1 : 0)) return RowType::Header;
    return RowType::Data;
}

double TableEntity::rowHeight(std::int32_t row) const {
    const double otherwise = usable(style().defaultRowHeight, 9.0);
    return row >= 0 && static_cast<std::size_t>(row) < rowHeights.size()
               ? usable(rowHeights[static_cast<std::size_t>(row)], otherwise)
               : otherwise;
}

double TableEntity::colWidth(std::int32_t col) const {
    const double otherwise = usable(style().defaultColWidth, 63.5);
    return col >= 0 && static_cast<std::size_t>(col) < colWidths.size()
               ? usable(colWidths[static_cast<std::size_t>(col)], otherwise)
               : otherwise;
}

double TableEntity::totalWidth() const {
    double width = 0.0;
    for (std::int32_t c = 0; c < colCount(); ++c) width += colWidth(c);
    return width;
}

double TableEntity::totalHeight() const {
    double height = 0.0;
    for (std::int32_t r = 0; r < rowCount(); ++r) height += rowHeight(r);
    return height;
}

double TableEntity::cellTextHeight(std::int32_t row) const {
    if (row >= 0 && static_cast<std::size_t>(row) < rowTextHeights.size()) {
        const double own = usable(rowTextHeights[static_cast<std::size_t>(row)], 0.0);
        if (own > 0.0) return own;
    }
    if (usable(textHeight, 0.0) > 0.0) return textHeight;
    const TableStyle& s = style();
    const RowType type = rowType(row);
    return usable(type == RowType::Title    ? s.titleTextHeight
                  : type == RowType::Header ? s.headerTextHeight
                                            : s.textHeight,
                  4.5);
}

std::int32_t TableEntity::cellAlignment(std::int32_t row, std::int32_t col) const {
    const TableCell* c = cell(row, col);
    if (c != nullptr && c->alignment >= 1 && c->alignment <= 9) return c->alignment;
    const std::int32_t alignment = rowStyle(style(), rowType(row)).alignment;
    return alignment >= 1 && alignment <= 9 ? alignment : static_cast<std::int32_t>(kAttachMiddleCenter);
}

Name TableEntity::cellTextStyle(std::int32_t row, std::int32_t col) const {
    const TableCell* c = cell(row, col);
    return c != nullptr && !c->textStyle.empty() ? c->textStyle : style().textStyle;
}

double TableEntity::marginAcross() const {
    return std::max(0.0, horizontalMargin >= 0.0 ? horizontalMargin : style().cellMargin);
}

double TableEntity::marginUpright() const {
    return std::max(0.0, verticalMargin >= 0.0 ? verticalMargin : style().verticalMargin);
}

TableCell* TableEntity::cell(std::int32_t row, std::int32_t col) {
    if (row < 0 || col < 0 || row >= rows || col >= cols) return nullptr;
    const std::size_t index =
        static_cast<std::size_t>(row) * static_cast<std::size_t>(cols) + static_cast<std::size_t>(col);
    return index < cells.size() ? &cells[index] : nullptr;
}

const TableCell* TableEntity::cell(std::int32_t row, std::int32_t col) const {
    return const_cast<TableEntity*>(this)->cell(row, col);
}

TableCell& TableEntity::ensureCell(std::int32_t row, std::int32_t col) {
    if (row < 0 || col < 0 || row >= rowCount() || col >= colCount()) throw std::out_of_range("no such table cell");
    const std::size_t index =
        static_cast<std::size_t>(row) * static_cast<std::size_t>(cols) + static_cast<std::size_t>(col);
    if (index >= cells.size()) cells.resize(static_cast<std::size_t>(rowCount()) * static_cast<std::size_t>(cols));
    return cells[index];
}

void TableEntity::resize(std::int32_t newRows, std::int32_t newCols, const TableStyle& sizes) {
    newCols = std::clamp(newCols, 0, kMaxCols);
    newRows = std::clamp(newRows, 0, newCols == 0 ? 0 : std::min(kMaxRows, kMaxCells / newCols));
    std::vector<TableCell> moved(static_cast<std::size_t>(newRows) * static_cast<std::size_t>(newCols));
    for (std::int32_t r = 0; r < std::min(rowCount(), newRows); ++r)
        for (std::int32_t c = 0; c < std::min(colCount(), newCols); ++c)
            if (TableCell* old = cell(r, c))
                moved[static_cast<std::size_t>(r) * static_cast<std::size_t>(newCols) + static_cast<std::size_t>(c)] =
                    std::move(*old);
    const double newHeight = usable(sizes.defaultRowHeight, 9.0);
    const double newWidth = usable(sizes.defaultColWidth, 63.5);
    cells = std::move(moved);
    rows = newRows;
    cols = newCols;
    rowHeights.resize(static_cast<std::size_t>(newRows), newHeight);
    colWidths.resize(static_cast<std::size_t>(newCols), newWidth);
    if (!rowTextHeights.empty()) rowTextHeights.resize(static_cast<std::size_t>(newRows), 0.0);
}

bool TableEntity::mergeCells(std::int32_t row0, std::int32_t col0, std::int32_t row1, std::int32_t col1) {
    if (row0 > row1) std::swap(row0, row1);
    if (col0 > col1) std::swap(col0, col1);
    if (row0 < 0 || col0 < 0 || row1 >= rowCount() || col1 >= colCount()) return false;
    for (std::int32_t r = row0; r <= row1; ++r) {
        for (std::int32_t c = col0; c <= col1; ++c) {
            TableCell& covered = ensureCell(r, c);
            covered.mergeRight = 0;
            covered.mergeDown = 0;
            covered.isMerged = r != row0 || c != col0;
        }
    }
    TableCell& first = ensureCell(row0, col0);
    first.mergeRight = col1 - col0;
    first.mergeDown = row1 - row0;
    return true;
}

void TableEntity::unmergeCells(std::int32_t row, std::int32_t col) {
    const TableGrid grid(*this);
    if (row < 0 || col < 0 || row >= grid.rows() || col >= grid.cols()) return;
    const TableGrid::Span span = grid.spanAt(row, col);
    for (std::int32_t r = span.row; r <= span.lastRow; ++r) {
        for (std::int32_t c = span.col; c <= span.lastCol; ++c) {
            TableCell* covered = cell(r, c);
            if (covered == nullptr) continue;
            covered->mergeRight = 0;
            covered->mergeDown = 0;
            covered->isMerged = false;
        }
    }
}

bool TableEntity::cellAt(const Vector2& p, std::int32_t& row, std::int32_t& col) const {
    const auto back = placement(*this).inverse();
    if (!back) return false;
    const TableGrid grid(*this);
    return grid.cellAt(back->transform_point(p), row, col);
}

void TableEntity::eachText(const std::function<void(const MTextBlock&, const Color&)>& use) const {
    const TableGrid grid(*this);
    const Matrix4 m = placement(*this);
    for (std::int32_t r = 0; r < grid.rows(); ++r) {
        const Color& color = rowStyle(style(), rowType(r)).textColor;
        for (std::int32_t c = 0; c < grid.cols(); ++c) {
            const TableCell* at = cell(r, c);
            if (at == nullptr || at->content.empty()) continue;
            const TableGrid::Span span = grid.spanAt(r, c);
            if (span.row != r || span.col != c) continue;
            MTextBlock block = cellBlock(*this, *at, r, c, grid.box(span));
            block.position = m.transform_point(block.position);
            block.rotation = std::isfinite(rotation) ? rotation : 0.0;
            use(block, color);
        }
    }
}

Bounds2 TableEntity::cellBox(std::int32_t row, std::int32_t col) const {
    const TableGrid grid(*this);
    if (row < 0 || col < 0 || row >= grid.rows() || col >= grid.cols()) return {};
    return grid.box(grid.spanAt(row, col));
}

void TableEntity::fitRowHeights() {
    const TableGrid grid(*this);
    rowHeights.resize(static_cast<std::size_t>(grid.rows()), usable(style().defaultRowHeight, 9.0));
    const double margins = 2.0 * marginUpright();
    for (std::int32_t r = 0; r < grid.rows(); ++r) {
        for (std::int32_t c = 0; c < grid.cols(); ++c) {
            const TableCell* at = cell(r, c);
            if (at == nullptr || at->content.empty()) continue;
            const TableGrid::Span span = grid.spanAt(r, c);
            if (span.row != r || span.col != c || span.lastRow != r) continue;  // spread over several rows: room enough
            const MTextBlock block = cellBlock(*this, *at, r, c, grid.box(span));
            const double needed = layoutMText(block, drawing()).box.height() + margins;
            double& height = rowHeights[static_cast<std::size_t>(r)];
            if (needed > height) height = needed;
        }
    }
}

Bounds2 TableEntity::bounds() const {
    Bounds2 bounds;
    if (!insertion.is_finite()) return bounds;
    for (const Vector2& c : corners(tableBox(*this), placement(*this))) bounds.expand(c);
    return bounds;
}

void TableEntity::transform(const Matrix4& m) {
    // There is no mirrored table: the text stays readable and the table takes the place of its image.
    const bool mirrored = m.plane_determinant() < 0.0;
    const Vector2 corner = mirrored ? insertion + Vector2::from_angle(rotation) * totalWidth() : insertion;
    const math::Vector3 at = m.transform_point(math::Vector3{corner, elevation});
    TextFrame frame{rotation, 1.0, 1.0, 0.0, 0};
    transformTextFrame(frame, m);
    transformExtrusion(*this, m);
    insertion = at.xy();
    elevation = at.z;
    rotation = frame.rotation;
    const double sx = frame.widthFactor * frame.height;
    const double sy = frame.height;
    if (std::abs(sx - 1.0) <= 1e-12 && std::abs(sy - 1.0) <= 1e-12) return;
    // What the style gave is now the table's own.
    const std::int32_t rowTotal = rowCount();
    const std::int32_t colTotal = colCount();
    rowTextHeights.resize(static_cast<std::size_t>(rowTotal), 0.0);
    rowHeights.resize(static_cast<std::size_t>(rowTotal), 0.0);
    colWidths.resize(static_cast<std::size_t>(colTotal), 0.0);
    for (std::int32_t r = 0; r < rowTotal; ++r) {
        rowTextHeights[static_cast<std::size_t>(r)] = cellTextHeight(r) * sy;
        rowHeights[static_cast<std::size_t>(r)] = rowHeight(r) * sy;
    }
    for (std::int32_t c = 0; c < colTotal; ++c) colWidths[static_cast<std::size_t>(c)] = colWidth(c) * sx;
    textHeight *= sy;
    horizontalMargin = marginAcross() * sx;
    verticalMargin = marginUpright() * sy;
}

Vector2 TableEntity::nearestPoint(const Vector2& p) const {
    return nearestInQuad(corners(tableBox(*this), placement(*this)), p);
}

double TableEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }

// Grips: the insertion corner, the far corner of the insertion side (width), the corner below or above the insertion
// point (height), the opposite corner (both), then the inner column borders at the insertion side.
std::vector<Vector2> TableEntity::gripPoints() const {
    const Matrix4 m = placement(*this);
    const double width = totalWidth();
    const double far = style().flowUp ? totalHeight() : -totalHeight();
    std::vector<Vector2> grips{insertion, m.transform_point(Vector2{width, 0.0}), m.transform_point(Vector2{0.0, far}),
                               m.transform_point(Vector2{width, far})};
    double x = 0.0;
    for (std::int32_t c = 0; c + 1 < colCount() && grips.size() < 4 + kMaxColumnGrips; ++c) {
        x += colWidth(c);
        grips.push_back(m.transform_point(Vector2{x, 0.0}));
    }
    return grips;
}

void TableEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (!to.is_finite() || !insertion.is_finite()) return;
    if (index == 0) {
        insertion = to;
        return;
    }
    const auto back = placement(*this).inverse();
    if (!back) return;
    const Vector2 local = back->transform_point(to);
    const double smallest = kSmallest * cellTextHeight(0);
    if (index <= 3) {
        const double width = totalWidth();
        const double height = totalHeight();
        const double sx = index == 2 || width <= 0.0 ? 1.0 : local.x / width;
        const double sy = index == 1 || height <= 0.0 ? 1.0 : (style().flowUp ? local.y : -local.y) / height;
        if (!(sx > kSmallest) || !(sy > kSmallest)) return;
        colWidths.resize(static_cast<std::size_t>(colCount()), 0.0);
        rowHeights.resize(static_cast<std::size_t>(rowCount()), 0.0);
        for (std::int32_t c = 0; c < colCount(); ++c) colWidths[static_cast<std::size_t>(c)] = colWidth(c) * sx;
        for (std::int32_t r = 0; r < rowCount(); ++r) rowHeights[static_cast<std::size_t>(r)] = rowHeight(r) * sy;
        return;
    }
    // A column border moves between its neighbours.
    const std::size_t border = index - 4;
    if (border + 1 >= static_cast<std::size_t>(colCount())) return;
    const auto left = static_cast<std::int32_t>(border);
    double x = 0.0;
    for (std::int32_t c = 0; c < left; ++c) x += colWidth(c);
    const double both = colWidth(left) + colWidth(left + 1);
    const double width = local.x - x;
    if (!(width > smallest) || !(both - width > smallest)) return;
    colWidths.resize(static_cast<std::size_t>(colCount()), 0.0);
    for (std::int32_t c = 0; c < colCount(); ++c) colWidths[static_cast<std::size_t>(c)] = colWidth(c);
    colWidths[border] = width;
    colWidths[border + 1] = both - width;
}

void TableEntity::describe(FieldVisitor& v) {
    v.point("insertion", insertion);
    v.integer("rows", rows);
    v.integer("cols", cols);
    v.numbers("rowHeights", rowHeights);
    v.numbers("colWidths", colWidths);
    v.length("textHeight", textHeight);
    v.numbers("rowTextHeights", rowTextHeights, true);
    v.name("styleName", styleName);
    v.objects("cells", cells);
    v.angle("rotation", rotation, 0.0);
    v.length("horizontalMargin", horizontalMargin, -1.0);
    v.length("verticalMargin", verticalMargin, -1.0);
}

void TableEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    if (!insertion.is_finite()) return;
    const TableGrid grid(*this);
    if (grid.rows() == 0 || grid.cols() == 0) return;
    const Matrix4 m = placement(*this);
    const TableStyle& tableStyle = this->style();
    OutlineStyle part = style;
    const auto colored = [&](const Color& color) -> const OutlineStyle& {
        part = style;
        if (color.method != ColorMethod::ByBlock) part.color = color;
        return part;
    };

    // Fills first, then the lines, then the text.
    if (tableStyle.title.fillEnabled || tableStyle.header.fillEnabled || tableStyle.data.fillEnabled) {
        for (std::int32_t r = 0; r < grid.rows(); ++r) {
            const TableStyleRow& row = rowStyle(tableStyle, rowType(r));
            if (!row.fillEnabled) continue;
            for (std::int32_t c = 0; c < grid.cols(); ++c) {
                const TableGrid::Span span = grid.spanAt(r, c);
                if (span.row != r || span.col != c) continue;
                sink.fill(Path().polygon(corners(grid.box(span), m)), colored(row.fillColor), FillOptions{});
            }
        }
    }

    StrokeOptions options;
    options.continuous = true;
    const auto strokes = [&](bool border, std::int32_t weight) {
        Path path;
        grid.lines(border, [&](const Vector2& a, const Vector2& b) {
            path.moveTo(m.transform_point(a)).lineTo(m.transform_point(b));
        });
        if (path.empty()) return;
        part = style;
        if (weight != -2) part.lineweight = weight;
        sink.stroke(path, part, options);
    };
    strokes(false, tableStyle.gridLineweight);
    strokes(true, tableStyle.borderLineweight);

    eachText([&](const MTextBlock& block, const Color& color) {
        emitMTextLayout(layoutMText(block, drawing()), mtextMatrix(block), sink, colored(color));
    });
}

std::size_t TableEntity::sizeInBytes() const {
    std::size_t size = sizeof *this + extrasSize() +
                       (rowHeights.capacity() + colWidths.capacity() + rowTextHeights.capacity()) * sizeof(double) +
                       cells.capacity() * sizeof(TableCell);
    for (const TableCell& c : cells) size += c.content.capacity();
    return size;
}

}  // namespace kova::engine
