#include "engine/entities/mtext.hpp"

#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

constexpr const char* kAttachments[] = {"TL", "TC", "TR", "ML", "MC", "MR", "BL", "BC", "BR"};
/// Height of one line in text heights at spacing 1.
constexpr double kLineHeight = 5.0 / 3.0;

/// MTEXT: paragraphs in a frame given by two corners.
class MtextTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer first = co_await ask.point("Specify first corner:");
        if (!first.isPoint()) co_return;
        useStyle(drawing().currentTextStyle);
        rotation_ = ucsRotation(drawing());
        for (;;) {
            const Answer other = co_await ask.point(
                "Specify opposite corner or [Height/Justify/Line spacing/Rotation/Style/Width/Columns]:",
                "Height Justify Line Rotation Style Width Columns", first.point);
            if (other.isEnter()) co_return;
            if (other.isPoint()) {
                place(first.point, other.point);
                break;
            }
            if (other.is("WIDTH")) {
                const Answer width = co_await ask.distance("Specify width:", {}, first.point, kNotNegative);
                if (width.isNumber()) {
                    text_.width = width.number;
                    text_.position = first.point;
                    break;
                }
            } else if (other.is("HEIGHT")) {
                std::string prompt = withDefault("Specify height", lengthDefault(drawing(), text_.height));
                const Answer height = co_await ask.distance(std::move(prompt), {}, first.point, kPositive);
                if (height.isNumber()) {
                    text_.height = height.number;
                    engine::setSysVar(drawing(), "TEXTSIZE", height.number);
                }
            } else if (other.is("JUSTIFY")) {
                co_await askJustification(ask);
            } else if (other.is("LINE")) {
                co_await askSpacing(ask);
            } else if (other.is("ROTATION")) {
                std::string prompt =
                    withDefault("Specify rotation angle", angleText(drawing(), rotation_ - ucsRotation(drawing())));
                const Answer angle = co_await ask.angle(std::move(prompt), {}, first.point);
                if (angle.isNumber()) rotation_ = worldDirection(angle, drawing());
            } else if (other.is("STYLE")) {
                co_await askStyle(ask);
            } else {
                co_await askColumns(ask);
            }
        }
        text_.rotation = rotation_;
        co_await askLines(ask);
    }

private:
    void useStyle(engine::Name name) {
        const engine::TextStyle& style = drawing().textStyleOrStandard(name);
        text_.textStyle = style.name;
        text_.height = style.height > 0.0 ? style.height : engine::sysVarReal(drawing(), "TEXTSIZE", 2.5);
    }

    /// The frame between two corners: its width wraps, its corner or side that the attachment names is the place.
    void place(const Vector2& a, const Vector2& b) {
        const Vector2 x = math::unitAt(rotation_);
        const Vector2 y = x.perpendicular();
        const Vector2 d = b - a;
        const double left = std::min(0.0, d.dot(x));
        const double low = std::min(0.0, d.dot(y));
        text_.width = std::abs(d.dot(x));
        const double high = std::abs(d.dot(y));
        const int column = (text_.attachment - 1) % 3;
        const int row = (text_.attachment - 1) / 3;
        text_.position = a + x * (left + text_.width * column / 2.0) + y * (low + high * (2 - row) / 2.0);
    }

    Dialogue askJustification(Ask& ask) {
        std::string prompt =
            withDefault("Enter justification [TL/TC/TR/ML/MC/MR/BL/BC/BR]", kAttachments[text_.attachment - 1]);
        const Answer answer = co_await ask.keyword(std::move(prompt), "TL TC TR ML MC MR BL BC BR");
        for (std::int32_t i = 0; i < 9; ++i)
            if (answer.is(kAttachments[i])) text_.attachment = i + 1;
    }

    Dialogue askSpacing(Ask& ask) {
        const Answer kind =
            co_await ask.keyword(text_.lineSpacingExact ? "Enter line spacing type [At least/Exactly] <Exactly>:"
                                                        : "Enter line spacing type [At least/Exactly] <At least>:",
                                 "At Exactly");
        if (!kind.isEnter()) text_.lineSpacingExact = kind.is("EXACTLY");
        std::string prompt = withDefault("Enter line spacing factor or distance",
                                         lengthDefault(drawing(), text_.lineSpacingFactor) + "x");
        for (;;) {
            const Answer answer = co_await ask.text(prompt);
            if (!answer.isText()) co_return;
            std::string_view typed = trimmed(answer.text);
            const bool factor = !typed.empty() && (typed.back() == 'x' || typed.back() == 'X');
            if (factor) typed.remove_suffix(1);
            if (const auto value = parseNumber(typed)) {
                // A bare number is the distance from line to line.
                const double spacing = factor ? *value : *value / (kLineHeight * text_.height);
                if (spacing >= 0.25 && spacing <= 4.0) {
                    text_.lineSpacingFactor = spacing;
                    co_return;
                }
            }
            message("Invalid value.");
        }
    }

    Dialogue askStyle(Ask& ask) {
        for (;;) {
            std::string prompt = withDefault("Enter style name or [?]", text_.textStyle.str());
            const Answer answer = co_await ask.text(std::move(prompt), "?");
            if (answer.isEnter()) co_return;
            if (!answer.isText()) {
                for (const engine::TextStyle& style : drawing().textStyles) message(std::string(style.name.str()));
                continue;
            }
            const engine::Name name(std::string(trimmed(answer.text)));
            if (drawing().textStyles.find(name) != nullptr) co_return useStyle(name);
            message("Text style " + inQuotes(trimmed(answer.text)) + " not found.");
        }
    }

    Dialogue askColumns(Ask& ask) {
        const Answer kind =
            co_await ask.keyword("Enter column type [Dynamic/Static/No columns] <No columns>:", "Dynamic Static No");
        text_.columns = {};
        if (kind.isEnter() || kind.is("NO")) co_return;
        const bool dynamic = kind.is("DYNAMIC");
        int count = 1;
        if (!dynamic) {
            const Answer number = co_await ask.integer("Specify number of columns <2>:", 1, 100);
            count = number.isNumber() ? number.integer() : 2;
        }
        const Answer width = co_await ask.distance("Specify column width:", {}, {}, kPositive);
        if (!width.isNumber()) co_return;
        std::string prompt = withDefault("Specify gutter width", lengthDefault(drawing(), 5.0 * text_.height));
        const Answer gutter = co_await ask.distance(std::move(prompt), {}, {}, kNotNegative);
        const Answer height = co_await ask.distance("Specify column height:", {}, {}, kPositive);
        if (!height.isNumber()) co_return;
        text_.columns.type = dynamic ? 2 : 1;
        text_.columns.autoHeight = dynamic;
        text_.columns.count = count;
        text_.columns.width = width.number;
        text_.columns.gutter = gutter.numberOr(5.0 * text_.height);
        text_.definedHeight = height.number;
    }

    Dialogue askLines(Ask& ask) {
        std::string content;
        bool any = false;
        for (;;) {
            const Answer line = co_await ask.line("MText:");
            if (!line.isText()) break;
            if (any) content += "\\P";
            content += line.text;
            any = true;
        }
        if (!any) co_return;
        auto text = std::make_unique<engine::MTextEntity>(text_);
        text->content = std::move(content);
        addNew(document(), std::move(text), "MTEXT");
    }

    engine::MTextEntity text_;
    double rotation_ = 0.0;
};

}  // namespace

KOVA_TOOL_COMMAND(Mtext, "MTEXT", "Multiline Text", "Annotate", {"MT", "T"})

}  // namespace kova::cmd::commands
