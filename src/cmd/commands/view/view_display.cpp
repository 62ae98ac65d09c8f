#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "cmd/refusals.hpp"
#include "cmd/registry.hpp"

// What accompanies a view on a screen: kept and shown back, or refused where it needs a window.

namespace kova::cmd::commands {

namespace {

/// UCSICON: where the icon of the coordinate system stands.
class UcsiconTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        for (;;) {
            const std::int32_t now = engine::sysVarInt(drawing(), "UCSICON", 3);
            std::string prompt = withDefault("Enter an option [ON/OFF/All/Noorigin/ORigin/Selectable/Properties]",
                                             (now & 1) != 0 ? "ON" : "OFF");
            const Answer option =
                co_await ask.keyword(std::move(prompt), "ON OFF All Noorigin ORigin Selectable Properties");
            if (option.isEnter()) co_return;
            // There is one icon: what holds for all views holds for it.
            if (option.is("ALL")) continue;
            if (option.is("PROPERTIES")) co_return message(needsDialog("UCS Icon"));
            if (option.is("SELECTABLE")) {
                co_await askYesNo(ask, "Allow the UCS icon to be selected? [Yes/No] <Yes>:", true);
                co_return;
            }
            std::int32_t value = now;
            if (option.is("ON")) value |= 1;
            if (option.is("OFF")) value &= ~1;
            if (option.is("ORIGIN")) value |= 2;
            if (option.is("NOORIGIN")) value &= ~2;
            const doc::GroupScope group(document(), "UCSICON");
            co_return message(document().setVariable("UCSICON", value));
        }
    }
};

struct Style {
    const char* word;
    const char* name;
};
constexpr Style kStyles[] = {{"2DWIREFRAME", "2dwireframe"}, {"WIREFRAME", "Wireframe"},
                             {"HIDDEN", "Hidden"},           {"REALISTIC", "Realistic"},
                             {"CONCEPTUAL", "Conceptual"},   {"SHADED", "Shaded"},
                             {"EDGES", "Shaded with edges"}, {"GRAY", "Shades of Gray"},
                             {"SKETCHY", "Sketchy"},         {"X-RAY", "X-Ray"}};

/// VSCURRENT: the visual style of the view.
class VscurrentTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const std::string now = engine::sysVarString(drawing(), "VSCURRENT");
        std::string prompt = withDefault(
            "Enter an option [2dwireframe/Wireframe/Hidden/Realistic/Conceptual/Shaded/shaded with Edges/shades of "
            "Gray/SKetchy/X-ray/Other]",
            now);
        const Answer option = co_await ask.keyword(
            std::move(prompt),
            "2dwireframe Wireframe Hidden Realistic Conceptual Shaded Edges Gray SKetchy X-ray Other");
        if (option.isEnter()) co_return;
        if (option.is("OTHER")) co_return co_await other(ask);
        for (const Style& style : kStyles)
            if (option.is(style.word)) use(style.name);
    }

private:
    Dialogue other(Ask& ask) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter a visual style name or [?]:", "?");
            if (answer.isEnter()) co_return;
            if (answer.is("?")) {
                for (const Style& style : kStyles) message(std::string("  ") + style.name);
                continue;
            }
            for (const Style& style : kStyles)
                if (engine::equalNoCase(trimmed(answer.text), style.name)) co_return use(style.name);
            message("No matching names found.");
        }
    }

    void use(const char* name) {
        const doc::GroupScope group(document(), "VSCURRENT");
        message(document().setVariable("VSCURRENT", std::string(name)));
        if (std::string_view(name).find("ireframe") == std::string_view::npos)
            message("The style is kept; pictures show all edges.");
    }
};

/// NAVVCUBE and VIEWCUBE: one switch under two names.
class CubeTool : public DialogueTool {
public:
    CubeTool(const char* label, bool settings) : label_(label), settings_(settings) {}

protected:
    Dialogue dialogue(Ask& ask) override {
        const bool on = engine::sysVarInt(drawing(), "NAVVCUBEDISPLAY", 3) != 0;
        std::string prompt =
            withDefault(settings_ ? "Enter an option [ON/OFF/Settings]" : "Enter mode [ON/OFF]", on ? "ON" : "OFF");
        const Answer answer = co_await ask.keyword(std::move(prompt), settings_ ? "ON OFF Settings" : "ON OFF");
        if (answer.isEnter()) co_return;
        if (answer.is("SETTINGS")) co_return message(needsDialog("View Cube"));
        const std::int32_t value = answer.is("ON") ? 3 : 0;
        const doc::GroupScope group(document(), label_);
        message(document().setVariable("NAVVCUBEDISPLAY", value));
    }

private:
    const char* label_;
    bool settings_;
};
class NavvcubeTool final : public CubeTool {
public:
    NavvcubeTool() : CubeTool("NAVVCUBE", true) {}
};
class ViewcubeTool final : public CubeTool {
public:
    ViewcubeTool() : CubeTool("VIEWCUBE", false) {}
};

class NavswheelTool final : public Tool {
public:
    void begin() override {
        message(needsDialog("Steering Wheel"));
        finish();
    }
    void textInput(const std::string&) override {}
};

class Config3dTool final : public Tool {
public:
    void begin() override {
        message(needsDialog("3D Configuration"));
        finish();
    }
    void textInput(const std::string&) override {}
};

}  // namespace

KOVA_TOOL_COMMAND(Ucsicon, "UCSICON", "UCS Icon", "View")
KOVA_TOOL_COMMAND(Vscurrent, "VSCURRENT", "Visual Style", "View", {"VS"})
KOVA_TOOL_COMMAND(Navvcube, "NAVVCUBE", "View Cube", "View", {"CUBE"})
KOVA_TOOL_COMMAND(Viewcube, "VIEWCUBE", "View Cube Display", "View")
KOVA_TOOL_COMMAND(Navswheel, "NAVSWHEEL", "Steering Wheel", "View", {"WHEEL"})
KOVA_TOOL_COMMAND(Config3d, "3DCONFIG", "3D Configuration", "View", {"GRAPHICSCONFIG"})

}  // namespace kova::cmd::commands
