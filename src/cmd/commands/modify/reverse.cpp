#include "cmd/dialogue.hpp"
#include "edit/entity_copies.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "engine/curves/reversed.hpp"

namespace kova::cmd::commands {

namespace {

class ReverseTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        const doc::GroupScope group(document(), "REVERSE");
        std::size_t count = 0;
        for (engine::Entity* entity : entitiesInOrder(document(), selected.ids)) {
            if (!engine::canReverse(*entity)) continue;
            document().modifyEntity(*entity, engine::reverseDirection);
            ++count;
        }
        if (!selected.ids.empty()) message(counted(count, "object") + " reversed.");
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Reverse, "REVERSE", "Reverse", "Modify")

}  // namespace kova::cmd::commands
