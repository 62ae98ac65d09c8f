#pragma once

#include "cmd/command.hpp"

namespace kova::cmd {

/// A one-shot command that works on what is selected, at once; with nothing selected it asks first, and used
/// transparently it then says so. What it leaves selected is what P selects afterwards.
class SelectionCommand : public OneShotCommand {
public:
    using OneShotCommand::OneShotCommand;
    void execute(CommandContext& context) final;

    /// The selection is not empty.
    virtual void work(doc::Document& document, ToolHost& host) = 0;
};

}  // namespace kova::cmd
