#include "cmd/prompts/text_prompts.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/displacement.hpp"
#include "cmd/registry.hpp"
#include "engine/modify/text_placing.hpp"

// SCALETEXT and JUSTIFYTEXT: many texts, each about its own point.

namespace kova::cmd::commands {

namespace {

using engine::Entity;

bool isScalableText(const Entity& entity) { return engine::isPlacedText(entity); }

/// Lets `change` edit every text of a selection, as one step.
std::size_t changeTexts(doc::Document& document, const char* label, const std::vector<std::uint64_t>& ids,
                        const std::function<void(Entity&)>& change) {
    const doc::GroupScope group(document, label);
    std::size_t count = 0;
    for (const std::uint64_t id : ids) {
        Entity* entity = document.drawing().findById(id);
        if (entity == nullptr || !engine::isPlacedText(*entity)) continue;
        document.modifyEntity(*entity, change);
        ++count;
    }
    return count;
}

/// How SCALETEXT finds the factor of a text.
struct TextSize {
    enum class Kind { None, Height, PaperHeight, Factor };
    Kind kind = Kind::None;
    double value = 0.0;

    double factorOf(const Entity& text) const {
        const double now = engine::letterHeight(text);
        if (kind == Kind::Factor) return value;
        if (!(now > 0.0) || (kind == Kind::PaperHeight && !text.annotative())) return 1.0;
        return (kind == Kind::PaperHeight ? value * text.annotationScale() : value) / now;
    }
};

class ScaleTextTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        const Answer base = co_await ask.keyword(
            "Enter a base point option for scaling [Existing/Left/Center/Middle/Right/TL/TC/TR/ML/MC/MR/BL/BC/BR] "
            "<Existing>:",
            "Existing Left Center Middle Right TL TC TR ML MC MR BL BC BR");
        const TextSize size = co_await askSize(ask);
        if (size.kind == TextSize::Kind::None) co_return;
        const TextJustification* row = textJustification(base);
        const std::size_t count = changeTexts(document(), "SCALETEXT", selected.ids, [&](Entity& text) {
            const math::Vector2 point =
                row != nullptr ? engine::textAnchorAs(text, row->hAlign, row->vAlign) : engine::textAnchor(text);
            const double factor = size.factorOf(text);
            if (factor > 0.0 && std::isfinite(factor) && factor != 1.0) engine::scaleText(text, factor, point);
        });
        message(counted(count, "object") + " changed.");
    }

private:
    Task<TextSize> askSize(Ask& ask) {
        TextSize size;
        const double last = remembered(document(), "SCALETEXT height", engine::sysVarReal(drawing(), "TEXTSIZE", 2.5));
        std::string prompt = withDefault("Specify new model height or [Paper height/Match object/Scale factor]",
                                         lengthDefault(drawing(), last));
        const Answer answer = co_await ask.distance(std::move(prompt), "Paper Match Scale", {}, kPositive);
        if (answer.is("PAPER")) {
            std::string paper = withDefault("Specify new paper height", lengthDefault(drawing(), last));
            const Answer height = co_await ask.distance(std::move(paper), {}, {}, kPositive);
            size.kind = TextSize::Kind::PaperHeight;
            size.value = height.numberOr(last);
        } else if (answer.is("MATCH")) {
            const Answer picked =
                co_await ask.object("Select a text object with the desired height:", {}, isScalableText);
            const Entity* text = picked.isObject() ? drawing().findById(picked.id) : nullptr;
            if (text == nullptr) co_return size;
            size.kind = TextSize::Kind::Height;
            size.value = engine::letterHeight(*text);
            message("Height=" + lengthText(drawing(), size.value));
        } else if (answer.is("SCALE")) {
            size.kind = TextSize::Kind::Factor;
            size.value = co_await askFactor(ask);
        } else {
            size.kind = TextSize::Kind::Height;
            size.value = answer.numberOr(last);
        }
        if (size.kind == TextSize::Kind::Height) remember(document(), "SCALETEXT height", size.value);
        co_return size;
    }

    Task<double> askFactor(Ask& ask) {
        const double last = remembered(document(), "SCALETEXT factor", 2.0);
        std::string prompt = withDefault("Specify scale factor or [Reference]", lengthDefault(drawing(), last));
        const Answer answer = co_await ask.distance(std::move(prompt), "Reference", {}, kPositive);
        double factor = answer.numberOr(last);
        if (answer.is("REFERENCE")) {
            const double from = co_await askReference(ask, document(), "Specify reference length <1>:", false, 1.0);
            const double to = co_await askReference(ask, document(), "Specify new length <1>:", false, 1.0);
            factor = to / from;
        }
        remember(document(), "SCALETEXT factor", factor);
        co_return factor;
    }
};

class JustifyTextTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        const Answer answer = co_await ask.keyword(
            "Enter a justification option [Left/Align/Fit/Center/Middle/Right/TL/TC/TR/ML/MC/MR/BL/BC/BR] <Left>:",
            kTextJustifications);
        const TextJustification* row = textJustification(answer);
        const std::int32_t hAlign = row != nullptr ? row->hAlign : 0;
        const std::int32_t vAlign = row != nullptr ? row->vAlign : 0;
        const std::size_t count = changeTexts(document(), "JUSTIFYTEXT", selected.ids,
                                              [&](Entity& text) { engine::justifyText(text, hAlign, vAlign); });
        message(counted(count, "object") + " changed.");
    }
};

}  // namespace

KOVA_TOOL_COMMAND(ScaleText, "SCALETEXT", "Scale Text", "Modify")
KOVA_TOOL_COMMAND(JustifyText, "JUSTIFYTEXT", "Justify Text", "Modify")

}  // namespace kova::cmd::commands
