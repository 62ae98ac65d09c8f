#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "cmd/prompts/space_point.hpp"
#include "edit/view_state.hpp"
#include "engine/model/view_frame.hpp"
#include "math/angles.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;
using math::Vector3;

/// DVIEW: a view by camera, target and twist. The view changes when the command ends, as one step.
class DviewTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (!drawing().currentSpaceIsModel()) {
            message("** Command not allowed in paper space **");
            co_return;
        }
        // What is chosen is only dragged on a screen.
        co_await ask.selection("Select objects or <use DVIEWBLOCK>:");
        state_ = viewState(drawing());
        distance_ = std::max(state_.height, 1e-300);
        for (;;) {
            const Answer option =
                co_await ask.keyword("Enter option [CAmera/TArget/Distance/POints/PAn/Zoom/TWist/CLip/Hide/Off/Undo]:",
                                     "CAmera TArget Distance POints PAn Zoom TWist CLip Hide Off Undo eXit");
            if (option.isEnter() || option.is("EXIT")) break;
            if (option.is("UNDO")) {
                undo();
                continue;
            }
            const ViewState before = state_;
            if (option.is("CAMERA")) co_await byAngles(ask, false);
            if (option.is("TARGET")) co_await byAngles(ask, true);
            if (option.is("POINTS")) co_await points(ask);
            if (option.is("PAN")) co_await pan(ask);
            if (option.is("ZOOM")) co_await zoom(ask);
            if (option.is("TWIST")) co_await twist(ask);
            if (option.is("DISTANCE")) co_await distance(ask);
            if (option.is("CLIP")) co_await clip(ask);
            if (option.is("HIDE")) message("Hidden lines are not taken out; pictures show all edges.");
            if (before.toView() != state_.toView() || before.center != state_.center ||
                before.height != state_.height || before.target != state_.target)
                steps_.push_back(before);
        }
        if (steps_.empty()) co_return;
        const doc::GroupScope group(document(), "DVIEW");
        message(setViewState(document(), state_));
        repaint();
    }

private:
    void undo() {
        if (steps_.empty()) return message("Everything has been undone.");
        state_ = steps_.back();
        steps_.pop_back();
    }

    /// Camera round the target, or the target round the camera: by two angles or a place.
    Dialogue byAngles(Ask& ask, bool target) {
        const Vector3 way = target ? -state_.direction : state_.direction;
        const Vector2 flat = way.xy();
        double inPlane = flat.length() > 1e-9 ? flat.angle() : -math::kPi / 2.0;
        double fromPlane = std::atan2(way.z, flat.length());
        const std::string what = target ? "Specify target point" : "Specify camera location";
        bool asksPlane = false;
        bool toggled = false;
        for (int given = 0; given < 2;) {
            std::string prompt =
                what + (asksPlane ? ", or enter angle in XY plane from X axis, or [Toggle (angle from)]"
                                  : ", or enter angle from XY plane, or [Toggle (angle in)]");
            prompt = withDefault(prompt, angleText(drawing(), asksPlane ? inPlane : fromPlane));
            const Answer answer = co_await ask.text(std::move(prompt), "Toggle");
            if (answer.is("TOGGLE")) {
                asksPlane = !asksPlane;
                toggled = true;
                continue;
            }
            if (const std::optional<Vector3> place = typedDirection(answer.text)) {
                const Vector3 fixed = target ? state_.target + state_.direction * distance_ : state_.target;
                const Vector3 to = *place - fixed;
                if (to == Vector3{}) {
                    message("Camera and target must lie apart.");
                    continue;
                }
                distance_ = to.length();
                if (target) state_.target = *place;
                state_.direction = engine::usableDirection(target ? -to : to);
                co_return;
            }
            if (answer.isText()) {
                const auto angle = parseAngleInput(answer.text, PointContext::of(drawing()));
                if (!angle) {
                    message("Invalid angle or point.");
                    continue;
                }
                (asksPlane ? inPlane : fromPlane) = *angle;
            }
            ++given;
            if (given == 1) asksPlane = !asksPlane;
            if (toggled && given == 1 && answer.isEnter()) break;
        }
        const Vector3 turned = engine::directionByAngles(inPlane, fromPlane);
        if (target) {
            state_.target = state_.target + state_.direction * distance_ + turned * distance_;
            state_.direction = -turned;
        } else {
            state_.direction = turned;
        }
    }

    Dialogue points(Ask& ask) {
        const Vector3 camera = state_.target + state_.direction * distance_;
        const Answer to = co_await ask.point("Specify target point:");
        const Vector3 target = to.isPoint() ? spacePoint(to, state_.target.z, drawing()) : state_.target;
        const Answer from = co_await ask.point("Specify camera point:", {}, target.xy());
        const Vector3 eye = from.isPoint() ? spacePoint(from, target.z, drawing()) : camera;
        if (eye == target) {
            message("Camera and target must lie apart.");
            co_return;
        }
        state_.target = target;
        state_.center = {};
        distance_ = (eye - target).length();
        state_.direction = engine::usableDirection(eye - target);
    }

    Dialogue pan(Ask& ask) {
        const Answer first = co_await ask.point("Specify displacement base point:");
        if (!first.isPoint()) co_return;
        const Answer second = co_await ask.point("Specify second point:", {}, first.point);
        if (!second.isPoint()) co_return;
        const math::Matrix4 toView = state_.toView();
        state_.center = state_.center - toView.transform_point(spacePoint(second, 0.0, drawing())).xy() +
                        toView.transform_point(spacePoint(first, 0.0, drawing())).xy();
    }

    Dialogue zoom(Ask& ask) {
        const Answer scale = co_await ask.number("Specify zoom scale factor <1>:", {}, kPositive);
        if (scale.isNumber()) state_.height /= scale.number;
    }

    Dialogue twist(Ask& ask) {
        std::string prompt = withDefault("Specify view twist angle", angleText(drawing(), state_.twist));
        const Answer angle = co_await ask.angle(std::move(prompt), {}, Vector2());
        if (!angle.isNumber()) co_return;
        // The middle of the view stays where it is.
        const Vector3 middle = state_.middle();
        state_.twist = math::normalizeAngle(angle.number);
        state_.center = state_.toView().transform_point(middle).xy();
    }

    Dialogue distance(Ask& ask) {
        std::string prompt = withDefault("Specify new camera-target distance", lengthDefault(drawing(), distance_));
        const Answer length = co_await ask.distance(std::move(prompt), {}, state_.target.xy(), kPositive);
        distance_ = length.numberOr(distance_);
        message("Views stay parallel: the distance counts for the camera and the target only.");
    }

    Dialogue clip(Ask& ask) {
        const Answer option = co_await ask.keyword("Enter clipping option [Back/Front/Off] <Off>:", "Back Front Off");
        if (!option.isEnter() && !option.is("OFF"))
            message("Clipping planes are not kept; pictures show everything before and behind the target.");
    }

    ViewState state_;
    double distance_ = 1.0;  ///< from the target to the camera
    std::vector<ViewState> steps_;
};

}  // namespace

KOVA_TOOL_COMMAND(Dview, "DVIEW", "Dynamic View", "View", {"DV"})

}  // namespace kova::cmd::commands
