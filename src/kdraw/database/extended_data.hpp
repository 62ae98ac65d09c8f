#pragma once

#include <vector>

#include "kdraw/fields/bit_fields.hpp"

namespace kdraw {

/// Reads the extended data at the decoder's place in the data. What is damaged is left out.
void decodeExtendedData(BitDecoder& f, const TextCodec& codec, std::vector<XBlock>& blocks);
/// Writes it in the form of R2007 and later. Long data of one application becomes several pieces.
void encodeExtendedData(BitWriter& data, const std::vector<XBlock>& blocks);

}  // namespace kdraw
