#include "engine/entities/spline.hpp"

#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "cmd/registry.hpp"
#include "engine/curves/spline_edit.hpp"
#include "math/curves/curves.hpp"
#include "math/curves/nurbs.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

/// SPLINE: through fit points, or by control vertices.
class SplineTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        for (;;) {
            const bool vertices = engine::sysVarInt(drawing(), "SPLMETHOD") != 0;
            const Answer first = co_await ask.point(vertices ? "Specify first point or [Method/Degree/Object]:"
                                                             : "Specify first point or [Method/Knots/Object]:",
                                                    vertices ? "Method Degree Object" : "Method Knots Object");
            if (first.isPoint()) {
                points_.push_back(first.point);
                if (vertices)
                    co_await askVertices(ask);
                else
                    co_await askFit(ask);
                co_return;
            }
            if (first.is("METHOD")) {
                const Answer method = co_await ask.keyword(vertices ? "Enter spline creation method [Fit/CV] <CV>:"
                                                                    : "Enter spline creation method [Fit/CV] <Fit>:",
                                                           "Fit CV");
                if (!method.isEnter()) engine::setSysVar(drawing(), "SPLMETHOD", method.is("CV") ? 1 : 0);
            } else if (first.is("KNOTS")) {
                co_await askKnots(ask);
            } else if (first.is("DEGREE")) {
                std::string prompt =
                    withDefault("Enter degree of spline", std::to_string(engine::sysVarInt(drawing(), "SPLDEGREE", 3)));
                const Answer degree = co_await ask.integer(std::move(prompt), 1, 5);
                if (degree.isNumber()) engine::setSysVar(drawing(), "SPLDEGREE", degree.integer());
            } else if (first.is("OBJECT")) {
                co_return co_await convert(ask);
            } else {
                co_return;
            }
        }
    }

private:
    Dialogue askKnots(Ask& ask) {
        static constexpr const char* kWays[] = {"Chord", "Square root", "Uniform"};
        const int now = std::clamp(engine::sysVarInt(drawing(), "SPLKNOTS"), 0, 2);
        std::string prompt = withDefault("Enter knot parameterization [Chord/Square root/Uniform]", kWays[now]);
        const Answer way = co_await ask.keyword(std::move(prompt), "Chord Square Uniform");
        if (!way.isEnter()) engine::setSysVar(drawing(), "SPLKNOTS", way.is("CHORD") ? 0 : way.is("SQUARE") ? 1 : 2);
    }

    Dialogue askFit(Ask& ask) {
        Vector2 startTangent;
        Vector2 endTangent;
        bool closed = false;
        for (;;) {
            const std::size_t n = points_.size();
            const Answer next = co_await ask.point(n == 1   ? "Enter next point or [start Tangency]:"
                                                   : n == 2 ? "Enter next point or [end Tangency/Undo]:"
                                                            : "Enter next point or [end Tangency/Undo/Close]:",
                                                   n == 1   ? "Tangency"
                                                   : n == 2 ? "Tangency Undo"
                                                            : "Tangency Undo Close",
                                                   points_.back());
            if (next.isPoint()) {
                if (next.point != points_.back()) points_.push_back(next.point);
                continue;
            }
            if (next.is("UNDO")) {
                points_.pop_back();
                continue;
            }
            if (next.is("TANGENCY")) {
                const Answer tangent =
                    co_await ask.angle(n == 1 ? "Specify start tangent:" : "Specify end tangent:", {}, points_.back());
                if (tangent.isNumber()) {
                    const Vector2 direction = math::unitAt(worldDirection(tangent, drawing()));
                    if (n == 1)
                        startTangent = direction;
                    else
                        endTangent = direction;
                }
                if (n == 1) continue;
                break;
            }
            closed = next.is("CLOSE");
            break;
        }
        if (points_.size() < 2) co_return;
        auto spline = std::make_unique<engine::SplineEntity>();
        spline->closed = closed;
        spline->fitPoints = points_;
        const int knots = std::clamp(engine::sysVarInt(drawing(), "SPLKNOTS"), 0, 2);
        math::CubicSpline curve = math::interpolateCubic(points_, closed, startTangent, endTangent, 1.0 - 0.5 * knots);
        if (curve.points.empty()) co_return message("Invalid input.");
        spline->controlPoints = std::move(curve.points);
        spline->knots = std::move(curve.knots);
        addNew(document(), std::move(spline), "SPLINE");
    }

    Dialogue askVertices(Ask& ask) {
        const int degree = std::clamp(engine::sysVarInt(drawing(), "SPLDEGREE", 3), 1, 5);
        bool closed = false;
        for (;;) {
            const std::size_t n = points_.size();
            const Answer next = co_await ask.point(n == 1   ? "Enter next point:"
                                                   : n == 2 ? "Enter next point or [Undo]:"
                                                            : "Enter next point or [Close/Undo]:",
                                                   n == 1   ? ""
                                                   : n == 2 ? "Undo"
                                                            : "Close Undo",
                                                   points_.back());
            if (next.isPoint()) {
                points_.push_back(next.point);
            } else if (next.is("UNDO")) {
                points_.pop_back();
            } else {
                closed = next.is("CLOSE");
                break;
            }
        }
        if (auto spline = engine::splineByVertices(points_, degree, closed))
            addNew(document(), std::move(spline), "SPLINE");
    }

    /// Spline-fit polylines become the splines that they approximate.
    Dialogue convert(Ask& ask) {
        const Answer selected = co_await ask.selection("Select spline-fit polylines:");
        const bool keep = engine::sysVarInt(drawing(), "DELOBJ", 3) == 0;
        std::size_t made = 0;
        const doc::GroupScope group(document(), "SPLINE");
        for (const std::uint64_t id : selected.ids) {
            auto* polyline = dynamic_cast<engine::PolylineEntity*>(drawing().findById(id));
            auto spline = polyline != nullptr ? engine::splineOfFrame(*polyline) : nullptr;
            if (!spline) continue;
            if (keep)
                document().addEntity(std::move(spline));
            else
                document().replaceEntity(*polyline, std::move(spline));
            ++made;
        }
        if (made == 0) message("Only spline fitted polylines can be converted to splines.");
    }

    std::vector<Vector2> points_;
};

}  // namespace

KOVA_TOOL_COMMAND(Spline, "SPLINE", "Spline", "Draw", {"SPL"})

}  // namespace kova::cmd::commands
