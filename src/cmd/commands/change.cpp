#include "cmd/drawing_aids.hpp"
#include "cmd/entity_copies.hpp"
#include "cmd/format.hpp"
#include "cmd/property_changes.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/all.hpp"
#include "engine/entities/object_plane.hpp"

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
        const Entity* entity = drawing().findById(id);
        if (entity == nullptr) co_return;
        switch (entity->type()) {
            case engine::EntityType::Line:
                if (point) changes_.emplace_back(id, [p = *point](Entity& e) { bendLine(e, p); });
                break;
            case engine::EntityType::Circle:
                co_await askCircle(ask, id, point);
                break;
            case engine::EntityType::Text:
            case engine::EntityType::AttributeDefinition:
                co_await askText(ask, id, point);
                break;
            case engine::EntityType::BlockReference:
                co_await askReference(ask, id, point);
                break;
            default:
                break;
        }
    }

    /// The end nearer to the point comes to it.
    static void bendLine(Entity& entity, const Vector2& p) {
        auto& line = static_cast<engine::LineEntity&>(entity);
        (line.start.distance_to(p) < line.end.distance_to(p) ? line.start : line.end) = p;
    }

    Dialogue askCircle(Ask& ask, std::uint64_t id, std::optional<Vector2> point) {
        const auto& circle = static_cast<const engine::CircleEntity&>(*drawing().findById(id));
        double radius = 0.0;
        if (point) {
            const auto inPlane = engine::objectFromPlan(circle, *point);
            if (inPlane) radius = circle.center.distance_to(*inPlane);
        } else {
            const Answer answer = co_await ask.distance("Specify new circle radius <no change>:", {},
                                                        engine::planFromObject(circle, circle.center), kPositive);
            radius = answer.numberOr(0.0);
        }
        if (!(radius > 0.0)) co_return;
        changes_.emplace_back(id, [radius](Entity& e) { static_cast<engine::CircleEntity&>(e).radius = radius; });
    }

    Dialogue askText(Ask& ask, std::uint64_t id, std::optional<Vector2> point) {
        const Entity* entity = drawing().findById(id);
        const auto* definition = dynamic_cast<const engine::AttributeDefinitionEntity*>(entity);
        const auto* text = dynamic_cast<const engine::TextEntity*>(entity);
        const engine::Name style = text != nullptr ? text->textStyle : definition->textStyle;
        const double height = text != nullptr ? text->height : definition->textHeight;
        const double rotation = text != nullptr ? text->rotation : definition->rotation;
        const std::string content = text != nullptr ? text->content : definition->defaultValue;
        const std::string tag = definition != nullptr ? definition->tag : std::string();
        const std::string question = definition != nullptr ? definition->prompt : std::string();
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
            const engine::TextStyle* known = drawing().textStyles.find(engine::Name(trimmed(answer.text)));
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
        if (definition == nullptr) {
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
        const auto place = [&](Vector2& position, Vector2& second) {
            if (!in.position) return;
            const auto to = engine::objectFromPlan(entity, *in.position);
            if (!to) return;
            second += *to - position;
            position = *to;
        };
        if (auto* text = dynamic_cast<engine::TextEntity*>(&entity)) {
            place(text->position, text->fitEnd);
            text->textStyle = in.style.value_or(text->textStyle);
            text->height = in.height.value_or(text->height);
            text->rotation = in.rotation.value_or(text->rotation);
            text->content = in.content.value_or(text->content);
        } else if (auto* definition = dynamic_cast<engine::AttributeDefinitionEntity*>(&entity)) {
            place(definition->insertion, definition->fitEnd);
            definition->textStyle = in.style.value_or(definition->textStyle);
            definition->textHeight = in.height.value_or(definition->textHeight);
            definition->rotation = in.rotation.value_or(definition->rotation);
            definition->defaultValue = in.content.value_or(definition->defaultValue);
            definition->tag = in.tag.value_or(definition->tag);
            definition->prompt = in.prompt.value_or(definition->prompt);
        }
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
