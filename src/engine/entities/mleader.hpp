#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/entities/mtext_layout.hpp"
#include "engine/entity.hpp"
#include "engine/path.hpp"
#include "engine/records/styles.hpp"

namespace kova::engine {

struct Block;

/// One leader line of a multileader: from the arrow to the landing point, where the dogleg begins.
struct MLeaderHead {
    std::vector<math::Vector2> vertices;

    void describe(FieldVisitor& v);
    friend bool operator==(const MLeaderHead&, const MLeaderHead&) = default;
};

/// What a multileader points from.
enum class MLeaderContent : std::uint8_t { None = 0, Block = 1, MText = 2 };

/// A multileader: leader lines that share one text or block.
///
/// contentPos of a text is the middle of its edge that faces the first leader (at the height of the style's
/// attachment line), the landing gap away from the landing's end; of a block the insertion point.
class MLeaderEntity final : public Entity {
    KOVA_ENTITY(MLeaderEntity, MLeader)

    std::vector<MLeaderHead> heads;
    MLeaderContent contentType = MLeaderContent::MText;
    std::string textContent;  ///< with inline codes
    Name blockName;
    math::Vector2 contentPos;
    double landingGap = 0.0;       ///< 0: the style's; drawing units before the style's scale factor, as all sizes here
    double landingDistance = 0.0;  ///< length of the dogleg; 0: the style's
    bool hasLanding = true;
    bool hasDogleg = true;
    double arrowSize = 0.0;   ///< 0: the style's
    double textHeight = 0.0;  ///< 0: the style's
    Name styleName = commonNames().standard;

    /// The style of that name, else "Standard".
    const MLeaderStyle& style() const;
    double scale() const;  ///< the style's scale factor, or the annotation scale
    double effectiveArrowSize() const;
    double effectiveTextHeight() const;
    double effectiveLandingGap() const;
    double effectiveLandingDistance() const;
    /// +1 when the content stands right of the first leader, -1 when left.
    double side() const;
    /// Where a head's line ends and its dogleg begins: its last vertex.
    math::Vector2 landingPoint(const MLeaderHead& head) const;
    /// Where a head's dogleg ends: at the content's edge, the gap away.
    math::Vector2 connectionPoint(const MLeaderHead& head) const;
    /// The text's layout input (its position is the insertion point of the multiline text); valid while the
    /// multileader stands unchanged.
    MTextBlock textBlock() const;
    bool hasText() const { return contentType == MLeaderContent::MText && !textContent.empty(); }

    /// The block shown when contentType is Block: blockName's, else the style's; null when there is none.
    const Block* contentBlock() const;
    /// From block coordinates to the drawing.
    math::Matrix4 blockMatrix() const;
    /// The content's box in drawing coordinates; contentPos when there is nothing to measure.
    math::Bounds2 contentBox() const;

private:
    math::Vector2 connection(const math::Vector2& from, const math::Bounds2& box) const;
    void emitHeads(OutlineSink& sink, const OutlineStyle& style, const math::Bounds2& box) const;
};

}  // namespace kova::engine
