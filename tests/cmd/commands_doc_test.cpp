// docs/commands.md is made from the registry and from the questions in the commands' sources.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "cmd/registry.hpp"
#include "engine/model/sysvar.hpp"
#include "source_questions.hpp"

namespace kova::cmd {
namespace {

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream in(path);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::string manual() {
    const SourceQuestions sources(KOVA_SOURCE_DIR "/src/cmd");
    std::map<std::string, std::vector<const Command*>> categories;
    for (const Command* command : CommandRegistry::instance().commands()) {
        // A variable's plain command asks for its value; some variables have one of their own.
        const bool own = sources.knows(command->name(), command->title());
        if (!command->isHidden() && (own || engine::findSysVar(command->name()) == nullptr))
            categories[command->category()].push_back(command);
    }
    std::string out =
        "# Commands\n\nMade from the registry of commands; how lines are read is in [command-line.md](command-line.md). "
        "A name stands with its\naliases; the questions that it may ask follow, options in square brackets. Every system "
        "variable is a command, too.\n";
    struct Section {
        std::string file;
        std::vector<std::string> questions;
    };
    for (const auto& [category, commands] : categories) {
        out += "\n## " + category + "\n";
        std::map<const Command*, Section> sections;
        for (const Command* command : commands)
            sections[command] = {sources.fileOf(command->name(), command->title()),
                                 sources.of(command->name(), command->title())};
        // Commands of one file that ask the same stand together.
        std::set<const Command*> told;
        for (const Command* command : commands) {
            if (told.contains(command)) continue;
            const Section& section = sections[command];
            out += "\n";
            for (const Command* other : commands) {
                const Section& its = sections[other];
                if (other != command && (section.file.empty() || its.file != section.file ||
                                         its.questions != section.questions || told.contains(other)))
                    continue;
                told.insert(other);
                out += "**" + other->name() + "**";
                for (const std::string& alias : other->aliases()) out += " " + alias;
                out += " (" + other->title() + ")  \n";
            }
            for (const std::string& question : section.questions) out += "- `" + question + "`\n";
        }
    }
    return out;
}

TEST(CommandsDocument, IsWhatTheRegistryGives) {
    const std::string made = manual();
    if (contentOf(KOVA_SOURCE_DIR "/docs/commands.md") == made) return;
    const auto path = std::filesystem::absolute("commands.md");
    std::ofstream(path) << made;
    FAIL() << "docs/commands.md is not what the registry gives; a new one stands in " << path;
}

TEST(CommandsDocument, GivesEachCommandItsOwnQuestions) {
    const SourceQuestions sources(KOVA_SOURCE_DIR "/src/cmd");
    const auto asks = [&](const char* name, const std::string& question) {
        const Command* command = CommandRegistry::instance().find(name);
        const std::vector<std::string> all = sources.of(command->name(), command->title());
        return std::any_of(all.begin(), all.end(), [&](const std::string& q) { return q.starts_with(question); });
    };
    // Several tools in a file, with a base class and its functions.
    EXPECT_TRUE(asks("DIMJOGGED", "Specify jog location:"));
    EXPECT_TRUE(asks("DIMRADIUS", "Specify dimension line location"));
    EXPECT_FALSE(asks("DIMRADIUS", "Specify jog location:"));
    EXPECT_TRUE(asks("DIMCENTER", "Select arc or circle:"));
    EXPECT_FALSE(asks("DIMCENTER", "Specify dimension line location"));
    // Rows of a table.
    EXPECT_TRUE(asks("DRAGMODE", "Enter new value [ON/OFF/Auto]"));
    EXPECT_FALSE(asks("ORTHO", "Enter new value [ON/OFF/Auto]"));
    // Shared files.
    EXPECT_TRUE(asks("AREA", "Specify first corner point"));
    EXPECT_TRUE(asks("DIMSTYLE", "Enter a dimension style option"));
    // One-shot commands and variables.
    EXPECT_FALSE(asks("GRAPHSCR", ""));
    const Command* variable = CommandRegistry::instance().find("LTSCALE");
    EXPECT_FALSE(sources.knows(variable->name(), variable->title()));
}

}  // namespace
}  // namespace kova::cmd
