#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/solid2d.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

/// SOLID: filled triangles and quadrangles, each from the last edge of the one before.
class SolidTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer first = co_await ask.point("Specify first point:");
        if (!first.isPoint()) co_return;
        const Answer second = co_await ask.point("Specify second point:");
        if (!second.isPoint()) co_return;
        Vector2 a = first.point;
        Vector2 b = second.point;
        for (;;) {
            const Answer third = co_await ask.point("Specify third point:");
            if (!third.isPoint()) co_return;
            const Answer fourth = co_await ask.point("Specify fourth point or <exit>:");
            if (fourth.isEnter()) {
                add(a, b, third.point, third.point);
                continue;
            }
            add(a, b, third.point, fourth.point);
            a = third.point;
            b = fourth.point;
        }
    }

private:
    void add(const Vector2& a, const Vector2& b, const Vector2& c, const Vector2& d) {
        auto solid = std::make_unique<engine::Solid2DEntity>();
        solid->corners = {a, b, c, d};
        addNew(document(), std::move(solid), "SOLID");
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Solid, "SOLID", "2D Solid", "Draw", {"SO"})

}  // namespace kova::cmd::commands
