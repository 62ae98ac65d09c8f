#include "engine/entities/tolerance.hpp"

#include "cmd/annotation_prompts.hpp"
#include "cmd/drawing_aids.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

/// TOLERANCE: a feature control frame, its parts asked one by one.
class ToleranceTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const bool given = co_await askTolerance(ask, tolerance_);
        if (!given) co_return message("The tolerance is empty.");
        const Answer at = co_await ask.point("Enter tolerance location:");
        if (!at.isPoint()) co_return;
        auto tolerance = std::make_unique<engine::ToleranceEntity>(tolerance_);
        tolerance->insertion = at.point;
        tolerance->styleName = drawing().dimStyleOrStandard(drawing().currentDimStyle).name;
        tolerance->rotation = ucsRotation(drawing());
        addNew(document(), std::move(tolerance), "TOLERANCE");
        repaint();
    }

private:
    engine::ToleranceEntity tolerance_;
};

}  // namespace

KOVA_TOOL_COMMAND(Tolerance, "TOLERANCE", "Tolerance", "Annotate", {"TOL"})

}  // namespace kova::cmd::commands
