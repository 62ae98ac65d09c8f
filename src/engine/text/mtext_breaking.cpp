#include "engine/model/drawing.hpp"
#include "engine/text/mtext_layouter.hpp"
#include "engine/text/text_codes.hpp"
#include "engine/fonts/fonts.hpp"
#include "math/angles.hpp"

namespace kova::engine {

namespace {

constexpr double kDefaultTab = 4.0;    ///< distance of the default tab stops, in text heights
constexpr double kStackSide = 0.1;     ///< free space on both sides of a stack
constexpr double kSlantedRaise = 0.6;  ///< height of the numerator's baseline in a slanted fraction
constexpr std::int32_t kMaxColumns = 1000;

/// Scripts without blanks between words: a line may break at every character.
bool isIdeograph(char32_t c) { return (c >= 0x2E80 && c < 0xA4D0) || (c >= 0xF900 && c < 0xFB00) || c >= 0x20000; }

}  // namespace

MTextStackShape mtextStackShape(char kind, double height) {
    if (kind == '#') return {kSlantedRaise * height, (1.0 + kSlantedRaise) * height};
    return {(1.0 + 2.0 * kStackGap) * height, (2.0 + 2.0 * kStackGap) * height};
}

MTextLayouter::MTextLayouter(const MTextBlock& block, const Drawing* drawing, MTextLayout& out)
    : block_(block), out_(out) {
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

void MTextLayouter::run() {
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

TextRun MTextLayouter::runFor(const MTextFormat& f) const {
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

void MTextLayouter::takeState(const MTextParser& parser) {
    // Texts change to and fro between few formats: one of the last ones is taken again.
    constexpr std::size_t kLookBack = 4;
    format_ = formats_.size();
    for (std::size_t i = formats_.size(); i-- > 0 && formats_.size() - i <= kLookBack;) {
        if (!(formats_[i] == parser.format())) continue;
        format_ = i;
        break;
    }
    if (format_ == formats_.size()) formats_.push_back(parser.format());
    if (!lineOpen_) {
        lineOpen_ = true;
        if (paragraphs_.empty() || !(paragraphs_.back() == parser.paragraph()))
            paragraphs_.push_back(parser.paragraph());
        beginLine(true);
    }
}

double MTextLayouter::indentOf(const MTextParagraph& p, bool firstLine) const {
    return std::max(0.0, (p.leftIndent + (firstLine ? p.firstIndent : 0.0)) * base_.height);
}

double MTextLayouter::limitOf(const MTextParagraph& p) const {
    return wrap_ > 0.0 ? std::max(0.0, wrap_ - p.rightIndent * base_.height) : std::numeric_limits<double>::infinity();
}

void MTextLayouter::beginLine(bool firstOfParagraph) {
    line_ = Line{};
    line_.firstOfParagraph = firstOfParagraph;
    line_.paragraph = static_cast<std::uint32_t>(paragraphs_.size() - 1);
    line_.format = format();
    pen_ = indentOf(paragraph(), firstOfParagraph);
    bearing_ = 0.0;
    breakable_ = false;
    content_ = false;
    lineStart_ = lineEnd_;
}

void MTextLayouter::endLine(std::size_t end, bool endOfParagraph) {
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

void MTextLayouter::push(const Atom& atom) {
    atoms_.push_back(atom);
    const std::size_t index = atoms_.size() - 1;
    if (atom.kind == Atom::Kind::Space || atom.kind == Atom::Kind::Tab) {
        pen_ += atom.advance;
        breakable_ = content_;
        breakAt_ = index + 1;
        return;
    }
    const double limit = limitOf(paragraph());
    if (index == lineStart_) bearing_ = atom.start;  // the line begins with its ink
    if (breakable_ && pen_ + atom.end - bearing_ > limit * (1.0 + 1e-9)) {
        endLine(breakAt_, false);
        bearing_ = atoms_[lineStart_].start;
        for (std::size_t i = lineStart_; i < index; ++i) pen_ += atoms_[i].advance;
    }
    pen_ += atom.advance;
    content_ = true;
}

void MTextLayouter::allowBreak() {
    if (!content_) return;
    breakable_ = true;
    breakAt_ = atoms_.size();
}

void MTextLayouter::addWord(std::size_t offset, std::size_t size) {
    if (size == 0) return;
    Atom atom;
    atom.format = format();
    atom.offset = offset;
    atom.size = size;
    measureText(offset, size, atom.advance, atom.start, atom.end);
    push(atom);
}

void MTextLayouter::measureText(std::size_t offset, std::size_t size, double& advance, double& start,
                                double& end) const {
    const MTextFormat& f = formats_[format_];
    TextRun run = runFor(f);
    run.text = std::string_view(out_.text).substr(offset, size);
    const TextSpan span = textSpan(run);
    const double scale = advanceScale(f);
    advance = textAdvance(run) * scale;
    start = span.start * scale;
    end = span.end * scale;
}

void MTextLayouter::addText(std::size_t offset, std::size_t size) {
    const std::string_view text = std::string_view(out_.text).substr(0, offset + size);
    std::size_t word = offset;
    std::size_t i = offset;
    while (i < text.size()) {
        if (text[i] == ' ') {
            addWord(word, i - word);
            const std::size_t begin = i;
            while (i < text.size() && text[i] == ' ') ++i;
            const MTextFormat& f = formats_[format_];
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

const MTextParagraph::Tab* MTextLayouter::nextStop(const MTextParagraph& p, double pen) const {
    for (const MTextParagraph::Tab& tab : p.tabs)
        if (tab.at * base_.height > pen * (1.0 + 1e-9)) return &tab;
    return nullptr;
}

double MTextLayouter::defaultStop(double pen) const {
    const double step = kDefaultTab * base_.height;
    return (std::floor(pen / step * (1.0 + 1e-9)) + 1.0) * step;
}

void MTextLayouter::addTab() {
    Atom atom;
    atom.kind = Atom::Kind::Tab;
    atom.format = format();
    const MTextParagraph::Tab* tab = nextStop(paragraph(), pen_);
    atom.advance = std::max(0.0, (tab != nullptr ? tab->at * base_.height : defaultStop(pen_)) - pen_);
    push(atom);
}

void MTextLayouter::addStack(const MTextParser& parser) {
    const MTextFormat& f = formats_[format_];
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

double MTextLayouter::partWidth(std::size_t offset, std::size_t size) const {
    if (size == 0) return 0.0;
    double advance = 0.0;
    double start = 0.0;
    double end = 0.0;
    measureText(offset, size, advance, start, end);
    return end - start;
}

void MTextLayouter::measure(Line& line) {
    const MTextParagraph& p = paragraphs_[line.paragraph];
    double pen = indentOf(p, line.firstOfParagraph);
    line.left = pen;
    line.right = pen;
    if (line.first < line.last) pen -= atoms_[line.first].start;  // ink begins at the indent
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
        const double total = mtextStackShape(atoms_[i].stackKind, formats_[atoms_[i].format].height).total;
        line.ascent = std::max(line.ascent, base + total);
        line.drop = std::max(line.drop, -base);
    }
}

double MTextLayouter::tabAdvance(const Line& line, std::size_t index, const MTextParagraph& p, double pen) const {
    const MTextParagraph::Tab* tab = nextStop(p, pen);
    const double stop = tab != nullptr ? tab->at * base_.height : defaultStop(pen);
    if (tab == nullptr || tab->kind == 'l') {
        const double bearing = index + 1 < line.last ? atoms_[index + 1].start : 0.0;
        return std::max(0.0, stop - bearing - pen);
    }
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

double MTextLayouter::raise(const Line& line, const Atom& atom) const {
    const MTextFormat& f = formats_[atom.format];
    const double own = atom.kind == Atom::Kind::Stack ? mtextStackShape(atom.stackKind, f.height).total : f.height;
    if (f.align == 1) return (line.height - own) / 2.0;
    if (f.align == 2) return line.height - own;
    return 0.0;
}

}  // namespace kova::engine
