#include "engine/curves/lengthen.hpp"

#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "doc/step_group.hpp"
#include "strings/numbers.hpp"

namespace kova::cmd::commands {

namespace {

using engine::EditCurve;

bool hasLength(const engine::Entity& entity) {
    const auto curve = EditCurve::of(entity);
    return curve && !curve->isUnbounded();
}

/// LENGTHEN: changes open curves at the end nearer to the pick.
class LengthenTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        for (;;) {
            constexpr const char* kShown[] = {"Delta", "Percent", "Total", "Dynamic"};
            const auto last = static_cast<std::size_t>(std::clamp(remembered(document(), kOption, 2.0), 0.0, 3.0));
            const Answer answer = co_await ask.object(
                withDefault("Select an object to measure or [DElta/Percent/Total/DYnamic]", kShown[last]),
                "DElta Percent Total DYnamic", hasLength);
            if (answer.isObject()) {
                if (const engine::Entity* e = drawing().findById(answer.id)) tellLength(*e);
                continue;
            }
            std::string word = answer.word;
            if (answer.isEnter()) word = engine::upperCase(kShown[last]);
            for (std::size_t i = 0; i < 4; ++i)
                if (engine::upperCase(kShown[i]) == word) remember(document(), kOption, static_cast<double>(i));
            const bool asked = co_await askMeasure(ask, word);
            if (!asked) co_return;
            co_return co_await changes(ask);
        }
    }

private:
    // What is remembered from call to call; angles in degrees.
    static constexpr const char* kOption = "lengthenOption";
    static constexpr const char* kDelta = "lengthenDelta";
    static constexpr const char* kPercent = "lengthenPercent";
    static constexpr const char* kTotal = "lengthenTotal";
    static constexpr const char* kDeltaAngle = "lengthenDeltaAngle";
    static constexpr const char* kTotalAngle = "lengthenTotalAngle";

    enum class By { Delta, DeltaAngle, Percent, Total, TotalAngle, Dynamic };

    void tellLength(const engine::Entity& entity) {
        const auto curve = EditCurve::of(entity);
        std::string text = "Current length: " + lengthText(drawing(), curve->length(curve->start(), curve->end()));
        if (const auto angle = engine::includedAngle(*curve))
            text += ", included angle: " + strings::shortest(std::round(*angle / math::kDegree * 1e4) / 1e4);
        message(text);
    }

    Task<bool> askMeasure(Ask& ask, std::string word) {
        if (word == "DYNAMIC") {
            by_ = By::Dynamic;
        } else if (word == "PERCENT") {
            by_ = By::Percent;
            const double last = remembered(document(), kPercent, 100.0);
            const Answer answer =
                co_await ask.number(withDefault("Enter percentage length", strings::shortest(last)), {}, kPositive);
            value_ = answer.numberOr(last);
            remember(document(), kPercent, value_);
        } else {
            const bool delta = word == "DELTA";
            by_ = delta ? By::Delta : By::Total;
            const char* name = delta ? kDelta : kTotal;
            const double last = remembered(document(), name, delta ? 0.0 : 1.0);
            const char* prompt = delta ? "Enter delta length or [Angle]" : "Specify total length or [Angle]";
            const Range range = delta ? Range{} : kPositive;
            const Answer answer =
                co_await ask.distance(withDefault(prompt, lengthDefault(drawing(), last)), "Angle", {}, range);
            value_ = answer.numberOr(last);
            if (answer.is("Angle")) {
                by_ = delta ? By::DeltaAngle : By::TotalAngle;
                const char* angleName = delta ? kDeltaAngle : kTotalAngle;
                const double lastAngle = remembered(document(), angleName, delta ? 0.0 : 57.0);
                const char* question = delta ? "Enter delta angle" : "Specify total angle";
                const Answer angle = co_await ask.number(withDefault(question, strings::shortest(lastAngle)), {}, range);
                const double degrees = angle.numberOr(lastAngle);
                remember(document(), angleName, degrees);
                value_ = degrees * math::kDegree;
            } else {
                remember(document(), name, value_);
            }
        }
        co_return true;
    }

    Dialogue changes(Ask& ask) {
        StepGroup group(document(), "LENGTHEN");
        for (;;) {
            const Answer answer = co_await ask.object("Select an object to change or [Undo]:", "Undo", hasLength);
            if (answer.isEnter()) co_return;
            if (answer.is("Undo")) {
                if (!group.drop()) message("Command has been completely undone.");
                continue;
            }
            std::optional<math::Vector2> end;
            if (by_ == By::Dynamic) {
                const Answer point = co_await ask.point("Specify new end point:");
                if (!point.isPoint()) continue;
                end = point.point;
            }
            if (engine::Entity* entity = drawing().findById(answer.id)) change(group, *entity, answer.point, end);
        }
    }

    void change(StepGroup& group, engine::Entity& entity, const math::Vector2& pick,
                const std::optional<math::Vector2>& end) {
        const auto curve = EditCurve::of(entity);
        if (!curve) return;
        if (curve->closed()) return message("Cannot lengthen a closed object.");
        const double at = curve->nearest(pick);
        const bool atEnd = curve->length(curve->start(), at) > curve->length(at, curve->end());
        const double now = curve->length(curve->start(), curve->end());
        const auto angle = engine::includedAngle(*curve);
        double length = now;
        switch (by_) {
            case By::Delta:
                length = now + value_;
                break;
            case By::Percent:
                length = now * value_ / 100.0;
                break;
            case By::Total:
                length = value_;
                break;
            case By::DeltaAngle:
            case By::TotalAngle:
                if (!angle) return message("Only arcs have an included angle.");
                length = now / *angle * (by_ == By::DeltaAngle ? *angle + value_ : value_);
                break;
            case By::Dynamic:
                break;
        }
        auto changed = end ? engine::withEndNear(*curve, atEnd, *end) : engine::withLength(*curve, atEnd, length);
        if (!changed) return message("Invalid length for that object.");
        group.begin();
        document().replaceEntity(entity, std::move(changed));
    }

    By by_ = By::Total;
    double value_ = 1.0;
};

}  // namespace

KOVA_TOOL_COMMAND(Lengthen, "LENGTHEN", "Lengthen", "Modify", {"LEN"})

}  // namespace kova::cmd::commands
