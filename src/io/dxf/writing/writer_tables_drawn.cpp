// Tables that stand in the drawing, and their styles.
#include "io/dxf/writing/writer.hpp"

namespace kova::io::dxf {

using namespace engine;
using math::Vector2;
using math::Vector3;

namespace {

/// A position 1..9 for a record.
std::int32_t alignmentCode(std::int32_t alignment) { return alignment >= 1 && alignment <= 9 ? alignment : 5; }

}  // namespace

bool Writer::write(const TableEntity& e, const Target& t) {
    const std::int32_t rows = e.rowCount();
    const std::int32_t columns = e.colCount();
    if (rows < 1 || columns < 1 || !std::isfinite(e.insertion.x) || !std::isfinite(e.insertion.y)) return false;
    FieldKeys keys;
    // Heights and widths in the record are those that are drawn; lists that leave some to the style stay beside them.
    if (e.rows != rows || e.cols != columns) keys.insert(keys.end(), {"rows", "cols"});
    if (e.rowHeights.size() != static_cast<std::size_t>(rows)) keys.push_back("rowHeights");
    if (e.colWidths.size() != static_cast<std::size_t>(columns)) keys.push_back("colWidths");
    if (e.textHeight != 0.0) keys.push_back("textHeight");
    if (!e.rowTextHeights.empty()) keys.push_back("rowTextHeights");
    // The record of a DWG has no place for them, and none at all has one for values that only stand for the style's.
    const auto keptBeside = [&](double margin) { return margin < 0.0 ? margin != -1.0 : forDwg_; };
    if (keptBeside(e.horizontalMargin)) keys.push_back("horizontalMargin");
    if (keptBeside(e.verticalMargin)) keys.push_back("verticalMargin");
    if (!isPlain(e.styleName) || tableStyles_.find(e.styleName.key()) == tableStyles_.end())
        keys.push_back("styleName");
    const auto cells = static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns);
    bool exact = e.cells.size() == cells;
    for (const TableCell& c : e.cells)
        if (c.alignment < 0 || c.alignment > 9 || c.mergeRight < 0 || c.mergeDown < 0 || !isPlain(c.textStyle)) {
            if (c.textStyle.empty() && c.alignment >= 0 && c.alignment <= 9 && c.mergeRight >= 0 && c.mergeDown >= 0)
                continue;
            exact = false;
        }
    if (!exact) keys.push_back("cells");
    if (e.rotation != 0.0 && std::atan2(std::sin(e.rotation), std::cos(e.rotation)) != e.rotation)
        keys.push_back("rotation");

    std::uint64_t blockRecord = 0;
    const std::string block = picture(e, "*T", blockRecord);
    const OwnData own = gather(e, kElevation, keys);
    ++classCounts_["ACAD_TABLE"];
    head("ACAD_TABLE", e, t, own);
    GroupWriter& out = *out_;
    out.subclass("AcDbBlockReference");
    out.text(2, block);
    out.point(10, e.insertion, e.elevation);
    out.subclass("AcDbTable");
    out.integer(280, 0);
    const auto style = tableStyles_.find(e.style().name.key());
    out.handle(342, style != tableStyles_.end() ? style->second : firstTableStyle());
    out.handle(343, blockRecord);
    out.point(11, Vector2{std::cos(e.rotation), std::sin(e.rotation)}, 0.0);
    out.integer(90, 22);
    out.integer(91, rows);
    out.integer(92, columns);
    // Bits of group 93: 8 horizontal margin, 16 vertical margin.
    const int margins = (e.horizontalMargin >= 0.0 ? 8 : 0) | (e.verticalMargin >= 0.0 ? 16 : 0);
    out.integer(93, forDwg_ ? 0 : margins);
    out.integer(94, 0);
    out.integer(95, 0);
    out.integer(96, 0);
    if (!forDwg_ && (margins & 8) != 0) out.real(40, e.horizontalMargin);
    if (!forDwg_ && (margins & 16) != 0) out.real(41, e.verticalMargin);
    for (std::int32_t r = 0; r < rows; ++r) out.real(141, e.rowHeight(r));
    for (std::int32_t c = 0; c < columns; ++c) out.real(142, e.colWidth(c));
    static const TableCell blank;
    for (std::int32_t r = 0; r < rows; ++r)
        for (std::int32_t c = 0; c < columns; ++c) {
            const TableCell* stored = e.cell(r, c);
            const TableCell& cell = stored != nullptr ? *stored : blank;
            // Bits of group 91: 1 alignment, 16 text style.
            const int overrides =
                (cell.alignment >= 1 && cell.alignment <= 9 ? 1 : 0) | (cell.textStyle.empty() ? 0 : 16);
            out.integer(171, 1);
            out.integer(172, 0);
            out.flag(173, cell.isMerged);
            out.integer(174, 0);
            out.integer(175, std::clamp(cell.mergeRight, 0, columns - 1) + 1);
            out.integer(176, std::clamp(cell.mergeDown, 0, rows - 1) + 1);
            out.integer(91, overrides);
            out.integer(178, 0);
            out.real(145, 0.0);
            if ((overrides & 1) != 0) out.integer(170, alignmentCode(cell.alignment));
            if ((overrides & 16) != 0) textStyleName(7, cell.textStyle);
            out.integer(92, 0);
            out.word(301, "CELL_VALUE");
            out.integer(93, 6);
            out.integer(90, 4);
            longText(2, 1, cell.content);
            out.integer(94, 0);
            out.word(300, "");
            out.text(302, std::string_view(cell.content).substr(0, 250).size() < cell.content.size()
                              ? std::string_view()
                              : std::string_view(cell.content));
            out.word(304, "ACVALUE_END");
        }
    tail(e, own);
    return true;
}

std::uint64_t Writer::firstTableStyle() {
    if (tableStyles_.empty()) tableStyles_.emplace(commonNames().standard.key(), newHandle());
    if (const auto standard = tableStyles_.find(commonNames().standard.key()); standard != tableStyles_.end())
        return standard->second;
    return tableStyles_.at(saved_.tableStyles[0]->name.key());
}

void Writer::tableStyle(const TableStyle& style, std::uint64_t handle, const OwnData& own) {
    GroupWriter& out = *out_;
    objectHead("TABLESTYLE", handle, fixed_.tableStyles, own.dictionary);
    out.subclass("AcDbTableStyle");
    out.integer(280, 0);
    out.text(3, style.name.view());
    out.integer(70, style.flowUp ? 1 : 0);
    out.integer(71, 0);
    out.real(40, style.cellMargin);
    out.real(41, style.verticalMargin);
    out.flag(280, !style.hasTitle);
    out.flag(281, !style.hasHeader);
    const auto row = [&](const TableStyleRow& r, double height) {
        textStyleName(7, style.textStyle);
        out.real(140, height);
        out.integer(170, alignmentCode(r.alignment));
        out.integer(62, r.textColor.bareIndex());
        out.integer(63, r.fillColor.bareIndex());
        out.flag(283, r.fillEnabled);
        out.integer(90, 4);
        out.integer(91, 0);
        // Top, horizontal inside, bottom, left, vertical inside, right.
        for (int border = 0; border < 6; ++border) {
            const bool inside = border == 1 || border == 4;
            out.integer(274 + border, nearestLineweight(inside ? style.gridLineweight : style.borderLineweight));
            out.integer(284 + border, 1);
            out.integer(64 + border, 0);
        }
    };
    row(style.data, style.textHeight);
    row(style.title, style.titleTextHeight);
    row(style.header, style.headerTextHeight);
    ownXdata(own);
}

void Writer::tableStyles() {
    firstTableStyle();
    Entries entries;
    for (const TableStyle* style : saved_.tableStyles)
        entries.emplace_back(symbol(style->name), tableStyles_.at(style->name.key()));
    const bool added = saved_.tableStyles.empty();
    if (added) entries.emplace_back("Standard", firstTableStyle());
    dictionary(fixed_.tableStyles, fixed_.root, entries, false);
    std::size_t i = 0;
    for (const TableStyle* each : saved_.tableStyles) {
        const TableStyle& style = *each;
        const std::uint64_t handle = entries[i++].second;
        FieldKeys keys{"defaultRowHeight", "defaultColWidth"};
        if (!isPlain(style.name)) keys.push_back("name");
        if (forDwg_ && !style.hasTitle) keys.push_back("hasTitle");
        if (forDwg_ && !style.hasHeader) keys.push_back("hasHeader");
        if (style.textStyle.empty() || !isPlain(style.textStyle)) keys.push_back("textStyle");
        if (!isLineweight(style.borderLineweight)) keys.push_back("borderLineweight");
        if (!isLineweight(style.gridLineweight)) keys.push_back("gridLineweight");
        const auto exact = [](const TableStyleRow& r) {
            return r.alignment >= 1 && r.alignment <= 9 && r.textColor.method != ColorMethod::RGB &&
                   (r.fillEnabled ? r.fillColor.method != ColorMethod::RGB : r.fillColor == TableStyleRow().fillColor);
        };
        if (!exact(style.data) || !exact(style.title) || !exact(style.header)) keys.push_back("rows");
        tableStyle(style, handle, gatherRecord(style, keys, handle, kTableStyleApplication));
    }
    if (added) tableStyle(TableStyle(), firstTableStyle(), placeholderMark());
    classCounts_["TABLESTYLE"] += entries.size();
}

}  // namespace kova::io::dxf
