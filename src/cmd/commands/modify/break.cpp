#include "cmd/dialogue.hpp"
#include "cmd/pick_request.hpp"
#include "cmd/registry.hpp"
#include "engine/curves/edit_curve.hpp"

namespace kova::cmd::commands {

namespace {

using engine::EditCurve;
using math::Vector2;

/// BREAK: takes out what lies between two points of a curve; counter-clockwise from the first on circles.
class BreakTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        PickRequest request;
        request.prompt = "Select object:";
        request.usable = [](const engine::Entity& e) { return EditCurve::of(e).has_value(); };
        request.refusal = "Cannot break that object.";
        const Answer picked = co_await askPick(ask, std::move(request));
        if (!picked.isObject()) co_return;
        Vector2 first = picked.point;
        ask.setLastPoint(first);
        Answer second = co_await ask.point("Specify second break point or [First point]:", "@ First");
        if (second.is("First")) {
            const Answer point = co_await ask.point("Specify first break point:");
            if (!point.isPoint()) co_return;
            first = point.point;
            second = co_await ask.point("Specify second break point:", "@");
        }
        if (second.is("@")) second.point = first;
        if (!second.isPoint() && !second.is("@")) co_return;
        engine::Entity* entity = drawing().findById(picked.id);
        if (entity != nullptr) breakAt(*entity, first, second.point);
    }

private:
    void breakAt(engine::Entity& entity, const Vector2& first, const Vector2& second) {
        const auto curve = EditCurve::of(entity);
        if (!curve) return;
        double from = curve->nearest(first);
        double to = curve->nearest(second);
        const auto same = [&](double a, double b) {
            return a == b || curve->pointAt(a).distance_to(curve->pointAt(b)) <= 1e-12 * curve->scale();
        };
        std::vector<std::unique_ptr<engine::Entity>> left;
        if (curve->closed()) {
            const bool whole = from == to || same(from, to);
            if (whole && entity.type() != engine::EntityType::Polyline)
                return message("Arc cannot be full 360 degrees.");
            // A mirrored circle runs clockwise in plan.
            const engine::CurvePiece& piece = curve->pieces().front();
            if (entity.type() == engine::EntityType::Circle && piece.element.a.cross(piece.element.b) < 0.0)
                std::swap(from, to);
            left.push_back(curve->part(to, whole ? to : from));
        } else {
            if (from > to) std::swap(from, to);
            const bool atStart = !curve->isUnbounded() ? same(from, curve->start()) : from == curve->start();
            const bool atEnd = !curve->isUnbounded() && same(to, curve->end());
            if (atStart && atEnd) {
                const doc::GroupScope group(document(), "BREAK");
                document().removeEntity(entity);
                return;
            }
            if ((atStart || atEnd) && same(from, to)) return message("Cannot break that object at its end.");
            if (!atStart) left.push_back(curve->part(curve->start(), from));
            if (!atEnd) left.push_back(curve->part(to, curve->end()));
        }
        std::erase(left, nullptr);
        if (left.empty()) return;
        const doc::GroupScope group(document(), "BREAK");
        document().replaceEntity(entity, std::move(left.front()));
        for (std::size_t i = 1; i < left.size(); ++i) document().addEntity(std::move(left[i]));
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Break, "BREAK", "Break", "Modify", {"BR"})

}  // namespace kova::cmd::commands
