#include "cmd/commands/modify/corner_tool.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

class ChamferTool final : public CornerTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        tellSettings();
        StepGroup group(document(), label());
        bool multiple = false;
        for (;;) {
            const Answer first =
                co_await ask.object("Select first line or [Undo/Polyline/Distance/Angle/Trim/mEthod/Multiple]:",
                                    "Undo Polyline Distance Angle Trim mEthod Multiple", hasCorners);
            if (first.isEnter()) co_return;
            if (first.is("Undo")) {
                if (!group.drop()) message("Command has been completely undone.");
            } else if (first.is("Trim")) {
                co_await askTrimMode(ask);
            } else if (first.is("Multiple")) {
                multiple = true;
            } else if (first.is("Polyline")) {
                const bool done = co_await askPolyline(ask, group, "chamfered", measure());
                if (done && !multiple) co_return;
            } else if (first.isObject()) {
                const bool done = co_await askSecond(ask, group, {first.id, first.point});
                if (done && !multiple) co_return;
            } else {
                co_await askMeasure(ask, first.word);
                expectFirst();
            }
        }
    }
    const char* label() const override { return "CHAMFER"; }
    std::optional<engine::Corner> cornerOf(const engine::PickedCurve& a, const engine::PickedCurve& b) override {
        engine::CornerFault fault = engine::CornerFault::None;
        double first = variable("CHAMFERA");
        double second = variable("CHAMFERB");
        if (byAngle()) {
            first = variable("CHAMFERC");
            second = engine::chamferDistance(a, b, first, variable("CHAMFERD"));
        }
        std::optional<engine::Corner> corner;
        if (second >= 0.0)
            corner = engine::chamferCorner(a, b, first, second, fault);
        else
            engine::chamferCorner(a, b, 0.0, 0.0, fault);  // for what else is wrong with the pair
        if (second < 0.0 && fault == engine::CornerFault::None) fault = engine::CornerFault::TooLarge;
        if (fault == engine::CornerFault::NoSolution)
            message("No valid chamfer between these objects.");
        else if (!corner)
            tell(fault, "Distance is too large.");
        return corner;
    }

private:
    double variable(const char* name) const { return engine::sysVarReal(drawing(), name); }
    bool byAngle() const { return engine::sysVarInt(drawing(), "CHAMMODE") == 1; }
    void set(const char* name, double value) { document().setVariable(name, engine::SysVarValue(value)); }
    void setMode(int mode) { document().setVariable("CHAMMODE", engine::SysVarValue(std::int32_t{mode})); }

    void tellSettings() {
        std::string text = trims() ? "(TRIM mode) Current chamfer " : "(NOTRIM mode) Current chamfer ";
        if (byAngle())
            text += "Length = " + lengthText(drawing(), variable("CHAMFERC")) +
                    ", Angle = " + angleText(drawing(), variable("CHAMFERD"));
        else
            text += "Dist1 = " + lengthText(drawing(), variable("CHAMFERA")) +
                    ", Dist2 = " + lengthText(drawing(), variable("CHAMFERB"));
        message(text);
    }

    Dialogue askMeasure(Ask& ask, std::string word) {
        if (word == "DISTANCE") {
            const Answer first = co_await ask.distance(
                withDefault("Specify first chamfer distance", lengthDefault(drawing(), variable("CHAMFERA"))), {}, {},
                kNotNegative);
            if (first.isNumber()) set("CHAMFERA", first.number);
            const Answer second = co_await ask.distance(
                withDefault("Specify second chamfer distance", lengthDefault(drawing(), variable("CHAMFERA"))), {}, {},
                kNotNegative);
            set("CHAMFERB", second.numberOr(variable("CHAMFERA")));
            setMode(0);
        } else if (word == "ANGLE") {
            const Answer length = co_await ask.distance(
                withDefault("Specify chamfer length on the first line", lengthDefault(drawing(), variable("CHAMFERC"))),
                {}, {}, kNotNegative);
            if (length.isNumber()) set("CHAMFERC", length.number);
            const Range below180{0.0, 179.999999};
            const Answer angle = co_await ask.number(
                withDefault("Specify chamfer angle from the first line", angleText(drawing(), variable("CHAMFERD"))),
                {}, below180);
            if (angle.isNumber()) set("CHAMFERD", angle.number * math::kDegree);
            setMode(1);
        } else {
            const Answer method = co_await ask.keyword(
                withDefault("Enter trim method [Distance/Angle]", byAngle() ? "Angle" : "Distance"), "Distance Angle");
            if (!method.isEnter()) setMode(method.is("Angle") ? 1 : 0);
        }
    }

    /// False: no corner was made.
    Task<bool> askSecond(Ask& ask, StepGroup& group, Pick first) {
        for (;;) {
            const Answer second =
                co_await ask.object("Select second line or shift-select to apply corner or [Distance/Angle/Method]:",
                                    "Distance Angle Method", hasCorners);
            if (second.isEnter()) co_return true;
            if (!second.isObject()) {
                co_await askMeasure(ask, second.word);
                continue;
            }
            co_return makeCorner(group, first, {second.id, second.point});
        }
    }

    engine::CornerMeasure measure() const {
        engine::CornerMeasure measure;
        measure.first = variable(byAngle() ? "CHAMFERC" : "CHAMFERA");
        measure.second = variable("CHAMFERB");
        if (byAngle()) measure.angle = variable("CHAMFERD");
        return measure;
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Chamfer, "CHAMFER", "Chamfer", "Modify", {"CHA"})

}  // namespace kova::cmd::commands
