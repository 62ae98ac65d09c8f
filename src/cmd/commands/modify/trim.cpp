#include "cmd/commands/modify/cutting_tool.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

class TrimTool final : public CuttingTool {
public:
    TrimTool() : CuttingTool(true) {}
};

}  // namespace

KOVA_TOOL_COMMAND(Trim, "TRIM", "Trim", "Modify", {"TR"})

}  // namespace kova::cmd::commands
