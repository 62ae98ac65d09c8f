#include "cli/options.hpp"

#include <stdexcept>

namespace kova::cli {

std::optional<ImageSize> parseSize(const std::string& text) {
    const std::size_t at = text.find_first_of("xX");
    if (at == std::string::npos) return std::nullopt;
    ImageSize size;
    try {
        size.width = std::stoi(text.substr(0, at));
        size.height = std::stoi(text.substr(at + 1));
    } catch (const std::exception&) {
        return std::nullopt;
    }
    const auto fits = [](int n) { return n >= 16 && n <= 8192; };
    if (!fits(size.width) || !fits(size.height)) return std::nullopt;
    return size;
}

std::optional<RunOptions> parseRunOptions(const std::vector<std::string>& arguments, std::string& unexpected) {
    RunOptions options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& word = arguments[i];
        unexpected = word;
        const bool hasValue = i + 1 < arguments.size();
        std::optional<std::string>* target = word == "--open"       ? &options.open
                                             : word == "--template" ? &options.templateName
                                             : word == "--script"   ? &options.script
                                             : word == "--save"     ? &options.save
                                             : word == "--png"      ? &options.png
                                                                    : nullptr;
        if (!hasValue || (target == nullptr && word != "-c" && word != "--size")) return std::nullopt;
        const std::string& value = arguments[++i];
        if (target != nullptr) {
            *target = value;
        } else if (word == "-c") {
            options.lines.push_back(value == ";" ? std::string() : value);
        } else {
            const auto size = parseSize(value);
            if (!size) return std::nullopt;
            options.size = *size;
        }
    }
    unexpected.clear();
    return options;
}

}  // namespace kova::cli
