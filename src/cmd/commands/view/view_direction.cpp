#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "cmd/prompts/space_point.hpp"
#include "edit/view_state.hpp"
#include "engine/model/view_frame.hpp"
#include "math/angles.hpp"

// PLAN, VPOINT, DDVPOINT, 3DORBIT: from where the model is seen.

namespace kova::cmd::commands {

namespace {

using math::Vector2;
using math::Vector3;

constexpr const char* kNotOnPaper = "** Command not allowed in paper space **";

bool onPaper(const engine::Drawing& drawing) { return !drawing.currentSpaceIsModel(); }

/// A direction of view as two angles, radians: in the xy plane from the x axis, and from that plane.
struct Angles {
    double inPlane;
    double fromPlane;

    static Angles of(const ViewState& state) {
        const Vector3 d = engine::usableDirection(state.direction);
        const Vector2 flat = d.xy();
        // Straight down, what is up in the view tells from which side one would look.
        const Vector2 side = flat.length() > 1e-9 ? flat : -engine::viewUp(d, state.twist).xy();
        return {math::normalizeAngle(side.angle()), std::atan2(d.z, flat.length())};
    }
    Vector3 direction() const { return engine::directionByAngles(inPlane, fromPlane); }
    /// The twist that keeps the z axis upright, and the last side below when looking straight down or up.
    double twist() const {
        const double tilt = std::sin(fromPlane);
        return engine::viewTwist(direction(),
                                 {-std::cos(inPlane) * tilt, -std::sin(inPlane) * tilt, std::cos(fromPlane)});
    }
};

/// The angle of an answer as it was typed, or `fallback`.
double angleOr(const Answer& answer, double fallback) { return answer.isNumber() ? answer.number : fallback; }

/// Asks for the two angles and looks from there.
Dialogue lookByAngles(Ask& ask, doc::Document& document, const char* label) {
    const engine::Drawing& drawing = document.drawing();
    const Angles now = Angles::of(viewState(drawing));
    std::string prompt = withDefault("Enter angle in XY plane from X axis", angleText(drawing, now.inPlane));
    const Answer first = co_await ask.angle(std::move(prompt), {}, Vector2());
    Angles chosen = now;
    chosen.inPlane = angleOr(first, now.inPlane);
    prompt = withDefault("Enter angle from XY plane", angleText(drawing, now.fromPlane));
    const Answer second = co_await ask.angle(std::move(prompt), {}, Vector2());
    chosen.fromPlane = angleOr(second, now.fromPlane);
    const doc::GroupScope group(document, label);
    ask.message(lookFrom(document, chosen.direction(), 0.0));
}

class PlanCommand final : public OneShotCommand {
public:
    PlanCommand() : OneShotCommand("PLAN", "Plan View", "View") {}
    void execute(CommandContext& context) override {
        if (onPaper(context.drawing())) return context.message(kNotOnPaper);
        const doc::GroupScope group(context.document, "PLAN");
        const double turned = ucsRotation(context.drawing());
        const std::string error =
            lookFrom(context.document, {0, 0, 1}, turned != 0.0 ? math::normalizeAngle(-turned) : 0.0);
        if (!error.empty()) context.message(error);
    }
};

class VpointTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (onPaper(drawing())) {
            message(kNotOnPaper);
            co_return;
        }
        const Vector3 now = viewState(drawing()).direction;
        message("Current view direction:  VIEWDIR=" + lengthText(drawing(), now.x) + "," +
                lengthText(drawing(), now.y) + "," + lengthText(drawing(), now.z));
        for (;;) {
            const Answer answer = co_await ask.point(
                "Specify a view point or [Rotate] <display compass and tripod>:", "Rotate", Vector2());
            if (answer.isEnter()) co_return;
            if (answer.is("ROTATE")) co_return co_await lookByAngles(ask, document(), "VPOINT");
            const Vector3 direction = typedDirection(answer.text).value_or(Vector3(answer.point));
            if (direction == Vector3{}) {
                message("Invalid view point.");
                continue;
            }
            const doc::GroupScope group(document(), "VPOINT");
            co_return message(lookFrom(document(), direction, 0.0));
        }
    }
};

class DdvpointTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (onPaper(drawing())) {
            message(kNotOnPaper);
            co_return;
        }
        co_await lookByAngles(ask, document(), "DDVPOINT");
    }
};

/// 3DORBIT: turns the viewer round the middle of the view, degrees to the right and up.
class OrbitTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (onPaper(drawing())) {
            message(kNotOnPaper);
            co_return;
        }
        for (;;) {
            const Answer answer = co_await ask.text("Specify horizontal and vertical angle <0,0>:");
            if (answer.isEnter()) co_return;
            const std::optional<Vector3> turn = typedDirection(answer.text);
            if (!turn) {
                message("Two angles in degrees are needed, as 30,-15.");
                continue;
            }
            turnBy(turn->xy());
        }
    }

private:
    void turnBy(const Vector2& degrees) {
        ViewState state = viewState(drawing());
        const Vector3 middle = state.middle();
        Angles angles = Angles::of(state);
        angles.inPlane = math::normalizeAngle(angles.inPlane + math::toRadians(std::fmod(degrees.x, 360.0)));
        angles.fromPlane = std::clamp(angles.fromPlane + math::toRadians(degrees.y), -math::kPi / 2.0, math::kPi / 2.0);
        state.target = middle;
        state.center = {};
        state.direction = angles.direction();
        state.twist = angles.twist();
        const doc::GroupScope group(document(), "3DORBIT");
        message(setViewState(document(), state));
        repaint();
    }
};

}  // namespace

KOVA_REGISTER_COMMAND(PlanCommand)
KOVA_TOOL_COMMAND(Vpoint, "VPOINT", "Viewpoint", "View", {"-VP"})
KOVA_TOOL_COMMAND(Ddvpoint, "DDVPOINT", "Viewpoint Presets", "View", {"VP"})
KOVA_TOOL_COMMAND(Orbit, "3DORBIT", "3D Orbit", "View", {"3DO", "ORBIT"})

}  // namespace kova::cmd::commands
