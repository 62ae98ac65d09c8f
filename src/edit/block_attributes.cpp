#include "edit/block_attributes.hpp"

#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "engine/text/mtext_layout.hpp"
#include "engine/model/object_plane.hpp"

namespace kova::cmd {

using engine::AttributeDefinitionEntity;
using engine::BlockAttribute;

math::Matrix4 attributePlacement(const engine::BlockReferenceEntity& reference, const engine::Block& block) {
    const auto plane = engine::objectPlane(reference).inverse();
    const math::Matrix4 placed = reference.blockMatrix(block);
    return plane ? *plane * placed : placed;
}

BlockAttribute makeAttribute(const AttributeDefinitionEntity& definition,
                             const engine::BlockReferenceEntity& reference, const engine::Block& block,
                             std::string value, const engine::Drawing& drawing) {
    if (engine::inWorldPlane(definition))
        return engine::makeAttribute(definition, attributePlacement(reference, block), std::move(value), drawing);
    // A definition in a plane of its own gives an attribute with a plane of its own.
    const math::Matrix4 placement = reference.blockMatrix(block);
    AttributeDefinitionEntity placed(definition);
    placed.transform(placement);
    BlockAttribute attribute = engine::makeAttribute(definition, placement, std::move(value), drawing);
    attribute.plane = engine::AttributePlane{placed.normal(), placed.elevation};
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

namespace {

/// What a definition asks, with the value so far as default.
std::string attributeQuestion(const AttributeDefinitionEntity& definition, const std::string& value) {
    const std::string& prompt = definition.prompt.empty() ? definition.tag : definition.prompt;
    return value.empty() ? prompt + ":" : withDefault(prompt, value);
}

}  // namespace

Task<std::vector<std::string>> askAttributeValues(
    Ask& ask, const engine::Drawing& drawing,
    std::function<std::vector<const AttributeDefinitionEntity*>()> definitions) {
    std::vector<std::string> values;
    for (const auto* definition : definitions()) values.push_back(definition->defaultValue);
    if (engine::sysVarInt(drawing, "ATTREQ", 1) == 0) co_return values;
    for (const bool verifying : {false, true}) {
        bool announced = false;
        for (std::size_t i = 0; i < values.size(); ++i) {
            const auto known = definitions();
            if (i >= known.size()) co_return values;
            const AttributeDefinitionEntity& definition = *known[i];
            if (definition.preset || (verifying && !definition.verify)) continue;
            if (!announced) ask.message(verifying ? "Verify attribute values" : "Enter attribute values");
            announced = true;
            std::string prompt = attributeQuestion(definition, values[i]);
            const std::optional<std::string> value =
                co_await askAttributeValue(ask, std::move(prompt), definition.multiline);
            if (value) values[i] = *value;
        }
    }
    co_return values;
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
        result.push_back(makeAttribute(*definition, reference, block, std::move(value), drawing));
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
