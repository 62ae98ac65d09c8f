#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "cmd/selection_command.hpp"

namespace kova::cmd::commands {

namespace {

/// ERASE: removes what is selected.
class EraseCommand final : public SelectionCommand {
public:
    EraseCommand() : SelectionCommand("ERASE", "Erase", "Modify", {"E", "DEL"}) {}
    void work(doc::Document& document, ToolHost& host) override {
        std::size_t count = 0;
        {
            const doc::GroupScope group(document, "ERASE");
            count = document.removeEntities(document.selection().ids());
        }
        host.message(counted(count, "object") + " erased.");
    }
};

}  // namespace

KOVA_REGISTER_COMMAND(EraseCommand)

}  // namespace kova::cmd::commands
