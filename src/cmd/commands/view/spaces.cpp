#include "cmd/dialogue.hpp"
#include "cmd/registry.hpp"
#include "edit/viewports.hpp"

namespace kova::cmd::commands {

namespace {

/// MSPACE: into the model, through a viewport of the layout.
class MspaceTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask&) override {
        if (drawing().tileMode) {
            message("** Command not allowed in Model Tab **");
            co_return;
        }
        if (drawing().activeViewport() != nullptr) {
            message("Already in model space.");
            co_return;
        }
        const engine::ViewportEntity* chosen = usualViewport(document());
        if (chosen == nullptr) {
            message("There is no active viewport.");
            co_return;
        }
        const doc::GroupScope group(document(), "MSPACE");
        message(enterViewport(document(), *chosen));
    }
};

/// PSPACE: back to the paper.
class PspaceCommand final : public OneShotCommand {
public:
    PspaceCommand() : OneShotCommand("PSPACE", "Paper Space", "View", {"PS"}) {}
    void execute(CommandContext& context) override {
        if (context.drawing().tileMode) return context.message("** Command not allowed in Model Tab **");
        if (context.drawing().activeViewport() == nullptr) return context.message("Already in paper space.");
        const doc::GroupScope group(context.document, "PSPACE");
        leaveViewport(context.document);
    }
};

/// MODEL: to the model tab.
class ModelTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask&) override {
        if (drawing().tileMode) {
            message("The model tab is current already.");
            co_return;
        }
        const doc::GroupScope group(document(), "MODEL");
        message(document().setVariable("CTAB", std::string("Model")));
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Mspace, "MSPACE", "Model Space", "View", {"MS"})
KOVA_REGISTER_COMMAND(PspaceCommand)
KOVA_TOOL_COMMAND(Model, "MODEL", "Model Tab", "View")

}  // namespace kova::cmd::commands
