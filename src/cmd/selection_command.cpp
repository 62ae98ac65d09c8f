#include "cmd/selection_command.hpp"

#include "cmd/selection.hpp"

namespace kova::cmd {

namespace {

class WorkOperation final : public SelectionOperation {
public:
    WorkOperation(SelectionCommand& command, ToolHost& host) : command_(command), host_(host) {}
    bool run(OperationContext& context) override { return !context.document->selection().empty(); }
    void commit(OperationContext& context) override { command_.work(*context.document, host_); }

private:
    SelectionCommand& command_;
    ToolHost& host_;
};

}  // namespace

void SelectionCommand::execute(CommandContext& context) {
    doc::SelectionSet& selection = context.document.selection();
    if (selection.empty()) {
        if (context.transparent) return context.message("No objects selected.");
        context.handOver =
            std::make_unique<SelectThenExecuteTool>(std::make_unique<WorkOperation>(*this, context.host));
        return;
    }
    work(context.document, context.host);
    // Beside a running command the selection is that command's.
    if (context.transparent) return;
    if (!selection.empty()) context.previous = selection.ids();
    selection.clear();
}

}  // namespace kova::cmd
