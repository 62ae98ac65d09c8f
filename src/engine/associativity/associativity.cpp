#include "engine/associativity/associativity.hpp"

#include "engine/model/object_plane.hpp"

#include <charconv>

#include "engine/model/drawing.hpp"
#include "engine/kinds/all.hpp"
#include "engine/entities/dimensions/dimension_geometry.hpp"
#include "engine/entities/dimensions/dimension_layout.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

constexpr std::string_view kApplication = "KOVA_ASSOC";
constexpr std::size_t kItemsPerLink = 5;
constexpr std::size_t kItemsOfView = 2;  ///< viewport and its scale, behind the links
constexpr std::size_t kMaxLinks = 8;

const std::string kLengthFactor = "DIMLFAC";

const Name& application() {
    static const Name name(kApplication);
    return name;
}

/// Points this near are one: what remains of rounding after a transform.
bool samePoint(const Vector2& a, const Vector2& b) {
    const double size = std::max({1.0, std::abs(a.x), std::abs(a.y)});
    return a.near_equal(b, 1e-9 * size);
}


std::optional<MeasuredArc> arcOfSegment(const PolylineEntity& polyline, std::int32_t segment) {
    const auto i = static_cast<std::size_t>(segment);
    if (segment < 0 || i >= polyline.segmentCount()) return std::nullopt;
    const auto arc = math::arcFromBulge(polyline.vertices[i], polyline.segmentEnd(i), polyline.bulge(i));
    if (!arc) return std::nullopt;
    if (arc->sweep < 0.0) return MeasuredArc{arc->center, arc->radius, arc->start + arc->sweep, -arc->sweep};
    return MeasuredArc{arc->center, arc->radius, arc->start, arc->sweep};
}

bool usable(double scale) { return scale > 0.0 && std::isfinite(scale) && std::isfinite(1.0 / scale); }

std::uint64_t readHandle(const std::string& text) {
    std::uint64_t handle = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), handle, 16);
    return error == std::errc{} && end == text.data() + text.size() ? handle : 0;
}

std::string handleText(std::uint64_t handle) {
    char text[20];
    return {text, std::to_chars(text, text + sizeof text, handle, 16).ptr};
}

/// What stands still about a dimension while its points move: the middle of its line and the centre of its arc.
Vector2 anchorOf(const DimensionEntity& d) {
    switch (d.kind()) {
        case DimensionType::Rotated:
        case DimensionType::Aligned: {
            const LinearFrame frame = linearFrame(d);
            return (frame.p1 + frame.p2) / 2.0;
        }
        case DimensionType::Radius:
            return d.def2;
        case DimensionType::Diameter:
            return radialFrame(d).nearPoint;
        case DimensionType::Ordinate:
        case DimensionType::OrdinateX:
            return d.def2;
        default: {
            const auto frame = angularFrame(d);
            return frame ? frame->center : d.def3;
        }
    }
}

void moveArc(DimensionEntity& d, const MeasuredArc& arc) {
    switch (d.kind()) {
        case DimensionType::Radius: {
            const Vector2 direction = radialFrame(d).dir;
            const Vector2 step = arc.center - d.def1;
            if (d.jogged) {
                d.jogCenter += step;
                d.jogPoint += step;
            }
            d.dimLine += step + direction * (arc.radius - d.def1.distance_to(d.def2));
            d.def1 = arc.center;
            d.def2 = arc.center + direction * arc.radius;
            break;
        }
        case DimensionType::Diameter: {
            const RadialFrame frame = radialFrame(d);
            const Vector2 near = arc.center + frame.dir * arc.radius;
            const Vector2 far = arc.center - frame.dir * arc.radius;
            const bool firstIsNear = frame.nearPoint == d.def1;
            d.dimLine += near - frame.nearPoint;
            d.def1 = firstIsNear ? near : far;
            d.def2 = firstIsNear ? far : near;
            break;
        }
        case DimensionType::ArcLength: {
            const Vector2 from = d.dimLine - d.def3;
            const double offset = from.length() - d.def1.distance_to(d.def3);
            const Vector2 direction = from.normalized();
            if (d.def4 != Vector2{}) d.def4 = arc.center + (d.def4 - d.def3).normalized() * arc.radius;
            d.def3 = arc.center;
            d.def1 = arc.startPoint();
            d.def2 = arc.endPoint();
            d.dimLine = arc.center + direction * (arc.radius + offset);
            break;
        }
        default:
            break;
    }
}

/// The viewport of a link, while it stands on the same sheet as the dimension.
const ViewportEntity* viewOf(const DimensionLink& link, const Drawing& drawing, const EntityList* sheet) {
    if (link.viewport == 0) return nullptr;
    const auto* viewport = dynamic_cast<const ViewportEntity*>(drawing.findByHandle(link.viewport));
    return viewport != nullptr && viewport->owner() == sheet ? viewport : nullptr;
}

/// Keeps the shown value in model units when the viewport's scale has changed. False: nothing to do.
bool followScale(DimensionEntity& d, const Drawing& drawing, const EntityList* sheet) {
    std::vector<DimensionLink> links = dimensionLinks(d);
    if (links.empty() || links.front().viewport == 0) return false;
    const ViewportEntity* viewport = viewOf(links.front(), drawing, sheet);
    if (viewport == nullptr || !usable(viewport->viewScale)) return false;
    const double before = links.front().viewScale;
    if (!usable(before) || std::abs(viewport->viewScale - before) <= 1e-12 * before) return false;
    if (const auto it = d.styleOverrides.find(kLengthFactor); it != d.styleOverrides.end())
        it->second *= before / viewport->viewScale;
    for (DimensionLink& link : links) link.viewScale = viewport->viewScale;
    setDimensionLinks(d, links);
    return true;
}

void moveUserText(DimensionEntity& d, const Vector2& step) {
    if (d.hasUserText() && step != Vector2{}) d.setUserText(d.userText + step);
}

/// Moves definition points 1 to 4 to new places, and the rest of the dimension after them.
void movePoints(DimensionEntity& d, const Vector2 (&to)[4]) {
    const Vector2 step1 = to[0] - d.def1;
    const Vector2 step2 = to[1] - d.def2;
    switch (d.kind()) {
        case DimensionType::Rotated:
        case DimensionType::Aligned: {
            if (samePoint(step1, step2)) {
                // What is measured moved as a whole, and its dimension with it.
                d.dimLine += step1;
                if (d.jogged) d.jogPoint += step1;
            } else if (d.kind() == DimensionType::Aligned) {
                const Vector2 normal = linearFrame(d).dir.perpendicular();
                const double distance = (d.dimLine - d.def1).dot(normal);
                const Vector2 dir = (to[1] - to[0]).normalized();
                if (dir != Vector2{}) d.dimLine = (to[0] + to[1]) / 2.0 + dir.perpendicular() * distance;
            }
            d.def1 = to[0];
            d.def2 = to[1];
            break;
        }
        case DimensionType::Ordinate:
        case DimensionType::OrdinateX:
            d.def1 = to[0];
            d.def2 += step1;  // the leader goes with its feature
            break;
        default: {
            const Vector2 before = anchorOf(d);
            d.def1 = to[0];
            d.def2 = to[1];
            d.def3 = to[2];
            d.def4 = to[3];
            d.dimLine += anchorOf(d) - before;
            break;
        }
    }
}

}  // namespace

Vector2 MeasuredArc::startPoint() const { return center + radius * math::unitAt(start); }
Vector2 MeasuredArc::endPoint() const { return center + radius * math::unitAt(start + sweep); }

MeasuredArc MeasuredArc::seenThrough(const ViewportEntity& viewport) const {
    return {viewport.toPaper(center), radius * viewport.viewScale, start + viewport.viewTwist, sweep};
}

std::optional<MeasuredArc> measuredArc(const Entity& entity, std::int32_t segment) {
    if (!inWorldPlane(entity)) return std::nullopt;
    if (const auto* circle = dynamic_cast<const CircleEntity*>(&entity))
        return MeasuredArc{circle->center, std::abs(circle->radius)};
    if (const auto* arc = dynamic_cast<const ArcEntity*>(&entity))
        return MeasuredArc{arc->center, std::abs(arc->radius), arc->startAngle, arc->sweep()};
    if (const auto* polyline = dynamic_cast<const PolylineEntity*>(&entity)) return arcOfSegment(*polyline, segment);
    return std::nullopt;
}

// Links in extended data -----------------------------------------------------------------------------------------

std::vector<DimensionLink> dimensionLinks(const DimensionEntity& dimension) {
    const XData* data = dimension.xdata();
    const std::vector<XDataItem>* items = data != nullptr ? data->find(application()) : nullptr;
    if (items == nullptr || items->size() > kItemsPerLink * kMaxLinks + kItemsOfView) return {};
    const std::size_t rest = items->size() % kItemsPerLink;
    if (rest != 0 && rest != kItemsOfView) return {};
    const std::size_t end = items->size() - rest;
    std::uint64_t viewport = 0;
    double viewScale = 0.0;
    if (rest == kItemsOfView) {
        const auto* view = std::get_if<std::string>(&(*items)[end].value);
        const auto* scale = std::get_if<double>(&(*items)[end + 1].value);
        if (view == nullptr || scale == nullptr || !usable(*scale)) return {};
        viewport = readHandle(*view);
        viewScale = *scale;
    }
    std::vector<DimensionLink> links;
    for (std::size_t i = 0; i < end; i += kItemsPerLink) {
        const auto* point = std::get_if<std::int64_t>(&(*items)[i].value);
        const auto* kind = std::get_if<std::int64_t>(&(*items)[i + 1].value);
        const auto* handle = std::get_if<std::string>(&(*items)[i + 2].value);
        const auto* index = std::get_if<std::int64_t>(&(*items)[i + 3].value);
        const auto* parameter = std::get_if<double>(&(*items)[i + 4].value);
        if (point == nullptr || kind == nullptr || handle == nullptr || index == nullptr || parameter == nullptr)
            return {};
        if (*point < 0 || *point > 4 || *kind < 1 || *kind > 6 || *index < 0 || *index > INT32_MAX) return {};
        const auto what = static_cast<LinkKind>(*kind);
        if ((what == LinkKind::Arc) != (*point == 0) || !std::isfinite(*parameter)) return {};
        links.push_back({static_cast<std::int32_t>(*point), what, readHandle(*handle),
                         static_cast<std::int32_t>(*index), *parameter, viewport, viewScale});
    }
    return links;
}

void setDimensionLinks(DimensionEntity& dimension, const std::vector<DimensionLink>& links) {
    if (links.empty() && !hasDimensionLinks(dimension)) return;
    std::vector<XDataItem> items;
    items.reserve(links.size() * kItemsPerLink);
    for (const DimensionLink& link : links) {
        items.push_back({1070, std::int64_t{link.point}});
        items.push_back({1070, static_cast<std::int64_t>(link.kind)});
        items.push_back({1005, handleText(link.handle)});
        items.push_back({1071, std::int64_t{link.index}});
        items.push_back({1040, link.parameter});
    }
    const auto through =
        std::find_if(links.begin(), links.end(), [](const DimensionLink& link) { return link.viewport != 0; });
    if (through != links.end() && usable(through->viewScale)) {
        items.push_back({1005, handleText(through->viewport)});
        items.push_back({1040, through->viewScale});
    }
    XData data = dimension.xdata() != nullptr ? *dimension.xdata() : XData{};
    data.set(application(), std::move(items));
    dimension.setXdata(std::move(data));
}

bool hasDimensionLinks(const Entity& entity) {
    const XData* data = entity.xdata();
    return data != nullptr && entity.type() == EntityType::Dimension && data->find(application()) != nullptr;
}

// Points ---------------------------------------------------------------------------------------------------------

std::optional<Vector2> linkedPoint(const Entity& entity, const DimensionLink& link) {
    const std::int32_t i = link.index;
    if (const auto* line = dynamic_cast<const LineEntity*>(&entity)) {
        if (link.kind == LinkKind::End) return i == 0 ? line->start : line->end;
        if (link.kind == LinkKind::Middle) return (line->start + line->end) / 2.0;
        return std::nullopt;
    }
    if (!inWorldPlane(entity)) return std::nullopt;
    if (const auto* polyline = dynamic_cast<const PolylineEntity*>(&entity)) {
        const auto at = static_cast<std::size_t>(i);
        if (link.kind == LinkKind::End && at < polyline->vertices.size()) return polyline->vertices[at];
        if (link.kind == LinkKind::Middle && at < polyline->segmentCount())
            return math::bulgeMidPoint(polyline->vertices[at], polyline->segmentEnd(at), polyline->bulge(at));
    }
    if (const auto* arc = dynamic_cast<const ArcEntity*>(&entity)) {
        if (link.kind == LinkKind::End) return i == 0 ? arc->startPoint() : arc->endPoint();
        if (link.kind == LinkKind::Middle) return arc->midPoint();
    }
    if (const auto* ellipse = dynamic_cast<const EllipseEntity*>(&entity); ellipse && link.kind == LinkKind::Center)
        return ellipse->center;
    if (link.kind == LinkKind::Center || link.kind == LinkKind::OnCircle) {
        const auto arc = measuredArc(entity, i);
        if (!arc) return std::nullopt;
        return link.kind == LinkKind::Center ? arc->center : arc->center + arc->radius * math::unitAt(link.parameter);
    }
    if (link.kind != LinkKind::Place) return std::nullopt;
    if (const auto* point = dynamic_cast<const PointEntity*>(&entity)) return point->position;
    if (const auto* text = dynamic_cast<const TextEntity*>(&entity)) return text->position;
    if (const auto* text = dynamic_cast<const MTextEntity*>(&entity)) return text->position;
    if (const auto* block = dynamic_cast<const BlockReferenceEntity*>(&entity)) return block->insert;
    return std::nullopt;
}

void eachLinkablePoint(const Entity& entity, const std::function<void(const DimensionLink&, const Vector2&)>& take) {
    const auto offer = [&](LinkKind kind, std::int32_t index = 0, double parameter = 0.0) {
        const DimensionLink link{0, kind, 0, index, parameter};
        if (const auto p = linkedPoint(entity, link); p && p->is_finite()) take(link, *p);
    };
    switch (entity.type()) {
        case EntityType::Line:
        case EntityType::Arc:
            offer(LinkKind::End, 0);
            offer(LinkKind::End, 1);
            offer(LinkKind::Middle);
            offer(LinkKind::Center);
            break;
        case EntityType::Circle:
            offer(LinkKind::Center);
            for (int quarter = 0; quarter < 4; ++quarter) offer(LinkKind::OnCircle, 0, quarter * math::kPi / 2.0);
            break;
        case EntityType::Polyline: {
            const auto& polyline = static_cast<const PolylineEntity&>(entity);
            const auto count = static_cast<std::int32_t>(std::min<std::size_t>(polyline.vertices.size(), INT32_MAX));
            for (std::int32_t i = 0; i < count; ++i) offer(LinkKind::End, i);
            for (std::int32_t i = 0; i < count; ++i) {
                offer(LinkKind::Middle, i);
                if (polyline.bulge(static_cast<std::size_t>(i)) != 0.0) offer(LinkKind::Center, i);
            }
            break;
        }
        case EntityType::Ellipse:
            offer(LinkKind::Center);
            break;
        case EntityType::Point:
        case EntityType::Text:
        case EntityType::MText:
        case EntityType::BlockReference:
            offer(LinkKind::Place);
            break;
        default:
            break;
    }
}

Vector2& definitionPoint(DimensionEntity& dimension, std::int32_t point) {
    switch (point) {
        case 2:
            return dimension.def2;
        case 3:
            return dimension.def3;
        case 4:
            return dimension.def4;
        default:
            return dimension.def1;
    }
}

void measureThroughViewport(DimensionEntity& d, const DimStyle& style, const std::vector<DimensionLink>& links) {
    for (const DimensionLink& link : links) {
        if (link.viewport == 0 || !usable(link.viewScale)) continue;
        // A negative factor of the style is the scale of a viewport already.
        const double own = style.linearScale > 0.0 && std::isfinite(style.linearScale) ? style.linearScale : 1.0;
        d.styleOverrides[kLengthFactor] = -own / link.viewScale;
        return;
    }
}

bool followLinks(DimensionEntity& d, const Drawing& drawing, const EntityList* space) {
    if (!dimensionIsFinite(d)) return false;
    if (space == nullptr) space = d.owner();
    Vector2 to[4] = {d.def1, d.def2, d.def3, d.def4};
    bool moved = false;
    bool arcMoved = false;
    const Vector2 before = anchorOf(d);
    for (const DimensionLink& link : dimensionLinks(d)) {
        const Entity* entity = drawing.findByHandle(link.handle);
        if (entity == nullptr) continue;
        const bool seen = link.viewport != 0 && entity->owner() == &drawing.modelSpace() && space != entity->owner();
        const ViewportEntity* viewport = seen ? viewOf(link, drawing, space) : nullptr;
        if (seen && viewport == nullptr) continue;
        if (link.kind == LinkKind::Arc) {
            auto arc = measuredArc(*entity, link.index);
            if (arc && viewport != nullptr) arc = arc->seenThrough(*viewport);
            if (!arc || !arc->center.is_finite() || !std::isfinite(arc->radius) || !(arc->radius > 0.0)) continue;
            DimensionEntity probe(d);
            moveArc(probe, *arc);
            if (samePoint(probe.def1, d.def1) && samePoint(probe.def2, d.def2) && samePoint(probe.def3, d.def3))
                continue;
            moveArc(d, *arc);
            arcMoved = true;
            continue;
        }
        auto p = linkedPoint(*entity, link);
        if (p && viewport != nullptr) p = viewport->toPaper(*p);
        Vector2& target = to[link.point - 1];
        if (!p || !p->is_finite() || samePoint(*p, target)) continue;
        target = *p;
        moved = true;
    }
    if (moved && !arcMoved) movePoints(d, to);
    if (moved || arcMoved) moveUserText(d, anchorOf(d) - before);
    const bool scaled = followScale(d, drawing, space);
    return moved || arcMoved || scaled;
}

}  // namespace kova::engine
