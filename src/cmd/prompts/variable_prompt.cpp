#include "cmd/prompts/variable_prompt.hpp"

#include "engine/sysvars/notes.hpp"

namespace kova::cmd::commands {

namespace {

bool isToggle(const engine::SysVarDef& def) {
    return def.type == engine::SysVarType::Integer && def.minimum == 0.0 && def.maximum == 1.0;
}

/// Reads the answer; a toggle can also be told to change over, and texts may stand in double quotes.
std::string readValue(const engine::Drawing& drawing, const engine::SysVarDef& def, std::string_view text,
                      engine::SysVarValue& value) {
    static const std::vector<Keyword> change = {{"TOGGLE", "T"}};
    if (isToggle(def) && !matchKeyword(text, change).empty()) {
        value = std::get<std::int32_t>(engine::getSysVar(drawing, def)) != 0 ? 0 : 1;
        return {};
    }
    if (def.type == engine::SysVarType::String && text.size() >= 2 && text.front() == '"' && text.back() == '"')
        text = text.substr(1, text.size() - 2);
    return engine::parseSysVar(def, text, value);
}

}  // namespace

std::string variableLine(const engine::Drawing& drawing, const engine::SysVarDef& def) {
    const engine::SysVarValue value = engine::getSysVar(drawing, def);
    const bool text = std::holds_alternative<std::string>(value);
    std::string line = std::string(def.name) + " = ";
    line += text ? engine::sysVarText(value, true) : engine::sysVarPromptText(def, value);
    return def.readOnly ? line + " (read only)" : line;
}

Task<void> editVariable(Ask& ask, doc::Document& document, const engine::SysVarDef& def, std::string label) {
    if (def.readOnly) {
        ask.message(variableLine(document.drawing(), def));
        co_return;
    }
    for (;;) {
        const Answer answer = co_await ask.text(engine::sysVarPrompt(document.drawing(), def));
        if (answer.isEnter()) co_return;
        engine::SysVarValue value;
        std::string error = readValue(document.drawing(), def, answer.text, value);
        if (error.empty()) {
            const doc::GroupScope group(document, label);
            error = document.setVariable(def.name, value);
        }
        if (error.empty()) break;
        ask.message(error);
    }
    if (def.command == engine::SysVarCommand::Toggle) {
        // The settings file is only read.
        const bool forNow = def.saved == engine::saved::Profile;
        ask.message(variableLine(document.drawing(), def) + (forNow ? " (for this process)" : ""));
    }
    ask.message(engine::sysVarNote(document.drawing(), def));
}

}  // namespace kova::cmd::commands
