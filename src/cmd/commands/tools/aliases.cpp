#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "strings/wildcards.hpp"

namespace kova::cmd::commands {

namespace {

/// Nothing writes the user's settings: a run depends on what it is given, and on nothing that an earlier one did.
constexpr const char* kForNow = ", for this process.";

/// COMMANDS: every command with its aliases.
class CommandsTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer answer = co_await ask.text("Enter name filter <*>:");
        const CommandRegistry* registry = host()->registry();
        if (registry == nullptr) co_return;
        std::map<std::string, std::string> aliases;
        for (const auto& [alias, command] : registry->aliases()) {
            std::string& list = aliases[command];
            list += (list.empty() ? "" : ", ") + alias;
        }
        const std::string filter = answer.isEnter() ? "*" : answer.text;
        std::size_t count = 0;
        for (const Command* command : registry->commands()) {
            if (command->isHidden() || !matchesWildcards(command->name(), filter)) continue;
            ++count;
            const auto known = aliases.find(command->name());
            message(command->name() + (known == aliases.end() ? "" : " (" + known->second + ")"));
        }
        if (count == 0) message("No matching names found.");
    }
};

/// ALIASEDIT: lists, adds and removes short names.
class AliaseditTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        CommandRegistry* registry = host()->registry();
        if (registry == nullptr) co_return;
        const Answer option = co_await ask.keyword("Enter option [List/Add/Remove] <List>:", "List Add Remove");
        if (option.is("ADD")) co_return co_await add(ask, *registry);
        if (option.is("REMOVE")) co_return co_await remove(ask, *registry);
        for (const auto& [alias, command] : registry->aliases()) message(alias + " = " + command);
    }

private:
    Dialogue add(Ask& ask, CommandRegistry& registry) {
        std::string alias;
        while (alias.empty()) {
            const Answer answer = co_await ask.text("Enter alias:");
            if (answer.isEnter()) co_return;
            alias = engine::upperCase(trimmed(answer.text));
            // A name is looked up before any alias, so that such an alias would never be reached.
            const auto& commands = registry.commands();
            const bool taken = std::any_of(commands.begin(), commands.end(),
                                           [&](const Command* command) { return command->name() == alias; });
            if (taken) message(inQuotes(alias) + " is a command name.");
            const bool word = !alias.empty() && alias.find_first_of(" \t'()\";,") == std::string::npos;
            if (!taken && !word) message("Invalid input.");
            if (taken || !word) alias.clear();
        }
        for (;;) {
            const Answer answer = co_await ask.text("Enter command name:");
            if (answer.isEnter()) co_return;
            const Command* command = registry.find(trimmed(answer.text));
            if (command != nullptr && registry.setAlias(alias, command->name()))
                co_return message("Alias " + inQuotes(alias) + " stands for " + command->name() + kForNow);
            message("Unknown command: " + answer.text);
        }
    }

    Dialogue remove(Ask& ask, CommandRegistry& registry) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter alias to remove:");
            if (answer.isEnter()) co_return;
            const std::string alias = engine::upperCase(trimmed(answer.text));
            if (registry.removeAlias(alias)) co_return message("Alias " + inQuotes(alias) + " removed" + kForNow);
            message("Unknown alias " + inQuotes(alias) + ".");
        }
    }
};

/// REINIT: the aliases that the commands bring with them.
class ReinitTool final : public Tool {
public:
    void begin() override {
        if (CommandRegistry* registry = host()->registry()) {
            registry->resetAliases();
            message("For this process, " + std::to_string(registry->aliases().size()) + " aliases loaded.");
        }
        finish();
    }
    void textInput(const std::string&) override {}
};

}  // namespace

KOVA_TOOL_COMMAND(Commands, "COMMANDS", "List Commands", "Help")
KOVA_TOOL_COMMAND(Aliasedit, "ALIASEDIT", "Edit Aliases", "Tools")
KOVA_TOOL_COMMAND(Reinit, "REINIT", "Reload Aliases", "Tools")

}  // namespace kova::cmd::commands
