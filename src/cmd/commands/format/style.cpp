#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/registry.hpp"
#include "strings/wildcards.hpp"
#include "doc/table_edits.hpp"
#include "engine/symbols/symbols.hpp"
#include "math/angles.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Name;
using engine::TextStyle;

/// Width factors and slants that text still can be read with.
constexpr Range kWidths{0.01, 100.0};
constexpr double kSteepestSlant = 85.0;

bool isShapeFont(const TextStyle& style) {
    const std::string font = engine::foldCase(style.fontFile.view());
    return font.ends_with(".shx") || font.find('.') == std::string::npos;
}

/// STYLE: makes or changes a text style, which then is the current one.
class StyleTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        TextStyle style;
        for (;;) {
            std::string prompt = withDefault("Enter name of text style or [?]", drawing().currentTextStyle.str());
            const Answer answer = co_await ask.text(std::move(prompt), "?");
            if (answer.is("?")) {
                co_await list(ask);
                continue;
            }
            const std::vector<std::string> typed = splitNames(answer.text);
            const Name name = answer.isEnter() || typed.empty() ? drawing().currentTextStyle : Name(typed.front());
            if (const TextStyle* known = drawing().textStyles.find(name)) {
                message("Existing style.");
                style = *known;
                break;
            }
            if (engine::isValidSymbolName(name.view())) {
                message("New style.");
                style = drawing().textStyleOrStandard(drawing().currentTextStyle);
                style.name = name;
                break;
            }
            message("Invalid style name.");
        }
        co_await askFont(ask, style);
        std::string prompt =
            withDefault("Specify height of text or [Annotative]", lengthDefault(drawing(), style.height));
        Answer height = co_await ask.distance(std::move(prompt), "Annotative", {}, kNotNegative);
        if (height.is("ANNOTATIVE")) {
            message("Text styles here carry no annotative flag: mark the texts themselves.");
            std::string again = withDefault("Specify height of text", lengthDefault(drawing(), style.height));
            height = co_await ask.distance(std::move(again), {}, {}, kNotNegative);
        }
        style.height = height.numberOr(style.height);
        std::string width = withDefault("Specify width factor", lengthDefault(drawing(), style.widthFactor));
        const Answer factor = co_await ask.number(std::move(width), {}, kWidths);
        style.widthFactor = factor.numberOr(style.widthFactor);
        const double slantNow = std::round(math::toDegrees(style.obliqueAngle) * 1e9) / 1e9;
        std::string slant = withDefault("Specify obliquing angle", lengthDefault(drawing(), slantNow));
        const Range slants{-kSteepestSlant, kSteepestSlant};
        const Answer oblique = co_await ask.number(std::move(slant), {}, slants);
        if (oblique.isNumber()) style.obliqueAngle = math::toRadians(oblique.number);
        style.backward = co_await askSwitch(ask, "Display text backwards? [Yes/No]", style.backward);
        style.upsideDown = co_await askSwitch(ask, "Display text upside-down? [Yes/No]", style.upsideDown);
        if (isShapeFont(style))
            style.vertical = co_await askSwitch(ask, "Vertical? [Yes/No]", style.vertical);
        else
            style.vertical = false;
        store(style);
    }

private:
    Task<bool> askSwitch(Ask& ask, std::string question, bool now) {
        std::string prompt = withDefault(question, now ? "Y" : "N");
        const bool on = co_await askYesNo(ask, std::move(prompt), now);
        co_return on;
    }

    Dialogue list(Ask& ask) {
        const std::string filter = co_await askNamesToList(ask, "Enter text style(s) to list <*>:");
        for (const TextStyle& style : drawing().textStyles) {
            if (!matchesWildcards(style.name.view(), filter)) continue;
            std::string font = style.fontFile.str();
            if (!style.bigFontFile.empty()) font += "," + style.bigFontFile.str();
            std::string generation = style.backward ? "Backwards" : "";
            if (style.upsideDown) generation += generation.empty() ? "Upside-down" : " Upside-down";
            if (style.vertical) generation += generation.empty() ? "Vertical" : " Vertical";
            message("Style name: " + inQuotes(style.name) + "  Font files: " + font);
            message("   Height: " + lengthText(drawing(), style.height) +
                    "  Width factor: " + lengthText(drawing(), style.widthFactor) + "  Obliquing angle: " +
                    lengthDefault(drawing(), std::round(math::toDegrees(style.obliqueAngle) * 1e9) / 1e9) +
                    "  Generation: " + (generation.empty() ? "Normal" : generation));
        }
    }

    /// A font file or family; for shape fonts also "font,bigfont".
    Dialogue askFont(Ask& ask, TextStyle& style) {
        std::string known = style.fontFile.str();
        if (!style.bigFontFile.empty()) known += "," + style.bigFontFile.str();
        std::string prompt = withDefault("Specify full font name or font filename (TTF or SHX)", known);
        const Answer font = co_await ask.text(std::move(prompt));
        const std::vector<std::string> names = splitNames(font.text);
        if (!font.isText() || names.empty()) co_return;
        style.fontFile = Name(names[0]);
        style.bigFontFile = names.size() > 1 ? Name(names[1]) : Name();
    }

    void store(const TextStyle& style) {
        const doc::GroupScope group(document(), "STYLE");
        document().editTable<doc::TextStyleTraits>([&](engine::Table<TextStyle>& styles) { styles.add(style); });
        document().setVariable("TEXTSTYLE", style.name.str());
        message(inQuotes(style.name) + " is now the current text style.");
        repaint();
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Style, "STYLE", "Text Style", "Format", {"ST"})

}  // namespace kova::cmd::commands
