#include "engine/entities/point.hpp"

#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

class PointTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        message("Current point modes:  PDMODE=" + std::to_string(engine::sysVarInt(drawing(), "PDMODE")) +
                "  PDSIZE=" + lengthText(drawing(), engine::sysVarReal(drawing(), "PDSIZE")));
        const Answer at = co_await ask.point("Specify a point:");
        if (at.isPoint()) addNew(document(), std::make_unique<engine::PointEntity>(at.point), "POINT");
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Point, "POINT", "Point", "Draw", {"PO"})

}  // namespace kova::cmd::commands
