#include <algorithm>
#include <cstring>

#include "kdraw/container/lz2004.hpp"

namespace kdraw {

namespace {

/// Copies `length` bytes from `distance` back in the output; the two ranges may overlap, which repeats the bytes.
void copyBack(char* at, std::size_t distance, std::size_t length, std::size_t room) {
    const char* from = at - distance;
    if (distance >= 8 && length + 8 <= room) {
        for (std::size_t i = 0; i < length; i += 8) std::memcpy(at + i, from + i, 8);
    } else if (distance == 1) {
        std::memset(at, *from, length);
    } else {
        for (std::size_t i = 0; i < length; ++i) at[i] = from[i];
    }
}

class Decoder {
public:
    Decoder(std::string_view source, char* out, std::size_t capacity)
        : m_in(source.data()), m_inEnd(m_in + source.size()), m_begin(out), m_out(out), m_outEnd(out + capacity) {}

    std::size_t written() const { return static_cast<std::size_t>(m_out - m_begin); }

    bool decode() {
        unsigned op = 0;
        if (!next(op)) return false;
        if (op < 0x10 && (!literals(literalCount(op)) || !next(op))) return false;
        while (op != 0x11) {
            std::size_t length = 0;
            std::size_t distance = 0;
            unsigned last = op;  // the byte that holds the number of literals that follow
            unsigned high = 0;
            if (op >= 0x40) {
                if (!next(high)) return false;
                length = (op >> 4) - 1;
                distance = ((op >> 2 & 3) | high << 2) + 1;
            } else if (op >= 0x20) {
                length = op == 0x20 ? total(0x21) : (op & 0x1F) + 2;
                if (!next(last) || !next(high)) return false;
                distance = (last >> 2 | high << 6) + 1;
            } else if (op >= 0x10) {
                length = (op & 7) == 0 ? total(9) : (op & 7) + 2;
                if (!next(last) || !next(high)) return false;
                distance = ((op & 8) << 11 | last >> 2 | high << 6) + 0x4000;
            } else {
                return false;
            }
            const auto room = static_cast<std::size_t>(m_outEnd - m_out);
            if (distance > written()) return false;
            const std::size_t fitting = std::min(length, room);
            copyBack(m_out, distance, fitting, room);
            m_out += fitting;
            if (fitting < length) return false;

            std::size_t count = last & 3;
            if (count == 0) {
                if (!next(op)) return false;
                if (op >= 0x10) continue;
                count = literalCount(op);
            }
            if (!literals(count) || !next(op)) return false;
        }
        return true;
    }

private:
    bool next(unsigned& byte) {
        if (m_in == m_inEnd) return false;
        byte = static_cast<unsigned char>(*m_in++);
        return true;
    }

    /// A long count: zeros stand for 255 each, the first other byte ends it. An input that ends early leaves a count
    /// that nothing can satisfy, so that the caller's next read fails.
    std::size_t total(std::size_t start) {
        unsigned byte = 0;
        while (next(byte)) {
            start += byte == 0 ? 0xFF : byte;
            if (byte != 0) break;
        }
        return start;
    }

    std::size_t literalCount(unsigned op) { return op == 0 ? total(0x0F + 3) : op + 3; }

    bool literals(std::size_t count) {
        const auto left = static_cast<std::size_t>(m_inEnd - m_in);
        const auto room = static_cast<std::size_t>(m_outEnd - m_out);
        const std::size_t fitting = std::min({count, left, room});
        if (fitting <= 16 && left >= 16 && room >= 16)
            std::memcpy(m_out, m_in, 16);
        else if (fitting > 0)
            std::memcpy(m_out, m_in, fitting);
        m_in += fitting;
        m_out += fitting;
        return fitting == count;
    }

    const char* m_in;
    const char* m_inEnd;
    char* m_begin;
    char* m_out;
    char* m_outEnd;
};

}  // namespace

Decompressed decompress2004(std::string_view source, char* out, std::size_t capacity) {
    Decoder decoder(source, out, capacity);
    const bool sound = decoder.decode();
    return {.size = decoder.written(), .sound = sound};
}

}  // namespace kdraw
