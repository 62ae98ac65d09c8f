#include "engine/entities/dimensions/tolerance.hpp"

#include <array>

#include "engine/model/drawing.hpp"
#include "engine/text/mtext_layout.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/text/text_line.hpp"
#include "engine/model/outline.hpp"
#include "math/angles.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Matrix4;
using math::Vector2;

namespace {

struct Symbol {
    std::string_view letter;
    std::string_view name;
};
constexpr Symbol kSymbols[] = {
    {"a", "Angularity"},   {"b", "Perpendicularity"}, {"c", "Flatness"},     {"d", "Surface Profile"},
    {"e", "Circularity"},  {"f", "Parallelism"},      {"g", "Cylindricity"}, {"h", "Circular Runout"},
    {"i", "Symmetry"},     {"j", "Position"},         {"k", "Line Profile"}, {"r", "Concentricity"},
    {"t", "Total Runout"}, {"u", "Straightness"},
};

constexpr std::string_view kSymbolFont = "{\\Fgdt;";
constexpr std::string_view kDiameter = "{\\Fgdt;n}";

std::string symbolCode(std::string_view letter) {
    std::string code(kSymbolFont);
    code += letter;
    code += '}';
    return code;
}

/// The letter of a material condition however it is written; empty: none.
std::string conditionLetter(std::string_view mc) {
    if (mc.empty()) return {};
    const char c = mc[0] >= 'A' && mc[0] <= 'Z' ? static_cast<char>(mc[0] - 'A' + 'a') : mc[0];
    return std::string_view("mlsp").find(c) != std::string_view::npos ? std::string(1, c) : std::string();
}

std::string valueWithCondition(const std::string& value, const std::string& mc) {
    std::string text = value;
    if (text.size() >= 3 && text[0] == '%' && text[1] == '%' && (text[2] == 'c' || text[2] == 'C'))
        text.replace(0, 3, kDiameter);
    const std::string letter = conditionLetter(mc);
    if (!letter.empty()) text += symbolCode(letter);
    return text;
}

/// The cells of a row as they stand in the content.
std::array<std::string, 6> cellsOf(const ToleranceRow& row) {
    const std::string_view letter = toleranceSymbolLetter(row.symbol);
    return {row.symbol.empty() ? std::string()
            : !letter.empty()  ? symbolCode(letter)
                               : row.symbol,
            valueWithCondition(row.toleranceValue, row.toleranceMC),
            valueWithCondition(row.toleranceValue2, row.toleranceMC2),
            valueWithCondition(row.datum1, row.datum1MC),
            valueWithCondition(row.datum2, row.datum2MC),
            valueWithCondition(row.datum3, row.datum3MC)};
}

/// Takes a cell apart: value and, when it ends in the symbol of one, the material condition.
void takeCell(std::string_view cell, std::string& value, std::string& mc) {
    const auto endsInCode = [&] {
        return cell.size() >= kSymbolFont.size() + 2 && cell.back() == '}' &&
               cell.substr(cell.size() - kSymbolFont.size() - 2, kSymbolFont.size()) == kSymbolFont;
    };
    if (endsInCode()) {
        const std::string letter = conditionLetter(cell.substr(cell.size() - 2, 1));
        if (!letter.empty()) {
            mc = letter;
            cell.remove_suffix(kSymbolFont.size() + 2);
        }
    }
    if (cell.substr(0, kDiameter.size()) == kDiameter) {
        value = "%%c";
        cell.remove_prefix(kDiameter.size());
    }
    value += cell;
}

ToleranceRow rowFromText(std::string_view line) {
    ToleranceRow row;
    std::array<std::string_view, 6> cells;
    std::size_t count = 0;
    while (count < cells.size()) {
        std::size_t mark = line.find("%%v");
        const std::size_t upper = line.find("%%V");
        mark = std::min(mark, upper);
        cells[count++] = line.substr(0, mark);
        if (mark == std::string_view::npos) break;
        line.remove_prefix(mark + 3);
    }
    if (count == 1) {
        row.whole = true;
        takeCell(cells[0], row.toleranceValue, row.toleranceMC);
        return row;
    }
    const std::string_view s = cells[0];
    if (s.size() == kSymbolFont.size() + 2 && s.substr(0, kSymbolFont.size()) == kSymbolFont)
        row.symbol = s.substr(kSymbolFont.size(), 1);
    else
        row.symbol = s;
    takeCell(cells[1], row.toleranceValue, row.toleranceMC);
    takeCell(cells[2], row.toleranceValue2, row.toleranceMC2);
    takeCell(cells[3], row.datum1, row.datum1MC);
    takeCell(cells[4], row.datum2, row.datum2MC);
    takeCell(cells[5], row.datum3, row.datum3MC);
    return row;
}

/// The frame in its own coordinates: x to the right, y up, the middle of the first row's left edge at the origin.
struct Frame {
    struct Cell {
        std::string text;
        Bounds2 box;
    };
    std::vector<Cell> cells;
    std::vector<Bounds2> rows;   ///< box of every row
    std::vector<double> joined;  ///< width of the symbol cell that the row shares with the row above; 0: it does not
    Bounds2 box;
};

const DimStyle& styleOf(const ToleranceEntity& t) {
    static const DimStyle standard;
    const Drawing* drawing = t.drawing();
    return drawing != nullptr ? drawing->dimStyleOrStandard(t.styleName) : standard;
}

Frame layOut(const ToleranceEntity& t) {
    Frame frame;
    const double height = t.effectiveTextHeight();
    if (!(height > 0.0) || !std::isfinite(height)) return frame;
    const DimStyle& style = styleOf(t);
    // The margin follows the text: the style's gap belongs to the style's height.
    const double ratio = style.textHeight > 0.0 ? std::abs(style.textGap) / style.textHeight : 0.5;
    const double margin = height * std::clamp(ratio, 0.25, 2.0);
    const double rowHeight = height + 2.0 * std::max(margin, 0.5 * height);

    const auto addRow = [&](const ToleranceRow& row, const ToleranceRow* above) {
        const double top = rowHeight / 2.0 - rowHeight * static_cast<double>(frame.rows.size());
        const std::array<std::string, 6> cells = cellsOf(row);
        const bool joined = above != nullptr && !row.whole && !above->whole && !row.symbol.empty() &&
                            toleranceSymbolLetter(row.symbol) == toleranceSymbolLetter(above->symbol) &&
                            !toleranceSymbolLetter(row.symbol).empty();
        double x = 0.0;
        double symbolWidth = 0.0;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            if (cells[i].empty()) continue;
            MTextBlock block;
            block.content = cells[i];
            block.height = height;
            block.textStyle = style.textStyle;
            const double width = layoutMText(block, t.drawing()).box.width();
            const double cell =
                i == 0 ? std::max(rowHeight, width + margin) : std::max(rowHeight, width + 2.0 * margin);
            frame.cells.push_back({cells[i], {{x, top - rowHeight}, {x + cell, top}}});
            if (i == 0 && joined) {
                // Drawn once, in the middle of all the rows that share it.
                for (std::size_t k = frame.cells.size() - 1; k-- > 0;) {
                    if (frame.cells[k].box.min.x != 0.0 || frame.cells[k].text != cells[0]) continue;
                    frame.cells[k].box.min.y = top - rowHeight;
                    frame.cells.pop_back();
                    break;
                }
            }
            x += cell;
            if (i == 0) symbolWidth = cell;
        }
        if (x == 0.0) x = rowHeight;  // an empty row is an empty box
        frame.rows.push_back({{0.0, top - rowHeight}, {x, top}});
        frame.joined.push_back(joined ? symbolWidth : 0.0);
        frame.box.expand(frame.rows.back());
    };
    addRow(t.first, nullptr);
    const std::size_t count = std::min(t.rows.size(), ToleranceEntity::kMaxRows - 1);
    for (std::size_t i = 0; i < count; ++i)
        if (!t.rows[i].empty()) addRow(t.rows[i], i == 0 ? &t.first : &t.rows[i - 1]);
    return frame;
}

Matrix4 placement(const ToleranceEntity& t) {
    return Matrix4::translation(t.insertion) * Matrix4::rotation_z(std::isfinite(t.rotation) ? t.rotation : 0.0);
}

std::array<Vector2, 4> corners(const Bounds2& b, const Matrix4& m) {
    return {m.transform_point(b.min), m.transform_point(Vector2{b.max.x, b.min.y}), m.transform_point(b.max),
            m.transform_point(Vector2{b.min.x, b.max.y})};
}

}  // namespace

std::string_view toleranceSymbolLetter(std::string_view letterOrName) {
    for (const Symbol& s : kSymbols)
        if (equalNoCase(s.letter, letterOrName) || equalNoCase(s.name, letterOrName)) return s.letter;
    return {};
}

std::string_view toleranceSymbolName(std::string_view letter) {
    for (const Symbol& s : kSymbols)
        if (s.letter == letter) return s.name;
    return {};
}

bool ToleranceRow::empty() const {
    return symbol.empty() && toleranceValue.empty() && toleranceMC.empty() && toleranceValue2.empty() &&
           toleranceMC2.empty() && datum1.empty() && datum1MC.empty() && datum2.empty() && datum2MC.empty() &&
           datum3.empty() && datum3MC.empty();
}

void ToleranceRow::describe(FieldVisitor& v) {
    v.text("symbol", symbol);
    v.text("toleranceValue", toleranceValue);
    v.text("toleranceMC", toleranceMC);
    v.text("datum1", datum1);
    v.text("datum1MC", datum1MC);
    v.text("datum2", datum2);
    v.text("datum2MC", datum2MC);
    v.text("datum3", datum3);
    v.text("datum3MC", datum3MC);
    v.text("toleranceValue2", toleranceValue2, "");
    v.text("toleranceMC2", toleranceMC2, "");
    v.boolean("whole", whole, false);
}

std::string ToleranceEntity::contentText() const {
    const auto rowText = [](const ToleranceRow& row) {
        const std::array<std::string, 6> cells = cellsOf(row);
        if (row.whole) return cells[1];
        std::string text = cells[0];
        for (std::size_t i = 1; i < cells.size(); ++i) text += "%%v" + cells[i];
        return text;
    };
    std::string text = rowText(first);
    for (const ToleranceRow& row : rows) text += "\n" + rowText(row);
    return text;
}

void ToleranceEntity::setContentText(std::string_view content) {
    first = {};
    rows.clear();
    for (std::size_t count = 0; count < kMaxRows; ++count) {
        const std::size_t feed = std::min(content.find('\n'), content.find("^J"));
        ToleranceRow row = rowFromText(content.substr(0, feed));
        if (count == 0)
            first = std::move(row);
        else
            rows.push_back(std::move(row));
        if (feed == std::string_view::npos) break;
        content.remove_prefix(feed + (content[feed] == '^' ? 2 : 1));
    }
    // Trailing empty rows are what writers leave behind the last line break.
    while (!rows.empty() && rows.back().empty()) rows.pop_back();
}

double ToleranceEntity::effectiveTextHeight() const {
    if (textHeight > 0.0) return textHeight;
    const DimStyle& style = styleOf(*this);
    const double scale = style.scaleFactor > 0.0 ? style.scaleFactor : 1.0;
    return style.textHeight * scale;
}

Bounds2 ToleranceEntity::bounds() const {
    Bounds2 bounds;
    if (!insertion.is_finite()) return bounds;
    bounds.expand(insertion);
    const Matrix4 m = placement(*this);
    for (const Bounds2& row : layOut(*this).rows)
        for (const Vector2& c : corners(row, m)) bounds.expand(c);
    return bounds;
}

void ToleranceEntity::transform(const Matrix4& m) {
    const Bounds2 box = layOut(*this).box;
    const double width = box.is_empty() ? 0.0 : box.width();
    const double height = effectiveTextHeight();
    const Vector2 along = Vector2::from_angle(rotation);
    // The frame has no mirrored form: it stays readable and takes the place of its image.
    const bool mirrored = m.plane_determinant() < 0.0;
    const math::Vector3 at =
        m.transform_point(math::Vector3{mirrored ? insertion + along * width : insertion, elevation});
    TextFrame frame{rotation, height, 1.0, 0.0, 0};
    transformTextFrame(frame, m);
    transformExtrusion(*this, m);
    insertion = at.xy();
    elevation = at.z;
    rotation = frame.rotation;
    if (std::abs(frame.height - height) > 1e-12 * height) textHeight = frame.height;
}

Vector2 ToleranceEntity::nearestPoint(const Vector2& p) const {
    const Matrix4 m = placement(*this);
    Vector2 best = insertion;
    double bestDistance = std::numeric_limits<double>::infinity();
    for (const Bounds2& row : layOut(*this).rows) {
        const Vector2 candidate = nearestInQuad(corners(row, m), p);
        const double distance = candidate.distance_to(p);
        if (distance < bestDistance) {
            bestDistance = distance;
            best = candidate;
        }
    }
    return best;
}

double ToleranceEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }

std::vector<Vector2> ToleranceEntity::gripPoints() const {
    const Frame frame = layOut(*this);
    if (frame.rows.empty()) return {insertion};
    return {insertion, placement(*this).transform_point(Vector2{frame.rows[0].max.x, 0.0})};
}

void ToleranceEntity::moveGrip(std::size_t index, const Vector2& to) {
    const std::vector<Vector2> grips = gripPoints();
    if (index < grips.size() && to.is_finite()) insertion += to - grips[index];
}

void ToleranceEntity::describe(FieldVisitor& v) {
    v.point("insertion", insertion);
    v.length("textHeight", textHeight);
    v.name("styleName", styleName);
    v.angle("rotation", rotation);
    first.describe(v);
    v.objects("rows", rows, true);
}

void ToleranceEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    if (!insertion.is_finite()) return;
    const Frame frame = layOut(*this);
    const Matrix4 m = placement(*this);
    const DimStyle& dim = styleOf(*this);
    OutlineStyle lines = style;
    if (dim.dimLineColor.method != ColorMethod::ByBlock) lines.color = dim.dimLineColor;
    if (dim.dimLineLineweight != -2) lines.lineweight = dim.dimLineLineweight;
    OutlineStyle text = style;
    if (dim.textColor.method != ColorMethod::ByBlock) text.color = dim.textColor;

    Path path;
    const auto line = [&](const Vector2& a, const Vector2& b) {
        path.moveTo(m.transform_point(a)).lineTo(m.transform_point(b));
    };
    for (std::size_t i = 0; i < frame.rows.size(); ++i) {
        const Bounds2& row = frame.rows[i];
        const double from = frame.joined[i];
        double above = 0.0;
        if (i > 0) above = frame.rows[i - 1].max.x;
        line({from, row.max.y}, {std::max(row.max.x, above), row.max.y});
        line({row.min.x, row.max.y}, row.min);
        line({row.max.x, row.max.y}, {row.max.x, row.min.y});
        if (i + 1 == frame.rows.size()) line(row.min, {row.max.x, row.min.y});
    }
    for (const Frame::Cell& cell : frame.cells)
        if (cell.box.min.x > 0.0) line(cell.box.min, {cell.box.min.x, cell.box.max.y});
    StrokeOptions options;
    options.continuous = true;
    if (!path.empty()) sink.stroke(path, lines, options);

    for (const Frame::Cell& cell : frame.cells) {
        MTextBlock block;
        block.content = cell.text;
        block.height = effectiveTextHeight();
        block.textStyle = dim.textStyle;
        block.attachment = kAttachMiddleCenter;
        emitMTextLayout(layoutMText(block, drawing()), m * Matrix4::translation(cell.box.center()), sink, text);
    }
}

std::size_t ToleranceEntity::sizeInBytes() const {
    const auto texts = [](const ToleranceRow& r) {
        return r.symbol.capacity() + r.toleranceValue.capacity() + r.toleranceMC.capacity() +
               r.toleranceValue2.capacity() + r.toleranceMC2.capacity() + r.datum1.capacity() + r.datum1MC.capacity() +
               r.datum2.capacity() + r.datum2MC.capacity() + r.datum3.capacity() + r.datum3MC.capacity();
    };
    std::size_t size = sizeof *this + texts(first) + rows.capacity() * sizeof(ToleranceRow) + extrasSize();
    for (const ToleranceRow& row : rows) size += texts(row);
    return size;
}

}  // namespace kova::engine
