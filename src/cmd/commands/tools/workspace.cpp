#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/refusals.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

/// Names of arrangements of the window, of the whole program and gone when it ends: there is no window to arrange.
struct Workspaces {
    std::vector<std::string> names{"Drafting"};
    std::string current = "Drafting";

    std::vector<std::string>::iterator find(std::string_view name) {
        return std::find_if(names.begin(), names.end(),
                            [&](const std::string& known) { return engine::equalNoCase(known, name); });
    }
};
Workspaces& workspaces() {
    static Workspaces all;
    return all;
}

class WorkspaceTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        Workspaces& all = workspaces();
        const Answer option = co_await ask.keyword(
            "Enter workspace option [setCurrent/SAveas/Edit/Rename/Delete/SEttings/?] <setCurrent>:",
            "setCurrent SAveas Edit Rename Delete SEttings ?");
        if (option.is("EDIT") || option.is("SETTINGS")) {
            message(needsDialog(option.is("EDIT") ? "Customize" : "Workspace Settings"));
        } else if (option.is("?")) {
            list();
        } else if (option.is("SAVEAS")) {
            std::string prompt = withDefault("Save workspace as", all.current);
            const Answer answer = co_await ask.text(std::move(prompt));
            const std::string name = answer.isText() ? typedName(answer.text) : all.current;
            if (name.empty()) co_return;
            if (const auto known = all.find(name); known == all.names.end())
                all.names.push_back(name);
            else
                *known = name;
            all.current = name;
            message("Workspace " + inQuotes(name) + " saved for this process.");
        } else if (option.is("RENAME")) {
            const std::string from = co_await askKnown(ask, "Enter name of workspace to rename [?]");
            if (from.empty()) co_return;
            const Answer to = co_await ask.text("Enter new workspace name:");
            const std::string name = typedName(to.text);
            if (name.empty()) co_return;
            const auto taken = all.find(name);
            if (taken != all.names.end() && !engine::equalNoCase(name, from))
                co_return message("Workspace " + inQuotes(name) + " already exists.");
            if (all.current == from) all.current = name;
            *all.find(from) = name;
        } else if (option.is("DELETE")) {
            const std::string name = co_await askKnown(ask, "Enter name of workspace to delete [?]");
            if (name.empty()) co_return;
            if (name == all.current) co_return message("The current workspace cannot be deleted.");
            all.names.erase(all.find(name));
        } else {
            const std::string name = co_await askKnown(ask, "Enter name of workspace to make current [?]");
            if (!name.empty()) all.current = name;
        }
    }

private:
    void list() const {
        for (const std::string& name : workspaces().names)
            message(name == workspaces().current ? name + " (current)" : name);
    }

    /// A name of the list, as it is spelled there; Enter takes the current one.
    Task<std::string> askKnown(Ask& ask, const char* question) {
        for (;;) {
            std::string prompt = withDefault(question, workspaces().current);
            const Answer answer = co_await ask.text(std::move(prompt), "?");
            if (answer.isEnter()) co_return workspaces().current;
            if (answer.is("?")) {
                list();
                continue;
            }
            const std::string name = typedName(answer.text);
            const auto known = workspaces().find(name);
            if (known != workspaces().names.end()) co_return *known;
            message("Workspace " + inQuotes(name) + " not found.");
        }
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Workspace, "WORKSPACE", "Workspace", "Tools", {"WS"})

}  // namespace kova::cmd::commands
