#include "cmd/format.hpp"
#include "cmd/registry.hpp"
#include "cmd/selection.hpp"

namespace kova::cmd::commands {

namespace {

void eraseSelection(doc::Document& document, ToolHost& host) {
    std::size_t count = 0;
    {
        const doc::GroupScope group(document, "ERASE");
        count = document.removeEntities(document.selection().ids());
    }
    host.message(counted(count, "object") + " erased.");
}

class EraseOperation final : public SelectionOperation {
public:
    explicit EraseOperation(ToolHost& host) : host_(host) {}
    bool run(OperationContext& context) override { return !context.document->selection().empty(); }
    void commit(OperationContext& context) override { eraseSelection(*context.document, host_); }

private:
    ToolHost& host_;
};

/// ERASE: removes what is selected, at once; with nothing selected it asks first.
class EraseCommand final : public OneShotCommand {
public:
    EraseCommand() : OneShotCommand("ERASE", "Erase", "Modify", {"E", "DEL"}) {}

    void execute(CommandContext& context) override {
        if (!context.document.selection().empty()) return eraseSelection(context.document, context.host);
        if (context.transparent) return context.message("No objects selected.");
        context.handOver = std::make_unique<SelectThenExecuteTool>(std::make_unique<EraseOperation>(context.host));
    }
};

}  // namespace

KOVA_REGISTER_COMMAND(EraseCommand)

}  // namespace kova::cmd::commands
