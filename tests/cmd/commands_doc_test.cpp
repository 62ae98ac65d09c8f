// docs/commands.md is made from the registry and from the prompts in the commands' own files.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "cmd/registry.hpp"
#include "engine/sysvar.hpp"

namespace kova::cmd {
namespace {

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

/// The string literals of a source, neighbours joined. Escapes are undone as far as prompts have them.
std::vector<std::string> literals(const std::string& source) {
    std::vector<std::string> found;
    bool open = false;  // only white space since the last literal
    for (std::size_t i = 0; i < source.size(); ++i) {
        const char c = source[i];
        if (c == '/' && i + 1 < source.size() && source[i + 1] == '/') {
            i = std::min(source.find('\n', i), source.size());
        } else if (c == '\'' && i + 2 < source.size()) {
            i = source.find('\'', source[i + 1] == '\\' ? i + 3 : i + 1);
            if (i == std::string::npos) break;
            open = false;
        } else if (c == '"') {
            if (!open) found.emplace_back();
            for (++i; i < source.size() && source[i] != '"'; ++i) {
                if (source[i] == '\\') ++i;
                found.back() += source[i];
            }
            open = true;
        } else if (std::isspace(static_cast<unsigned char>(c)) == 0) {
            open = false;
        }
    }
    return found;
}

/// A question to the user: it ends with a colon, or shows its options and gets its default added.
bool isPrompt(const std::string& text) {
    if (text.size() < 8 || std::isupper(static_cast<unsigned char>(text[0])) == 0) return false;
    if (text.find('\n') != std::string::npos) return false;
    return text.ends_with(':') || (text.ends_with(']') && text.find('[') != std::string::npos);
}

std::string manual() {
    struct Source {
        std::vector<std::string> all;
        std::vector<std::string> prompts;
    };
    std::map<std::string, Source> sources;
    for (const auto& entry : std::filesystem::directory_iterator(KOVA_SOURCE_DIR "/src/cmd/commands")) {
        if (entry.path().extension() != ".cpp") continue;
        Source& source = sources[entry.path().stem().string()];
        source.all = literals(contentOf(entry.path()));
        for (const std::string& text : source.all)
            if (isPrompt(text) && std::find(source.prompts.begin(), source.prompts.end(), text) == source.prompts.end())
                source.prompts.push_back(text);
    }
    const auto sourceOf = [&](const Command& command) -> const Source* {
        for (const auto& [stem, source] : sources)
            for (std::size_t i = 0; i + 1 < source.all.size(); ++i)
                if (source.all[i] == command.name() && source.all[i + 1] == command.title()) return &source;
        return nullptr;
    };

    std::map<std::string, std::vector<const Command*>> categories;
    for (const Command* command : CommandRegistry::instance().commands())
        if (!command->isHidden() && engine::findSysVar(command->name()) == nullptr)
            categories[command->category()].push_back(command);
    std::string out =
        "# Commands\n\nMade from the registry of commands; how lines are read is in [command-line.md](command-line.md). "
        "A name stands with its\naliases; the questions that it may ask follow, options in square brackets. Every system "
        "variable is a command, too.\n";
    for (const auto& [category, commands] : categories) {
        out += "\n## " + category + "\n";
        // Commands that stand in one file share its questions.
        std::set<const Source*> told;
        for (const Command* command : commands) {
            const Source* source = sourceOf(*command);
            if (source != nullptr && !told.insert(source).second) continue;
            out += "\n";
            for (const Command* other : commands) {
                if (other != command && (source == nullptr || sourceOf(*other) != source)) continue;
                out += "**" + other->name() + "**";
                for (const std::string& alias : other->aliases()) out += " " + alias;
                out += " (" + other->title() + ")  \n";
            }
            if (source == nullptr) continue;
            for (const std::string& prompt : source->prompts) out += "- `" + prompt + "`\n";
        }
    }
    return out;
}

TEST(CommandsDocument, IsWhatTheRegistryGives) {
    const std::string made = manual();
    if (contentOf(KOVA_SOURCE_DIR "/docs/commands.md") == made) return;
    std::ofstream("commands.md") << made;
    FAIL() << "docs/commands.md is not what the registry gives; a new one stands in ./commands.md";
}

}  // namespace
}  // namespace kova::cmd
