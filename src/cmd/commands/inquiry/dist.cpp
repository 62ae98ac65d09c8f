#include "cmd/prompts/distance.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

/// DIST: distance and direction from point to point, or the length of a way over several points.
class DistTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override { co_await measureDistance(ask, document()); }
};

}  // namespace

KOVA_TOOL_COMMAND(Dist, "DIST", "Distance", "Inquiry", {"DI"})

}  // namespace kova::cmd::commands
