#pragma once

#include "engine/text/mtext_layout.hpp"
#include "engine/text/mtext_parser.hpp"

namespace kova::engine {

/// Lays multiline text out: breaks it into lines, aligns these and stacks them into columns. For one use.
class MTextLayouter {
public:
    /// Both must outlive the layouter; the block's content too.
    MTextLayouter(const MTextBlock& block, const Drawing* drawing, MTextLayout& out);
    /// Fills the layout. A block without content or of no height leaves it empty.
    void run();

private:
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

    double advanceScale(const MTextFormat& f) const { return f.height * f.widthFactor; }
    TextRun runFor(const MTextFormat& f) const;

    // Breaking into lines -------------------------------------------------------------------------------------
    void takeState(const MTextParser& parser);
    std::uint32_t format() const { return static_cast<std::uint32_t>(format_); }
    const MTextParagraph& paragraph() const { return paragraphs_.back(); }
    double indentOf(const MTextParagraph& p, bool firstLine) const;
    double limitOf(const MTextParagraph& p) const;
    void beginLine(bool firstOfParagraph);
    /// Ends the current line before the atom `end`; atoms behind it begin the next line.
    void endLine(std::size_t end, bool endOfParagraph);
    void push(const Atom& atom);
    /// Allows a break before the next atom.
    void allowBreak();
    void addWord(std::size_t offset, std::size_t size);
    void measureText(std::size_t offset, std::size_t size, double& advance, double& start, double& end) const;
    void addText(std::size_t offset, std::size_t size);
    const MTextParagraph::Tab* nextStop(const MTextParagraph& p, double pen) const;
    double defaultStop(double pen) const;
    void addTab();
    void addStack(const MTextParser& parser);
    double slashWidth(const MTextFormat& f) const { return 0.5 * advanceScale(f); }
    /// Width of a stack's part by its ink.
    double partWidth(std::size_t offset, std::size_t size) const;

    // Lines -----------------------------------------------------------------------------------------------------
    /// Gives the line's atoms their places from the left, before alignment, and takes its height.
    void measure(Line& line);
    double tabAdvance(const Line& line, std::size_t index, const MTextParagraph& p, double pen) const;
    /// How far an atom stands above the line's baseline.
    double raise(const Line& line, const Atom& atom) const;
    void alignLines();
    /// Spreads the room over the blanks between the line's words.
    void justify(Line& line, double room);
    static std::int32_t attachmentOf(std::int32_t stored);
    double distance(const Line& above, const Line& line) const;
    double columnHeight(std::uint32_t column) const;
    /// Distributes the lines over the columns and gives them their baselines, from the top at 0 downwards.
    void stackLines();

    // Output ------------------------------------------------------------------------------------------------------
    void place();
    void placeLine(const Line& line, const math::Vector2& at);
    static bool hasLines(const MTextFormat& f) { return f.underline || f.overline || f.strikeThrough; }
    void addPiece(std::uint32_t format, std::size_t offset, std::size_t size, const math::Vector2& origin);
    void placeStack(const Atom& atom, const math::Vector2& base);
    double widthOf(const MTextFormat& f, std::size_t offset, std::size_t size) const;

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
    std::size_t format_ = 0;  ///< the one in force while lines are broken
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
    double bearing_ = 0.0;  ///< free space before the ink of the line's first character
};

/// Where the parts of a stack stand above its own base, and its height; `height` is that of its characters.
struct MTextStackShape {
    double topBaseline;
    double total;
};
MTextStackShape mtextStackShape(char kind, double height);

/// Free space between a fraction's line and its numbers, in their height.
inline constexpr double kStackGap = 0.2;

}  // namespace kova::engine
