#include "cmd/prompts/name_prompts.hpp"

#include "engine/inquiry/value_text.hpp"
#include "cmd/point_input.hpp"
#include "strings/wildcards.hpp"

namespace kova::cmd {

using engine::Name;

std::string typedName(std::string_view line) {
    std::string_view name = trimmed(line);
    if (name.size() >= 2 && name.front() == '"' && name.back() == '"') name = name.substr(1, name.size() - 2);
    return std::string(name);
}

Task<std::string> askNamesToList(Ask& ask, std::string prompt) {
    const Answer answer = co_await ask.text(std::move(prompt));
    std::string filter = answer.isEnter() ? "*" : typedName(answer.text);
    co_return filter;
}

std::vector<Name> matchingNames(const engine::Drawing& drawing, std::vector<Name> names, std::string_view filter) {
    std::erase_if(names, [&](const Name& name) { return !matchesWildcards(name.view(), filter); });
    if (names.size() <= static_cast<std::size_t>(std::max(0, engine::sysVarInt(drawing, "MAXSORT", 1000))))
        std::sort(names.begin(), names.end(), [](Name a, Name b) { return a.folded() < b.folded(); });
    return names;
}

void listBlocks(const engine::Drawing& drawing, const std::string& filter, ToolHost& host) {
    std::vector<Name> names;
    std::size_t references = 0;
    std::size_t dependent = 0;
    std::size_t unnamed = 0;
    for (const auto& block : drawing.blocks()) {
        if (block->isAnonymous()) {
            ++unnamed;
        } else if (block->xrefType != engine::XrefType::None) {
            ++references;
            names.push_back(block->name);
        } else {
            if (block->name.view().find('|') != std::string_view::npos) ++dependent;
            names.push_back(block->name);
        }
    }
    const std::size_t user = names.size() - references - dependent;
    host.message("Defined blocks.");
    for (const Name name : matchingNames(drawing, std::move(names), filter)) {
        const bool external = drawing.findBlock(name)->xrefType != engine::XrefType::None;
        host.message("  " + inQuotes(name) + (external ? "  Xref" : ""));
    }
    host.message("User blocks: " + std::to_string(user) + "  External references: " + std::to_string(references) +
                 "  Dependent blocks: " + std::to_string(dependent) + "  Unnamed blocks: " + std::to_string(unnamed));
}

}  // namespace kova::cmd
