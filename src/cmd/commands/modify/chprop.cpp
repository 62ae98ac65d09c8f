#include "edit/property_changes.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

/// CHPROP: changes properties that all objects have.
class ChPropTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        const PropertyChanges changes = co_await askPropertyChanges(ask, document(), selected.ids, false);
        const doc::GroupScope group(document(), "CHPROP");
        applyPropertyChanges(document(), selected.ids, changes);
    }
};

}  // namespace

KOVA_TOOL_COMMAND(ChProp, "CHPROP", "Change Properties", "Modify")

}  // namespace kova::cmd::commands
