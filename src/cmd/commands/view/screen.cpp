#include "cmd/registry.hpp"
#include "edit/text_fields.hpp"

// Commands about what is shown. Without a window they only bring derived data up to date, so that scripts run.

namespace kova::cmd::commands {

namespace {

void regenerate(doc::Document& document) {
    // Measured extents are taken anew.
    ++document.drawing().styleRevision;
    updateFieldsAt(FieldMoment::Regenerate, document);
}

class RegenCommand final : public OneShotCommand {
public:
    RegenCommand() : OneShotCommand("REGEN", "Regenerate", "View", {"RE"}) {}
    void execute(CommandContext& context) override {
        regenerate(context.document);
        context.message("Regenerating model.");
    }
};

class RegenallTool final : public Tool {
public:
    void begin() override {
        regenerate(document());
        message("Regenerating model.");
        finish();
    }
    void textInput(const std::string&) override {}
};

class RedrawTool final : public Tool {
public:
    void begin() override {
        repaint();
        finish();
    }
    void textInput(const std::string&) override {}
};

/// Switches between the drawing and the text window, of which there is neither.
class WindowCommand : public OneShotCommand {
public:
    using OneShotCommand::OneShotCommand;
    void execute(CommandContext&) override {}
};
class GraphscrCommand final : public WindowCommand {
public:
    GraphscrCommand() : WindowCommand("GRAPHSCR", "Graphics Window", "View") {}
};
class TextscrCommand final : public WindowCommand {
public:
    TextscrCommand() : WindowCommand("TEXTSCR", "Text Window", "View") {}
};

}  // namespace

KOVA_REGISTER_COMMAND(RegenCommand)
KOVA_TOOL_COMMAND(Regenall, "REGENALL", "Regenerate All", "View", {"REA"})
KOVA_TOOL_COMMAND(Redraw, "REDRAW", "Redraw", "View", {"R"})
KOVA_REGISTER_COMMAND(GraphscrCommand)
KOVA_REGISTER_COMMAND(TextscrCommand)

}  // namespace kova::cmd::commands
