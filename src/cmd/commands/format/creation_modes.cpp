#include "cmd/prompts/variable_prompt.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/prompts/property_prompts.hpp"
#include "cmd/registry.hpp"
#include "doc/step_group.hpp"
#include "engine/model/color.hpp"

// DDEMODES, DDPTYPE and POINTSTYLE: what new objects look like.

namespace kova::cmd::commands {

namespace {

struct ModeRow {
    const char* word;
    const char* title;
    const char* variable;
};
constexpr ModeRow kModes[] = {
    {"COLOR", "Color", "CECOLOR"},           {"LAYER", "Layer", "CLAYER"},
    {"LTYPE", "Linetype", "CELTYPE"},        {"LTSCALE", "Linetype scale", "CELTSCALE"},
    {"LWEIGHT", "Lineweight", "CELWEIGHT"},  {"ELEVATION", "Elevation", "ELEVATION"},
    {"THICKNESS", "Thickness", "THICKNESS"}, {"STYLE", "Text style", "TEXTSTYLE"},
};

class DdEmodesTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        StepGroup group(document(), "DDEMODES");
        for (;;) {
            const Answer option = co_await ask.keyword(
                "Enter option [Color/Layer/LType/ltScale/LWeight/Elevation/Thickness/STyle/?] <exit>:",
                "Color Layer LType ltScale LWeight Elevation Thickness STyle ?");
            if (option.isEnter()) co_return;
            if (option.is("?")) {
                for (const ModeRow& row : kModes) message(std::string(row.title) + ": " + valueText(row));
            } else if (option.is("LWEIGHT")) {
                co_await askLineweight(ask);
            } else if (option.is("COLOR")) {
                std::string prompt =
                    withDefault("Enter default object color", engine::sysVarString(drawing(), "CECOLOR"));
                const auto color = co_await askColor(ask, std::move(prompt));
                if (color) message(document().setVariable("CECOLOR", engine::colorText(*color)));
            } else if (option.is("LTYPE")) {
                co_await askLinetype(ask);
            } else {
                for (const ModeRow& row : kModes)
                    if (option.is(row.word))
                        co_await editVariable(ask, document(), *engine::findSysVar(row.variable), "DDEMODES");
            }
        }
    }

private:
    std::string valueText(const ModeRow& row) const {
        if (row.variable == std::string_view("CELWEIGHT"))
            return lineweightText(engine::sysVarInt(drawing(), row.variable, -1));
        const engine::SysVarDef& def = *engine::findSysVar(row.variable);
        return engine::sysVarPromptText(def, engine::getSysVar(drawing(), def));
    }

    Dialogue askLineweight(Ask& ask) {
        for (;;) {
            std::string prompt =
                withDefault("Enter new lineweight", lineweightText(engine::sysVarInt(drawing(), "CELWEIGHT", -1)));
            const Answer answer = co_await ask.text(std::move(prompt));
            if (answer.isEnter()) co_return;
            if (const std::optional<int> chosen = parseLineweight(answer.text)) {
                message(document().setVariable("CELWEIGHT", *chosen));
                co_return;
            }
            message("Invalid value.");
        }
    }

    Dialogue askLinetype(Ask& ask) {
        for (;;) {
            std::string prompt = withDefault("Enter new linetype name", drawing().currentLinetype.view());
            const Answer answer = co_await ask.text(std::move(prompt));
            if (answer.isEnter()) co_return;
            const engine::Name name(typedName(answer.text));
            const engine::CommonNames& names = engine::commonNames();
            const bool known =
                name == names.byLayer || name == names.byBlock || useLinetype(document(), name) != nullptr;
            if (known) {
                message(document().setVariable("CELTYPE", name.str()));
                co_return;
            }
            message("Linetype \"" + name.str() + "\" not found.");
        }
    }
};

/// DDPTYPE and POINTSTYLE: the symbol of points and its size.
class PointStyleTool : public DialogueTool {
public:
    explicit PointStyleTool(const char* label = "POINTSTYLE") : label_(label) {}

protected:
    Dialogue dialogue(Ask& ask) override {
        StepGroup group(document(), label_);
        co_await askValue(ask, "PDMODE", "Enter point display mode");
        co_await askValue(ask, "PDSIZE", "Enter point size");
    }

private:
    Dialogue askValue(Ask& ask, const char* variable, const char* question) {
        const engine::SysVarDef& def = *engine::findSysVar(variable);
        std::string prompt = withDefault(question, engine::sysVarPromptText(def, engine::getSysVar(drawing(), def)));
        for (;;) {
            const Answer answer = co_await ask.text(prompt);
            if (answer.isEnter()) co_return;
            engine::SysVarValue value;
            std::string error = engine::parseSysVar(def, trimmed(answer.text), value);
            if (error.empty()) error = document().setVariable(variable, value);
            if (error.empty()) co_return;
            message(error);
        }
    }

    const char* label_;
};

class DdPtypeTool final : public PointStyleTool {
public:
    DdPtypeTool() : PointStyleTool("DDPTYPE") {}
};

}  // namespace

KOVA_TOOL_COMMAND(DdEmodes, "DDEMODES", "Object Creation Modes", "Format")
KOVA_TOOL_COMMAND(DdPtype, "DDPTYPE", "Point Type", "Format", {"PTYPE"})
KOVA_TOOL_COMMAND(PointStyle, "POINTSTYLE", "Point Style", "Format")

}  // namespace kova::cmd::commands
