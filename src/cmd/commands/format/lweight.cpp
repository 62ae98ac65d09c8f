#include "cmd/prompts/property_prompts.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

/// LWEIGHT: the lineweight that new objects take.
class LweightTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        message("Current lineweight: " + lineweightText(engine::sysVarInt(drawing(), "CELWEIGHT", -1)));
        for (;;) {
            const Answer answer = co_await ask.text("Enter default lineweight for new objects or [?]:", "?");
            if (answer.isEnter()) co_return;
            if (answer.is("?")) {
                listWeights();
                continue;
            }
            const std::optional<int> chosen = parseLineweight(answer.text);
            if (!chosen) {
                message("Invalid value.");
                continue;
            }
            const doc::GroupScope group(document(), "LWEIGHT");
            message(document().setVariable("CELWEIGHT", *chosen));
            co_return;
        }
    }

private:
    void listWeights() const {
        std::string line = "ByLayer, ByBlock, Default";
        for (const int weight : lineweights()) line += ", " + lineweightText(weight);
        message(line);
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Lweight, "LWEIGHT", "Lineweight", "Format", {"LW", "LINEWEIGHT"})

}  // namespace kova::cmd::commands
