#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

void startNew(CommandContext& context, const std::string& templateName) {
    AppServices* services = context.host.services();
    if (services == nullptr) return context.message("New drawings cannot be made here.");
    services->newDrawing(templateName);
}

/// NEW: a fresh drawing, or one from the template named behind it ("." for none).
class NewCommand : public OneShotCommand {
public:
    NewCommand() : NewCommand("NEW", "New") {}
    void execute(CommandContext& context) override {
        const bool named = !context.arguments.empty() && context.arguments.front() != ".";
        startNew(context, named ? context.arguments.front() : std::string());
    }

protected:
    NewCommand(const char* name, const char* title) : OneShotCommand(name, title, "File") {}
};

class QnewCommand final : public NewCommand {
public:
    QnewCommand() : NewCommand("QNEW", "Quick New") {}
};

/// CLOSE: the drawing goes, without a question, and a fresh one takes its place.
class CloseCommand final : public OneShotCommand {
public:
    CloseCommand() : OneShotCommand("CLOSE", "Close", "File") {}
    void execute(CommandContext& context) override { startNew(context, {}); }
};

}  // namespace

KOVA_REGISTER_COMMAND(NewCommand)
KOVA_REGISTER_COMMAND(QnewCommand)
KOVA_REGISTER_COMMAND(CloseCommand)

}  // namespace kova::cmd::commands
