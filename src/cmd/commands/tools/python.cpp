#include "cmd/prompts/file_names.hpp"
#include "cmd/dialogue.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

constexpr const char* kNoPython = "Python is not available in this installation.";

/// Lets Python work when the running command has ended, so that the code may run commands itself. False without Python.
bool afterLine(AppServices* services, std::function<void(PythonHost&)> work) {
    if (services == nullptr || services->python() == nullptr) return false;
    services->afterLine([services, work = std::move(work)] { work(*services->python()); });
    return true;
}

/// Asks for a file and lets Python have it.
class FileTool : public DialogueTool {
public:
    FileTool(const char* prompt, void (PythonHost::*use)(const std::string&)) : prompt_(prompt), use_(use) {}

protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer answer = co_await ask.text(prompt_);
        const std::string path = typedPath(answer.text);
        if (path.empty()) co_return;
        if (!afterLine(host()->services(), [path, use = use_](PythonHost& python) { (python.*use)(path); }))
            message(kNoPython);
    }

private:
    const char* prompt_;
    void (PythonHost::*use_)(const std::string&);
};

class PyscriptTool final : public FileTool {
public:
    PyscriptTool() : FileTool("Enter Python script file name:", &PythonHost::runFile) {}
};

/// PYLOAD: the files named on its line, or one that is asked for.
class PyloadCommand final : public OneShotCommand {
public:
    PyloadCommand() : OneShotCommand("PYLOAD", "Load Python Files", "Tools") {}
    void execute(CommandContext& context) override {
        if (context.arguments.empty()) {
            if (context.transparent) return context.message("PYLOAD needs a file name while another command waits.");
            context.handOver = std::make_unique<FileTool>("Enter name of Python file to load:", &PythonHost::loadFile);
            return;
        }
        const auto load = [paths = std::exchange(context.arguments, {})](PythonHost& python) {
            for (const std::string& path : paths) python.loadFile(path);
        };
        if (!afterLine(context.host.services(), load)) context.message(kNoPython);
    }
};

/// PYRELOAD: all files that PYLOAD loaded, anew.
class PyreloadCommand final : public OneShotCommand {
public:
    PyreloadCommand() : OneShotCommand("PYRELOAD", "Reload Python Files", "Tools") {}
    void execute(CommandContext& context) override {
        if (!afterLine(context.host.services(), [](PythonHost& python) { python.reloadFiles(); }))
            context.message(kNoPython);
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Pyscript, "PYSCRIPT", "Run Python Script", "Tools")
KOVA_REGISTER_COMMAND(PyloadCommand)
KOVA_REGISTER_COMMAND(PyreloadCommand)

}  // namespace kova::cmd::commands
