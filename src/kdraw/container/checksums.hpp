// The checksums of DWG files and the pseudo-random bytes that mask and pad parts of them.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace kdraw {

/// The seed of every 16-bit CRC in a file.
inline constexpr std::uint16_t crcSeed = 0xC0C1;

/// The reflected 16-bit CRC of polynomial 0x8005 (0xA001 reflected), without a final xor. Guards sections, chunks of
/// the object map and objects.
std::uint16_t crc16(std::uint16_t seed, std::string_view bytes);

/// The usual 32-bit CRC (polynomial 0xEDB88320 reflected, complemented before and after), continued from `seed`.
std::uint32_t crc32(std::uint32_t seed, std::string_view bytes);

/// The checksum of pages: Adler-32 continued from an arbitrary start value.
std::uint32_t pageSum(std::uint32_t seed, std::string_view bytes);

/// The first 256 bytes of the format's pseudo-random sequence, the mask of file headers and the padding of pages.
const std::array<char, 256>& randomBytes();

}  // namespace kdraw
