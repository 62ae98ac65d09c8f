#pragma once

#include <string_view>

namespace kova::cmd {
class CommandRegistry;
}

namespace kova::cmd::commands {

/// Registers the names of the command table whose commands are not there yet; each says so and ends.
void addPlannedCommands(CommandRegistry& registry);

/// True for a name (upper case) that has a row in the table of commands to come.
bool isPlannedCommand(std::string_view name);

}  // namespace kova::cmd::commands
