#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kova::cli {

struct ImageSize {
    int width = 1600;
    int height = 1000;
};

/// "WxH" or "WXH", both from 16 to 8192. The numbers follow the rules of std::stoi: leading blanks and a sign are
/// taken, what stands behind the digits is passed over. Nothing for any other text.
std::optional<ImageSize> parseSize(const std::string& text);

/// The parsed options of `run`.
struct RunOptions {
    std::optional<std::string> open;
    std::optional<std::string> templateName;
    std::optional<std::string> script;
    std::vector<std::string> lines;
    std::optional<std::string> save;
    std::optional<std::string> png;
    ImageSize size;
};

/// Parses the arguments behind "run". On a bad one, `unexpected` is that word and the result is nothing.
std::optional<RunOptions> parseRunOptions(const std::vector<std::string>& arguments, std::string& unexpected);

}  // namespace kova::cli
