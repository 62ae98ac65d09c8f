#include "kdraw/fields/object.hpp"

#include <cstdlib>

namespace kdraw {

namespace {

/// Hundredths of a millimetre by stored index.
constexpr int kWeights[] = {0,  5,  9,  13, 15, 18,  20,  25,  30,  35,  40,  50,
                            53, 60, 70, 80, 90, 100, 106, 120, 140, 158, 200, 211};
constexpr std::uint8_t kByLayer = 29, kByBlock = 30, kDefault = 31;

}  // namespace

int lineweightOf(std::uint8_t index) {
    if (index < std::size(kWeights)) return kWeights[index];
    return index == kByLayer ? -1 : index == kByBlock ? -2 : -3;
}

std::uint8_t lineweightIndex(int hundredths) {
    if (hundredths < 0) return hundredths == -1 ? kByLayer : hundredths == -2 ? kByBlock : kDefault;
    std::uint8_t best = 0;
    for (std::uint8_t i = 0; i < std::size(kWeights); ++i)
        if (std::abs(kWeights[i] - hundredths) < std::abs(kWeights[best] - hundredths)) best = i;
    return best;
}

}  // namespace kdraw
