#include "cmd/prompts/dimension_tool.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/registry.hpp"
#include "strings/wildcards.hpp"
#include "doc/table_edits.hpp"
#include "engine/symbols/symbols.hpp"
#include "engine/model/sysvar.hpp"
#include "strings/numbers.hpp"

namespace kova::cmd::commands {

namespace {

using engine::DimensionEntity;
using engine::DimStyle;
using engine::DimVariable;
using engine::Name;

std::string valueText(const engine::DimValue& value) {
    const auto* number = std::get_if<double>(&value);
    return number != nullptr ? strings::shortest(*number) : inQuotes(std::get<std::string>(value));
}

/// The style of a dimension with its own values.
std::vector<std::string> differences(const DimStyle& a, const DimStyle& b) {
    std::vector<std::string> lines;
    for (const DimVariable& variable : engine::dimVariables()) {
        const engine::DimValue one = engine::dimValue(a, variable);
        const engine::DimValue other = engine::dimValue(b, variable);
        if (one != other) lines.push_back(std::string(variable.name) + "  " + valueText(one) + "  " + valueText(other));
    }
    return lines;
}

/// DIMSTYLE: saves, restores, lists and applies dimension styles.
class DimStyleTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        showCurrent();
        const Answer option = co_await ask.keyword(
            "Enter a dimension style option [ANnotative/Save/Restore/STatus/Variables/Apply/?] <Restore>:",
            "ANnotative Save Restore STatus Variables Apply ?");
        if (option.is("?"))
            co_await list(ask);
        else if (option.is("ANNOTATIVE"))
            co_await annotative(ask);
        else if (option.is("SAVE"))
            co_await save(ask, std::nullopt);
        else if (option.is("STATUS"))
            showVariables(drawing().effectiveDimStyle());
        else if (option.is("VARIABLES"))
            co_await variables(ask);
        else if (option.is("APPLY"))
            co_await apply(ask);
        else
            co_await restore(ask);
    }

private:
    void showCurrent() const {
        const DimStyle& style = drawing().dimStyleOrStandard(drawing().currentDimStyle);
        message("Current dimension style: " + inQuotes(style.name) +
                "  Annotative: " + (style.annotative ? "Yes" : "No"));
        std::string overrides;
        for (const auto& [name, value] : drawing().dimStyleOverrides)
            overrides += (overrides.empty() ? "" : ", ") + name + " " + strings::shortest(value);
        for (const auto& [name, value] : drawing().dimStyleNameOverrides)
            overrides += (overrides.empty() ? "" : ", ") + name + " " + inQuotes(value);
        if (!overrides.empty()) message("Current dimension overrides: " + overrides);
    }

    void showVariables(const DimStyle& style) const {
        for (const DimVariable& variable : engine::dimVariables()) {
            const engine::SysVarDef* def = engine::findSysVar(variable.name);
            std::string line = std::string(variable.name) + "  " + valueText(engine::dimValue(style, variable));
            if (def != nullptr) line += "  " + std::string(def->description);
            message(line);
        }
    }

    void showNames(std::string_view filter) const {
        std::size_t count = 0;
        for (const DimStyle& style : drawing().dimStyles) {
            if (!matchesWildcards(style.name.view(), filter)) continue;
            ++count;
            message(style.name.str());
        }
        if (count == 0) message("No matching names found.");
    }

    Dialogue list(Ask& ask) {
        const std::string filter = co_await askNamesToList(ask, "Enter dimension style(s) to list <*>:");
        showNames(filter);
    }

    Dialogue annotative(Ask& ask) {
        const bool yes = co_await askYesNo(ask, "Create annotative dimension style [Yes/No] <Yes>:", true);
        co_await save(ask, yes);
    }

    /// The current style with the overrides in force, under a name; it becomes the current one.
    Dialogue save(Ask& ask, std::optional<bool> annotative) {
        Name name;
        for (;;) {
            const Answer answer = co_await ask.text("Enter name for new dimension style or [?]:", "?");
            if (answer.isEnter()) co_return;
            if (!answer.isText()) {
                co_await list(ask);
                continue;
            }
            const std::vector<std::string> typed = splitNames(answer.text);
            name = Name(typed.empty() ? std::string() : typed.front());
            if (!engine::isValidSymbolName(name.view())) {
                message("Invalid style name.");
                continue;
            }
            const DimStyle* known = drawing().dimStyles.find(name);
            if (known == nullptr) break;
            name = known->name;
            const bool again = co_await askYesNo(ask, "That name is already in use, redefine it? [Yes/No] <N>:", false);
            if (again) break;
        }
        DimStyle style = drawing().effectiveDimStyle();
        style.name = name;
        if (annotative) style.annotative = *annotative;
        if (style.annotative) style.scaleFactor = 0.0;  // the annotation scale decides
        const doc::GroupScope group(document(), "DIMSTYLE");
        document().editTable<doc::DimStyleTraits>([&](engine::Table<DimStyle>& styles) { styles.add(style); });
        makeCurrent(name);
    }

    void makeCurrent(Name name) {
        const DimStyle* style = drawing().dimStyles.find(name);
        if (style == nullptr) return;
        const Name known = style->name;
        document().editSettings([&](engine::Drawing& d) {
            d.currentDimStyle = known;
            d.dimStyleOverrides.clear();
            d.dimStyleNameOverrides.clear();
        });
    }

    /// A style by name, or that of a dimension with its own values; nothing: given up. "~name" shows what differs from
    /// the current settings instead, and "?" the names.
    struct Choice {
        DimStyle style;
        std::map<std::string, double> numbers;
        std::map<std::string, std::string> names;
    };
    Task<std::optional<Choice>> choose(Ask& ask) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter a dimension style name, [?] or <select dimension>:", "?");
            if (answer.is("?")) {
                co_await list(ask);
                continue;
            }
            if (answer.isEnter()) {
                const Answer picked = co_await ask.object("Select dimension:", {}, isDimension);
                const auto* dimension =
                    picked.isObject() ? dynamic_cast<const DimensionEntity*>(drawing().findById(picked.id)) : nullptr;
                if (dimension == nullptr) co_return std::nullopt;
                Choice choice;
                choice.style = drawing().dimStyleOrStandard(dimension->dimStyleName);
                choice.numbers = dimension->styleOverrides;
                choice.names = dimension->nameOverrides;
                choice.numbers.erase("DIMUPT");
                co_return choice;
            }
            const std::vector<std::string> typed = splitNames(answer.text);
            std::string name = typed.empty() ? std::string() : typed.front();
            const bool compare = name.starts_with("~");
            if (compare) name.erase(0, 1);
            const DimStyle* style = drawing().dimStyles.find(Name(name));
            if (style == nullptr) {
                message("Unknown dimension style " + inQuotes(name) + ".");
                continue;
            }
            if (!compare) {
                Choice choice;
                choice.style = *style;
                co_return choice;
            }
            const std::vector<std::string> lines = differences(*style, drawing().effectiveDimStyle());
            message(lines.empty() ? "No differences." : "Variable  " + inQuotes(style->name) + "  current:");
            for (const std::string& line : lines) message(line);
        }
    }

    Dialogue restore(Ask& ask) {
        const std::optional<Choice> choice = co_await choose(ask);
        if (!choice) co_return;
        const doc::GroupScope group(document(), "DIMSTYLE");
        document().editSettings([&](engine::Drawing& d) {
            d.currentDimStyle = choice->style.name;
            d.dimStyleOverrides = choice->numbers;
            d.dimStyleNameOverrides = choice->names;
        });
    }

    Dialogue variables(Ask& ask) {
        std::optional<Choice> choice = co_await choose(ask);
        if (!choice) co_return;
        engine::overrideDimStyle(choice->style, choice->numbers, choice->names);
        showVariables(choice->style);
    }

    /// Gives dimensions the current style with its overrides; what the user did to a text's place stays.
    Dialogue apply(Ask& ask) {
        const Answer selected = co_await ask.selection();
        const doc::GroupScope group(document(), "DIMSTYLE");
        for (const std::uint64_t id : dimensionsOf(document(), selected.ids))
            document().modifyEntity(*drawing().findById(id), [&](engine::Entity& e) {
                auto& d = static_cast<DimensionEntity&>(e);
                d.dimStyleName = drawing().dimStyleOrStandard(drawing().currentDimStyle).name;
                d.styleOverrides = drawing().dimStyleOverrides;
                d.nameOverrides = drawing().dimStyleNameOverrides;
                d.styleOverrides.erase("DIMUPT");
                d.textHeight = d.arrowSize = d.extGap = d.extExtension = 0.0;
            });
        repaint();
    }
};

/// DIMOVERRIDE: gives dimensions their own values of dimension variables, or takes them away.
class DimOverrideTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        std::vector<std::pair<const DimVariable*, engine::DimValue>> values;
        bool clear = false;
        for (;;) {
            const char* prompt = values.empty() ? "Enter dimension variable name to override or [Clear overrides]:"
                                                : "Enter dimension variable name to override:";
            const char* words = values.empty() ? "Clear" : "";
            const Answer answer = co_await ask.text(prompt, words);
            if (answer.is("CLEAR")) {
                clear = true;
                break;
            }
            if (answer.isEnter()) break;
            const std::string_view name = trimmed(answer.text);
            const DimVariable* variable = engine::findDimVariable(name);
            if (variable == nullptr) {
                message("Unknown dimension variable " + inQuotes(engine::upperCase(name)) + ".");
                continue;
            }
            const std::optional<engine::DimValue> value = co_await askValue(ask, *variable);
            if (value) values.emplace_back(variable, *value);
        }
        if (values.empty() && !clear) co_return;
        const Answer selected = co_await ask.selection();
        const doc::GroupScope group(document(), "DIMOVERRIDE");
        for (const std::uint64_t id : dimensionsOf(document(), selected.ids))
            document().modifyEntity(*drawing().findById(id), [&](engine::Entity& e) {
                auto& d = static_cast<DimensionEntity&>(e);
                if (clear) dropOverrides(d);
                for (const auto& [variable, value] : values) {
                    const std::string name(variable->name);
                    if (const auto* number = std::get_if<double>(&value))
                        d.styleOverrides[name] = *number;
                    else
                        d.nameOverrides[name] = std::get<std::string>(value);
                }
            });
        repaint();
    }

private:
    static void dropOverrides(DimensionEntity& d) {
        d.styleOverrides.clear();
        d.nameOverrides.clear();
        d.textHeight = d.arrowSize = d.extGap = d.extExtension = 0.0;
    }

    /// A value as the variable itself would take it: set in the drawing, read, and put back.
    Task<std::optional<engine::DimValue>> askValue(Ask& ask, const DimVariable& variable) {
        const engine::SysVarDef* def = engine::findSysVar(variable.name);
        if (def == nullptr) co_return std::nullopt;
        std::string prompt = withDefault("Enter new value for dimension variable",
                                         engine::sysVarPromptText(*def, engine::getSysVar(drawing(), *def)));
        for (;;) {
            const Answer answer = co_await ask.text(prompt);
            if (answer.isEnter()) co_return engine::dimValue(drawing().effectiveDimStyle(), variable);
            engine::SysVarValue value;
            std::string error = engine::parseSysVar(*def, answer.text, value);
            if (error.empty()) {
                const auto numbers = drawing().dimStyleOverrides;
                const auto names = drawing().dimStyleNameOverrides;
                error = engine::setSysVar(drawing(), variable.name, value);
                const engine::DimValue read = engine::dimValue(drawing().effectiveDimStyle(), variable);
                drawing().dimStyleOverrides = numbers;
                drawing().dimStyleNameOverrides = names;
                if (error.empty()) co_return read;
            }
            message(error);
        }
    }
};

}  // namespace

KOVA_TOOL_COMMAND(DimStyle, "DIMSTYLE", "Dimension Style", "Format", {"D", "DST", "DIMSTY", "DDIM"})
KOVA_TOOL_COMMAND(DimOverride, "DIMOVERRIDE", "Override Dimension Variables", "Annotate", {"DOV", "DIMOVER"})

}  // namespace kova::cmd::commands
