#include "cmd/block_attributes.hpp"

#include "engine/entities/mtext_layout.hpp"
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
    attribute.locked = placed.locked;
    attribute.multiline = placed.multiline;
    attribute.width = placed.width;
    if (!placed.hasSecondPoint()) return attribute;
    engine::TextLine line = placed.line();
    line.content = attribute.value;
    const engine::TextLinePlacement at = engine::placeTextLine(line, &drawing);
    attribute.hAlign = engine::kHAlignLeft;
    attribute.vAlign = engine::kVAlignBaseline;
    attribute.rotation = (placed.fitEnd - placed.insertion).angle();
    if (attribute.multiline) {
        attribute.width = (placed.fitEnd - placed.insertion).length();
        return attribute;
    }
    const double height = at.yAxis.length();
    if (!at.valid || !(height > 0.0)) return attribute;
    attribute.position = at.origin;
    attribute.textHeight = height;
    attribute.widthFactor = at.xAxis.length() / height;
    return attribute;
}

Task<std::optional<std::string>> askAttributeValue(Ask& ask, std::string prompt, bool multiline) {
    const Answer first = co_await ask.text(std::move(prompt));
    if (!first.isText()) co_return std::nullopt;
    std::string value = first.text;
    while (multiline) {
        const Answer next = co_await ask.text("Enter next line:");
        if (!next.isText()) break;
        value += "\\P" + next.text;
    }
    co_return value;
}

std::string convertedValue(const std::string& value, bool fromMultiline, bool toMultiline) {
    if (fromMultiline == toMultiline) return value;
    if (toMultiline) return engine::mtextFromPlain(value);
    std::string text = engine::plainText(value);
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
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
            const BlockAttribute& held = reference.attributes[i];
            value = convertedValue(held.value, held.multiline, definition->multiline);
            break;
        }
        result.push_back(makeAttribute(*definition, placement, std::move(value), drawing));
    }
    return result;
}

bool definesAttributes(const engine::Block* block) {
    return block != nullptr && !attributeDefinitions(block->entities).empty();
}

std::vector<engine::BlockReferenceEntity*> referencesOf(engine::Drawing& drawing,
                                                        const std::vector<engine::Name>& blocks) {
    std::vector<engine::BlockReferenceEntity*> references;
    const auto scan = [&](engine::EntityList& list) {
        for (engine::Entity& entity : list) {
            if (entity.type() != engine::EntityType::BlockReference) continue;
            auto& reference = static_cast<engine::BlockReferenceEntity&>(entity);
            if (std::find(blocks.begin(), blocks.end(), reference.blockName) != blocks.end())
                references.push_back(&reference);
        }
    };
    scan(drawing.modelSpace());
    for (const auto& layout : drawing.layouts()) scan(layout->entities);
    for (const auto& block : drawing.blocks()) scan(block->entities);
    return references;
}

std::size_t synchronizeAttributes(doc::Document& document, const std::vector<engine::Name>& blocks) {
    engine::Drawing& drawing = document.drawing();
    const std::vector<engine::BlockReferenceEntity*> references = referencesOf(drawing, blocks);
    for (engine::BlockReferenceEntity* entity : references)
        document.modifyEntity(*entity, [&](engine::Entity& target) {
            auto& reference = static_cast<engine::BlockReferenceEntity&>(target);
            if (const engine::Block* block = drawing.findBlock(reference.blockName))
                reference.attributes = matchedAttributes(reference, *block, drawing);
        });
    return references.size();
}

}  // namespace kova::cmd
