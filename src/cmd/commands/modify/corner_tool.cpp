#include "cmd/commands/modify/corner_tool.hpp"

#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/pick_request.hpp"
#include "cmd/processor.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/line.hpp"
#include "engine/curves/join.hpp"

namespace kova::cmd::commands {

using engine::Corner;
using engine::CornerFault;
using engine::EditCurve;
using engine::PickedCurve;

void CornerTool::textInput(const std::string& line) {
    if (expectsFirst_ && isActive() && host()->services() != nullptr && host()->registry() != nullptr) {
        const std::vector<std::string> words = splitWords(line);
        const Command* command = words.empty() ? nullptr : host()->registry()->find(words.front());
        // Only whole names: a short one may be an option.
        const bool whole = !words.empty() && words.front().size() > 5;
        if (whole && command != nullptr && (command->name() == "FILLET" || command->name() == "CHAMFER")) {
            host()->services()->queueLines({line});
            return cancel();
        }
    }
    expectsFirst_ = false;
    DialogueTool::textInput(line);
}

bool CornerTool::trims() const { return engine::sysVarInt(drawing(), "TRIMMODE") != 0; }

bool CornerTool::hasCorners(const engine::Entity& entity) {
    using engine::EntityType;
    switch (entity.type()) {
        case EntityType::Line:
        case EntityType::Arc:
        case EntityType::Circle:
        case EntityType::Polyline:
        case EntityType::Ellipse:
        case EntityType::Spline:
        case EntityType::Xline:
        case EntityType::Ray:
            return EditCurve::of(entity).has_value();
        default:
            return false;
    }
}

Dialogue CornerTool::askTrimMode(Ask& ask) {
    const Answer answer = co_await ask.keyword(
        withDefault("Enter Trim mode option [Trim/No trim]", trims() ? "Trim" : "No trim"), "Trim No");
    if (answer.isEnter()) co_return;
    document().setVariable("TRIMMODE", engine::SysVarValue(std::int32_t{answer.is("Trim") ? 1 : 0}));
}

void CornerTool::tell(CornerFault fault, const char* tooLarge) {
    switch (fault) {
        case CornerFault::Parallel:
            return message("Lines are parallel.");
        case CornerFault::TooLarge:
            return message(tooLarge);
        case CornerFault::Apart:
            return message("Polyline segments must be adjacent or separated by one segment.");
        default:
            return message("Object cannot be used here.");
    }
}

Task<bool> CornerTool::askPolyline(Ask& ask, StepGroup& group, const char* verb, engine::CornerMeasure measure) {
    PickRequest request;
    request.prompt = "Select 2D polyline:";
    request.usable = [](const engine::Entity& e) { return e.type() == engine::EntityType::Polyline; };
    request.refusal = "Object selected is not a 2D polyline.";
    const Answer picked = co_await askPick(ask, std::move(request));
    engine::Entity* entity = picked.isObject() ? drawing().findById(picked.id) : nullptr;
    if (entity == nullptr) co_return false;
    engine::PolylineCorners result = engine::cutPolylineCorners(static_cast<engine::PolylineEntity&>(*entity), measure);
    if (result.cut > 0) {
        group.begin();
        document().replaceEntity(*entity, std::move(result.polyline));
    }
    const auto were = [](int count) { return count == 1 ? " was " : " were "; };
    message(counted(static_cast<std::size_t>(result.cut), "line") + were(result.cut) + verb);
    if (result.parallel > 0) message(std::to_string(result.parallel) + were(result.parallel) + "parallel");
    if (result.tooShort > 0) message(std::to_string(result.tooShort) + were(result.tooShort) + "too short");
    co_return result.cut > 0;
}

bool CornerTool::makeCorner(StepGroup& group, const Pick& first, const Pick& second) {
    engine::Entity* a = drawing().findById(first.id);
    engine::Entity* b = drawing().findById(second.id);
    if (a == nullptr || b == nullptr) return false;
    const auto curveA = EditCurve::of(*a);
    const auto curveB = EditCurve::of(*b);
    if (!curveA || !curveB) return false;
    const PickedCurve pickA(*curveA, first.point);
    const PickedCurve pickB(*curveB, second.point);
    if (a == b && (a->type() != engine::EntityType::Polyline || pickA.piece == pickB.piece)) {
        message("The two objects must be different.");
        return false;
    }
    const auto corner = cornerOf(pickA, pickB);
    if (!corner) return false;
    group.begin();
    if (apply(*a, *b, *curveA, *curveB, *corner)) return true;
    group.drop();
    message("Object cannot be used here.");
    return false;
}

bool CornerTool::apply(engine::Entity& a, engine::Entity& b, const EditCurve& curveA, const EditCurve& curveB,
                       const Corner& corner) {
    if (!trims()) {
        addJoint(a, b, corner);
        return true;
    }
    if (&a == &b) {
        auto polyline = engine::cornerInPolyline(curveA, corner);
        if (!polyline) return false;
        document().replaceEntity(a, std::move(polyline));
        return true;
    }
    auto first = engine::cutToCorner(curveA, corner.first);
    auto second = engine::cutToCorner(curveB, corner.second);
    if (!first || !second) return false;
    const std::uint64_t joint = addJoint(a, b, corner);
    std::vector<std::uint64_t> ids{a.id(), b.id()};
    if (a.type() != engine::EntityType::Polyline) std::swap(ids[0], ids[1]);
    if (joint != 0) ids.insert(ids.begin() + 1, joint);
    const bool joined = joins(a, curveA) && joins(b, curveB) &&
                        (a.type() == engine::EntityType::Polyline || b.type() == engine::EntityType::Polyline);
    if (!curveA.closed()) document().replaceEntity(a, std::move(first));
    if (!curveB.closed()) document().replaceEntity(b, std::move(second));
    if (joined) joinToPolyline(ids);
    return true;
}

bool CornerTool::joins(const engine::Entity& entity, const EditCurve& curve) {
    using engine::EntityType;
    const EntityType type = entity.type();
    return !curve.closed() && (type == EntityType::Line || type == EntityType::Arc || type == EntityType::Polyline);
}

void CornerTool::joinToPolyline(const std::vector<std::uint64_t>& ids) {
    std::vector<const engine::Entity*> parts;
    for (const std::uint64_t id : ids) parts.push_back(drawing().findById(id));
    engine::JoinOptions options;
    options.toPolylines = true;
    std::vector<engine::JoinedChain> chains = engine::joinEntities(parts, options);
    if (chains.size() != 1 || chains.front().members.size() != ids.size()) return;
    document().replaceEntity(*drawing().findById(ids.front()), std::move(chains.front().made));
    document().removeEntities({ids.begin() + 1, ids.end()});
}

std::uint64_t CornerTool::addJoint(const engine::Entity& a, const engine::Entity& b, const Corner& corner) {
    if (corner.sharp) return 0;
    std::unique_ptr<engine::Entity> joint;
    if (const auto arc = math::arcFromBulge(corner.from, corner.to, corner.bulge)) {
        const double from = arc->sweep > 0.0 ? arc->start : arc->end();
        const double to = arc->sweep > 0.0 ? arc->end() : arc->start;
        joint = std::make_unique<engine::ArcEntity>(arc->center, arc->radius, math::normalizeAngle(from),
                                                    math::normalizeAngle(to));
    } else {
        joint = std::make_unique<engine::LineEntity>(corner.from, corner.to);
    }
    // What both have in common passes on.
    document().applyCurrentProperties(*joint);
    if (a.layer == b.layer) joint->layer = a.layer;
    if (a.color == b.color) joint->color = a.color;
    if (a.linetype == b.linetype) joint->linetype = a.linetype;
    if (a.linetypeScale() == b.linetypeScale()) joint->setLinetypeScale(a.linetypeScale());
    if (a.lineweight == b.lineweight) joint->lineweight = a.lineweight;
    if (a.transparency == b.transparency) joint->transparency = a.transparency;
    if (a.elevation == b.elevation) joint->elevation = a.elevation;
    if (a.thickness() == b.thickness()) joint->setThickness(a.thickness());
    return document().addEntity(std::move(joint)).id();
}

}  // namespace kova::cmd::commands
