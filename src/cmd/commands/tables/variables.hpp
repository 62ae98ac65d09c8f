#pragma once

namespace kova::cmd {
class CommandRegistry;
}

namespace kova::cmd::commands {

/// Registers a command for every system variable that has none of its own: one of the four generic ones (real,
/// integer, string, on/off), chosen by the variable's row.
void addVariableCommands(CommandRegistry& registry);

}  // namespace kova::cmd::commands
