#include "edit/new_entities.hpp"
#include "edit/entity_copies.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "edit/property_changes.hpp"
#include "cmd/registry.hpp"
#include "engine/modify/change_point.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/circle.hpp"
#include "engine/model/object_plane.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Entity;
using math::Vector2;

/// What CHANGE asks of a text, and where the answers go.
struct TextAnswers {
    std::optional<Vector2> position;
    std::optional<engine::Name> style;
    std::optional<double> height;
    std::optional<double> rotation;
    std::optional<std::string> content;
    std::optional<std::string> tag;
    std::optional<std::string> prompt;
};

/// CHANGE: moves what one point says (ends of lines, circles' radii, places of texts and blocks), or changes
/// properties.
class ChangeTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        const Answer answer = co_await ask.point("Specify change point or [Properties]:", "Properties");
        if (answer.is("PROPERTIES")) {
            const PropertyChanges changes = co_await askPropertyChanges(ask, document(), selected.ids, true);
            const doc::GroupScope group(document(), "CHANGE");
            applyPropertyChanges(document(), selected.ids, changes);
            co_return;
        }
        std::optional<Vector2> point;
        if (answer.isPoint()) point = answer.point;
        // All questions come first, so that the changes are one step.
        for (const std::uint64_t id : selected.ids) co_await askOne(ask, id, point);
        const doc::GroupScope group(document(), "CHANGE");
        for (const auto& [id, change] : changes_)
            if (Entity* entity = drawing().findById(id)) document().modifyEntity(*entity, change);
    }

private:
    using Change = std::function<void(Entity&)>;

    Dialogue askOne(Ask& ask, std::uint64_t id, std::optional<Vector2> point) {
        Entity* entity = drawing().findById(id);
        if (entity == nullptr) co_return;
        if (engine::textFields(*entity)) co_return co_await askText(ask, id, point);
        if (entity->type() == engine::EntityType::BlockReference) co_return co_await askReference(ask, id, point);
        if (!point && entity->type() == engine::EntityType::Circle) co_return co_await askCircle(ask, id);
        if (!point) co_return;
        const bool ortho = engine::sysVarInt(drawing(), "ORTHOMODE") != 0;
        // Only what has such a change is noted: an entity of another kind gets no empty step.
        if (!engine::takeChangePoint(*entity->clone(), *point, ortho)) co_return;
        changes_.emplace_back(id, [p = *point, ortho](Entity& e) { engine::takeChangePoint(e, p, ortho); });
    }

    Dialogue askCircle(Ask& ask, std::uint64_t id) {
        const auto& circle = static_cast<const engine::CircleEntity&>(*drawing().findById(id));
        const Answer answer = co_await ask.distance("Specify new circle radius <no change>:", {},
                                                    engine::planFromObject(circle, circle.center), kPositive);
        if (!answer.isNumber()) co_return;
        const double radius = answer.number;
        changes_.emplace_back(id, [radius](Entity& e) { static_cast<engine::CircleEntity&>(e).radius = radius; });
    }

    Dialogue askText(Ask& ask, std::uint64_t id, std::optional<Vector2> point) {
        const engine::TextFields now = *engine::textFields(*drawing().findById(id));
        const engine::Name style = now.style;
        const double height = now.height;
        const double rotation = now.rotation;
        const std::string content = now.content;
        const bool isDefinition = now.tag != nullptr;
        const std::string tag = isDefinition ? *now.tag : std::string();
        const std::string question = isDefinition ? *now.prompt : std::string();
        TextAnswers out;
        out.position = point;
        if (!point) {
            const Answer place = co_await ask.point("Specify new text insertion point <no change>:");
            if (place.isPoint()) out.position = place.point;
        }
        double fixed = drawing().textStyleOrStandard(style).height;
        for (;;) {
            std::string prompt = withDefault("Enter new text style", style.str());
            const Answer answer = co_await ask.text(std::move(prompt));
            if (answer.isEnter()) break;
            const engine::TextStyle* known = drawing().textStyles.find(engine::Name(typedName(answer.text)));
            if (known != nullptr) {
                out.style = known->name;
                fixed = known->height;
                break;
            }
            message("Cannot find text style \"" + std::string(trimmed(answer.text)) + "\".");
        }
        if (fixed > 0.0) {
            if (out.style) out.height = fixed;
        } else {
            std::string prompt = withDefault("Specify new height", lengthDefault(drawing(), height));
            const Answer answer = co_await ask.distance(std::move(prompt), {}, std::nullopt, kPositive);
            if (answer.isNumber()) out.height = answer.number;
        }
        std::string prompt = withDefault("Specify new rotation angle", angleText(drawing(), rotation));
        const Answer turn = co_await ask.angle(std::move(prompt));
        if (turn.isNumber()) out.rotation = worldDirection(turn, drawing());
        if (!isDefinition) {
            prompt = withDefault("Enter new text", content);
            const Answer answer = co_await ask.text(std::move(prompt));
            if (answer.isText()) out.content = answer.text;
        } else {
            prompt = withDefault("Enter new tag", tag);
            Answer answer = co_await ask.text(std::move(prompt));
            if (answer.isText()) out.tag = engine::upperCase(trimmed(answer.text));
            prompt = withDefault("Enter new prompt", question);
            answer = co_await ask.text(std::move(prompt));
            if (answer.isText()) out.prompt = answer.text;
            prompt = withDefault("Enter new default value", content);
            answer = co_await ask.text(std::move(prompt));
            if (answer.isText()) out.content = answer.text;
        }
        changes_.emplace_back(id, [out = std::move(out)](Entity& e) { takeText(e, out); });
    }

    static void takeText(Entity& entity, const TextAnswers& in) {
        const engine::TextFields text = *engine::textFields(entity);
        const auto to = in.position ? engine::objectFromPlan(entity, *in.position) : std::nullopt;
        if (to) {
            text.second += *to - text.position;
            text.position = *to;
        }
        text.style = in.style.value_or(text.style);
        text.height = in.height.value_or(text.height);
        text.rotation = in.rotation.value_or(text.rotation);
        text.content = in.content.value_or(text.content);
        if (text.tag == nullptr) return;
        *text.tag = in.tag.value_or(*text.tag);
        *text.prompt = in.prompt.value_or(*text.prompt);
    }

    Dialogue askReference(Ask& ask, std::uint64_t id, std::optional<Vector2> point) {
        const auto& reference = static_cast<const engine::BlockReferenceEntity&>(*drawing().findById(id));
        const Vector2 at = engine::planFromObject(reference, reference.insert);
        const double rotation = reference.rotation;
        if (!point) {
            const Answer place = co_await ask.point("Specify new block insertion point <no change>:");
            if (place.isPoint()) point = place.point;
        }
        std::string prompt = withDefault("Specify new block rotation angle", angleText(drawing(), rotation));
        const Answer turn = co_await ask.angle(std::move(prompt), {}, point.value_or(at));
        const Vector2 to = point.value_or(at);
        const double by = turn.isNumber() ? worldDirection(turn, drawing()) - rotation : 0.0;
        if (to == at && by == 0.0) co_return;
        const math::Matrix4 change = math::Matrix4::rotation_about(to, by) * math::Matrix4::translation(to - at);
        changes_.emplace_back(id, [change](Entity& e) { e.transform(change); });
    }

    std::vector<std::pair<std::uint64_t, Change>> changes_;
};

}  // namespace

KOVA_TOOL_COMMAND(Change, "CHANGE", "Change", "Modify")

}  // namespace kova::cmd::commands
