// The LZ77 compression and the interleaving of R2007 files, which are only read.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "kdraw/container/lz2004.hpp"

namespace kdraw {

/// Decompresses into `out`, which has room for `capacity` bytes; the rules for unsound streams are those of
/// decompress2004. There is no terminator: a stream ends with its last byte.
Decompressed decompress2007(std::string_view source, char* out, std::size_t capacity);

/// Collects the data bytes of interleaved Reed-Solomon blocks of 255 bytes: `dataBytes` (239 or 251) per block, the
/// parity left out and not checked. Empty when `source` is shorter than `blocks` * 255.
std::string deinterleave(std::string_view source, std::size_t blocks, std::size_t dataBytes);

}  // namespace kdraw
