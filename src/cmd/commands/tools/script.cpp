#include "cmd/script_lines.hpp"

#include <filesystem>

#include "cmd/prompts/file_names.hpp"
#include "cmd/dialogue.hpp"
#include "cmd/registry.hpp"
#include "io/text_file.hpp"

namespace kova::cmd::commands {

namespace {

/// SCRIPT: plays the lines of a file.
class ScriptTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const std::filesystem::path own(drawing().fileName);
        const std::string usual = (own.empty() ? std::string("Drawing1") : own.stem().string()) + ".scr";
        const Answer answer = co_await ask.text("Enter script file name <" + usual + ">:");
        std::string path = typedPath(answer.text);
        if (path.empty()) path = usual;
        std::optional<std::string> text = readTextFile(path, codePageOf(drawing()));
        if (!text && !std::filesystem::path(path).has_extension()) text = readTextFile(path + ".scr", codePageOf(drawing()));
        AppServices* services = host()->services();
        if (!text || services == nullptr) {
            message("Cannot read " + path);
            co_return;
        }
        services->queueLines(scriptLines(*text));
    }
};

/// DELAY: waits, so that what a script shows can be looked at.
class DelayTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        Ask::Request request;
        request.kind = Ask::Kind::Integer;
        request.prompt = "Enter delay time (in milliseconds):";
        request.range = {0.0, 32767.0};
        request.refusal = "Invalid number. Enter 0-32767:";
        const Answer answer = co_await ask.request(std::move(request));
        AppServices* services = host()->services();
        if (answer.isNumber() && services != nullptr) services->wait(answer.integer());
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Script, "SCRIPT", "Run Script", "Tools", {"SCR"})
KOVA_TOOL_COMMAND(Delay, "DELAY", "Delay", "Tools")

}  // namespace kova::cmd::commands
