#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/text/mtext_layout.hpp"
#include "engine/model/entity.hpp"
#include "math/curves/path.hpp"
#include "engine/model/styles.hpp"

namespace kova::engine {

struct Block;
struct BlockAttribute;

/// What a single leader line has of its own; members that are not set are the multileader's.
struct MLeaderLineLook {
    /// Bits of `members`.
    enum Member : std::uint32_t { kType = 1, kColor = 2, kLinetype = 4, kLineweight = 8, kArrowSize = 16, kArrow = 32 };

    std::uint32_t members = 0;
    std::int32_t lineType = 1;  ///< 0 invisible, 1 straight, 2 spline
    Color color = Color::byBlock();
    Name linetype = commonNames().byBlock;
    std::int32_t lineweight = -2;
    double arrowSize = 0.0;  ///< drawing units before the multileader's scale
    Name arrowBlock;

    bool has(Member member) const { return (members & member) != 0; }
    void describe(FieldVisitor& v);
    friend bool operator==(const MLeaderLineLook&, const MLeaderLineLook&) = default;
};

/// One leader line of a multileader: from the arrow to the landing point, where the dogleg begins.
struct MLeaderHead {
    std::vector<math::Vector2> vertices;
    std::optional<MLeaderLineLook> look{};

    void describe(FieldVisitor& v);
    friend bool operator==(const MLeaderHead&, const MLeaderHead&) = default;
};

/// The members of its style that a multileader has values of its own for, besides those that are fields of it.
struct MLeaderOverrides {
    /// Bits of `members`, as DXF counts them in group 90 of a MULTILEADER.
    enum Member : std::uint32_t {
        kLeaderType = 1U << 0,
        kLeaderColor = 1U << 1,
        kLeaderLinetype = 1U << 2,
        kLeaderLineweight = 1U << 3,
        kArrow = 1U << 8,
        kTextStyle = 1U << 11,
        kLeftAttachment = 1U << 12,
        kTextAngle = 1U << 13,
        kTextAlignment = 1U << 14,
        kTextColor = 1U << 15,
        kTextFrame = 1U << 17,
        kBlockColor = 1U << 20,
        kBlockScale = 1U << 21,
        kBlockRotation = 1U << 22,
        kBlockConnection = 1U << 23,
        kScale = 1U << 24,
        kRightAttachment = 1U << 25,
        kAttachmentDirection = 1U << 27,
        kTopAttachment = 1U << 28,
        kBottomAttachment = 1U << 29,
        kAll = kLeaderType | kLeaderColor | kLeaderLinetype | kLeaderLineweight | kArrow | kTextStyle |
               kLeftAttachment | kTextAngle | kTextAlignment | kTextColor | kTextFrame | kBlockColor | kBlockScale |
               kBlockRotation | kBlockConnection | kScale | kRightAttachment | kAttachmentDirection | kTopAttachment |
               kBottomAttachment,
    };

    std::uint32_t members = 0;
    MLeaderStyle values;  ///< of the members that are set

    /// Puts the members that are set over those of a style.
    void apply(MLeaderStyle& style) const;
    void describe(FieldVisitor& v);
};

/// The value of an attribute of the block that a multileader shows.
struct MLeaderAttribute {
    std::string tag;
    std::string value;
    double width = 1.0;  ///< as other programs keep it; its meaning is theirs

    void describe(FieldVisitor& v);
    friend bool operator==(const MLeaderAttribute&, const MLeaderAttribute&) = default;
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
    std::vector<MLeaderAttribute> attributes;  ///< of the block; one without a value here shows its default
    math::Vector2 contentPos;
    double landingGap = 0.0;       ///< 0: the style's; drawing units before the style's scale factor, as all sizes here
    double landingDistance = 0.0;  ///< length of the dogleg; 0: the style's
    bool hasLanding = true;
    bool hasDogleg = true;
    double arrowSize = 0.0;   ///< 0: the style's
    double textHeight = 0.0;  ///< 0: the style's
    Name styleName = commonNames().standard;
    std::optional<MLeaderOverrides> overrides;

    /// The style of that name, else "Standard".
    const MLeaderStyle& namedStyle() const;
    /// The style in force: the named one under the multileader's own values.
    MLeaderStyle style() const;
    /// Gives the multileader a value of its own for a member of its style.
    template <class T>
    void setOverride(MLeaderOverrides::Member member, T MLeaderStyle::*field, const T& value) {
        if (!overrides) overrides.emplace();
        overrides->members |= member;
        overrides->values.*field = value;
    }
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
    /// The attributes of the block as they stand in the drawing, with the values held here.
    std::vector<BlockAttribute> placedAttributes() const;
    /// The content's box in drawing coordinates; contentPos when there is nothing to measure.
    math::Bounds2 contentBox() const;

private:
    math::Vector2 connection(const math::Vector2& from, const math::Bounds2& box) const;
    void emitHeads(OutlineSink& sink, const OutlineStyle& style, const math::Bounds2& box) const;
};

}  // namespace kova::engine
