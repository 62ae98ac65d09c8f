#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "cmd/prompts/plot_prompts.hpp"
#include "cmd/registry.hpp"
#include "doc/table_edits.hpp"

#include <filesystem>
#include <set>

// STYLESMANAGER, PLOTTERMANAGER and CONVERTPSTYLES.

namespace kova::cmd::commands {

namespace {

namespace fs = std::filesystem;

/// STYLESMANAGER: the plot style tables that there are: the program's own, then files of the working folder and of the
/// drawing's.
class StylesManagerTool final : public Tool {
public:
    void begin() override {
        message("monochrome.ctb  index colours print black");
        message("grayscale.ctb  colours print as greys");
        std::set<fs::path> files;
        std::vector<fs::path> folders{fs::path(".")};
        if (!drawing().fileName.empty()) folders.push_back(fs::path(drawing().fileName).parent_path());
        for (const fs::path& folder : folders) {
            std::error_code error;
            for (fs::directory_iterator it(folder.empty() ? fs::path(".") : folder, error), end; !error && it != end;
                 it.increment(error)) {
                const std::string extension = engine::foldCase(it->path().extension().string());
                if (extension == ".ctb" || extension == ".stb") files.insert(it->path().lexically_normal());
            }
        }
        for (const fs::path& file : files) message(file.string() + "  (a file; its contents are not used)");
        finish();
    }
    void textInput(const std::string&) override {}
};

/// PLOTTERMANAGER: what plots can be written as.
class PlotterManagerTool final : public Tool {
public:
    void begin() override {
        message("PDF  all pages in one file");
        message("SVG  one file a page");
        message("PNG  one file a page");
        finish();
    }
    void textInput(const std::string&) override {}
};

/// CONVERTPSTYLES: changes between plot styles by colour and by name.
class ConvertPstylesTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const bool byColor = engine::sysVarInt(drawing(), "PSTYLEMODE", 1) != 0;
        if (byColor) {
            const Answer table = co_await ask.text("Enter plot style table name:");
            if (!table.isText()) co_return;
            const std::string name(trimmed(table.text));
            if (!engine::foldCase(name).ends_with(".stb"))
                co_return message("A named plot style table (.stb) is needed.");
            convert(0, name);
            message("Drawing converted from Color dependent mode to Named plot style mode.");
        } else {
            convert(1, {});
            message("Drawing converted from Named plot style mode to Color dependent mode.");
        }
    }

private:
    /// PSTYLEMODE cannot be typed; it changes as a step of the history nevertheless.
    class ModeAction final : public doc::IUndoableAction {
    public:
        explicit ModeAction(std::int32_t mode) : mode_(mode) {}
        void undo(engine::Drawing& drawing) override { redo(drawing); }
        void redo(engine::Drawing& drawing) override {
            const std::int32_t now = engine::sysVarInt(drawing, "PSTYLEMODE", 1);
            engine::loadSysVar(drawing, "PSTYLEMODE", mode_);
            mode_ = now;
        }
        std::string description() const override { return "Convert plot styles"; }
        std::size_t sizeInBytes() const override { return sizeof *this; }
        std::int32_t changes() const override { return doc::changed::kVariables; }

    private:
        std::int32_t mode_;
    };

    void convert(std::int32_t mode, const std::string& table) {
        const doc::GroupScope group(document(), "CONVERTPSTYLES");
        auto action = std::make_unique<ModeAction>(mode);
        action->redo(drawing());
        document().record(std::move(action));
        // Names of plot styles mean nothing by colour, and the table of the other mode nothing in this one.
        document().editTable<doc::LayerTraits>([](auto& layers) {
            for (engine::Layer& layer : layers) layer.plotStyleName = engine::commonNames().normal;
        });
        for (const auto& layout : drawing().layouts())
            document().editLayout(*layout, [&](engine::Layout& l) { l.pageSetup.plotStyleTable = table; });
    }
};

}  // namespace

KOVA_TOOL_COMMAND(StylesManager, "STYLESMANAGER", "Plot Style Manager", "File")
KOVA_TOOL_COMMAND(PlotterManager, "PLOTTERMANAGER", "Plotter Manager", "File")
KOVA_TOOL_COMMAND(ConvertPstyles, "CONVERTPSTYLES", "Convert Plot Styles", "Format")

}  // namespace kova::cmd::commands
