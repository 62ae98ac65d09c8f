#include "cmd/dialogue.hpp"
#include "cmd/registry.hpp"

// Commands that switch a variable of another name, or ask for it by words instead of numbers.

namespace kova::cmd::commands {

namespace {

struct ModeRow {
    const char* name;
    const char* title;
    const char* category;
    const char* variable;
    const char* question;  ///< without the default and the colon
    const char* words;     ///< the values 0, 1, 2 ... as options
};

constexpr ModeRow kModes[] = {
    {"ORTHO", "Ortho Mode", "Settings", "ORTHOMODE", "Enter mode [ON/OFF]", "OFF ON"},
    {"DRAGMODE", "Drag Mode", "Settings", "DRAGMODE", "Enter new value [ON/OFF/Auto]", "OFF ON Auto"},
    {"NAVBAR", "Navigation Bar", "View", "NAVBAR", "Enter an option [ON/OFF]", "OFF ON"},
    {"ATTDISP", "Attribute Display", "View", "ATTMODE", "Enter attribute visibility setting [Normal/ON/OFF]",
     "OFF Normal ON"},
};

class ModeTool final : public DialogueTool {
public:
    explicit ModeTool(const ModeRow& row) : row_(row) {}

protected:
    Dialogue dialogue(Ask& ask) override {
        const std::vector<std::string_view> words = optionWords();
        const auto now = static_cast<std::size_t>(engine::sysVarInt(drawing(), row_.variable));
        std::string prompt = row_.question;
        if (now < words.size()) prompt += " <" + std::string(words[now]) + ">";
        const Answer answer = co_await ask.keyword(prompt + ":", row_.words);
        if (answer.isEnter()) co_return;
        for (std::size_t i = 0; i < words.size(); ++i) {
            if (!answer.is(words[i])) continue;
            const doc::GroupScope group(document(), row_.name);
            message(document().setVariable(row_.variable, static_cast<std::int32_t>(i)));
        }
    }

private:
    std::vector<std::string_view> optionWords() const {
        std::vector<std::string_view> words;
        for (std::string_view rest = row_.words; !rest.empty();) {
            const std::size_t end = std::min(rest.find(' '), rest.size());
            words.push_back(rest.substr(0, end));
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
        return words;
    }

    const ModeRow& row_;
};

class ModeCommand final : public Command {
public:
    explicit ModeCommand(const ModeRow& row) : Command(row.name, row.title, row.category), row_(row) {}
    std::unique_ptr<Tool> createTool() override { return std::make_unique<ModeTool>(row_); }

private:
    const ModeRow& row_;
};

/// VIEWRES: the fineness of drawn circles, behind a question of old that changes nothing.
class ViewresTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        co_await askYesNo(ask, "Do you want fast zooms? [Yes/No] <Yes>:", true);
        Ask::Request request;
        request.kind = Ask::Kind::Integer;
        request.prompt = "Enter circle zoom percent (1-20000) <" +
                         std::to_string(engine::sysVarInt(drawing(), "VIEWRES", 1000)) + ">:";
        request.range = {1.0, 20000.0};
        request.refusal = "Invalid number. Enter 1-20000:";
        const Answer answer = co_await ask.request(std::move(request));
        if (!answer.isNumber()) co_return;
        const doc::GroupScope group(document(), "VIEWRES");
        message(document().setVariable("VIEWRES", answer.integer()));
    }
};

template <std::size_t index>
std::unique_ptr<Command> makeMode() {
    return std::make_unique<ModeCommand>(kModes[index]);
}

const CommandRegistrar registerOrtho(makeMode<0>);
const CommandRegistrar registerDragmode(makeMode<1>);
const CommandRegistrar registerNavbar(makeMode<2>);
const CommandRegistrar registerAttdisp(makeMode<3>);
KOVA_TOOL_COMMAND(Viewres, "VIEWRES", "View Resolution", "View")

}  // namespace

}  // namespace kova::cmd::commands
