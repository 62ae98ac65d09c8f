#include "cmd/commands/file_names.hpp"
#include "cmd/dialogue.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

class OpenTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const std::string refusal = hasInlineInput() ? std::string() : dialogRefusal(drawing(), "OPEN");
        if (!refusal.empty()) {
            message(refusal);
            co_return;
        }
        const Answer answer = co_await ask.text("Enter name of drawing to open <.>:");
        const std::string path = typedPath(answer.text);
        if (path.empty() || path == ".") co_return;
        AppServices* services = host()->services();
        const std::string error = services != nullptr ? services->open(path) : "Files cannot be opened here.";
        message(error.empty() ? "Opened: " + path : "Could not open " + path + ": " + error);
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Open, "OPEN", "Open", "File")

}  // namespace kova::cmd::commands
