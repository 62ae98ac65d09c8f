#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/macros.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

/// Times that a macro may be played in a row.
constexpr int kMostRepeats = 10'000;

/// ACTRECORD: what is typed from now on becomes a macro.
class ActrecordTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask&) override {
        message(startMacro(document()) ? "Recording. ACTSTOP ends it." : "An action is being recorded already.");
        co_return;
    }
};

/// ACTSTOP: ends the recording and keeps the macro under a name.
class ActstopTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (!isRecordingMacro(document())) {
            message("No action is being recorded.");
            co_return;
        }
        const std::vector<std::string> lines = stopMacro(document());
        if (lines.empty()) {
            message("Nothing was recorded.");
            co_return;
        }
        const std::string usual = freeMacroName();
        for (;;) {
            const Answer answer = co_await ask.text(withDefault("Enter action macro name", usual));
            std::string name(trimmed(answer.text));
            if (answer.isEnter()) name = usual;
            if (!isMacroName(name)) {
                message("Invalid name.");
                continue;
            }
            if (loadMacro(name)) {
                const bool replace =
                    co_await askYesNo(ask, "Macro " + inQuotes(name) + " exists. Replace it? [Yes/No] <N>:", false);
                if (!replace) continue;
            }
            const std::string error = saveMacro(name, lines);
            message(error.empty() ? "Macro " + inQuotes(name) + " saved: " + counted(lines.size(), "line") + "." : error);
            co_return;
        }
    }
};

/// ACTPLAY: feeds the lines of a macro.
class ActplayTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        std::vector<std::string> lines;
        while (lines.empty()) {
            const Answer answer = co_await ask.text("Enter action macro name or [?]:");
            if (answer.isEnter()) co_return;
            const std::string name(trimmed(answer.text));
            if (name == "?") {
                const std::vector<std::string> names = macroNames();
                if (names.empty()) message("There are no macros.");
                for (const std::string& known : names) message(known);
                continue;
            }
            const auto found = loadMacro(name);
            if (!found) message("No macro of that name.");
            if (found && found->empty()) message("The macro is empty.");
            if (found) lines = *found;
        }
        const Answer times = co_await ask.integer("Enter number of repeats <1>:", 1, kMostRepeats);
        const std::size_t repeats = times.isNumber() ? static_cast<std::size_t>(times.integer()) : 1;
        if (repeats > kMaxMacroLines / lines.size() + 1) {
            message("Too many lines: the macro has " + counted(lines.size(), "line") + ".");
            co_return;
        }
        std::vector<std::string> all;
        all.reserve(lines.size() * repeats);
        for (std::size_t i = 0; i < repeats; ++i) all.insert(all.end(), lines.begin(), lines.end());
        if (AppServices* services = host()->services()) services->queueLines(std::move(all));
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Actrecord, "ACTRECORD", "Record Action Macro", "Tools", {"ARR"})
KOVA_TOOL_COMMAND(Actstop, "ACTSTOP", "Stop Recording", "Tools", {"ARS"})
KOVA_TOOL_COMMAND(Actplay, "ACTPLAY", "Play Action Macro", "Tools")

}  // namespace kova::cmd::commands
