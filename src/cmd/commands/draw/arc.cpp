#include "engine/entities/arc.hpp"

#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "cmd/registry.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd::commands {

namespace {

using math::CircularArc;
using math::Vector2;

class ArcTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer start = co_await ask.point("Specify start point of arc or [Center]:", "Center");
        if (start.is("CENTER")) co_return co_await centerFirst(ask);
        if (start.isPoint()) co_return co_await startFirst(ask, start.point);
        if (const auto end = lastCurveEnd(document())) co_return co_await continued(ask, *end);
        message("No line or arc to continue.");
    }

private:
    void add(const CircularArc& arc) {
        if (!arc.center.is_finite() || !(arc.radius > 0.0) || !std::isfinite(arc.radius) || arc.sweep == 0.0)
            return refuse();
        const double from = arc.sweep > 0.0 ? arc.start : arc.end();
        const double to = arc.sweep > 0.0 ? arc.end() : arc.start;
        addNew(document(),
               std::make_unique<engine::ArcEntity>(arc.center, arc.radius, math::normalizeAngle(from),
                                                   math::normalizeAngle(to)),
               "ARC");
    }
    void addBulged(const Vector2& from, const Vector2& to, double bulge) {
        if (const auto arc = math::arcFromBulge(from, to, bulge))
            add(*arc);
        else
            refuse();
    }
    void refuse() { message("Arc does not exist."); }

    /// From the last line or arc on, in its direction.
    Dialogue continued(Ask& ask, CurveEnd from) {
        const Answer end = co_await ask.point("Specify end point of arc:", {}, from.point);
        if (end.isPoint())
            addBulged(from.point, end.point, math::bulgeFromTangent(from.point, from.direction, end.point));
    }

    Dialogue startFirst(Ask& ask, Vector2 start) {
        const Answer second = co_await ask.point("Specify second point of arc or [Center/End]:", "Center End", start);
        if (second.is("CENTER")) {
            const Answer center = co_await ask.point("Specify center point of arc:", {}, start);
            if (center.isPoint()) co_await aboutCenter(ask, center.point, start);
        } else if (second.is("END")) {
            const Answer end = co_await ask.point("Specify end point of arc:", {}, start);
            if (end.isPoint()) co_await betweenEnds(ask, start, end.point);
        } else if (second.isPoint()) {
            for (;;) {
                const Answer end = co_await ask.point("Specify end point of arc:", {}, second.point);
                if (!end.isPoint()) co_return;
                if (const auto arc = math::arcThrough(start, second.point, end.point)) co_return add(*arc);
                message("The three points lie on one line.");
            }
        }
    }

    Dialogue centerFirst(Ask& ask) {
        const Answer center = co_await ask.point("Specify center point of arc:");
        if (!center.isPoint()) co_return;
        const Answer start = co_await ask.point("Specify start point of arc:", {}, center.point);
        if (start.isPoint()) co_await aboutCenter(ask, center.point, start.point);
    }

    /// Counter-clockwise from a point about a centre, to an end point's direction, over an angle or over a chord.
    Dialogue aboutCenter(Ask& ask, Vector2 center, Vector2 start) {
        const Vector2 arm = start - center;
        if (arm == Vector2{}) co_return refuse();
        const auto arc = [&](double sweep) { return CircularArc{center, arm.length(), arm.angle(), sweep}; };
        for (;;) {
            const Answer end =
                co_await ask.point("Specify end point of arc or [Angle/chord Length]:", "Angle Length", center);
            if (end.isPoint()) {
                if (end.point == center) {
                    message("Invalid input.");
                    continue;
                }
                co_return add(arc(math::sweepAngle(arm.angle(), (end.point - center).angle())));
            }
            if (end.is("ANGLE")) {
                const std::optional<double> angle = co_await askIncluded(ask, center);
                if (angle) add(arc(*angle));
                co_return;
            }
            if (!end.is("LENGTH")) co_return;
            const Answer chord = co_await ask.distance("Specify length of chord:", {}, start);
            if (!chord.isNumber()) co_return;
            const double half = std::abs(chord.number) / (2.0 * arm.length());
            if (half > 0.0 && half <= 1.0) {
                const double sweep = 2.0 * std::asin(half);
                co_return add(arc(chord.number > 0.0 ? sweep : math::kTwoPi - sweep));
            }
            message("Invalid value.");
        }
    }

    Task<std::optional<double>> askIncluded(Ask& ask, Vector2 base) {
        for (;;) {
            const Answer answer = co_await ask.angle("Specify included angle:", {}, base);
            if (!answer.isNumber()) co_return std::nullopt;
            const double angle = includedAngle(answer, drawing());
            if (angle != 0.0 && std::abs(angle) < math::kTwoPi) co_return angle;
            message("Invalid value.");
        }
    }

    Dialogue betweenEnds(Ask& ask, Vector2 start, Vector2 end) {
        const Answer center = co_await ask.point(
            "Specify center point of arc or [Angle/Direction/Radius]:", "Angle Direction Radius", end);
        if (center.isPoint()) {
            const Vector2 arm = start - center.point;
            add({center.point, arm.length(), arm.angle(), math::sweepAngle(arm.angle(), (end - center.point).angle())});
        } else if (center.is("ANGLE")) {
            const std::optional<double> angle = co_await askIncluded(ask, start);
            if (angle) addBulged(start, end, math::bulgeFromSweep(*angle));
        } else if (center.is("DIRECTION")) {
            const Answer direction =
                co_await ask.angle("Specify tangent direction for the start point of arc:", {}, start);
            if (!direction.isNumber()) co_return;
            const Vector2 tangent = math::unitAt(worldDirection(direction, drawing()));
            addBulged(start, end, math::bulgeFromTangent(start, tangent, end));
        } else if (center.is("RADIUS")) {
            Range range;
            range.nonZero = true;
            const Answer radius = co_await ask.distance("Specify radius of arc:", {}, end, range);
            if (!radius.isNumber()) co_return;
            const double half = start.distance_to(end) / (2.0 * std::abs(radius.number));
            if (!(half > 0.0) || half > 1.0 + 1e-12) co_return refuse();
            // A negative radius asks for the longer of the two arcs.
            const double sweep = 2.0 * std::asin(std::min(half, 1.0));
            addBulged(start, end, math::bulgeFromSweep(radius.number > 0.0 ? sweep : math::kTwoPi - sweep));
        }
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Arc, "ARC", "Arc", "Draw", {"A"})

}  // namespace kova::cmd::commands
