#include <filesystem>

#include "cmd/prompts/file_names.hpp"
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
        std::string path;
        for (bool confirmed = false;;) {
            const Answer answer = co_await ask.text("Enter name of drawing to open <.>:");
            path = typedPath(answer.text);
            if (path.empty() || path == ".") co_return;
            // Changes are given up without a question, with a line that says so. Scripts that expect one answer it first.
            const std::string word = engine::upperCase(path);
            const bool answersQuestion = !confirmed && document().isModified() && (word == "Y" || word == "YES");
            if (!answersQuestion || std::filesystem::exists(path)) break;
            confirmed = true;
        }
        AppServices* services = host()->services();
        const std::string error = services != nullptr ? services->open(path) : "Files cannot be opened here.";
        message(error.empty() ? "Opened: " + path : "Could not open " + path + ": " + error);
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Open, "OPEN", "Open", "File")

}  // namespace kova::cmd::commands
