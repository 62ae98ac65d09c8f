#include "engine/text/mtext_parser.hpp"

#include "engine/text/text_codes.hpp"
#include "math/angles.hpp"
#include "strings/numbers.hpp"

namespace kova::engine {

namespace {

/// Heights stay within this factor of the text's own, however often a relative height is applied.
constexpr double kHeightRange = 1e4;
constexpr std::size_t kMaxTabs = 64;
/// Values of codes are short; a missing terminator must not make every code scan the rest of the text.
constexpr std::size_t kMaxValue = 2048;

bool isNumberChar(char c) { return (c >= '0' && c <= '9') || c == '.' || c == '-' || c == '+'; }

std::optional<double> toNumber(std::string_view text) {
    if (!text.empty() && text[0] == '+') text.remove_prefix(1);
    double value = 0.0;
    if (strings::readReal(text.data(), text.data() + text.size(), value) == nullptr || !std::isfinite(value))
        return std::nullopt;
    return value;
}

}  // namespace

bool MTextFormat::operator==(const MTextFormat& o) const {
    return font.identical(o.font) && height == o.height && widthFactor == o.widthFactor && tracking == o.tracking &&
           oblique == o.oblique && color == o.color && align == o.align && bold == o.bold && italic == o.italic &&
           underline == o.underline && overline == o.overline && strikeThrough == o.strikeThrough;
}

MTextParser::MTextParser(std::string_view content, const MTextFormat& base, std::string& text)
    : content_(content), text_(text), baseHeight_(base.height) {
    state_.format = base;
}

std::optional<double> MTextParser::readNumber() {
    const std::size_t begin = at_;
    while (at_ < content_.size() && at_ - begin < 32 && isNumberChar(content_[at_])) ++at_;
    return toNumber(content_.substr(begin, at_ - begin));
}

void MTextParser::skipTerminator() {
    if (at_ < content_.size() && content_[at_] == ';') ++at_;
}

std::optional<std::string_view> MTextParser::readValue() {
    const std::string_view rest = content_.substr(at_, kMaxValue);
    const std::size_t end = rest.find(';');
    if (end == std::string_view::npos) return std::nullopt;
    at_ += end + 1;
    return rest.substr(0, end);
}

void MTextParser::readFont(std::string_view value, bool shape) {
    MTextFormat& f = state_.format;
    std::size_t bar = value.find('|');
    std::string_view name = value.substr(0, bar);
    f.bold = false;
    f.italic = false;
    while (bar != std::string_view::npos) {
        value.remove_prefix(bar + 1);
        bar = value.find('|');
        const std::string_view option = value.substr(0, bar);
        if (option.size() < 2) continue;
        if (option[0] == 'b') f.bold = option[1] != '0';
        if (option[0] == 'i') f.italic = option[1] != '0';
    }
    if (name.empty()) return;
    const bool plainShape =
        shape && name.find('.') == std::string_view::npos && name.find(',') == std::string_view::npos;
    f.font = plainShape ? Name(std::string(name) + ".shx") : Name(name);
}

void MTextParser::readParagraph(std::string_view value) {
    MTextParagraph& p = state_.paragraph;
    const auto numberAt = [&](std::size_t& i) {
        const std::size_t begin = i;
        while (i < value.size() && isNumberChar(value[i])) ++i;
        return std::clamp(toNumber(value.substr(begin, i - begin)).value_or(0.0), -1e6, 1e6);
    };
    std::size_t i = 0;
    while (i < value.size()) {
        const char key = value[i++];
        const bool reset = i < value.size() && value[i] == '*';
        if (reset) ++i;
        switch (key) {
            case '*':
                p = MTextParagraph{};
                break;
            case 'i':
                p.firstIndent = reset ? 0.0 : numberAt(i);
                break;
            case 'l':
                p.leftIndent = reset ? 0.0 : numberAt(i);
                break;
            case 'r':
                p.rightIndent = reset ? 0.0 : numberAt(i);
                break;
            case 'b':
                p.before = reset ? 0.0 : std::max(0.0, numberAt(i));
                break;
            case 'a':
                p.after = reset ? 0.0 : std::max(0.0, numberAt(i));
                break;
            case 'q':
                p.align = 0;
                if (!reset && i < value.size() && std::string_view("lrcjd").find(value[i]) != std::string_view::npos)
                    p.align = value[i++];
                break;
            case 's':
                p.spacing = 0;
                if (!reset && i < value.size() && std::string_view("mea").find(value[i]) != std::string_view::npos) {
                    const char kind = value[i++];
                    const double factor = numberAt(i);
                    if (factor > 0.0) {
                        p.spacing = kind;
                        p.spacingValue = factor;
                    }
                }
                break;
            case 't':
                p.tabs.clear();
                while (!reset && i < value.size() && p.tabs.size() < kMaxTabs) {
                    MTextParagraph::Tab tab;
                    if (std::string_view("crd").find(value[i]) != std::string_view::npos) {
                        tab.kind = value[i++];
                    } else if (value[i] == 'z') {  // written where a list of stops was cleared
                        ++i;
                        if (i < value.size() && value[i] == ',') ++i;
                        continue;
                    }
                    const std::size_t before = i;
                    tab.at = numberAt(i);
                    if (i == before) break;
                    p.tabs.push_back(tab);
                    if (i >= value.size() || value[i] != ',') break;
                    ++i;
                }
                std::sort(p.tabs.begin(), p.tabs.end(), [](const auto& a, const auto& b) { return a.at < b.at; });
                break;
            default:
                break;  // x, commas and what later versions add
        }
    }
}

void MTextParser::readStack(std::string_view value) {
    stackKind_ = 0;
    topOffset_ = text_.size();
    topSize_ = 0;
    bottomOffset_ = topOffset_;
    for (std::size_t i = 0; i < value.size();) {
        const char c = value[i];
        if (c == '\\' && i + 1 < value.size()) {
            if (readUnicodeCode(value, i, text_)) continue;
            text_ += value[i + 1];
            i += 2;
            continue;
        }
        char toggle = 0;
        if (c == '%' && readPercentCode(value, i, text_, toggle)) continue;
        if (stackKind_ == 0 && (c == '/' || c == '#' || c == '^')) {
            stackKind_ = c;
            topSize_ = text_.size() - topOffset_;
            bottomOffset_ = text_.size();
            ++i;
            // A caret is followed by a blank, so that it is no code for a control character.
            if (c == '^' && i < value.size() && value[i] == ' ') ++i;
            continue;
        }
        text_ += c == '\n' || c == '\r' || c == '\t' ? ' ' : c;
        ++i;
    }
    bottomSize_ = text_.size() - bottomOffset_;
    if (stackKind_ == 0) {  // nothing to stack: plain text
        offset_ = topOffset_;
        size_ = text_.size() - topOffset_;
    }
}

MTextParser::Code MTextParser::readCode(Token& token) {
    // at_ stands at a backslash with something behind it.
    const std::size_t start = at_;
    const char code = content_[at_ + 1];
    at_ += 2;
    MTextFormat& f = state_.format;
    const auto unknown = [&] {
        at_ = start;
        return Code::Unknown;
    };
    switch (code) {
        case 'P':
        case 'X':
            token = Token::Paragraph;
            return Code::Token;
        case 'N':
            token = Token::ColumnBreak;
            return Code::Token;
        case 't':
            token = Token::Tab;
            return Code::Token;
        case 'L':
            f.underline = true;
            return Code::Done;
        case 'l':
            f.underline = false;
            return Code::Done;
        case 'O':
            f.overline = true;
            return Code::Done;
        case 'o':
            f.overline = false;
            return Code::Done;
        case 'K':
            f.strikeThrough = true;
            return Code::Done;
        case 'k':
            f.strikeThrough = false;
            return Code::Done;
        case 'A': {
            const auto value = readNumber();
            if (!value) return unknown();
            f.align = static_cast<std::int32_t>(std::clamp(*value, 0.0, 2.0));
            skipTerminator();
            return Code::Done;
        }
        case 'C': {
            const auto value = readNumber();
            if (!value) return unknown();
            if (const auto color = Color::fromBareIndex(static_cast<int>(std::clamp(*value, -1.0, 1000.0))))
                f.color = color;
            skipTerminator();
            return Code::Done;
        }
        case 'c': {
            const auto value = readNumber();
            if (!value) return unknown();
            const auto bgr = static_cast<std::uint32_t>(std::clamp(*value, 0.0, 4294967295.0));
            f.color = Color::rgb(static_cast<std::uint8_t>(bgr), static_cast<std::uint8_t>(bgr >> 8),
                                 static_cast<std::uint8_t>(bgr >> 16));
            skipTerminator();
            return Code::Done;
        }
        case 'H':
        case 'W':
        case 'T': {
            const auto value = readNumber();
            if (!value) return unknown();
            const bool relative = at_ < content_.size() && content_[at_] == 'x';
            if (relative) ++at_;
            skipTerminator();
            if (*value <= 0.0) return Code::Done;
            if (code == 'H')
                f.height = std::clamp(relative ? f.height * *value : *value, baseHeight_ / kHeightRange,
                                      baseHeight_ * kHeightRange);
            else if (code == 'W')
                f.widthFactor = std::clamp(relative ? f.widthFactor * *value : *value, 0.01, 100.0);
            else
                f.tracking = std::clamp(relative ? f.tracking * *value : *value, 0.1, 10.0);
            return Code::Done;
        }
        case 'Q': {
            const auto value = readNumber();
            if (!value) return unknown();
            f.oblique = math::toRadians(std::clamp(*value, -85.0, 85.0));
            skipTerminator();
            return Code::Done;
        }
        case 'f':
        case 'F': {
            const auto value = readValue();
            if (!value) return unknown();
            readFont(*value, code == 'F');
            return Code::Done;
        }
        case 'p': {
            const auto value = readValue();
            if (!value) return unknown();
            readParagraph(*value);
            return Code::Done;
        }
        case 'S': {
            // The terminator may be escaped within the stack.
            std::size_t end = at_;
            const std::size_t limit = std::min(content_.size(), at_ + kMaxValue);
            while (end < limit && content_[end] != ';') end += content_[end] == '\\' ? 2 : 1;
            if (end >= limit) return unknown();
            readStack(content_.substr(at_, end - at_));
            at_ = end + 1;
            token = stackKind_ == 0 ? Token::Text : Token::Stack;
            return stackKind_ == 0 && size_ == 0 ? Code::Done : Code::Token;
        }
        default:
            return unknown();
    }
}

MTextParser::Token MTextParser::next() {
    offset_ = text_.size();
    size_ = 0;
    const auto pending = [&] {
        size_ = text_.size() - offset_;
        return size_ > 0;
    };
    while (at_ < content_.size()) {
        // Ordinary characters are taken over in one piece.
        const std::size_t special = content_.find_first_of("\\{}\n\r\t%^", at_);
        if (special != at_) {
            const std::size_t end = std::min(special, content_.size());
            text_ += content_.substr(at_, end - at_);
            at_ = end;
            continue;
        }
        const char c = content_[at_];
        const char after = at_ + 1 < content_.size() ? content_[at_ + 1] : '\0';
        if (c == '%') {
            char toggle = 0;
            const std::size_t before = at_;
            if (readPercentCode(content_, at_, text_, toggle) && toggle == 0) continue;
            at_ = before + 1;
            text_ += c;
            continue;
        }
        if (c == '\\') {
            if (after == '\\' || after == '{' || after == '}') {
                text_ += after;
                at_ += 2;
                continue;
            }
            if (after == '~') {
                text_ += "\u00A0";
                at_ += 2;
                continue;
            }
            if (readUnicodeCode(content_, at_, text_)) continue;
            if (after == '\0') {
                text_ += c;
                ++at_;
                continue;
            }
        }
        if (c == '^' && after != 'I' && after != 'J' && after != 'M') {
            text_ += c;
            ++at_;
            continue;
        }
        // What follows ends the stretch of text before it.
        if (pending()) return Token::Text;
        switch (c) {
            case '{':
                ++at_;
                if (groups_.size() < kMaxDepth)
                    groups_.push_back(state_);
                else
                    ++deeper_;
                continue;
            case '}':
                ++at_;
                if (deeper_ > 0) {
                    --deeper_;
                } else if (!groups_.empty()) {
                    state_ = std::move(groups_.back());
                    groups_.pop_back();
                }
                continue;
            case '\r':
                ++at_;
                if (after == '\n') ++at_;
                return Token::Paragraph;
            case '\n':
                ++at_;
                return Token::Paragraph;
            case '\t':
                ++at_;
                return Token::Tab;
            case '^':
                at_ += 2;
                if (after == 'I') return Token::Tab;
                if (after == 'M' && content_.substr(at_, 2) == "^J") at_ += 2;
                return Token::Paragraph;
            default:
                break;
        }
        Token token = Token::End;
        switch (readCode(token)) {
            case Code::Token:
                return token;
            case Code::Done:
                continue;
            case Code::Unknown:  // shown as it stands
                text_ += c;
                ++at_;
                continue;
        }
    }
    return pending() ? Token::Text : Token::End;
}

}  // namespace kova::engine
