#include <QCoreApplication>
#include <QVariant>

#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

/// "CIRCLE (C): Circle, Draw".
std::string helpLine(const CommandRegistry& registry, const Command& command) {
    std::string aliases;
    for (const auto& [alias, name] : registry.aliases())
        if (name == command.name()) aliases += (aliases.empty() ? "" : ", ") + alias;
    std::string line = command.name() + (aliases.empty() ? "" : " (" + aliases + ")") + ": " + command.title() + ", " +
                       command.category();
    return line;
}

/// HELP: what a command is called, in one line.
class HelpTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const CommandRegistry* registry = host()->registry();
        if (registry == nullptr) co_return;
        for (;;) {
            const Answer answer = co_await ask.text("Enter command name <all>:");
            if (answer.isEnter()) break;
            const Command* command = registry->find(trimmed(answer.text));
            if (command != nullptr) {
                message(helpLine(*registry, *command));
                co_return;
            }
            message("Unknown command: " + answer.text);
        }
        for (const Command* command : registry->commands())
            if (!command->isHidden()) message(helpLine(*registry, *command));
    }
};

/// ABOUT: which program this is.
class AboutCommand final : public OneShotCommand {
public:
    AboutCommand() : OneShotCommand("ABOUT", "About", "Help") {}
    void execute(CommandContext& context) override {
        std::string name = QCoreApplication::applicationName().toStdString();
        if (name.empty()) name = "KovaCAD CLI";
        const std::string version = QCoreApplication::applicationVersion().toStdString();
        context.message(version.empty() ? name : name + " " + version);
        context.message("A 2D and 3D CAD program without a window.");
        context.message("Built with GCC " + std::to_string(__GNUC__) + "." + std::to_string(__GNUC_MINOR__) + ", C++" +
                        std::to_string(__cplusplus / 100 % 100) + ", Qt " + qVersion() + ".");
    }
};

/// DWGWORKFLOW: how DWG files are treated, and what the last save as DWG had to tell.
class DwgworkflowCommand final : public OneShotCommand {
public:
    DwgworkflowCommand() : OneShotCommand("DWGWORKFLOW", "DWG Workflow", "File") {}
    void execute(CommandContext& context) override {
        context.message("Read: R2000, R2004, R2007, R2010, R2013 and R2018.");
        const std::string version = context.document.property("DWG version").toString().toStdString();
        context.message("Written: R2010, R2013 and R2018; the next save writes " +
                        (version.empty() ? std::string("R2018") : version) + " (SAVEAS chooses).");
        context.message(
            "Kept: all kinds of entities, tables, layouts, settings, extended data, dictionaries, handles, binary data "
            "of "
            "solids.");
        context.message(
            "Lost: solids held as modeller text only, entities without a shape, classes that are not known, "
            "materials.");
        context.message("Objects that do not decode are skipped and counted when a file is opened.");
        const QStringList last = context.document.property("DWG save report").toStringList();
        if (last.isEmpty()) return context.message("No drawing has been saved as DWG in this session.");
        for (const QString& line : last) context.message("Last save: " + line.toStdString());
    }
};

/// DWGPROPS: title, author, subject and keywords of the drawing.
class DwgpropsTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        using Properties = engine::DrawingProperties;
        struct Row {
            const char* option;
            const char* shown;
            std::string Properties::*member;
        };
        static constexpr Row rows[] = {{"Title", "title", &Properties::title},
                                       {"Author", "author", &Properties::author},
                                       {"Subject", "subject", &Properties::subject},
                                       {"Keywords", "keywords", &Properties::keywords}};
        for (;;) {
            const Answer option = co_await ask.keyword("Enter an option [Title/Author/Subject/Keywords/?] <exit>:",
                                                       "Title Author Subject Keywords ?");
            if (option.isEnter()) co_return;
            for (const Row& row : rows) {
                const std::string old = drawing().properties.*row.member;
                if (option.is("?")) message(std::string(row.option) + ": " + old);
                if (!option.is(row.option)) continue;
                const Answer answer = co_await ask.text("Enter " + std::string(row.shown) + " <" + old + ">:");
                if (answer.isEnter()) continue;
                // A full stop alone clears it, as with other texts that have a default.
                const std::string text = answer.text == "." ? std::string() : answer.text;
                const doc::GroupScope group(document(), "DWGPROPS");
                document().editSettings([&](engine::Drawing& d) { d.properties.*row.member = text; });
            }
        }
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Help, "HELP", "Help", "Help", {"?"})
KOVA_REGISTER_COMMAND(AboutCommand)
KOVA_REGISTER_COMMAND(DwgworkflowCommand)
KOVA_TOOL_COMMAND(Dwgprops, "DWGPROPS", "Drawing Properties", "File")

}  // namespace kova::cmd::commands
