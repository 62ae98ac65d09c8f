#include "cmd/dialogue.hpp"
#include "cmd/prompts/displacement.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

class MoveTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        const Vector2 by = co_await askDisplacement(ask, drawing());
        if (by == Vector2{}) co_return;
        const doc::GroupScope group(document(), "MOVE");
        document().transformEntities(selected.ids, math::Matrix4::translation(by));
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Move, "MOVE", "Move", "Modify", {"M"})

}  // namespace kova::cmd::commands
