// Tables in the form of R2007 and earlier, which is also that of groups.
#include <algorithm>

#include "kdraw/groups/describing.hpp"
#include "kdraw/entities/table_entity.hpp"

namespace kdraw {

namespace {

constexpr std::int32_t kTextCell = 1, kBlockCell = 2;
// What a cell says itself, in this form.
constexpr std::uint32_t kOldAlignment = 0x1, kOldFillNone = 0x2, kOldBackground = 0x4, kOldColor = 0x8,
                        kOldTextStyle = 0x10, kOldTextHeight = 0x20;

TableEntity::Format& ownFormat(TableEntity::Cell& cell) {
    if (cell.style.data.empty()) cell.style.data.emplace_back();
    return cell.style.data.front().format;
}

void setAlignment(TableEntity::Cell& cell, std::int32_t alignment) {
    TableEntity::Format& format = ownFormat(cell);
    format.alignment = alignment;
    format.overrides |= TableEntity::kAlignment;
    cell.style.data.front().overrides |= TableEntity::kAlignment;
}

void setTextStyle(TableEntity::Cell& cell, Handle style) {
    TableEntity::Format& format = ownFormat(cell);
    format.textStyle = style;
    format.overrides |= TableEntity::kTextStyle;
    cell.style.data.front().overrides |= TableEntity::kTextStyle;
}

void setTextHeight(TableEntity::Cell& cell, double height) {
    TableEntity::Format& format = ownFormat(cell);
    format.textHeight = height;
    format.overrides |= TableEntity::kTextHeight;
    cell.style.data.front().overrides |= TableEntity::kTextHeight;
}

void setText(TableEntity::Cell& cell, std::string text) {
    if (text.empty()) return;
    cell.contents.emplace_back();
    TableEntity::Value& value = cell.contents.back().value;
    value.shown = text;
    value.text = std::move(text);
}

}  // namespace

void TableEntity::decodeOldForm(Fields& f) {
    std::uint16_t flags = 0;
    f.bs(0, flags);
    f.bd3(0, direction);
    const std::size_t columnCount = f.count(Width::BL, 0, 0, kBitsOfReal);
    const std::size_t rowCount = f.count(Width::BL, 0, 0, kBitsOfReal);
    f.rest(columns, columnCount, [&](Column& column) { f.bd(0, column.width); });
    f.rest(rows, rowCount, [&](Row& row) { f.bd(0, row.height); });
    f.handle(Ref::HardPointer, 0, tableStyle);
    for (std::size_t r = 0; r < rows.size(); ++r)
        for (std::size_t c = 0; c < columnCount; ++c) {
            if (f.failed()) return;
            rows[r].cells.emplace_back();
            Merge merge{static_cast<std::int32_t>(r), static_cast<std::int32_t>(c), 1, 1};
            decodeOldCell(f, rows[r].cells.back(), merge);
            if (merge.bottom <= 1 && merge.right <= 1) continue;
            // Sizes so far.
            merge.bottom = static_cast<std::int32_t>(
                std::min<std::int64_t>(std::int64_t{merge.top} + std::max(merge.bottom, 1), rowCount) - 1);
            merge.right = static_cast<std::int32_t>(
                std::min<std::int64_t>(std::int64_t{merge.left} + std::max(merge.right, 1), columnCount) - 1);
            merges.push_back(merge);
        }
    // What differs from the style for the table as a whole is seen in its picture.
    f.skipRest();
}

void TableEntity::decodeOldCell(Fields& f, Cell& cell, Merge& merge) {
    std::int32_t kind = kTextCell;
    std::uint8_t edges = 0;
    bool merged = false, fits = false;
    double rotation = 0.0;
    Handle reference = 0;
    f.bs(0, kind);
    f.rc(0, edges);
    f.b(0, merged);
    f.b(0, fits);
    f.bl(0, merge.right);
    f.bl(0, merge.bottom);
    f.bd(0, rotation);
    f.handle(Ref::HardPointer, 0, reference);
    if (kind == kBlockCell) {
        cell.contents.emplace_back();
        Content& content = cell.contents.back();
        content.kind = Content::kBlock;
        content.reference = reference;
        double scale = 1.0;
        bool hasAttributes = false;
        f.bd(0, scale);
        f.b(0, hasAttributes);
        if (hasAttributes) {
            f.list(Width::BS, 0, content.attributes, 4, [&](Attribute& attribute) {
                f.handle(Ref::SoftPointer, 0, attribute.definition);
                f.bs(0, attribute.index);
                f.text(0, attribute.text);
            });
        }
    } else if (reference == 0 && f.before(Version::R2007)) {
        std::string text;
        f.text(0, text);
        setText(cell, std::move(text));
    }
    bool hasOverrides = false;
    f.b(0, hasOverrides);
    if (hasOverrides) {
        std::uint32_t flags = 0;
        std::uint8_t virtualEdges = 0;
        bool fillNone = false;
        Color color;
        f.bl(0, flags);
        f.rc(0, virtualEdges);
        if ((flags & kOldAlignment) != 0) {
            std::int32_t alignment = 0;
            f.rs(0, alignment);
            setAlignment(cell, alignment);
        }
        if ((flags & kOldFillNone) != 0) f.b(0, fillNone);
        if ((flags & kOldBackground) != 0) f.longColor(0, color);
        if ((flags & kOldColor) != 0) f.longColor(0, color);
        if ((flags & kOldTextStyle) != 0) {
            Handle style = 0;
            f.handle(Ref::HardPointer, 0, style);
            setTextStyle(cell, style);
        }
        if ((flags & kOldTextHeight) != 0) {
            double height = 0.0;
            f.bd(0, height);
            setTextHeight(cell, height);
        }
        // Colour, lineweight and visibility of the top, right, bottom and left border.
        for (unsigned border = 0; border < 4; ++border) {
            std::uint16_t weight = 0, visible = 0;
            if ((flags & (0x40U << border)) != 0) f.longColor(0, color);
            if ((flags & (0x400U << border)) != 0) f.bs(0, weight);
            if ((flags & (0x4000U << border)) != 0) f.bs(0, visible);
        }
    }
    if (f.before(Version::R2007)) return;
    std::int32_t unknown = 0;
    f.bl(0, unknown);
    Value value;
    describeValue(f, value);
    if (kind == kBlockCell) return;
    cell.contents.emplace_back();
    cell.contents.back().value = std::move(value);
}

void TableEntity::readGroups(DxfInput& in) {
    std::vector<double> heights, widths;
    std::vector<Cell> cells;
    std::vector<Merge> sizes;
    std::string text;
    bool inValue = false;
    const auto finish = [&] {
        if (!cells.empty()) setText(cells.back(), std::move(text));
        text.clear();
    };
    for (; !in.atEnd(); in.skip()) {
        const int code = in.peek();
        if (code == 171) {
            finish();
            cells.emplace_back();
            sizes.push_back({0, 0, 1, 1});
            inValue = false;
            continue;
        }
        if (cells.empty()) {
            switch (code) {
                case 11:
                    direction.x = in.real();
                    break;
                case 21:
                    direction.y = in.real();
                    break;
                case 31:
                    direction.z = in.real();
                    break;
                case 141:
                    heights.push_back(in.real());
                    break;
                case 142:
                    widths.push_back(in.real());
                    break;
                case 342:
                    tableStyle = in.handle();
                    break;
                default:
                    break;
            }
            continue;
        }
        Cell& cell = cells.back();
        switch (code) {
            case 175:
                sizes.back().right = static_cast<std::int32_t>(in.integer());
                break;
            case 176:
                sizes.back().bottom = static_cast<std::int32_t>(in.integer());
                break;
            case 170:
                setAlignment(cell, static_cast<std::int32_t>(in.integer()));
                break;
            case 140:
                if (!inValue) setTextHeight(cell, in.real());
                break;
            case 7:
                setTextStyle(cell, in.record(Table::Style, in.decoded()));
                break;
            case 301:
                inValue = true;
                break;
            case 304:
                inValue = false;
                break;
            case 1:
            case 2:
                text += in.decoded();
                break;
            case 302:
                if (text.empty()) text = in.decoded();
                break;
            default:
                break;
        }
    }
    finish();
    columns.resize(widths.size());
    for (std::size_t c = 0; c < widths.size(); ++c) columns[c].width = widths[c];
    rows.resize(heights.size());
    for (std::size_t r = 0; r < heights.size(); ++r) rows[r].height = heights[r];
    if (widths.empty()) return;
    for (std::size_t i = 0; i < cells.size() && i / widths.size() < rows.size(); ++i) {
        const std::size_t r = i / widths.size(), c = i % widths.size();
        rows[r].cells.push_back(std::move(cells[i]));
        if (sizes[i].right <= 1 && sizes[i].bottom <= 1) continue;
        const auto last = [](std::size_t first, std::int32_t size, std::size_t limit) {
            return static_cast<std::int32_t>(std::min(first + static_cast<std::size_t>(std::max(size, 1)), limit) - 1);
        };
        merges.push_back({static_cast<std::int32_t>(r), static_cast<std::int32_t>(c),
                          last(r, sizes[i].bottom, rows.size()), last(c, sizes[i].right, widths.size())});
    }
    for (Row& row : rows) row.cells.resize(widths.size());
}

void TableEntity::writeGroups(Fields& f, DxfOutput& out) {
    out.integer(280, 0);
    out.handle(342, tableStyle);
    out.handle(343, block);
    out.point(11, direction);
    out.integer(90, 22);
    out.integer(91, static_cast<std::int64_t>(rows.size()));
    out.integer(92, static_cast<std::int64_t>(columns.size()));
    for (int code = 93; code <= 96; ++code) out.integer(code, 0);
    for (const Row& row : rows) out.real(141, row.height);
    for (const Column& column : columns) out.real(142, column.width);

    // Which cells begin a range, and which lie under one. Ranges that cover more than the table has are damage.
    constexpr std::size_t kMaxCells = 4'000'000;
    const std::size_t width = columns.size();
    if (rows.size() > kMaxCells / std::max<std::size_t>(width, 1)) return;
    std::vector<std::uint8_t> covered(rows.size() * width, 0);
    std::vector<const Merge*> begins(rows.size() * width, nullptr);
    std::size_t left = covered.size();
    for (const Merge& merge : merges) {
        if (merge.top < 0 || merge.left < 0 || merge.bottom < merge.top || merge.right < merge.left ||
            static_cast<std::size_t>(merge.bottom) >= rows.size() || static_cast<std::size_t>(merge.right) >= width)
            continue;
        const std::size_t first = static_cast<std::size_t>(merge.top) * width + static_cast<std::size_t>(merge.left);
        const std::size_t area = static_cast<std::size_t>(merge.bottom - merge.top + 1) *
                                 static_cast<std::size_t>(merge.right - merge.left + 1);
        if (covered[first] != 0 || begins[first] != nullptr || area > left) continue;
        left -= area;
        begins[first] = &merge;
        for (std::int32_t r = merge.top; r <= merge.bottom; ++r)
            for (std::int32_t c = merge.left; c <= merge.right; ++c)
                covered[static_cast<std::size_t>(r) * width + static_cast<std::size_t>(c)] = 1;
        covered[first] = 0;
    }
    static const Cell kBlank;
    for (std::size_t r = 0; r < rows.size(); ++r)
        for (std::size_t c = 0; c < width; ++c) {
            const Cell& cell = c < rows[r].cells.size() ? rows[r].cells[c] : kBlank;
            const Merge* merge = begins[r * width + c];
            const Format* aligned = cell.formatWith(kAlignment);
            const Format* styled = cell.formatWith(kTextStyle);
            const Format* sized = cell.formatWith(kTextHeight);
            out.integer(171, kTextCell);
            out.integer(172, 0);
            out.integer(173, covered[r * width + c]);
            out.integer(174, 0);
            out.integer(175, merge != nullptr ? merge->right - merge->left + 1 : 1);
            out.integer(176, merge != nullptr ? merge->bottom - merge->top + 1 : 1);
            out.integer(91, (aligned != nullptr ? kOldAlignment : 0) | (styled != nullptr ? kOldTextStyle : 0) |
                                (sized != nullptr ? kOldTextHeight : 0));
            out.integer(178, 0);
            out.real(145, 0.0);
            if (aligned != nullptr) out.integer(170, aligned->alignment);
            if (styled != nullptr) out.record(7, Table::Style, styled->textStyle);
            if (sized != nullptr) out.real(140, sized->textHeight);
            out.integer(92, 0);
            out.word(301, "CELL_VALUE");
            out.integer(93, 6);
            out.integer(90, Value::kText);
            std::string text = cell.text();
            longText(f, 2, 1, text);
            out.integer(94, 0);
            out.word(300, "");
            out.word(302, "");
            out.word(304, "ACVALUE_END");
        }
}

}  // namespace kdraw
