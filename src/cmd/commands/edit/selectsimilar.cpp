#include <unordered_set>

#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "cmd/registry.hpp"
#include "engine/kinds/all.hpp"
#include "strings/numbers.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Entity;

/// What must agree besides the kind, as SELECTSIMILARMODE counts it.
enum Similar : int {
    kColor = 1,
    kLayer = 2,
    kLinetype = 4,
    kLinetypeScale = 8,
    kLineweight = 16,
    kPlotStyle = 32,
    kStyle = 64,
    kName = 128,
};
constexpr int kDefaultMode = kLayer | kName;
constexpr const char* kMode = "selectSimilarMode";

engine::Name styleOf(const Entity& entity) {
    if (const auto* e = dynamic_cast<const engine::TextEntity*>(&entity)) return e->textStyle;
    if (const auto* e = dynamic_cast<const engine::MTextEntity*>(&entity)) return e->textStyle;
    if (const auto* e = dynamic_cast<const engine::AttributeDefinitionEntity*>(&entity)) return e->textStyle;
    if (const auto* e = dynamic_cast<const engine::DimensionEntity*>(&entity)) return e->dimStyleName;
    if (const auto* e = dynamic_cast<const engine::LeaderEntity*>(&entity)) return e->dimStyleName;
    if (const auto* e = dynamic_cast<const engine::ToleranceEntity*>(&entity)) return e->styleName;
    if (const auto* e = dynamic_cast<const engine::MLeaderEntity*>(&entity)) return e->styleName;
    if (const auto* e = dynamic_cast<const engine::TableEntity*>(&entity)) return e->styleName;
    if (const auto* e = dynamic_cast<const engine::MLineEntity*>(&entity)) return e->styleName;
    return {};
}

/// Names of the things that are shown: blocks, images, patterns.
engine::Name shownName(const Entity& entity) {
    if (const auto* e = dynamic_cast<const engine::BlockReferenceEntity*>(&entity)) return e->blockName;
    if (const auto* e = dynamic_cast<const engine::ImageEntity*>(&entity)) return e->filePath;
    if (const auto* e = dynamic_cast<const engine::HatchEntity*>(&entity)) return e->patternName;
    if (const auto* e = dynamic_cast<const engine::ShapeEntity*>(&entity)) return e->name;
    return {};
}

/// A text that is the same for entities that count as similar.
std::string signature(const Entity& entity, int mode) {
    std::string out = std::to_string(static_cast<int>(entity.type()));
    const auto add = [&](std::string_view text) {
        out += '\n';
        out += text;
    };
    if ((mode & kColor) != 0) add(engine::colorText(entity.color));
    if ((mode & kLayer) != 0) add(entity.layer.folded());
    if ((mode & kLinetype) != 0) add(entity.linetype.folded());
    if ((mode & kLinetypeScale) != 0) add(strings::fixed(entity.linetypeScale(), 6));
    if ((mode & kLineweight) != 0) add(std::to_string(entity.lineweight));
    if ((mode & kPlotStyle) != 0) add(entity.plotStyleName().folded());
    if ((mode & kStyle) != 0) add(styleOf(entity).folded());
    if ((mode & kName) != 0) add(shownName(entity).folded());
    return out;
}

/// SELECTSIMILAR: selects all that is like one of the selected objects.
class SelectSimilarTool final : public DialogueTool {
public:
    bool keepsSelection() const override { return true; }

protected:
    Dialogue dialogue(Ask& ask) override {
        for (;;) {
            const Answer selected = co_await ask.selection("Select objects or [SEttings]:", "SEttings");
            if (!selected.is("SETTINGS")) co_return select(selected.ids);
            std::string prompt = withDefault(
                "Enter the sum of what must agree (1 color, 2 layer, 4 linetype, 8 linetype "
                "scale, 16 lineweight, 32 plot style, 64 object style, 128 name)",
                std::to_string(mode()));
            const Answer answer = co_await ask.integer(std::move(prompt), 0, 255);
            if (answer.isNumber()) remember(document(), kMode, answer.number);
        }
    }

private:
    int mode() const { return static_cast<int>(remembered(document(), kMode, kDefaultMode)); }

    void select(const std::vector<std::uint64_t>& ids) {
        if (ids.empty()) return;
        std::unordered_set<std::string> wanted;
        for (const std::uint64_t id : ids)
            if (const Entity* entity = drawing().findById(id)) wanted.insert(signature(*entity, mode()));
        std::vector<std::uint64_t> found;
        for (const Entity& entity : drawing().currentSpace())
            if (document().isSelectable(entity) && wanted.contains(signature(entity, mode())))
                found.push_back(entity.id());
        document().selection().set(std::move(found));
        message(std::to_string(document().selection().size()) + " found.");
    }
};

}  // namespace

KOVA_TOOL_COMMAND(SelectSimilar, "SELECTSIMILAR", "Select Similar", "Edit")

}  // namespace kova::cmd::commands
