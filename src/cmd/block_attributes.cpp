#include "cmd/block_attributes.hpp"

#include "engine/entities/object_plane.hpp"
#include "engine/entities/text_line.hpp"

namespace kova::cmd {

using engine::AttributeDefinitionEntity;
using engine::BlockAttribute;

std::vector<const AttributeDefinitionEntity*> attributeDefinitions(const engine::EntityList& contents) {
    std::vector<const AttributeDefinitionEntity*> found;
    for (const engine::Entity& entity : contents) {
        if (entity.type() != engine::EntityType::AttributeDefinition) continue;
        const auto& definition = static_cast<const AttributeDefinitionEntity&>(entity);
        if (!definition.constant) found.push_back(&definition);
    }
    return found;
}

math::Matrix4 attributePlacement(const engine::BlockReferenceEntity& reference, const engine::Block& block) {
    const auto plane = engine::objectPlane(reference).inverse();
    const math::Matrix4 placed = reference.blockMatrix(block);
    return plane ? *plane * placed : placed;
}

BlockAttribute makeAttribute(const AttributeDefinitionEntity& definition, const math::Matrix4& placement,
                             std::string value, const engine::Drawing& drawing) {
    AttributeDefinitionEntity placed(definition);
    placed.transform(placement);
    BlockAttribute attribute;
    attribute.tag = definition.tag;
    attribute.value = std::move(value);
    attribute.position = placed.insertion;
    attribute.textHeight = placed.textHeight;
    attribute.rotation = placed.rotation;
    attribute.textStyle = placed.textStyle;
    attribute.invisible = placed.invisible;
    attribute.layer = placed.layer;
    attribute.color = placed.color;
    attribute.hAlign = placed.hAlign;
    attribute.vAlign = placed.vAlign;
    attribute.generation = placed.generation;
    attribute.widthFactor = placed.widthFactor;
    attribute.oblique = placed.oblique;
    if (!placed.hasSecondPoint()) return attribute;
    engine::TextLine line = placed.line();
    line.content = attribute.value;
    const engine::TextLinePlacement at = engine::placeTextLine(line, &drawing);
    attribute.hAlign = engine::kHAlignLeft;
    attribute.vAlign = engine::kVAlignBaseline;
    attribute.rotation = (placed.fitEnd - placed.insertion).angle();
    const double height = at.yAxis.length();
    if (!at.valid || !(height > 0.0)) return attribute;
    attribute.position = at.origin;
    attribute.textHeight = height;
    attribute.widthFactor = at.xAxis.length() / height;
    return attribute;
}

std::vector<BlockAttribute> matchedAttributes(const engine::BlockReferenceEntity& reference, const engine::Block& block,
                                              const engine::Drawing& drawing) {
    const math::Matrix4 placement = attributePlacement(reference, block);
    std::vector<BlockAttribute> result;
    std::vector<bool> used(reference.attributes.size(), false);
    for (const AttributeDefinitionEntity* definition : attributeDefinitions(block.entities)) {
        std::string value = definition->defaultValue;
        for (std::size_t i = 0; i < used.size(); ++i) {
            if (used[i] || !engine::equalNoCase(reference.attributes[i].tag, definition->tag)) continue;
            used[i] = true;
            value = reference.attributes[i].value;
            break;
        }
        result.push_back(makeAttribute(*definition, placement, std::move(value), drawing));
    }
    return result;
}

}  // namespace kova::cmd
