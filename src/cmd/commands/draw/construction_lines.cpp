#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/ray.hpp"
#include "engine/entities/xline.hpp"
#include "engine/model/outline.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

/// The direction of a line, ray, construction line or polyline segment at a pick; nothing for other kinds.
std::optional<Vector2> directionAt(const engine::Entity& entity, const Vector2& p) {
    class Sink final : public engine::OutlineSink {
    public:
        explicit Sink(const Vector2& p) : p_(p) {}
        using OutlineSink::fill;
        using OutlineSink::stroke;
        void stroke(engine::PathView path, const engine::OutlineStyle&, const engine::StrokeOptions&) override {
            const auto place = engine::nearestPlace(path, p_);
            if (!place || place->element == 0) return;
            const engine::PathElement& e = path[place->element];
            if (e.kind != engine::PathElement::Kind::Line && e.kind != engine::PathElement::Kind::Close) return;
            take(place->distance, e.p - path[place->element - 1].p);
        }
        void fill(engine::PathView, const engine::OutlineStyle&, const engine::FillOptions&) override {}
        void text(const engine::TextRun&, const engine::OutlineStyle&) override {}
        void unbounded(const Vector2& base, const Vector2& direction, bool, const engine::OutlineStyle&) override {
            take(std::abs(direction.cross(p_ - base)), direction);
        }
        std::optional<Vector2> found;

    private:
        void take(double distance, const Vector2& direction) {
            if ((found && distance >= least_) || direction == Vector2{}) return;
            least_ = distance;
            found = direction.normalized();
        }
        Vector2 p_;
        double least_ = 0.0;
    };
    Sink sink(p);
    entity.emit(sink, engine::outlineStyle(entity));
    return sink.found;
}

class XlineTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const doc::GroupScope group(document(), "XLINE");
        const Answer first =
            co_await ask.point("Specify a point or [Hor/Ver/Ang/Bisect/Offset]:", "Hor Ver Ang Bisect Offset");
        if (first.isPoint()) {
            for (;;) {
                const Answer through = co_await ask.point("Specify through point:", {}, first.point);
                if (!through.isPoint()) co_return;
                add(first.point, through.point - first.point);
            }
        }
        if (first.is("HOR")) co_return co_await parallel(ask, drawing().ucs.xAxis);
        if (first.is("VER")) co_return co_await parallel(ask, drawing().ucs.yAxis);
        if (first.is("ANG")) co_return co_await byAngle(ask);
        if (first.is("BISECT")) co_return co_await bisect(ask);
        if (first.is("OFFSET")) co_await offset(ask);
    }

private:
    void add(const Vector2& base, const Vector2& direction) {
        const Vector2 unit = direction / direction.length();
        if (!unit.is_finite()) return message("The two points coincide.");
        addNew(document(), std::make_unique<engine::XlineEntity>(base, unit), "XLINE");
    }

    Dialogue parallel(Ask& ask, Vector2 direction) {
        for (;;) {
            const Answer through = co_await ask.point("Specify through point:");
            if (!through.isPoint()) co_return;
            add(through.point, direction);
        }
    }

    Dialogue byAngle(Ask& ask) {
        const Answer angle = co_await ask.angle("Enter angle of xline (0) or [Reference]:", "Reference");
        if (angle.is("REFERENCE")) {
            const Answer line = co_await ask.object("Select a line object:", {}, hasDirection);
            const engine::Entity* entity = line.isObject() ? drawing().findById(line.id) : nullptr;
            if (entity == nullptr) co_return;
            const Vector2 reference = *directionAt(*entity, line.point);
            const Answer turn = co_await ask.angle("Enter angle of xline <0>:");
            const double by = turn.isNumber() ? includedAngle(turn, drawing()) : 0.0;
            co_return co_await parallel(ask, math::unitAt(reference.angle() + by));
        }
        const double direction = angle.isNumber() ? worldDirection(angle, drawing()) : ucsRotation(drawing());
        co_await parallel(ask, math::unitAt(direction));
    }

    static bool hasDirection(const engine::Entity& entity) { return directionAt(entity, {}).has_value(); }

    Dialogue bisect(Ask& ask) {
        const Answer vertex = co_await ask.point("Specify angle vertex point:");
        if (!vertex.isPoint()) co_return;
        const Answer start = co_await ask.point("Specify angle start point:", {}, vertex.point);
        if (!start.isPoint() || start.point == vertex.point) co_return;
        for (;;) {
            const Answer end = co_await ask.point("Specify angle end point:", {}, vertex.point);
            if (!end.isPoint()) co_return;
            const Vector2 a = (start.point - vertex.point) / start.point.distance_to(vertex.point);
            const Vector2 b = (end.point - vertex.point) / end.point.distance_to(vertex.point);
            // A straight angle has its bisector across.
            add(vertex.point, (a + b).length() > 1e-9 || !b.is_finite() ? a + b : a.perpendicular());
        }
    }

    Dialogue offset(Ask& ask) {
        const double known = engine::sysVarReal(drawing(), "OFFSETDIST", -1.0);
        std::string prompt = withDefault("Specify offset distance or [Through]",
                                         known > 0.0 ? lengthDefault(drawing(), known) : std::string("Through"));
        const Answer distance = co_await ask.distance(std::move(prompt), "Through", {}, kPositive);
        double by = distance.isNumber() ? distance.number : distance.isEnter() ? known : -1.0;
        if (distance.isNumber()) engine::setSysVar(drawing(), "OFFSETDIST", by);
        for (;;) {
            const Answer line = co_await ask.object("Select a line object:", {}, hasDirection);
            const engine::Entity* entity = line.isObject() ? drawing().findById(line.id) : nullptr;
            if (entity == nullptr) co_return;
            const Vector2 direction = *directionAt(*entity, line.point);
            const Vector2 on = entity->nearestPoint(line.point);
            const Answer side =
                co_await ask.point(by > 0.0 ? "Specify side to offset:" : "Specify through point:", {}, on);
            if (!side.isPoint()) co_return;
            if (!(by > 0.0)) {
                add(side.point, direction);
                continue;
            }
            const double left = direction.cross(side.point - on) < 0.0 ? -1.0 : 1.0;
            add(on + direction.perpendicular() * (by * left), direction);
        }
    }
};

class RayTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer start = co_await ask.point("Specify start point:");
        if (!start.isPoint()) co_return;
        const doc::GroupScope group(document(), "RAY");
        for (;;) {
            const Answer through = co_await ask.point("Specify through point:", {}, start.point);
            if (!through.isPoint()) co_return;
            const Vector2 unit = (through.point - start.point) / start.point.distance_to(through.point);
            if (unit.is_finite())
                addNew(document(), std::make_unique<engine::RayEntity>(start.point, unit), "RAY");
            else
                message("The two points coincide.");
        }
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Xline, "XLINE", "Construction Line", "Draw", {"XL"})
KOVA_TOOL_COMMAND(Ray, "RAY", "Ray", "Draw")

}  // namespace kova::cmd::commands
