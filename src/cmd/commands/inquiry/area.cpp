#include "cmd/prompts/area.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

/// AREA: area and outline of points or objects, added up or taken off.
class AreaTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override { co_await measureArea(ask, document()); }
};

}  // namespace

KOVA_TOOL_COMMAND(Area, "AREA", "Area", "Inquiry", {"AA"})

}  // namespace kova::cmd::commands
