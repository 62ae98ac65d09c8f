#include "cmd/prompts/clip_boundary.hpp"

#include "engine/model/drawing.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/entities/polyline.hpp"
#include "math/curves/path.hpp"

namespace kova::cmd {

using math::Vector2;

namespace {

using Polygon = std::vector<Vector2>;

/// Points that a clip may have; more come from no sensible boundary.
constexpr std::size_t kMaxPoints = 100'000;

Task<Polygon> byCorners(Ask& ask, const engine::Drawing& drawing) {
    const Answer first = co_await ask.point("Specify first corner:");
    if (!first.isPoint()) co_return Polygon();
    const Answer second = co_await ask.point("Specify opposite corner:", {}, first.point);
    if (!second.isPoint()) co_return Polygon();
    // Its sides run along the axes of the current coordinate system.
    const engine::Ucs& ucs = drawing.ucs;
    const Vector2 a = ucs.fromWorld(first.point);
    const Vector2 b = ucs.fromWorld(second.point);
    if (a.x == b.x || a.y == b.y) {
        ask.message("The boundary needs a width and a height.");
        co_return Polygon();
    }
    Polygon polygon;
    polygon.push_back(ucs.toWorld(a));
    polygon.push_back(ucs.toWorld({b.x, a.y}));
    polygon.push_back(ucs.toWorld(b));
    polygon.push_back(ucs.toWorld({a.x, b.y}));
    co_return polygon;
}

Task<Polygon> byPoints(Ask& ask) {
    const Answer first = co_await ask.point("Specify first point:");
    if (!first.isPoint()) co_return Polygon();
    Polygon polygon(1, first.point);
    for (;;) {
        const Answer next = co_await ask.point("Specify next point or [Undo]:", "Undo", polygon.back());
        if (next.isPoint() && polygon.size() < kMaxPoints) polygon.push_back(next.point);
        if (next.is("UNDO") && polygon.size() > 1) polygon.pop_back();
        if (!next.isEnter()) continue;
        if (polygon.size() < 3) ask.message("A boundary needs at least three points.");
        co_return polygon;
    }
}

Task<Polygon> byPolyline(Ask& ask, doc::Document& document) {
    const Answer pick = co_await ask.object("Select polyline:", {}, [](const engine::Entity& entity) {
        return entity.type() == engine::EntityType::Polyline;
    });
    const engine::Entity* entity = pick.isObject() ? document.drawing().findById(pick.id) : nullptr;
    if (entity == nullptr) co_return Polygon();
    const auto& polyline = static_cast<const engine::PolylineEntity&>(*entity);
    const math::Bounds2 box = polyline.bounds();
    const double size = box.is_empty() ? 1.0 : std::max(box.width(), box.height());
    Polygon polygon;
    for (const auto& figure : engine::flattenPath(polyline.path(), std::max(size * 1e-4, 1e-12)))
        for (const Vector2& p : figure)
            if (polygon.size() < kMaxPoints) polygon.push_back(engine::planFromObject(polyline, p));
    if (polygon.size() > 1 && polygon.front() == polygon.back()) polygon.pop_back();
    if (polygon.size() < 3) ask.message("A boundary needs at least three points.");
    co_return polygon;
}

}  // namespace

Task<std::vector<Vector2>> askClipBoundary(Ask& ask, doc::Document& document, const char* question, bool* inverted) {
    for (;;) {
        const Answer kind = co_await ask.keyword(question, "Select Polygonal Rectangular Invert");
        if (kind.is("INVERT")) {
            *inverted = !*inverted;
            ask.message(*inverted ? "Outside mode - Objects inside boundary will be hidden."
                                  : "Inside mode - Objects outside boundary will be hidden.");
            continue;
        }
        Polygon polygon;
        if (kind.is("SELECT"))
            polygon = co_await byPolyline(ask, document);
        else if (kind.is("POLYGONAL"))
            polygon = co_await byPoints(ask);
        else
            polygon = co_await byCorners(ask, document.drawing());
        co_return polygon;
    }
}

}  // namespace kova::cmd
