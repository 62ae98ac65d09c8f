#include "cmd/prompts/property_prompts.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

/// COLOR: the colour that new objects take.
class ColorTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        std::string prompt =
            "Enter default object color [Truecolor/COlorbook] <" + engine::colorText(drawing().currentColor) + ">:";
        const std::optional<engine::Color> color = co_await askColor(ask, std::move(prompt));
        if (!color) co_return;
        const doc::GroupScope group(document(), "COLOR");
        message(document().setVariable("CECOLOR", engine::colorText(*color)));
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Color, "COLOR", "Color", "Format", {"COL", "COLOUR", "DDCOLOR"})

}  // namespace kova::cmd::commands
