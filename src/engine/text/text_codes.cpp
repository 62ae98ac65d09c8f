#include "engine/text/text_codes.hpp"

#include "strings/code_page.hpp"
#include "strings/utf8.hpp"

namespace kova::engine {

namespace {

/// Value of n hexadecimal digits at text[at]; -1 when there are not that many.
int hexValue(std::string_view text, std::size_t at, std::size_t n) {
    if (text.size() < at + n) return -1;
    unsigned value = 0;
    const auto [end, error] = std::from_chars(text.data() + at, text.data() + at + n, value, 16);
    return error == std::errc{} && end == text.data() + at + n ? static_cast<int>(value) : -1;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// The character %%nnn stands for: as in the ANSI character set, with the three symbols that shape fonts have behind
/// it.
char32_t numberedCharacter(int value) {
    static constexpr char16_t kHigh[] = {0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030,
                                         0x0160, 0x2039, 0x0152, 0xFFFD, 0x017D, 0xFFFD, 0xFFFD, 0x2018,
                                         0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, 0x02DC, 0x2122,
                                         0x0161, 0x203A, 0x0153, 0xFFFD, 0x017E, 0x0178};
    if (value == 127) return 0xB0;
    if (value == 128) return 0xB1;
    if (value == 129) return 0x2300;
    if (value >= 130 && value < 160) return kHigh[value - 130];
    return static_cast<char32_t>(value);
}

}  // namespace

char32_t nextCodePoint(std::string_view text, std::size_t& i) { return strings::nextCodePoint(text, i); }
void appendUtf8(std::string& out, char32_t c) { strings::appendUtf8(out, c); }

bool readPercentCode(std::string_view text, std::size_t& i, std::string& out, char& toggle) {
    toggle = 0;
    if (text.size() < i + 3 || text[i] != '%' || text[i + 1] != '%') return false;
    const char c = text[i + 2];
    switch (c) {
        case 'd':
        case 'D':
            appendUtf8(out, 0xB0);
            break;
        case 'p':
        case 'P':
            appendUtf8(out, 0xB1);
            break;
        case 'c':
        case 'C':
            appendUtf8(out, 0x2300);
            break;
        case '%':
            out += '%';
            break;
        case 'u':
        case 'U':
            toggle = 'u';
            break;
        case 'o':
        case 'O':
            toggle = 'o';
            break;
        case 'k':
        case 'K':
            toggle = 'k';
            break;
        default: {
            if (!isDigit(c)) return false;
            int value = 0;
            std::size_t n = 0;
            while (n < 3 && i + 2 + n < text.size() && isDigit(text[i + 2 + n]))
                value = value * 10 + (text[i + 2 + n++] - '0');
            if (n < 3) return false;
            appendUtf8(out, numberedCharacter(value));
            i += 2 + n;
            return true;
        }
    }
    i += 3;
    return true;
}

bool readUnicodeCode(std::string_view text, std::size_t& i, std::string& out) {
    if (text.size() < i + 7 || text[i] != '\\' || text[i + 2] != '+') return false;
    if (text[i + 1] == 'U' || text[i + 1] == 'u') {
        const int high = hexValue(text, i + 3, 4);
        if (high < 0) return false;
        i += 7;
        auto c = static_cast<char32_t>(high);
        if (c >= 0xD800 && c < 0xDC00 && text.size() >= i + 7 && text[i] == '\\' && text[i + 2] == '+' &&
            (text[i + 1] == 'U' || text[i + 1] == 'u')) {
            const int low = hexValue(text, i + 3, 4);
            if (low >= 0xDC00 && low < 0xE000) {
                c = 0x10000 + ((c - 0xD800) << 10) + static_cast<char32_t>(low - 0xDC00);
                i += 7;
            }
        }
        appendUtf8(out, c == 0 ? 0xFFFD : c);
        return true;
    }
    if (text[i + 1] == 'M' || text[i + 1] == 'm') {
        const int value = hexValue(text, i + 4, 4);
        if (value < 0 || text[i + 3] < '1' || text[i + 3] > '5') return false;
        out += strings::multibyteCharacter(text[i + 3], static_cast<unsigned>(value));
        i += 8;
        return true;
    }
    return false;
}

bool hasCodes(std::string_view text) {
    return text.find("%%") != std::string_view::npos || text.find('\\') != std::string_view::npos;
}

std::vector<CodeRun> resolveCodes(std::string_view text) {
    std::vector<CodeRun> runs(1);
    std::size_t i = 0;
    while (i < text.size()) {
        const std::size_t next = text.find_first_of("%\\", i);
        runs.back().text += text.substr(i, next - i);
        if (next == std::string_view::npos) break;
        i = next;
        char toggle = 0;
        if (text[i] == '%' && readPercentCode(text, i, runs.back().text, toggle)) {
            if (toggle == 0) continue;
            CodeRun& run = runs.back();
            if (!run.text.empty()) runs.push_back({{}, run.underline, run.overline, run.strikeThrough});
            bool CodeRun::*member = toggle == 'u'   ? &CodeRun::underline
                                    : toggle == 'o' ? &CodeRun::overline
                                                    : &CodeRun::strikeThrough;
            runs.back().*member = !(runs.back().*member);
            continue;
        }
        if (text[i] == '\\' && readUnicodeCode(text, i, runs.back().text)) continue;
        runs.back().text += text[i++];
    }
    if (runs.back().text.empty()) runs.pop_back();
    return runs;
}

std::string resolveCodesPlain(std::string_view text) {
    if (!hasCodes(text)) return std::string(text);
    std::string plain;
    for (const CodeRun& run : resolveCodes(text)) plain += run.text;
    return plain;
}

}  // namespace kova::engine
