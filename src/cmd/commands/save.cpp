#include <filesystem>

#include "cmd/commands/file_names.hpp"
#include "cmd/dialogue.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

std::string saveTo(ToolHost& host, const std::string& path) {
    AppServices* services = host.services();
    return services != nullptr ? services->save(path) : "Files cannot be saved here.";
}

/// SAVE: to the drawing's own file, or to the path behind the name. Asks nothing.
class SaveCommand final : public OneShotCommand {
public:
    SaveCommand() : OneShotCommand("SAVE", "Save", "File", {"QSAVE"}) {}
    void execute(CommandContext& context) override {
        context.message(saveTo(context.host, context.arguments.empty() ? std::string() : context.arguments.front()));
    }
};

/// SAVEAS: to the path typed; its extension chooses the format. A format may be named first, as scripts do.
class SaveasTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const std::string refusal = hasInlineInput() ? std::string() : dialogRefusal(drawing(), "SAVEAS");
        if (!refusal.empty()) {
            message(refusal);
            co_return;
        }
        std::string extension;
        for (;;) {
            std::string prompt = "Save drawing as";
            if (!drawing().fileName.empty()) prompt += " <" + drawing().fileName + ">";
            const Answer answer = co_await ask.text(prompt + ":");
            if (chooseFormat(engine::upperCase(trimmed(answer.text)), extension)) continue;
            std::filesystem::path path(typedPath(answer.text));
            if (!path.empty() && !path.has_extension()) path += extension;
            message(saveTo(*host(), path.string()));
            co_return;
        }
    }

private:
    /// True for an answer that names a format instead of a file.
    bool chooseFormat(const std::string& word, std::string& extension) const {
        static constexpr std::string_view versions[] = {"R14", "2000", "2004", "2007", "2010", "2013", "2018"};
        std::string_view version = word;
        if (version.starts_with("LT")) version.remove_prefix(2);
        if (version == "97") version = "R14";
        if (std::find(std::begin(versions), std::end(versions), version) != std::end(versions)) {
            extension = ".dwg";
            if (AppServices* services = host()->services()) services->chooseDwgVersion(std::string(version));
            return true;
        }
        if (word == "DXF") extension = ".dxf";
        if (word == "TEMPLATE") extension = ".dwt";
        return word == "DXF" || word == "TEMPLATE";
    }
};

}  // namespace

KOVA_REGISTER_COMMAND(SaveCommand)
KOVA_TOOL_COMMAND(Saveas, "SAVEAS", "Save As", "File")

}  // namespace kova::cmd::commands
