#include "io/dxf/groups/text_decoder.hpp"

#include <cctype>

#include "io/dxf/groups/lexer.hpp"
#include "strings/utf8.hpp"

namespace kova::io::dxf {

namespace {

/// Four hexadecimal digits.
bool hex4(std::string_view text, unsigned& value) {
    if (text.size() < 4) return false;
    value = 0;
    for (const char c : text.substr(0, 4)) {
        if (!std::isxdigit(static_cast<unsigned char>(c))) return false;
        value = value * 16 + static_cast<unsigned>(c <= '9' ? c - '0' : (c | 32) - 'a' + 10);
    }
    return true;
}

}  // namespace

void TextDecoder::setCodePage(std::string_view name) {
    auto page = strings::CodePage::named(name);
    page_ = page ? std::move(*page) : strings::CodePage();
    lastRaw_.clear();
    lastName_ = {};
}

std::string TextDecoder::decode(std::string_view raw) const {
    bool plain = true;
    bool ascii = true;
    for (const char c : raw) {
        if (c == '^' || c == '\\') plain = false;
        if (static_cast<unsigned char>(c) >= 0x80) ascii = false;
    }
    std::string text;
    // Old files of careless writers may be in UTF-8, too. Words in a single-byte code page are next to never valid
    // UTF-8, in the others short ones often are.
    if (ascii || ((utf8_ || !page_.isMultibyte()) && strings::isUtf8(raw)))
        text.assign(raw);
    else
        text = page_.toUtf8(raw);
    if (plain) return text;

    const std::string_view in = text;
    std::string out;
    out.reserve(in.size());
    unsigned high = 0;  // first half of a surrogate pair
    for (std::size_t i = 0; i < in.size(); ++i) {
        const char c = in[i];
        unsigned value = 0;
        if (c == '\\' && i + 6 < in.size() && (in[i + 1] == 'U' || in[i + 1] == 'u') && in[i + 2] == '+' &&
            hex4(in.substr(i + 3), value)) {
            i += 6;
            if (value >= 0xD800 && value < 0xDC00) {
                if (high != 0) strings::appendUtf8(out, 0xFFFD);
                high = value;
                continue;
            }
            if (high != 0 && value >= 0xDC00 && value < 0xE000)
                strings::appendUtf8(out, 0x10000U + ((high - 0xD800U) << 10) + (value - 0xDC00U));
            else {
                if (high != 0) strings::appendUtf8(out, 0xFFFD);
                strings::appendUtf8(out, value);
            }
            high = 0;
            continue;
        }
        if (high != 0) {
            strings::appendUtf8(out, 0xFFFD);
            high = 0;
        }
        if (c == '\\' && i + 7 < in.size() && in[i + 1] == 'M' && in[i + 2] == '+' && hex4(in.substr(i + 4), value)) {
            out += strings::multibyteCharacter(in[i + 3], value);
            i += 7;
        } else if (c == '^' && i + 1 < in.size()) {
            const char next = in[i + 1];
            if (next == ' ')
                out += '^';
            else if (next >= '@' && next <= '_')
                out += static_cast<char>(next - '@');
            else {
                out += c;
                continue;
            }
            ++i;
        } else {
            out += c;
        }
    }
    if (high != 0) strings::appendUtf8(out, 0xFFFD);
    return out;
}

engine::Name TextDecoder::name(std::string_view raw) const {
    if (raw == lastRaw_) return lastName_;
    lastName_ = engine::Name(decode(trimmed(raw)));
    lastRaw_.assign(raw);
    return lastName_;
}

}  // namespace kova::io::dxf
