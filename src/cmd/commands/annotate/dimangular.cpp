#include "cmd/prompts/dimension_tool.hpp"
#include "edit/new_entities.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/dimensions/dimension_geometry.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd::commands {

namespace {

using engine::DimensionType;
using math::Vector2;

class DimAngularTool final : public DimensionTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        start(DimensionType::Angular3Point);
        const bool ready = co_await askSides(ask);
        if (!ready) co_return;
        if (!engine::angularFrame(dim_)) co_return message("The angle has no sides: its points coincide.");
        std::optional<Vector2> quadrant;
        for (;;) {
            const Answer at = co_await ask.point("Specify dimension arc line location or [Mtext/Text/Angle/Quadrant]:",
                                                 "Mtext Text Angle Quadrant");
            if (at.isEnter()) co_return;
            if (at.isPoint()) {
                locate(at.point, quadrant);
                break;
            }
            if (at.is("QUADRANT")) {
                const Answer point = co_await ask.point("Specify quadrant:");
                if (point.isPoint()) quadrant = point.point;
                continue;
            }
            co_await takeTextOption(ask, at);
        }
        if (dim_.kind() == DimensionType::Angular2Line)
            place("DIMANGULAR", {1, 2, 3, 4});
        else
            place("DIMANGULAR", {1, 2, 3});
    }

private:
    Vector2 center() const {
        const auto frame = engine::angularFrame(dim_);
        return frame ? frame->center : dim_.def3;
    }

    /// In a chosen quadrant the arc stays, however far round the location lies.
    void locate(const Vector2& p, const std::optional<Vector2>& quadrant) {
        dim_.dimLine = p;
        if (quadrant) dim_.dimLine = center() + (*quadrant - center()).normalized() * p.distance_to(center());
        takeUserText(p);
    }

    Task<bool> askSides(Ask& ask) {
        const Answer first =
            co_await askDimensioned(ask, "Select arc, circle, line, or <specify vertex>:", hasPiece);
        if (first.isEnter()) {
            const bool given = co_await askVertex(ask);
            co_return given;
        }
        const auto piece = pieceAt(document(), first);
        if (!piece) co_return false;
        if (!piece->round) {
            const bool given = co_await askSecondLine(ask, *piece);
            co_return given;
        }
        dim_.def3 = piece->arc.center;
        dim_.dimLine = first.point;
        if (!piece->full) {
            dim_.def1 = piece->a;
            dim_.def2 = piece->b;
            dim_.dimLine = dim_.def3 + math::unitAt(piece->arc.start + piece->arc.sweep / 2.0) * piece->arc.radius;
            co_return true;
        }
        dim_.def1 = dim_.def3 + (first.point - dim_.def3).normalized() * piece->arc.radius;
        const Answer second = co_await ask.point("Specify second angle endpoint:");
        if (!second.isPoint()) co_return false;
        dim_.def2 = second.point;
        co_return true;
    }

    Task<bool> askVertex(Ask& ask) {
        const Answer vertex = co_await ask.point("Specify angle vertex:");
        if (!vertex.isPoint()) co_return false;
        const Answer first = co_await ask.point("Specify first angle endpoint:", "", vertex.point);
        if (!first.isPoint()) co_return false;
        const Answer second = co_await ask.point("Specify second angle endpoint:", "", vertex.point);
        if (!second.isPoint()) co_return false;
        dim_.def3 = vertex.point;
        dim_.def1 = first.point;
        dim_.def2 = second.point;
        dim_.dimLine = (first.point + second.point) / 2.0;
        co_return true;
    }

    Task<bool> askSecondLine(Ask& ask, PickedPiece one) {
        dim_.subType = DimensionType::Angular2Line;
        dim_.def1 = one.a;
        dim_.def2 = one.b;
        for (;;) {
            const Answer second = co_await askDimensioned(ask, "Select second line:", hasPiece);
            if (!second.isObject()) co_return false;
            const auto other = pieceAt(document(), second);
            if (!other || other->round) {
                message("Object cannot be used here.");
                continue;
            }
            dim_.def3 = other->a;
            dim_.def4 = other->b;
            dim_.dimLine = (one.a + other->a) / 2.0;
            if (engine::angularFrame(dim_)) co_return true;
            message("The lines are parallel.");
        }
    }
};

/// DIMARC: the length along an arc or a polyline's arc.
class DimArcTool final : public DimensionTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        start(DimensionType::ArcLength);
        const bool ready = co_await askArc(ask);
        if (!ready) co_return;
        bool leader = false;
        for (;;) {
            // A leader makes sense where the arc is long enough to leave a doubt.
            const bool wide = piece_.arc.sweep > math::kPi / 2.0;
            std::string prompt = "Specify arc length dimension location, or [Mtext/Text/Angle/Partial";
            if (wide) prompt += leader ? "/No leader" : "/Leader";
            prompt += "]:";
            const char* words = !wide    ? "Mtext Text Angle Partial"
                                : leader ? "Mtext Text Angle Partial No"
                                         : "Mtext Text Angle Partial Leader";
            const Answer at = co_await ask.point(std::move(prompt), words);
            if (at.isEnter()) co_return;
            if (at.isPoint()) {
                locate(at.point, leader);
                break;
            }
            if (at.is("LEADER") || at.is("NO")) {
                leader = at.is("LEADER");
                continue;
            }
            if (at.is("PARTIAL")) {
                co_await askPart(ask);
                continue;
            }
            co_await takeTextOption(ask, at);
        }
        if (dim_.partialArc)
            placeLinked("DIMARC", {});
        else
            placeOnArc("DIMARC", piece_);
    }

private:
    Task<bool> askArc(Ask& ask) {
        for (;;) {
            const Answer picked =
                co_await askDimensioned(ask, "Select arc or polyline arc segment:", hasRoundPiece);
            if (!picked.isObject()) co_return false;
            const auto piece = pieceAt(document(), picked);
            if (piece && piece->round && !piece->full) {
                piece_ = *piece;
                break;
            }
            message("Object cannot be used here.");
        }
        dim_.def1 = piece_.a;
        dim_.def2 = piece_.b;
        dim_.def3 = piece_.arc.center;
        dim_.dimLine = (piece_.a + piece_.b) / 2.0;
        co_return true;
    }

    /// A part of the arc between two points on it, in the arc's own direction.
    Dialogue askPart(Ask& ask) {
        const Answer first = co_await ask.point("Specify first point for arc length dimension:");
        if (!first.isPoint()) co_return;
        const Answer second = co_await ask.point("Specify second point for arc length dimension:");
        if (!second.isPoint()) co_return;
        const engine::MeasuredArc& arc = piece_.arc;
        const auto along = [&](const Vector2& p) {
            const Vector2 on = math::closestOnArc(p, arc.center, arc.radius, arc.start, arc.start + arc.sweep);
            const double turn = math::normalizeAngle((on - arc.center).angle() - arc.start);
            return turn > arc.sweep + 1e-9 ? 0.0 : turn;  // rounding just before the start
        };
        const double a = along(first.point);
        const double b = along(second.point);
        if (a == b) co_return message("The two points coincide.");
        dim_.partialArc = true;
        dim_.def1 = arc.center + math::unitAt(arc.start + std::min(a, b)) * arc.radius;
        dim_.def2 = arc.center + math::unitAt(arc.start + std::max(a, b)) * arc.radius;
    }

    void locate(const Vector2& p, bool leader) {
        dim_.dimLine = p;
        takeUserText(p);
        dim_.def4 = {};
        if (!leader) return;
        const auto& arc = piece_.arc;
        dim_.def4 = math::closestOnArc(p, arc.center, arc.radius, arc.start, arc.start + arc.sweep);
    }

    PickedPiece piece_;
};

}  // namespace

KOVA_TOOL_COMMAND(DimAngular, "DIMANGULAR", "Angular Dimension", "Annotate", {"DAN", "DIMANG"})
KOVA_TOOL_COMMAND(DimArc, "DIMARC", "Arc Length Dimension", "Annotate", {"DAR"})

}  // namespace kova::cmd::commands
