#include "cmd/dialogue.hpp"
#include "cmd/drawing_aids.hpp"
#include "cmd/format.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/table_entity.hpp"

namespace kova::cmd::commands {

namespace {

/// "A1" for row 0, column 0; after Z comes AA.
std::string cellName(int row, int column) {
    std::string letters;
    for (int c = column + 1; c > 0; c = (c - 1) / 26)
        letters.insert(letters.begin(), static_cast<char>('A' + (c - 1) % 26));
    return letters + std::to_string(row + 1);
}

/// TABLE: sizes, place, and the cells' texts row by row.
class TableTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer columns = co_await ask.integer("Enter number of columns <5>:", 1, 1000);
        const Answer rows = co_await ask.integer("Enter number of rows <1>:", 1, 10000);
        auto table = std::make_unique<engine::TableEntity>();
        engine::Name styleName = drawing().currentTableStyle;
        double width = 0.0;
        double height = 0.0;
        for (;;) {
            const Answer at =
                co_await ask.point("Specify insertion point or [Width/Height/Style]:", "Width Height Style");
            if (at.isEnter()) co_return;
            if (at.isPoint()) {
                table->insertion = at.point;
                break;
            }
            if (at.is("WIDTH")) {
                const Answer answer = co_await ask.distance("Specify column width:", {}, {}, kPositive);
                width = answer.numberOr(width);
            } else if (at.is("HEIGHT")) {
                const Answer answer = co_await ask.distance("Specify row height:", {}, {}, kPositive);
                height = answer.numberOr(height);
            } else {
                std::string prompt = withDefault("Enter table style name", styleName.view());
                const Answer name = co_await ask.text(std::move(prompt));
                if (!name.isText()) continue;
                const engine::Name wanted(trimmed(name.text));
                if (drawing().tableStyles.find(wanted) != nullptr)
                    styleName = wanted;
                else
                    message("Table style " + quoted(trimmed(name.text)) + " not found.");
            }
        }
        const int dataRows = rows.isNumber() ? rows.integer() : 1;
        const int columnCount = columns.isNumber() ? columns.integer() : 5;
        if (static_cast<long>(dataRows) * columnCount > engine::TableEntity::kMaxCells)
            co_return message("Invalid value.");
        table->styleName = styleName;
        const engine::TableStyle* style = drawing().tableStyles.find(styleName);
        const bool title = style == nullptr || style->hasTitle;
        // The rows asked for are those of data; title and header stand above them.
        const int total = dataRows + (title ? 1 : 0) + (style == nullptr || style->hasHeader ? 1 : 0);
        table->resize(total, columnCount);
        if (width > 0.0) table->colWidths.assign(static_cast<std::size_t>(columnCount), width);
        if (height > 0.0) table->rowHeights.assign(static_cast<std::size_t>(total), height);
        table->rotation = ucsRotation(drawing());
        if (title && columnCount > 1) table->mergeCells(0, 0, 0, columnCount - 1);
        applyCurrentValues(document(), *table);
        const std::uint64_t id = table->id();
        {
            const doc::GroupScope group(document(), "TABLE");
            document().addEntity(std::move(table));
        }
        co_await askCells(ask, id, total, columnCount, title);
    }

private:
    Dialogue askCells(Ask& ask, std::uint64_t id, int rows, int columns, bool title) {
        for (int row = 0; row < rows; ++row)
            for (int column = 0; column < columns; ++column) {
                if (title && row == 0 && column > 0) continue;
                const Answer text = co_await ask.text("Enter text for cell " + cellName(row, column) + " <>:");
                if (text.isText() && trimmed(text.text) == ".") co_return;
                engine::Entity* entity = drawing().findById(id);
                if (entity == nullptr) co_return;
                if (!text.isText()) continue;
                const doc::GroupScope group(document(), "TABLE");
                document().modifyEntity(*entity, [&](engine::Entity& e) {
                    auto& table = static_cast<engine::TableEntity&>(e);
                    table.ensureCell(row, column).content = text.text;
                    table.fitRowHeights();
                });
            }
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Table, "TABLE", "Table", "Annotate", {"TB"})

}  // namespace kova::cmd::commands
