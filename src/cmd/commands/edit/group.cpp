#include <unordered_set>

#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "edit/groups.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/registry.hpp"
#include "cmd/selection_command.hpp"
#include "doc/table_edits.hpp"
#include "engine/symbols/symbols.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Group;
using engine::Name;

/// GROUP makes a group of what is selected; -GROUP holds the older options.
class GroupTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (isCommandLineVariant()) co_return co_await options(ask);
        Name name;
        std::string description;
        for (;;) {
            const Answer selected = co_await ask.selection("Select objects or [Name/Description]:", "Name Description");
            if (selected.is("NAME")) {
                const std::optional<Name> given = co_await askNewName(ask);
                if (given) name = *given;
            } else if (selected.is("DESCRIPTION")) {
                const Answer text = co_await ask.line("Enter a group description:");
                if (text.isText()) description = text.text;
            } else {
                co_return create(name, description, selected.ids);
            }
        }
    }

private:
    Dialogue options(Ask& ask) {
        const Answer option =
            co_await ask.keyword("Enter a group option [?/Order/Add/Remove/Explode/REName/Selectable/Create] <Create>:",
                                 "? Order Add Remove Explode REName Selectable Create");
        if (option.is("?")) co_return co_await list(ask);
        if (option.isEnter() || option.is("CREATE")) co_return co_await createByName(ask);
        const std::optional<Name> name = co_await askKnownName(ask);
        if (!name) co_return;
        if (option.is("ADD") || option.is("REMOVE")) {
            const bool add = option.is("ADD");
            const Answer selected = co_await ask.selection(add ? "Select objects:" : "Select objects to remove:");
            if (!selected.ids.empty()) change(*name, [&](Group& group) { takeMembers(group, selected.ids, add); });
        } else if (option.is("EXPLODE")) {
            const doc::GroupScope scope(document(), "GROUP");
            document().editTable<doc::GroupTraits>([&](auto& groups) { groups.erase(*name); });
        } else if (option.is("RENAME")) {
            const std::optional<Name> fresh = co_await askNewName(ask);
            if (!fresh) co_return;
            const doc::GroupScope scope(document(), "GROUP");
            const std::string error = document().renameSymbol(engine::SymbolKind::Group, *name, *fresh);
            if (!error.empty()) message(error);
        } else if (option.is("SELECTABLE")) {
            const Group* group = drawing().groups.find(*name);
            const bool selectable = group != nullptr && group->selectable;
            const bool turn =
                co_await askYesNo(ask,
                                  selectable ? "This group is selectable. Do you wish to change it? [Yes/No] <Y>:"
                                             : "This group is not selectable. Do you wish to change it? [Yes/No] <Y>:",
                                  true);
            if (turn) change(*name, [&](Group& g) { g.selectable = !selectable; });
        } else {
            co_await order(ask, *name);
        }
    }

    Dialogue createByName(Ask& ask) {
        const std::optional<Name> name = co_await askNewName(ask);
        if (!name) co_return;
        const Answer text = co_await ask.line("Enter a group description:");
        const Answer selected = co_await ask.selection("Select entities:");
        create(*name, text.isText() ? text.text : std::string(), selected.ids);
    }

    /// Places of members, counted from 0.
    Dialogue order(Ask& ask, Name name) {
        const Group* group = drawing().groups.find(name);
        const int last = group != nullptr ? static_cast<int>(group->memberHandles.size()) - 1 : -1;
        if (last < 1) co_return message("The group has fewer than two objects.");
        const std::string range = "(0-" + std::to_string(last) + ")";
        std::string prompt = "Enter position number of the object to reorder " + range + " or [Reverse]:";
        const Answer from = co_await ask.integer(std::move(prompt), 0, last, "Reverse");
        if (from.is("REVERSE"))
            co_return change(name, [](Group& g) { std::reverse(g.memberHandles.begin(), g.memberHandles.end()); });
        if (!from.isNumber()) co_return;
        prompt = "Enter new position number for the object " + range + ":";
        const Answer to = co_await ask.integer(std::move(prompt), 0, last);
        if (!to.isNumber()) co_return;
        change(name, [&](Group& g) {
            const std::uint64_t handle = g.memberHandles[static_cast<std::size_t>(from.integer())];
            g.memberHandles.erase(g.memberHandles.begin() + from.integer());
            g.memberHandles.insert(g.memberHandles.begin() + to.integer(), handle);
        });
    }

    Task<std::optional<Name>> askNewName(Ask& ask) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter a group name or [?]:", "?");
            if (answer.isEnter()) co_return std::nullopt;
            if (answer.is("?")) {
                co_await list(ask);
                continue;
            }
            const Name name(typedName(answer.text));
            if (!engine::isValidSymbolName(name))
                message("Invalid group name.");
            else if (drawing().groups.contains(name))
                message("Group \"" + name.str() + "\" already exists.");
            else
                co_return name;
        }
    }

    Task<std::optional<Name>> askKnownName(Ask& ask) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter a group name or [?]:", "?");
            if (answer.isEnter()) co_return std::nullopt;
            if (answer.is("?")) {
                co_await list(ask);
                continue;
            }
            const std::string name = typedName(answer.text);
            const Group* group = drawing().groups.find(Name(name));
            if (group != nullptr) co_return group->name;
            message("Group " + inQuotes(name) + " not found.");
        }
    }

    Dialogue list(Ask& ask) {
        const std::string filter = co_await askNamesToList(ask, "Enter group name(s) to list <*>:");
        if (drawing().groups.empty()) co_return message("No groups are defined.");
        std::vector<Name> names;
        for (const Group& group : drawing().groups) names.push_back(group.name);
        names = matchingNames(drawing(), std::move(names), filter);
        if (names.empty()) message("No matching names found.");
        for (const Name name : names) {
            const Group& group = *drawing().groups.find(name);
            message(group.name.str() + ": " + counted(group.memberHandles.size(), "object") +
                    (group.selectable ? ", selectable" : ", not selectable") +
                    (group.description.empty() ? "" : ", " + group.description));
        }
    }

    void create(Name name, const std::string& description, const std::vector<std::uint64_t>& ids) {
        if (ids.empty()) return;
        const bool unnamed = name.empty();
        if (unnamed) name = nextGroupName(drawing());
        const doc::GroupScope scope(document(), "GROUP");
        addGroup(document(), name, description, ids);
        message(unnamed ? "Unnamed group has been created." : "Group \"" + name.str() + "\" has been created.");
    }

    void change(Name name, const std::function<void(Group&)>& edit) {
        const doc::GroupScope scope(document(), "GROUP");
        document().editTable<doc::GroupTraits>([&](auto& groups) {
            if (Group* group = groups.find(name)) edit(*group);
        });
    }

    void takeMembers(Group& group, const std::vector<std::uint64_t>& ids, bool add) {
        const std::vector<std::uint64_t> handles = handlesOf(drawing(), ids);
        const std::unordered_set<std::uint64_t> present(group.memberHandles.begin(), group.memberHandles.end());
        if (add) {
            for (const std::uint64_t handle : handles)
                if (!present.contains(handle)) group.memberHandles.push_back(handle);
            return;
        }
        const std::unordered_set<std::uint64_t> gone(handles.begin(), handles.end());
        std::erase_if(group.memberHandles, [&](std::uint64_t handle) { return gone.contains(handle); });
    }
};

/// UNGROUP: dissolves the groups of what is selected.
class UngroupCommand final : public SelectionCommand {
public:
    UngroupCommand() : SelectionCommand("UNGROUP", "Ungroup", "Edit") {}
    void work(doc::Document& document, ToolHost& host) override {
        const std::vector<Name> names = groupsOf(document.drawing(), document.selection().ids());
        if (!names.empty()) {
            const doc::GroupScope scope(document, "UNGROUP");
            document.editTable<doc::GroupTraits>([&](auto& groups) {
                for (const Name& name : names) groups.erase(name);
            });
        }
        host.message(counted(names.size(), "group") + " dissolved.");
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Group, "GROUP", "Group", "Edit", {"G"})
KOVA_REGISTER_COMMAND(UngroupCommand)

}  // namespace kova::cmd::commands
