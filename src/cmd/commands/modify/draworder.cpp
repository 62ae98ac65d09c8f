#include <unordered_set>

#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Entity;
using Entities = std::vector<Entity*>;

/// Puts the members before the first or behind the last of the references; without references before or behind all.
void reorder(doc::Document& document, const std::unordered_set<std::uint64_t>& members,
             const std::unordered_set<std::uint64_t>& references, bool above) {
    engine::EntityList& space = document.drawing().currentSpace();
    Entities moved;
    Entities rest;
    std::optional<std::size_t> place;
    for (Entity& entity : space) {
        if (members.contains(entity.id())) {
            moved.push_back(&entity);
            continue;
        }
        rest.push_back(&entity);
        if (references.contains(entity.id()) && (above || !place)) place = rest.size() - (above ? 0 : 1);
    }
    if (!references.empty() && !place) return;
    const std::size_t at = place.value_or(above ? rest.size() : 0);
    rest.insert(rest.begin() + static_cast<std::ptrdiff_t>(at), moved.begin(), moved.end());
    document.setDrawOrder(space, rest);
}

class DrawOrderTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        const Answer option = co_await ask.keyword(
            "Enter object ordering option [Above objects/Under objects/Front/Back] <Back>:", "Above Under Front Back");
        const bool above = option.is("ABOVE") || option.is("FRONT");
        std::unordered_set<std::uint64_t> references;
        if (option.is("ABOVE") || option.is("UNDER")) {
            // A second selection of its own, after which the first one is again what P selects.
            document().selection().clear();
            const Answer others = co_await ask.selection("Select reference objects:");
            references.insert(others.ids.begin(), others.ids.end());
            document().selection().set(selected.ids);
            if (references.empty()) co_return;
        }
        const std::unordered_set<std::uint64_t> members(selected.ids.begin(), selected.ids.end());
        std::erase_if(references, [&](std::uint64_t id) { return members.contains(id); });
        if (references.empty() && (option.is("ABOVE") || option.is("UNDER"))) co_return;
        const doc::GroupScope group(document(), "DRAWORDER");
        reorder(document(), members, references, above);
    }
};

/// What stands on no locked layer may be put elsewhere in the drawing order, hidden or not.
bool mayMove(const engine::Drawing& drawing, const Entity& entity) {
    const engine::Layer* layer = drawing.layers.find(entity.layer);
    return layer == nullptr || !layer->locked;
}

bool isAnnotation(const Entity& entity) {
    using engine::EntityType;
    switch (entity.type()) {
        case EntityType::Text:
        case EntityType::MText:
        case EntityType::Dimension:
        case EntityType::Leader:
        case EntityType::MLeader:
        case EntityType::Tolerance:
            return true;
        default:
            return false;
    }
}

/// TEXTTOFRONT: texts, dimensions and leaders of the space come to the front.
class TextToFrontCommand final : public OneShotCommand {
public:
    TextToFrontCommand() : OneShotCommand("TEXTTOFRONT", "Annotation to Front", "Modify") {}
    void execute(CommandContext& context) override {
        std::unordered_set<std::uint64_t> members;
        for (const Entity& entity : context.drawing().currentSpace())
            if (isAnnotation(entity) && mayMove(context.drawing(), entity)) members.insert(entity.id());
        {
            const doc::GroupScope group(context.document, "TEXTTOFRONT");
            reorder(context.document, members, {}, true);
        }
        context.message(counted(members.size(), "object") + " brought to front.");
    }
};

/// HATCHTOBACK: all hatches of the space, or those that are selected, go to the back.
class HatchToBackCommand final : public OneShotCommand {
public:
    HatchToBackCommand() : OneShotCommand("HATCHTOBACK", "Hatches to Back", "Modify", {"HB"}) {}
    void execute(CommandContext& context) override {
        const doc::SelectionSet& selection = context.document.selection();
        std::unordered_set<std::uint64_t> members;
        for (const Entity& entity : context.drawing().currentSpace())
            if (entity.type() == engine::EntityType::Hatch && mayMove(context.drawing(), entity) &&
                (selection.empty() || selection.contains(entity.id())))
                members.insert(entity.id());
        {
            const doc::GroupScope group(context.document, "HATCHTOBACK");
            reorder(context.document, members, {}, false);
        }
        const std::string noun = members.size() == 1 ? " hatch" : " hatches";
        context.message(std::to_string(members.size()) + noun + " sent to back.");
    }
};

}  // namespace

KOVA_TOOL_COMMAND(DrawOrder, "DRAWORDER", "Draw Order", "Modify", {"DR"})
KOVA_REGISTER_COMMAND(TextToFrontCommand)
KOVA_REGISTER_COMMAND(HatchToBackCommand)

}  // namespace kova::cmd::commands
