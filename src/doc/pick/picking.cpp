#include "doc/pick/picking.hpp"

#include <charconv>

#include "cmd/point_input.hpp"
#include "engine/pick/selection_region.hpp"
#include "doc/pick/through_viewport.hpp"
#include "doc/spatial_index.hpp"
#include "engine/model/making_order.hpp"
#include "strings/numbers.hpp"

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

/// True for what a pick in the current space may give.
bool mayPick(const doc::Document& document, const engine::Entity& entity, Locked locked) {
    if (locked == Locked::Refused) return document.isSelectable(entity);
    const engine::Drawing& drawing = document.drawing();
    return entity.owner() == &drawing.currentSpace() && isShown(drawing, entity);
}

/// A place on an entity, near its middle.
Vector2 pointOn(const engine::Entity& entity) {
    const Bounds2 box = entity.bounds();
    return entity.nearestPoint(box.is_empty() ? Vector2{} : box.center());
}

double diagonal(const Bounds2& box) { return box.is_empty() ? 0.0 : std::hypot(box.width(), box.height()); }

}  // namespace

double pickTolerance(doc::Document& document) {
    const engine::Limits& limits = document.drawing().limits;
    for (const double size : {diagonal(document.spatialIndex().extents()), diagonal({limits.lower, limits.upper})})
        if (size > 0.0 && std::isfinite(size)) return size * kPickShare;
    return kPickShare;
}

bool isShown(const engine::Drawing& drawing, const engine::Entity& entity) {
    const engine::Layer* layer = drawing.layers.find(entity.layer);
    return entity.visible && (layer == nullptr || layer->isVisible());
}

engine::Entity* pickEntity(doc::Document& document, const Vector2& p,
                           const std::function<bool(const engine::Entity&)>& filter) {
    return document.spatialIndex().nearest(p, pickTolerance(document), [&](const engine::Entity& e) {
        return document.isSelectable(e) && (!filter || filter(e));
    });
}

engine::Entity* pickLocked(doc::Document& document, const Vector2& p) {
    const engine::Drawing& drawing = document.drawing();
    return document.spatialIndex().nearest(p, pickTolerance(document), [&](const engine::Entity& e) {
        if (!e.visible || e.owner() != &drawing.currentSpace()) return false;
        const engine::Layer* layer = drawing.layers.find(e.layer);
        return layer != nullptr && layer->locked && layer->isVisible();
    });
}

Picked pickAt(doc::Document& document, const Vector2& p, const PickRules& rules) {
    const auto nearest = [&](const std::function<bool(const engine::Entity&)>& usable) {
        return document.spatialIndex().nearest(p, pickTolerance(document), [&](const engine::Entity& e) {
            return mayPick(document, e, rules.locked) && (!usable || usable(e));
        });
    };
    Picked picked;
    picked.point = p;
    picked.entity = nearest(rules.usable);
    if (picked.entity == nullptr && rules.reach == Reach::ThroughViewports)
        picked.entity = pickThroughViewport(document, p, rules.usable);
    if (picked.entity != nullptr) return picked;
    if (rules.usable && nearest({}) != nullptr)
        picked.refusal = kUnusable;
    else if (pickLocked(document, p) != nullptr)
        picked.refusal = "Object is on a locked layer.";
    else
        picked.refusal = "No object found.";
    return picked;
}

std::optional<Picked> pickByWord(doc::Document& document, std::string_view line, const PickRules& rules) {
    Picked picked;
    const std::string_view word = trimmed(line);
    if (engine::equalNoCase(word, "L") || engine::equalNoCase(word, "LAST")) {
        picked.entity = document.drawing().findById(lastEntity(document, rules.locked));
        if (picked.entity != nullptr) picked.point = pointOn(*picked.entity);
    } else if (const auto named = parseNamedPick(document, line, rules)) {
        picked.entity = named->entity;
        picked.point = named->point;
    } else {
        return std::nullopt;
    }
    if (picked.entity == nullptr) {
        picked.refusal = "No object found.";
    } else if (rules.usable && !rules.usable(*picked.entity)) {
        picked.entity = nullptr;
        picked.refusal = kUnusable;
    }
    return picked;
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

std::uint64_t lastEntity(doc::Document& document, Locked locked) {
    const engine::EntityList& space = document.drawing().currentSpace();
    for (const engine::Entity* e = engine::newestEntity(space); e != nullptr; e = engine::madeBefore(*e))
        if (mayPick(document, *e, locked)) return e->id();
    return 0;
}

std::optional<NamedPick> parseNamedPick(doc::Document& document, std::string_view line, const PickRules& rules) {
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
    if (entity == nullptr) return pick;
    if (mayPick(document, *entity, rules.locked)) {
        pick.entity = entity;
        pick.point = point ? *point : pointOn(*entity);
    } else if (rules.reach == Reach::ThroughViewports) {
        if (!point) point = shownOnSheet(document, *entity);
        if (point && showsAt(document, *entity, *point)) {
            pick.entity = entity;
            pick.point = *point;
        }
    }
    return pick;
}

std::string namedPick(std::uint64_t handle, const Vector2* point) {
    char text[24];
    const auto end = std::to_chars(text, text + sizeof text, handle, 16).ptr;
    std::string line = "(handent \"" + std::string(text, end) + "\")";
    if (point != nullptr) line += " " + strings::shortest(point->x) + "," + strings::shortest(point->y);
    return line;
}

}  // namespace kova::cmd
