#include "edit/clipboard.hpp"
#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "cmd/selection_command.hpp"

namespace kova::cmd::commands {

namespace {

constexpr const char* kEmpty = "The clipboard is empty.";

void copySelection(doc::Document& document, ToolHost& host, bool cut) {
    const std::vector<std::uint64_t> ids = document.selection().ids();
    const std::size_t count = Clipboard::instance().copy(document, ids, lowerLeft(document.drawing(), ids));
    if (cut) {
        const doc::GroupScope group(document, "CUTCLIP");
        document.removeEntities(ids);
    }
    host.message(counted(count, "object") + (cut ? " cut." : " copied."));
}

/// COPYCLIP and CUTCLIP: what is selected goes to the clipboard.
class CopyClipCommand final : public SelectionCommand {
public:
    CopyClipCommand() : SelectionCommand("COPYCLIP", "Copy to Clipboard", "Edit") {}
    void work(doc::Document& document, ToolHost& host) override { copySelection(document, host, false); }
};
class CutClipCommand final : public SelectionCommand {
public:
    CutClipCommand() : SelectionCommand("CUTCLIP", "Cut to Clipboard", "Edit") {}
    void work(doc::Document& document, ToolHost& host) override { copySelection(document, host, true); }
};

class CopyBaseTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer base = co_await ask.point("Specify base point:");
        if (!base.isPoint()) co_return;
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        const std::size_t count = Clipboard::instance().copy(document(), selected.ids, base.point);
        message(counted(count, "object") + " copied.");
    }
};

class PasteClipTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (Clipboard::instance().empty()) co_return message(kEmpty);
        const Answer at = co_await ask.point("Specify insertion point:");
        if (!at.isPoint()) co_return;
        const doc::GroupScope group(document(), "PASTECLIP");
        // What came in is what P selects.
        document().selection().set(Clipboard::instance().paste(document(), at.point));
    }
};

class PasteBlockTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (Clipboard::instance().empty()) co_return message(kEmpty);
        const Answer at = co_await ask.point("Specify insertion point:");
        if (!at.isPoint()) co_return;
        doc::GroupScope group(document(), "PASTEBLOCK");
        if (const engine::Entity* reference = Clipboard::instance().pasteAsBlock(document(), at.point))
            document().selection().set({reference->id()});
        else
            group.rollback();
    }
};

/// PASTEORIG: pastes at the coordinates that the objects had where they were copied.
class PasteOrigCommand final : public OneShotCommand {
public:
    PasteOrigCommand() : OneShotCommand("PASTEORIG", "Paste to Original Coordinates", "Edit") {}
    void execute(CommandContext& context) override {
        if (Clipboard::instance().empty()) return context.message(kEmpty);
        std::vector<std::uint64_t> added;
        {
            const doc::GroupScope group(context.document, "PASTEORIG");
            added = Clipboard::instance().pasteInPlace(context.document);
        }
        context.message(counted(added.size(), "object") + " pasted.");
        context.previous = std::move(added);
    }
};

}  // namespace

KOVA_REGISTER_COMMAND(CopyClipCommand)
KOVA_REGISTER_COMMAND(CutClipCommand)
KOVA_REGISTER_COMMAND(PasteOrigCommand)
KOVA_TOOL_COMMAND(CopyBase, "COPYBASE", "Copy with Base Point", "Edit")
KOVA_TOOL_COMMAND(PasteClip, "PASTECLIP", "Paste", "Edit")
KOVA_TOOL_COMMAND(PasteBlock, "PASTEBLOCK", "Paste as Block", "Edit")

}  // namespace kova::cmd::commands
