#include "cmd/dialogue.hpp"
#include "cmd/format.hpp"
#include "cmd/property_prompts.hpp"
#include "cmd/registry.hpp"
#include "cmd/text_file.hpp"
#include "cmd/wildcards.hpp"
#include "doc/table_edits.hpp"
#include "engine/libraries.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Linetype;
using engine::Name;

/// LINETYPE: loads linetypes and chooses the one that new objects take.
class LinetypeTool final : public DialogueTool {
public:
    void end() override { group_.reset(); }

protected:
    Dialogue dialogue(Ask& ask) override {
        message("Current line type: " + quoted(drawing().currentLinetype));
        for (;;) {
            const Answer option = co_await ask.keyword("Enter an option [?/Load/Set]:", "? Load Set");
            if (option.isEnter()) co_return;
            if (option.is("?")) co_await list(ask);
            if (option.is("LOAD")) co_await load(ask);
            if (option.is("SET")) co_await set(ask);
        }
    }

private:
    void changing() {
        if (!group_) group_.emplace(document(), "LINETYPE");
    }

    void show(const Linetype& linetype) const { message(linetype.name.str() + "  " + linetype.description); }

    Dialogue list(Ask& ask) {
        const Answer answer = co_await ask.text("Enter linetype(s) to list <*>:");
        const std::string filter = answer.isEnter() ? "*" : answer.text;
        std::size_t count = 0;
        for (const Linetype& linetype : drawing().linetypes) {
            if (!matchesWildcards(linetype.name, filter)) continue;
            ++count;
            show(linetype);
        }
        if (count == 0) message("No matching names found.");
    }

    /// The linetypes of a file; the built-in ones for Enter and for the names of the files that usually hold them.
    std::optional<std::vector<Linetype>> library(const std::string& answer) const {
        const std::vector<std::string> names = splitNames(answer);
        if (names.empty()) return engine::builtinLinetypes(drawing().isMetric());
        std::string path = names.size() > 1 ? answer : names.front();
        std::optional<std::string> text = readTextFile(path);
        if (!text) text = readTextFile(path + ".lin");
        if (text) return engine::parseLinetypeLibrary(*text);
        static constexpr std::string_view usual[] = {"acad", "acad.lin", "acadiso", "acadiso.lin"};
        for (const std::string_view name : usual)
            if (engine::equalNoCase(path, name)) return engine::builtinLinetypes(name.starts_with("acadiso"));
        message("Cannot read " + path);
        return std::nullopt;
    }

    Dialogue load(Ask& ask) {
        const Answer wanted = co_await ask.text("Enter linetype(s) to load:");
        if (wanted.isEnter()) co_return;
        std::optional<std::vector<Linetype>> known;
        while (!known) {
            const Answer file = co_await ask.text("Enter name of linetype file to search <built-in>:");
            known = library(file.text);
        }
        std::size_t found = 0;
        for (const Linetype& linetype : *known) {
            if (!matchesWildcards(linetype.name, wanted.text)) continue;
            ++found;
            if (drawing().linetypes.contains(linetype.name)) {
                std::string question =
                    "Linetype " + quoted(linetype.name) + " is already loaded. Reload it? [Yes/No] <Yes>:";
                const bool again = co_await askYesNo(ask, std::move(question), true);
                if (!again) continue;
            }
            changing();
            document().editTable<doc::LineTypeTraits>([&](engine::Table<Linetype>& table) { table.add(linetype); });
            message("Linetype " + quoted(linetype.name) + " loaded.");
        }
        if (found == 0) message("No matching linetypes found.");
    }

    Dialogue set(Ask& ask) {
        for (;;) {
            const Answer answer =
                co_await ask.text("Specify linetype name or [?] <" + drawing().currentLinetype.str() + ">:", "?");
            if (answer.isEnter()) co_return;
            if (answer.is("?")) {
                for (const Linetype& linetype : drawing().linetypes) show(linetype);
                continue;
            }
            const std::vector<std::string> names = splitNames(answer.text);
            const std::string name = names.empty() ? std::string() : names.front();
            changing();
            useLinetype(document(), Name(name));
            const std::string error = document().setVariable("CELTYPE", name);
            if (error.empty()) co_return;
            message(error);
        }
    }

    std::optional<doc::GroupScope> group_;
};

}  // namespace

KOVA_TOOL_COMMAND(Linetype, "LINETYPE", "Linetype", "Format", {"LT", "LTYPE"})

}  // namespace kova::cmd::commands
