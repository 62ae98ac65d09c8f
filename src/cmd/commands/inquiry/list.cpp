#include "cmd/dialogue.hpp"
#include "edit/entity_copies.hpp"
#include "engine/inquiry/entity_report.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

/// LIST: everything about the selected objects.
class ListTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        for (const engine::Entity* entity : entitiesInOrder(document(), selected.ids))
            for (const std::string& line : entityReport(drawing(), *entity)) message(line);
    }
};

/// DBLIST: the same for every object of the drawing.
class DblistTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask&) override {
        list(drawing().modelSpace());
        for (const auto& layout : drawing().layouts()) list(layout->entities);
        co_return;
    }

private:
    void list(const engine::EntityList& entities) const {
        for (const engine::Entity& entity : entities)
            for (const std::string& line : entityReport(drawing(), entity)) message(line);
    }
};

}  // namespace

KOVA_TOOL_COMMAND(List, "LIST", "List", "Inquiry", {"LI", "LS"})
KOVA_TOOL_COMMAND(Dblist, "DBLIST", "List Database", "Inquiry")

}  // namespace kova::cmd::commands
