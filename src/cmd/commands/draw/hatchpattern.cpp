#include <filesystem>

#include "cmd/prompts/file_names.hpp"
#include "cmd/prompts/hatch_prompts.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/registry.hpp"
#include "io/text_file.hpp"
#include "strings/wildcards.hpp"
#include "doc/table_edits.hpp"
#include "engine/libraries/libraries.hpp"

namespace kova::cmd::commands {

namespace {

/// HATCHPATTERN: the pattern that HATCH takes; "name,file.pat" loads it into the drawing.
class HatchPatternTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        for (;;) {
            std::string prompt =
                withDefault("Enter a pattern name or [?]", engine::sysVarString(drawing(), "HPNAME", "ANSI31"));
            const Answer answer = co_await ask.text(std::move(prompt), "?");
            if (answer.isEnter()) co_return;
            if (answer.is("?")) {
                co_await listHatchPatterns(ask, drawing());
                continue;
            }
            const std::string_view text = trimmed(answer.text);
            const std::size_t comma = text.find(',');
            const std::string name(trimmed(text.substr(0, comma)));
            const doc::GroupScope group(document(), "HATCHPATTERN");
            if (comma != std::string_view::npos) {
                const std::string error = load(name, std::string(trimmed(text.substr(comma + 1))));
                if (!error.empty()) {
                    message(error);
                    continue;
                }
                if (hasWildcards(name)) co_return;
            }
            HatchFill fill;
            if (fill.choose(drawing(), name)) {
                message(document().setVariable("HPNAME", fill.pattern.str()));
                co_return;
            }
            message("Unknown pattern " + cmd::inQuotes(name) + ".");
        }
    }

private:
    /// Loads the patterns whose names match. Error text, empty on success.
    std::string load(const std::string& names, const std::string& typed) {
        std::string path = typedPath(typed);
        if (std::filesystem::path(path).extension().empty()) path += ".pat";
        std::optional<std::string> text = readTextFile(path, codePageOf(drawing()));
        if (!text && !drawing().fileName.empty()) {
            const auto beside = std::filesystem::path(drawing().fileName).parent_path() / path;
            text = readTextFile(beside.string(), codePageOf(drawing()));
        }
        if (!text) return "Cannot read " + cmd::inQuotes(path) + ".";
        std::vector<engine::HatchPattern> found = engine::parsePatternLibrary(*text);
        std::erase_if(found, [&](const engine::HatchPattern& p) { return !matchesWildcards(p.name.view(), names); });
        if (found.empty()) return "No matching names found.";
        document().editTable<doc::HatchPatternTraits>([&](auto& patterns) {
            for (const engine::HatchPattern& pattern : found) patterns.add(pattern);
        });
        message(counted(found.size(), "pattern") + " loaded.");
        return {};
    }
};

}  // namespace

KOVA_TOOL_COMMAND(HatchPattern, "HATCHPATTERN", "Hatch Pattern", "Draw")

}  // namespace kova::cmd::commands
