#include "cmd/refusals.hpp"

namespace kova::cmd {

std::string needsDialog(std::string_view title) {
    return '"' + std::string(title) + "\" needs its dialog, which kovacad-cli cannot show; cancelled.";
}

std::string typedInstead(std::string_view commands) { return "Use " + std::string(commands) + " instead."; }

}  // namespace kova::cmd
