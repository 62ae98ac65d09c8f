#include "engine/entities/mtext_layout.hpp"

#include "engine/drawing.hpp"
#include "engine/entities/mtext_parser.hpp"
#include "engine/fonts/codes.hpp"
#include "engine/fonts/fonts.hpp"
#include "math/angles.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Matrix4;
using math::Vector2;

namespace {

constexpr double kLinePitch = 5.0 / 3.0;  ///< baseline distance at spacing factor 1, in text heights
constexpr double kDefaultTab = 4.0;       ///< distance of the default tab stops, in text heights
constexpr double kStackGap = 0.2;         ///< between a fraction's line and its numbers, in their height
constexpr double kStackSide = 0.1;        ///< free space on both sides of a stack
constexpr double kSlantedRaise = 0.6;     ///< height of the numerator's baseline in a slanted fraction
constexpr std::int32_t kMaxColumns = 1000;

/// A piece of a line that is never broken.
struct Atom {
    enum class Kind : std::uint8_t { Word, Space, Tab, Stack };
    Kind kind = Kind::Word;
    char stackKind = 0;
    std::uint32_t format = 0;
    std::size_t offset = 0;  ///< into the text; of a stack its upper part
    std::size_t size = 0;
    std::size_t bottomOffset = 0;
    std::size_t bottomSize = 0;
    double advance = 0.0;
    double start = 0.0;  ///< where its ink begins and ends, from its origin
    double end = 0.0;
    double x = 0.0;
};

struct Line {
    std::size_t first = 0;
    std::size_t last = 0;  ///< behind the last atom
    std::uint32_t paragraph = 0;
    std::uint32_t format = 0;  ///< in force where the line begins
    bool firstOfParagraph = true;
    bool lastOfParagraph = true;
    bool columnBreak = false;  ///< the next line begins a column
    double left = 0.0;         ///< ink, before alignment
    double right = 0.0;
    double height = 0.0;  ///< of the tallest characters
    double ascent = 0.0;  ///< reach above the baseline, stacks included
    double drop = 0.0;    ///< reach of stacks below the baseline
    double shift = 0.0;   ///< by alignment
    double baseline = 0.0;
    std::uint32_t column = 0;
};

/// Where the parts of a stack stand above its own base.
struct StackShape {
    double topBaseline;
    double total;
};
StackShape stackShape(char kind, double height) {
    if (kind == '#') return {kSlantedRaise * height, (1.0 + kSlantedRaise) * height};
    return {(1.0 + 2.0 * kStackGap) * height, (2.0 + 2.0 * kStackGap) * height};
}

/// Scripts without blanks between words: a line may break at every character.
bool isIdeograph(char32_t c) { return (c >= 0x2E80 && c < 0xA4D0) || (c >= 0xF900 && c < 0xFB00) || c >= 0x20000; }

class Layouter {
public:
    Layouter(const MTextBlock& block, const Drawing* drawing, MTextLayout& out) : block_(block), out_(out) {
        static const TextStyle standard;
        const TextStyle& style = drawing != nullptr ? drawing->textStyleOrStandard(block.textStyle) : standard;
        base_.font = style.fontFile;
        bigFont_ = style.bigFontFile;
        const auto positive = [](double v, double otherwise) { return std::isfinite(v) && v > 0.0 ? v : otherwise; };
        base_.height = positive(std::abs(block.height), 0.0);
        base_.widthFactor = positive(style.widthFactor, 1.0) * positive(block.widthFactor, 1.0);
        const double oblique = style.obliqueAngle + block.oblique;
        constexpr double kMax = 85.0 * math::kDegree;
        base_.oblique = std::isfinite(oblique) ? std::clamp(oblique, -kMax, kMax) : 0.0;
        columns_ = block.columns != nullptr && block.columns->used() ? block.columns : nullptr;
        wrap_ = std::isfinite(block.width) && block.width > 0.0 ? block.width : 0.0;
        if (columns_ != nullptr) {
            columnCount_ = std::clamp(columns_->count, 1, kMaxColumns);
            gutter_ = std::isfinite(columns_->gutter) ? std::max(0.0, columns_->gutter) : 0.0;
            if (std::isfinite(columns_->width) && columns_->width > 0.0)
                wrap_ = columns_->width;
            else
                wrap_ = std::max(0.0, (wrap_ - gutter_ * (columnCount_ - 1)) / columnCount_);
        }
        spacing_ = positive(block.lineSpacingFactor, 1.0);
    }

    void run() {
        if (!(base_.height > 0.0)) return;
        out_.text.reserve(block_.content.size());
        MTextParser parser(block_.content, base_, out_.text);
        bool any = false;
        bool afterColumnBreak = false;
        for (;;) {
            const MTextParser::Token token = parser.next();
            if (token == MTextParser::Token::End) break;
            any = true;
            afterColumnBreak = false;
            takeState(parser);
            switch (token) {
                case MTextParser::Token::Text:
                    addText(parser.offset(), parser.size());
                    break;
                case MTextParser::Token::Tab:
                    addTab();
                    break;
                case MTextParser::Token::Stack:
                    addStack(parser);
                    break;
                case MTextParser::Token::ColumnBreak:
                    endLine(atoms_.size(), true);
                    lines_.back().columnBreak = true;
                    afterColumnBreak = true;
                    break;
                default:
                    endLine(atoms_.size(), true);
                    break;
            }
        }
        if (!any) return;
        if (!afterColumnBreak) endLine(atoms_.size(), true);
        for (Line& line : lines_) measure(line);
        alignLines();
        stackLines();
        place();
    }

private:
    double advanceScale(const MTextFormat& f) const { return f.height * f.widthFactor; }

    TextRun runFor(const MTextFormat& f) const {
        TextRun run;
        run.font = f.font;
        run.bigFont = bigFont_;
        run.bold = f.bold;
        run.italic = f.italic;
        run.underline = f.underline;
        run.overline = f.overline;
        run.strikeThrough = f.strikeThrough;
        run.tracking = f.tracking;
        run.xAxis = {f.height * f.widthFactor, 0.0};
        run.yAxis = {f.height * std::tan(f.oblique), f.height};
        return run;
    }

    // Breaking into lines -------------------------------------------------------------------------------------

    void takeState(const MTextParser& parser) {
        if (formats_.empty() || !(formats_.back() == parser.format())) formats_.push_back(parser.format());
        if (!lineOpen_) {
            lineOpen_ = true;
            if (paragraphs_.empty() || !(paragraphs_.back() == parser.paragraph()))
                paragraphs_.push_back(parser.paragraph());
            beginLine(true);
        }
    }
    std::uint32_t format() const { return static_cast<std::uint32_t>(formats_.size() - 1); }
    const MTextParagraph& paragraph() const { return paragraphs_.back(); }
    double indentOf(const MTextParagraph& p, bool firstLine) const {
        return std::max(0.0, (p.leftIndent + (firstLine ? p.firstIndent : 0.0)) * base_.height);
    }
    double limitOf(const MTextParagraph& p) const {
        return wrap_ > 0.0 ? std::max(0.0, wrap_ - p.rightIndent * base_.height)
                           : std::numeric_limits<double>::infinity();
    }

    void beginLine(bool firstOfParagraph) {
        line_ = Line{};
        line_.firstOfParagraph = firstOfParagraph;
        line_.paragraph = static_cast<std::uint32_t>(paragraphs_.size() - 1);
        line_.format = format();
        pen_ = indentOf(paragraph(), firstOfParagraph);
        breakable_ = false;
        content_ = false;
        lineStart_ = lineEnd_;
    }

    /// Ends the current line before the atom `end`; atoms behind it begin the next line.
    void endLine(std::size_t end, bool endOfParagraph) {
        if (!lineOpen_) {  // the text ends right behind a break
            lineOpen_ = true;
            beginLine(true);
        }
        line_.first = lineStart_;
        line_.last = end;
        line_.lastOfParagraph = endOfParagraph;
        lines_.push_back(line_);
        lineEnd_ = end;
        if (endOfParagraph)
            lineOpen_ = false;
        else
            beginLine(false);
    }

    void push(const Atom& atom) {
        atoms_.push_back(atom);
        const std::size_t index = atoms_.size() - 1;
        if (atom.kind == Atom::Kind::Space || atom.kind == Atom::Kind::Tab) {
            pen_ += atom.advance;
            breakable_ = content_;
            breakAt_ = index + 1;
            return;
        }
        const double limit = limitOf(paragraph());
        if (breakable_ && pen_ + atom.end > limit * (1.0 + 1e-9)) {
            endLine(breakAt_, false);
            for (std::size_t i = lineStart_; i < index; ++i) pen_ += atoms_[i].advance;
        }
        pen_ += atom.advance;
        content_ = true;
    }

    /// Allows a break before the next atom.
    void allowBreak() {
        if (!content_) return;
        breakable_ = true;
        breakAt_ = atoms_.size();
    }

    void addWord(std::size_t offset, std::size_t size) {
        if (size == 0) return;
        Atom atom;
        atom.format = format();
        atom.offset = offset;
        atom.size = size;
        measureText(offset, size, atom.advance, atom.start, atom.end);
        push(atom);
    }

    void measureText(std::size_t offset, std::size_t size, double& advance, double& start, double& end) const {
        const MTextFormat& f = formats_.back();
        TextRun run = runFor(f);
        run.text = std::string_view(out_.text).substr(offset, size);
        const TextSpan span = textSpan(run);
        const double scale = advanceScale(f);
        advance = textAdvance(run) * scale;
        start = span.start * scale;
        end = span.end * scale;
    }

    void addText(std::size_t offset, std::size_t size) {
        const std::string_view text = std::string_view(out_.text).substr(0, offset + size);
        std::size_t word = offset;
        std::size_t i = offset;
        while (i < text.size()) {
            if (text[i] == ' ') {
                addWord(word, i - word);
                const std::size_t begin = i;
                while (i < text.size() && text[i] == ' ') ++i;
                const MTextFormat& f = formats_.back();
                Atom atom;
                atom.kind = Atom::Kind::Space;
                atom.format = format();
                atom.offset = begin;
                atom.size = i - begin;
                atom.advance = fontFor(f.font, bigFont_, f.bold, f.italic).glyph(U' ').advance * f.tracking *
                               static_cast<double>(atom.size) * advanceScale(f);
                push(atom);
                word = i;
                continue;
            }
            const std::size_t begin = i;
            if (static_cast<unsigned char>(text[i]) < 0xE2) {  // no ideograph begins with a smaller byte
                ++i;
                continue;
            }
            if (!isIdeograph(nextCodePoint(text, i))) continue;
            addWord(word, begin - word);
            allowBreak();
            addWord(begin, i - begin);
            allowBreak();
            word = i;
        }
        addWord(word, text.size() - word);
    }

    const MTextParagraph::Tab* nextStop(const MTextParagraph& p, double pen) const {
        for (const MTextParagraph::Tab& tab : p.tabs)
            if (tab.at * base_.height > pen * (1.0 + 1e-9)) return &tab;
        return nullptr;
    }
    double defaultStop(double pen) const {
        const double step = kDefaultTab * base_.height;
        return (std::floor(pen / step * (1.0 + 1e-9)) + 1.0) * step;
    }

    void addTab() {
        Atom atom;
        atom.kind = Atom::Kind::Tab;
        atom.format = format();
        const MTextParagraph::Tab* tab = nextStop(paragraph(), pen_);
        atom.advance = std::max(0.0, (tab != nullptr ? tab->at * base_.height : defaultStop(pen_)) - pen_);
        push(atom);
    }

    void addStack(const MTextParser& parser) {
        const MTextFormat& f = formats_.back();
        Atom atom;
        atom.kind = Atom::Kind::Stack;
        atom.stackKind = parser.stackKind();
        atom.format = format();
        atom.offset = parser.topOffset();
        atom.size = parser.topSize();
        atom.bottomOffset = parser.bottomOffset();
        atom.bottomSize = parser.bottomSize();
        const double top = partWidth(atom.offset, atom.size);
        const double bottom = partWidth(atom.bottomOffset, atom.bottomSize);
        const double side = kStackSide * advanceScale(f);
        const double width = atom.stackKind == '#' ? top + bottom + slashWidth(f) : std::max(top, bottom);
        atom.start = side;
        atom.end = side + width;
        atom.advance = width + 2.0 * side;
        push(atom);
    }
    double slashWidth(const MTextFormat& f) const { return 0.5 * advanceScale(f); }
    /// Width of a stack's part by its ink.
    double partWidth(std::size_t offset, std::size_t size) const {
        if (size == 0) return 0.0;
        double advance = 0.0;
        double start = 0.0;
        double end = 0.0;
        measureText(offset, size, advance, start, end);
        return end - start;
    }

    // Lines -----------------------------------------------------------------------------------------------------

    /// Gives the line's atoms their places from the left, before alignment, and takes its height.
    void measure(Line& line) {
        const MTextParagraph& p = paragraphs_[line.paragraph];
        double pen = indentOf(p, line.firstOfParagraph);
        line.left = pen;
        line.right = pen;
        bool first = true;
        for (std::size_t i = line.first; i < line.last; ++i) {
            Atom& atom = atoms_[i];
            if (atom.kind == Atom::Kind::Tab) atom.advance = tabAdvance(line, i, p, pen);
            atom.x = pen;
            pen += atom.advance;
            if (atom.kind == Atom::Kind::Word || atom.kind == Atom::Kind::Stack) {
                if (first) line.left = atom.x + atom.start;
                line.right = std::max(line.right, atom.x + atom.end);
                const double h = formats_[atom.format].height;
                if (atom.kind == Atom::Kind::Word) line.height = std::max(line.height, h);
            }
            first = false;
        }
        if (line.height == 0.0) {
            // A line of stacks only takes the text's own height, an empty one the height in force.
            bool stack = false;
            for (std::size_t i = line.first; i < line.last && !stack; ++i) stack = atoms_[i].kind == Atom::Kind::Stack;
            line.height = stack ? base_.height : formats_[line.format].height;
        }
        line.ascent = line.height;
        for (std::size_t i = line.first; i < line.last; ++i) {
            if (atoms_[i].kind != Atom::Kind::Stack) continue;
            const double base = raise(line, atoms_[i]);
            const double total = stackShape(atoms_[i].stackKind, formats_[atoms_[i].format].height).total;
            line.ascent = std::max(line.ascent, base + total);
            line.drop = std::max(line.drop, -base);
        }
    }

    double tabAdvance(const Line& line, std::size_t index, const MTextParagraph& p, double pen) const {
        const MTextParagraph::Tab* tab = nextStop(p, pen);
        if (tab == nullptr) return defaultStop(pen) - pen;
        const double stop = tab->at * base_.height;
        if (tab->kind == 'l') return stop - pen;
        // The text up to the next tab stands left of the stop or about it.
        double width = 0.0;
        double decimal = -1.0;
        for (std::size_t i = index + 1; i < line.last && atoms_[i].kind != Atom::Kind::Tab; ++i) {
            const Atom& atom = atoms_[i];
            if (tab->kind == 'd' && decimal < 0.0 && atom.kind == Atom::Kind::Word) {
                const std::string_view word = std::string_view(out_.text).substr(atom.offset, atom.size);
                const std::size_t point = word.find_first_of(".,");
                if (point != std::string_view::npos) {
                    const MTextFormat& f = formats_[atom.format];
                    decimal =
                        width + fontFor(f.font, bigFont_, f.bold, f.italic).advance(word.substr(0, point), f.tracking) *
                                    advanceScale(f);
                }
            }
            width += atom.advance;
        }
        const double before = tab->kind == 'c' ? width / 2.0 : tab->kind == 'd' && decimal >= 0.0 ? decimal : width;
        return std::max(0.0, stop - before - pen);
    }

    /// How far an atom stands above the line's baseline.
    double raise(const Line& line, const Atom& atom) const {
        const MTextFormat& f = formats_[atom.format];
        const double own = atom.kind == Atom::Kind::Stack ? stackShape(atom.stackKind, f.height).total : f.height;
        if (f.align == 1) return (line.height - own) / 2.0;
        if (f.align == 2) return line.height - own;
        return 0.0;
    }

    void alignLines() {
        double natural = 0.0;
        for (const Line& line : lines_) {
            const MTextParagraph& p = paragraphs_[line.paragraph];
            const double indent = indentOf(p, line.firstOfParagraph);
            natural =
                std::max(natural, indent + (line.right - line.left) + std::max(0.0, p.rightIndent) * base_.height);
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

    /// Spreads the room over the blanks between the line's words.
    void justify(Line& line, double room) {
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

    static std::int32_t attachmentOf(std::int32_t stored) {
        return stored >= kAttachTopLeft && stored <= kAttachBottomRight ? stored : kAttachTopLeft;
    }

    double distance(const Line& above, const Line& line) const {
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

    double columnHeight(std::uint32_t column) const {
        if (columns_ == nullptr) return 0.0;
        const bool own = columns_->type == 2 && !columns_->autoHeight && !columns_->heights.empty();
        double h = own ? (column < columns_->heights.size() ? columns_->heights[column] : 0.0) : block_.definedHeight;
        if (h == 0.0 && !own && !columns_->heights.empty()) h = columns_->heights[0];
        return std::isfinite(h) && h > 0.0 ? h : 0.0;
    }

    /// Distributes the lines over the columns and gives them their baselines, from the top at 0 downwards.
    void stackLines() {
        const bool isStatic = columns_ != nullptr && columns_->type == 1;
        const std::uint32_t most = columns_ == nullptr ? static_cast<std::uint32_t>(kMaxColumns)
                                   : isStatic          ? static_cast<std::uint32_t>(columnCount_)
                                                       : static_cast<std::uint32_t>(kMaxColumns);
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

    // Output ------------------------------------------------------------------------------------------------------

    void place() {
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
            const std::uint32_t place =
                columns_ != nullptr && columns_->flowReversed ? columnCount - 1 - column : column;
            return origin.x + step * place;
        };

        out_.box = Bounds2{{origin.x, origin.y - height}, {origin.x + width, origin.y}};
        out_.lineCount = lines_.size();
        out_.baseline = origin.y + lines_.front().baseline;
        out_.lastBaseline = origin.y + lines_.back().baseline;
        for (std::uint32_t c = 0; c < usedColumns_; ++c)
            out_.columns.push_back(
                Bounds2{{columnLeft(c), origin.y + columnBottom[c]}, {columnLeft(c) + columnWidth_, origin.y}});
        for (const Line& line : lines_)
            placeLine(line, {columnLeft(line.column) + line.shift, origin.y + line.baseline});
    }

    void placeLine(const Line& line, const Vector2& at) {
        std::size_t end = line.last;
        while (end > line.first &&
               (atoms_[end - 1].kind == Atom::Kind::Space || atoms_[end - 1].kind == Atom::Kind::Tab))
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

    static bool hasLines(const MTextFormat& f) { return f.underline || f.overline || f.strikeThrough; }

    void addPiece(std::uint32_t format, std::size_t offset, std::size_t size, const Vector2& origin) {
        const MTextFormat& f = formats_[format];
        MTextLayout::Piece piece;
        piece.offset = offset;
        piece.size = size;
        piece.run = runFor(f);
        piece.run.origin = origin;
        piece.color = f.color;
        out_.pieces.push_back(std::move(piece));
    }

    void placeStack(const Atom& atom, const Vector2& base) {
        const MTextFormat& f = formats_[atom.format];
        const StackShape shape = stackShape(atom.stackKind, f.height);
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
    double widthOf(const MTextFormat& f, std::size_t offset, std::size_t size) const {
        if (size == 0) return 0.0;
        TextRun run = runFor(f);
        run.text = std::string_view(out_.text).substr(offset, size);
        return textSpan(run).length() * advanceScale(f);
    }

    const MTextBlock& block_;
    MTextLayout& out_;
    MTextFormat base_;
    Name bigFont_;
    const MTextColumns* columns_ = nullptr;
    std::int32_t columnCount_ = 1;
    double gutter_ = 0.0;
    double wrap_ = 0.0;  ///< 0: lines are not wrapped
    double spacing_ = 1.0;
    double columnWidth_ = 0.0;
    std::uint32_t usedColumns_ = 1;

    std::vector<MTextFormat> formats_;
    std::vector<MTextParagraph> paragraphs_;
    std::vector<Atom> atoms_;
    std::vector<Line> lines_;
    Line line_;
    bool lineOpen_ = false;
    std::size_t lineStart_ = 0;
    std::size_t lineEnd_ = 0;
    std::size_t breakAt_ = 0;
    bool breakable_ = false;  ///< the line may be broken before atom breakAt_
    bool content_ = false;    ///< the line has something other than blanks
    double pen_ = 0.0;
};

}  // namespace

void MTextColumns::describe(FieldVisitor& v) {
    v.integer("type", type);
    v.integer("count", count);
    v.length("width", width);
    v.length("gutter", gutter);
    v.boolean("autoHeight", autoHeight);
    v.boolean("flowReversed", flowReversed);
    v.numbers("heights", heights);
}

MTextLayout layoutMText(const MTextBlock& block, const Drawing* drawing) {
    MTextLayout layout;
    Layouter(block, drawing, layout).run();
    if (layout.lineCount == 0) layout.box = Bounds2{{0.0, 0.0}, {0.0, 0.0}};
    return layout;
}

Bounds2 MTextLayout::ink(const Matrix4& matrix) const {
    Bounds2 bounds;
    for (const Piece& piece : pieces) {
        TextRun run = runOf(piece);
        run.origin = matrix.transform_point(run.origin);
        run.xAxis = matrix.transform_direction(run.xAxis);
        run.yAxis = matrix.transform_direction(run.yAxis);
        bounds.expand(textRunBounds(run));
    }
    for (const Rule& rule : rules) {
        bounds.expand(matrix.transform_point(rule.a));
        bounds.expand(matrix.transform_point(rule.b));
    }
    return bounds;
}

Matrix4 mtextMatrix(const MTextBlock& block) {
    const double rotation = std::isfinite(block.rotation) ? block.rotation : 0.0;
    const Matrix4 placed = Matrix4::translation(block.position) * Matrix4::rotation_z(rotation);
    return block.backward ? placed * Matrix4::scaling(-1.0, 1.0) : placed;
}

void emitMTextLayout(const MTextLayout& layout, const Matrix4& matrix, OutlineSink& sink, const OutlineStyle& style) {
    OutlineStyle colored = style;
    const auto styleFor = [&](const std::optional<Color>& color) -> const OutlineStyle& {
        if (!color || color->method == ColorMethod::ByBlock) return style;
        colored.color = *color;
        return colored;
    };
    for (const MTextLayout::Piece& piece : layout.pieces) {
        TextRun run = layout.runOf(piece);
        run.origin = matrix.transform_point(run.origin);
        run.xAxis = matrix.transform_direction(run.xAxis);
        run.yAxis = matrix.transform_direction(run.yAxis);
        sink.text(run, styleFor(piece.color));
    }
    StrokeOptions options;
    options.continuous = true;
    for (const MTextLayout::Rule& rule : layout.rules) {
        Path path;
        path.moveTo(matrix.transform_point(rule.a)).lineTo(matrix.transform_point(rule.b));
        sink.stroke(path, styleFor(rule.color), options);
    }
}

void emitMText(const MTextBlock& block, const Drawing* drawing, OutlineSink& sink, const OutlineStyle& style) {
    if (!block.position.is_finite()) return;
    emitMTextLayout(layoutMText(block, drawing), mtextMatrix(block), sink, style);
}

std::string plainText(std::string_view content) {
    std::string text;
    std::string plain;
    MTextParser parser(content, MTextFormat{}, text);
    for (;;) {
        switch (parser.next()) {
            case MTextParser::Token::End:
                return plain;
            case MTextParser::Token::Text:
                plain += std::string_view(text).substr(parser.offset(), parser.size());
                break;
            case MTextParser::Token::Tab:
                plain += '\t';
                break;
            case MTextParser::Token::Paragraph:
            case MTextParser::Token::ColumnBreak:
                plain += '\n';
                break;
            case MTextParser::Token::Stack:
                plain += std::string_view(text).substr(parser.topOffset(), parser.topSize());
                plain += parser.stackKind() == '^' ? ' ' : '/';
                plain += std::string_view(text).substr(parser.bottomOffset(), parser.bottomSize());
                break;
        }
    }
}

std::string mtextFromPlain(std::string_view text) {
    std::string content;
    content.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\\' || c == '{' || c == '}') {
            content += '\\';
            content += c;
        } else if (c == '\n') {
            content += "\\P";
        } else if (c != '\r') {
            content += c;
        }
    }
    return content;
}

}  // namespace kova::engine
