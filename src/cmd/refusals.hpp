#pragma once

#include <string>
#include <string_view>

namespace kova::cmd {

/// The line with which a command gives up that works in a window only; `title` is the window's.
std::string needsDialog(std::string_view title);

/// The line behind it that names what can be typed to the same end: "Use SNAP, GRID or OSMODE instead."
std::string typedInstead(std::string_view commands);

}  // namespace kova::cmd
