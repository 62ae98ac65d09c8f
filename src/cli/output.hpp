#pragma once

#include <string_view>

namespace kova::cli {

/// Writes the text and a newline to standard output with one write, and flushes.
void printOut(std::string_view text);
/// The same on standard error.
void printError(std::string_view text);

}  // namespace kova::cli
