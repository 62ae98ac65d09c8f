#include "cmd/keywords.hpp"

#include "engine/model/name.hpp"

namespace kova::cmd {

std::vector<Keyword> parseKeywords(std::string_view words) {
    std::vector<Keyword> out;
    std::size_t at = 0;
    while (at < words.size()) {
        const std::size_t end = std::min(words.find(' ', at), words.size());
        const std::string_view word = words.substr(at, end - at);
        at = end + 1;
        if (word.empty()) continue;
        std::string shortForm;
        for (const char c : word)
            if ((c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) shortForm += c;
        out.push_back({engine::upperCase(word), shortForm.empty() ? engine::upperCase(word) : shortForm});
    }
    return out;
}

std::string matchKeyword(std::string_view line, const std::vector<Keyword>& keywords) {
    if (line.size() > 1 && line.front() == '_') line.remove_prefix(1);
    if (line.empty()) return {};
    const std::string upper = engine::upperCase(line);
    for (const Keyword& keyword : keywords)
        if (upper == keyword.word || upper == keyword.shortForm) return keyword.word;
    return {};
}

}  // namespace kova::cmd
