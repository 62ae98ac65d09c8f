#include "edit/boundary_shapes.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/polyline.hpp"
#include "math/curves/curves.hpp"
#include "math/curves/polygon.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

constexpr const char* kMinimum = "revcloudMinimum";
constexpr const char* kMaximum = "revcloudMaximum";
constexpr const char* kCalligraphy = "revcloudCalligraphy";
constexpr const char* kPolygonal = "revcloudPolygonal";
/// Bulge of the arcs: they stand over 110 degrees.
constexpr double kBulge = 0.5205670505517457;
constexpr double kMaxArcs = 100000;

/// REVCLOUD: a closed polyline of arcs along an outline.
class RevcloudTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        for (;;) {
            message("Minimum arc length: " + lengthText(drawing(), minimum()) + "   Maximum arc length: " +
                    lengthText(drawing(), maximum()) + "   Style: " + (calligraphy() ? "Calligraphy" : "Normal"));
            const Answer first = co_await ask.point(
                "Specify first point or [Arc length/Object/Rectangular/Polygonal/Freehand/Style/Modify] <Object>:",
                "Arc Object Rectangular Polygonal Freehand Style Modify");
            if (first.isPoint()) {
                if (remembered(document(), kPolygonal, 0.0) != 0.0) co_return co_await polygonal(ask, first.point);
                co_return co_await rectangular(ask, first.point);
            }
            if (first.isEnter() || first.is("OBJECT")) co_return co_await fromObject(ask);
            if (first.is("ARC")) {
                co_await askLengths(ask);
            } else if (first.is("RECTANGULAR") || first.is("POLYGONAL")) {
                const bool polygon = first.is("POLYGONAL");
                remember(document(), kPolygonal, polygon ? 1.0 : 0.0);
                const Answer start =
                    co_await ask.point(polygon ? "Specify start point:" : "Specify first corner point:");
                if (!start.isPoint()) co_return;
                if (polygon) co_return co_await polygonal(ask, start.point);
                co_return co_await rectangular(ask, start.point);
            } else if (first.is("STYLE")) {
                const Answer style =
                    co_await ask.keyword(calligraphy() ? "Select arc style [Normal/Calligraphy] <Calligraphy>:"
                                                       : "Select arc style [Normal/Calligraphy] <Normal>:",
                                         "Normal Calligraphy");
                if (!style.isEnter()) remember(document(), kCalligraphy, style.is("CALLIGRAPHY") ? 1.0 : 0.0);
            } else {
                message("That needs a pointer: use Rectangular, Polygonal or Object.");
            }
        }
    }

private:
    double fallback() const {
        // About a fiftieth of what is drawn, as long as nothing was chosen.
        const engine::Limits& limits = drawing().limits;
        const double size = limits.lower.distance_to(limits.upper);
        return size > 0.0 && std::isfinite(size) ? size / 50.0 : 0.5;
    }
    double minimum() const { return remembered(document(), kMinimum, fallback()); }
    double maximum() const { return std::max(minimum(), remembered(document(), kMaximum, minimum())); }
    bool calligraphy() const { return remembered(document(), kCalligraphy, 0.0) != 0.0; }

    Dialogue askLengths(Ask& ask) {
        std::string prompt = withDefault("Specify minimum length of arc", lengthDefault(drawing(), minimum()));
        const Answer least = co_await ask.distance(std::move(prompt), {}, {}, kPositive);
        if (least.isNumber()) {
            remember(document(), kMinimum, least.number);
            remember(document(), kMaximum, least.number);
        }
        Range range;
        range.minimum = minimum();
        range.maximum = 3.0 * minimum();
        prompt = withDefault("Specify maximum length of arc", lengthDefault(drawing(), maximum()));
        const Answer most = co_await ask.distance(std::move(prompt), {}, {}, range);
        if (most.isNumber()) remember(document(), kMaximum, most.number);
    }

    Dialogue rectangular(Ask& ask, Vector2 corner) {
        for (;;) {
            const Answer other = co_await ask.point("Specify opposite corner:", {}, corner);
            if (!other.isPoint()) co_return;
            const Vector2 x = drawing().ucs.xAxis;
            const Vector2 d = other.point - corner;
            const Vector2 along = x * d.dot(x);
            math::BoundaryLoop loop;
            loop.points = {corner, corner + along, other.point, other.point - along};
            if (add(loop, false)) co_return;
        }
    }

    Dialogue polygonal(Ask& ask, Vector2 start) {
        math::BoundaryLoop loop;
        loop.points.push_back(start);
        for (;;) {
            const Answer next = co_await ask.point("Specify next point or [Undo]:", "Undo", loop.points.back());
            if (next.isPoint()) {
                if (next.point != loop.points.back()) loop.points.push_back(next.point);
            } else if (next.is("UNDO")) {
                if (loop.points.size() > 1) loop.points.pop_back();
            } else {
                break;
            }
        }
        if (loop.points.size() < 3) co_return message("Invalid input.");
        const bool inward = co_await askYesNo(ask, "Reverse direction [Yes/No] <No>:", false);
        add(loop, inward);
    }

    Dialogue fromObject(Ask& ask) {
        const Answer picked = co_await ask.object("Select object:");
        if (!picked.isObject()) co_return;
        const ClosedFigures figures = closedFigures(document(), std::span(&picked.id, 1));
        if (figures.loops.empty()) co_return message("Object cannot be used here.");
        const math::BoundaryLoop loop = polylineLoop(figures.loops.front());
        const bool inward = co_await askYesNo(ask, "Reverse direction [Yes/No] <No>:", false);
        const doc::GroupScope group(document(), "REVCLOUD");
        if (!add(loop, inward)) co_return;
        if (engine::sysVarInt(drawing(), "DELOBJ", 1) != 0)
            if (engine::Entity* source = drawing().findById(picked.id)) document().removeEntity(*source);
    }

    bool add(const math::BoundaryLoop& loop, bool inward) {
        const double area = math::signedArea(loop.points, loop.bulges);
        const double length = math::perimeter(loop.points, loop.bulges);
        const double chord = (minimum() + maximum()) / 2.0;
        if (!(std::abs(area) > 0.0) || !(length / chord < kMaxArcs)) {
            message("Invalid input.");
            return false;
        }
        auto cloud = std::make_unique<engine::PolylineEntity>();
        // Arcs bend to the right of a counter-clockwise outline: outwards.
        const double bulge = (area > 0.0) != inward ? kBulge : -kBulge;
        const double width = calligraphy() ? chord * 0.1 : 0.0;
        const std::size_t n = loop.points.size();
        for (std::size_t i = 0; i < n; ++i) {
            const Vector2& a = loop.points[i];
            const Vector2& b = loop.points[(i + 1) % n];
            const double bend = i < loop.bulges.size() ? loop.bulges[i] : 0.0;
            const auto arc = math::arcFromBulge(a, b, bend);
            const double run = arc ? arc->length() : a.distance_to(b);
            const int count = std::max(arc ? 2 : 1, static_cast<int>(std::lround(run / chord)));
            for (int k = 0; k < count && run > 0.0; ++k) {
                const double share = static_cast<double>(k) / count;
                cloud->addVertex(arc ? arc->pointAt(arc->start + arc->sweep * share) : a.lerp(b, share), bulge, 0.0,
                                 width);
            }
        }
        if (width == 0.0) {
            cloud->startWidths.clear();
            cloud->endWidths.clear();
        }
        cloud->closed = true;
        addNew(document(), std::move(cloud), "REVCLOUD");
        return true;
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Revcloud, "REVCLOUD", "Revision Cloud", "Draw")

}  // namespace kova::cmd::commands
