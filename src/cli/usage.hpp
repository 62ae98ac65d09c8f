#pragma once

#include <string>

namespace kova::cli {

inline constexpr const char* kVersion = "1.1.7";

/// The whole usage text without its last line feed, with the program's path in the line for MCP clients.
std::string usageText();

}  // namespace kova::cli
