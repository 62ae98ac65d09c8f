#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "cmd/dialogue.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

/// Lines of output that are shown.
constexpr std::size_t kMostLines = 10'000;

/// Whoever starts the program decides, not a script that it runs: the environment is read, no setting.
bool isShellAllowed() {
    const char* value = std::getenv("KOVACAD_ALLOW_SHELL");
    return value != nullptr && std::string_view(value) == "1";
}

/// SHELL: runs a program of the operating system and shows what it prints.
class ShellTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (!isShellAllowed()) {
            message("SHELL is not allowed here.");
            co_return;
        }
        const Answer answer = co_await ask.text("OS Command:");
        // There is no terminal for a shell to talk to.
        if (answer.isEnter()) co_return;
        run(answer.text);
    }

private:
    void run(const std::string& line) const {
        // The program must not read the command lines that are meant for this one.
        const std::string command = "(\n" + line + "\n) </dev/null 2>&1";
        FILE* pipe = popen(command.c_str(), "re");
        if (pipe == nullptr) return message("The command cannot be run.");
        std::string text;
        std::size_t lines = 0;
        char buffer[4096];
        while (std::fgets(buffer, sizeof buffer, pipe) != nullptr) {
            text += buffer;
            if (text.back() != '\n' && text.size() < sizeof buffer) continue;
            while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
            if (++lines <= kMostLines) message(text);
            text.clear();
        }
        if (!text.empty() && ++lines <= kMostLines) message(text);
        if (lines > kMostLines) message("... " + std::to_string(lines - kMostLines) + " more lines");
        const int status = pclose(pipe);
        if (WIFEXITED(status) && WEXITSTATUS(status) != 0)
            message("Exit status " + std::to_string(WEXITSTATUS(status)) + ".");
        if (WIFSIGNALED(status)) message("Ended by signal " + std::to_string(WTERMSIG(status)) + ".");
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Shell, "SHELL", "System Shell", "Tools", {"SH"})

}  // namespace kova::cmd::commands
