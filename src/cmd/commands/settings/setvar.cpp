#include "cmd/prompts/variable_prompt.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/registry.hpp"
#include "strings/wildcards.hpp"

namespace kova::cmd::commands {

namespace {

class SetvarTool final : public DialogueTool {
public:
    /// `last`: the variable that Enter at the name takes, kept by the command.
    explicit SetvarTool(const engine::SysVarDef*& last) : last_(last) {}

protected:
    Dialogue dialogue(Ask& ask) override {
        for (;;) {
            std::string prompt = "Enter variable name or [?]";
            if (last_ != nullptr) prompt += " <" + std::string(last_->name) + ">";
            const Answer answer = co_await ask.text(prompt + ":", "?");
            if (answer.is("?")) {
                const std::string filter = co_await askNamesToList(ask, "Enter variable(s) to list <*>:");
                list(filter);
                co_return;
            }
            if (answer.isEnter() && last_ == nullptr) co_return;
            if (!answer.isEnter()) {
                const engine::SysVarDef* def = engine::findSysVar(trimmed(answer.text));
                if (def == nullptr) {
                    message("Unknown variable name " + inQuotes(trimmed(answer.text)) + ".");
                    continue;
                }
                last_ = def;
            }
            co_return co_await editVariable(ask, document(), *last_, "SETVAR");
        }
    }

private:
    void list(const std::string& filter) const {
        std::size_t count = 0;
        for (const engine::SysVarDef& def : engine::sysVarTable()) {
            if (!matchesWildcards(def.name, filter)) continue;
            ++count;
            message(variableLine(drawing(), def));
        }
        if (count == 0) message("No matching names found.");
    }

    const engine::SysVarDef*& last_;
};

class SetvarCommand final : public Command {
public:
    SetvarCommand() : Command("SETVAR", "Set Variable", "Settings", {"SET"}) {}
    std::unique_ptr<Tool> createTool() override { return std::make_unique<SetvarTool>(last_); }

private:
    const engine::SysVarDef* last_ = nullptr;
};

}  // namespace

KOVA_REGISTER_COMMAND(SetvarCommand)

}  // namespace kova::cmd::commands
