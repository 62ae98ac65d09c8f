#include "kdraw/fields/text_codec.hpp"

#include <iconv.h>

#include <cstdint>

namespace kdraw {

namespace {

/// Encodings by the number in the file's header.
constexpr const char* kPages[] = {
    "UTF-8",      "CP1252",     "ISO-8859-1", "ISO-8859-2", "ISO-8859-3", "ISO-8859-4", "ISO-8859-5", "ISO-8859-6", "ISO-8859-7",
    "ISO-8859-8", "ISO-8859-9", "CP437",      "CP850",      "CP852",      "CP855",      "CP857",      "CP860",      "CP861",
    "CP863",      "CP864",      "CP865",      "CP869",      "CP932",      "MACINTOSH",  "BIG5",       "CP949",      "JOHAB",
    "CP866",      "CP1250",     "CP1251",     "CP1252",     "GBK",        "CP1253",     "CP1254",     "CP1255",     "CP1256",
    "CP1257",     "CP874",      "CP932",      "CP936",      "CP949",      "CP950",      "JOHAB",      "UTF-8",      "CP1258",
};

void append(std::string& out, std::uint32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | c >> 6);
        out += static_cast<char>(0x80 | (c & 63));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | c >> 12);
        out += static_cast<char>(0x80 | (c >> 6 & 63));
        out += static_cast<char>(0x80 | (c & 63));
    } else {
        out += static_cast<char>(0xF0 | c >> 18);
        out += static_cast<char>(0x80 | (c >> 12 & 63));
        out += static_cast<char>(0x80 | (c >> 6 & 63));
        out += static_cast<char>(0x80 | (c & 63));
    }
}

}  // namespace

TextCodec::~TextCodec() { close(); }

void TextCodec::close() {
    if (converter_ != nullptr) iconv_close(static_cast<iconv_t>(converter_));
    converter_ = nullptr;
}

void TextCodec::setPage(int page) {
    close();
    if (page < 0 || page >= static_cast<int>(std::size(kPages))) page = 30;
    const iconv_t made = iconv_open("UTF-8", kPages[page]);
    converter_ = made == reinterpret_cast<iconv_t>(-1) ? nullptr : static_cast<void*>(made);
}

std::string TextCodec::toUtf8(std::string_view raw) const {
    while (!raw.empty() && raw.back() == '\0') raw.remove_suffix(1);
    bool ascii = true;
    for (const char c : raw) ascii = ascii && static_cast<unsigned char>(c) < 0x80;
    if (ascii) return std::string(raw);
    std::string out;
    if (converter_ == nullptr) {
        for (const char c : raw) append(out, static_cast<unsigned char>(c));
        return out;
    }
    const auto converter = static_cast<iconv_t>(converter_);
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    char* in = const_cast<char*>(raw.data());
    std::size_t left = raw.size();
    char buffer[512];
    while (left > 0) {
        char* to = buffer;
        std::size_t room = sizeof buffer;
        const std::size_t before = left;
        const std::size_t result = iconv(converter, &in, &left, &to, &room);
        out.append(buffer, static_cast<std::size_t>(to - buffer));
        if (result == static_cast<std::size_t>(-1) && (left == before || room > 8) && left > 0) {
            out += "\xEF\xBF\xBD";
            ++in;
            --left;
        }
    }
    return out;
}

std::string utf8OfUtf16(std::string_view bytes) {
    const auto unit = [&](std::size_t i) {
        return static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[2 * i]) |
                                          static_cast<unsigned char>(bytes[2 * i + 1]) << 8);
    };
    std::size_t n = bytes.size() / 2;
    while (n > 0 && unit(n - 1) == 0) --n;
    std::string out;
    out.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        std::uint32_t c = unit(i);
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < n && unit(i + 1) >= 0xDC00 && unit(i + 1) < 0xE000)
            c = 0x10000 + ((c - 0xD800) << 10) + (unit(++i) - 0xDC00);
        else if (c >= 0xD800 && c < 0xE000)
            c = 0xFFFD;
        append(out, c);
    }
    return out;
}

std::u16string utf16OfUtf8(std::string_view text) {
    std::u16string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i++]);
        if (lead < 0x80) {
            out += static_cast<char16_t>(lead);
            continue;
        }
        const unsigned more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
        std::uint32_t c = lead & (0x3FU >> more);
        unsigned taken = 0;
        while (taken < more && i < text.size() && (static_cast<unsigned char>(text[i]) & 0xC0) == 0x80) {
            c = c << 6 | (static_cast<unsigned char>(text[i++]) & 0x3FU);
            ++taken;
        }
        if (more == 0 || taken < more || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) c = 0xFFFD;
        if (c >= 0x10000) {
            c -= 0x10000;
            out += static_cast<char16_t>(0xD800 + (c >> 10));
            out += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
        } else {
            out += static_cast<char16_t>(c);
        }
    }
    return out;
}

}  // namespace kdraw
