#include "kdraw/container/checksums.hpp"

#include "kdraw/container/bytes.hpp"

namespace kdraw {

namespace {

/// Tables for taking eight bytes at once: table[k][b] is what byte b does when k more bytes follow it.
template <class T>
constexpr std::array<std::array<T, 256>, 8> crcTables(T polynomial) {
    std::array<std::array<T, 256>, 8> tables{};
    for (unsigned i = 0; i < 256; ++i) {
        T c = static_cast<T>(i);
        for (int bit = 0; bit < 8; ++bit) c = static_cast<T>((c & 1) ? (c >> 1) ^ polynomial : c >> 1);
        tables[0][i] = c;
    }
    for (unsigned k = 1; k < 8; ++k)
        for (unsigned i = 0; i < 256; ++i)
            tables[k][i] = static_cast<T>((tables[k - 1][i] >> 8) ^ tables[0][tables[k - 1][i] & 0xFF]);
    return tables;
}

template <class T>
T reflectedCrc(const std::array<std::array<T, 256>, 8>& tables, T crc, std::string_view bytes) {
    const char* at = bytes.data();
    const char* const end = at + bytes.size();
    for (; end - at >= 8; at += 8) {
        const std::uint64_t x = loadLittle<std::uint64_t>(at) ^ crc;
        crc = static_cast<T>(tables[7][x & 0xFF] ^ tables[6][(x >> 8) & 0xFF] ^ tables[5][(x >> 16) & 0xFF] ^
                             tables[4][(x >> 24) & 0xFF] ^ tables[3][(x >> 32) & 0xFF] ^ tables[2][(x >> 40) & 0xFF] ^
                             tables[1][(x >> 48) & 0xFF] ^ tables[0][x >> 56]);
    }
    for (; at != end; ++at)
        crc = static_cast<T>((crc >> 8) ^ tables[0][(crc ^ static_cast<unsigned char>(*at)) & 0xFF]);
    return crc;
}

constexpr auto crc16Tables = crcTables<std::uint16_t>(0xA001);
constexpr auto crc32Tables = crcTables<std::uint32_t>(0xEDB88320);

}  // namespace

std::uint16_t crc16(std::uint16_t seed, std::string_view bytes) { return reflectedCrc(crc16Tables, seed, bytes); }

std::uint32_t crc32(std::uint32_t seed, std::string_view bytes) { return ~reflectedCrc(crc32Tables, ~seed, bytes); }

std::uint32_t pageSum(std::uint32_t seed, std::string_view bytes) {
    constexpr std::uint32_t modulus = 0xFFF1;
    constexpr std::size_t stretch = 0x15B0;  // the most bytes whose sums cannot overflow 32 bits
    std::uint32_t a = seed & 0xFFFF;
    std::uint32_t b = seed >> 16;
    while (!bytes.empty()) {
        const std::string_view part = bytes.substr(0, stretch);
        for (const char c : part) {
            a += static_cast<unsigned char>(c);
            b += a;
        }
        a %= modulus;
        b %= modulus;
        bytes.remove_prefix(part.size());
    }
    return b << 16 | a;
}

const std::array<char, 256>& randomBytes() {
    static constexpr auto bytes = [] {
        std::array<char, 256> result{};
        std::uint32_t state = 1;
        for (char& byte : result) {
            state = state * 0x343FD + 0x269EC3;
            byte = static_cast<char>(static_cast<unsigned char>(state >> 16));
        }
        return result;
    }();
    return bytes;
}

}  // namespace kdraw
