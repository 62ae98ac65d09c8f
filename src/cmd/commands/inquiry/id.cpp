#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

/// ID: the coordinates of a point in the current UCS.
class IdTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer answer = co_await ask.point("Specify point:");
        if (!answer.isPoint()) co_return;
        const math::Vector2 p = drawing().ucs.fromWorld(answer.point);
        message("X = " + lengthText(drawing(), p.x) + "     Y = " + lengthText(drawing(), p.y) +
                "     Z = " + lengthText(drawing(), 0.0));
        drawing().lastPoint = answer.point;
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Id, "ID", "Point Location", "Inquiry")

}  // namespace kova::cmd::commands
