#include "cmd/prompts/text_prompts.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "edit/text_fields.hpp"
#include "engine/entities/text.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Entity;

/// FIELD: a line of text that shows a value of the drawing.
class FieldTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer kind = co_await ask.keyword(
            "Enter field [Date/Filename/Author/Title/Subject/Keywords/PlotScale/SysVar/Object/PageSetup/SheetName] "
            "<Date>:",
            "Date Filename Author Title Subject Keywords PlotScale SysVar Object PageSetup SheetName");
        std::string code = "Date";
        for (const char* name : {"Filename", "Author", "Title", "Subject", "Keywords", "PlotScale", "SysVar", "Object",
                                 "PageSetup", "SheetName"})
            if (kind.is(name)) code = name;
        if (kind.is("SYSVAR")) {
            const std::string variable = co_await askVariable(ask);
            if (variable.empty()) co_return;
            code += " " + variable;
        } else if (kind.is("OBJECT")) {
            const std::string property = co_await askProperty(ask);
            if (property.empty()) co_return;
            code += " " + property;
        }
        code = "%<" + code + ">%";
        message("Field value: " + resolveFields(drawing(), code));
        const std::optional<TextPlace> place = co_await askTextPlace(ask, document(), "FIELD");
        if (!place || place->continued) co_return;
        auto text = std::make_unique<engine::TextEntity>();
        text->position = place->position;
        text->fitEnd = place->fitEnd;
        text->fit = place->fit;
        text->height = place->height;
        text->rotation = place->rotation;
        text->hAlign = place->hAlign;
        text->vAlign = place->vAlign;
        text->textStyle = place->style;
        text->widthFactor = place->widthFactor;
        text->oblique = place->oblique;
        text->generation = place->generation;
        setTextFields(drawing(), *text, code);
        addNew(document(), std::move(text), "FIELD");
        repaint();
    }

private:
    Task<std::string> askVariable(Ask& ask) {
        for (;;) {
            const Answer typed = co_await ask.text("Enter system variable name:");
            if (typed.isEnter()) co_return std::string();
            if (const engine::SysVarDef* variable = engine::findSysVar(trimmed(typed.text)))
                co_return std::string(variable->name);
            message("Unknown variable name " + inQuotes(trimmed(typed.text)) + ".");
        }
    }

    /// "HANDLE Property".
    Task<std::string> askProperty(Ask& ask) {
        const Answer picked = co_await ask.object("Select object:");
        if (!picked.isObject()) co_return std::string();
        for (;;) {
            const Answer typed = co_await ask.text("Enter property or [?]:", "?");
            const Entity* entity = drawing().findById(picked.id);
            if (typed.isEnter() || entity == nullptr) co_return std::string();
            for (const auto& [key, value] : objectProperties(drawing(), *entity)) {
                if (typed.is("?"))
                    message(key + "  " + value);
                else if (engine::equalNoCase(key, trimmed(typed.text)))
                    co_return handleText(entity->handle()) + " " + key;
            }
            if (!typed.is("?")) message("Unknown property " + inQuotes(typed.text) + ".");
        }
    }
};

/// UPDATEFIELD: the fields of what is selected, else all of the drawing, show their present values.
class UpdateFieldCommand final : public OneShotCommand {
public:
    UpdateFieldCommand() : OneShotCommand("UPDATEFIELD", "Update Fields", "Tools") {}

    void execute(CommandContext& context) override {
        engine::Drawing& drawing = context.drawing();
        std::vector<Entity*> entities;
        doc::SelectionSet& selection = context.document.selection();
        if (selection.empty()) {
            entities = possibleFields(drawing);
        } else {
            for (const std::uint64_t id : selection.ids())
                if (Entity* entity = drawing.findById(id)) entities.push_back(entity);
        }
        std::size_t found = 0;
        std::size_t updated = 0;
        {
            const doc::GroupScope group(context.document, "UPDATEFIELD");
            for (Entity* entity : entities) {
                const FieldUpdate result = updateFields(context.document, *entity);
                found += result != FieldUpdate::None;
                updated += result == FieldUpdate::Changed;
            }
        }
        context.message(std::to_string(found) + " field(s) found");
        context.message(std::to_string(updated) + " field(s) updated");
        if (context.transparent || selection.empty()) return;
        context.previous = selection.ids();
        selection.clear();
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Field, "FIELD", "Field", "Insert")
KOVA_REGISTER_COMMAND(UpdateFieldCommand)

}  // namespace kova::cmd::commands
