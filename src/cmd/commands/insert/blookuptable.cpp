#include "edit/block_editing.hpp"
#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/dynamic_block.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Block;
using engine::DynProperty;
using engine::LookupTable;

constexpr std::size_t kMostRows = 10'000;

/// BLOOKUPTABLE: which values of the other parameters go with each value of the lookup parameter.
class BlookuptableTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const std::string refusal = editorRefusal(document(), "BLOOKUPTABLE");
        if (!refusal.empty()) co_return message(refusal);
        if (lookupName().empty()) co_return message("The block has no lookup parameter. Add one with BPARAMETER.");
        if (!block().lookupTable) {
            const bool made = co_await askColumns(ask);
            if (!made) co_return;
        }
        for (;;) {
            const Answer option = co_await ask.keyword("Enter an option [?/Add/Delete/Reverse/eXit] <eXit>:",
                                                       "? Add Delete Reverse eXit");
            if (option.isEnter() || option.is("EXIT") || !hasTable()) co_return;
            if (option.is("?")) {
                list();
            } else if (option.is("ADD")) {
                co_await askRow(ask);
            } else if (option.is("DELETE")) {
                co_await askDelete(ask);
            } else {
                const bool reverse = co_await askYesNo(ask, "Allow reverse lookup? [Yes/No] <Yes>:", true);
                if (hasTable()) change([&](LookupTable& table) { table.allowReverseLookup = reverse; });
            }
        }
    }

private:
    const Block& block() const { return *drawing().editedBlock(); }
    bool hasTable() const { return drawing().editedBlock() != nullptr && block().lookupTable.has_value(); }
    const LookupTable& table() const { return *block().lookupTable; }

    std::string lookupName() const {
        for (const DynProperty& property : engine::dynProperties(block()))
            if (property.kind == DynProperty::Kind::Lookup) return property.name;
        return {};
    }

    const DynProperty* find(const std::vector<DynProperty>& all, std::string_view name) const {
        for (const DynProperty& property : all)
            if (engine::equalNoCase(property.name, name)) return &property;
        return nullptr;
    }

    template <class Change>
    void change(const Change& change) {
        changeEditedBlock(document(), "BLOOKUPTABLE", [&](Block& b, doc::BlockEdit&) {
            if (!b.lookupTable) b.lookupTable.emplace();
            change(*b.lookupTable);
        });
    }

    Task<bool> askColumns(Ask& ask) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter parameter properties for the input columns <*>:");
            if (drawing().editedBlock() == nullptr) co_return false;
            const std::string pattern(answer.isEnter() ? "*" : typedName(answer.text));
            std::vector<engine::Name> names;
            for (const DynProperty& property : engine::dynProperties(block()))
                if (property.kind != DynProperty::Kind::Lookup) names.push_back(engine::Name(property.name));
            const std::vector<engine::Name> wanted = matchingNames(drawing(), names, pattern);
            if (names.empty()) {
                message("The block has no properties to look up.");
                co_return false;
            }
            if (wanted.empty()) {
                message("No matching names found.");
                continue;
            }
            change([&](LookupTable& table) {
                // In the order of the parameters.
                for (const engine::Name name : names)
                    if (std::find(wanted.begin(), wanted.end(), name) != wanted.end())
                        table.columns.push_back({name.str(), true});
                table.columns.push_back({lookupName(), false});
            });
            co_return true;
        }
    }

    void list() const {
        std::string head = "  ";
        for (const engine::LookupColumn& column : table().columns) head += (head.size() > 2 ? " | " : "") + column.name;
        message(head);
        for (std::size_t i = 0; i < table().rows.size(); ++i) {
            std::string line = std::to_string(i + 1) + ":";
            for (std::size_t k = 0; k < table().rows[i].size(); ++k)
                line += (k == 0 ? " " : " | ") + table().rows[i][k];
            message(line);
        }
        message(counted(table().rows.size(), "row") + ". Reverse lookup is " +
                (table().allowReverseLookup ? "allowed." : "not allowed."));
    }

    Dialogue askRow(Ask& ask) {
        if (table().rows.size() >= kMostRows) co_return message("The table has too many rows.");
        std::vector<std::string> row;
        const std::vector<engine::LookupColumn> columns = table().columns;
        for (const engine::LookupColumn& column : columns) {
            for (;;) {
                const Answer answer = co_await ask.text("Enter value for " + inQuotes(column.name) + ":");
                if (answer.isEnter() || !hasTable()) co_return;
                std::string text = typedName(answer.text);
                // A value that no reference could take would never be found.
                const std::vector<DynProperty> all = engine::dynProperties(block());
                const DynProperty* property = column.isInput ? find(all, column.name) : nullptr;
                if (property != nullptr) {
                    engine::BlockReferenceEntity probe(block().name, {});
                    const std::string error = engine::setDynValue(probe, block(), *property, text);
                    if (!error.empty()) {
                        message(error);
                        continue;
                    }
                    text = engine::dynValueText(probe, block(), *property);
                }
                row.push_back(std::move(text));
                break;
            }
        }
        change([&](LookupTable& table) { table.rows.push_back(row); });
    }

    Dialogue askDelete(Ask& ask) {
        const int count = static_cast<int>(table().rows.size());
        if (count == 0) co_return message("The table has no rows.");
        const Answer number = co_await ask.integer("Enter row number (1-" + std::to_string(count) + "):", 1, count);
        if (!number.isNumber() || !hasTable()) co_return;
        const auto at = static_cast<std::size_t>(number.integer() - 1);
        change([&](LookupTable& table) {
            if (at < table.rows.size()) table.rows.erase(table.rows.begin() + static_cast<std::ptrdiff_t>(at));
        });
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Blookuptable, "BLOOKUPTABLE", "Block Lookup Table", "Insert")

}  // namespace kova::cmd::commands
