#pragma once

namespace kova::cmd {
class CommandRegistry;
}

namespace kova::cmd::commands {

/// Registers the names of the command table whose commands are not there yet; each says so and ends.
void addPlannedCommands(CommandRegistry& registry);

}  // namespace kova::cmd::commands
