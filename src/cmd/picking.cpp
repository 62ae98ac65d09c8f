#include "cmd/picking.hpp"

#include <charconv>

#include "cmd/point_input.hpp"
#include "cmd/read_only_pick.hpp"
#include "cmd/shape_test.hpp"
#include "doc/spatial_index.hpp"
#include "math/number_text.hpp"

namespace kova::cmd {

using math::Bounds2;
using math::Vector2;

namespace {

/// Part of the diagonal of the drawing's extents within which a typed point picks.
constexpr double kPickShare = 0.01;

std::vector<std::uint64_t> selectRegion(doc::Document& document, const SelectionRegion& region, bool crossing) {
    std::vector<std::uint64_t> ids;
    ShapeTest test(document.drawing(), region, crossing ? ShapeTest::Mode::Touches : ShapeTest::Mode::Inside);
    for (const engine::Entity* e : document.spatialIndex().query(region.bounds().inflated(region.tolerance())))
        if (document.isSelectable(*e) && test.passes(*e)) ids.push_back(e->id());
    return ids;
}

double diagonal(const Bounds2& box) { return box.is_empty() ? 0.0 : std::hypot(box.width(), box.height()); }

}  // namespace

double pickTolerance(doc::Document& document) {
    const engine::Limits& limits = document.drawing().limits;
    for (const double size : {diagonal(document.spatialIndex().extents()), diagonal({limits.lower, limits.upper})})
        if (size > 0.0 && std::isfinite(size)) return size * kPickShare;
    return kPickShare;
}

engine::Entity* pickEntity(doc::Document& document, const Vector2& p,
                           const std::function<bool(const engine::Entity&)>& filter) {
    return document.spatialIndex().nearest(p, pickTolerance(document), [&](const engine::Entity& e) {
        return document.isSelectable(e) && (!filter || filter(e));
    });
}

engine::Entity* pickLocked(doc::Document& document, const Vector2& p,
                           const std::function<bool(const engine::Entity&)>& filter) {
    const engine::Drawing& drawing = document.drawing();
    return document.spatialIndex().nearest(p, pickTolerance(document), [&](const engine::Entity& e) {
        if (!e.visible || e.owner() != &drawing.currentSpace()) return false;
        const engine::Layer* layer = drawing.layers.find(e.layer);
        return layer != nullptr && layer->locked && layer->isVisible() && (!filter || filter(e));
    });
}

std::vector<std::uint64_t> selectAll(doc::Document& document) {
    std::vector<std::uint64_t> ids;
    const engine::EntityList& space = document.drawing().currentSpace();
    ids.reserve(space.size());
    for (const engine::Entity& e : space)
        if (document.isSelectable(e)) ids.push_back(e.id());
    return ids;
}

std::vector<std::uint64_t> selectBox(doc::Document& document, const Vector2& a, const Vector2& b, bool crossing) {
    return selectRegion(document, SelectionRegion::box(a, b), crossing);
}

std::vector<std::uint64_t> selectPolygon(doc::Document& document, std::span<const Vector2> polygon, bool crossing) {
    if (polygon.size() < 3) return {};
    return selectRegion(document, SelectionRegion::polygon(polygon), crossing);
}

std::vector<std::uint64_t> selectFence(doc::Document& document, std::span<const Vector2> points) {
    if (points.size() < 2) return {};
    return selectRegion(document, SelectionRegion::fence(points), true);
}

std::uint64_t lastEntity(doc::Document& document) {
    const engine::EntityList& space = document.drawing().currentSpace();
    for (std::uint32_t slot = space.slotCount(); slot-- > 0;) {
        const engine::Entity* e = space.atSlot(slot);
        if (e != nullptr && document.isSelectable(*e)) return e->id();
    }
    return 0;
}

std::optional<NamedPick> parseNamedPick(doc::Document& document, std::string_view line) {
    constexpr std::string_view kStart = "(handent \"";
    if (line.size() <= kStart.size() || !engine::equalNoCase(line.substr(0, kStart.size()), kStart)) return {};
    line.remove_prefix(kStart.size());
    std::uint64_t handle = 0;
    const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), handle, 16);
    line.remove_prefix(static_cast<std::size_t>(end - line.data()));
    if (error != std::errc{} || !line.starts_with("\")")) return {};
    line = trimmed(line.substr(2));
    NamedPick pick;
    std::optional<Vector2> point;
    if (!line.empty()) {
        point = parsePointInput(line, {}, {}, {});
        if (!point) return {};
    }
    engine::Entity* entity = document.drawing().findByHandle(handle);
    if (entity != nullptr && document.isSelectable(*entity)) {
        pick.entity = entity;
        const math::Bounds2 box = entity->bounds();
        pick.point = point ? *point : entity->nearestPoint(box.is_empty() ? Vector2{} : box.center());
    }
    return pick;
}

std::string namedPick(std::uint64_t handle, const Vector2* point) {
    char text[24];
    const auto end = std::to_chars(text, text + sizeof text, handle, 16).ptr;
    std::string line = "(handent \"" + std::string(text, end) + "\")";
    if (point != nullptr) line += " " + math::shortest(point->x) + "," + math::shortest(point->y);
    return line;
}

}  // namespace kova::cmd
