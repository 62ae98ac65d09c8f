#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/table_entity.hpp"

namespace kova::cmd::commands {

namespace {

using engine::TableEntity;

/// TABLEDIT: types the text of one cell anew. The cell is picked, or named by row and column.
class TablEditTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const auto isTable = [](const engine::Entity& e) { return e.type() == engine::EntityType::Table; };
        std::int32_t row = 0;
        std::int32_t column = 0;
        std::uint64_t id = 0;
        for (;;) {
            const Answer picked = co_await ask.object("Pick a table cell:", {}, isTable);
            if (picked.isEnter()) break;
            const auto* table = dynamic_cast<const TableEntity*>(drawing().findById(picked.id));
            if (table == nullptr) co_return;
            if (!table->cellAt(picked.point, row, column)) {
                message("There is no cell at that point.");
                continue;
            }
            id = picked.id;
            break;
        }
        if (id == 0) {
            const Answer picked = co_await ask.object("Select table:", {}, isTable);
            const auto* table = dynamic_cast<const TableEntity*>(drawing().findById(picked.id));
            if (!picked.isObject() || table == nullptr) co_return;
            id = picked.id;
            for (;;) {
                const Answer place = co_await ask.text("Enter row,column of the cell:");
                if (place.isEnter()) co_return;
                if (readPlace(*table, place.text, row, column)) break;
                message("The table has rows 1 to " + std::to_string(table->rowCount()) + " and columns 1 to " +
                        std::to_string(table->colCount()) + ".");
            }
        }
        const auto* table = dynamic_cast<const TableEntity*>(drawing().findById(id));
        if (table == nullptr) co_return;
        const engine::TableCell* cell = table->cell(row, column);
        std::string prompt = withDefault("Enter cell text", cell != nullptr ? cell->content : std::string());
        const Answer text = co_await ask.line(std::move(prompt));
        engine::Entity* entity = drawing().findById(id);
        if (!text.isText() || entity == nullptr) co_return;
        const doc::GroupScope group(document(), "TABLEDIT");
        document().modifyEntity(*entity, [&](engine::Entity& e) {
            auto& changed = static_cast<TableEntity&>(e);
            // "." empties the cell: Enter keeps it.
            changed.ensureCell(row, column).content = trimmed(text.text) == "." ? std::string() : text.text;
            changed.fitRowHeights();
        });
    }

private:
    /// Row and column count from 1; a covered cell means the one that covers it.
    static bool readPlace(const TableEntity& table, std::string_view text, std::int32_t& row, std::int32_t& column) {
        const std::size_t comma = text.find(',');
        if (comma == std::string_view::npos) return false;
        const auto r = parseInteger(text.substr(0, comma));
        const auto c = parseInteger(text.substr(comma + 1));
        if (!r || !c || *r < 1 || *c < 1 || *r > table.rowCount() || *c > table.colCount()) return false;
        row = *r - 1;
        column = *c - 1;
        for (std::int32_t up = row; up >= 0; --up)
            for (std::int32_t left = column; left >= 0; --left) {
                const engine::TableCell* cell = table.cell(up, left);
                if (cell == nullptr || cell->isMerged || (up == row && left == column)) continue;
                if (up + cell->mergeDown < row || left + cell->mergeRight < column) continue;
                row = up;
                column = left;
                return true;
            }
        return true;
    }
};

}  // namespace

KOVA_TOOL_COMMAND(TablEdit, "TABLEDIT", "Edit Table Cell", "Modify")

}  // namespace kova::cmd::commands
