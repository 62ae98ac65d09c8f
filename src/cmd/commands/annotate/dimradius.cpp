#include "cmd/prompts/dimension_tool.hpp"
#include "edit/new_entities.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/line.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd::commands {

namespace {

using engine::DimensionType;
using math::Vector2;

/// What the commands about one circle or arc share.
class RoundTool : public DimensionTool {
protected:
    Task<std::optional<PickedPiece>> askRound(Ask& ask) {
        for (;;) {
            const Answer picked = co_await askDimensioned(ask, "Select arc or circle:", hasRoundPiece);
            if (!picked.isObject()) co_return std::nullopt;
            auto piece = pieceAt(document(), picked);
            if (piece && piece->round) co_return piece;
            message("Object cannot be used here.");
        }
    }

    /// The dimension line's place with the text options; nothing: given up.
    Task<std::optional<Vector2>> askLocation(Ask& ask, Vector2 center) {
        for (;;) {
            const Answer at =
                co_await ask.point("Specify dimension line location or [Mtext/Text/Angle]:", kTextOptions, center);
            if (at.isEnter()) co_return std::nullopt;
            if (at.isPoint()) co_return at.point;
            co_await takeTextOption(ask, at);
        }
    }

    /// From the centre towards a point; to the right from the centre itself.
    static Vector2 towards(const engine::MeasuredArc& arc, const Vector2& p) {
        const Vector2 direction = (p - arc.center).normalized();
        return direction == Vector2{} ? Vector2{1, 0} : direction;
    }
};

class DimRadiusTool final : public RoundTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        start(DimensionType::Radius);
        const std::optional<PickedPiece> piece = co_await askRound(ask);
        if (!piece) co_return;
        const engine::MeasuredArc& arc = piece->arc;
        dim_.def1 = arc.center;
        dim_.def2 = arc.center + Vector2{arc.radius, 0};
        const std::optional<Vector2> at = co_await askLocation(ask, arc.center);
        if (!at) co_return;
        dim_.def2 = arc.center + towards(arc, *at) * arc.radius;
        dim_.dimLine = *at;
        placeOnArc("DIMRADIUS", *piece);
    }
};

class DimDiameterTool final : public RoundTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        start(DimensionType::Diameter);
        const std::optional<PickedPiece> piece = co_await askRound(ask);
        if (!piece) co_return;
        const engine::MeasuredArc& arc = piece->arc;
        dim_.def1 = arc.center + Vector2{arc.radius, 0};
        dim_.def2 = arc.center - Vector2{arc.radius, 0};
        const std::optional<Vector2> at = co_await askLocation(ask, arc.center);
        if (!at) co_return;
        const Vector2 arm = towards(arc, *at) * arc.radius;
        dim_.def1 = arc.center + arm;
        dim_.def2 = arc.center - arm;
        dim_.dimLine = *at;
        placeOnArc("DIMDIAMETER", *piece);
    }
};

/// DIMJOGGED: a radius whose centre lies off the sheet.
class DimJoggedTool final : public RoundTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        start(DimensionType::Radius);
        const std::optional<PickedPiece> piece = co_await askRound(ask);
        if (!piece) co_return;
        const engine::MeasuredArc& arc = piece->arc;
        dim_.def1 = arc.center;
        dim_.def2 = arc.center + Vector2{arc.radius, 0};
        const Answer center = co_await ask.point("Specify center location override:");
        if (!center.isPoint()) co_return;
        dim_.jogged = true;
        dim_.jogCenter = center.point;
        const std::optional<Vector2> at = co_await askLocation(ask, arc.center);
        if (!at) co_return;
        dim_.def2 = arc.center + towards(arc, *at) * arc.radius;
        dim_.dimLine = *at;
        const Answer jog = co_await ask.point("Specify jog location:");
        dim_.jogPoint = jog.isPoint() ? jog.point : (dim_.jogCenter + dim_.def2) / 2.0;
        placeOnArc("DIMJOGGED", *piece);
    }
};

/// DIMCENTER: the centre mark, and with a negative DIMCEN centre lines, as plain lines.
class DimCenterTool final : public RoundTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const engine::DimStyle style = drawing().effectiveDimStyle();
        const double mark = std::abs(style.centerMark) * dimensionScale(drawing(), style);
        if (!(mark > 0.0)) co_return message("Center marks are off: DIMCEN is 0.");
        const std::optional<PickedPiece> piece = co_await askRound(ask);
        if (!piece) co_return;
        const double radius = piece->arc.radius;
        const doc::GroupScope group(document(), "DIMCENTER");
        const Vector2 x = math::unitAt(ucsRotation(drawing()));
        for (const Vector2& axis : {x, x.perpendicular()}) {
            line(piece->arc.center, axis, -mark, mark);
            // The lines start one mark beyond the mark and end one mark outside the circle.
            if (style.centerMark > 0.0 || !(radius + mark > 2.0 * mark)) continue;
            line(piece->arc.center, axis, 2.0 * mark, radius + mark);
            line(piece->arc.center, axis, -2.0 * mark, -radius - mark);
        }
    }

private:
    void line(const Vector2& center, const Vector2& axis, double from, double to) {
        auto entity = std::make_unique<engine::LineEntity>(center + axis * from, center + axis * to);
        applyCurrentValues(document(), *entity);
        document().addEntity(std::move(entity));
    }
};

}  // namespace

KOVA_TOOL_COMMAND(DimRadius, "DIMRADIUS", "Radius Dimension", "Annotate", {"DRA", "DIMRAD"})
KOVA_TOOL_COMMAND(DimDiameter, "DIMDIAMETER", "Diameter Dimension", "Annotate", {"DDI", "DIMDIA"})
KOVA_TOOL_COMMAND(DimJogged, "DIMJOGGED", "Jogged Radius Dimension", "Annotate", {"DJO", "JOG"})
KOVA_TOOL_COMMAND(DimCenter, "DIMCENTER", "Center Mark", "Annotate", {"DCE"})

}  // namespace kova::cmd::commands
