#include <filesystem>

#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/prompts/property_prompts.hpp"
#include "cmd/registry.hpp"
#include "io/text_file.hpp"
#include "strings/wildcards.hpp"
#include "doc/table_edits.hpp"
#include "engine/libraries/libraries.hpp"
#include "engine/symbols/symbols.hpp"
#include "io/save.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Linetype;
using engine::Name;

/// LINETYPE: loads linetypes, chooses the one that new objects take, and writes definitions of new ones.
class LinetypeTool final : public DialogueTool {
public:
    void end() override { group_.reset(); }

protected:
    Dialogue dialogue(Ask& ask) override {
        message("Current line type: " + inQuotes(drawing().currentLinetype));
        for (;;) {
            const Answer option = co_await ask.keyword("Enter an option [?/Create/Load/Set]:", "? Create Load Set");
            if (option.isEnter()) co_return;
            if (option.is("?")) co_await list(ask);
            if (option.is("CREATE")) co_await create(ask);
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
        const std::string filter = co_await askNamesToList(ask, "Enter linetype(s) to list <*>:");
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
        std::optional<std::string> text = readTextFile(path, codePageOf(drawing()));
        if (!text) text = readTextFile(path + ".lin", codePageOf(drawing()));
        if (text) return engine::parseLinetypeLibrary(*text);
        static constexpr std::string_view usual[] = {"acad", "acad.lin", "acadiso", "acadiso.lin"};
        for (const std::string_view name : usual)
            if (engine::equalNoCase(path, name)) return engine::builtinLinetypes(name.starts_with("acadiso"));
        message("Cannot read " + path);
        return std::nullopt;
    }

    /// Writes a definition into a linetype file, from which LOAD then takes it.
    Dialogue create(Ask& ask) {
        std::string name;
        for (;;) {
            const Answer answer = co_await ask.text("Enter name of linetype to create:");
            if (answer.isEnter()) co_return;
            const std::vector<std::string> names = splitNames(answer.text);
            if (names.size() == 1 && engine::isValidSymbolName(names.front())) {
                name = names.front();
                break;
            }
            message("Invalid linetype name.");
        }
        const Answer file = co_await ask.text("Enter name of linetype file for the new definition:");
        if (file.isEnter()) co_return;
        std::string path = file.text;
        if (std::filesystem::path(path).extension().empty()) path += ".lin";
        const std::string before = readTextFile(path, codePageOf(drawing())).value_or(std::string());
        if (defines(before, name)) {
            std::string question =
                "Linetype " + cmd::inQuotes(name) + " already exists in that file. Overwrite it? [Yes/No] <No>:";
            const bool again = co_await askYesNo(ask, std::move(question), false);
            if (!again) co_return;
        }
        const Answer description = co_await ask.line("Descriptive text:");
        message("Enter linetype pattern (on next line):");
        for (;;) {
            const Answer pattern = co_await ask.text("A,");
            if (pattern.isEnter()) co_return;
            std::string elements(trimmed(pattern.text));
            if (elements.starts_with("A,") || elements.starts_with("a,")) elements.erase(0, 2);
            const std::string definition = "*" + name + "," + description.text + "\nA," + elements + "\n";
            int skipped = 0;
            if (engine::parseLinetypeLibrary(definition, &skipped).empty() || skipped > 0) {
                message("Invalid linetype definition.");
                continue;
            }
            const std::string error = io::saveFile(path, without(before, name) + definition);
            message(error.empty() ? "New linetype definition saved to " + path : error);
            co_return;
        }
    }

    /// The name that a line of a linetype file begins a definition of.
    static std::string_view definedBy(std::string_view line) {
        if (!line.starts_with('*')) return {};
        return trimmed(line.substr(1, line.find(',') - 1));
    }
    static bool defines(std::string_view text, std::string_view name) {
        return without(text, name).size() < text.size();
    }
    /// The text without the definition of that name, and ended by a line end.
    static std::string without(std::string_view text, std::string_view name) {
        std::string kept;
        bool dropping = false;
        while (!text.empty()) {
            const std::size_t end = std::min(text.find('\n'), text.size() - 1);
            const std::string_view line = text.substr(0, end + 1);
            text.remove_prefix(end + 1);
            if (line.starts_with('*')) dropping = engine::equalNoCase(definedBy(line), name);
            if (!dropping) kept += line;
        }
        if (!kept.empty() && kept.back() != '\n') kept += '\n';
        return kept;
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
                    "Linetype " + inQuotes(linetype.name) + " is already loaded. Reload it? [Yes/No] <Yes>:";
                const bool again = co_await askYesNo(ask, std::move(question), true);
                if (!again) continue;
            }
            changing();
            document().editTable<doc::LineTypeTraits>([&](engine::Table<Linetype>& table) { table.add(linetype); });
            message("Linetype " + inQuotes(linetype.name) + " loaded.");
        }
        if (found == 0) message("No matching linetypes found.");
    }

    Dialogue set(Ask& ask) {
        for (;;) {
            const Answer answer =
                co_await ask.text("Specify linetype name or [?] <" + drawing().currentLinetype.str() + ">:", "?");
            if (answer.isEnter()) co_return;
            if (answer.is("?")) {
                co_await list(ask);
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
