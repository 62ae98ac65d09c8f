#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "engine/text/mtext_layout.hpp"
#include "engine/model/entity.hpp"

namespace kova::engine {

/// Bits of an MText's bgFlags.
enum MTextBackground : std::int32_t {
    kBackgroundColor = 1,   ///< filled with bgColor
    kBackgroundCanvas = 2,  ///< filled with the colour of the paper
    kBackgroundFrame = 16,  ///< a frame round the text
};

/// Paragraphs of text with inline formatting codes, wrapped at a width.
class MTextEntity final : public Entity {
    KOVA_ENTITY(MTextEntity, MText)

    math::Vector2 position;  ///< where the attachment point lies
    double width = 0.0;      ///< wrap width; 0: lines are not wrapped
    double height = 2.5;     ///< of capital letters
    double rotation = 0.0;   ///< radians
    std::string content;
    std::int32_t attachment = kAttachTopLeft;  ///< MTextAttachment
    double lineSpacingFactor = 1.0;            ///< 0.25 to 4
    Name textStyle = commonNames().standard;
    std::int32_t bgFlags = 0;  ///< MTextBackground bits
    Color bgColor = Color::index(7);
    double bgScale = 1.5;             ///< size of the filled box: 1 fits the text, 1.5 has half a line of margin
    std::int32_t bgTransparency = 0;  ///< percent
    double definedHeight = 0.0;       ///< height given by the user; 0: as the text needs
    MTextColumns columns;
    bool lineSpacingExact = false;  ///< line spacing type "exactly" instead of "at least"
    bool backward = false;          ///< a mirror image, left by transforms that turn the plane over

    /// The view of this text that the layout takes; valid while the entity stands unchanged.
    MTextBlock block() const;
    /// The corners of the text's box in drawing coordinates, counter-clockwise from its lower left (as read).
    std::array<math::Vector2, 4> box() const;
};

}  // namespace kova::engine
