#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

/// BASE: the point at which the drawing is held when it is inserted into another one.
class BaseTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        std::string prompt = "Enter base point <" + pointDefault(drawing(), drawing().basePoint) + ",0>:";
        const Answer answer = co_await ask.point(std::move(prompt), {}, math::Vector2{});
        if (!answer.isPoint()) co_return;
        const doc::GroupScope group(document(), "BASE");
        message(document().setVariable("INSBASE", math::Vector3(answer.point)));
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Base, "BASE", "Base Point", "Insert")

}  // namespace kova::cmd::commands
