#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/polyline.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

/// DONUT: wide rings, as closed polylines of two half circles.
class DonutTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        double inside = engine::sysVarReal(drawing(), "DONUTID", 0.5);
        std::string prompt = withDefault("Specify inside diameter of donut", lengthDefault(drawing(), inside));
        const Answer inner = co_await ask.distance(std::move(prompt), {}, {}, kNotNegative);
        inside = inner.numberOr(inside);
        double outside = engine::sysVarReal(drawing(), "DONUTOD", 1.0);
        prompt = withDefault("Specify outside diameter of donut", lengthDefault(drawing(), outside));
        const Answer outer = co_await ask.distance(std::move(prompt), {}, {}, kPositive);
        outside = outer.numberOr(outside);
        // The larger one is the outside, whatever was typed first.
        if (outside < inside) std::swap(inside, outside);
        engine::setSysVar(drawing(), "DONUTID", inside);
        engine::setSysVar(drawing(), "DONUTOD", outside);
        const doc::GroupScope group(document(), "DONUT");
        for (;;) {
            const Answer center = co_await ask.point("Specify center of donut or <exit>:");
            if (!center.isPoint()) co_return;
            const double radius = (inside + outside) / 4.0;
            const double width = (outside - inside) / 2.0;
            auto ring = std::make_unique<engine::PolylineEntity>();
            ring->addVertex(center.point - Vector2{radius, 0}, 1.0, width, width);
            ring->addVertex(center.point + Vector2{radius, 0}, 1.0, width, width);
            ring->closed = true;
            addNew(document(), std::move(ring), "DONUT");
        }
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Donut, "DONUT", "Donut", "Draw", {"DO", "DOUGHNUT"})

}  // namespace kova::cmd::commands
