#include <unordered_set>

#include "engine/inquiry/value_text.hpp"
#include "cmd/isolation.hpp"
#include "cmd/registry.hpp"
#include "cmd/selection_command.hpp"

// Objects hidden one by one. A hidden object is neither drawn nor selected until it is shown again.

namespace kova::cmd::commands {

namespace {

using engine::Entity;

void setVisible(doc::Document& document, const std::vector<Entity*>& entities, bool visible) {
    for (Entity* entity : entities) document.modifyEntity(*entity, [visible](Entity& e) { e.visible = visible; });
    if (!visible) noteIsolated(document, entities);
}

class HideObjectsCommand final : public SelectionCommand {
public:
    HideObjectsCommand() : SelectionCommand("HIDEOBJECTS", "Hide Objects", "View") {}
    void work(doc::Document& document, ToolHost& host) override {
        std::vector<Entity*> entities;
        for (const std::uint64_t id : document.selection().ids())
            if (Entity* entity = document.drawing().findById(id); entity != nullptr && entity->visible)
                entities.push_back(entity);
        const doc::GroupScope group(document, "HIDEOBJECTS");
        setVisible(document, entities, false);
        document.selection().clear();
        host.message(counted(entities.size(), "object") + " hidden.");
    }
};

class IsolateObjectsCommand final : public SelectionCommand {
public:
    IsolateObjectsCommand() : SelectionCommand("ISOLATEOBJECTS", "Isolate Objects", "View", {"ISOLATE"}) {}
    void work(doc::Document& document, ToolHost& host) override {
        const std::vector<std::uint64_t>& ids = document.selection().ids();
        const std::unordered_set<std::uint64_t> kept(ids.begin(), ids.end());
        std::vector<Entity*> others;
        for (Entity& entity : document.drawing().currentSpace())
            // The windows of a layout stay: without them nothing of the model would be seen.
            if (entity.visible && entity.type() != engine::EntityType::Viewport && !kept.contains(entity.id()))
                others.push_back(&entity);
        const doc::GroupScope group(document, "ISOLATEOBJECTS");
        setVisible(document, others, false);
        host.message(counted(kept.size(), "object") + " isolated, " + counted(others.size(), "object") + " hidden.");
    }
};

class UnisolateObjectsCommand final : public OneShotCommand {
public:
    UnisolateObjectsCommand()
        : OneShotCommand("UNISOLATEOBJECTS", "End Object Isolation", "View", {"UNISOLATE", "UNHIDE"}) {}
    void execute(CommandContext& context) override {
        std::vector<Entity*> hidden;
        for (Entity& entity : context.drawing().currentSpace())
            if (!entity.visible) hidden.push_back(&entity);
        const doc::GroupScope group(context.document, "UNISOLATEOBJECTS");
        setVisible(context.document, hidden, true);
        context.message(counted(hidden.size(), "object") + " shown.");
    }
};

}  // namespace

KOVA_REGISTER_COMMAND(HideObjectsCommand)
KOVA_REGISTER_COMMAND(IsolateObjectsCommand)
KOVA_REGISTER_COMMAND(UnisolateObjectsCommand)

}  // namespace kova::cmd::commands
