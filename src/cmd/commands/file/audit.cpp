#include "edit/auditing.hpp"
#include "cmd/prompts/file_names.hpp"
#include "cmd/dialogue.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

/// AUDIT: looks for errors in the drawing and repairs them when asked to.
class AuditTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const bool fix = co_await askYesNo(ask, "Fix any errors detected? [Yes/No] <N>:", false);
        auditDocument(document(), fix, "AUDIT", [this](const std::string& line) { message(line); });
    }
};

/// RECOVER: opens a drawing and repairs it.
class RecoverTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer answer = co_await ask.text("Enter name of drawing file to recover <.>:");
        const std::string path = typedPath(answer.text);
        if (path.empty() || path == ".") co_return;
        AppServices* services = host()->services();
        const std::string error = services != nullptr ? services->open(path) : "Files cannot be opened here.";
        if (!error.empty()) {
            message("Could not recover " + path + ": " + error);
            co_return;
        }
        message("Opened: " + path);
        const AuditTotals totals =
            auditDocument(document(), true, "RECOVER", [this](const std::string& line) { message(line); });
        if (totals.found == 0)
            message("No errors detected in the drawing.");
        else
            message("The drawing was repaired; save it to keep the repair.");
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Audit, "AUDIT", "Audit", "File")
KOVA_TOOL_COMMAND(Recover, "RECOVER", "Recover", "File")

}  // namespace kova::cmd::commands
