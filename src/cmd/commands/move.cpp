#include "cmd/dialogue.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

class MoveTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        const Answer first = co_await ask.point("Specify base point or [Displacement] <Displacement>:", "Displacement");
        Vector2 by;
        if (first.isPoint()) {
            const Answer second =
                co_await ask.point("Specify second point or <use first point as displacement>:", {}, first.point);
            by = second.isPoint() ? second.point - first.point : displacement(first.point);
        } else {
            const Answer answer = co_await ask.point("Specify displacement <0,0,0>:", {}, Vector2{});
            if (answer.isPoint()) by = displacement(answer.point);
        }
        if (by == Vector2{}) co_return;
        const doc::GroupScope group(document(), "MOVE");
        document().transformEntities(selected.ids, math::Matrix4::translation(by));
    }

private:
    /// A point whose typed coordinates are meant as a displacement: the way to it from the UCS origin.
    Vector2 displacement(const Vector2& point) const { return point - drawing().ucs.origin; }
};

}  // namespace

KOVA_TOOL_COMMAND(Move, "MOVE", "Move", "Modify", {"M"})

}  // namespace kova::cmd::commands
