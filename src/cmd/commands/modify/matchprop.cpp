#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "edit/entity_copies.hpp"
#include "cmd/pick_request.hpp"
#include "cmd/registry.hpp"
#include "engine/kinds/all.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Entity;

/// What MATCHPROP carries over; the bits are remembered with the document.
enum Matched : unsigned {
    kColor = 1,
    kLayer = 2,
    kLinetype = 4,
    kLinetypeScale = 8,
    kLineweight = 16,
    kTransparency = 32,
    kThickness = 64,
    kPlotStyle = 128,
    kDimension = 256,
    kText = 512,
    kPolyline = 1024,
    kHatch = 2048,
    kTable = 4096,
    kMultileader = 8192,
    kAll = 16383,
};
struct Setting {
    const char* keyword;
    unsigned bit;
};
constexpr Setting kSettings[] = {{"COLOR", kColor},         {"LAYER", kLayer},
                                 {"LTYPE", kLinetype},      {"LTSCALE", kLinetypeScale},
                                 {"LWEIGHT", kLineweight},  {"TRANSPARENCY", kTransparency},
                                 {"THICKNESS", kThickness}, {"PLOTSTYLE", kPlotStyle},
                                 {"DIMENSION", kDimension}, {"TEXT", kText},
                                 {"POLYLINE", kPolyline},   {"HATCH", kHatch},
                                 {"TABLE", kTable},         {"MULTILEADER", kMultileader}};
constexpr const char* kRemembered = "matchprop";

/// What a text of any kind shares with the others.
struct TextFormat {
    engine::Name* style;
    double* height;
    double* widthFactor = nullptr;
    double* oblique = nullptr;
};
std::optional<TextFormat> textFormat(Entity& entity) {
    if (auto* text = dynamic_cast<engine::TextEntity*>(&entity))
        return TextFormat{&text->textStyle, &text->height, &text->widthFactor, &text->oblique};
    if (auto* text = dynamic_cast<engine::AttributeDefinitionEntity*>(&entity))
        return TextFormat{&text->textStyle, &text->textHeight, &text->widthFactor, &text->oblique};
    if (auto* text = dynamic_cast<engine::MTextEntity*>(&entity)) return TextFormat{&text->textStyle, &text->height};
    return std::nullopt;
}

void matchText(Entity& source, Entity& target) {
    const auto from = textFormat(source);
    const auto to = textFormat(target);
    if (!from || !to) return;
    *to->style = *from->style;
    *to->height = *from->height;
    if (from->widthFactor == nullptr || to->widthFactor == nullptr) return;
    *to->widthFactor = *from->widthFactor;
    *to->oblique = *from->oblique;
}

void matchPolyline(const engine::PolylineEntity& source, engine::PolylineEntity& target) {
    target.ltgen = source.ltgen;
    if (source.vertices.empty()) return;
    // Only a width that is the same all along can be carried over.
    const double width = source.startWidth(0);
    for (std::size_t i = 0; i < source.segmentCount(); ++i)
        if (source.startWidth(i) != width || source.endWidth(i) != width) return;
    target.startWidths.assign(width != 0.0 ? target.vertices.size() : 0, width);
    target.endWidths = target.startWidths;
}

void matchHatch(const engine::HatchEntity& source, engine::HatchEntity& target) {
    target.patternType = source.patternType;
    target.patternName = source.patternName;
    target.patternScale = source.patternScale;
    target.patternAngle = source.patternAngle;
    target.doubled = source.doubled;
    target.patternMirrored = source.patternMirrored;
    target.ownPattern = source.ownPattern;
    target.gradient = source.gradient;
    target.islandStyle = source.islandStyle;
}

void matchDimension(Entity& source, Entity& target) {
    const auto style = [](Entity& entity) -> engine::Name* {
        if (auto* dimension = dynamic_cast<engine::DimensionEntity*>(&entity)) return &dimension->dimStyleName;
        if (auto* leader = dynamic_cast<engine::LeaderEntity*>(&entity)) return &leader->dimStyleName;
        if (auto* tolerance = dynamic_cast<engine::ToleranceEntity*>(&entity)) return &tolerance->styleName;
        return nullptr;
    };
    const engine::Name* from = style(source);
    engine::Name* to = style(target);
    if (from == nullptr || to == nullptr) return;
    *to = *from;
    const auto* a = dynamic_cast<engine::DimensionEntity*>(&source);
    auto* b = dynamic_cast<engine::DimensionEntity*>(&target);
    if (a == nullptr || b == nullptr) return;
    const std::optional<math::Vector2> text = b->hasUserText() ? std::optional(b->userText) : std::nullopt;
    b->styleOverrides = a->styleOverrides;
    b->styleOverrides.erase("DIMUPT");
    b->nameOverrides = a->nameOverrides;
    b->textHeight = a->textHeight;
    b->arrowSize = a->arrowSize;
    b->extGap = a->extGap;
    b->extExtension = a->extExtension;
    if (text) b->setUserText(*text);
}

void match(Entity& source, Entity& target, unsigned what) {
    if ((what & kColor) != 0) target.color = source.color;
    if ((what & kLayer) != 0) target.layer = source.layer;
    if ((what & kLinetype) != 0) target.linetype = source.linetype;
    if ((what & kLinetypeScale) != 0) target.setLinetypeScale(source.linetypeScale());
    if ((what & kLineweight) != 0) target.lineweight = source.lineweight;
    if ((what & kTransparency) != 0) target.transparency = source.transparency;
    if ((what & kPlotStyle) != 0) target.setPlotStyleName(source.plotStyleName());
    if ((what & kThickness) != 0 && takesThickness(source.type()) && takesThickness(target.type()))
        target.setThickness(source.thickness());
    if ((what & kText) != 0) matchText(source, target);
    if ((what & kDimension) != 0) matchDimension(source, target);
    if (source.type() != target.type()) return;
    switch (source.type()) {
        case engine::EntityType::Polyline:
            if ((what & kPolyline) != 0)
                matchPolyline(static_cast<engine::PolylineEntity&>(source),
                              static_cast<engine::PolylineEntity&>(target));
            break;
        case engine::EntityType::Hatch:
            if ((what & kHatch) != 0)
                matchHatch(static_cast<engine::HatchEntity&>(source), static_cast<engine::HatchEntity&>(target));
            break;
        case engine::EntityType::Table:
            if ((what & kTable) != 0)
                static_cast<engine::TableEntity&>(target).styleName =
                    static_cast<engine::TableEntity&>(source).styleName;
            break;
        case engine::EntityType::MLeader:
            if ((what & kMultileader) != 0) {
                auto& to = static_cast<engine::MLeaderEntity&>(target);
                const auto& from = static_cast<const engine::MLeaderEntity&>(source);
                to.styleName = from.styleName;
                to.overrides = from.overrides;
            }
            break;
        default:
            break;
    }
}

/// MATCHPROP: gives the look of one object to others.
class MatchPropTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        // What is selected beforehand is neither source nor destination.
        document().selection().clear();
        const Answer picked = co_await askSource(ask, "Select source object:");
        if (!picked.isObject()) co_return;
        for (;;) {
            const Answer selected = co_await ask.selection("Select destination object(s) or [Settings]:", "Settings");
            if (selected.is("SETTINGS")) {
                co_await askSettings(ask);
                continue;
            }
            const Entity* source = drawing().findById(picked.id);
            if (source != nullptr) apply(*source, selected.ids);
            co_return;
        }
    }

private:
    unsigned settings() const { return static_cast<unsigned>(remembered(document(), kRemembered, kAll)); }

    Dialogue askSettings(Ask& ask) {
        for (;;) {
            std::string active = "Current active settings:";
            for (const Setting& setting : kSettings)
                if ((settings() & setting.bit) != 0) active += std::string(" ") + setting.keyword;
            message(active);
            const Answer answer = co_await ask.keyword(
                "Enter property setting to turn on or off "
                "[Color/LAyer/LType/ltScale/LWeight/TRansparency/THickness/PLotstyle/Dimension/Text/POlyline/Hatch/"
                "TAble/Multileader/eXit] <eXit>:",
                "Color LAyer LType ltScale LWeight TRansparency THickness PLotstyle Dimension Text POlyline Hatch "
                "TAble "
                "Multileader eXit");
            if (answer.isEnter() || answer.is("EXIT")) co_return;
            for (const Setting& setting : kSettings)
                if (answer.is(setting.keyword)) remember(document(), kRemembered, settings() ^ setting.bit);
        }
    }

    void apply(const Entity& source, const std::vector<std::uint64_t>& ids) {
        const std::unique_ptr<Entity> model = source.clone();
        const doc::GroupScope group(document(), "MATCHPROP");
        for (Entity* target : entitiesInOrder(document(), ids))
            if (target != &source) document().modifyEntity(*target, [&](Entity& e) { match(*model, e, settings()); });
    }
};

}  // namespace

KOVA_TOOL_COMMAND(MatchProp, "MATCHPROP", "Match Properties", "Modify", {"MA", "PAINTER"})

}  // namespace kova::cmd::commands
