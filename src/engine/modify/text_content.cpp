#include "engine/modify/text_content.hpp"

#include <QChar>

#include "engine/kinds/all.hpp"
#include "engine/text/text_codes.hpp"
#include "strings/case_fold.hpp"

namespace kova::engine {

namespace {

/// Goes through the content of a text.
class LetterReader {
public:
    LetterReader(std::string_view content, bool inlineCodes) : content_(content), inlineCodes_(inlineCodes) {}

    std::vector<TextLetter> read() {
        while (at_ < content_.size()) {
            if (readCode()) continue;
            if (inlineCodes_ && content_[at_] == '\\' && readInlineCode()) continue;
            if (inlineCodes_ && (content_[at_] == '{' || content_[at_] == '}')) {
                ++at_;
                continue;
            }
            if (inStack_ && content_[at_] == ';') {
                inStack_ = false;
                ++at_;
                continue;
            }
            const std::size_t begin = at_;
            const char32_t c = nextCodePoint(content_, at_);
            letters_.push_back({begin, at_, c, true});
        }
        return std::move(letters_);
    }

private:
    void add(std::size_t size, char32_t value) {
        letters_.push_back({at_, at_ + size, value, false});
        at_ += size;
    }

    /// %% codes and \U+XXXX.
    bool readCode() {
        std::string out;
        char toggle = 0;
        std::size_t end = at_;
        const bool read = content_[at_] == '%'    ? readPercentCode(content_, end, out, toggle)
                          : content_[at_] == '\\' ? readUnicodeCode(content_, end, out)
                                                  : false;
        if (!read) return false;
        if (out.empty()) {
            at_ = end;
        } else {
            std::size_t i = 0;
            add(end - at_, nextCodePoint(out, i));
        }
        return true;
    }

    bool readInlineCode() {
        if (at_ + 1 >= content_.size()) return false;
        switch (content_[at_ + 1]) {
            case 'P':
            case 'N':
            case 'X':
                add(2, U'\n');
                return true;
            case '~':
                add(2, U'\u00a0');
                return true;
            case '\\':
            case '{':
            case '}':
                add(2, static_cast<unsigned char>(content_[at_ + 1]));
                return true;
            case 'L':
            case 'l':
            case 'O':
            case 'o':
            case 'K':
            case 'k':
                at_ += 2;
                return true;
            case 'S':
                inStack_ = true;
                at_ += 2;
                return true;
            case 'A':
            case 'C':
            case 'c':
            case 'F':
            case 'f':
            case 'H':
            case 'h':
            case 'p':
            case 'Q':
            case 'T':
            case 'W': {
                const std::size_t end = content_.find(';', at_);
                if (end == std::string_view::npos) return false;
                at_ = end + 1;
                return true;
            }
            default:
                return false;
        }
    }

    std::string_view content_;
    bool inlineCodes_;
    bool inStack_ = false;
    std::size_t at_ = 0;
    std::vector<TextLetter> letters_;
};

std::vector<char32_t> folded(std::string_view text) {
    std::vector<char32_t> out;
    for (std::size_t i = 0; i < text.size();) out.push_back(strings::foldCase(nextCodePoint(text, i)));
    return out;
}

/// Calls use(index of the first letter) for every occurrence.
template <class Use>
std::size_t eachOccurrence(const std::vector<TextLetter>& letters, const std::vector<char32_t>& what, Use use) {
    std::size_t count = 0;
    if (what.empty()) return 0;
    std::vector<char32_t> text;
    text.reserve(letters.size());
    for (const TextLetter& letter : letters) text.push_back(strings::foldCase(letter.value));
    for (auto from = text.begin();;) {
        from = std::search(from, text.end(), std::boyer_moore_horspool_searcher(what.begin(), what.end()));
        if (from == text.end()) return count;
        use(static_cast<std::size_t>(from - text.begin()));
        ++count;
        from += static_cast<std::ptrdiff_t>(what.size());
    }
}

/// A plain text as part of a content.
std::string escaped(std::string_view text, bool inlineCodes) {
    return inlineCodes ? mtextFromPlain(text) : std::string(text);
}

}  // namespace

std::vector<TextLetter> textLetters(std::string_view content, bool inlineCodes) {
    return LetterReader(content, inlineCodes).read();
}

std::string withCase(std::string_view content, bool inlineCodes, LetterCase letterCase) {
    std::string out;
    std::size_t copied = 0;
    bool wordBegins = true;
    bool sentenceBegins = true;
    for (const TextLetter& letter : textLetters(content, inlineCodes)) {
        const char32_t c = letter.value;
        const bool isLetter = QChar::isLetter(c);
        if (letter.literal && isLetter) {
            const bool upper = letterCase == LetterCase::Upper || (letterCase == LetterCase::Title && wordBegins) ||
                               (letterCase == LetterCase::Sentence && sentenceBegins) ||
                               (letterCase == LetterCase::Toggle && QChar::isLower(c));
            out += content.substr(copied, letter.begin - copied);
            appendUtf8(out, upper ? strings::upperCase(c) : strings::lowerCase(c));
            copied = letter.end;
        }
        const bool inWord = isLetter || QChar::isDigit(c) || c == U'\'' || c == U'\u2019' || QChar::isMark(c);
        wordBegins = !inWord;
        if (inWord) sentenceBegins = false;
        if (c == U'.' || c == U'!' || c == U'?') sentenceBegins = true;
    }
    return out += content.substr(copied);
}

std::size_t countOccurrences(std::string_view content, bool inlineCodes, std::string_view what) {
    return eachOccurrence(textLetters(content, inlineCodes), folded(what), [](std::size_t) {});
}

std::size_t replaceOccurrences(std::string& content, bool inlineCodes, std::string_view what, std::string_view with) {
    const std::vector<TextLetter> letters = textLetters(content, inlineCodes);
    const std::vector<char32_t> wanted = folded(what);
    const std::string fresh = escaped(with, inlineCodes);
    std::string out;
    std::size_t copied = 0;
    const std::size_t count = eachOccurrence(letters, wanted, [&](std::size_t first) {
        for (std::size_t i = first; i < first + wanted.size(); ++i) {
            // Formats that change within the occurrence stay for what follows.
            out += content.substr(copied, letters[i].begin - copied);
            if (i == first) out += fresh;
            copied = letters[i].end;
        }
    });
    if (count == 0) return 0;
    out += content.substr(copied);
    content = std::move(out);
    return count;
}

void eachText(Entity& entity, const std::function<void(std::string& content, bool inlineCodes)>& use) {
    switch (entity.type()) {
        case EntityType::Text:
            return use(static_cast<TextEntity&>(entity).content, false);
        case EntityType::MText:
            return use(static_cast<MTextEntity&>(entity).content, true);
        case EntityType::AttributeDefinition:
            return use(static_cast<AttributeDefinitionEntity&>(entity).defaultValue, false);
        case EntityType::Dimension:
            return use(static_cast<DimensionEntity&>(entity).textOverride, true);
        case EntityType::Leader:
            if (static_cast<LeaderEntity&>(entity).drawsText())
                use(static_cast<LeaderEntity&>(entity).annotation, true);
            return;
        case EntityType::MLeader:
            if (static_cast<MLeaderEntity&>(entity).contentType == MLeaderContent::MText)
                use(static_cast<MLeaderEntity&>(entity).textContent, true);
            for (MLeaderAttribute& attribute : static_cast<MLeaderEntity&>(entity).attributes)
                use(attribute.value, false);
            return;
        case EntityType::Table:
            for (TableCell& cell : static_cast<TableEntity&>(entity).cells)
                if (!cell.isMerged) use(cell.content, true);
            return;
        case EntityType::BlockReference:
            for (BlockAttribute& attribute : static_cast<BlockReferenceEntity&>(entity).attributes)
                use(attribute.value, false);
            return;
        default:
            return;
    }
}

}  // namespace kova::engine
