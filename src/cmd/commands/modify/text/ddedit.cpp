#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "cmd/pick_request.hpp"
#include "cmd/registry.hpp"
#include "doc/step_group.hpp"
#include "engine/kinds/all.hpp"
#include "engine/model/object_plane.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Entity;

constexpr const char* kSingle = "textEditSingle";

/// One text of an entity that can be typed anew.
struct EditableText {
    const char* question;
    std::string* text;
    bool mayBeEmpty = true;
};

/// The texts of an annotation, in the order they are asked for; of a block reference the attribute nearest to where it
/// was picked.
std::vector<EditableText> editableTexts(Entity& entity, const math::Vector2& pick) {
    using engine::EntityType;
    switch (entity.type()) {
        case EntityType::Text:
            return {{"Enter new text", &static_cast<engine::TextEntity&>(entity).content}};
        case EntityType::MText:
            return {{"Enter new text", &static_cast<engine::MTextEntity&>(entity).content}};
        case EntityType::Dimension:
            return {{"Enter new text", &static_cast<engine::DimensionEntity&>(entity).textOverride}};
        case EntityType::Leader: {
            auto& leader = static_cast<engine::LeaderEntity&>(entity);
            if (!leader.drawsText()) return {};
            return {{"Enter new text", &leader.annotation}};
        }
        case EntityType::MLeader: {
            auto& mleader = static_cast<engine::MLeaderEntity&>(entity);
            if (mleader.contentType != engine::MLeaderContent::MText) return {};
            return {{"Enter new text", &mleader.textContent}};
        }
        case EntityType::AttributeDefinition: {
            auto& definition = static_cast<engine::AttributeDefinitionEntity&>(entity);
            return {{"Enter tag name", &definition.tag, false},
                    {"Enter prompt", &definition.prompt},
                    {"Enter default value", &definition.defaultValue}};
        }
        case EntityType::BlockReference: {
            auto& reference = static_cast<engine::BlockReferenceEntity&>(entity);
            engine::BlockAttribute* best = nullptr;
            double least = 0.0;
            for (engine::BlockAttribute& attribute : reference.attributes) {
                const auto p = reference.attributeFromPlan(attribute, pick);
                if (attribute.invisible || !p) continue;
                const double distance =
                    p->distance_to(engine::nearestOnTextLine(attribute.line(), reference.drawing(), *p));
                if (best != nullptr && !(distance < least)) continue;
                best = &attribute;
                least = distance;
            }
            if (best == nullptr) return {};
            return {{"Enter new text", &best->value}};
        }
        default:
            return {};
    }
}

/// DDEDIT: texts are typed anew, one object after the other; each is a step that U takes back.
class DdEditTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        StepGroup steps(document(), "DDEDIT");
        for (;;) {
            PickRequest request;
            request.prompt = "Select an annotation object or [Undo/Mode]:";
            request.options = "Undo Mode";
            request.usable = [](const Entity& e) {
                // Looking changes nothing.
                return !editableTexts(const_cast<Entity&>(e), {}).empty();
            };
            const Answer picked = co_await askPick(ask, std::move(request));
            if (picked.isEnter()) co_return;
            if (picked.is("UNDO")) {
                if (!steps.drop()) message("Nothing to undo.");
                continue;
            }
            if (picked.is("MODE")) {
                co_await askMode(ask);
                continue;
            }
            co_await edit(ask, steps, picked.id, picked.point);
            if (remembered(document(), kSingle, 0.0) != 0.0) co_return;
        }
    }

private:
    Dialogue askMode(Ask& ask) {
        const bool single = remembered(document(), kSingle, 0.0) != 0.0;
        const Answer answer =
            co_await ask.keyword(single ? "Enter a text edit mode option [Single/Multiple] <Single>:"
                                        : "Enter a text edit mode option [Single/Multiple] <Multiple>:",
                                 "Single Multiple");
        if (!answer.isEnter()) remember(document(), kSingle, answer.is("SINGLE") ? 1.0 : 0.0);
    }

    Dialogue edit(Ask& ask, StepGroup& steps, std::uint64_t id, math::Vector2 pick) {
        Entity* entity = drawing().findById(id);
        if (entity == nullptr) co_return;
        std::vector<std::string> values;
        std::vector<const char*> questions;
        std::vector<bool> mayBeEmpty;
        for (const EditableText& text : editableTexts(*entity, pick)) {
            values.push_back(*text.text);
            questions.push_back(text.question);
            mayBeEmpty.push_back(text.mayBeEmpty);
        }
        bool changed = false;
        const bool definition = entity->type() == engine::EntityType::AttributeDefinition;
        for (std::size_t i = 0; i < values.size(); ++i) {
            std::string prompt = withDefault(questions[i], values[i]);
            const Answer answer = co_await ask.line(std::move(prompt));
            if (!answer.isText()) continue;
            std::string fresh = answer.text;
            // Tags have no blanks and are upper case.
            if (definition && i == 0) {
                fresh = engine::upperCase(trimmed(fresh));
                std::replace(fresh.begin(), fresh.end(), ' ', '_');
            }
            if (fresh == values[i] || (fresh.empty() && !mayBeEmpty[i])) continue;
            values[i] = std::move(fresh);
            changed = true;
        }
        entity = drawing().findById(id);
        if (!changed || entity == nullptr) co_return;
        steps.begin();
        document().modifyEntity(*entity, [&](Entity& e) {
            const std::vector<EditableText> texts = editableTexts(e, pick);
            for (std::size_t i = 0; i < texts.size() && i < values.size(); ++i) *texts[i].text = values[i];
        });
    }
};

}  // namespace

KOVA_TOOL_COMMAND(DdEdit, "DDEDIT", "Edit Text", "Modify", {"ED", "TEXTEDIT", "TEDIT"})

}  // namespace kova::cmd::commands
