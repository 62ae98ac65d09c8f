#pragma once

#include <optional>
#include <string>

namespace kova::cmd {

/// The bytes of a text file that a command reads (script, linetype or alias file), a byte-order mark left out.
/// Nothing when the path names no readable file or one above the limit of 256 MiB.
std::optional<std::string> readTextFile(const std::string& path);

}  // namespace kova::cmd
