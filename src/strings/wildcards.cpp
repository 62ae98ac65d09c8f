#include "strings/wildcards.hpp"

#include "cmd/point_input.hpp"
#include "engine/text/text_codes.hpp"
#include "engine/model/name.hpp"

namespace kova::cmd {

namespace {

std::u32string codePoints(std::string_view text, bool fold) {
    const std::string folded = fold ? engine::foldCase(text) : std::string(text);
    std::u32string out;
    for (std::size_t i = 0; i < folded.size();) out += engine::nextCodePoint(folded, i);
    return out;
}

bool isDigit(char32_t c) { return c >= U'0' && c <= U'9'; }
bool isLetter(char32_t c) { return (c >= U'a' && c <= U'z') || (c >= U'A' && c <= U'Z') || c >= 0x80; }

/// Matches one character against the pattern at `at` and moves behind that piece; a "[" without its "]" is itself.
bool matchOne(char32_t c, std::u32string_view pattern, std::size_t& at) {
    const char32_t p = pattern[at];
    if (p == U'`' && at + 1 < pattern.size()) {
        at += 2;
        return pattern[at - 1] == c;
    }
    if (p == U'[') {
        const std::size_t end = pattern.find(U']', at + 1);
        if (end != std::u32string_view::npos) {
            std::size_t i = at + 1;
            const bool none = i < end && pattern[i] == U'~';
            if (none) ++i;
            bool found = false;
            for (; i < end; ++i) {
                if (i + 2 < end && pattern[i + 1] == U'-') {
                    found = found || (c >= pattern[i] && c <= pattern[i + 2]);
                    i += 2;
                } else {
                    found = found || c == pattern[i];
                }
            }
            at = end + 1;
            return found != none;
        }
    }
    ++at;
    switch (p) {
        case U'?':
            return true;
        case U'#':
            return isDigit(c);
        case U'@':
            return isLetter(c);
        case U'.':
            return !isDigit(c) && !isLetter(c);
        default:
            return p == c;
    }
}

bool matchPlain(std::u32string_view text, std::u32string_view pattern) {
    // Only the last star needs to be taken back: whatever an earlier one took, a later one can take too.
    std::size_t t = 0;
    std::size_t p = 0;
    std::size_t starPattern = std::u32string_view::npos;
    std::size_t starText = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == U'*') {
            starPattern = ++p;
            starText = t;
            continue;
        }
        if (p < pattern.size()) {
            std::size_t next = p;
            if (matchOne(text[t], pattern, next)) {
                ++t;
                p = next;
                continue;
            }
        }
        if (starPattern == std::u32string_view::npos) return false;
        p = starPattern;
        t = ++starText;
    }
    while (p < pattern.size() && pattern[p] == U'*') ++p;
    return p == pattern.size();
}

bool matchPattern(std::u32string_view text, std::u32string_view pattern) {
    bool turned = false;
    for (; !pattern.empty() && pattern.front() == U'~'; pattern.remove_prefix(1)) turned = !turned;
    return matchPlain(text, pattern) != turned;
}

/// Calls `take` with the pieces of a comma list; false from it ends.
template <class Take>
void forEachPiece(std::string_view list, char escape, Take&& take) {
    const std::size_t lastBracket = list.rfind(']');
    std::size_t start = 0;
    bool bracket = false;
    bool quoted = false;
    for (std::size_t i = 0; i <= list.size(); ++i) {
        const bool end = i == list.size();
        if (!end) {
            const char c = list[i];
            if (c == escape && escape != 0) {
                i += i + 1 < list.size() ? 1 : 0;
                continue;
            }
            if (c == '"' && escape == 0) quoted = !quoted;
            if (c == '[') bracket = lastBracket != std::string_view::npos && lastBracket > i;
            if (c == ']') bracket = false;
            if (c != ',' || bracket || quoted) continue;
        }
        if (!take(list.substr(start, i - start))) return;
        start = i + 1;
    }
}

}  // namespace

bool matchesWildcards(std::string_view text, std::string_view patterns, bool caseMatters) {
    const std::u32string letters = codePoints(text, !caseMatters);
    bool found = false;
    forEachPiece(patterns, '`', [&](std::string_view piece) {
        found = matchPattern(letters, codePoints(piece, !caseMatters));
        return !found;
    });
    return found;
}

bool hasWildcards(std::string_view text) { return text.find_first_of("*?#@.~[`") != std::string_view::npos; }

std::vector<std::string> splitNames(std::string_view list) {
    std::vector<std::string> names;
    forEachPiece(list, 0, [&](std::string_view piece) {
        piece = trimmed(piece);
        if (piece.size() >= 2 && piece.front() == '"' && piece.back() == '"') piece = piece.substr(1, piece.size() - 2);
        if (!piece.empty()) names.emplace_back(piece);
        return true;
    });
    return names;
}

}  // namespace kova::cmd
