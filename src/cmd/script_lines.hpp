#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kova::cmd {

/// The command lines of a script's text: each trimmed of white space; comments (";" first) left out; blank ones kept,
/// as Enter. A byte-order mark is passed over, and the last line end adds no line.
std::vector<std::string> scriptLines(std::string_view text);

}  // namespace kova::cmd
