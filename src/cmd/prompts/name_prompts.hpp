#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cmd/dialogue.hpp"
#include "doc/document.hpp"

namespace kova::cmd {

/// A typed name: blanks and double quotes round it taken off.
std::string typedName(std::string_view line);

/// What "?" asks where the names of a drawing's records can be listed: which of them, by wild cards. `prompt` ends with
/// "to list <*>:".
Task<std::string> askNamesToList(Ask& ask, std::string prompt);

/// Prints the drawing's blocks whose names match, and how many there are of each kind.
void listBlocks(const engine::Drawing& drawing, const std::string& filter, ToolHost& host);

/// Those of the names that match, in order of name up to MAXSORT names.
std::vector<engine::Name> matchingNames(const engine::Drawing& drawing, std::vector<engine::Name> names,
                                        std::string_view filter);

}  // namespace kova::cmd
