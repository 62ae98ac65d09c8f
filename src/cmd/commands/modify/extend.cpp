#include "cmd/commands/modify/cutting_tool.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

class ExtendTool final : public CuttingTool {
public:
    ExtendTool() : CuttingTool(false) {}
};

}  // namespace

KOVA_TOOL_COMMAND(Extend, "EXTEND", "Extend", "Modify", {"EX"})

}  // namespace kova::cmd::commands
