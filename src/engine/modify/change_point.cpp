#include "engine/modify/change_point.hpp"

#include "engine/entities/attribute_definition.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/line.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/entities/text.hpp"

namespace kova::engine {

using math::Vector2;

bool takeChangePoint(Entity& entity, const Vector2& p, bool ortho) {
    if (!p.is_finite()) return false;
    if (entity.type() == EntityType::Line) {
        auto& line = static_cast<LineEntity&>(entity);
        const bool first = line.start.distance_to(p) < line.end.distance_to(p);
        const Vector2 fixed = first ? line.end : line.start;
        Vector2 to = p;
        if (ortho) {
            const Vector2 way = p - fixed;
            to = std::abs(way.x) >= std::abs(way.y) ? Vector2(p.x, fixed.y) : Vector2(fixed.x, p.y);
        }
        if (to == fixed) return false;
        (first ? line.start : line.end) = to;
        return true;
    }
    if (entity.type() == EntityType::Circle) {
        auto& circle = static_cast<CircleEntity&>(entity);
        const auto inPlane = objectFromPlan(circle, p);
        const double radius = inPlane ? circle.center.distance_to(*inPlane) : 0.0;
        if (!(radius > 0.0)) return false;
        circle.radius = radius;
        return true;
    }
    return false;
}

std::optional<TextFields> textFields(Entity& entity) {
    if (entity.type() == EntityType::Text) {
        auto& e = static_cast<TextEntity&>(entity);
        return TextFields{e.position, e.fitEnd, e.textStyle, e.height, e.rotation, e.content};
    }
    if (entity.type() == EntityType::AttributeDefinition) {
        auto& e = static_cast<AttributeDefinitionEntity&>(entity);
        return TextFields{e.insertion, e.fitEnd,       e.textStyle, e.textHeight,
                          e.rotation,  e.defaultValue, &e.tag,      &e.prompt};
    }
    return std::nullopt;
}

}  // namespace kova::engine
