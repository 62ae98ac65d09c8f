#include "engine/entities/attribute_definition.hpp"

#include "edit/block_attributes.hpp"
#include "cmd/prompts/text_prompts.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using engine::AttributeDefinitionEntity;
using math::Vector2;

/// Bits of AFLAGS.
enum Mode : int { kInvisible = 1, kConstant = 2, kVerify = 4, kPreset = 8, kLocked = 16, kMultiple = 32 };

struct ModeRow {
    const char* word;
    int bit;
    const char* name;
};
constexpr ModeRow kModes[] = {{"INVISIBLE", kInvisible, "Invisible"},
                              {"CONSTANT", kConstant, "Constant"},
                              {"VERIFY", kVerify, "Verify"},
                              {"PRESET", kPreset, "Preset"},
                              {"LOCK", kLocked, "Lock position"}};
constexpr ModeRow kMultipleRow = {"MULTIPLE", kMultiple, "Multiple lines"};

/// ATTDEF: defines an attribute of a block that is to be made.
class AttdefTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        co_await askModes(ask);
        const std::string tag = co_await askTag(ask);
        if (tag.empty()) co_return;
        auto model = std::make_unique<AttributeDefinitionEntity>();
        model->tag = tag;
        const int modes = flags();
        model->invisible = (modes & kInvisible) != 0;
        model->constant = (modes & kConstant) != 0;
        model->verify = (modes & kVerify) != 0;
        model->preset = (modes & kPreset) != 0;
        model->locked = (modes & kLocked) != 0;
        model->multiline = (modes & kMultiple) != 0;
        if (!model->constant) {
            const Answer prompt = co_await ask.text("Enter attribute prompt:");
            model->prompt = prompt.text;
        }
        const char* question = model->constant ? "Enter attribute value:" : "Enter default attribute value:";
        const std::optional<std::string> value = co_await askAttributeValue(ask, question, model->multiline);
        model->defaultValue = value.value_or(std::string());
        const std::optional<TextPlace> place = co_await askTextPlace(ask, document(), "ATTDEF");
        if (!place) co_return;
        if (place->continued) {
            if (!continueLast(*model)) co_return message("No attribute definition to continue.");
        } else {
            model->insertion = place->position;
            model->textHeight = place->height;
            model->rotation = place->rotation;
            model->textStyle = place->style;
            model->hAlign = place->hAlign;
            model->vAlign = place->vAlign;
            model->widthFactor = place->widthFactor;
            model->oblique = place->oblique;
            model->generation = place->generation;
            model->fit = place->fit;
            model->fitEnd = place->fitEnd;
        }
        if (annotative_) model->setAnnotative(true);
        addNew(document(), std::move(model), "ATTDEF");
        repaint();
    }

private:
    void toggle(int bit) { document().setVariable("AFLAGS", std::int32_t{flags() ^ bit}); }
    int flags() const { return engine::sysVarInt(drawing(), "AFLAGS"); }

    /// Places it a line below the definition made last, in its manner.
    bool continueLast(AttributeDefinitionEntity& model) const {
        const engine::EntityList& space = drawing().currentSpace();
        for (std::uint32_t slot = space.slotCount(); slot-- > 0;) {
            const auto* last = dynamic_cast<const AttributeDefinitionEntity*>(space.atSlot(slot));
            if (last == nullptr) continue;
            const double direction = last->hasSecondPoint() ? (last->fitEnd - last->insertion).angle() : last->rotation;
            double step = kTextLineStep * last->textHeight;
            if (last->multiline) {
                // Below all lines of the default value, as a value will take their place.
                engine::TextLine lines = last->line();
                lines.content = last->defaultValue;
                const double height = engine::textLineBounds(lines, &drawing()).height();
                if (height > step) step = height + (kTextLineStep - 1.0) * last->textHeight;
            }
            const Vector2 down = Vector2::from_angle(direction).perpendicular() * -step;
            model.insertion = last->insertion + down;
            model.fitEnd = last->fitEnd + down;
            model.fit = last->fit;
            model.textHeight = last->textHeight;
            model.rotation = last->rotation;
            model.textStyle = last->textStyle;
            model.hAlign = last->hAlign;
            model.vAlign = last->vAlign;
            model.widthFactor = last->widthFactor;
            model.oblique = last->oblique;
            model.generation = last->generation;
            return true;
        }
        return false;
    }

    Dialogue askModes(Ask& ask) {
        for (;;) {
            std::string state = "Current attribute modes:";
            for (const ModeRow& row : kModes)
                state += std::string("  ") + row.name + "=" + ((flags() & row.bit) != 0 ? "Y" : "N");
            message(state + "  Annotative=" + (annotative_ ? "Y" : "N") +
                    "  Multiple lines=" + ((flags() & kMultiple) != 0 ? "Y" : "N"));
            const Answer answer = co_await ask.keyword(
                "Enter an option to change [Invisible/Constant/Verify/Preset/Lock position/Annotative/Multiple lines] "
                "<done>:",
                "Invisible Constant Verify Preset Lock Annotative Multiple");
            if (answer.isEnter()) co_return;
            if (answer.is("ANNOTATIVE")) annotative_ = !annotative_;
            if (answer.is(kMultipleRow.word)) toggle(kMultipleRow.bit);
            for (const ModeRow& row : kModes)
                if (answer.is(row.word)) toggle(row.bit);
        }
    }

    /// A tag: one word, in upper case. Empty: given up.
    Task<std::string> askTag(Ask& ask) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter attribute tag name:");
            if (answer.isEnter()) co_return std::string();
            std::string tag = typedName(answer.text);
            if (!tag.empty() && tag.find_first_of(" \t!") == std::string::npos) co_return engine::upperCase(tag);
            message("Invalid attribute tag.");
        }
    }

    bool annotative_ = false;
};

}  // namespace

KOVA_TOOL_COMMAND(Attdef, "ATTDEF", "Define Attribute", "Insert", {"ATT"})

}  // namespace kova::cmd::commands
