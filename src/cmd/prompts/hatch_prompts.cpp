#include "cmd/prompts/hatch_prompts.hpp"

#include <set>

#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/prompts/property_prompts.hpp"
#include "strings/wildcards.hpp"
#include "engine/libraries/libraries.hpp"
#include "math/angles.hpp"

namespace kova::cmd::commands {

using engine::HatchEntity;

namespace {

constexpr const char* kGradients =
    "Linear Cylinder Invcylinder SPherical Hemispherical Curved INVSpherical INVHemispherical INVCurved";

Dialogue askAngle(Ask& ask, const engine::Drawing& drawing, const char* question, double& angle) {
    std::string prompt = withDefault(question, lengthDefault(drawing, math::toDegrees(angle)));
    const Answer answer = co_await ask.angle(std::move(prompt));
    if (answer.isNumber()) angle = isTyped(answer) ? includedAngle(answer, drawing) : answer.number;
}

Dialogue askUserPattern(Ask& ask, const engine::Drawing& drawing, HatchFill& fill) {
    fill.user = true;
    fill.gradient.reset();
    co_await askAngle(ask, drawing, "Specify angle for crosshatch lines", fill.angle);
    std::string prompt = withDefault("Specify spacing between the lines", lengthDefault(drawing, fill.spacing));
    const Answer space = co_await ask.distance(std::move(prompt), {}, {}, kPositive);
    fill.spacing = space.numberOr(fill.spacing);
    const char* question = fill.doubled ? "Double hatch area? [Yes/No] <Y>:" : "Double hatch area? [Yes/No] <N>:";
    fill.doubled = co_await askYesNo(ask, question, fill.doubled);
}

}  // namespace

HatchFill HatchFill::current(const engine::Drawing& drawing) {
    HatchFill fill;
    fill.pattern = engine::Name(engine::sysVarString(drawing, "HPNAME", "ANSI31"));
    fill.user = fill.pattern.view().starts_with('_');
    if (fill.pattern.empty()) fill.pattern = "ANSI31";
    fill.scale = engine::sysVarReal(drawing, "HPSCALE", 1.0);
    fill.angle = engine::sysVarReal(drawing, "HPANG", 0.0);
    fill.spacing = engine::sysVarReal(drawing, "HPSPACE", 1.0);
    fill.doubled = engine::sysVarInt(drawing, "HPDOUBLE") != 0;
    fill.islandStyle = engine::sysVarInt(drawing, "HPISLANDDETECTION", 1);
    return fill;
}

HatchFill HatchFill::of(const HatchEntity& hatch) {
    HatchFill fill;
    fill.pattern = hatch.patternName;
    fill.user = hatch.patternType == HatchEntity::kUserDefined;
    fill.scale = fill.user ? 1.0 : hatch.patternScale;
    fill.angle = hatch.patternAngle;
    fill.spacing = fill.user ? hatch.patternScale : 1.0;
    fill.doubled = hatch.doubled;
    fill.gradient = hatch.gradient;
    fill.islandStyle = hatch.islandStyle;
    return fill;
}

void HatchFill::store(engine::Drawing& drawing) const {
    engine::setSysVar(drawing, "HPNAME", user ? std::string("_USER") : pattern.str());
    engine::setSysVar(drawing, "HPSCALE", scale);
    engine::setSysVar(drawing, "HPANG", angle);
    engine::setSysVar(drawing, "HPSPACE", spacing);
    engine::setSysVar(drawing, "HPDOUBLE", doubled ? 1 : 0);
}

void HatchFill::applyTo(HatchEntity& hatch) const {
    hatch.islandStyle = islandStyle;
    hatch.gradient = gradient;
    // A pattern of the hatch's own stays only as long as its name.
    if (gradient || user || hatch.patternName != pattern) hatch.ownPattern.clear();
    hatch.doubled = false;
    if (user && !gradient) {
        hatch.patternType = HatchEntity::kUserDefined;
        hatch.patternName = "_USER";
        hatch.patternScale = spacing;
        hatch.patternAngle = angle;
        hatch.doubled = doubled;
        return;
    }
    hatch.patternName = gradient ? engine::Name("SOLID") : pattern;
    if (hatch.patternType == HatchEntity::kUserDefined) hatch.patternType = HatchEntity::kPredefined;
    const bool solid = hatch.patternName == "SOLID";
    hatch.patternScale = solid ? 1.0 : scale;
    hatch.patternAngle = solid ? 0.0 : angle;
}

bool HatchFill::choose(const engine::Drawing& drawing, std::string_view text) {
    std::string_view name = text;
    std::int32_t island = islandStyle;
    if (const auto comma = text.find(','); comma != std::string_view::npos) {
        const std::string mode = engine::upperCase(text.substr(comma + 1));
        if (mode != "N" && mode != "O" && mode != "I") return false;
        island = mode == "N" ? HatchEntity::kNormal : mode == "O" ? HatchEntity::kOuter : HatchEntity::kIgnore;
        name = text.substr(0, comma);
    }
    if (name.starts_with('_') || name.empty()) return false;
    const bool solid = engine::equalNoCase(name, "SOLID");
    const engine::HatchPattern* known = solid ? nullptr : drawing.findHatchPattern(engine::Name(name));
    if (!solid && known == nullptr) return false;
    pattern = solid ? engine::Name("SOLID") : known->name;
    islandStyle = island;
    user = false;
    gradient.reset();
    return true;
}

Dialogue listHatchPatterns(Ask& ask, const engine::Drawing& drawing) {
    const std::string filter = co_await askNamesToList(ask, "Enter pattern(s) to list <*>:");
    std::size_t count = 0;
    const auto print = [&](const engine::HatchPattern& p) {
        if (!matchesWildcards(p.name.view(), filter)) return;
        ++count;
        ask.message(p.name.str() + " - " + p.description);
    };
    if (matchesWildcards("SOLID", filter)) {
        ++count;
        ask.message("SOLID - Solid fill");
    }
    for (const engine::HatchPattern& p : drawing.hatchPatterns) print(p);
    for (const engine::HatchPattern& p : engine::builtinHatchPatterns(drawing.isMetric()))
        if (!drawing.hatchPatterns.contains(p.name) && p.name != "SOLID") print(p);
    if (count == 0) ask.message("No matching names found.");
}

Dialogue askHatchScale(Ask& ask, const engine::Drawing& drawing, HatchFill& fill) {
    if (fill.pattern == "SOLID" && !fill.user) co_return;
    std::string prompt = withDefault("Specify a scale for the pattern", lengthDefault(drawing, fill.scale));
    const Answer scale = co_await ask.distance(std::move(prompt), {}, {}, kPositive);
    fill.scale = scale.numberOr(fill.scale);
    co_await askAngle(ask, drawing, "Specify an angle for the pattern", fill.angle);
}

Dialogue askHatchFill(Ask& ask, const engine::Drawing& drawing, HatchFill& fill) {
    for (;;) {
        std::string prompt = withDefault("Enter a pattern name or [?/Solid/User defined/Gradient]",
                                         fill.user ? std::string_view("U") : fill.pattern.view());
        const Answer answer = co_await ask.text(std::move(prompt), "? Solid User Gradient");
        if (answer.is("?")) {
            co_await listHatchPatterns(ask, drawing);
            continue;
        }
        if (answer.is("USER") || (answer.isEnter() && fill.user)) co_return co_await askUserPattern(ask, drawing, fill);
        if (answer.is("GRADIENT")) co_return co_await askHatchGradient(ask, drawing, fill);
        if (answer.is("SOLID")) {
            fill.choose(drawing, "SOLID");
            co_return;
        }
        if (answer.isEnter() || fill.choose(drawing, trimmed(answer.text))) {
            fill.gradient.reset();
            co_return co_await askHatchScale(ask, drawing, fill);
        }
        ask.message("Unknown pattern " + inQuotes(trimmed(answer.text)) + ".");
    }
}

Dialogue askHatchGradient(Ask& ask, const engine::Drawing& drawing, HatchFill& fill) {
    const Answer name = co_await ask.keyword(
        "Enter gradient pattern name [Linear/Cylinder/Invcylinder/SPherical/Hemispherical/Curved/INVSpherical/"
        "INVHemispherical/INVCurved] <Linear>:",
        kGradients);
    engine::HatchGradient gradient;
    if (!name.isEnter()) gradient.name = name.word;
    const auto first = co_await askColor(ask, "Enter color 1 <5>:", true);
    const auto second = co_await askColor(ask, "Enter color 2 <single color>:", true);
    gradient.stops.push_back({0.0, first.value_or(engine::Color::index(5))});
    gradient.stops.push_back({1.0, second.value_or(engine::Color::index(7))});
    gradient.singleColor = !second.has_value();
    gradient.tint = second ? 0.0 : 1.0;
    const Answer angle = co_await ask.angle("Specify gradient angle <0>:");
    if (angle.isNumber()) gradient.angle = isTyped(angle) ? includedAngle(angle, drawing) : angle.number;
    fill.user = false;
    fill.gradient = std::move(gradient);
}

Dialogue askIslandStyle(Ask& ask, const char* question, std::int32_t& style) {
    const char* known[] = {"Normal", "Outer", "Ignore"};
    std::string prompt = withDefault(question, known[std::clamp(style, 0, 2)]);
    const Answer answer = co_await ask.keyword(std::move(prompt), "Ignore Outer Normal");
    if (answer.is("NORMAL")) style = HatchEntity::kNormal;
    if (answer.is("OUTER")) style = HatchEntity::kOuter;
    if (answer.is("IGNORE")) style = HatchEntity::kIgnore;
}

Task<std::optional<int>> askHatchOrder(Ask& ask) {
    const Answer order = co_await ask.keyword(
        "Enter draw order [do Not assign/send to Back/bring to Front/send beHind boundary/bring in front of "
        "bounDary] <send behind boundary>:",
        "Not Back Front beHind bounDary");
    if (order.isEnter()) co_return std::nullopt;
    co_return order.is("NOT") ? 0 : order.is("BACK") ? 1 : order.is("FRONT") ? 2 : order.is("BEHIND") ? 3 : 4;
}

Task<int> askOriginCorner(Ask& ask) {
    const Answer corner =
        co_await ask.keyword("Specify location [bottom Left/bottom Right/top rIght/top lEft/Center] <bottom Left>:",
                             "Left Right rIght lEft Center");
    const std::string typed = engine::upperCase(trimmed(corner.text));
    if (typed == "R" || typed == "RIGHT") co_return 2;
    if (typed == "I") co_return 3;
    if (typed == "E") co_return 4;
    if (typed == "C" || typed == "CENTER") co_return 5;
    co_return 1;
}

std::optional<math::Vector2> hatchOriginAt(int mode, const std::vector<engine::HatchLoop>& loops) {
    math::Bounds2 box;
    if (mode != 0)
        for (const engine::HatchLoop& loop : loops) box.expand(engine::pathBounds(loop.path()));
    if (box.is_empty()) return std::nullopt;
    switch (mode) {
        case 1:
            return box.min;
        case 2:
            return math::Vector2{box.max.x, box.min.y};
        case 3:
            return box.max;
        case 4:
            return math::Vector2{box.min.x, box.max.y};
        case 5:
            return box.center();
        default:
            return std::nullopt;
    }
}

void orderHatches(doc::Document& document, const std::vector<engine::Entity*>& hatches,
                  const std::vector<std::uint64_t>& boundary, int mode) {
    if (mode < 1 || mode > 4 || hatches.empty()) return;
    engine::EntityList& space = document.drawing().currentSpace();
    const std::set<const engine::Entity*> moved(hatches.begin(), hatches.end());
    std::optional<std::uint32_t> first;
    std::optional<std::uint32_t> last;
    for (const std::uint64_t id : boundary) {
        const engine::Entity* entity = document.drawing().findById(id);
        if (entity == nullptr || entity->owner() != &space || moved.contains(entity)) continue;
        first = std::min(first.value_or(entity->order()), entity->order());
        last = std::max(last.value_or(entity->order()), entity->order());
    }
    if (mode >= 3 && !first) return;
    std::vector<engine::Entity*> order = space.entities();
    std::erase_if(order, [&](engine::Entity* e) { return moved.contains(e); });
    auto at = mode == 1 ? order.begin() : order.end();
    if (mode == 3)
        at = std::find_if(order.begin(), order.end(), [&](engine::Entity* e) { return e->order() >= *first; });
    if (mode == 4) at = std::find_if(order.begin(), order.end(), [&](engine::Entity* e) { return e->order() > *last; });
    order.insert(at, hatches.begin(), hatches.end());
    document.setDrawOrder(space, order);
}

}  // namespace kova::cmd::commands
