#include "cmd/commands/modify/corner_tool.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

class FilletTool final : public CornerTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        std::string settings =
            trims() ? "Current settings: Mode = TRIM, Radius = " : "Current settings: Mode = NOTRIM, Radius = ";
        settings += lengthText(drawing(), radius());
        message(settings);
        StepGroup group(document(), label());
        bool multiple = false;
        for (;;) {
            const Answer first = co_await ask.object("Select first object or [Undo/Polyline/Radius/Trim/Multiple]:",
                                                     "Undo Polyline Radius Trim Multiple", hasCorners);
            if (first.isEnter()) co_return;
            if (first.is("Undo")) {
                if (!group.drop()) message("Command has been completely undone.");
            } else if (first.is("Radius")) {
                co_await askRadius(ask);
                expectFirst();
            } else if (first.is("Trim")) {
                co_await askTrimMode(ask);
            } else if (first.is("Multiple")) {
                multiple = true;
            } else if (first.is("Polyline")) {
                engine::CornerMeasure measure;
                measure.round = true;
                measure.radius = radius();
                const bool done = co_await askPolyline(ask, group, "filleted", measure);
                if (done && !multiple) co_return;
            } else {
                const bool done = co_await askSecond(ask, group, {first.id, first.point});
                if (done && !multiple) co_return;
            }
        }
    }
    const char* label() const override { return "FILLET"; }
    std::optional<engine::Corner> cornerOf(const engine::PickedCurve& a, const engine::PickedCurve& b) override {
        engine::CornerFault fault = engine::CornerFault::None;
        auto corner = engine::filletCorner(a, b, radius(), fault);
        if (fault == engine::CornerFault::NoSolution)
            message("No valid fillet with radius " + lengthText(drawing(), radius()) + ".");
        else if (!corner)
            tell(fault, "Radius is too large.");
        return corner;
    }

private:
    double radius() const { return engine::sysVarReal(drawing(), "FILLETRAD"); }

    Dialogue askRadius(Ask& ask) {
        const Answer answer = co_await ask.distance(
            withDefault("Specify fillet radius", lengthDefault(drawing(), radius())), {}, {}, kNotNegative);
        if (answer.isNumber()) document().setVariable("FILLETRAD", engine::SysVarValue(answer.number));
    }

    /// False: no corner was made.
    Task<bool> askSecond(Ask& ask, StepGroup& group, Pick first) {
        for (;;) {
            const Answer second = co_await ask.object(
                "Select second object or shift-select to apply corner or [Radius]:", "Radius", hasCorners);
            if (second.isEnter()) co_return true;
            if (second.is("Radius")) {
                co_await askRadius(ask);
                continue;
            }
            co_return makeCorner(group, first, {second.id, second.point});
        }
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Fillet, "FILLET", "Fillet", "Modify", {"F"})

}  // namespace kova::cmd::commands
