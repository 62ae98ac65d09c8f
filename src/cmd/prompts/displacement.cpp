#include "cmd/prompts/displacement.hpp"

#include "cmd/prompts/text_or_point.hpp"

namespace kova::cmd {

using math::Vector2;

Task<double> askReference(Ask& ask, doc::Document& document, std::string prompt, bool angle, double fallback) {
    for (;;) {
        // Asked as a text: the first of two points may be typed relative to the last point, which must not count as
        // the first point itself.
        const Answer answer = co_await ask.text(prompt);
        if (answer.isEnter()) co_return fallback;
        const PointContext context = PointContext::of(document.drawing());
        const std::optional<double> typed = angle ? parseAngleInput(answer.text, context) : parseNumber(answer.text);
        if (typed) {
            if (angle || *typed > 0.0) co_return *typed;
            ask.message("Invalid value.");
            continue;
        }
        std::optional<Vector2> first = ask.lastPoint();
        if (trimmed(answer.text) != "@") {
            const PointOfText typedPoint = co_await pointOfText(ask, document, answer.text, ask.lastPoint());
            if (typedPoint.told) continue;
            first = typedPoint.point;
        }
        if (!first) {
            ask.message("Invalid value.");
            continue;
        }
        const Answer second = co_await ask.point("Specify second point:", {}, *first);
        if (!second.isPoint()) co_return fallback;
        if (second.point == *first) {
            ask.message("The two points coincide.");
            continue;
        }
        co_return angle ? (second.point - *first).angle() : first->distance_to(second.point);
    }
}

Task<std::optional<double>> askByTwoPoints(Ask& ask, bool angle) {
    const Answer first = co_await ask.point("Specify first point:");
    if (!first.isPoint()) co_return std::nullopt;
    for (;;) {
        const Answer second = co_await ask.point("Specify second point:", {}, first.point);
        if (!second.isPoint()) co_return std::nullopt;
        const Vector2 way = second.point - first.point;
        if (way != Vector2{}) co_return angle ? way.angle() : way.length();
        ask.message("The two points coincide.");
    }
}

math::Vector2 displacementOf(const engine::Drawing& drawing, const math::Vector2& point) {
    return point - drawing.ucs.origin;
}

Task<math::Vector2> askDisplacement(Ask& ask, const engine::Drawing& drawing) {
    const Answer first = co_await ask.point("Specify base point or [Displacement] <Displacement>:", "Displacement");
    if (first.isPoint()) {
        const Answer second =
            co_await ask.point("Specify second point or <use first point as displacement>:", {}, first.point);
        co_return second.isPoint() ? second.point - first.point : displacementOf(drawing, first.point);
    }
    const Answer answer = co_await ask.point("Specify displacement <0,0,0>:", {}, math::Vector2{});
    co_return answer.isPoint() ? displacementOf(drawing, answer.point) : math::Vector2{};
}

}  // namespace kova::cmd
