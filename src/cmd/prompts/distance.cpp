#include "cmd/prompts/distance.hpp"

#include "engine/inquiry/value_text.hpp"

namespace kova::cmd {

namespace {

using math::Vector2;

void report(const Ask& ask, engine::Drawing& drawing, const Vector2& from, const Vector2& to) {
    const engine::Ucs& ucs = drawing.ucs;
    const Vector2 d = ucs.fromWorld(to) - ucs.fromWorld(from);
    engine::publishSysVar(drawing, "DISTANCE", from.distance_to(to));
    ask.message("Distance = " + lengthText(drawing, from.distance_to(to)) +
                ",  Angle in XY Plane = " + angleText(drawing, d.angle()) + ",  Angle from XY Plane = 0");
    ask.message("Delta X = " + lengthText(drawing, d.x) + ",  Delta Y = " + lengthText(drawing, d.y) +
                ",   Delta Z = " + lengthText(drawing, 0.0));
}

Dialogue severalPoints(Ask& ask, engine::Drawing& drawing, Vector2 start) {
    std::vector<Vector2> points(1, start);
    for (;;) {
        const Answer answer =
            co_await ask.point("Specify next point or [Undo/Total] <Total>:", "Undo Total", points.back());
        if (answer.isPoint()) {
            points.push_back(answer.point);
        } else if (answer.is("UNDO")) {
            if (points.size() > 1) points.pop_back();
        } else {
            co_return;
        }
        double total = 0.0;
        for (std::size_t i = 1; i < points.size(); ++i) total += points[i - 1].distance_to(points[i]);
        ask.message("Distance = " + lengthText(drawing, total));
        engine::publishSysVar(drawing, "DISTANCE", total);
    }
}

}  // namespace

Task<bool> measureDistance(Ask& ask, doc::Document& document) {
    const Answer first = co_await ask.point("Specify first point:");
    if (!first.isPoint()) co_return false;
    const Answer second = co_await ask.point("Specify second point or [Multiple points]:", "Multiple", first.point);
    if (second.is("MULTIPLE")) co_await severalPoints(ask, document.drawing(), first.point);
    if (second.isPoint()) report(ask, document.drawing(), first.point, second.point);
    co_return true;
}

}  // namespace kova::cmd
