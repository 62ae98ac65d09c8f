#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/polyline.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

constexpr const char* kCircumscribed = "polygonCircumscribed";

class PolygonTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const int known = engine::sysVarInt(drawing(), "POLYSIDES", 4);
        std::string prompt = withDefault("Enter number of sides", std::to_string(known));
        const Answer answer = co_await ask.integer(std::move(prompt), 3, 1024);
        const int sides = answer.isNumber() ? answer.integer() : known;
        engine::setSysVar(drawing(), "POLYSIDES", sides);
        const Answer center = co_await ask.point("Specify center of polygon or [Edge]:", "Edge");
        if (center.is("EDGE")) co_return co_await byEdge(ask, sides);
        if (center.isPoint()) co_await byCenter(ask, sides, center.point);
    }

private:
    Dialogue byCenter(Ask& ask, int sides, Vector2 center) {
        const bool last = remembered(document(), kCircumscribed, 0.0) != 0.0;
        const Answer kind =
            co_await ask.keyword(last ? "Enter an option [Inscribed in circle/Circumscribed about circle] <C>:"
                                      : "Enter an option [Inscribed in circle/Circumscribed about circle] <I>:",
                                 "Inscribed Circumscribed");
        const bool circumscribed = kind.isEnter() ? last : kind.is("CIRCUMSCRIBED");
        remember(document(), kCircumscribed, circumscribed ? 1.0 : 0.0);
        const Answer radius = co_await ask.distance("Specify radius of circle:", {}, center, kPositive);
        if (!radius.isNumber()) co_return;
        const double half = math::kPi / sides;
        // A typed radius puts a side at the bottom; a point is a corner, or the middle of a side.
        double first = ucsRotation(drawing()) - math::kPi / 2.0 - half;
        if (!isTyped(radius)) first = (radius.point - center).angle() - (circumscribed ? half : 0.0);
        add(center, circumscribed ? radius.number / std::cos(half) : radius.number, first, sides);
    }

    Dialogue byEdge(Ask& ask, int sides) {
        const Answer a = co_await ask.point("Specify first endpoint of edge:");
        if (!a.isPoint()) co_return;
        for (;;) {
            const Answer b = co_await ask.point("Specify second endpoint of edge:", {}, a.point);
            if (!b.isPoint()) co_return;
            const Vector2 edge = b.point - a.point;
            const double half = math::kPi / sides;
            const Vector2 center = a.point + edge / 2.0 + edge.perpendicular() * (0.5 / std::tan(half));
            if (edge != Vector2{})
                co_return add(center, center.distance_to(a.point), (a.point - center).angle(), sides);
            message("The two points coincide.");
        }
    }

    void add(const Vector2& center, double radius, double first, int sides) {
        if (!center.is_finite() || !std::isfinite(radius) || !(radius > 0.0)) return message("Invalid input.");
        std::vector<Vector2> points;
        points.reserve(static_cast<std::size_t>(sides));
        for (int i = 0; i < sides; ++i)
            points.push_back(center + radius * math::unitAt(first + i * math::kTwoPi / sides));
        addNew(document(), std::make_unique<engine::PolylineEntity>(std::move(points), true), "POLYGON");
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Polygon, "POLYGON", "Polygon", "Draw", {"POL"})

}  // namespace kova::cmd::commands
