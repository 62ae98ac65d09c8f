#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

#include "kdraw/container/bytes.hpp"
#include "kdraw/container/lz2004.hpp"

namespace kdraw {

namespace {

constexpr std::size_t nearDistance = 0x400;     // reached by two-byte matches
constexpr std::size_t middleDistance = 0x4000;  // reached by the three-byte form with long lengths
constexpr std::size_t farDistance = 0xBFFF;
constexpr int chainLength = 8;          // candidates tried per position
constexpr std::size_t goodLength = 96;  // a match this long is taken without looking further
constexpr unsigned hashBits = 14;       // of four bytes
constexpr unsigned hash3Bits = 12;      // of three bytes, of which only near ones count

struct Match {
    std::size_t length = 0;
    std::size_t distance = 0;
    int gain = 0;  // bytes saved against writing literals
};

std::uint32_t load4(const char* at) { return loadLittle<std::uint32_t>(at); }

/// How many bytes two places have in common; `end` bounds the later one.
std::size_t commonLength(const char* earlier, const char* later, const char* end) {
    const char* const start = later;
    if constexpr (std::endian::native == std::endian::little) {
        while (end - later >= 8) {
            std::uint64_t a;
            std::uint64_t b;
            std::memcpy(&a, earlier, 8);
            std::memcpy(&b, later, 8);
            if (a != b)
                return static_cast<std::size_t>(later - start) + static_cast<unsigned>(std::countr_zero(a ^ b)) / 8;
            earlier += 8;
            later += 8;
        }
    }
    while (later != end && *earlier == *later) {
        ++earlier;
        ++later;
    }
    return static_cast<std::size_t>(later - start);
}

int matchGain(std::size_t length, std::size_t distance) {
    int cost = 3;
    if (distance <= nearDistance && length <= 14)
        cost = 2;
    else if (length > (distance <= middleDistance ? 33u : 9u))
        cost = 4 + static_cast<int>(length / 255);
    return static_cast<int>(length) - cost;
}

class Encoder {
public:
    Encoder(std::string_view source, std::string& out)
        : m_source(source.data()), m_size(source.size()), m_out(out), m_previous(source.size()) {
        m_head.fill(none);
        m_head3.fill(none);
    }

    void run() {
        std::size_t at = 0;
        std::size_t start = 0;  // of the literals that wait to be written
        while (at + 4 <= m_size) {
            Match match = at - start >= 4 || m_started ? find(at) : Match{};
            insert(at);
            if (match.gain <= 0) {
                ++at;
                // Where nothing matches for long, look less often.
                const std::size_t dry = (at - start) >> 7;
                for (std::size_t i = 0; i < dry && at + 4 <= m_size; ++i) insert(at++);
                continue;
            }
            // A match that starts one byte later may save more.
            while (match.length < goodLength && at + 5 <= m_size) {
                const Match later = find(at + 1);
                if (later.gain <= match.gain) break;
                match = later;
                insert(++at);
            }
            flush(start, at);
            m_pending = match;
            m_started = true;
            const std::size_t end = at + match.length;
            // Long repetitions need no entry for each byte.
            const std::size_t step = match.length > 512 ? 8 : 1;
            for (++at; at < end; at += step)
                if (at + 4 <= m_size) insert(at);
            at = start = end;
        }
        flush(start, m_size);
        m_out.append("\x11\0\0", 3);
    }

private:
    static constexpr std::uint32_t none = 0xFFFF'FFFF;

    static std::uint32_t hash4(std::uint32_t value) { return value * 0x9E37'79B1u >> (32 - hashBits); }
    static std::uint32_t hash3(std::uint32_t value) { return (value << 8) * 0x9E37'79B1u >> (32 - hash3Bits); }

    void insert(std::size_t at) {
        const std::uint32_t value = load4(m_source + at);
        std::uint32_t& head = m_head[hash4(value)];
        const std::size_t distance = at - head;
        m_previous[at] = head != none && distance <= farDistance ? static_cast<std::uint16_t>(distance) : 0;
        head = static_cast<std::uint32_t>(at);
        m_head3[hash3(value)] = static_cast<std::uint32_t>(at);
    }

    Match find(std::size_t at) const {
        const char* const here = m_source + at;
        const char* const end = m_source + m_size;
        const std::uint32_t value = load4(here);
        const std::size_t available = m_size - at;
        Match best;
        std::uint32_t candidate = m_head[hash4(value)];
        for (int tries = chainLength; candidate != none && tries > 0; --tries) {
            const std::size_t distance = at - candidate;
            if (distance > farDistance) break;
            const char* const there = m_source + candidate;
            // Only a longer match can be better than one that is nearer; it must agree where the best one ends.
            if (load4(there) == value &&
                (best.length == 0 ||
                 (best.length < available && load4(there + best.length - 3) == load4(here + best.length - 3)))) {
                const std::size_t length = commonLength(there + 4, here + 4, end) + 4;
                const int gain = matchGain(length, distance);
                if (gain > best.gain) {
                    best = {length, distance, gain};
                    if (length >= goodLength) return best;
                }
            }
            if (m_previous[candidate] == 0) break;
            candidate -= m_previous[candidate];
        }
        if (best.length == 0) {
            // Three equal bytes pay when they are near.
            candidate = m_head3[hash3(value)];
            if (candidate != none && at - candidate <= nearDistance &&
                ((load4(m_source + candidate) ^ value) << 8) == 0)
                return {3, at - candidate, matchGain(3, at - candidate)};
        }
        return best;
    }

    void put(std::size_t byte) { m_out += static_cast<char>(byte); }

    void putRun(std::size_t count) {
        for (; count > 255; count -= 255) put(0);
        put(count);
    }

    /// Writes the match that waits, and the literals between it and the next one.
    void flush(std::size_t start, std::size_t end) {
        const std::size_t count = end - start;
        if (m_started) putMatch(count <= 3 ? count : 0);
        if (!m_started || count > 3) {
            if (count <= 18) {
                put(count - 3);
            } else {
                put(0);
                putRun(count - 18);
            }
        }
        m_out.append(m_source + start, count);
    }

    void putMatch(std::size_t literals) {
        const auto [length, distance, gain] = m_pending;
        if (length <= 14 && distance <= nearDistance) {
            const std::size_t offset = distance - 1;
            put((length + 1) << 4 | (offset & 3) << 2 | literals);
            put(offset >> 2);
            return;
        }
        std::size_t offset = 0;
        if (distance <= middleDistance) {
            offset = distance - 1;
            if (length <= 33) {
                put(0x20 | (length - 2));
            } else {
                put(0x20);
                putRun(length - 33);
            }
        } else {
            offset = distance - 0x4000;
            const std::size_t base = 0x10 | (offset & 0x4000 ? 8u : 0u);
            offset &= 0x3FFF;
            // Length 3 would be the terminator here; matches this far are never shorter than 4.
            if (length <= 9) {
                put(base | (length - 2));
            } else {
                put(base);
                putRun(length - 9);
            }
        }
        put((offset & 0x3F) << 2 | literals);
        put(offset >> 6);
    }

    const char* m_source;
    std::size_t m_size;
    std::string& m_out;
    std::array<std::uint32_t, 1 << hashBits> m_head;    // the last place with the hash of its four bytes
    std::array<std::uint32_t, 1 << hash3Bits> m_head3;  // the same for three bytes
    std::vector<std::uint16_t> m_previous;  // how far back the place before with the same hash is; 0: none in reach
    Match m_pending;
    bool m_started = false;  // a first match was found, after at least four literals
};

}  // namespace

void compress2004(std::string_view source, std::string& out) {
    // The stream opens with a run of at least four literals; shorter inputs do not occur.
    std::string padded;
    if (source.size() < 4) {
        padded.assign(source).resize(4);
        source = padded;
    }
    Encoder(source, out).run();
}

}  // namespace kdraw
