#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <string_view>

namespace kdraw {

/// Writes bits, most significant first, in the shortest form of each code.
class BitWriter {
public:
    std::size_t size() const { return bytes_.size() * 8 + used_; }  ///< in bits
    void clear() {
        bytes_.clear();
        pending_ = 0;
        used_ = 0;
    }

    /// The low n bits of v; n up to 32.
    void bits(std::uint64_t v, unsigned n) {
        pending_ = pending_ << n | (v & ((1ULL << n) - 1));
        used_ += n;
        while (used_ >= 8) {
            used_ -= 8;
            bytes_ += static_cast<char>(pending_ >> used_);
        }
    }
    void b(bool v) { bits(v ? 1 : 0, 1); }
    void bb(unsigned v) { bits(v, 2); }
    void rc(unsigned v) { bits(v & 0xFF, 8); }
    void rs(std::uint16_t v) { bits(__builtin_bswap16(v), 16); }
    void rl(std::uint32_t v) { bits(__builtin_bswap32(v), 32); }
    void rll(std::uint64_t v) {
        rl(static_cast<std::uint32_t>(v));
        rl(static_cast<std::uint32_t>(v >> 32));
    }
    void rd(double v) { rll(std::bit_cast<std::uint64_t>(v)); }
    void bs(std::int32_t v) {
        if (v == 0)
            bb(2);
        else if (v == 256)
            bb(3);
        else if (v > 0 && v < 256)
            bb(1), rc(static_cast<unsigned>(v));
        else
            bb(0), rs(static_cast<std::uint16_t>(v));
    }
    void bl(std::int32_t v) {
        if (v == 0)
            bb(2);
        else if (v > 0 && v < 256)
            bb(1), rc(static_cast<unsigned>(v));
        else
            bb(0), rl(static_cast<std::uint32_t>(v));
    }
    /// Values up to seven bytes.
    void bll(std::uint64_t v) {
        unsigned n = 0;
        for (std::uint64_t rest = v; rest != 0 && n < 7; rest >>= 8) ++n;
        bits(n, 3);
        for (unsigned i = 0; i < n; ++i) rc(static_cast<unsigned>(v >> (8 * i)));
    }
    void bd(double v) {
        const std::uint64_t image = std::bit_cast<std::uint64_t>(v);
        if (image == 0)
            bb(2);
        else if (v == 1.0)
            bb(1);
        else
            bb(0), rll(image);
    }
    void dd(double v, double fallback) {
        const std::uint64_t image = std::bit_cast<std::uint64_t>(v);
        const std::uint64_t other = std::bit_cast<std::uint64_t>(fallback);
        if (image == other) {
            bb(0);
        } else if (image >> 32 == other >> 32) {
            bb(1), rl(static_cast<std::uint32_t>(image));
        } else if (image >> 48 == other >> 48) {
            bb(2), rs(static_cast<std::uint16_t>(image >> 32)), rl(static_cast<std::uint32_t>(image));
        } else {
            bb(3), rll(image);
        }
    }
    void umc(std::uint64_t v) {
        for (; v >= 0x80; v >>= 7) rc(static_cast<unsigned>((v & 0x7F) | 0x80));
        rc(static_cast<unsigned>(v));
    }
    void ms(std::uint64_t v) {
        for (; v >= 0x8000; v >>= 15) rs(static_cast<std::uint16_t>((v & 0x7FFF) | 0x8000));
        rs(static_cast<std::uint16_t>(v));
    }
    void ot(std::uint16_t type) {
        if (type < 0x100)
            bb(0), rc(type);
        else if (type >= 0x1F0 && type < 0x2F0)
            bb(1), rc(type - 0x1F0u);
        else
            bb(2), rs(type);
    }
    /// Absolute, with the shortest number of bytes.
    void handle(unsigned code, std::uint64_t v) {
        unsigned n = 0;
        for (std::uint64_t rest = v; rest != 0; rest >>= 8) ++n;
        rc(code << 4 | n);
        while (n-- > 0) rc(static_cast<unsigned>(v >> (8 * n)));
    }
    void bytes(std::string_view data) {
        if (used_ == 0)
            bytes_ += data;
        else
            for (const char c : data) rc(static_cast<unsigned char>(c));
    }
    /// Appends the bits of another writer.
    void append(const BitWriter& other) {
        bytes(other.bytes_);
        if (other.used_ != 0) bits(other.pending_, other.used_);
    }
    /// Fills up the last byte with ones, as drawings in the field have it.
    void align(bool ones = true) {
        if (used_ != 0) bits(ones ? 0xFF : 0, 8 - used_);
    }
    /// The whole bytes so far.
    const std::string& view() const { return bytes_; }

private:
    std::string bytes_;
    std::uint64_t pending_ = 0;
    unsigned used_ = 0;  ///< bits of pending_ that are not in bytes_ yet, less than 8
};

}  // namespace kdraw
