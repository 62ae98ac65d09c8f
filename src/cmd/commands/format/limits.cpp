#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

/// LIMITS: the drawing area, and whether points outside it are refused.
class LimitsTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const engine::Limits old = drawing().limits;
        std::string prompt = "Specify lower left corner or [ON/OFF] <" + pointDefault(drawing(), old.lower) + ">:";
        const Answer first = co_await ask.point(std::move(prompt), "ON OFF", Vector2{});
        if (first.is("ON") || first.is("OFF")) {
            const doc::GroupScope group(document(), "LIMITS");
            message(document().setVariable("LIMCHECK", first.is("ON") ? 1 : 0));
            co_return;
        }
        const Vector2 lower = first.isPoint() ? first.point : old.lower;
        for (;;) {
            std::string question = "Specify upper right corner <" + pointDefault(drawing(), old.upper) + ">:";
            const Answer second = co_await ask.point(std::move(question), {}, lower);
            const Vector2 upper = second.isPoint() ? second.point : old.upper;
            if (!(upper.x > lower.x && upper.y > lower.y)) {
                message("Invalid limits.");
                if (second.isEnter()) co_return;
                continue;
            }
            const doc::GroupScope group(document(), "LIMITS");
            message(document().setVariable("LIMMIN", math::Vector3(lower)));
            message(document().setVariable("LIMMAX", math::Vector3(upper)));
            co_return;
        }
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Limits, "LIMITS", "Drawing Limits", "Format")

}  // namespace kova::cmd::commands
