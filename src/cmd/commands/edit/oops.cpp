#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "doc/entity_actions.hpp"

namespace kova::cmd::commands {

namespace {

/// Commands whose removals OOPS brings back.
constexpr std::string_view kRemovers[] = {"ERASE", "BLOCK", "WBLOCK"};
const std::string kLabel = "OOPS";

struct Removed {
    const engine::Entity* entity = nullptr;
    engine::EntityList* list = nullptr;
};

template <class Action>
bool removedBy(const doc::IUndoableAction& action, engine::Drawing& drawing, Removed& out) {
    const auto* remove = dynamic_cast<const Action*>(&action);
    if (remove == nullptr) return false;
    out = {remove->removed(), remove->list(drawing)};
    return out.entity != nullptr && out.list != nullptr;
}

/// The latest group that removed entities, unless OOPS was there since; null: none.
const doc::UndoGroup* lastRemoval(const doc::UndoHistory& history) {
    for (std::size_t i = 0;; ++i) {
        const doc::UndoGroup* group = history.undoGroup(i);
        if (group == nullptr || group->label == kLabel) return nullptr;
        if (std::find(std::begin(kRemovers), std::end(kRemovers), group->label) != std::end(kRemovers)) return group;
    }
}

/// OOPS: copies of what the last removal took out come back, without undoing what came later. The history still
/// holds the entities themselves.
class OopsCommand final : public OneShotCommand {
public:
    OopsCommand() : OneShotCommand("OOPS", "Oops", "Edit") {}

    void execute(CommandContext& context) override {
        const doc::UndoGroup* removal = lastRemoval(context.document.history());
        std::vector<std::pair<std::unique_ptr<engine::Entity>, engine::EntityList*>> copies;
        if (removal != nullptr) {
            for (const auto& action : removal->actions) {
                Removed removed;
                if (removedBy<doc::RemoveEntityAction>(*action, context.drawing(), removed) ||
                    removedBy<doc::RemoveLayoutEntityAction>(*action, context.drawing(), removed) ||
                    removedBy<doc::RemoveBlockEntityAction>(*action, context.drawing(), removed))
                    copies.emplace_back(removed.entity->clone(), removed.list);
            }
        }
        if (copies.empty()) return context.message("Nothing to restore.");
        const std::size_t count = copies.size();
        {
            const doc::GroupScope group(context.document, kLabel);
            for (auto& [copy, list] : copies) context.document.addEntity(std::move(copy), *list);
        }
        context.message(counted(count, "object") + " restored.");
    }
};

}  // namespace

KOVA_REGISTER_COMMAND(OopsCommand)

}  // namespace kova::cmd::commands
