#include "edit/new_entities.hpp"

#include <QVariant>

#include "engine/entities/arc.hpp"
#include "engine/entities/line.hpp"
#include "engine/entities/polyline.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd {

using math::Vector2;

namespace {

/// Entities looked at from the end of the space for the last curve.
constexpr std::uint32_t kLookBack = 10000;

std::optional<CurveEnd> endOf(const engine::Entity& entity) {
    if (const auto* line = dynamic_cast<const engine::LineEntity*>(&entity))
        return CurveEnd{line->end, (line->end - line->start).normalized()};
    if (const auto* arc = dynamic_cast<const engine::ArcEntity*>(&entity))
        return CurveEnd{arc->endPoint(), math::unitAt(arc->endAngle).perpendicular()};
    if (const auto* polyline = dynamic_cast<const engine::PolylineEntity*>(&entity)) {
        const engine::Path path = polyline->path();
        const engine::PathView view = path.view();
        if (polyline->closed || view.size() < 2) return std::nullopt;
        return CurveEnd{view.back().p, engine::elementTangent(view.back(), view[view.size() - 2].p, 1.0).normalized()};
    }
    return std::nullopt;
}

}  // namespace

bool takesThickness(engine::EntityType type) {
    using engine::EntityType;
    switch (type) {
        case EntityType::Line:
        case EntityType::Circle:
        case EntityType::Arc:
        case EntityType::Polyline:
        case EntityType::Point:
        case EntityType::Text:
        case EntityType::Solid2D:
            return true;
        default:
            return false;
    }
}

void applyCurrentValues(doc::Document& document, engine::Entity& entity) {
    document.applyCurrentProperties(entity);
    // Read straight from the map that keeps them: lines are drawn by the million, and both are rarely set.
    const auto& reals = document.drawing().realVariables;
    const auto value = [&](std::string_view name) {
        const auto it = reals.find(name);
        return it != reals.end() ? it->second : 0.0;
    };
    entity.elevation = value("ELEVATION");
    if (takesThickness(entity.type())) entity.setThickness(value("THICKNESS"));
}

engine::Entity& addNew(doc::Document& document, std::unique_ptr<engine::Entity> entity, const std::string& label) {
    applyCurrentValues(document, *entity);
    const doc::GroupScope group(document, label);
    return document.addEntity(std::move(entity));
}

double ucsRotation(const engine::Drawing& drawing) { return drawing.ucs.xAxis.angle(); }

bool isTyped(const Answer& answer) { return parseNumber(answer.text).has_value(); }

double worldDirection(const Answer& answer, const engine::Drawing& drawing) {
    return answer.number + (isTyped(answer) ? ucsRotation(drawing) : 0.0);
}

double includedAngle(const Answer& answer, const engine::Drawing& drawing) {
    const std::optional<double> degrees = parseNumber(answer.text);
    if (!degrees) return math::normalizeAngle(answer.number);
    return *degrees * math::kDegree * (engine::sysVarInt(drawing, "ANGDIR") == 1 ? -1.0 : 1.0);
}

std::string withDefault(std::string_view question, std::string_view fallback) {
    return std::string(question) + " <" + std::string(fallback) + ">:";
}

std::optional<CurveEnd> lastCurveEnd(doc::Document& document) {
    const engine::EntityList& space = document.drawing().currentSpace();
    const std::uint32_t count = space.slotCount();
    for (std::uint32_t back = 0; back < std::min(count, kLookBack); ++back) {
        const engine::Entity* entity = space.atSlot(count - 1 - back);
        if (entity == nullptr) continue;
        if (const auto end = endOf(*entity); end && end->direction != Vector2{}) return end;
    }
    return std::nullopt;
}

double remembered(const doc::Document& document, const char* name, double fallback) {
    const QVariant value = document.property(name);
    return value.isValid() ? value.toDouble() : fallback;
}

void remember(doc::Document& document, const char* name, double value) { document.setProperty(name, value); }

}  // namespace kova::cmd
