#pragma once

#include <optional>

#include "cmd/dialogue.hpp"
#include "doc/document.hpp"

namespace kova::cmd::commands {

/// Distance from one line of text to the next, in text heights.
inline constexpr double kTextLineStep = 5.0 / 3.0;

/// A justification of lines of text.
struct TextJustification {
    const char* word;
    std::int32_t hAlign;
    std::int32_t vAlign;
    const char* question;  ///< for the point that holds the text
};
/// All of them as options, and as prompts list them.
inline constexpr const char* kTextJustifications = "Left Center Right Align Middle Fit TL TC TR ML MC MR BL BC BR";
/// The one that an answer names; null: none.
const TextJustification* textJustification(const Answer& answer);
/// "Left", "MC"; empty for values that no justification has.
std::string textJustificationName(std::int32_t hAlign, std::int32_t vAlign);

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
