#include "strings/utf8.hpp"

#include <algorithm>

namespace kova::strings {

char32_t nextCodePoint(std::string_view text, std::size_t& i) {
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned char lead = byte(i++);
    if (lead < 0x80) return lead;
    const std::size_t more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
    if (more == 0 || lead > 0xF4 || text.size() - i < more) return kReplacement;
    char32_t c = lead & (0x3F >> more);
    for (std::size_t k = 0; k < more; ++k) {
        if (!isContinuation(text[i + k])) return kReplacement;
        c = (c << 6) | (byte(i + k) & 0x3F);
    }
    static constexpr char32_t kLeast[] = {0, 0x80, 0x800, 0x10000};
    if (c < kLeast[more] || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) return kReplacement;
    i += more;
    return c;
}

void appendUtf8(std::string& out, char32_t c) {
    if (c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) c = kReplacement;
    const auto tail = [&](int shift) { out += static_cast<char>(0x80 | ((c >> shift) & 0x3F)); };
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        tail(0);
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        tail(6);
        tail(0);
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        tail(12);
        tail(6);
        tail(0);
    }
}

bool isUtf8(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        if (static_cast<unsigned char>(text[i]) < 0x80) {
            ++i;
            continue;
        }
        const std::size_t before = i;
        // U+FFFD itself takes three bytes; the one that stands for a wrong byte moves by one.
        if (nextCodePoint(text, i) == kReplacement && i == before + 1) return false;
    }
    return true;
}

std::string validUtf8(std::string_view text) {
    if (isUtf8(text)) return std::string(text);
    std::string out;
    out.reserve(text.size() + 16);
    for (std::size_t i = 0; i < text.size();) appendUtf8(out, nextCodePoint(text, i));
    return out;
}

std::size_t countCharacters(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return !isContinuation(c); }));
}

std::size_t wholeCharacters(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) return text.size();
    // A character has three bytes behind its first one at most; what is longer is no text, and is cut anywhere.
    std::size_t cut = limit;
    while (cut > 0 && limit - cut < 3 && isContinuation(text[cut])) --cut;
    return cut > 0 && !isContinuation(text[cut]) ? cut : limit;
}

}  // namespace kova::strings
