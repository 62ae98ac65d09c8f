#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "engine/inquiry/record_properties.hpp"
#include "cmd/registry.hpp"
#include "strings/wildcards.hpp"
#include "doc/table_edits.hpp"
#include "engine/symbols/symbols.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Name;

/// Lists, makes, changes and chooses the styles of one table; what multileaders and tables have in common.
template <class Traits, class Words>
class NamedStyleTool : public DialogueTool {
    using Style = typename Traits::Record;

protected:
    Dialogue dialogue(Ask& ask) override {
        message("Current " + std::string(Traits::noun) + ": " + inQuotes(Traits::current(drawing())));
        const Answer option = co_await ask.keyword("Enter an option [?/Set/New/Rename/Delete/Edit] <Set>:",
                                                   "? Set New Rename Delete Edit");
        if (option.is("?"))
            co_await list(ask);
        else if (option.is("NEW"))
            co_await make(ask);
        else if (option.is("RENAME"))
            co_await rename(ask);
        else if (option.is("DELETE"))
            co_await remove(ask);
        else if (option.is("EDIT"))
            co_await edit(ask);
        else
            co_await set(ask);
    }

private:
    engine::Table<Style>& table() const { return Traits::table(drawing()); }

    Dialogue list(Ask& ask) {
        const std::string filter = co_await askNamesToList(ask, "Enter style(s) to list <*>:");
        std::size_t count = 0;
        for (const Style& style : table()) {
            if (!matchesWildcards(style.name.view(), filter)) continue;
            ++count;
            message(style.name.str());
        }
        if (count == 0) message("No matching names found.");
    }

    /// A style that the drawing holds; Enter takes the current one. Nothing is never given.
    Task<Name> askKnown(Ask& ask, std::string question) {
        std::string prompt = withDefault(question, Traits::current(drawing()).str());
        for (;;) {
            const Answer answer = co_await ask.text(prompt, "?");
            if (answer.is("?")) {
                co_await list(ask);
                continue;
            }
            const std::vector<std::string> typed = splitNames(answer.text);
            const Name name = answer.isEnter() || typed.empty() ? Traits::current(drawing()) : Name(typed.front());
            if (const Style* style = table().find(name)) co_return style->name;
            message("Unknown " + std::string(Traits::noun) + " " + inQuotes(name) + ".");
        }
    }

    /// A name that is free and valid; empty: given up.
    Task<Name> askNew(Ask& ask, std::string prompt) {
        for (;;) {
            const Answer answer = co_await ask.text(prompt);
            const std::vector<std::string> typed = splitNames(answer.text);
            if (!answer.isText() || typed.empty()) co_return Name();
            const Name name(typed.front());
            if (!engine::isValidSymbolName(name.view()))
                message("Invalid style name.");
            else if (table().contains(name))
                message("A " + std::string(Traits::noun) + " " + inQuotes(name) + " exists already.");
            else
                co_return name;
        }
    }

    Dialogue set(Ask& ask) {
        const Name name = co_await askKnown(ask, std::string(Words::question));
        document().setVariable(Words::variable, name.str());
    }

    Dialogue make(Ask& ask) {
        const Name name = co_await askNew(ask, "Enter new style name:");
        if (name.empty()) co_return;
        const Name from = co_await askKnown(ask, "Start with");
        const doc::GroupScope group(document(), Words::label);
        document().template editTable<Traits>([&](engine::Table<Style>& styles) {
            Style style = *styles.find(from);
            style.name = name;
            styles.add(std::move(style));
        });
        document().setVariable(Words::variable, name.str());
    }

    Dialogue rename(Ask& ask) {
        const Name from = co_await askKnown(ask, "Enter old style name");
        const Name to = co_await askNew(ask, "Enter new style name:");
        if (to.empty()) co_return;
        const doc::GroupScope group(document(), Words::label);
        const std::string error = document().renameSymbol(Words::kind, from, to);
        if (!error.empty()) message(error);
    }

    Dialogue remove(Ask& ask) {
        const Answer answer = co_await ask.text("Enter style name to delete:");
        const std::vector<std::string> typed = splitNames(answer.text);
        if (!answer.isText() || typed.empty()) co_return;
        const Name name(typed.front());
        if (!table().contains(name))
            co_return message("Unknown " + std::string(Traits::noun) + " " + inQuotes(name) + ".");
        const std::size_t uses = engine::countReferences(drawing(), Words::kind, name);
        if (uses > 0 && !(name == Traits::current(drawing())))
            co_return message("Style " + inQuotes(name) + " is in use and stays.");
        const doc::GroupScope group(document(), Words::label);
        if (!document().template deleteStyle<Style>(name)) message("Style " + inQuotes(name) + " cannot be deleted.");
    }

    /// One property after the other by its name; "?" lists them.
    Dialogue edit(Ask& ask) {
        const Name name = co_await askKnown(ask, std::string(Words::question));
        for (;;) {
            const Answer property = co_await ask.text("Enter property name or [?]:", "?");
            if (property.isEnter()) co_return;
            Style* style = table().find(name);
            if (style == nullptr) co_return;
            PropertyReader reader;
            style->describe(reader);
            if (property.is("?")) {
                for (const auto& [key, value] : reader.list) message(key + "  " + value);
                continue;
            }
            const std::string key(trimmed(property.text));
            const auto it = std::find_if(reader.list.begin(), reader.list.end(),
                                         [&](const auto& row) { return engine::equalNoCase(row.first, key); });
            if (it == reader.list.end() || engine::equalNoCase(key, "name")) {
                message("Unknown property " + inQuotes(key) + ".");
                continue;
            }
            std::string prompt = withDefault("Enter new value", it->second);
            const Answer value = co_await ask.text(std::move(prompt));
            if (value.isText()) change(name, key, value.text);
        }
    }

    void change(Name name, const std::string& key, const std::string& text) {
        const Style* known = table().find(name);
        if (known == nullptr) return;
        Style style = *known;
        PropertyWriter writer(key, text);
        try {
            style.describe(writer);
        } catch (const std::out_of_range&) {
            return message("Invalid value.");
        }
        if (!writer.done()) return message("Invalid value.");
        const doc::GroupScope group(document(), Words::label);
        document().template editTable<Traits>([&](engine::Table<Style>& styles) { styles.add(style); });
        repaint();
    }
};

struct MLeaderWords {
    static constexpr const char* label = "MLEADERSTYLE";
    static constexpr const char* variable = "CMLEADERSTYLE";
    static constexpr const char* question = "Enter multileader style name or [?]";
    static constexpr engine::SymbolKind kind = engine::SymbolKind::MLeaderStyle;
};
struct TableWords {
    static constexpr const char* label = "TABLESTYLE";
    static constexpr const char* variable = "CTABLESTYLE";
    static constexpr const char* question = "Enter table style name or [?]";
    static constexpr engine::SymbolKind kind = engine::SymbolKind::TableStyle;
};

class MLeaderStyleTool final : public NamedStyleTool<doc::MLeaderStyleTraits, MLeaderWords> {};
class TableStyleTool final : public NamedStyleTool<doc::TableStyleTraits, TableWords> {};

}  // namespace

KOVA_TOOL_COMMAND(MLeaderStyle, "MLEADERSTYLE", "Multileader Style", "Format", {"MLS"})
KOVA_TOOL_COMMAND(TableStyle, "TABLESTYLE", "Table Style", "Format", {"TS"})

}  // namespace kova::cmd::commands
