#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/model/styles.hpp"

namespace kova::engine {

/// What a dimension measures.
enum class DimMeasure : std::uint8_t { Length, Angle };

/// What the text of a dimension is made from, besides its style.
struct DimTextInput {
    double value = 0.0;  ///< drawing units before DIMLFAC, or radians
    DimMeasure measure = DimMeasure::Length;
    std::string_view prefix{};        ///< of the kind of dimension ("R", "%%c"); DIMPOST's own takes its place
    std::string_view textOverride{};  ///< DimensionEntity::textOverride
    bool paperSpace = false;          ///< a negative DIMLFAC counts there only
};

/// The measured value as content of multiline text: units, rounding, DIMPOST, tolerances or limits (stacked), without
/// alternate units. This is what "<>" stands for.
std::string dimPrimaryText(const DimStyle& style, const DimTextInput& input);
/// The alternate units without their brackets: what "[]" stands for; empty for angles.
std::string dimAlternateText(const DimStyle& style, const DimTextInput& input);
/// The whole text of a dimension as content of multiline text: "<>" and "[]" replaced; alternate units in brackets
/// stand behind the measured value when DIMALT is on. Empty when the override holds blanks only.
std::string dimTextContent(const DimStyle& style, const DimTextInput& input);

/// What the code \X parts: the text above the dimension line and the one below.
struct DimTextSplit {
    std::string_view above;
    std::string_view below;
    bool split = false;
};
DimTextSplit splitDimText(std::string_view content);

}  // namespace kova::engine
