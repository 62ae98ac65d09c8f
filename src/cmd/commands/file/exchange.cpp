#include <filesystem>

#include "cmd/prompts/file_names.hpp"
#include "cmd/dialogue.hpp"
#include "edit/drawing_transfer.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/point_input.hpp"
#include "cmd/registry.hpp"
#include "engine/model/name.hpp"

namespace kova::cmd::commands {

namespace {

namespace fs = std::filesystem;

/// DXFOUT: writes a copy of the drawing as DXF, under the name typed behind it or the drawing's own. A number of
/// decimal places may follow, as scripts have it.
class DxfoutCommand final : public OneShotCommand {
public:
    DxfoutCommand() : OneShotCommand("DXFOUT", "Export DXF", "File") {}
    void execute(CommandContext& context) override {
        AppServices* services = context.host.services();
        fs::path path(context.arguments.empty() ? context.drawing().fileName : typedPath(context.arguments.front()));
        if (path.empty()) return context.message("The drawing has no file name yet: give one.");
        if (context.arguments.empty())
            path.replace_extension(".dxf");
        else if (engine::foldCase(path.extension().string()) != ".dxf")
            path += ".dxf";
        if (context.arguments.size() > 1 && context.arguments[1] != "16")
            context.message(parseInteger(context.arguments[1])
                                ? "Numbers are written with all their digits."
                                : "DXFOUT has no options: it writes the whole drawing, as text.");
        const std::string error = services != nullptr ? services->writeDrawing(context.drawing(), path.string())
                                                      : std::string("Files cannot be written here.");
        context.message(error.empty() ? "Saved: " + path.string() : error);
    }
};

/// IMPORT: adds what another drawing file holds to this one.
class ImportTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer answer = co_await ask.text("Enter file name:");
        const std::string typed = typedPath(answer.text);
        AppServices* services = host()->services();
        if (typed.empty() || services == nullptr) co_return;
        const std::string path = findDrawingFile(drawing(), typed);
        if (path.empty()) {
            message("File not found: " + typed);
            co_return;
        }
        const std::string extension = engine::foldCase(fs::path(path).extension().string());
        static constexpr std::string_view known[] = {".dxf", ".dwg", ".kvcad", ".dwt", ".bak", ".sv$"};
        if (std::find(std::begin(known), std::end(known), extension) == std::end(known)) {
            message("Unsupported file type \"" + extension + "\".");
            co_return;
        }
        engine::Drawing source;
        if (const std::string error = services->readDrawing(path, source); !error.empty()) {
            message("Could not open " + path + ": " + error);
            co_return;
        }
        const double factor = unitFactor(source, drawing());
        const doc::GroupScope group(document(), "IMPORT");
        const std::size_t count =
            importEntities(document(), source, math::Matrix4::scaling(factor, factor, factor)).size();
        message(counted(count, "object") + " imported.");
        repaint();
    }
};

}  // namespace

KOVA_REGISTER_COMMAND(DxfoutCommand)
KOVA_TOOL_COMMAND(Import, "IMPORT", "Import", "File", {"IMP", "DXFIN"})

}  // namespace kova::cmd::commands
