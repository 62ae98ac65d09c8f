#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"

// SNAP, GRID and POLAR: settings of the pointer, kept with the drawing and the profile.

namespace kova::cmd::commands {

namespace {

using math::Vector3;

Vector3 pointVariable(const engine::Drawing& drawing, const char* name) {
    if (const auto value = engine::getSysVar(drawing, name))
        if (const auto* p = std::get_if<Vector3>(&*value)) return *p;
    return {};
}

/// Two spacings as a prompt shows them: one when they agree.
std::string spacingText(const engine::Drawing& drawing, const Vector3& unit) {
    std::string text = lengthDefault(drawing, unit.x);
    if (unit.x != unit.y) text += "," + lengthDefault(drawing, unit.y);
    return text;
}

class SnapTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Vector3 unit = pointVariable(drawing(), "SNAPUNIT");
        std::string prompt =
            withDefault("Specify snap spacing or [ON/OFF/Aspect/Legacy/Style/Type]", spacingText(drawing(), unit));
        // Rotate is an option of old scripts.
        const Answer answer =
            co_await ask.distance(std::move(prompt), "ON OFF Aspect Legacy Style Type Rotate", {}, kPositive);
        if (answer.isNumber()) {
            const Vector3 both(answer.number, answer.number, 0.0);
            setSpacing(both);
        } else if (answer.is("ON") || answer.is("OFF")) {
            const doc::GroupScope group(document(), "SNAP");
            message(document().setVariable("SNAPMODE", answer.is("ON") ? 1 : 0));
        } else if (answer.is("ASPECT")) {
            co_await askAspect(ask, unit);
        } else if (answer.is("LEGACY")) {
            const bool now = remembered(document(), "SNAP legacy", 0.0) != 0.0;
            std::string question = "Maintain legacy behavior of always snapping to snap grid? [Yes/No]";
            const bool legacy = co_await askYesNo(ask, withDefault(question, now ? "Yes" : "No"), now);
            remember(document(), "SNAP legacy", legacy ? 1.0 : 0.0);
        } else if (answer.is("STYLE")) {
            const bool isometric = engine::sysVarInt(drawing(), "SNAPSTYL") != 0;
            std::string question = withDefault("Enter snap grid style [Standard/Isometric]", isometric ? "I" : "S");
            const Answer style = co_await ask.keyword(std::move(question), "Standard Isometric");
            if (style.isEnter()) co_return;
            const doc::GroupScope group(document(), "SNAP");
            message(document().setVariable("SNAPSTYL", style.is("ISOMETRIC") ? 1 : 0));
        } else if (answer.is("TYPE")) {
            const bool polar = engine::sysVarInt(drawing(), "SNAPTYPE") != 0;
            std::string question = withDefault("Enter snap type [Polar/Grid]", polar ? "Polar" : "Grid");
            const Answer type = co_await ask.keyword(std::move(question), "Polar Grid");
            if (!type.isEnter()) message(document().setVariable("SNAPTYPE", type.is("POLAR") ? 1 : 0));
        } else if (answer.is("ROTATE")) {
            co_await askRotation(ask);
        }
    }

private:
    void setSpacing(const Vector3& unit) {
        const doc::GroupScope group(document(), "SNAP");
        message(document().setVariable("SNAPUNIT", unit));
        message(document().setVariable("SNAPMODE", 1));
    }

    Dialogue askAspect(Ask& ask, Vector3 unit) {
        std::string across = withDefault("Specify horizontal spacing", lengthDefault(drawing(), unit.x));
        const Answer x = co_await ask.distance(std::move(across), {}, {}, kPositive);
        unit.x = x.numberOr(unit.x);
        std::string up = withDefault("Specify vertical spacing", lengthDefault(drawing(), unit.y));
        const Answer y = co_await ask.distance(std::move(up), {}, {}, kPositive);
        unit.y = y.numberOr(unit.y);
        setSpacing(unit);
    }

    Dialogue askRotation(Ask& ask) {
        const Vector3 base = pointVariable(drawing(), "SNAPBASE");
        std::string prompt = withDefault("Specify base point", pointDefault(drawing(), base.xy()));
        const Answer point = co_await ask.point(std::move(prompt));
        const math::Vector2 origin = point.isPoint() ? point.point : base.xy();
        std::string question =
            withDefault("Specify rotation angle", angleText(drawing(), engine::sysVarReal(drawing(), "SNAPANG")));
        const Answer angle = co_await ask.angle(std::move(question), {}, origin);
        const doc::GroupScope group(document(), "SNAP");
        if (point.isPoint()) message(document().setVariable("SNAPBASE", Vector3(origin)));
        if (angle.isNumber()) message(document().setVariable("SNAPANG", angle.number));
    }
};

/// Bits of GRIDDISPLAY.
enum GridDisplay : std::int32_t { kBeyondLimits = 1, kAdaptive = 2, kFollowsUcs = 8 };

class GridTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Vector3 unit = pointVariable(drawing(), "GRIDUNIT");
        const std::string prompt =
            withDefault("Specify grid spacing(X) or [ON/OFF/Snap/Major/aDaptive/Limits/Follow/Aspect]",
                        spacingText(drawing(), unit));
        for (;;) {
            const Answer answer = co_await ask.text(prompt, "ON OFF Snap Major aDaptive Limits Follow Aspect");
            if (answer.isEnter()) co_return;
            if (answer.isText()) {
                const auto x = spacing(answer.text, 0);
                const auto y = spacing(answer.text, 1);
                if (x && y) co_return setSpacing(*x, *y);
                message("Invalid value.");
                continue;
            }
            if (answer.is("ON") || answer.is("OFF")) co_return set("GRIDMODE", answer.is("ON") ? 1 : 0);
            if (answer.is("SNAP")) {
                const Vector3 snap = pointVariable(drawing(), "SNAPUNIT");
                co_return setSpacing(snap.x, snap.y);
            }
            if (answer.is("MAJOR")) co_return co_await askMajor(ask);
            if (answer.is("ADAPTIVE")) co_return co_await askBit(ask, "Turn adaptive behavior on [Yes/No]", kAdaptive);
            if (answer.is("LIMITS"))
                co_return co_await askBit(ask, "Display grid beyond Limits [Yes/No]", kBeyondLimits);
            if (answer.is("FOLLOW")) co_return co_await askBit(ask, "Follow Dynamic UCS [Yes/No]", kFollowsUcs);
            const std::optional<double> x = co_await askSpacing(ask, "Specify the horizontal spacing(X)", 0, unit.x);
            const std::optional<double> y = co_await askSpacing(ask, "Specify the vertical spacing(X)", 1, unit.y);
            co_return setSpacing(x.value_or(unit.x), y.value_or(unit.y));
        }
    }

private:
    void set(const char* name, std::int32_t value) {
        const doc::GroupScope group(document(), "GRID");
        message(document().setVariable(name, value));
    }
    void setSpacing(double x, double y) {
        const doc::GroupScope group(document(), "GRID");
        message(document().setVariable("GRIDUNIT", Vector3(x, y, 0.0)));
        message(document().setVariable("GRIDMODE", 1));
    }

    /// A spacing, or with an X behind it that many times the snap's; 0 is the snap's. `axis` 0: along x.
    std::optional<double> spacing(std::string_view text, int axis) const {
        std::string_view number = trimmed(text);
        const bool times = !number.empty() && (number.back() == 'x' || number.back() == 'X');
        if (times) number.remove_suffix(1);
        const auto value = parseNumber(number);
        if (!value || *value < 0.0 || (times && *value == 0.0)) return std::nullopt;
        const Vector3 snap = pointVariable(drawing(), "SNAPUNIT");
        const double unit = axis == 0 ? snap.x : snap.y;
        return times ? *value * unit : *value == 0.0 ? unit : *value;
    }

    Task<std::optional<double>> askSpacing(Ask& ask, const char* question, int axis, double now) {
        const std::string prompt = withDefault(question, lengthDefault(drawing(), now));
        for (;;) {
            const Answer answer = co_await ask.text(prompt);
            if (answer.isEnter()) co_return std::nullopt;
            const auto value = spacing(answer.text, axis);
            if (value) co_return value;
            message("Invalid value.");
        }
    }

    Dialogue askMajor(Ask& ask) {
        const int now = engine::sysVarInt(drawing(), "GRIDMAJOR", 5);
        std::string prompt = withDefault("Enter the number of grid divisions per major grid line", std::to_string(now));
        const Answer answer = co_await ask.integer(std::move(prompt), 1, 100);
        if (answer.isNumber()) set("GRIDMAJOR", answer.integer());
    }

    Dialogue askBit(Ask& ask, const char* question, std::int32_t bit) {
        const std::int32_t now = engine::sysVarInt(drawing(), "GRIDDISPLAY", kAdaptive);
        // Enter switches it on, as the question suggests.
        const bool on = co_await askYesNo(ask, withDefault(question, "Yes"), true);
        set("GRIDDISPLAY", on ? now | bit : now & ~bit);
    }
};

/// POLAR: polar tracking on or off; a number is its step.
class PolarTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        constexpr std::int32_t kPolar = 8;  // of AUTOSNAP
        const std::int32_t now = engine::sysVarInt(drawing(), "AUTOSNAP");
        std::string prompt = withDefault("Enter mode [ON/OFF]", (now & kPolar) != 0 ? "ON" : "OFF");
        const Range steps{1e-6, 360.0};
        const Answer answer = co_await ask.number(std::move(prompt), "ON OFF", steps);
        if (answer.isNumber())
            message(document().setVariable("POLARANG", answer.number));
        else if (!answer.isEnter())
            message(document().setVariable("AUTOSNAP", answer.is("ON") ? now | kPolar : now & ~kPolar));
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Snap, "SNAP", "Snap", "Settings", {"SN"})
KOVA_TOOL_COMMAND(Grid, "GRID", "Grid", "Settings")
KOVA_TOOL_COMMAND(Polar, "POLAR", "Polar Tracking", "Settings")

}  // namespace kova::cmd::commands
