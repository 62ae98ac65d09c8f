#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/refusals.hpp"
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
        auto table = std::make_unique<engine::TableEntity>();
        engine::Name styleName = drawing().currentTableStyle;
        Answer columns;
        for (;;) {
            columns = co_await ask.integer("Enter number of columns or [Auto/from Style/Data link] <5>:", 1, 1000,
                                           "Auto Style Data");
            if (columns.is("DATA")) co_return message(needsDialog("Select a Data Link"));
            if (!columns.is("STYLE")) break;
            co_await askStyle(ask, styleName);
        }
        const Answer rows = co_await ask.integer("Enter number of rows or [Auto] <1>:", 1, 10000, "Auto");
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
                co_await askStyle(ask, styleName);
            }
        }
        int dataRows = rows.isNumber() ? rows.integer() : 1;
        int columnCount = columns.isNumber() ? columns.integer() : 5;
        table->styleName = styleName;
        table->rotation = ucsRotation(drawing());
        const engine::TableStyle* style = drawing().tableStyles.find(styleName);
        static const engine::TableStyle standard;
        const engine::TableStyle& sizes = style != nullptr ? *style : standard;
        const bool title = style == nullptr || style->hasTitle;
        const int heads = (title ? 1 : 0) + (style == nullptr || style->hasHeader ? 1 : 0);
        if (columns.is("AUTO") || rows.is("AUTO")) {
            // As many as fit between the two corners.
            const Answer corner = co_await ask.point("Specify second corner:", {}, table->insertion);
            if (!corner.isPoint()) co_return;
            const math::Vector2 x = math::Vector2::from_angle(table->rotation);
            const math::Vector2 d = corner.point - table->insertion;
            table->resize(1, 1, sizes);
            const double oneWidth = width > 0.0 ? width : table->colWidth(0);
            const double oneHeight = height > 0.0 ? height : table->rowHeight(0);
            const auto fitting = [](double room, double one, int limit) {
                return static_cast<int>(std::clamp(std::round(std::abs(room) / one), 1.0, static_cast<double>(limit)));
            };
            if (columns.is("AUTO")) columnCount = fitting(d.dot(x), oneWidth, 1000);
            if (rows.is("AUTO")) dataRows = std::max(1, fitting(d.dot(x.perpendicular()), oneHeight, 10000) - heads);
        }
        if (static_cast<long>(dataRows) * columnCount > engine::TableEntity::kMaxCells)
            co_return message("Invalid value.");
        // The rows asked for are those of data; title and header stand above them.
        const int total = dataRows + heads;
        table->resize(total, columnCount, sizes);
        if (width > 0.0) table->colWidths.assign(static_cast<std::size_t>(columnCount), width);
        if (height > 0.0) table->rowHeights.assign(static_cast<std::size_t>(total), height);
        if (title && columnCount > 1) table->mergeCells(0, 0, 0, columnCount - 1);
        applyCurrentValues(document(), *table);
        const std::uint64_t id = table->id();
        // The texts of its cells belong to the same step.
        const doc::GroupScope group(document(), "TABLE");
        document().addEntity(std::move(table));
        co_await askCells(ask, id, total, columnCount, title);
    }

private:
    Dialogue askStyle(Ask& ask, engine::Name& style) {
        std::string prompt = withDefault("Enter table style name", style.view());
        const Answer name = co_await ask.text(std::move(prompt));
        if (!name.isText()) co_return;
        const engine::Name wanted(trimmed(name.text));
        if (drawing().tableStyles.find(wanted) != nullptr)
            style = wanted;
        else
            message("Table style " + inQuotes(trimmed(name.text)) + " not found.");
    }

    Dialogue askCells(Ask& ask, std::uint64_t id, int rows, int columns, bool title) {
        for (int row = 0; row < rows; ++row)
            for (int column = 0; column < columns; ++column) {
                if (title && row == 0 && column > 0) continue;
                const Answer text = co_await ask.text("Enter text for cell " + cellName(row, column) + " <>:");
                if (text.isText() && trimmed(text.text) == ".") co_return;
                engine::Entity* entity = drawing().findById(id);
                if (entity == nullptr) co_return;
                if (!text.isText()) continue;
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
