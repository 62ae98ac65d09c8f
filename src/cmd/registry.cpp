#include "cmd/registry.hpp"

#include "cmd/commands/tables/variables.hpp"
#include "cmd/registered_twice.hpp"
#include "engine/model/name.hpp"

namespace kova::cmd {

namespace {

std::vector<CommandFactory>& factories() {
    static std::vector<CommandFactory> all;
    return all;
}

std::vector<std::string>& doubles() {
    static std::vector<std::string> names;
    return names;
}

}  // namespace

CommandRegistrar::CommandRegistrar(CommandFactory factory) { factories().push_back(factory); }

CommandRegistry& CommandRegistry::instance() {
    static CommandRegistry* registry = [] {
        auto* made = new CommandRegistry;
        for (const CommandFactory factory : factories()) {
            std::unique_ptr<Command> command = factory();
            const std::string name = command->name();
            if (!made->add(std::move(command))) doubles().push_back(name);
        }
        commands::addVariableCommands(*made);
        return made;
    }();
    return *registry;
}

const std::vector<std::string>& registeredTwice() {
    CommandRegistry::instance();
    return doubles();
}

Command* CommandRegistry::lookup(std::string_view upper) const {
    const std::string key(upper);
    if (const auto it = byName_.find(key); it != byName_.end()) return it->second;
    if (const auto it = byAlias_.find(key); it != byAlias_.end()) return it->second;
    return nullptr;
}

CommandRegistry::Resolved CommandRegistry::resolve(std::string_view name) const {
    if (Command* command = lookup(engine::upperCase(name))) return {command, false};
    const auto rest = name.find_first_not_of("_.-");
    if (rest == 0 || rest == std::string_view::npos) return {};
    const bool commandLine = name.substr(0, rest).find('-') != std::string_view::npos;
    Command* command = lookup(engine::upperCase(name.substr(rest)));
    return command != nullptr ? Resolved{command, commandLine} : Resolved{};
}

bool CommandRegistry::add(std::unique_ptr<Command> command) {
    if (!byName_.emplace(command->name(), command.get()).second) return false;
    removeAlias(command->name());
    addOwnAliases(*command);
    commands_.push_back(std::move(command));
    return true;
}

void CommandRegistry::addOwnAliases(const Command& command) {
    // Whoever comes first keeps an alias.
    for (const std::string& alias : command.aliases())
        if (!byAlias_.contains(engine::upperCase(alias))) setAlias(alias, command.name());
}

std::vector<Command*> CommandRegistry::commands() const {
    std::vector<Command*> all;
    for (const auto& command : commands_) all.push_back(command.get());
    std::sort(all.begin(), all.end(), [](const Command* a, const Command* b) { return a->name() < b->name(); });
    return all;
}

bool CommandRegistry::setAlias(std::string_view alias, std::string_view command) {
    const std::string key = engine::upperCase(alias);
    const auto target = byName_.find(engine::upperCase(command));
    if (key.empty() || key.find_first_of(" \t'(") != std::string::npos || target == byName_.end() ||
        byName_.contains(key))
        return false;
    aliases_[key] = target->first;
    byAlias_[key] = target->second;
    return true;
}

bool CommandRegistry::removeAlias(std::string_view alias) {
    const std::string key = engine::upperCase(alias);
    byAlias_.erase(key);
    return aliases_.erase(key) > 0;
}

void CommandRegistry::resetAliases() {
    aliases_.clear();
    byAlias_.clear();
    for (const auto& command : commands_) addOwnAliases(*command);
}

}  // namespace kova::cmd
