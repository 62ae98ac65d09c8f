#pragma once

#include <map>
#include <string>
#include <string_view>

#include "engine/records/styles.hpp"

namespace kova::engine {

class Drawing;

/// Sets overrides of dimension variables in a style. Unknown names and values of a wrong kind are passed over.
void applyDimOverrides(DimStyle& style, const std::map<std::string, double>& numbers,
                       const std::map<std::string, std::string>& names);

/// What a dimension measures.
enum class DimMeasure : std::uint8_t { Length, Angle };

/// Prefix of the measured text: "R", the diameter sign, or none.
struct DimTextInput {
    double value = 0.0;  ///< drawing units, or radians
    DimMeasure measure = DimMeasure::Length;
    std::string_view prefix{};  ///< of the kind of dimension; left out when DIMPOST has a prefix of its own
    std::string_view textOverride{};
    const Drawing* drawing = nullptr;  ///< for the formats that are taken from the drawing (DIMLUNIT 6, DIMALTU 8)
};

/// The measured value as content of multiline text: units, rounding, DIMPOST, tolerances or limits (stacked), without
/// alternate units. This is what "<>" stands for.
std::string dimPrimaryText(const DimStyle& style, const DimTextInput& input);
/// The alternate units without their brackets: what "[]" stands for; empty for angles.
std::string dimAlternateText(const DimStyle& style, const DimTextInput& input);
/// The whole text of a dimension as content of multiline text: "<>" and "[]" replaced, alternate units in brackets
/// appended when DIMALT is on. Empty for a text override of blanks only.
std::string dimTextContent(const DimStyle& style, const DimTextInput& input);

/// Where \X parts a text: what stands above the dimension line, and what below.
struct DimTextSplit {
    std::string_view above;
    std::string_view below;
    bool split = false;
};
DimTextSplit splitDimText(std::string_view content);

}  // namespace kova::engine
