#include "cmd/script_lines.hpp"

namespace kova::cmd {

std::vector<std::string> scriptLines(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\v\f\n";
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        const std::size_t first = line.find_first_not_of(kBlanks);
        line = first == std::string_view::npos ? std::string_view{}
                                               : line.substr(first, line.find_last_not_of(kBlanks) - first + 1);
        if (!line.starts_with(';')) lines.emplace_back(line);
    }
    return lines;
}

}  // namespace kova::cmd
