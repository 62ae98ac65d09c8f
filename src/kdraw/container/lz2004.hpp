// The byte-oriented LZ77 compression of all layouts since R2004 except that of R2007.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kdraw {

/// What became of a decompression: how many bytes were written, and whether the stream was sound up to its terminator.
struct Decompressed {
    std::size_t size = 0;
    bool sound = false;
};

/// Decompresses into `out`, which has room for `capacity` bytes. A stream that would write more, reaches back before
/// its own output or ends early is unsound; what it wrote until then stands in `out`.
Decompressed decompress2004(std::string_view source, char* out, std::size_t capacity);

/// The largest input that `compress2004` takes at once.
inline constexpr std::size_t maxCompress2004 = 0x4000'0000;

/// Appends the compressed form of `source` (4 bytes or more) to `out`, terminator included. Looks for matches by chains
/// of equal hashes and takes the one that saves most.
void compress2004(std::string_view source, std::string& out);

}  // namespace kdraw
