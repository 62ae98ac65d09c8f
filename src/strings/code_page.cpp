#include "strings/code_page.hpp"

#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <iterator>

#include "strings/case_fold.hpp"
#include "strings/utf8.hpp"

namespace kova::strings {

namespace {

struct Row {
    const char* name;       ///< in $DWGCODEPAGE
    const char* converter;  ///< for iconv
    bool multibyte = false;
};

/// By the number in the header of a DWG file.
constexpr Row kPages[] = {
    {"UTF-8", "UTF-8"},          {"ASCII", "CP1252"},         {"ISO8859-1", "ISO-8859-1"}, {"ISO8859-2", "ISO-8859-2"},
    {"ISO8859-3", "ISO-8859-3"}, {"ISO8859-4", "ISO-8859-4"}, {"ISO8859-5", "ISO-8859-5"}, {"ISO8859-6", "ISO-8859-6"},
    {"ISO8859-7", "ISO-8859-7"}, {"ISO8859-8", "ISO-8859-8"}, {"ISO8859-9", "ISO-8859-9"}, {"DOS437", "CP437"},
    {"DOS850", "CP850"},         {"DOS852", "CP852"},         {"DOS855", "CP855"},         {"DOS857", "CP857"},
    {"DOS860", "CP860"},         {"DOS861", "CP861"},         {"DOS863", "CP863"},         {"DOS864", "CP864"},
    {"DOS865", "CP865"},         {"DOS869", "CP869"},         {"DOS932", "CP932", true},   {"MACINTOSH", "MACINTOSH"},
    {"BIG5", "BIG5", true},      {"KSC5601", "CP949", true},  {"JOHAB", "JOHAB", true},    {"DOS866", "CP866"},
    {"ANSI_1250", "CP1250"},     {"ANSI_1251", "CP1251"},     {"ANSI_1252", "CP1252"},     {"GB2312", "GBK", true},
    {"ANSI_1253", "CP1253"},     {"ANSI_1254", "CP1254"},     {"ANSI_1255", "CP1255"},     {"ANSI_1256", "CP1256"},
    {"ANSI_1257", "CP1257"},     {"ANSI_874", "CP874"},       {"ANSI_932", "CP932", true}, {"ANSI_936", "CP936", true},
    {"ANSI_949", "CP949", true}, {"ANSI_950", "CP950", true}, {"ANSI_1361", "JOHAB", true}, {"UTF-16", "UTF-8"},
    {"ANSI_1258", "CP1258"},
};
constexpr std::string_view kWon = "\u20A9";
constexpr int kPageCount = static_cast<int>(std::size(kPages));

/// The letters and digits of a name, in capitals.
std::string plainName(std::string_view name) {
    std::string key;
    for (const char c : name) {
        const char upper = upperAscii(c);
        if ((upper >= 'A' && upper <= 'Z') || (upper >= '0' && upper <= '9')) key += upper;
    }
    return key;
}

bool takePrefix(std::string& key, std::string_view prefix) {
    if (!key.starts_with(prefix) || key.size() == prefix.size()) return false;
    key.erase(0, prefix.size());
    return true;
}

char32_t utf16Unit(std::string_view bytes, std::size_t at, bool bigEndian) {
    const auto byte = [&](std::size_t i) { return static_cast<char32_t>(static_cast<unsigned char>(bytes[i])); };
    return bigEndian ? byte(at) << 8 | byte(at + 1) : byte(at + 1) << 8 | byte(at);
}

std::string fromUtf16(std::string_view bytes, bool bigEndian) {
    std::string out;
    out.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        char32_t c = utf16Unit(bytes, i, bigEndian);
        if (c >= 0xD800 && c < 0xDC00 && i + 3 < bytes.size()) {
            const char32_t low = utf16Unit(bytes, i + 2, bigEndian);
            if (low >= 0xDC00 && low < 0xE000) {
                c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
                i += 2;
            }
        }
        appendUtf8(out, c);
    }
    return out;
}

}  // namespace

void CodePage::Close::operator()(void* converter) const { iconv_close(static_cast<iconv_t>(converter)); }

CodePage::CodePage(int number) : number_(number < 0 || number >= kPageCount ? kUsual : number) {
    const iconv_t made = iconv_open("UTF-8", kPages[number_].converter);
    if (made != reinterpret_cast<iconv_t>(-1)) converter_.reset(static_cast<void*>(made));
}

std::optional<CodePage> CodePage::named(std::string_view name) {
    struct Other {
        std::string_view key;
        int number;
    };
    static constexpr Other kOthers[] = {{"MAC", 23},    {"USASCII", 1}, {"LATIN1", 2}, {"LATIN2", 3}, {"LATIN5", 10},
                                        {"SHIFTJIS", 38}, {"SJIS", 38},  {"GBK", 39},   {"CP1361", 26}, {"65001", 0}};
    std::string key = plainName(name);
    const auto find = [&](std::string_view wanted) {
        for (int i = 0; i < kPageCount; ++i)
            if (plainName(kPages[i].name) == wanted) return i;
        return -1;
    };
    int number = find(key);
    for (const Other& other : kOthers)
        if (number < 0 && other.key == key) number = other.number;
    if (number < 0) {
        // "cp850", "windows-1252" and bare numbers.
        if (!takePrefix(key, "WINDOWS") && !takePrefix(key, "ANSI") && !takePrefix(key, "IBM") && !takePrefix(key, "DOS"))
            takePrefix(key, "CP");
        number = find("ANSI" + key);
        if (number < 0) number = find("DOS" + key);
        if (number < 0 && key == "65001") number = 0;
    }
    if (number < 0) return std::nullopt;
    return CodePage(number);
}

std::string_view CodePage::name() const { return kPages[number_].name; }

bool CodePage::isMultibyte() const { return kPages[number_].multibyte; }

std::string CodePage::toUtf8(std::string_view bytes) const {
    std::string out;
    out.reserve(bytes.size() + bytes.size() / 4);
    if (!converter_) {
        // Latin 1 is the best that is left.
        for (const char c : bytes) appendUtf8(out, static_cast<unsigned char>(c));
        return out;
    }
    auto* const converter = static_cast<iconv_t>(converter_.get());
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    char* in = const_cast<char*>(bytes.data());
    std::size_t left = bytes.size();
    /// Converts what it can; false when it stands before bytes that are no character.
    const auto convert = [&](char** from, std::size_t* size) {
        for (;;) {
            char buffer[4096];
            char* to = buffer;
            std::size_t room = sizeof buffer;
            const std::size_t result = iconv(converter, from, size, &to, &room);
            out.append(buffer, static_cast<std::size_t>(to - buffer));
            if (result != static_cast<std::size_t>(-1)) return true;
            if (errno != E2BIG) return false;
        }
    };
    for (;;) {
        const bool done = convert(&in, &left);
        // A page whose letters take accents behind them holds a letter back.
        convert(nullptr, nullptr);
        if (done || left == 0) break;
        // The bytes that a page of single bytes leaves free are the control characters of the same numbers.
        const auto byte = static_cast<unsigned char>(*in);
        appendUtf8(out, !isMultibyte() && byte >= 0x80 && byte < 0xA0 ? byte : kReplacement);
        ++in;
        --left;
    }
    // The Korean page shows the backslash as a currency sign; in paths and codes of drawings it is the backslash.
    if (std::string_view(kPages[number_].converter) == "JOHAB")
        for (std::size_t at = out.find(kWon); at != std::string::npos; at = out.find(kWon, at)) out.replace(at, kWon.size(), 1, '\\');
    return out;
}

std::string multibyteCharacter(char page, unsigned bytes) {
    static constexpr const char* kByDigit[] = {"ANSI_932", "ANSI_950", "ANSI_949", "JOHAB", "ANSI_936"};
    std::string out;
    if (bytes >= 0x80 && page >= '1' && page <= '5') {
        const char pair[] = {static_cast<char>(bytes >> 8), static_cast<char>(bytes & 0xFF)};
        const bool single = bytes < 0x100;
        if (const auto decoder = CodePage::named(kByDigit[page - '1']))
            out = decoder->toUtf8({single ? pair + 1 : pair, single ? 1U : 2U});
        if (countCharacters(out) == 1) return out;
        out.clear();
    }
    appendUtf8(out, bytes > 0 && bytes < 0x80 ? bytes : kReplacement);
    return out;
}

std::string utf8OfUtf16(std::string_view littleEndian) { return fromUtf16(littleEndian, false); }

std::u16string utf16OfUtf8(std::string_view text) {
    std::u16string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const char32_t c = nextCodePoint(text, i);
        if (c >= 0x10000) {
            out += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
            out += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
        } else {
            out += static_cast<char16_t>(c);
        }
    }
    return out;
}

std::string textOfFile(std::string_view bytes, const CodePage& other) {
    if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
    else if (bytes.starts_with("\xFF\xFE")) return fromUtf16(bytes.substr(2), false);
    else if (bytes.starts_with("\xFE\xFF")) return fromUtf16(bytes.substr(2), true);
    if (isUtf8(bytes)) return std::string(bytes);
    return other.toUtf8(bytes);
}

}  // namespace kova::strings
