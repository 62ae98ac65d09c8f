#include "io/dxf/groups/group_writer.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <new>

#include "io/dxf/dxf_facts.hpp"

namespace kova::io::dxf {

namespace {

/// The lines of the codes below 1000.
constexpr auto kCodes = [] {
    std::array<std::array<char, 4>, 1000> lines{};
    for (int code = 0; code < 1000; ++code) {
        auto& line = lines[static_cast<std::size_t>(code)];
        line[0] = code >= 100 ? static_cast<char>('0' + code / 100) : ' ';
        line[1] = code >= 10 ? static_cast<char>('0' + code / 10 % 10) : ' ';
        line[2] = static_cast<char>('0' + code % 10);
        line[3] = '\n';
    }
    return lines;
}();

/// Length of the well-formed UTF-8 sequence at p; 0 when it is none.
std::size_t sequenceLength(const unsigned char* p, const unsigned char* end) {
    const auto continued = [&](std::size_t n) {
        if (static_cast<std::size_t>(end - p) < n) return false;
        for (std::size_t i = 1; i < n; ++i)
            if ((p[i] & 0xC0U) != 0x80U) return false;
        return true;
    };
    if (*p >= 0xC2 && *p <= 0xDF) return continued(2) ? 2 : 0;
    if (*p >= 0xE0 && *p <= 0xEF) {
        if (!continued(3)) return 0;
        if (*p == 0xE0 && p[1] < 0xA0) return 0;
        if (*p == 0xED && p[1] > 0x9F) return 0;  // surrogates
        return 3;
    }
    if (*p >= 0xF0 && *p <= 0xF4) {
        if (!continued(4)) return 0;
        if (*p == 0xF0 && p[1] < 0x90) return 0;
        if (*p == 0xF4 && p[1] > 0x8F) return 0;
        return 4;
    }
    return 0;
}

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

}  // namespace

void GroupWriter::grow(std::size_t size) {
    const auto used = static_cast<std::size_t>(at_ - begin_);
    const auto capacity = static_cast<std::size_t>(end_ - begin_);
    std::size_t wanted = capacity < (std::size_t{1} << 20U) ? capacity * 2 : capacity + capacity / 2;
    if (wanted < used + size) wanted = used + size + 4096;
    char* grown = static_cast<char*>(std::realloc(begin_, wanted));
    if (grown == nullptr) throw std::bad_alloc();
    begin_ = grown;
    at_ = grown + used;
    end_ = grown + wanted;
}

void GroupWriter::clear() {
    std::free(begin_);
    begin_ = at_ = end_ = nullptr;
}

void GroupWriter::code(int code) {
    // The caller has made room. Codes have one to four digits, right-aligned in three columns.
    if (code < 1000) {
        std::memcpy(at_, kCodes[static_cast<std::size_t>(code)].data(), 4);
        at_ += 4;
        return;
    }
    *at_++ = static_cast<char>('0' + code / 1000);
    std::memcpy(at_, kCodes[static_cast<std::size_t>(code % 1000)].data(), 4);
    for (char* c = at_; c != at_ + 3; ++c)
        if (*c == ' ') *c = '0';
    at_ += 4;
}

void GroupWriter::append(std::string_view raw) {
    if (raw.empty()) return;
    room(raw.size());
    std::memcpy(at_, raw.data(), raw.size());
    at_ += raw.size();
}

void GroupWriter::word(int groupCode, std::string_view value) {
    room(value.size() + 8);
    code(groupCode);
    if (!value.empty()) std::memcpy(at_, value.data(), value.size());
    at_ += value.size();
    *at_++ = '\n';
}

void GroupWriter::text(int groupCode, std::string_view value) {
    // A byte becomes three at most.
    room(value.size() * 3 + 8);
    code(groupCode);
    const auto* p = reinterpret_cast<const unsigned char*>(value.data());
    const auto* end = p + value.size();
    while (p != end) {
        const unsigned char c = *p;
        if (c >= 0x80) {
            const std::size_t length = sequenceLength(p, end);
            if (length == 0) {
                std::memcpy(at_, kReplacement.data(), kReplacement.size());
                at_ += kReplacement.size();
                ++p;
                continue;
            }
            std::memcpy(at_, p, length);
            at_ += length;
            p += length;
            continue;
        }
        ++p;
        if (c < 0x20) {
            *at_++ = '^';
            *at_++ = static_cast<char>(c + 64);
        } else {
            *at_++ = static_cast<char>(c);
            if (c == '^') *at_++ = ' ';
        }
    }
    *at_++ = '\n';
}

void GroupWriter::integer(int groupCode, std::int64_t value) {
    room(40);
    code(groupCode);
    at_ = std::to_chars(at_, end_, value).ptr;
    *at_++ = '\n';
}

void GroupWriter::real(int groupCode, double value) {
    room(64);
    code(groupCode);
    if (!std::isfinite(value)) {
        ++replaced_;
        value = 0.0;
    }
    // Whole numbers are common and quick.
    if (value == std::trunc(value) && std::abs(value) < 1e15) {
        at_ = std::to_chars(at_, end_, static_cast<std::int64_t>(value)).ptr;
        *at_++ = '.';
        *at_++ = '0';
    } else {
        char* start = at_;
        at_ = std::to_chars(at_, end_, value).ptr;
        // Large whole numbers come without a point.
        if (std::abs(value) >= 1e15 && std::memchr(start, 'e', static_cast<std::size_t>(at_ - start)) == nullptr) {
            *at_++ = '.';
            *at_++ = '0';
        }
    }
    *at_++ = '\n';
}

void GroupWriter::angle(int groupCode, double radians) {
    if (!std::isfinite(radians)) {
        real(groupCode, radians);
        return;
    }
    room(64);
    code(groupCode);
    at_ += degreesText(radians, at_);
    *at_++ = '\n';
}

void GroupWriter::handle(int groupCode, std::uint64_t value) {
    room(40);
    code(groupCode);
    char digits[16];
    int n = 0;
    do {
        digits[n++] = "0123456789ABCDEF"[value & 15U];
        value >>= 4U;
    } while (value != 0);
    while (n > 0) *at_++ = digits[--n];
    *at_++ = '\n';
}

void GroupWriter::bytes(int groupCode, std::string_view data) {
    room(data.size() * 2 + 8);
    code(groupCode);
    for (const char c : data) {
        const auto byte = static_cast<unsigned char>(c);
        *at_++ = "0123456789ABCDEF"[byte >> 4U];
        *at_++ = "0123456789ABCDEF"[byte & 15U];
    }
    *at_++ = '\n';
}

}  // namespace kova::io::dxf
