#include "edit/block_editing.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/block_reference.hpp"

namespace kova::cmd::commands {

namespace {

/// BEDIT: opens a block's contents for editing.
class BeditTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (document().blockEdit())
            co_return message("Block " + inQuotes(document().blockEdit()->block) +
                              " is open in the block editor. Use BCLOSE to close that first.");
        const std::string preset = selectedBlock();
        for (;;) {
            std::string prompt = "Enter block name or [?]";
            prompt = preset.empty() ? prompt + ":" : withDefault(prompt, preset);
            const Answer answer = co_await ask.text(std::move(prompt), "?");
            if (answer.is("?")) {
                const std::string pattern = co_await askNamesToList(ask, "Enter block(s) to list <*>:");
                listBlocks(drawing(), pattern, *host());
                continue;
            }
            const std::string name = answer.isEnter() ? preset : typedName(answer.text);
            if (name.empty()) co_return;
            doc::GroupScope group(document(), "BEDIT");
            const std::string error = beginBlockEdit(document(), engine::Name(name));
            if (error.empty()) {
                message(counted(drawing().currentSpace().size(), "object") + " in block " +
                        inQuotes(document().blockEdit()->block) + ". Use BCLOSE to close the block editor.");
                repaint();
                co_return;
            }
            group.rollback();
            message(error);
            if (document().referenceEdit()) co_return;
        }
    }

private:
    /// The block of the only reference that is selected.
    std::string selectedBlock() const {
        const auto& ids = document().selection().ids();
        if (ids.size() != 1) return {};
        const auto* reference = dynamic_cast<engine::BlockReferenceEntity*>(drawing().findById(ids.front()));
        return reference != nullptr ? reference->blockName.str() : std::string();
    }
};

/// BCLOSE: ends what BEDIT began.
class BcloseTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (!document().blockEdit()) co_return message("Not in the block editor.");
        const std::string name = inQuotes(document().blockEdit()->block);
        const Answer option =
            co_await ask.keyword("Save changes to " + name + "? [Save/Discard] <Save>:", "Save Discard");
        const bool save = !option.is("DISCARD");
        if (!document().blockEdit()) co_return;
        doc::GroupScope group(document(), "BCLOSE");
        const std::string error = endBlockEdit(document(), save);
        if (!error.empty()) {
            group.rollback();
            co_return message(error);
        }
        message(save ? "Block " + name + " saved." : "Changes to block " + name + " discarded.");
        repaint();
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Bedit, "BEDIT", "Block Editor", "Insert", {"BE"})
KOVA_TOOL_COMMAND(Bclose, "BCLOSE", "Close Block Editor", "Insert", {"BC"})

}  // namespace kova::cmd::commands
