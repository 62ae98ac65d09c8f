#include "cmd/commands/file_names.hpp"

#include "cmd/point_input.hpp"
#include "engine/sysvar.hpp"

namespace kova::cmd::commands {

std::string dialogRefusal(const engine::Drawing& drawing, const char* command) {
    if (engine::sysVarInt(drawing, "FILEDIA", 1) == 0) return {};
    return std::string(command) +
           " needs a file name: FILEDIA is 1, and kovacad-cli cannot show the file dialog. Set FILEDIA 0.";
}

std::string typedPath(const std::string& line) {
    std::string_view path = trimmed(line);
    if (path.size() >= 2 && path.front() == '"' && path.back() == '"') path = path.substr(1, path.size() - 2);
    return std::string(path);
}

}  // namespace kova::cmd::commands
