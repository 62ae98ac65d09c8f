#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/model/color.hpp"
#include "engine/model/name.hpp"

namespace kova::engine {

/// How characters of multiline text are drawn.
struct MTextFormat {
    Name font;
    double height = 2.5;  ///< of capital letters, drawing units
    double widthFactor = 1.0;
    double tracking = 1.0;
    double oblique = 0.0;  ///< radians
    std::optional<Color> color;
    std::int32_t align = 0;  ///< of characters of other heights in the line: 0 bottom, 1 centre, 2 top
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool overline = false;
    bool strikeThrough = false;

    bool operator==(const MTextFormat& o) const;
};

/// How a paragraph is laid out. Lengths are in heights of the text's characters.
struct MTextParagraph {
    struct Tab {
        double at = 0.0;
        char kind = 'l';  ///< l left, c centre, r right, d decimal
        bool operator==(const Tab&) const = default;
    };
    double firstIndent = 0.0;  ///< of the first line, relative to leftIndent
    double leftIndent = 0.0;
    double rightIndent = 0.0;
    double before = 0.0;
    double after = 0.0;
    char align = 0;    ///< l, r, c, j (justified), d (justified, last lines too); 0: by attachment
    char spacing = 0;  ///< m multiple, e exact, a at least; 0: the text's own
    double spacingValue = 1.0;
    std::vector<Tab> tabs;
    bool operator==(const MTextParagraph&) const = default;
};

/// Splits the content of multiline text at its inline codes. Works without recursion; groups nested deeper than
/// kMaxDepth change nothing.
class MTextParser {
public:
    enum class Token : std::uint8_t { End, Text, Tab, Paragraph, ColumnBreak, Stack };
    static constexpr std::size_t kMaxDepth = 256;

    /// Resolved characters are appended to `text`, which tokens point into.
    MTextParser(std::string_view content, const MTextFormat& base, std::string& text);

    Token next();
    /// Text: its place in the text.
    std::size_t offset() const { return offset_; }
    std::size_t size() const { return size_; }
    /// Stack: its two parts and how they stand: '/' with a line, '#' with a slanted line, '^' without a line.
    std::size_t topOffset() const { return topOffset_; }
    std::size_t topSize() const { return topSize_; }
    std::size_t bottomOffset() const { return bottomOffset_; }
    std::size_t bottomSize() const { return bottomSize_; }
    char stackKind() const { return stackKind_; }
    /// In force for the token.
    const MTextFormat& format() const { return state_.format; }
    const MTextParagraph& paragraph() const { return state_.paragraph; }

private:
    struct State {
        MTextFormat format;
        MTextParagraph paragraph;
    };
    enum class Code : std::uint8_t { Unknown, Done, Token };

    Code readCode(Token& token);
    void readFont(std::string_view value, bool shape);
    void readParagraph(std::string_view value);
    void readStack(std::string_view value);
    /// The number at the reading position; the position moves behind it.
    std::optional<double> readNumber();
    void skipTerminator();
    /// Everything up to the next ';', which is passed over; nothing when there is none.
    std::optional<std::string_view> readValue();

    std::string_view content_;
    std::size_t at_ = 0;
    std::string& text_;
    State state_;
    double baseHeight_;
    std::vector<State> groups_;
    std::size_t deeper_ = 0;  ///< open groups beyond kMaxDepth
    std::size_t offset_ = 0;
    std::size_t size_ = 0;
    std::size_t topOffset_ = 0;
    std::size_t topSize_ = 0;
    std::size_t bottomOffset_ = 0;
    std::size_t bottomSize_ = 0;
    char stackKind_ = '/';
};

}  // namespace kova::engine
