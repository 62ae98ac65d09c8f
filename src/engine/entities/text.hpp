#pragma once

#include <cstdint>
#include <string>

#include "engine/text/text_line.hpp"
#include "engine/model/entity.hpp"

namespace kova::engine {

/// One line of text. Codes such as %%c stay in the content and are resolved when it is drawn.
class TextEntity final : public Entity {
    KOVA_ENTITY(TextEntity, Text)

    math::Vector2 position;  ///< the alignment point: what hAlign and vAlign refer to; aligned, fit: first point
    double height = 2.5;
    double rotation = 0.0;  ///< radians
    std::string content;
    std::int32_t hAlign = kHAlignLeft;      ///< TextHAlign
    std::int32_t vAlign = kVAlignBaseline;  ///< TextVAlign
    bool fit = false;                       ///< has a second point; always so for aligned and fit text
    math::Vector2 fitEnd;                   ///< second point of aligned and fit text
    Name textStyle = commonNames().standard;
    double widthFactor = 1.0;
    double oblique = 0.0;         ///< radians
    std::int32_t generation = 0;  ///< TextGeneration bits

    /// Runs between two points.
    bool hasSecondPoint() const { return fit || hAlign == kHAlignAligned || hAlign == kHAlignFit; }
    /// The view of this text that measuring and drawing take; valid while the text stands unchanged.
    TextLine line() const;
};

}  // namespace kova::engine
