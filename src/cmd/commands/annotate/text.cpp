#include "engine/entities/text.hpp"

#include "cmd/prompts/text_prompts.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

/// TEXT: lines of text below each other, each an entity and a step of its own.
class TextTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const std::optional<TextPlace> place = co_await askTextPlace(ask, document(), "TEXT");
        if (!place) co_return;
        if (place->continued) {
            if (!continueLast()) co_return message("No text to continue.");
        } else {
            model_.position = place->position;
            model_.fitEnd = place->fitEnd;
            model_.fit = place->fit;
            model_.height = place->height;
            model_.rotation = place->rotation;
            model_.hAlign = place->hAlign;
            model_.vAlign = place->vAlign;
            model_.textStyle = place->style;
            model_.widthFactor = place->widthFactor;
            model_.oblique = place->oblique;
            model_.generation = place->generation;
        }
        co_await askLines(ask);
    }

private:
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
        const Vector2 down = Vector2::from_angle(direction).perpendicular() * (-kTextLineStep * model_.height);
        model_.position += down;
        model_.fitEnd += down;
    }

    Dialogue askLines(Ask& ask) {
        for (;;) {
            const Answer line = co_await ask.line("Enter text:");
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
