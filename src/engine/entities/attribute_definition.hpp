#pragma once

#include <cstdint>
#include <string>

#include "engine/text/text_line.hpp"
#include "engine/model/entity.hpp"

namespace kova::engine {

struct BlockAttribute;

/// The definition of an attribute in a block: shows its tag where the attribute's value will stand.
class AttributeDefinitionEntity final : public Entity {
    KOVA_ENTITY(AttributeDefinitionEntity, AttributeDefinition)

    std::string tag;
    std::string prompt;
    std::string defaultValue;
    math::Vector2 insertion;  ///< the alignment point
    double textHeight = 2.5;
    double rotation = 0.0;  ///< radians
    Name textStyle = commonNames().standard;
    bool invisible = false;                 ///< its values are not drawn
    bool constant = false;                  ///< every reference has the default value
    bool verify = false;                    ///< the value is asked for twice
    bool preset = false;                    ///< the default is taken without asking
    bool locked = false;                    ///< its values keep their place in the reference
    bool multiline = false;                 ///< values are content of multiline text
    double width = 0.0;                     ///< where lines of such values are wrapped; 0: nowhere
    std::int32_t hAlign = kHAlignLeft;      ///< TextHAlign
    std::int32_t vAlign = kVAlignBaseline;  ///< TextVAlign
    std::int32_t generation = 0;            ///< TextGeneration bits
    double widthFactor = 1.0;
    double oblique = 0.0;  ///< radians
    bool fit = false;      ///< has a second point; always so for aligned and fit text
    math::Vector2 fitEnd;  ///< second point of aligned and fit text

    bool hasSecondPoint() const { return fit || hAlign == kHAlignAligned || hAlign == kHAlignFit; }
    /// The line that shows the tag (a constant attribute shows its value).
    TextLine line() const;
};

/// The definitions in a block whose values its references hold: all but the constant ones, in drawing order.
std::vector<const AttributeDefinitionEntity*> attributeDefinitions(const EntityList& contents);

/// An attribute as its definition wants it, with a value; `placement` carries block coordinates to where it stands. Text
/// between two points becomes left-aligned text that fills the same space.
BlockAttribute makeAttribute(const AttributeDefinitionEntity& definition, const math::Matrix4& placement,
                             std::string value, const Drawing& drawing);

}  // namespace kova::engine
