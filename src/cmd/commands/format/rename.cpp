#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Name;
using engine::SymbolKind;

struct KindRow {
    const char* word;
    SymbolKind kind;
};
constexpr KindRow kRows[] = {
    {"BLOCK", SymbolKind::Block},     {"DIMSTYLE", SymbolKind::DimStyle},
    {"LAYER", SymbolKind::Layer},     {"LTYPE", SymbolKind::Linetype},
    {"STYLE", SymbolKind::TextStyle}, {"MULTILEADERSTYLE", SymbolKind::MLeaderStyle},
    {"UCS", SymbolKind::Ucs},         {"TABLESTYLE", SymbolKind::TableStyle},
    {"VIEW", SymbolKind::View},
};

/// RENAME: gives a record another name, and all that refers to it along.
class RenameTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer type = co_await ask.keyword(
            "Enter object type to rename "
            "[Block/Dimstyle/LAyer/LType/Material/multileadeRstyle/Style/Tablestyle/Ucs/VIew/VPort]:",
            "Block Dimstyle LAyer LType Material multileadeRstyle Style Tablestyle Ucs VIew VPort");
        if (type.isEnter()) co_return;
        const KindRow* row = nullptr;
        for (const KindRow& candidate : kRows)
            if (type.is(candidate.word)) row = &candidate;
        if (row == nullptr) {
            message("The drawing keeps no " + std::string(type.is("VPORT") ? "named viewports" : "materials") + ".");
            co_return;
        }
        const std::string noun(engine::symbolKindName(row->kind));
        Name from;
        for (;;) {
            const Answer old = co_await ask.text("Enter old " + noun + " name:");
            if (old.isEnter()) co_return;
            const auto known = engine::findSymbol(drawing(), row->kind, Name(typedName(old.text)));
            if (!known) {
                message("Cannot find " + noun + " " + inQuotes(typedName(old.text)) + ".");
                continue;
            }
            if (engine::isFixedSymbol(row->kind, *known)) {
                message("Cannot rename " + noun + " " + inQuotes(*known) + ".");
                continue;
            }
            from = *known;
            break;
        }
        for (;;) {
            const Answer to = co_await ask.text("Enter new " + noun + " name:");
            if (to.isEnter()) co_return;
            const doc::GroupScope group(document(), "RENAME");
            const std::string error = document().renameSymbol(row->kind, from, Name(typedName(to.text)));
            if (error.empty()) co_return;
            message(error);
        }
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Rename, "RENAME", "Rename", "Format", {"REN"})

}  // namespace kova::cmd::commands
