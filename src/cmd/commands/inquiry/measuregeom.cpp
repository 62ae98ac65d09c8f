#include "cmd/prompts/area.hpp"
#include "cmd/dialogue.hpp"
#include "cmd/prompts/distance.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/pick_request.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/line.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/model/units.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Entity;
using engine::EntityType;
using math::Vector2;

/// A circle, arc or arc of a polyline, in the plane of its entity.
struct Round {
    Vector2 center;
    double radius = 0.0;
    double start = 0.0;
    double sweep = math::kTwoPi;  ///< a full turn for circles
    bool full = true;
};

/// The segment of a polyline nearest to a point.
std::size_t nearestSegment(const engine::PolylineEntity& polyline, const Vector2& p) {
    std::size_t best = 0;
    double least = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < polyline.segmentCount(); ++i) {
        engine::Path path;
        path.moveTo(polyline.vertices[i]).bulgeTo(polyline.segmentEnd(i), polyline.bulge(i));
        const double distance = engine::nearestOnPath(path, p).distance_to(p);
        if (!(distance < least)) continue;
        least = distance;
        best = i;
    }
    return best;
}

std::optional<Round> roundOf(const Entity& entity, const Vector2& picked) {
    if (entity.type() == EntityType::Circle) {
        const auto& circle = static_cast<const engine::CircleEntity&>(entity);
        return Round{circle.center, std::abs(circle.radius)};
    }
    if (entity.type() == EntityType::Arc) {
        const auto& arc = static_cast<const engine::ArcEntity&>(entity);
        return Round{arc.center, std::abs(arc.radius), arc.startAngle, arc.sweep(), false};
    }
    if (entity.type() != EntityType::Polyline) return std::nullopt;
    const auto& polyline = static_cast<const engine::PolylineEntity&>(entity);
    if (polyline.segmentCount() == 0) return std::nullopt;
    const Vector2 p = engine::objectFromPlan(entity, picked).value_or(picked);
    const std::size_t i = nearestSegment(polyline, p);
    const auto arc = math::arcFromBulge(polyline.vertices[i], polyline.segmentEnd(i), polyline.bulge(i));
    if (!arc) return std::nullopt;
    return Round{arc->center, arc->radius, arc->start, arc->sweep, false};
}

/// A straight line by two points: a line, or the straight segment of a polyline.
std::optional<std::pair<Vector2, Vector2>> straightOf(const Entity& entity, const Vector2& picked) {
    if (entity.type() == EntityType::Line) {
        const auto& line = static_cast<const engine::LineEntity&>(entity);
        return std::pair{line.start, line.end};
    }
    if (entity.type() != EntityType::Polyline) return std::nullopt;
    const auto& polyline = static_cast<const engine::PolylineEntity&>(entity);
    if (polyline.segmentCount() == 0) return std::nullopt;
    const Vector2 p = engine::objectFromPlan(entity, picked).value_or(picked);
    const std::size_t i = nearestSegment(polyline, p);
    if (math::arcFromBulge(polyline.vertices[i], polyline.segmentEnd(i), polyline.bulge(i))) return std::nullopt;
    return std::pair{engine::planFromObject(entity, polyline.vertices[i]),
                     engine::planFromObject(entity, polyline.segmentEnd(i))};
}

bool isLineOrPolyline(const Entity& entity) {
    return entity.type() == EntityType::Line || entity.type() == EntityType::Polyline;
}
bool isRoundOrPolyline(const Entity& entity) {
    return entity.type() == EntityType::Circle || entity.type() == EntityType::Arc ||
           entity.type() == EntityType::Polyline;
}
bool isAngular(const Entity& entity) { return isLineOrPolyline(entity) || isRoundOrPolyline(entity); }

/// MEASUREGEOM: distances, radii, angles, areas and volumes, until it is left.
class MeasuregeomTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        bool first = true;
        for (;;) {
            const char* prompt = first ? "Enter an option [Distance/Radius/Angle/ARea/Volume] <Distance>:"
                                       : "Enter an option [Distance/Radius/Angle/ARea/Volume/eXit] <Distance>:";
            const Answer option = co_await ask.keyword(prompt, "Distance Radius Angle ARea Volume eXit");
            if (option.is("EXIT")) co_return;
            if (option.is("RADIUS")) co_await radius(ask);
            if (option.is("ANGLE")) co_await angle(ask);
            if (option.is("AREA")) co_await measureArea(ask, document());
            if (option.is("VOLUME")) co_await volume(ask);
            if (option.is("DISTANCE") || option.isEnter()) {
                const bool measured = co_await measureDistance(ask, document());
                // Enter twice leaves, so that a script's last empty line does.
                if (!measured && option.isEnter()) co_return;
            }
            first = false;
        }
    }

private:
    std::string length(double v) const { return lengthText(drawing(), v); }
    std::string size(double radians) const {
        engine::AngularFormat format;
        format.units = engine::sysVarInt(drawing(), "AUNITS");
        format.precision = engine::sysVarInt(drawing(), "AUPREC");
        return engine::formatAngleSize(radians, format);
    }

    Dialogue radius(Ask& ask) {
        const Answer pick = co_await askSource(ask, "Select arc or circle:", {}, isRoundOrPolyline);
        const Entity* entity = pick.isObject() ? drawing().findById(pick.id) : nullptr;
        if (entity == nullptr) co_return;
        const std::optional<Round> found = roundOf(*entity, pick.point);
        if (!found) {
            message("Object selected is not a circle or arc.");
            co_return;
        }
        message("Radius = " + length(found->radius));
        message("Diameter = " + length(2.0 * found->radius));
    }

    Dialogue angle(Ask& ask) {
        const Answer pick = co_await askSource(ask, "Select arc, circle, line, or <Specify vertex>:", {}, isAngular);
        const Entity* entity = pick.isObject() ? drawing().findById(pick.id) : nullptr;
        if (entity == nullptr) co_return co_await angleAt(ask);
        if (const auto line = straightOf(*entity, pick.point)) {
            const Answer other = co_await askSource(ask, "Select second line:", {}, isLineOrPolyline);
            const Entity* second = other.isObject() ? drawing().findById(other.id) : nullptr;
            if (second == nullptr) co_return;
            const auto secondLine = straightOf(*second, other.point);
            if (!secondLine) {
                message("Object selected is not a line.");
                co_return;
            }
            report(betweenLines(*line, pick.point, *secondLine, other.point));
            co_return;
        }
        const std::optional<Round> round = roundOf(*entity, pick.point);
        if (!round) co_return;
        if (!round->full) {
            report(std::abs(round->sweep));
            co_return;
        }
        const Vector2 center = engine::planFromObject(*entity, round->center);
        const Answer end = co_await ask.point("Specify second angle endpoint:", {}, center);
        if (end.isPoint()) report(between(pick.point - center, end.point - center));
    }

    Dialogue angleAt(Ask& ask) {
        const Answer vertex = co_await ask.point("Specify angle vertex:");
        if (!vertex.isPoint()) co_return;
        const Answer a = co_await ask.point("Specify first angle endpoint:", {}, vertex.point);
        if (!a.isPoint()) co_return;
        const Answer b = co_await ask.point("Specify second angle endpoint:", {}, vertex.point);
        if (b.isPoint()) report(between(a.point - vertex.point, b.point - vertex.point));
    }

    static double between(const Vector2& a, const Vector2& b) { return std::abs(std::atan2(a.cross(b), a.dot(b))); }

    /// The angle between the halves of two lines that were picked; of parallel ones 0.
    static double betweenLines(const std::pair<Vector2, Vector2>& a, const Vector2& pickA,
                               const std::pair<Vector2, Vector2>& b, const Vector2& pickB) {
        const Vector2 u = a.second - a.first;
        const Vector2 v = b.second - b.first;
        const double cross = u.cross(v);
        if (std::abs(cross) <= 1e-12 * u.length() * v.length()) return 0.0;
        const Vector2 corner = a.first + u * ((b.first - a.first).cross(v) / cross);
        const auto side = [&](const Vector2& direction, const Vector2& pick) {
            return (pick - corner).dot(direction) < 0.0 ? -direction : direction;
        };
        return between(side(u, pickA), side(v, pickB));
    }

    void report(double radians) const { message("Angle = " + size(radians)); }

    Dialogue volume(Ask& ask) {
        message("Volumes are areas times a height; solids are not evaluated.");
        co_await measureArea(ask, document(), true);
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Measuregeom, "MEASUREGEOM", "Measure Geometry", "Inquiry", {"MEA"})

}  // namespace kova::cmd::commands
