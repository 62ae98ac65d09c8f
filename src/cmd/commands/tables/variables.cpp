#include "cmd/commands/tables/variables.hpp"

#include "cmd/prompts/variable_prompt.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using engine::SysVarDef;
using engine::SysVarType;

class VariableTool final : public DialogueTool {
public:
    explicit VariableTool(const SysVarDef& def) : def_(def) {}

protected:
    Dialogue dialogue(Ask& ask) override { co_await editVariable(ask, document(), def_, std::string(def_.name)); }

private:
    const SysVarDef& def_;
};

/// What a variable is called in lists of commands: the settings dialog's words, or the first part of its description.
std::string titleOf(const SysVarDef& def) {
    for (const engine::SettingsRow& row : engine::settingsRegistry())
        if (row.name == def.name) return std::string(row.description);
    return std::string(def.description.substr(0, def.description.find_first_of(":;")));
}

/// Short names that users know some variables by.
struct VariableAlias {
    const char* alias;
    const char* variable;
};
constexpr VariableAlias kAliases[] = {
    {"TH", "THICKNESS"}, {"LWT", "LWDISPLAY"}, {"LTS", "LTSCALE"}, {"FILL", "FILLMODE"}, {"AP", "APERTURE"},
};

std::vector<std::string> aliasesOf(std::string_view variable) {
    std::vector<std::string> aliases;
    for (const VariableAlias& a : kAliases)
        if (variable == a.variable) aliases.emplace_back(a.alias);
    return aliases;
}

/// The command of one variable. Its class tells only what kind of value it asks for; the dialogue is the same.
class VariableCommand : public Command {
public:
    explicit VariableCommand(const SysVarDef& def)
        : Command(std::string(def.name), titleOf(def), "Settings", aliasesOf(def.name)), def_(def) {}
    std::unique_ptr<Tool> createTool() override { return std::make_unique<VariableTool>(def_); }

private:
    const SysVarDef& def_;
};

class RealVariableCommand final : public VariableCommand {
    using VariableCommand::VariableCommand;
};
class IntegerVariableCommand final : public VariableCommand {
    using VariableCommand::VariableCommand;
};
/// Texts, and points as text.
class StringVariableCommand final : public VariableCommand {
    using VariableCommand::VariableCommand;
};
class ToggleVariableCommand final : public VariableCommand {
    using VariableCommand::VariableCommand;
};

std::unique_ptr<Command> makeCommand(const SysVarDef& def) {
    if (def.command == engine::SysVarCommand::Toggle) return std::make_unique<ToggleVariableCommand>(def);
    switch (def.type) {
        case SysVarType::Integer:
            return std::make_unique<IntegerVariableCommand>(def);
        case SysVarType::Real:
            return std::make_unique<RealVariableCommand>(def);
        case SysVarType::String:
        case SysVarType::Point:
            break;
    }
    return std::make_unique<StringVariableCommand>(def);
}

}  // namespace

void addVariableCommands(CommandRegistry& registry) {
    // A command of the same name with a dialogue of its own is there already and stays.
    for (const SysVarDef& def : engine::sysVarTable())
        registry.add(makeCommand(def));
}

}  // namespace kova::cmd::commands
