#include "cmd/dialogue.hpp"
#include "engine/modify/exploded_parts.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/pick_request.hpp"
#include "cmd/point_input.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/attribute_definition.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/entities/text.hpp"
#include "math/angles.hpp"
#include "strings/numbers.hpp"

namespace kova::cmd::commands {

namespace {

using engine::BlockAttribute;
using engine::BlockReferenceEntity;
using engine::Name;

/// An attribute of several lines as the text that it shows.
std::unique_ptr<engine::Entity> paragraphsOf(const BlockReferenceEntity& reference, const BlockAttribute& attribute) {
    auto text = std::make_unique<engine::MTextEntity>();
    text->copyCommonFrom(reference);
    const engine::TextLine line = attribute.line();
    const engine::MTextBlock block = engine::paragraphBlock(line, reference.drawing());
    text->content = attribute.value;
    // Width and slant that the style does not give stand in front of the content.
    if (block.widthFactor != 1.0) text->content.insert(0, "\\W" + strings::shortest(attribute.widthFactor) + ";");
    if (block.oblique != 0.0) text->content.insert(0, "\\Q" + strings::shortest(math::toDegrees(attribute.oblique)) + ";");
    text->position = block.position;
    text->width = block.width;
    text->height = block.height;
    text->rotation = block.rotation;
    text->attachment = block.attachment;
    text->textStyle = block.textStyle;
    text->backward = block.backward;
    return text;
}

/// An attribute as the text that it shows.
std::unique_ptr<engine::Entity> lineOf(const BlockReferenceEntity& reference, const BlockAttribute& attribute) {
    auto text = std::make_unique<engine::TextEntity>();
    text->copyCommonFrom(reference);
    text->content = attribute.value;
    text->position = attribute.position;
    text->height = attribute.textHeight;
    text->rotation = attribute.rotation;
    text->textStyle = attribute.textStyle;
    text->hAlign = attribute.hAlign;
    text->vAlign = attribute.vAlign;
    text->generation = attribute.generation;
    text->widthFactor = attribute.widthFactor;
    text->oblique = attribute.oblique;
    return text;
}

std::unique_ptr<engine::Entity> textOf(const BlockReferenceEntity& reference, const BlockAttribute& attribute) {
    auto text = attribute.multiline ? paragraphsOf(reference, attribute) : lineOf(reference, attribute);
    text->setXdata({});
    if (attribute.plane) {
        text->setNormal(attribute.plane->normal);
        text->elevation = attribute.plane->elevation;
    }
    if (attribute.layer != engine::commonNames().layerZero) text->layer = attribute.layer;
    if (attribute.color.method != engine::ColorMethod::ByBlock) text->color = attribute.color;
    return text;
}

/// BURST: explodes block references; attributes become texts, and what lay on layer "0" or was colored ByBlock keeps
/// the look that the reference gave it.
class BurstTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        const doc::GroupScope group(document(), "BURST");
        std::size_t count = 0;
        for (const std::uint64_t id : selected.ids)
            if (auto* reference = dynamic_cast<BlockReferenceEntity*>(drawing().findById(id)))
                count += burst(*reference) ? 1 : 0;
        message(counted(count, "block reference") + " exploded.");
        repaint();
    }

private:
    bool burst(BlockReferenceEntity& reference) {
        std::optional<EntityParts> parts = explodedParts(reference);
        if (!parts) return false;
        const math::Vector2 x = math::Vector2::from_angle(reference.rotation);
        for (const auto& attribute : reference.attributes) {
            if (attribute.invisible || attribute.value.empty()) continue;
            // Each copy of a grid shows it.
            for (std::int32_t row = 0; row < reference.rowCount(); ++row)
                for (std::int32_t column = 0; column < reference.columnCount(); ++column) {
                    if (parts->size() >= kMaxParts) return false;
                    BlockAttribute copy = attribute;
                    const math::Vector2 step =
                        x * (reference.columnSpacing * column) + x.perpendicular() * (reference.rowSpacing * row);
                    const math::Vector2 seen =
                        engine::planFromObject(reference, step) - engine::planFromObject(reference, {});
                    if (!copy.plane)
                        copy.position += step;
                    else if (const auto moved = reference.attributeFromPlan(
                                 copy, reference.planFromAttribute(copy, copy.position) + seen))
                        copy.position = *moved;
                    parts->push_back(textOf(reference, copy));
                }
        }
        for (auto& part : *parts) {
            if (!part) continue;
            if (part->type() == engine::EntityType::AttributeDefinition) {
                const auto& definition = static_cast<const engine::AttributeDefinitionEntity&>(*part);
                if (!definition.constant || definition.invisible) continue;
                BlockAttribute fixed;
                fixed.value = definition.defaultValue;
                fixed.position = definition.insertion;
                fixed.textHeight = definition.textHeight;
                fixed.rotation = definition.rotation;
                fixed.textStyle = definition.textStyle;
                fixed.layer = definition.layer;
                fixed.color = definition.color;
                fixed.hAlign = definition.hAlign;
                fixed.vAlign = definition.vAlign;
                fixed.generation = definition.generation;
                fixed.widthFactor = definition.widthFactor;
                fixed.oblique = definition.oblique;
                fixed.multiline = definition.multiline;
                fixed.width = definition.width;
                if (!engine::inWorldPlane(definition))
                    fixed.plane = engine::AttributePlane{definition.normal(), definition.elevation};
                document().addEntity(textOf(reference, fixed));
                continue;
            }
            if (part->layer == engine::commonNames().layerZero) part->layer = reference.layer;
            if (part->color.method == engine::ColorMethod::ByBlock) part->color = reference.color;
            if (part->linetype == engine::commonNames().byBlock) part->linetype = reference.linetype;
            if (part->lineweight == -2) part->lineweight = reference.lineweight;
            document().addEntity(std::move(part));
        }
        document().removeEntity(reference);
        return true;
    }
};

bool isReference(const engine::Entity& entity) { return entity.type() == engine::EntityType::BlockReference; }

/// GATTE: one attribute of all references of a block gets one value.
class GatteTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer pick = co_await ask.object("Select block or attribute [Block name]:", "Block", isReference);
        Name block;
        if (pick.is("BLOCK")) {
            for (;;) {
                const Answer name = co_await ask.text("Enter block name:");
                if (name.isEnter()) co_return;
                const engine::Block* known = drawing().findBlock(Name(typedName(name.text)));
                if (known != nullptr) {
                    block = known->name;
                    break;
                }
                message("Block " + inQuotes(typedName(name.text)) + " not found.");
            }
        } else {
            const auto* reference =
                pick.isObject() ? dynamic_cast<const BlockReferenceEntity*>(drawing().findById(pick.id)) : nullptr;
            if (reference == nullptr) co_return;
            block = reference->blockName;
        }
        std::string tag;
        std::vector<std::uint64_t> ids;
        for (;;) {
            PickRequest request;
            request.prompt = "Select attribute or type attribute name:";
            request.usable = [block](const engine::Entity& entity) {
                return isReference(entity) && static_cast<const BlockReferenceEntity&>(entity).blockName == block;
            };
            request.isName = [this, block](std::string_view line) { return !holders(block, typedName(line)).empty(); };
            const Answer answer = co_await askPick(ask, std::move(request));
            if (answer.isEnter()) co_return;
            tag = typedName(answer.text);
            if (const engine::Entity* entity = answer.isObject() ? drawing().findById(answer.id) : nullptr)
                tag = tagAt(static_cast<const BlockReferenceEntity&>(*entity), answer.point);
            ids = holders(block, tag);
            if (!ids.empty()) break;
            message("Attribute " + inQuotes(tag) + " not found.");
        }
        message("Block: " + block.str() + "   Attribute tag: " + engine::upperCase(tag));
        std::string question =
            "Number of inserts in drawing = " + std::to_string(ids.size()) + "  Process all of them? [Yes/No] <Yes>:";
        const bool all = co_await askYesNo(ask, std::move(question), true);
        if (!all) {
            const Answer selected = co_await ask.selection();
            std::erase_if(ids, [&](std::uint64_t id) {
                return std::find(selected.ids.begin(), selected.ids.end(), id) == selected.ids.end();
            });
        }
        const Answer value = co_await ask.text("New text:");
        const doc::GroupScope group(document(), "GATTE");
        for (const std::uint64_t id : ids)
            if (engine::Entity* entity = drawing().findById(id))
                document().modifyEntity(*entity, [&](engine::Entity& target) {
                    if (auto* attribute = static_cast<BlockReferenceEntity&>(target).findAttribute(tag))
                        attribute->value = value.text;
                });
        message(counted(ids.size(), "attribute") + " changed.");
    }

private:
    /// The tag of the reference's shown attribute that is nearest to a point; empty: there is none.
    std::string tagAt(const BlockReferenceEntity& reference, const math::Vector2& p) const {
        std::string tag;
        double least = std::numeric_limits<double>::infinity();
        const auto inPlane = engine::objectFromPlan(reference, p);
        if (!inPlane) return tag;
        for (const BlockAttribute& attribute : reference.attributes) {
            const double distance =
                inPlane->distance_to(engine::nearestOnTextLine(attribute.line(), &drawing(), *inPlane));
            if (attribute.invisible || !(distance < least)) continue;
            least = distance;
            tag = attribute.tag;
        }
        return tag;
    }

    /// References of the block in the current space that hold the attribute; those on locked layers are left out.
    std::vector<std::uint64_t> holders(Name block, const std::string& tag) const {
        std::vector<std::uint64_t> ids;
        for (const engine::Entity& entity : drawing().currentSpace()) {
            if (!isReference(entity)) continue;
            const auto& reference = static_cast<const BlockReferenceEntity&>(entity);
            const engine::Layer* layer = drawing().layers.find(entity.layer);
            if (reference.blockName == block && (layer == nullptr || !layer->locked) &&
                reference.findAttribute(tag) != nullptr)
                ids.push_back(entity.id());
        }
        return ids;
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Burst, "BURST", "Burst", "Modify")
KOVA_TOOL_COMMAND(Gatte, "GATTE", "Global Attribute Edit", "Insert")

}  // namespace kova::cmd::commands
