#include <algorithm>
#include <filesystem>

#include "cmd/prompts/file_names.hpp"
#include "cmd/dialogue.hpp"
#include "cmd/registry.hpp"
#include "io/dwg/dwg_save.hpp"

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
        for (;;) {
            std::string prompt = "Save drawing as";
            if (!drawing().fileName.empty()) prompt += " <" + drawing().fileName + ">";
            const Answer answer = co_await ask.text(prompt + ":");
            if (chooseFormat(engine::upperCase(trimmed(answer.text)))) continue;
            std::filesystem::path path(typedPath(answer.text));
            // Who asked for an older version is not served with a newer one.
            if (!refused_.empty()) {
                if (!path.empty()) message("Not saved: no version was chosen in place of " + refused_ + ".");
                co_return;
            }
            const std::string own = engine::foldCase(path.extension().string());
            if (!path.empty() && own.empty())
                path += extension_;
            else if (!path.empty() && !extension_.empty() && own != extension_)
                message("The format is that of the name, " + own + ", not " + extension_ + ".");
            message(saveTo(*host(), path.string()));
            co_return;
        }
    }

private:
    /// True for an answer that names a format instead of a file.
    bool chooseFormat(const std::string& word) {
        static constexpr std::string_view written[] = {"2010", "2013", "2018"};
        static constexpr std::string_view older[] = {"R9",  "R10",  "R11",  "R12",  "R13", "R14",
                                                     "97",  "2000", "2004", "2007", "LT2", "LT95"};
        std::string_view version = std::string_view(word).substr(0, word.find('('));
        if (version.starts_with("LT") && version.size() > 4) version.remove_prefix(2);
        if (version.starts_with('R') && version.size() == 5) version.remove_prefix(1);
        static constexpr std::pair<std::string_view, std::string_view> tags[] = {
            {"AC1009", "R12"},  {"AC1012", "R13"},  {"AC1014", "R14"},  {"AC1015", "2000"}, {"AC1018", "2004"},
            {"AC1021", "2007"}, {"AC1024", "2010"}, {"AC1027", "2013"}, {"AC1032", "2018"}};
        for (const auto& [tag, year] : tags)
            if (version == tag) version = year;
        if (std::ranges::find(written, version) != std::end(written)) {
            extension_ = ".dwg";
            refused_.clear();
            if (AppServices* services = host()->services()) services->chooseDwgVersion(std::string(version));
            return true;
        }
        if (std::ranges::find(older, version) != std::end(older)) {
            refused_ = word;
            message("DWG " + word + " is not written. The versions written are " + io::dwg::kWrittenVersions + ".");
            return true;
        }
        if (word != "DXF" && word != "TEMPLATE") return false;
        extension_ = word == "DXF" ? ".dxf" : ".dwt";
        refused_.clear();
        return true;
    }

    std::string extension_;  ///< of the format named; empty: none
    std::string refused_;    ///< a version that was asked for and is not written
};

}  // namespace

KOVA_REGISTER_COMMAND(SaveCommand)
KOVA_TOOL_COMMAND(Saveas, "SAVEAS", "Save As", "File")

}  // namespace kova::cmd::commands
