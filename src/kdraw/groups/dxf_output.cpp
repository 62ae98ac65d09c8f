#include "kdraw/groups/dxf_output.hpp"

#include <charconv>
#include <cmath>

#include "kdraw/database/database.hpp"
#include "strings/numbers.hpp"

namespace kdraw {

void DxfOutput::code(int code) {
    if (code >= 0 && code < 1000) {
        const auto digit = [](int v) { return static_cast<char>('0' + v % 10); };
        const char line[4] = {code < 100 ? ' ' : digit(code / 100), code < 10 ? ' ' : digit(code / 10), digit(code), '\n'};
        out_.append(line, sizeof line);
        return;
    }
    char digits[12];
    const auto end = std::to_chars(digits, digits + sizeof digits, code).ptr;
    const auto length = static_cast<std::size_t>(end - digits);
    if (length < 3) out_.append(3 - length, ' ');
    out_.append(digits, length);
    out_ += '\n';
}

void DxfOutput::word(int group, std::string_view value) {
    code(group);
    out_ += value;
    out_ += '\n';
}

void DxfOutput::text(int group, std::string_view value) {
    code(group);
    for (const char c : value) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20) {
            out_ += '^';
            out_ += static_cast<char>(byte + 0x40);
        } else if (c == '^') {
            out_ += "^ ";
        } else {
            out_ += c;
        }
    }
    out_ += '\n';
}

void DxfOutput::integer(int group, std::int64_t value) {
    code(group);
    char digits[24];
    out_.append(digits, static_cast<std::size_t>(std::to_chars(digits, digits + sizeof digits, value).ptr - digits));
    out_ += '\n';
}

void DxfOutput::real(int group, double value) {
    code(group);
    if (!std::isfinite(value)) value = 0.0;
    char digits[kova::strings::kShortestSize];
    out_.append(digits, kova::strings::writeShortest(digits, value));
    out_ += '\n';
}

void DxfOutput::handle(int group, Handle value) {
    code(group);
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, value, 16).ptr;
    for (char* c = digits; c != end; ++c)
        if (*c >= 'a') *c = static_cast<char>(*c - 32);
    out_.append(digits, static_cast<std::size_t>(end - digits));
    out_ += '\n';
}

void DxfOutput::record(int group, Table, Handle value) { text(group, database_.recordName(value)); }

void DxfOutput::bytes(int group, std::string_view data) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    constexpr std::size_t kPiece = 127;
    while (!data.empty()) {
        code(group);
        for (const char c : data.substr(0, kPiece)) {
            out_ += kDigits[static_cast<unsigned char>(c) >> 4];
            out_ += kDigits[static_cast<unsigned char>(c) & 15];
        }
        out_ += '\n';
        data.remove_prefix(std::min(kPiece, data.size()));
    }
}

}  // namespace kdraw
