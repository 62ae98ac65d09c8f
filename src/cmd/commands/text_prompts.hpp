#pragma once

#include <optional>

#include "cmd/dialogue.hpp"
#include "doc/document.hpp"

namespace kova::cmd::commands {

/// Distance from one line of text to the next, in text heights.
inline constexpr double kTextLineStep = 5.0 / 3.0;

/// Where and how a line of text is to stand.
struct TextPlace {
    bool continued = false;  ///< Enter was the first answer; nothing below is set
    math::Vector2 position;
    math::Vector2 fitEnd;
    bool fit = false;
    double height = 2.5;
    double rotation = 0.0;  ///< radians, in the world
    std::int32_t hAlign = 0;
    std::int32_t vAlign = 0;
    engine::Name style;
    double widthFactor = 1.0;
    double oblique = 0.0;  ///< radians
    std::int32_t generation = 0;

    /// Aligned and fit text.
    bool hasSecondPoint() const;
};

/// The questions that stand before the text itself: start point or [Justify/Style], height, rotation. All who ask share
/// the defaults. `label` names the step in which a style is chosen. Nothing: given up.
Task<std::optional<TextPlace>> askTextPlace(Ask& ask, doc::Document& document, const char* label);

}  // namespace kova::cmd::commands
