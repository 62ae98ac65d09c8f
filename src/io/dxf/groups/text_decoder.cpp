#include "io/dxf/groups/text_decoder.hpp"

#include <QStringDecoder>
#include <cctype>

#include "io/dxf/groups/lexer.hpp"

namespace kova::io::dxf {

namespace {

/// The name under which Qt knows a $DWGCODEPAGE; null: none.
const char* qtCodec(std::string_view page) {
    std::string key;
    for (const char c : page)
        if (std::isalnum(static_cast<unsigned char>(c)))
            key += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    struct Row {
        std::string_view page;
        const char* codec;
    };
    static constexpr Row kRows[] = {
        {"ANSI874", "windows-874"},
        {"ANSI932", "windows-932"},
        {"ANSI936", "GBK"},
        {"ANSI949", "windows-949"},
        {"ANSI950", "windows-950"},
        {"ANSI1250", "windows-1250"},
        {"ANSI1251", "windows-1251"},
        {"ANSI1252", "windows-1252"},
        {"ANSI1253", "windows-1253"},
        {"ANSI1254", "windows-1254"},
        {"ANSI1255", "windows-1255"},
        {"ANSI1256", "windows-1256"},
        {"ANSI1257", "windows-1257"},
        {"ANSI1258", "windows-1258"},
        {"ASCII", "windows-1252"},
        {"DOS437", "IBM437"},
        {"DOS850", "IBM850"},
        {"DOS852", "IBM852"},
        {"DOS855", "IBM855"},
        {"DOS857", "IBM857"},
        {"DOS860", "IBM860"},
        {"DOS861", "IBM861"},
        {"DOS863", "IBM863"},
        {"DOS864", "IBM864"},
        {"DOS865", "IBM865"},
        {"DOS866", "IBM866"},
        {"DOS869", "IBM869"},
        {"DOS932", "windows-932"},
        {"ISO88591", "ISO-8859-1"},
        {"ISO88592", "ISO-8859-2"},
        {"ISO88593", "ISO-8859-3"},
        {"ISO88594", "ISO-8859-4"},
        {"ISO88595", "ISO-8859-5"},
        {"ISO88596", "ISO-8859-6"},
        {"ISO88597", "ISO-8859-7"},
        {"ISO88598", "ISO-8859-8"},
        {"ISO88599", "ISO-8859-9"},
        {"MACINTOSH", "macintosh"},
        {"MAC", "macintosh"},
        {"BIG5", "Big5"},
        {"GB2312", "GBK"},
        {"KSC5601", "windows-949"},
        {"UTF8", "UTF-8"},
    };
    for (const Row& row : kRows)
        if (row.page == key) return row.codec;
    return nullptr;
}

/// The cp1252 characters 0x80 to 0x9F, for when Qt was built without its code pages.
constexpr std::uint16_t kWindows1252[32] = {0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                            0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x8D,   0x017D, 0x8F,
                                            0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                            0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};

/// A Johab character: three groups of five bits, for the initial, the vowel and the final of a syllable.
std::uint32_t johabSyllable(unsigned two) {
    static constexpr std::int8_t kVowel[32] = {-1, -1, -1, 0,  1,  2,  3,  4,  -1, -1, 5,  6,  7,  8,  9,  10,
                                               -1, -1, 11, 12, 13, 14, 15, 16, -1, -1, 17, 18, 19, 20, -1, -1};
    const int initial = static_cast<int>((two >> 10) & 31) - 2;
    const int vowel = kVowel[(two >> 5) & 31];
    const int lastBits = static_cast<int>(two & 31);
    const int final = lastBits < 18 ? lastBits - 1 : lastBits - 2;
    if (initial < 0 || initial > 18 || vowel < 0 || final < 0 || final > 27 || lastBits == 18) return 0xFFFD;
    return 0xAC00U + static_cast<unsigned>((initial * 21 + vowel) * 28 + final);
}

std::string johabToUtf8(std::string_view raw) {
    std::string text;
    for (std::size_t i = 0; i < raw.size(); ++i) {
        const auto lead = static_cast<unsigned char>(raw[i]);
        if (lead < 0x80 || i + 1 == raw.size()) {
            appendUtf8(text, lead < 0x80 ? lead : 0xFFFD);
            continue;
        }
        appendUtf8(text, johabSyllable((static_cast<unsigned>(lead) << 8) | static_cast<unsigned char>(raw[++i])));
    }
    return text;
}

std::string decodeWith(QStringDecoder& decoder, std::string_view raw) {
    decoder.resetState();
    const QString text = decoder.decode(QByteArrayView(raw.data(), static_cast<qsizetype>(raw.size())));
    return text.toStdString();
}

/// A character of the multibyte code page number n of \M+nXXXX.
std::string multibyte(char n, unsigned two) {
    static constexpr const char* kCodecs[] = {"windows-932", "windows-950", "windows-949", nullptr, "GBK"};
    if (n < '1' || n > '5') return "\xEF\xBF\xBD";
    const char bytes[2] = {static_cast<char>(two >> 8), static_cast<char>(two & 255)};
    const std::string_view raw = two > 255 ? std::string_view(bytes, 2) : std::string_view(bytes + 1, 1);
    if (n == '4') return johabToUtf8(raw);
    QStringDecoder decoder(kCodecs[n - '1']);
    return decoder.isValid() ? decodeWith(decoder, raw) : "\xEF\xBF\xBD";
}

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

void appendUtf8(std::string& text, std::uint32_t c) {
    if (c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) c = 0xFFFD;
    if (c < 0x80) {
        text += static_cast<char>(c);
    } else if (c < 0x800) {
        text += static_cast<char>(0xC0 | (c >> 6));
        text += static_cast<char>(0x80 | (c & 63));
    } else if (c < 0x10000) {
        text += static_cast<char>(0xE0 | (c >> 12));
        text += static_cast<char>(0x80 | ((c >> 6) & 63));
        text += static_cast<char>(0x80 | (c & 63));
    } else {
        text += static_cast<char>(0xF0 | (c >> 18));
        text += static_cast<char>(0x80 | ((c >> 12) & 63));
        text += static_cast<char>(0x80 | ((c >> 6) & 63));
        text += static_cast<char>(0x80 | (c & 63));
    }
}

bool isUtf8(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        std::size_t more = 0;
        unsigned least = 0;
        unsigned c = 0;
        if (lead < 0x80) {
            ++i;
            continue;
        }
        if (lead >= 0xC2 && lead < 0xE0) {
            more = 1;
            least = 0x80;
            c = lead & 31U;
        } else if (lead >= 0xE0 && lead < 0xF0) {
            more = 2;
            least = 0x800;
            c = lead & 15U;
        } else if (lead >= 0xF0 && lead < 0xF5) {
            more = 3;
            least = 0x10000;
            c = lead & 7U;
        } else {
            return false;
        }
        if (text.size() - i <= more) return false;
        for (std::size_t k = 1; k <= more; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xC0) != 0x80) return false;
            c = (c << 6) | (next & 63U);
        }
        if (c < least || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) return false;
        i += more + 1;
    }
    return true;
}

TextDecoder::TextDecoder() = default;
TextDecoder::~TextDecoder() = default;

void TextDecoder::setCodePage(std::string_view name) {
    johab_ = engine::equalNoCase(name, "JOHAB");
    const char* codec = qtCodec(name);
    const std::string_view page = codec != nullptr ? codec : "";
    multibyte_ = johab_ || page == "GBK" || page == "Big5" || page == "windows-932" || page == "windows-949" ||
                 page == "windows-950";
    decoder_ = std::make_unique<QStringDecoder>(codec != nullptr ? codec : "windows-1252");
    if (!decoder_->isValid()) decoder_.reset();
    lastRaw_.clear();
    lastName_ = {};
}

std::string TextDecoder::fromCodePage(std::string_view raw) const {
    if (johab_) return johabToUtf8(raw);
    if (decoder_) return decodeWith(*decoder_, raw);
    std::string text;
    for (const char c : raw) {
        const auto byte = static_cast<unsigned char>(c);
        appendUtf8(text, byte >= 0x80 && byte < 0xA0 ? kWindows1252[byte - 0x80] : byte);
    }
    return text;
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
    if (ascii || ((utf8_ || !multibyte_) && isUtf8(raw)))
        text.assign(raw);
    else
        text = fromCodePage(raw);
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
                if (high != 0) appendUtf8(out, 0xFFFD);
                high = value;
                continue;
            }
            if (high != 0 && value >= 0xDC00 && value < 0xE000)
                appendUtf8(out, 0x10000U + ((high - 0xD800U) << 10) + (value - 0xDC00U));
            else {
                if (high != 0) appendUtf8(out, 0xFFFD);
                appendUtf8(out, value);
            }
            high = 0;
            continue;
        }
        if (high != 0) {
            appendUtf8(out, 0xFFFD);
            high = 0;
        }
        if (c == '\\' && i + 7 < in.size() && in[i + 1] == 'M' && in[i + 2] == '+' && hex4(in.substr(i + 4), value)) {
            out += multibyte(in[i + 3], value);
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
    if (high != 0) appendUtf8(out, 0xFFFD);
    return out;
}

engine::Name TextDecoder::name(std::string_view raw) const {
    if (raw == lastRaw_) return lastName_;
    lastName_ = engine::Name(decode(trimmed(raw)));
    lastRaw_.assign(raw);
    return lastName_;
}

}  // namespace kova::io::dxf
