#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

/// LISPRELOAD: loads the LISP files again that were loaded so far.
class LispReloadCommand final : public OneShotCommand {
public:
    LispReloadCommand() : OneShotCommand("LISPRELOAD", "LISP Reload", "Tools") {}
    void execute(CommandContext& context) override {
        if (AppServices* services = context.host.services()) services->reloadLisp();
    }
};

}  // namespace

KOVA_REGISTER_COMMAND(LispReloadCommand)

}  // namespace kova::cmd::commands
