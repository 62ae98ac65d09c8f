#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cmd/tool.hpp"
#include "doc/document.hpp"

namespace kova::cmd {

/// A typed name: blanks and double quotes round it taken off.
std::string typedName(std::string_view line);

/// Prints the drawing's blocks whose names match, and how many there are of each kind.
void listBlocks(const engine::Drawing& drawing, const std::string& filter, ToolHost& host);

/// Those of the names that match, in order of name up to MAXSORT names.
std::vector<engine::Name> matchingNames(const engine::Drawing& drawing, std::vector<engine::Name> names,
                                        std::string_view filter);

}  // namespace kova::cmd
