#pragma once

#include <string>
#include <vector>

namespace kova::cli {

inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;

// Each takes the arguments behind the subcommand's word and gives the process's exit status.
int runCommand(const std::vector<std::string>& arguments);
int renderCommand(const std::vector<std::string>& arguments);
int mcpCommand(const std::vector<std::string>& arguments);

/// Dispatches on the first argument; `arguments` are all behind the program's name, in UTF-8.
int dispatch(const std::vector<std::string>& arguments);

}  // namespace kova::cli
