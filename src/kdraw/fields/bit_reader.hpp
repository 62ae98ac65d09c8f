#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace kdraw {

/// Reads bits, most significant first, from a range of a byte string. Reading past the end gives zeros and sets
/// failed(). Multi-byte values are little-endian and not aligned.
class BitReader {
public:
    BitReader() = default;
    /// The bits [begin, end) of the bytes.
    BitReader(std::string_view bytes, std::size_t begin, std::size_t end)
        : data_(reinterpret_cast<const unsigned char*>(bytes.data())),
          bytes_(bytes.size()),
          at_(begin),
          end_(end < bytes.size() * 8 ? end : bytes.size() * 8) {
        if (at_ > end_) at_ = end_;
    }
    explicit BitReader(std::string_view bytes) : BitReader(bytes, 0, bytes.size() * 8) {}

    std::size_t position() const { return at_; }
    std::size_t end() const { return end_; }
    std::size_t left() const { return end_ - at_; }
    bool failed() const { return failed_; }
    void fail() { failed_ = true, at_ = end_; }
    void seek(std::size_t bit) { at_ = bit <= end_ ? bit : end_; }
    void setEnd(std::size_t bit) {
        if (bit < end_) end_ = bit;
        if (at_ > end_) at_ = end_;
    }

    /// Up to 56 bits.
    std::uint64_t bits(unsigned n) {
        if (left() < n) return fail(), 0;
        const std::size_t byte = at_ >> 3;
        const unsigned shift = static_cast<unsigned>(at_ & 7);
        std::uint64_t v = 0;
        if (byte + 8 <= bytes_) {
            std::memcpy(&v, data_ + byte, 8);
            if constexpr (std::endian::native == std::endian::little) v = __builtin_bswap64(v);
        } else {
            for (std::size_t i = 0; i < 8; ++i) v = v << 8 | (byte + i < bytes_ ? data_[byte + i] : 0);
        }
        at_ += n;
        return n == 0 ? 0 : (v << shift) >> (64 - n);
    }
    bool b() { return bits(1) != 0; }
    unsigned bb() { return static_cast<unsigned>(bits(2)); }
    std::uint8_t rc() { return static_cast<std::uint8_t>(bits(8)); }
    std::uint16_t rs() { return static_cast<std::uint16_t>(__builtin_bswap16(static_cast<std::uint16_t>(bits(16)))); }
    std::uint32_t rl() { return __builtin_bswap32(static_cast<std::uint32_t>(bits(32))); }
    std::uint64_t rll() {
        const std::uint64_t low = rl();
        return low | static_cast<std::uint64_t>(rl()) << 32;
    }
    double rd() { return std::bit_cast<double>(rll()); }
    /// Signed when stored in 16 bits.
    std::int32_t bs() {
        switch (bb()) {
            case 0: return static_cast<std::int16_t>(rs());
            case 1: return rc();
            case 2: return 0;
            default: return failed_ ? 0 : 256;
        }
    }
    std::int32_t bl() {
        switch (bb()) {
            case 0: return static_cast<std::int32_t>(rl());
            case 1: return rc();
            case 2: return 0;
            default: return fail(), 0;
        }
    }
    std::uint64_t bll() {
        const unsigned n = static_cast<unsigned>(bits(3));
        std::uint64_t v = 0;
        for (unsigned i = 0; i < n; ++i) v |= static_cast<std::uint64_t>(rc()) << (8 * i);
        return v;
    }
    double bd() {
        switch (bb()) {
            case 0: return rd();
            case 1: return failed_ ? 0.0 : 1.0;
            case 2: return 0.0;
            default: return fail(), 0.0;
        }
    }
    /// Double with a default.
    double dd(double fallback) {
        std::uint64_t image = std::bit_cast<std::uint64_t>(fallback);
        switch (bb()) {
            case 0: return failed_ ? 0.0 : fallback;
            case 1: image = (image & 0xFFFFFFFF00000000ULL) | rl(); break;
            case 2: {
                const std::uint64_t high = rs();
                image = (image & 0xFFFF000000000000ULL) | high << 32 | rl();
                break;
            }
            default: return rd();
        }
        return std::bit_cast<double>(image);
    }
    /// Unsigned modular char.
    std::uint64_t umc() {
        std::uint64_t v = 0;
        for (unsigned shift = 0; shift < 64; shift += 7) {
            const std::uint8_t byte = rc();
            v |= static_cast<std::uint64_t>(byte & 0x7F) << shift;
            if ((byte & 0x80) == 0) return v;
        }
        return fail(), 0;
    }
    /// Modular short: sizes of objects.
    std::uint64_t ms() {
        std::uint64_t v = 0;
        for (unsigned shift = 0; shift < 60; shift += 15) {
            const std::uint16_t word = rs();
            v |= static_cast<std::uint64_t>(word & 0x7FFF) << shift;
            if ((word & 0x8000) == 0) return v;
        }
        return fail(), 0;
    }
    /// Object type of 2010 and later.
    std::uint16_t ot() {
        switch (bb()) {
            case 0: return rc();
            case 1: return static_cast<std::uint16_t>(rc() + 0x1F0);
            default: return rs();
        }
    }
    /// A handle reference, resolved against the handle of the object that holds it.
    std::uint64_t handle(std::uint64_t reference, unsigned* code = nullptr) {
        const unsigned head = rc();
        const unsigned kind = head >> 4;
        const unsigned n = head & 15;
        if (code != nullptr) *code = kind;
        if (n > 8) return fail(), 0;
        std::uint64_t v = 0;
        for (unsigned i = 0; i < n; ++i) v = v << 8 | rc();
        if (failed_) return 0;
        switch (kind) {
            case 6: return reference + 1;
            case 8: return reference - 1;
            case 0xA: return reference + v;
            case 0xC: return reference - v;
            default: return v;
        }
    }

private:
    const unsigned char* data_ = nullptr;
    std::size_t bytes_ = 0;
    std::size_t at_ = 0;
    std::size_t end_ = 0;
    bool failed_ = false;
};

}  // namespace kdraw
