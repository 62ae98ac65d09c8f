#include <filesystem>

#include "cmd/prompts/file_names.hpp"
#include "cmd/dialogue.hpp"
#include "cmd/registry.hpp"
#include "engine/model/name.hpp"

namespace kova::cmd::commands {

namespace {

/// EXPORT: writes a copy of the drawing in the format of the file's extension.
class ExportTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer answer = co_await ask.text("Enter file name:");
        const std::string path = typedPath(answer.text);
        AppServices* services = host()->services();
        if (path.empty() || services == nullptr) co_return;
        const std::string extension = engine::foldCase(std::filesystem::path(path).extension().string());
        if (const char* exporter = exporterOf(extension); exporter != nullptr) {
            // Its own questions: the name, then size and area, which take their defaults.
            std::vector<std::string> lines(1, exporter);
            lines.push_back(path);
            if (extension != ".pdf") lines.emplace_back();
            if (extension != ".pdf" && extension != ".svg") lines.emplace_back();
            services->queueLines(std::move(lines));
            co_return;
        }
        if (extension != ".dxf" && extension != ".dwg" && extension != ".kvcad") {
            message("Unsupported file type \"" + extension + "\".");
            co_return;
        }
        const std::string error = services->writeDrawing(drawing(), path);
        message(error.empty() ? "Saved: " + path : error);
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Export, "EXPORT", "Export", "File", {"EXP"})

}  // namespace kova::cmd::commands
