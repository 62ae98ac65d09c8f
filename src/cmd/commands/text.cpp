#include "engine/entities/text.hpp"

#include "cmd/dialogue.hpp"
#include "cmd/drawing_aids.hpp"
#include "cmd/format.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

/// Distance from one line of text to the next, in text heights.
constexpr double kLineStep = 5.0 / 3.0;
constexpr const char* kLastRotation = "textRotation";
constexpr const char* kJustifications = "Left Center Right Align Middle Fit TL TC TR ML MC MR BL BC BR";

struct Justification {
    const char* word;
    std::int32_t hAlign;
    std::int32_t vAlign;
    const char* question;
};
constexpr Justification kRows[] = {
    {"LEFT", engine::kHAlignLeft, engine::kVAlignBaseline, "Specify start point of text:"},
    {"CENTER", engine::kHAlignCenter, engine::kVAlignBaseline, "Specify center point of text:"},
    {"RIGHT", engine::kHAlignRight, engine::kVAlignBaseline, "Specify right endpoint of text baseline:"},
    {"ALIGN", engine::kHAlignAligned, engine::kVAlignBaseline, "Specify first endpoint of text baseline:"},
    {"MIDDLE", engine::kHAlignMiddle, engine::kVAlignBaseline, "Specify middle point of text:"},
    {"FIT", engine::kHAlignFit, engine::kVAlignBaseline, "Specify first endpoint of text baseline:"},
    {"TL", engine::kHAlignLeft, engine::kVAlignTop, "Specify top-left point of text:"},
    {"TC", engine::kHAlignCenter, engine::kVAlignTop, "Specify top-center point of text:"},
    {"TR", engine::kHAlignRight, engine::kVAlignTop, "Specify top-right point of text:"},
    {"ML", engine::kHAlignLeft, engine::kVAlignMiddle, "Specify middle-left point of text:"},
    {"MC", engine::kHAlignCenter, engine::kVAlignMiddle, "Specify middle point of text:"},
    {"MR", engine::kHAlignRight, engine::kVAlignMiddle, "Specify middle-right point of text:"},
    {"BL", engine::kHAlignLeft, engine::kVAlignBottom, "Specify bottom-left point of text:"},
    {"BC", engine::kHAlignCenter, engine::kVAlignBottom, "Specify bottom-center point of text:"},
    {"BR", engine::kHAlignRight, engine::kVAlignBottom, "Specify bottom-right point of text:"},
};

const Justification* findJustification(const Answer& answer) {
    for (const Justification& row : kRows)
        if (answer.is(row.word)) return &row;
    return nullptr;
}

/// TEXT: lines of text below each other, each an entity and a step of its own.
class TextTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Justification* row = nullptr;
        for (;;) {
            const Answer first =
                co_await ask.point("Specify start point of text or [Justify/Style]:",
                                   "Justify Style Left Center Right Align Middle Fit TL TC TR ML MC MR "
                                   "BL BC BR");
            if (first.isPoint()) {
                row = &kRows[0];
                model_.position = first.point;
                break;
            }
            if (first.is("STYLE")) {
                co_await askStyle(ask);
                continue;
            }
            if (first.is("JUSTIFY")) {
                const Answer kind = co_await ask.keyword(
                    "Enter an option [Left/Center/Right/Align/Middle/Fit/TL/TC/TR/ML/MC/MR/BL/BC/BR]:",
                    kJustifications);
                row = findJustification(kind);
                if (row == nullptr) co_return;
            } else if (first.isEnter()) {
                if (!continueLast()) co_return message("No text to continue.");
                co_return co_await askLines(ask);
            } else {
                row = findJustification(first);
            }
            const Answer at = co_await ask.point(row->question);
            if (!at.isPoint()) co_return;
            model_.position = at.point;
            break;
        }
        model_.hAlign = row->hAlign;
        model_.vAlign = row->vAlign;
        const engine::TextStyle& style = drawing().textStyleOrStandard(drawing().currentTextStyle);
        model_.textStyle = style.name;
        model_.widthFactor = style.widthFactor;
        model_.oblique = style.obliqueAngle;
        model_.generation =
            (style.backward ? engine::kTextBackward : 0) | (style.upsideDown ? engine::kTextUpsideDown : 0);
        if (model_.hasSecondPoint()) {
            const Answer second = co_await ask.point("Specify second endpoint of text baseline:", {}, model_.position);
            if (!second.isPoint()) co_return;
            model_.fit = true;
            model_.fitEnd = second.point;
            model_.rotation = (second.point - model_.position).angle();
        }
        model_.height = style.height > 0.0 ? style.height : engine::sysVarReal(drawing(), "TEXTSIZE", 2.5);
        if (!(style.height > 0.0) && model_.hAlign != engine::kHAlignAligned) {
            std::string prompt = withDefault("Specify height", lengthDefault(drawing(), model_.height));
            const Answer height = co_await ask.distance(std::move(prompt), {}, model_.position, kPositive);
            if (height.isNumber()) model_.height = height.number;
            engine::setSysVar(drawing(), "TEXTSIZE", model_.height);
        }
        if (!model_.hasSecondPoint()) {
            model_.rotation = remembered(document(), kLastRotation, 0.0) + ucsRotation(drawing());
            std::string prompt = withDefault("Specify rotation angle of text",
                                             angleText(drawing(), model_.rotation - ucsRotation(drawing())));
            const Answer rotation = co_await ask.angle(std::move(prompt), {}, model_.position);
            if (rotation.isNumber()) model_.rotation = worldDirection(rotation, drawing());
            remember(document(), kLastRotation, model_.rotation - ucsRotation(drawing()));
        }
        co_await askLines(ask);
    }

private:
    Dialogue askStyle(Ask& ask) {
        for (;;) {
            std::string prompt = withDefault("Enter style name or [?]", drawing().currentTextStyle.str());
            const Answer answer = co_await ask.text(std::move(prompt), "?");
            if (answer.isEnter()) co_return;
            if (!answer.isText()) {
                for (const engine::TextStyle& style : drawing().textStyles) message(std::string(style.name.str()));
                continue;
            }
            const engine::Name name(std::string(trimmed(answer.text)));
            if (drawing().textStyles.find(name) != nullptr) {
                const doc::GroupScope group(document(), "TEXT");
                document().setVariable("TEXTSTYLE", std::string(name.str()));
                co_return;
            }
            message("Text style " + quoted(trimmed(answer.text)) + " not found.");
        }
    }

    /// Goes on below the text drawn last, in its manner.
    bool continueLast() {
        const engine::EntityList& space = drawing().currentSpace();
        for (std::uint32_t slot = space.slotCount(); slot-- > 0;) {
            const auto* text = dynamic_cast<const engine::TextEntity*>(space.atSlot(slot));
            if (text == nullptr) continue;
            model_.position = text->position;
            model_.fitEnd = text->fitEnd;
            model_.fit = text->fit;
            model_.height = text->height;
            model_.rotation = text->rotation;
            model_.hAlign = text->hAlign;
            model_.vAlign = text->vAlign;
            model_.textStyle = text->textStyle;
            model_.widthFactor = text->widthFactor;
            model_.oblique = text->oblique;
            model_.generation = text->generation;
            step();
            return true;
        }
        return false;
    }

    /// On to the next line.
    void step() {
        const double direction = model_.hasSecondPoint() ? (model_.fitEnd - model_.position).angle() : model_.rotation;
        const Vector2 down = Vector2::from_angle(direction).perpendicular() * (-kLineStep * model_.height);
        model_.position += down;
        model_.fitEnd += down;
    }

    Dialogue askLines(Ask& ask) {
        for (;;) {
            const Answer line = co_await ask.text("Enter text:");
            if (!line.isText()) co_return;
            auto text = std::make_unique<engine::TextEntity>(model_);
            text->content = line.text;
            addNew(document(), std::move(text), "TEXT");
            repaint();
            step();
        }
    }

    engine::TextEntity model_;
};

}  // namespace

KOVA_TOOL_COMMAND(Text, "TEXT", "Single-Line Text", "Annotate", {"DT", "DTEXT"})

}  // namespace kova::cmd::commands
