#include "cmd/prompts/file_names.hpp"

#include <filesystem>
#include <vector>

#include "cmd/point_input.hpp"
#include "engine/model/drawing.hpp"
#include "engine/model/sysvar.hpp"

namespace kova::cmd::commands {

namespace fs = std::filesystem;

std::string dialogRefusal(const engine::Drawing& drawing, const char* command) {
    if (engine::sysVarInt(drawing, "FILEDIA", 1) == 0) return {};
    return std::string(command) +
           " needs a file name: FILEDIA is 1, and kovacad-cli cannot show the file dialog. Set FILEDIA 0.";
}

std::string findDrawingFile(const engine::Drawing& drawing, const std::string& name) {
    if (name.empty()) return {};
    std::vector<fs::path> folders{fs::path()};
    if (!drawing.fileName.empty()) folders.push_back(fs::path(drawing.fileName).parent_path());
    for (const fs::path& folder : folders)
        for (const char* extension : {"", ".kvcad", ".dxf", ".dwg"}) {
            const fs::path path = folder / (name + extension);
            std::error_code error;
            if (fs::is_regular_file(path, error)) return path.string();
        }
    return {};
}

const char* exporterOf(std::string_view extension) {
    if (extension == ".pdf") return "PDFEXPORT";
    if (extension == ".svg") return "SVGEXPORT";
    for (const char* picture : {".png", ".jpg", ".jpeg", ".bmp"})
        if (extension == picture) return "EXPORTIMAGE";
    return nullptr;
}

std::string typedPath(const std::string& line) {
    std::string_view path = trimmed(line);
    if (path.size() >= 2 && path.front() == '"' && path.back() == '"') path = path.substr(1, path.size() - 2);
    return std::string(path);
}

}  // namespace kova::cmd::commands
