#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "cmd/command.hpp"

namespace kova::cmd {

/// All commands by name and alias. Filled once at start; afterwards only the alias set changes (ALIASEDIT, REINIT).
class CommandRegistry {
public:
    /// Every command that registered itself, the commands of the system-variable table, and the names whose
    /// family is not there yet.
    static CommandRegistry& instance();

    CommandRegistry() = default;
    CommandRegistry(const CommandRegistry&) = delete;
    CommandRegistry& operator=(const CommandRegistry&) = delete;

    struct Resolved {
        Command* command = nullptr;
        bool commandLine = false;  ///< a "-" stood among the stripped prefix characters
    };
    /// By upper-cased name or alias; on a miss once more without the leading run of "_", "." and "-". Null: not found.
    Command* find(std::string_view name) const { return resolve(name).command; }
    Resolved resolve(std::string_view name) const;

    /// Adds a command with its aliases; false (and nothing is added) when the name is taken.
    bool add(std::unique_ptr<Command> command);
    /// In the order of their names.
    std::vector<Command*> commands() const;
    /// Alias to command name, in the order of the aliases.
    const std::map<std::string, std::string>& aliases() const { return aliases_; }
    /// False when the command is unknown, or the alias is empty, a command's name or no single word.
    bool setAlias(std::string_view alias, std::string_view command);
    bool removeAlias(std::string_view alias);
    /// The aliases that the commands themselves name.
    void resetAliases();

private:
    Command* lookup(std::string_view upper) const;
    void addOwnAliases(const Command& command);

    std::vector<std::unique_ptr<Command>> commands_;
    std::unordered_map<std::string, Command*> byName_;
    std::map<std::string, std::string> aliases_;
    std::unordered_map<std::string, Command*> byAlias_;
};

/// Collects the commands that register themselves before main; see KOVA_REGISTER_COMMAND.
using CommandFactory = std::unique_ptr<Command> (*)();
struct CommandRegistrar {
    explicit CommandRegistrar(CommandFactory factory);
};

}  // namespace kova::cmd

/// In a command's own file: KOVA_TOOL_COMMAND(Circle, "CIRCLE", "Circle", "Draw", {"C"}) makes CircleCommand out of
/// CircleTool and registers it. Aliases are optional.
#define KOVA_TOOL_COMMAND(Base, ...)                                          \
    class Base##Command final : public ::kova::cmd::ToolCommand<Base##Tool> { \
    public:                                                                   \
        Base##Command() : ToolCommand(__VA_ARGS__) {}                         \
    };                                                                        \
    KOVA_REGISTER_COMMAND(Base##Command)

/// Registers a command class with a default constructor.
#define KOVA_REGISTER_COMMAND(Class)                            \
    static const ::kova::cmd::CommandRegistrar register##Class( \
        []() -> std::unique_ptr<::kova::cmd::Command> { return std::make_unique<Class>(); });
