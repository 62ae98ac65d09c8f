#include "cmd/calculator.hpp"
#include "cmd/dialogue.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

/// CAL: the value of an expression.
class CalTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer answer = co_await ask.text(">> Expression:");
        if (answer.isEnter()) co_return;
        const math::ExpressionResult result = calculate(document(), answer.text);
        message(result.ok() ? calculatorText(result.value) : result.error);
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Cal, "CAL", "Calculator", "Tools")

}  // namespace kova::cmd::commands
