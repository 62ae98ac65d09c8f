#include "edit/block_attributes.hpp"
#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using engine::BlockReferenceEntity;
using engine::Name;

bool isReference(const engine::Entity& entity) { return entity.type() == engine::EntityType::BlockReference; }

/// ATTSYNC: references get the attributes that their block now defines; values under the same tag stay.
class AttsyncTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        for (;;) {
            const Answer option = co_await ask.keyword("Enter an option [?/Name/Select] <Select>:", "? Name Select");
            if (option.is("?")) {
                co_await list(ask);
                continue;
            }
            if (option.is("NAME")) {
                const bool done = co_await byName(ask);
                if (done) co_return;
                continue;
            }
            const Answer pick = co_await ask.object("Select a block:", {}, isReference);
            const auto* reference =
                pick.isObject() ? dynamic_cast<const BlockReferenceEntity*>(drawing().findById(pick.id)) : nullptr;
            if (reference == nullptr) co_return;
            const Name name = reference->blockName;
            if (!definesAttributes(drawing().findBlock(name))) {
                message("Block " + inQuotes(name) + " has no attributes.");
                continue;
            }
            std::string question = "ATTSYNC block " + name.str() + "? [Yes/No] <Yes>:";
            const bool sync = co_await askYesNo(ask, std::move(question), true);
            if (!sync) continue;
            synchronize(std::vector<Name>(1, name));
            co_return;
        }
    }

private:
    std::vector<Name> candidates() const {
        std::vector<Name> names;
        for (const auto& block : drawing().blocks())
            if (!block->isAnonymous() && definesAttributes(block.get())) names.push_back(block->name);
        return names;
    }

    Dialogue list(Ask& ask) {
        const std::string filter = co_await askNamesToList(ask, "Enter block(s) to list <*>:");
        const std::vector<Name> names = matchingNames(drawing(), candidates(), filter);
        if (names.empty()) co_return message("No blocks with attributes.");
        for (const Name name : names) message("  " + inQuotes(name));
    }

    Task<bool> byName(Ask& ask) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter names of blocks to sync or [?]:", "?");
            if (answer.isEnter()) co_return false;
            if (answer.is("?")) {
                co_await list(ask);
                continue;
            }
            const std::vector<Name> names = matchingNames(drawing(), candidates(), answer.text);
            if (names.empty()) {
                const engine::Block* known = drawing().findBlock(Name(typedName(answer.text)));
                message(known != nullptr ? "Block " + inQuotes(known->name) + " has no attributes."
                                         : "No matching names found.");
                continue;
            }
            synchronize(names);
            co_return true;
        }
    }

    void synchronize(const std::vector<Name>& names) {
        const doc::GroupScope group(document(), "ATTSYNC");
        const std::size_t count = synchronizeAttributes(document(), names);
        message(counted(count, "block reference") + " updated.");
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Attsync, "ATTSYNC", "Synchronize Attributes", "Insert")

}  // namespace kova::cmd::commands
