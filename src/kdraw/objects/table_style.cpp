#include "kdraw/objects/table_style.hpp"

#include "kdraw/groups/describing_objects.hpp"

namespace kdraw {

namespace {

using Border = CellStyle::Border;

/// Edges in the order of a row's borders.
constexpr int kRowEdges[] = {Border::kTop,  Border::kInsideHorizontal, Border::kBottom,
                             Border::kLeft, Border::kInsideVertical,   Border::kRight};
constexpr const char* kRowNames[] = {"_DATA", "_TITLE", "_HEADER"};
constexpr std::int32_t kRowIds[] = {3, 1, 2};
constexpr std::int32_t kTableId = 4;
/// Title cells are merged over the whole width; tables may run upwards.
constexpr std::int32_t kMergeAll = 0x8000, kFlowUp = 0x10000;

CellStyle cellStyleOf(const TableStyle& style, const TableStyle::Row& row) {
    CellStyle cell;
    cell.background.raw = Color::kNone;
    if (row.fill) cell.background = row.fillColor;
    cell.dataType = row.dataType;
    cell.unitType = row.unitType;
    cell.format = row.format;
    cell.alignment = row.alignment;
    cell.color = row.textColor;
    cell.textStyle = row.textStyle;
    cell.textHeight = row.height;
    cell.margins = {style.verticalMargin,   style.horizontalMargin,       style.verticalMargin,
                    style.horizontalMargin, style.horizontalMargin * 3.0, style.verticalMargin * 3.0};
    // By rising edge numbers.
    for (int edge = 1; edge <= Border::kInsideHorizontal; edge *= 2)
        for (std::size_t i = 0; i < row.borders.size(); ++i) {
            if (kRowEdges[i] != edge) continue;
            Border& border = cell.borders.emplace_back();
            border.edge = edge;
            border.color = row.borders[i].color;
            border.lineweight = row.borders[i].lineweight;
            border.invisible = row.borders[i].visible ? 0 : 1;
        }
    return cell;
}

void takeRow(const CellStyle& cell, TableStyle::Row& row) {
    row.fill = cell.background.raw != Color::kNone;
    if (row.fill) row.fillColor = cell.background;
    row.dataType = cell.dataType;
    row.unitType = cell.unitType;
    row.format = cell.format;
    row.alignment = static_cast<std::int16_t>(limited<std::int32_t>(cell.alignment, 0, 9));
    row.textColor = cell.color;
    row.textStyle = cell.textStyle;
    row.height = cell.textHeight;
    for (const Border& border : cell.borders)
        for (std::size_t i = 0; i < row.borders.size(); ++i) {
            if (kRowEdges[i] != border.edge) continue;
            row.borders[i].color = border.color;
            row.borders[i].lineweight = static_cast<std::int16_t>(border.lineweight);
            row.borders[i].visible = border.invisible == 0;
        }
}

}  // namespace

void CellStyle::describe(Fields& f) {
    f.bl(0, type);
    std::int16_t data = hasData ? 1 : 0;
    f.bs(0, data);
    if (f.reading()) hasData = data != 0;
    if (!hasData) return;
    f.bl(0, overrides);
    f.bl(0, merge);
    f.longColor(0, background);
    f.bl(0, contentLayout);
    f.bl(0, formatOverrides);
    f.bl(0, formatFlags);
    f.bl(0, dataType);
    f.bl(0, unitType);
    f.text(0, format);
    f.bd(0, rotation);
    f.bd(0, blockScale);
    f.bl(0, alignment);
    f.longColor(0, color);
    f.handle(Ref::HardPointer, 0, textStyle);
    f.bd(0, textHeight);
    std::int16_t marginFlags = hasMargins ? 1 : 0;
    f.bs(0, marginFlags);
    if (f.reading()) hasMargins = marginFlags != 0;
    if (hasMargins)
        for (double& margin : margins) f.bd(0, margin);
    f.list(Width::BL, 0, borders, 2, [&](Border& border) {
        f.bl(0, border.edge);
        if (border.edge == 0) return;
        f.bl(0, border.overrides);
        f.bl(0, border.type);
        f.longColor(0, border.color);
        f.bl(0, border.lineweight);
        f.handle(Ref::HardPointer, 0, border.linetype);
        f.bl(0, border.invisible);
        f.bd(0, border.spacing);
    });
}

void NamedCellStyle::describe(Fields& f) {
    style.describe(f);
    f.bl(0, id);
    f.bl(0, styleClass);
    f.text(0, name);
}

void TableStyle::describe(Fields& f) {
    if (f.dxf()) {
        describeGroups(f);
        if (f.reading()) makeCellStyles();
    } else if (f.since(Version::R2010)) {
        if (!f.reading() && styles.empty()) makeCellStyles();
        describeCellStyles(f);
        if (f.reading()) takeRows();
    } else {
        describeRows(f);
        if (f.reading()) makeCellStyles();
    }
}

void TableStyle::describeRows(Fields& f) {
    f.text(0, description);
    f.bs(0, flow);
    f.bs(0, flags);
    f.bd(0, horizontalMargin);
    f.bd(0, verticalMargin);
    f.b(0, noTitle);
    f.b(0, noHeader);
    for (Row& row : rows) {
        f.handle(Ref::HardPointer, 0, row.textStyle);
        f.bd(0, row.height);
        f.bs(0, row.alignment);
        f.longColor(0, row.textColor);
        f.longColor(0, row.fillColor);
        f.b(0, row.fill);
        for (RowBorder& border : row.borders) {
            f.bs(0, border.lineweight);
            f.b(0, border.visible);
            f.longColor(0, border.color);
        }
        if (f.since(Version::R2007)) {
            f.bl(0, row.dataType);
            f.bl(0, row.unitType);
            f.text(0, row.format);
        }
    }
}

void TableStyle::describeCellStyles(Fields& f) {
    f.rc(0, unknown1);
    f.text(0, description);
    f.bl(0, unknown2);
    f.bl(0, nextId);
    f.handle(Ref::HardOwner, 0, unknown3);
    table.describe(f);
    std::int32_t number = 0;
    f.list(Width::BL, 0, styles, 8, [&](NamedCellStyle& style) {
        ++number;
        f.bl(0, number);
        style.describe(f);
    });
}

void TableStyle::describeGroups(Fields& f) {
    f.subclass("AcDbTableStyle");
    DxfInput* in = f.input();
    DxfOutput* out = f.output();
    if (out != nullptr) out->integer(280, 0);
    f.text(3, description);
    f.bs(70, flow);
    f.bs(71, flags);
    f.bd(40, horizontalMargin);
    f.bd(41, verticalMargin);
    // The first group of this code is the version of the record.
    if (out != nullptr) {
        out->integer(280, noTitle ? 1 : 0);
    } else if (in->find(280)) {
        in->skip();
        if (in->seek(280)) noTitle = in->integer() != 0;
    }
    f.b(281, noHeader);
    if (out != nullptr) {
        for (Row& row : rows) {
            out->record(7, Table::Style, row.textStyle);
            out->real(140, row.height);
            out->integer(170, row.alignment);
            f.color(62, 0, row.textColor);
            f.color(63, 0, row.fillColor);
            out->integer(283, row.fill ? 1 : 0);
            out->integer(90, row.dataType);
            out->integer(91, row.unitType);
            for (int i = 0; i < 6; ++i) {
                RowBorder& border = row.borders[static_cast<std::size_t>(i)];
                out->integer(274 + i, border.lineweight);
                out->integer(284 + i, border.visible ? 1 : 0);
                f.color(64 + i, 0, border.color);
            }
        }
        return;
    }
    std::size_t next = 0;
    Row* row = nullptr;
    for (bool more = in->find(7); more && !in->atEnd(); in->skip()) {
        const int code = in->peek();
        if (code == 7) {
            if (next == rows.size()) break;
            row = &rows[next++];
            row->textStyle = in->record(Table::Style, in->decoded());
            continue;
        }
        const std::int64_t number = in->integer();
        const auto color = [&] { return Color::fromIndex(static_cast<int>(limited<std::int64_t>(number, 0, 256))); };
        if (code == 140)
            row->height = in->real();
        else if (code == 170)
            row->alignment = static_cast<std::int16_t>(number);
        else if (code == 62)
            row->textColor = color();
        else if (code == 63)
            row->fillColor = color();
        else if (code == 283)
            row->fill = number != 0;
        else if (code == 90)
            row->dataType = static_cast<std::int32_t>(number);
        else if (code == 91)
            row->unitType = static_cast<std::int32_t>(number);
        else if (code == 1)
            row->format = in->decoded();
        else if (code >= 274 && code <= 279)
            row->borders[static_cast<std::size_t>(code - 274)].lineweight = static_cast<std::int16_t>(number);
        else if (code >= 284 && code <= 289)
            row->borders[static_cast<std::size_t>(code - 284)].visible = number != 0;
        else if (code >= 64 && code <= 69)
            row->borders[static_cast<std::size_t>(code - 64)].color = color();
    }
}

void TableStyle::makeCellStyles() {
    table.style = cellStyleOf(*this, rows[0]);
    if (flow != 0) table.style.merge |= kFlowUp;
    table.id = kTableId;
    table.styleClass = 2;
    table.name = "Table";
    styles.clear();
    // Title, header, data.
    for (const std::size_t i : {1, 2, 0}) {
        NamedCellStyle& style = styles.emplace_back();
        style.style = cellStyleOf(*this, rows[i]);
        if (i == 1) style.style.merge = kMergeAll;
        style.id = kRowIds[i];
        style.styleClass = 1;
        style.name = kRowNames[i];
    }
}

void TableStyle::takeRows() {
    flow = (table.style.merge & kFlowUp) != 0 ? 1 : 0;
    for (const NamedCellStyle& style : styles)
        for (std::size_t i = 0; i < rows.size(); ++i)
            if (style.id == kRowIds[i]) {
                takeRow(style.style, rows[i]);
                if (i == 0 && style.style.hasMargins) {
                    verticalMargin = style.style.margins[0];
                    horizontalMargin = style.style.margins[1];
                }
            }
}

void CellStyleMap::describe(Fields& f) {
    f.subclass("AcDbCellStyleMap");
    if (f.dxf()) return;
    f.list(Width::BL, 0, styles, 8, [&](NamedCellStyle& style) { style.describe(f); });
}

}  // namespace kdraw
