#include "cmd/dialogue.hpp"
#include "cmd/format.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

/// DIST: distance and direction from point to point, or the length of a way over several points.
class DistTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer first = co_await ask.point("Specify first point:");
        if (!first.isPoint()) co_return;
        const Answer second = co_await ask.point("Specify second point or [Multiple points]:", "Multiple", first.point);
        if (second.is("MULTIPLE")) co_return co_await severalPoints(ask, first.point);
        if (second.isPoint()) report(first.point, second.point);
    }

private:
    void publish(double distance) const { engine::publishSysVar(drawing(), "DISTANCE", distance); }

    void report(const Vector2& from, const Vector2& to) const {
        const engine::Ucs& ucs = drawing().ucs;
        const Vector2 d = ucs.fromWorld(to) - ucs.fromWorld(from);
        publish(from.distance_to(to));
        message("Distance = " + lengthText(drawing(), from.distance_to(to)) +
                ",  Angle in XY Plane = " + angleText(drawing(), d.angle()) + ",  Angle from XY Plane = 0");
        message("Delta X = " + lengthText(drawing(), d.x) + ",  Delta Y = " + lengthText(drawing(), d.y) +
                ",   Delta Z = " + lengthText(drawing(), 0.0));
    }

    Dialogue severalPoints(Ask& ask, Vector2 start) {
        std::vector<Vector2> points{start};
        double total = 0.0;
        for (;;) {
            const Answer answer =
                co_await ask.point("Specify next point or [Undo/Total] <Total>:", "Undo Total", points.back());
            if (answer.isPoint()) {
                points.push_back(answer.point);
            } else if (answer.is("UNDO")) {
                if (points.size() > 1) points.pop_back();
            } else {
                break;
            }
            total = 0.0;
            for (std::size_t i = 1; i < points.size(); ++i) total += points[i - 1].distance_to(points[i]);
            message("Distance = " + lengthText(drawing(), total));
        }
        publish(total);
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Dist, "DIST", "Distance", "Inquiry", {"DI"})

}  // namespace kova::cmd::commands
