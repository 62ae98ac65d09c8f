#include "engine/text/mtext_layouter.hpp"
#include "engine/fonts/fonts.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Vector2;

namespace {

constexpr double kLinePitch = 5.0 / 3.0;  ///< baseline distance at spacing factor 1, in text heights
constexpr std::uint32_t kMostColumns = 1000;

}  // namespace

void MTextLayouter::alignLines() {
    double natural = 0.0;
    for (const Line& line : lines_) {
        const MTextParagraph& p = paragraphs_[line.paragraph];
        const double indent = indentOf(p, line.firstOfParagraph);
        natural = std::max(natural, indent + (line.right - line.left) + std::max(0.0, p.rightIndent) * base_.height);
    }
    columnWidth_ = wrap_ > 0.0 ? wrap_ : natural;
    const std::int32_t attachment = attachmentOf(block_.attachment);
    const char byAttachment = "lcr"[(attachment - 1) % 3];
    for (Line& line : lines_) {
        const MTextParagraph& p = paragraphs_[line.paragraph];
        const double indent = indentOf(p, line.firstOfParagraph);
        const double limit = std::max(indent, columnWidth_ - p.rightIndent * base_.height);
        const char align = p.align != 0 ? p.align : byAttachment;
        const double room = (limit - indent) - (line.right - line.left);
        line.shift = indent - line.left;
        if (align == 'r') line.shift += room;
        if (align == 'c') line.shift += room / 2.0;
        if ((align == 'j' && !line.lastOfParagraph) || align == 'd') justify(line, room);
    }
}

void MTextLayouter::justify(Line& line, double room) {
    std::size_t end = line.last;
    while (end > line.first && atoms_[end - 1].kind == Atom::Kind::Space) --end;
    std::size_t gaps = 0;
    for (std::size_t i = line.first; i < end; ++i) {
        if (atoms_[i].kind == Atom::Kind::Tab) return;
        if (atoms_[i].kind == Atom::Kind::Space) ++gaps;
    }
    if (gaps == 0 || room <= 0.0) return;
    const double each = room / static_cast<double>(gaps);
    double moved = 0.0;
    for (std::size_t i = line.first; i < end; ++i) {
        atoms_[i].x += moved;
        if (atoms_[i].kind == Atom::Kind::Space) moved += each;
    }
    line.right += moved;
}

std::int32_t MTextLayouter::attachmentOf(std::int32_t stored) {
    return stored >= kAttachTopLeft && stored <= kAttachBottomRight ? stored : kAttachTopLeft;
}

double MTextLayouter::distance(const Line& above, const Line& line) const {
    const MTextParagraph& p = paragraphs_[line.paragraph];
    double d = spacing_ * kLinePitch * (block_.lineSpacingExact ? base_.height : line.height);
    if (p.spacing == 'm')
        d = p.spacingValue * kLinePitch * (block_.lineSpacingExact ? base_.height : line.height);
    else if (p.spacing == 'e')
        d = p.spacingValue * base_.height;
    else if (p.spacing == 'a')
        d = std::max(d, p.spacingValue * base_.height);
    if (!block_.lineSpacingExact && p.spacing != 'e') d += (line.ascent - line.height) + above.drop;
    if (line.firstOfParagraph) d += (p.before + paragraphs_[above.paragraph].after) * base_.height;
    return d;
}

double MTextLayouter::columnHeight(std::uint32_t column) const {
    if (columns_ == nullptr) return 0.0;
    const bool own = columns_->type == 2 && !columns_->autoHeight && !columns_->heights.empty();
    double h = own ? (column < columns_->heights.size() ? columns_->heights[column] : 0.0) : block_.definedHeight;
    if (h == 0.0 && !own && !columns_->heights.empty()) h = columns_->heights[0];
    return std::isfinite(h) && h > 0.0 ? h : 0.0;
}

void MTextLayouter::stackLines() {
    const bool isStatic = columns_ != nullptr && columns_->type == 1;
    const std::uint32_t most = columns_ == nullptr ? kMostColumns
                               : isStatic          ? static_cast<std::uint32_t>(columnCount_)
                                                   : kMostColumns;
    // Static columns without a height share the lines evenly.
    const auto count = static_cast<std::size_t>(columnCount_);
    const std::size_t share = isStatic && columnHeight(0) == 0.0 ? (lines_.size() + count - 1) / count : 0;
    std::uint32_t column = 0;
    std::size_t inColumn = 0;
    double y = 0.0;
    bool forced = false;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        Line& line = lines_[i];
        double baseline = inColumn == 0 ? -line.ascent : y - distance(lines_[i - 1], line);
        const double room = columnHeight(column);
        const bool full =
            columns_ != nullptr && inColumn > 0 &&
            ((room > 0.0 && -baseline + line.drop > room * (1.0 + 1e-9)) || (share > 0 && inColumn >= share));
        if ((full || (forced && columns_ != nullptr)) && column + 1 < most) {
            ++column;
            inColumn = 0;
            baseline = -line.ascent;
        }
        line.column = column;
        line.baseline = baseline;
        y = baseline;
        ++inColumn;
        forced = line.columnBreak;
    }
    usedColumns_ = column + 1;
}

void MTextLayouter::place() {
    double height = 0.0;
    std::vector<double> columnBottom(usedColumns_, 0.0);
    for (const Line& line : lines_) {
        double& bottom = columnBottom[line.column];
        bottom = std::min(bottom, line.baseline - line.drop);
        height = std::max(height, -bottom);
    }
    const bool isStatic = columns_ != nullptr && columns_->type == 1;
    const std::uint32_t columnCount =
        isStatic ? std::max(usedColumns_, static_cast<std::uint32_t>(columnCount_)) : usedColumns_;
    const double step = columnWidth_ + gutter_;
    const double width = columnWidth_ + step * (columnCount - 1);
    const std::int32_t attachment = attachmentOf(block_.attachment) - 1;
    const Vector2 origin{-width * (attachment % 3) / 2.0, height * (attachment / 3) / 2.0};
    const auto columnLeft = [&](std::uint32_t column) {
        const std::uint32_t place = columns_ != nullptr && columns_->flowReversed ? columnCount - 1 - column : column;
        return origin.x + step * place;
    };

    out_.box = Bounds2{{origin.x, origin.y - height}, {origin.x + width, origin.y}};
    out_.lineCount = lines_.size();
    out_.baseline = origin.y + lines_.front().baseline;
    out_.lastBaseline = origin.y + lines_.back().baseline;
    for (std::uint32_t c = 0; c < usedColumns_; ++c)
        out_.columns.push_back(
            Bounds2{{columnLeft(c), origin.y + columnBottom[c]}, {columnLeft(c) + columnWidth_, origin.y}});
    for (const Line& line : lines_) placeLine(line, {columnLeft(line.column) + line.shift, origin.y + line.baseline});
}

void MTextLayouter::placeLine(const Line& line, const Vector2& at) {
    std::size_t end = line.last;
    while (end > line.first && (atoms_[end - 1].kind == Atom::Kind::Space || atoms_[end - 1].kind == Atom::Kind::Tab))
        --end;
    MTextLayout::Piece* open = nullptr;
    std::uint32_t openFormat = 0;
    double expected = 0.0;  // where an atom must stand to continue the open piece
    for (std::size_t i = line.first; i < end; ++i) {
        const Atom& atom = atoms_[i];
        if (atom.kind == Atom::Kind::Tab || atom.kind == Atom::Kind::Stack) {
            open = nullptr;
            if (atom.kind == Atom::Kind::Stack) placeStack(atom, {at.x + atom.x, at.y + raise(line, atom)});
            continue;
        }
        const double tolerance = 1e-9 * formats_[atom.format].height;
        if (open != nullptr && openFormat == atom.format && open->offset + open->size == atom.offset &&
            std::abs(atom.x - expected) <= tolerance) {
            open->size += atom.size;
        } else if (atom.kind == Atom::Kind::Space && !hasLines(formats_[atom.format])) {
            open = nullptr;
            continue;
        } else {
            addPiece(atom.format, atom.offset, atom.size, {at.x + atom.x, at.y + raise(line, atom)});
            open = &out_.pieces.back();
            openFormat = atom.format;
        }
        expected = atom.x + atom.advance;
    }
}

void MTextLayouter::addPiece(std::uint32_t format, std::size_t offset, std::size_t size, const Vector2& origin) {
    const MTextFormat& f = formats_[format];
    MTextLayout::Piece piece;
    piece.offset = offset;
    piece.size = size;
    piece.run = runFor(f);
    piece.run.origin = origin;
    piece.color = f.color;
    out_.pieces.push_back(std::move(piece));
}

void MTextLayouter::placeStack(const Atom& atom, const Vector2& base) {
    const MTextFormat& f = formats_[atom.format];
    const MTextStackShape shape = mtextStackShape(atom.stackKind, f.height);
    const auto part = [&](std::size_t offset, std::size_t size, double x0, double x1, double y, double where) {
        // where: 0 left, 0.5 centred between x0 and x1
        if (size == 0) return;
        TextRun run = runFor(f);
        run.text = std::string_view(out_.text).substr(offset, size);
        const TextSpan span = textSpan(run);
        const double scale = advanceScale(f);
        const double room = (x1 - x0) - span.length() * scale;
        addPiece(atom.format, offset, size, {x0 + room * where - span.start * scale, y});
    };
    const double x0 = base.x + atom.start;
    const double x1 = base.x + atom.end;
    if (atom.stackKind == '#') {
        const double bottomWidth = widthOf(f, atom.bottomOffset, atom.bottomSize);
        const double cut = x1 - bottomWidth - slashWidth(f);
        part(atom.offset, atom.size, x0, x1, base.y + shape.topBaseline, 0.0);
        part(atom.bottomOffset, atom.bottomSize, x1 - bottomWidth, x1, base.y, 0.0);
        const double lean = slashWidth(f);
        out_.rules.push_back({{cut - 0.1 * lean, base.y}, {cut + 1.1 * lean, base.y + shape.total}, f.color});
        return;
    }
    // Tolerances stand flush left, fractions centred about their line.
    const double where = atom.stackKind == '^' ? 0.0 : 0.5;
    part(atom.offset, atom.size, x0, x1, base.y + shape.topBaseline, where);
    part(atom.bottomOffset, atom.bottomSize, x0, x1, base.y, where);
    if (atom.stackKind == '/') {
        const double y = base.y + (1.0 + kStackGap) * f.height;
        out_.rules.push_back({{x0, y}, {x1, y}, f.color});
    }
}

double MTextLayouter::widthOf(const MTextFormat& f, std::size_t offset, std::size_t size) const {
    if (size == 0) return 0.0;
    TextRun run = runFor(f);
    run.text = std::string_view(out_.text).substr(offset, size);
    return textSpan(run).length() * advanceScale(f);
}

}  // namespace kova::engine
