#include "strings/case_fold.hpp"

#include <algorithm>
#include <span>

#include "strings/case_tables.hpp"
#include "strings/utf8.hpp"

namespace kova::strings {

namespace {

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](unsigned char c) { return c < 0x80; });
}

char32_t mapped(std::span<const CaseRange> table, char32_t c) {
    const auto range = std::lower_bound(table.begin(), table.end(), c,
                                        [](const CaseRange& r, char32_t value) { return r.last < value; });
    if (range == table.end() || c < range->first || (c - range->first) % range->step != 0) return c;
    return static_cast<char32_t>(static_cast<std::int64_t>(c) + range->shift);
}

template <char (*Ascii)(char), char32_t (*Other)(char32_t)>
std::string mappedText(std::string_view text) {
    std::string out(text);
    if (isAscii(text)) {
        for (char& c : out) c = Ascii(c);
        return out;
    }
    out.clear();
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t before = i;
        const char32_t c = nextCodePoint(text, i);
        if (c == kReplacement)
            out.append(text.substr(before, i - before));
        else
            appendUtf8(out, Other(c));
    }
    return out;
}

}  // namespace

char32_t foldCase(char32_t c) { return c < 0x80 ? static_cast<char32_t>(lowerAscii(static_cast<char>(c))) : mapped(foldTable(), c); }
char32_t upperCase(char32_t c) { return c < 0x80 ? static_cast<char32_t>(upperAscii(static_cast<char>(c))) : mapped(upperTable(), c); }
char32_t lowerCase(char32_t c) { return c < 0x80 ? static_cast<char32_t>(lowerAscii(static_cast<char>(c))) : mapped(lowerTable(), c); }

std::string foldCase(std::string_view text) { return mappedText<lowerAscii, foldCase>(text); }
std::string upperCase(std::string_view text) { return mappedText<upperAscii, upperCase>(text); }
std::string lowerCase(std::string_view text) { return mappedText<lowerAscii, lowerCase>(text); }

bool equalNoCase(std::string_view a, std::string_view b) {
    if (isAscii(a) && isAscii(b))
        return a.size() == b.size() &&
               std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return lowerAscii(x) == lowerAscii(y); });
    return foldCase(a) == foldCase(b);
}

}  // namespace kova::strings
