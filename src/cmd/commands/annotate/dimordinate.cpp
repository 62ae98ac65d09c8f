#include "cmd/prompts/dimension_tool.hpp"
#include "edit/new_entities.hpp"
#include "cmd/registry.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd::commands {

namespace {

using engine::DimensionType;
using math::Vector2;

/// DIMORDINATE: the x or y distance of a feature from the origin of the current coordinate system, or from a datum that
/// was given once (option Datum).
class DimOrdinateTool final : public DimensionTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        start(DimensionType::Ordinate);
        dim_.linearRotation = ucsRotation(drawing());
        dim_.def3 = drawing().ucs.origin;
        for (;;) {
            const Answer feature = co_await ask.point("Specify feature location or [Datum]:", "Datum");
            if (feature.isEnter()) co_return;
            if (feature.isPoint()) {
                dim_.def1 = feature.point;
                break;
            }
            const Answer datum = co_await ask.point("Specify datum point:");
            if (datum.isPoint()) dim_.def3 = datum.point;
        }
        dim_.def2 = dim_.def1;
        for (;;) {
            const Answer end = co_await ask.point("Specify leader endpoint or [Xdatum/Ydatum/Mtext/Text/Angle]:",
                                                  "Xdatum Ydatum Mtext Text Angle", dim_.def1);
            if (end.isEnter()) co_return;
            if (end.isPoint()) {
                if (!chosen_) choose(end.point);
                dim_.def2 = end.point;
                break;
            }
            if (end.is("XDATUM") || end.is("YDATUM")) {
                chosen_ = true;
                dim_.subType = end.is("XDATUM") ? DimensionType::OrdinateX : DimensionType::Ordinate;
                continue;
            }
            co_await takeTextOption(ask, end);
        }
        place("DIMORDINATE", {1});
    }

private:
    /// A leader that runs more up or down than sideways measures x.
    void choose(const Vector2& end) {
        const Vector2 x = math::unitAt(dim_.linearRotation);
        const Vector2 way = end - dim_.def1;
        const bool upright = std::abs(way.dot(x.perpendicular())) > std::abs(way.dot(x));
        dim_.subType = upright ? DimensionType::OrdinateX : DimensionType::Ordinate;
    }

    bool chosen_ = false;
};

}  // namespace

KOVA_TOOL_COMMAND(DimOrdinate, "DIMORDINATE", "Ordinate Dimension", "Annotate", {"DOR", "DIMORD"})

}  // namespace kova::cmd::commands
