#include "edit/block_attributes.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "edit/entity_copies.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "doc/pick/picking.hpp"
#include "cmd/prompts/property_prompts.hpp"
#include "cmd/registry.hpp"
#include "strings/wildcards.hpp"
#include "engine/model/object_plane.hpp"

namespace kova::cmd::commands {

namespace {

using engine::BlockAttribute;
using engine::BlockReferenceEntity;
using engine::Name;

/// One attribute, by the reference that holds it.
struct Place {
    std::uint64_t id = 0;
    std::size_t index = 0;
};

/// Replaces the first `from` of a text by `to`; an empty `from` puts `to` in front. False when there is none.
bool changeText(std::string& text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    if (at == std::string::npos) return false;
    text.replace(at, from.size(), to);
    return true;
}

/// ATTEDIT: changes attributes of block references, one by one or many at once.
class AtteditTool final : public DialogueTool {
public:
    void end() override { group_.reset(); }

protected:
    Dialogue dialogue(Ask& ask) override {
        const bool single = co_await askYesNo(ask, "Edit attributes one at a time? [Yes/No] <Y>:", true);
        bool visibleOnly = true;
        if (!single) {
            message("Performing global editing of attribute values.");
            visibleOnly = co_await askYesNo(ask, "Edit only attributes visible on screen? [Yes/No] <Y>:", true);
        }
        const Answer block = co_await ask.text("Enter block name specification <*>:");
        const Answer tag = co_await ask.text("Enter attribute tag specification <*>:");
        const Answer value = co_await ask.text("Enter attribute value specification <*>:");
        block_ = block.isText() ? typedName(block.text) : "*";
        tag_ = tag.isText() ? typedName(tag.text) : "*";
        value_ = value.isText() ? value.text : "*";
        std::vector<Place> places;
        if (visibleOnly) {
            const Answer selected = co_await ask.selection("Select Attributes:");
            places = matching(selected.ids);
        } else {
            std::vector<std::uint64_t> ids;
            eachReference([&](const engine::Entity& entity) { ids.push_back(entity.id()); });
            places = matching(ids);
        }
        message(counted(places.size(), "attribute") + " selected.");
        if (places.empty()) co_return;
        if (!single) co_return co_await changeAll(ask, std::move(places));
        for (const Place& place : places) co_await editOne(ask, place);
    }

private:
    void changing() {
        if (!group_) group_.emplace(document(), "ATTEDIT");
    }

    template <class Visit>
    void eachReference(Visit&& visit) {
        const auto scan = [&](const engine::EntityList& list) {
            for (const engine::Entity& entity : list)
                if (entity.type() == engine::EntityType::BlockReference && !isLocked(entity)) visit(entity);
        };
        scan(drawing().modelSpace());
        for (const auto& layout : drawing().layouts()) scan(layout->entities);
    }
    bool isLocked(const engine::Entity& entity) const {
        const engine::Layer* layer = drawing().layers.find(entity.layer);
        return layer != nullptr && layer->locked;
    }

    std::vector<Place> matching(const std::vector<std::uint64_t>& ids) const {
        std::vector<Place> places;
        for (const std::uint64_t id : ids) {
            const auto* reference = dynamic_cast<const BlockReferenceEntity*>(drawing().findById(id));
            if (reference == nullptr || !matchesWildcards(reference->blockName.view(), block_)) continue;
            for (std::size_t i = 0; i < reference->attributes.size(); ++i) {
                const BlockAttribute& attribute = reference->attributes[i];
                // A backslash stands for empty values.
                const bool fits =
                    value_ == "\\" ? attribute.value.empty() : matchesWildcards(attribute.value, value_, true);
                if (fits && matchesWildcards(attribute.tag, tag_)) places.push_back({id, i});
            }
        }
        return places;
    }

    BlockReferenceEntity* reference(const Place& place) const {
        auto* found = dynamic_cast<BlockReferenceEntity*>(drawing().findById(place.id));
        return found != nullptr && place.index < found->attributes.size() ? found : nullptr;
    }

    void edit(const Place& place, const std::function<void(BlockAttribute&)>& change) {
        BlockReferenceEntity* target = reference(place);
        if (target == nullptr) return;
        changing();
        document().modifyEntity(*target, [&](engine::Entity& entity) {
            change(static_cast<BlockReferenceEntity&>(entity).attributes[place.index]);
        });
    }

    Dialogue changeAll(Ask& ask, std::vector<Place> places) {
        const Answer from = co_await ask.text("Enter string to change:");
        const Answer to = co_await ask.text("Enter new string:");
        const std::string oldText = from.text;
        const std::string newText = to.text;
        std::size_t changed = 0;
        for (const Place& place : places) {
            const BlockReferenceEntity* target = reference(place);
            if (target == nullptr) continue;
            std::string text = target->attributes[place.index].value;
            if (!changeText(text, oldText, newText)) continue;
            edit(place, [&](BlockAttribute& attribute) { attribute.value = text; });
            ++changed;
        }
        message(counted(changed, "attribute") + " changed.");
    }

    Dialogue editOne(Ask& ask, Place place) {
        for (;;) {
            const BlockReferenceEntity* target = reference(place);
            if (target == nullptr) co_return;
            const BlockAttribute& now = target->attributes[place.index];
            message(now.tag + " = " + inQuotes(now.value));
            const Answer option =
                co_await ask.keyword("Enter an option [Value/Position/Height/Angle/Style/Layer/Color/Next] <N>:",
                                     "Value Position Height Angle Style Layer Color Next");
            if (option.isEnter() || option.is("NEXT")) co_return;
            if (option.is("VALUE")) co_await editValue(ask, place);
            if (option.is("POSITION")) co_await editPosition(ask, place);
            if (option.is("HEIGHT")) {
                const Answer height = co_await ask.distance("Specify new height <no change>:", {}, {}, kPositive);
                if (height.isNumber()) edit(place, [&](BlockAttribute& a) { a.textHeight = height.number; });
            }
            if (option.is("ANGLE")) {
                const Answer angle = co_await ask.angle("Specify new rotation angle <no change>:");
                const double direction = angle.isNumber() ? worldDirection(angle, drawing()) : 0.0;
                if (angle.isNumber()) edit(place, [&](BlockAttribute& a) { a.rotation = direction; });
            }
            if (option.is("STYLE")) co_await editStyle(ask, place);
            if (option.is("LAYER")) co_await editLayer(ask, place);
            if (option.is("COLOR")) {
                const std::optional<engine::Color> color =
                    co_await askColor(ask, "Enter new color [Truecolor/COlorbook] <no change>:");
                if (color) edit(place, [&](BlockAttribute& a) { a.color = *color; });
            }
        }
    }

    Dialogue editValue(Ask& ask, Place place) {
        const Answer how =
            co_await ask.keyword("Enter type of value modification [Change/Replace] <R>:", "Change Replace");
        if (!how.is("CHANGE")) {
            const BlockReferenceEntity* now = reference(place);
            const bool multiline = now != nullptr && now->attributes[place.index].multiline;
            const std::optional<std::string> value =
                co_await askAttributeValue(ask, "Enter new attribute value:", multiline);
            edit(place, [&](BlockAttribute& a) { a.value = value.value_or(std::string()); });
            co_return;
        }
        const Answer from = co_await ask.text("Enter string to change:");
        const Answer to = co_await ask.text("Enter new string:");
        const BlockReferenceEntity* target = reference(place);
        if (target == nullptr) co_return;
        std::string text = target->attributes[place.index].value;
        if (changeText(text, from.text, to.text))
            edit(place, [&](BlockAttribute& a) { a.value = text; });
        else
            message("0 changed.");
    }

    Dialogue editPosition(Ask& ask, Place place) {
        const Answer point = co_await ask.point("Specify new text insertion point <no change>:");
        const BlockReferenceEntity* target = reference(place);
        if (!point.isPoint() || target == nullptr) co_return;
        if (const auto inPlane = target->attributeFromPlan(target->attributes[place.index], point.point))
            edit(place, [&](BlockAttribute& a) { a.position = *inPlane; });
    }

    Dialogue editStyle(Ask& ask, Place place) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter new text style <no change>:");
            if (answer.isEnter()) co_return;
            const engine::TextStyle* style = drawing().textStyles.find(Name(typedName(answer.text)));
            if (style != nullptr) {
                const engine::TextStyle chosen = *style;
                edit(place, [&](BlockAttribute& a) {
                    a.textStyle = chosen.name;
                    a.widthFactor = chosen.widthFactor;
                    a.oblique = chosen.obliqueAngle;
                });
                co_return;
            }
            message("Text style " + inQuotes(typedName(answer.text)) + " not found.");
        }
    }

    Dialogue editLayer(Ask& ask, Place place) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter new layer name <no change>:");
            if (answer.isEnter()) co_return;
            const engine::Layer* layer = drawing().layers.find(Name(typedName(answer.text)));
            if (layer != nullptr) {
                const Name name = layer->name;
                edit(place, [&](BlockAttribute& a) { a.layer = name; });
                co_return;
            }
            message("Unknown layer " + inQuotes(typedName(answer.text)) + ".");
        }
    }

    std::string block_;
    std::string tag_;
    std::string value_;
    std::optional<doc::GroupScope> group_;
};

bool hasAttributes(const engine::Entity& entity) {
    return entity.type() == engine::EntityType::BlockReference &&
           !static_cast<const BlockReferenceEntity&>(entity).attributes.empty();
}

/// EATTEDIT: the values of one reference's attributes, each with its prompt.
class EatteditTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer pick = co_await ask.object("Select a block:", {}, hasAttributes);
        const auto* reference =
            pick.isObject() ? static_cast<const BlockReferenceEntity*>(drawing().findById(pick.id)) : nullptr;
        if (reference == nullptr) co_return;
        std::vector<std::string> values;
        std::vector<std::string> questions;
        std::vector<bool> multiline;
        for (const BlockAttribute& attribute : reference->attributes) {
            values.push_back(attribute.value);
            multiline.push_back(attribute.multiline);
            questions.push_back(attribute.tag);
            if (const engine::Block* block = reference->block())
                for (const auto* definition : attributeDefinitions(block->entities))
                    if (engine::equalNoCase(definition->tag, attribute.tag) && !definition->prompt.empty())
                        questions.back() = definition->prompt;
        }
        bool changed = false;
        for (std::size_t i = 0; i < values.size(); ++i) {
            std::string prompt = withDefault(questions[i], values[i]);
            const std::optional<std::string> value = co_await askAttributeValue(ask, std::move(prompt), multiline[i]);
            if (!value) continue;
            values[i] = *value;
            changed = true;
        }
        engine::Entity* target = drawing().findById(pick.id);
        if (!changed || target == nullptr) co_return;
        const doc::GroupScope group(document(), "EATTEDIT");
        document().modifyEntity(*target, [&](engine::Entity& entity) {
            auto& attributes = static_cast<BlockReferenceEntity&>(entity).attributes;
            for (std::size_t i = 0; i < attributes.size() && i < values.size(); ++i) attributes[i].value = values[i];
        });
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Attedit, "ATTEDIT", "Edit Attributes", "Insert", {"ATE", "ATTE"})
KOVA_TOOL_COMMAND(Eattedit, "EATTEDIT", "Enhanced Attribute Edit", "Insert")

}  // namespace kova::cmd::commands
