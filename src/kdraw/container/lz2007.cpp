#include "kdraw/container/lz2007.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace kdraw {

namespace {

/// A piece of a permuted run of literals: one, two, three, four, eight or sixteen bytes from a place in the run. Two
/// and three bytes come reversed, sixteen with their halves exchanged.
struct Piece {
    std::uint8_t count;
    std::uint8_t from;
};

/// The pieces of runs of 0 to 31 bytes; a count of zero ends the list.
constexpr Piece pieces[32][6] = {
    {},
    {{1, 0}},
    {{2, 0}},
    {{3, 0}},
    {{4, 0}},
    {{1, 4}, {4, 0}},
    {{1, 5}, {4, 1}, {1, 0}},
    {{2, 5}, {4, 1}, {1, 0}},
    {{8, 0}},
    {{1, 8}, {8, 0}},
    {{1, 9}, {8, 1}, {1, 0}},
    {{2, 9}, {8, 1}, {1, 0}},
    {{4, 8}, {8, 0}},
    {{1, 12}, {4, 8}, {8, 0}},
    {{1, 13}, {4, 9}, {8, 1}, {1, 0}},
    {{2, 13}, {4, 9}, {8, 1}, {1, 0}},
    {{16, 0}},
    {{8, 9}, {1, 8}, {8, 0}},
    {{1, 17}, {16, 1}, {1, 0}},
    {{3, 16}, {16, 0}},
    {{4, 16}, {16, 0}},
    {{1, 20}, {4, 16}, {16, 0}},
    {{2, 20}, {4, 16}, {16, 0}},
    {{3, 20}, {4, 16}, {16, 0}},
    {{8, 16}, {16, 0}},
    {{8, 17}, {1, 16}, {16, 0}},
    {{1, 25}, {8, 17}, {1, 16}, {16, 0}},
    {{2, 25}, {8, 17}, {1, 16}, {16, 0}},
    {{4, 24}, {8, 16}, {16, 0}},
    {{1, 28}, {4, 24}, {8, 16}, {16, 0}},
    {{2, 28}, {4, 24}, {8, 16}, {16, 0}},
    {{1, 30}, {4, 26}, {8, 18}, {16, 2}, {2, 0}},
};

void copyHalvesExchanged(char* to, const char* from) {
    std::memcpy(to, from + 8, 8);
    std::memcpy(to + 8, from, 8);
}

void copyPermuted(char* to, const char* from, std::size_t count) {
    for (; count >= 32; count -= 32, from += 32, to += 32) {
        copyHalvesExchanged(to, from + 16);
        copyHalvesExchanged(to + 16, from);
    }
    for (const Piece& piece : pieces[count]) {
        if (piece.count == 0) break;
        const char* const at = from + piece.from;
        if (piece.count == 16)
            copyHalvesExchanged(to, at);
        else if (piece.count == 2 || piece.count == 3)
            std::reverse_copy(at, at + piece.count, to);
        else
            std::memcpy(to, at, piece.count);
        to += piece.count;
    }
}

class Lz2007Decoder {
public:
    Lz2007Decoder(std::string_view source, char* out, std::size_t capacity)
        : m_in(source.data()), m_inEnd(m_in + source.size()), m_begin(out), m_out(out), m_outEnd(out + capacity) {}

    std::size_t written() const { return static_cast<std::size_t>(m_out - m_begin); }

    bool decode() {
        unsigned op = u8();
        std::size_t count = 0;
        if ((op & 0xF0) == 0x20) {
            u8();
            u8();
            count = u8() & 7;
        }
        while (m_ok && m_in < m_inEnd) {
            if (count == 0) count = literalCount(op);
            if (!m_ok || !literals(count)) return false;
            if (m_in == m_inEnd) return true;
            op = u8();
            for (;;) {
                if (!match(op)) return false;
                count = op & 7;
                if (count != 0 || m_in == m_inEnd) break;
                op = u8();
                if (op >> 4 == 0) break;
                if (op >> 4 == 15) op &= 15;
            }
        }
        return m_ok;
    }

private:
    unsigned u8() {
        if (m_in == m_inEnd) {
            m_ok = false;
            return 0;
        }
        return static_cast<unsigned char>(*m_in++);
    }

    unsigned u16() {
        const unsigned low = u8();
        return low | u8() << 8;
    }

    std::size_t literalCount(unsigned op) {
        std::size_t count = op + 8;
        if (count != 0x17) return count;
        unsigned more = u8();
        count += more;
        if (more != 0xFF) return count;
        do {
            more = u16();
            count += more;
        } while (more == 0xFFFF && m_ok);
        return count;
    }

    bool literals(std::size_t count) {
        if (count > static_cast<std::size_t>(m_inEnd - m_in) || count > static_cast<std::size_t>(m_outEnd - m_out))
            return false;
        copyPermuted(m_out, m_in, count);
        m_in += count;
        m_out += count;
        return true;
    }

    /// Reads a match, whose first byte is `op`, and copies it. Leaves in `op` the byte with the count of literals.
    bool match(unsigned& op) {
        std::size_t length = 0;
        std::size_t distance = 0;
        switch (op >> 4) {
            case 0:
                length = (op & 15) + 0x13;
                distance = u8();
                op = u8();
                length += op >> 3 & 0x10;
                distance += ((op & 0x78) << 5) + 1;
                break;
            case 1:
                length = (op & 15) + 3;
                distance = u8();
                op = u8();
                distance += ((op & 0xF8) << 5) + 1;
                break;
            case 2:
                distance = u16();
                length = op & 7;
                if ((op & 8) == 0) {
                    op = u8();
                    length += op & 0xF8;
                } else {
                    ++distance;
                    length += u8() << 3;
                    op = u8();
                    length += ((op & 0xF8) << 8) + 0x100;
                }
                break;
            default:
                length = op >> 4;
                distance = op & 15;
                op = u8();
                distance += ((op & 0xF8) << 1) + 1;
                break;
        }
        if (!m_ok || distance == 0 || distance > written() || length > static_cast<std::size_t>(m_outEnd - m_out))
            return false;
        const char* from = m_out - distance;
        if (distance >= length) {
            std::memcpy(m_out, from, length);
            m_out += length;
        } else {
            for (char* const end = m_out + length; m_out != end;) *m_out++ = *from++;
        }
        return true;
    }

    const char* m_in;
    const char* m_inEnd;
    char* m_begin;
    char* m_out;
    char* m_outEnd;
    bool m_ok = true;
};

}  // namespace

Decompressed decompress2007(std::string_view source, char* out, std::size_t capacity) {
    Lz2007Decoder decoder(source, out, capacity);
    const bool sound = decoder.decode();
    return {.size = decoder.written(), .sound = sound};
}

std::string deinterleave(std::string_view source, std::size_t blocks, std::size_t dataBytes) {
    std::string out;
    if (dataBytes > 255 || blocks > source.size() / 255) return out;
    out.resize(blocks * dataBytes);
    for (std::size_t i = 0; i < blocks; ++i)
        for (std::size_t j = 0; j < dataBytes; ++j) out[i * dataBytes + j] = source[j * blocks + i];
    return out;
}

}  // namespace kdraw
