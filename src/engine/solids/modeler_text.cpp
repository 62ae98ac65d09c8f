#include "engine/solids/modeler_text.hpp"

namespace kova::engine {

namespace {

constexpr bool isTurned(unsigned char c) { return c > 32 && c < 127; }
constexpr char turned(unsigned char c) { return static_cast<char>(159 - c); }

}  // namespace

std::string codedModelerText(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        const auto u = static_cast<unsigned char>(c);
        out += isTurned(u) ? turned(u) : c;
        if (out.back() == '^' && isTurned(u)) out += ' ';
    }
    return out;
}

void appendModelerText(std::string& text, std::string_view coded) {
    for (std::size_t i = 0; i < coded.size(); ++i) {
        const auto c = static_cast<unsigned char>(coded[i]);
        text += isTurned(c) ? turned(c) : coded[i];
        if (c == '^' && i + 1 < coded.size() && coded[i + 1] == ' ') ++i;
    }
}

std::string hexDigits(std::string_view bytes) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(2 * bytes.size());
    for (const char c : bytes) {
        out += kDigits[static_cast<unsigned char>(c) >> 4];
        out += kDigits[static_cast<unsigned char>(c) & 15];
    }
    return out;
}

void appendHexBytes(std::string& bytes, std::string_view digits) {
    int high = -1;
    for (const char c : digits) {
        int v = 0;
        if (c >= '0' && c <= '9')
            v = c - '0';
        else if ((c | 32) >= 'a' && (c | 32) <= 'f')
            v = (c | 32) - 'a' + 10;
        else
            continue;
        if (high < 0) {
            high = v;
        } else {
            bytes += static_cast<char>(high * 16 + v);
            high = -1;
        }
    }
}

}  // namespace kova::engine
