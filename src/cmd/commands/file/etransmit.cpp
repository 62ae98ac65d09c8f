#include <filesystem>

#include "cmd/prompts/file_names.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "edit/text_fields.hpp"
#include "edit/transmittal.hpp"

namespace kova::cmd::commands {

namespace fs = std::filesystem;

namespace {

/// ETRANSMIT: which files the drawing needs, and a folder with all of them.
class EtransmitTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        for (;;) {
            const Answer option = co_await ask.keyword(
                "Enter an option [Create transmittal package/Report only/CUrrent setup/CHoose setup] <Report only>:",
                "Create Report CUrrent CHoose");
            if (option.is("CURRENT") || option.is("CHOOSE")) {
                message("There are no transmittal setups here.");
                continue;
            }
            report();
            if (option.is("CREATE")) co_await create(ask);
            co_return;
        }
    }

private:
    std::string ownName() const {
        const fs::path own(drawing().fileName);
        return own.empty() ? std::string("Drawing1.kvcad") : own.filename().string();
    }

    void report() {
        files_ = neededFiles(drawing());
        message("Drawing: " + (drawing().fileName.empty() ? std::string("not saved yet") : drawing().fileName));
        std::size_t missing = 0;
        for (const NeededFile& file : files_) {
            // Fonts and plot style tables that lie nowhere near are the receiving program's own.
            const bool own = file.kind == "Font" || file.kind == "Plot style table";
            if (file.found.empty() && !own) ++missing;
            std::string state = file.found;
            if (state.empty()) state = own ? "not beside the drawing" : "missing";
            message(file.kind + ": " + file.named + " (" + state + ")");
        }
        message(counted(files_.size(), "file") + " referred to, " + std::to_string(missing) + " missing.");
    }

    Task<> create(Ask& ask) {
        const fs::path own(drawing().fileName);
        const std::string usual =
            (own.empty() ? fs::path("Drawing1") : own.parent_path() / own.stem()).string() + " - package";
        const Answer answer = co_await ask.text(withDefault("Choose a file name", usual));
        std::string folder = typedPath(answer.text);
        if (folder.empty()) folder = usual;
        AppServices* services = host()->services();
        std::error_code error;
        const bool taken =
            fs::exists(folder, error) && !(fs::is_directory(folder, error) && fs::is_empty(folder, error));
        if (taken || services == nullptr) {
            message(taken ? "The folder is not empty: " + folder : std::string("Files cannot be saved here."));
            co_return;
        }
        updateFieldsAt(FieldMoment::Transmit, document());
        fs::create_directories(folder, error);
        if (error) {
            message("Cannot make the folder " + folder);
            co_return;
        }
        // The drawing as it stands now; references are found beside it by their names.
        const std::string target = (fs::path(folder) / ownName()).string();
        const std::string failure = services->writeDrawing(drawing(), target);
        message(failure.empty() ? "Saved: " + target : failure);
        if (!failure.empty()) co_return;
        for (const std::string& text : copyFiles(files_, folder)) message(text);
    }

    std::vector<NeededFile> files_;
};

}  // namespace

KOVA_TOOL_COMMAND(Etransmit, "ETRANSMIT", "Package Drawing", "File", {"ZIP"})

}  // namespace kova::cmd::commands
