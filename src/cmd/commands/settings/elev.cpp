#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

/// ELEV: the height and the thickness that new objects get.
class ElevTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const std::optional<double> elevation = co_await askValue(ask, "Specify new default elevation", "ELEVATION");
        const std::optional<double> thickness = co_await askValue(ask, "Specify new default thickness", "THICKNESS");
        const doc::GroupScope group(document(), "ELEV");
        if (elevation) message(document().setVariable("ELEVATION", *elevation));
        if (thickness) message(document().setVariable("THICKNESS", *thickness));
    }

private:
    Task<std::optional<double>> askValue(Ask& ask, std::string question, const char* variable) {
        const double now = engine::sysVarReal(drawing(), variable);
        std::string prompt = withDefault(question, lengthDefault(drawing(), now));
        const Answer answer = co_await ask.distance(std::move(prompt));
        if (!answer.isNumber()) co_return std::nullopt;
        co_return answer.number;
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Elev, "ELEV", "Elevation and Thickness", "Settings")

}  // namespace kova::cmd::commands
