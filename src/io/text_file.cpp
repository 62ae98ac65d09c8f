#include "io/text_file.hpp"

#include <filesystem>
#include <fstream>

#include "engine/model/sysvar.hpp"
#include "strings/code_page.hpp"

namespace kova::cmd {

namespace {
constexpr std::uintmax_t kMaxBytes = 256u << 20;
}

std::optional<std::string> readTextFile(const std::string& path, std::string_view codePage) {
    std::error_code error;
    // Only regular files have an end that is sure to come.
    if (!std::filesystem::is_regular_file(path, error) || error) return std::nullopt;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error || size > kMaxBytes) return std::nullopt;
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::nullopt;
    std::string text(static_cast<std::size_t>(size), '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (file.bad()) return std::nullopt;
    text.resize(static_cast<std::size_t>(file.gcount()));
    return decodedText(text, codePage);
}

std::string codePageOf(const engine::Drawing& drawing) {
    const auto value = engine::getSysVar(drawing, "DWGCODEPAGE");
    const auto* text = value ? std::get_if<std::string>(&*value) : nullptr;
    return text != nullptr ? *text : std::string();
}

std::string decodedText(std::string_view bytes, std::string_view codePage) {
    const auto page = strings::CodePage::named(codePage);
    const strings::CodePage usual;
    return strings::textOfFile(bytes, page ? *page : usual);
}

}  // namespace kova::cmd
