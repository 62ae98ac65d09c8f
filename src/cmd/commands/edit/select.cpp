#include "doc/pick/picking.hpp"
#include "cmd/registry.hpp"
#include "cmd/selection.hpp"

namespace kova::cmd::commands {

namespace {

/// SELECT: collects objects and leaves them selected.
class SelectTool final : public Tool {
public:
    void begin() override {
        if (document().selection().empty())
            setPrompt("Select objects:");
        else
            showCount();
    }
    void textInput(const std::string& line) override {
        if (line.empty()) return finish();
        if (!isAllKeyword(line)) return setPrompt(kSelectionHelpPrompt);
        document().selection().add(selectAll(document()));
        showCount();
    }
    void mousePress(const math::Vector2&, int button) override {
        if (button == kRightButton) finish();
    }
    bool isSelectingObjects() const override { return isActive(); }
    bool keepsSelection() const override { return true; }
    void selectionChanged() override { showCount(); }

private:
    void showCount() {
        setPrompt(std::to_string(document().selection().size()) + " object(s) selected. Pick more or press Enter:");
    }
};

class SelectAllCommand final : public OneShotCommand {
public:
    SelectAllCommand() : OneShotCommand("SELECTALL", "Select All", "Edit", {"AI_SELALL"}) {}
    void execute(CommandContext& context) override {
        context.document.selection().set(selectAll(context.document));
        context.message(std::to_string(context.document.selection().size()) + " found.");
    }
};

class SelectLastCommand final : public OneShotCommand {
public:
    SelectLastCommand() : OneShotCommand("SELECTLAST", "Select Last", "Edit") {}
    void execute(CommandContext& context) override {
        const std::uint64_t id = lastEntity(context.document);
        if (id != 0) context.document.selection().set({id});
        context.message(id != 0 ? "1 found." : "0 found.");
    }
};

class DeselectCommand final : public OneShotCommand {
public:
    DeselectCommand() : OneShotCommand("DESELECT", "Deselect", "Edit") {}
    void execute(CommandContext& context) override { context.document.selection().clear(); }
};

}  // namespace

KOVA_TOOL_COMMAND(Select, "SELECT", "Select", "Edit")
KOVA_REGISTER_COMMAND(SelectAllCommand)
KOVA_REGISTER_COMMAND(SelectLastCommand)
KOVA_REGISTER_COMMAND(DeselectCommand)

}  // namespace kova::cmd::commands
