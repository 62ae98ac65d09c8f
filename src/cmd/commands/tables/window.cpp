#include "cmd/command.hpp"
#include "cmd/processor.hpp"
#include "cmd/refusals.hpp"
#include "cmd/registry.hpp"

#include <utility>

// The furniture of a window: dialogs, which are refused, and bars and panels, whose state is kept.

namespace kova::cmd::commands {

namespace {

struct WindowRow {
    const char* name;
    const char* title;
    const char* category;
    bool oneShot;
    const char* aliases = "";
    const char* instead = "";  ///< what can be typed to the same end
    bool dialog = true;        ///< refused; else nothing happens, or a variable changes over
    const char* variable = "";
};

constexpr WindowRow kRows[] = {
    {"ADCENTER", "Design Center", "Insert", true, "ADC DC DCENTER", "INSERT with name=file, or XATTACH,"},
    {"CLEANSCREEN", "Clean Screen", "View", true, "CLEANSCREENON CLEANSCREENOFF", "", false},
    {"COMMANDLINE", "Command Line", "View", true, "CLI", "", false},
    {"CUSTOMIZE", "Customize", "Tools", false, "CUI TOOLPALETTESCUSTOMIZE"},
    {"DSETTINGS", "Drafting Settings", "Tools", false, "DS SE DDRMODES", "SNAP, GRID, OSMODE, POLARANG or DYNMODE"},
    {"MENUBAR", "Menu Bar", "View", true, "", "", false, "MENUBAR"},
    {"OPTIONS", "Options", "Tools", true, "OP PREFERENCES", "SETVAR"},
    {"PAGESETUP", "Page Setup", "File", true, "", "PLOT"},
    {"PLOTSTYLEEDITOR", "Plot Style Editor", "File", true},
    {"PREVIEW", "Plot Preview", "File", false, "PRE", "PLOT or EXPORTIMAGE"},
    {"PROPERTIESCLOSE", "Close Properties", "View", true, "PRCLOSE", "", false},
    {"QUICKPROPERTIES", "Quick Properties", "View", true, "QP", "", false, "QPMODE"},
    {"RIBBON", "Ribbon", "View", true, "DASHBOARD", "", false, "RIBBONSTATE"},
    {"STANDARDS", "Standards", "Tools", false, "STA"},
    {"THEME", "Theme", "View", true, "", "", false, "COLORTHEME"},
    {"TOOLBAR", "Toolbar", "View", true, "TO"},
    {"TOOLPALETTES", "Tool Palettes", "Tools", true, "TP"},
};

/// What the command prints; what it switches is switched.
std::vector<std::string> serve(const WindowRow& row, doc::Document& document) {
    if (row.dialog) {
        std::vector<std::string> lines{needsDialog(row.title)};
        if (*row.instead != '\0') lines.push_back(typedInstead(row.instead));
        return lines;
    }
    if (*row.variable == '\0') return {};
    const std::int32_t value = engine::sysVarInt(document.drawing(), row.variable) != 0 ? 0 : 1;
    const std::string error = document.setVariable(row.variable, value);
    return {error.empty() ? std::string(row.variable) + " = " + std::to_string(value) : error};
}

class WindowTool final : public Tool {
public:
    explicit WindowTool(const WindowRow& row) : row_(row) {}
    void begin() override {
        for (const std::string& line : serve(row_, document())) message(line);
        finish();
    }
    void textInput(const std::string&) override {}

private:
    const WindowRow& row_;
};

class WindowCommand final : public Command {
public:
    explicit WindowCommand(const WindowRow& row)
        : Command(row.name, row.title, row.category, splitWords(row.aliases)), row_(row) {}
    bool isInteractive() const override { return !row_.oneShot; }
    void execute(CommandContext& context) override {
        for (const std::string& line : serve(row_, context.document)) context.message(line);
    }
    std::unique_ptr<Tool> createTool() override { return row_.oneShot ? nullptr : std::make_unique<WindowTool>(row_); }

private:
    const WindowRow& row_;
};

template <std::size_t index>
std::unique_ptr<Command> makeRow() {
    return std::make_unique<WindowCommand>(kRows[index]);
}

template <std::size_t... indexes>
bool registerRows(std::index_sequence<indexes...>) {
    (CommandRegistrar(makeRow<indexes>), ...);
    return true;
}
[[maybe_unused]] const bool registered = registerRows(std::make_index_sequence<std::size(kRows)>());

}  // namespace

}  // namespace kova::cmd::commands
