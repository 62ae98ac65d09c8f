#include "engine/entities/ellipse.hpp"

#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/polyline.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

/// The steepest view of a circle that still is an ellipse.
constexpr double kMaxRotation = 89.4 * math::kDegree;

class EllipseTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        Answer first = co_await ask.point("Specify axis endpoint of ellipse or [Arc/Center]:", "Arc Center");
        const bool arc = first.is("ARC");
        if (arc) first = co_await ask.point("Specify axis endpoint of elliptical arc or [Center]:", "Center");
        if (first.is("CENTER")) {
            const Answer center =
                co_await ask.point(arc ? "Specify center of elliptical arc:" : "Specify center of ellipse:");
            if (!center.isPoint()) co_return;
            center_ = center.point;
            const Answer end = co_await ask.point("Specify endpoint of axis:", {}, center_);
            if (!end.isPoint()) co_return;
            axis_ = end.point - center_;
        } else if (first.isPoint()) {
            const Answer other = co_await ask.point("Specify other endpoint of axis:", {}, first.point);
            if (!other.isPoint()) co_return;
            center_ = (first.point + other.point) / 2.0;
            // The angles of an arc count from the first point.
            axis_ = arc ? first.point - center_ : other.point - center_;
        } else {
            co_return;
        }
        if (!(axis_.length() > 0.0)) co_return message("Invalid input.");
        if (!co_await askOther(ask)) co_return;
        if (!arc) co_return add(0.0, math::kTwoPi);
        co_await askArc(ask);
    }

private:
    /// The second half axis; false when given up.
    Task<bool> askOther(Ask& ask) {
        const Answer answer =
            co_await ask.distance("Specify distance to other axis or [Rotation]:", "Rotation", center_, kPositive);
        if (answer.isNumber()) {
            other_ = answer.number;
            co_return true;
        }
        if (!answer.is("ROTATION")) co_return false;
        for (;;) {
            const Answer rotation = co_await ask.angle("Specify rotation around major axis:", {}, center_);
            if (!rotation.isNumber()) co_return false;
            const double angle = std::abs(includedAngle(rotation, drawing()));
            if (angle <= kMaxRotation) {
                other_ = axis_.length() * std::cos(angle);
                co_return true;
            }
            message("Invalid value.");
        }
    }

    /// The parameter of the point that is seen from the centre at an angle from the first axis; keeps full turns.
    double parameterAt(double angle) const { return math::ellipseAngleToParameter(other_ / axis_.length(), angle); }

    double angleOf(const Answer& answer) const {
        return isTyped(answer) ? includedAngle(answer, drawing()) : answer.number - axis_.angle();
    }

    Dialogue askArc(Ask& ask) {
        bool parameters = false;
        double start = 0.0;
        for (;;) {
            const Answer answer = co_await ask.angle(
                parameters ? "Specify start parameter or [Angle]:" : "Specify start angle or [Parameter]:",
                parameters ? "Angle" : "Parameter", center_);
            if (answer.isEnter()) co_return;
            if (answer.isNumber()) {
                start = parameters ? angleOf(answer) : parameterAt(angleOf(answer));
                break;
            }
            parameters = !parameters;
        }
        for (;;) {
            const Answer answer = co_await ask.angle(parameters ? "Specify end parameter or [Angle/Included angle]:"
                                                                : "Specify end angle or [Parameter/Included angle]:",
                                                     parameters ? "Angle Included" : "Parameter Included", center_);
            if (answer.isEnter()) co_return;
            if (answer.isNumber()) co_return add(start, parameters ? angleOf(answer) : parameterAt(angleOf(answer)));
            if (answer.is("INCLUDED")) {
                const Answer included = co_await ask.angle("Specify included angle for arc <180>:", {}, center_);
                if (!included.isNumber() && !included.isEnter()) co_return;
                const double sweep = included.isEnter() ? math::kPi : includedAngle(included, drawing());
                const double from = math::ellipseParameterToAngle(other_ / axis_.length(), start);
                co_return add(start, parameterAt(from + sweep));
            }
            parameters = !parameters;
        }
    }

    void add(double start, double end) {
        Vector2 major = axis_;
        double ratio = other_ / axis_.length();
        if (ratio > 1.0) {
            // The second axis is the longer one: parameters count from there, a quarter turn on.
            major = axis_.normalized().perpendicular() * other_;
            if (axis_.length() < math::kTolerance) major = axis_.perpendicular() * ratio;
            ratio = 1.0 / ratio;
            start -= math::kPi / 2.0;
            end -= math::kPi / 2.0;
        }
        if (!center_.is_finite() || !major.is_finite() || !(ratio > 0.0)) return message("Invalid input.");
        const double sweep = math::sweepAngle(start, end);
        if (sweep >= math::kTwoPi - 1e-12)
            start = 0.0, end = math::kTwoPi;
        else
            start = math::normalizeAngle(start), end = start + sweep;
        auto ellipse = std::make_unique<engine::EllipseEntity>(center_, major, ratio, start, end);
        if (engine::sysVarInt(drawing(), "PELLIPSE") != 0)
            addNew(document(), asPolyline(*ellipse), "ELLIPSE");
        else
            addNew(document(), std::move(ellipse), "ELLIPSE");
    }

    /// Arcs through points of the ellipse, sixteen to the full turn.
    static std::unique_ptr<engine::Entity> asPolyline(const engine::EllipseEntity& ellipse) {
        auto polyline = std::make_unique<engine::PolylineEntity>();
        const double sweep = ellipse.sweep();
        const bool full = ellipse.isFull();
        const int count = std::max(1, static_cast<int>(std::ceil(16.0 * sweep / math::kTwoPi - 1e-9)));
        const double step = sweep / count;
        for (int i = 0; i < count; ++i) {
            const double t = ellipse.startParam + i * step;
            const Vector2 from = ellipse.pointAt(t);
            polyline->addVertex(from,
                                math::bulgeThrough(from, ellipse.pointAt(t + step / 2.0), ellipse.pointAt(t + step)));
        }
        if (full)
            polyline->closed = true;
        else
            polyline->addVertex(ellipse.endPoint());
        return polyline;
    }

    Vector2 center_;
    Vector2 axis_;  ///< from the centre to the end of the first axis
    double other_ = 0.0;
};

}  // namespace

KOVA_TOOL_COMMAND(Ellipse, "ELLIPSE", "Ellipse", "Draw", {"EL"})

}  // namespace kova::cmd::commands
