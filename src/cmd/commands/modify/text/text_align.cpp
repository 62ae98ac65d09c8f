#include "cmd/prompts/text_prompts.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "doc/pick/picking.hpp"
#include "cmd/registry.hpp"
#include "engine/text/text_line.hpp"
#include "engine/modify/text_placing.hpp"
#include "math/matrix4.hpp"

// TEXTALIGN, TEXTFIT and TORIENT: where texts stand and which way they run.

namespace kova::cmd::commands {

namespace {

using engine::Entity;
using math::Vector2;

bool isPlacedText(const Entity& entity) { return engine::isPlacedText(entity); }

/// What becomes of the distances when texts are put on a line.
enum class Spacing { Distribute, Set, KeepVertical, KeepHorizontal };
constexpr const char* kSpacingNames[] = {"Distribute", "Set Spacing", "Current Vertical", "Current Horizontal"};

/// TEXTALIGN: texts are put on the line through one of them and a second point.
class TextAlignTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        spacing_ =
            static_cast<Spacing>(std::clamp(static_cast<int>(remembered(document(), "TEXTALIGN mode", 3.0)), 0, 3));
        gap_ = remembered(document(), "TEXTALIGN gap", 0.0);
        hAlign_ = static_cast<std::int32_t>(remembered(document(), "TEXTALIGN h", engine::kHAlignLeft));
        vAlign_ = static_cast<std::int32_t>(remembered(document(), "TEXTALIGN v", engine::kVAlignBaseline));
        alignment_ = alignmentName();
        std::vector<std::uint64_t> ids;
        for (;;) {
            message("Current settings: Alignment = " + alignment_ +
                    ", Spacing mode = " + kSpacingNames[static_cast<int>(spacing_)]);
            const Answer selected =
                co_await ask.selection("Select text objects to align or [alIgnment/Options]:", "alIgnment Options");
            if (selected.is("ALIGNMENT")) {
                co_await askAlignment(ask);
            } else if (selected.is("OPTIONS")) {
                co_await askSpacing(ask);
            } else {
                for (const std::uint64_t id : selected.ids)
                    if (const Entity* e = drawing().findById(id); e != nullptr && engine::isPlacedText(*e))
                        ids.push_back(id);
                break;
            }
        }
        if (ids.empty()) co_return;
        const Answer to = co_await ask.object("Select a text object to align to [Points]:", "Points", isPlacedText);
        Vector2 first;
        std::uint64_t fixed = 0;
        if (to.is("POINTS")) {
            const Answer point = co_await ask.point("Pick first point:");
            if (!point.isPoint()) co_return;
            first = point.point;
        } else {
            const Entity* text = to.isObject() ? drawing().findById(to.id) : nullptr;
            if (text == nullptr) co_return;
            fixed = to.id;
            first = engine::textAnchorAs(*text, hAlign_, vAlign_);
        }
        for (;;) {
            const Answer second = co_await ask.point("Pick second point or [Options]:", "Options", first);
            if (second.is("OPTIONS")) {
                co_await askSpacing(ask);
                continue;
            }
            if (!second.isPoint()) co_return;
            if (place(ids, fixed, first, second.point)) co_return;
            message("The texts cannot be aligned along that line.");
        }
    }

private:
    Dialogue askAlignment(Ask& ask) {
        const Answer answer =
            co_await ask.keyword("Select an option [Left/Center/Middle/Right/TL/TC/TR/ML/MC/MR/BL/BC/BR]:",
                                 "Left Center Middle Right TL TC TR ML MC MR BL BC BR");
        const TextJustification* row = textJustification(answer);
        if (row == nullptr) co_return;
        hAlign_ = row->hAlign;
        vAlign_ = row->vAlign;
        alignment_ = alignmentName();
        remember(document(), "TEXTALIGN h", hAlign_);
        remember(document(), "TEXTALIGN v", vAlign_);
    }

    Dialogue askSpacing(Ask& ask) {
        const Answer answer =
            co_await ask.keyword("Select an option [Distribute/Set spacing/current Vertical/current Horizontal]:",
                                 "Distribute Set Vertical Horizontal");
        if (answer.isEnter()) co_return;
        spacing_ = answer.is("DISTRIBUTE") ? Spacing::Distribute
                   : answer.is("SET")      ? Spacing::Set
                   : answer.is("VERTICAL") ? Spacing::KeepVertical
                                           : Spacing::KeepHorizontal;
        remember(document(), "TEXTALIGN mode", static_cast<double>(spacing_));
        if (spacing_ != Spacing::Set) co_return;
        std::string prompt = withDefault("Set spacing", lengthDefault(drawing(), gap_));
        const Answer gap = co_await ask.distance(std::move(prompt), {}, {}, kNotNegative);
        gap_ = gap.numberOr(gap_);
        remember(document(), "TEXTALIGN gap", gap_);
    }

    std::string alignmentName() const { return textJustificationName(hAlign_, vAlign_); }

    /// False when there is no such line; nothing has changed then.
    bool place(const std::vector<std::uint64_t>& ids, std::uint64_t fixed, const Vector2& from, const Vector2& to) {
        const Vector2 along = (to - from).normalized();
        if (along == Vector2{}) return false;
        const Vector2 x = drawing().ucs.xAxis.normalized();
        const Vector2 y = x.perpendicular();
        const Vector2& kept = spacing_ == Spacing::KeepVertical ? y : x;
        const bool keeps = spacing_ == Spacing::KeepVertical || spacing_ == Spacing::KeepHorizontal;
        if (keeps && std::abs(along.dot(kept)) < 1e-9) return false;

        struct Item {
            std::uint64_t id;
            Vector2 anchor;
            double low;  ///< extents along the line, from the anchor
            double high;
        };
        std::vector<Item> items;
        for (const std::uint64_t id : ids) {
            const Entity* text = drawing().findById(id);
            if (text == nullptr) continue;
            Item item{id, engine::textAnchorAs(*text, hAlign_, vAlign_), 0.0, 0.0};
            if (const auto box = engine::letterBox(*text))
                for (const Vector2& corner : *box) {
                    item.low = std::min(item.low, (corner - item.anchor).dot(along));
                    item.high = std::max(item.high, (corner - item.anchor).dot(along));
                }
            items.push_back(item);
        }
        std::stable_sort(items.begin(), items.end(), [&](const Item& a, const Item& b) {
            if ((a.id == fixed) != (b.id == fixed)) return a.id == fixed;
            return a.anchor.dot(along) < b.anchor.dot(along);
        });
        const doc::GroupScope group(document(), "TEXTALIGN");
        const double length = from.distance_to(to);
        double edge = 0.0;  // where the text before ends, from the line's start
        for (std::size_t i = 0; i < items.size(); ++i) {
            const Item& item = items[i];
            double at = 0.0;
            if (keeps)
                at = (item.anchor - from).dot(kept) / along.dot(kept);
            else if (spacing_ == Spacing::Distribute)
                at = items.size() > 1 ? length * static_cast<double>(i) / static_cast<double>(items.size() - 1) : 0.0;
            else
                at = i == 0 ? 0.0 : edge + gap_ - item.low;
            edge = at + item.high;
            const Vector2 shift = from + along * at - item.anchor;
            if (item.id != fixed && shift != Vector2{})
                document().transformEntities({item.id}, math::Matrix4::translation(shift));
        }
        return true;
    }

    Spacing spacing_ = Spacing::KeepHorizontal;
    double gap_ = 0.0;
    std::int32_t hAlign_ = 0;
    std::int32_t vAlign_ = 0;
    std::string alignment_;
};

/// TEXTFIT: stretches or shrinks a line of text between two points.
class TextFitTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const auto isLine = [](const Entity& e) {
            return engine::isPlacedText(e) && e.type() != engine::EntityType::MText;
        };
        const Answer picked = co_await ask.object("Select text to stretch or shrink:", {}, isLine);
        const Entity* text = picked.isObject() ? drawing().findById(picked.id) : nullptr;
        if (text == nullptr) co_return;
        Vector2 start = engine::textAnchorAs(*text, engine::kHAlignLeft, engine::kVAlignBaseline);
        for (;;) {
            Answer end = co_await ask.point("Specify end point or [Start point]:", "Start", start);
            if (end.is("START")) {
                const Answer from = co_await ask.point("Specify new starting point:");
                if (!from.isPoint()) co_return;
                start = from.point;
                end = co_await ask.point("Specify ending point:", {}, start);
            }
            Entity* entity = drawing().findById(picked.id);
            if (!end.isPoint() || entity == nullptr) co_return;
            bool fits = false;
            {
                doc::GroupScope group(document(), "TEXTFIT");
                document().modifyEntity(*entity, [&](Entity& e) { fits = engine::fitTextLine(e, start, end.point); });
                if (!fits) group.rollback();
            }
            if (fits) co_return;
            message("The text cannot end there.");
        }
    }
};

/// TORIENT: texts that stand on their heads are turned, those selected or all.
class TorientCommand final : public OneShotCommand {
public:
    TorientCommand() : OneShotCommand("TORIENT", "Orient Text", "Modify") {}
    void execute(CommandContext& context) override {
        doc::Document& document = context.document;
        const bool selected = !document.selection().empty();
        const std::vector<std::uint64_t> ids = selected ? document.selection().ids() : selectAll(document);
        std::size_t count = 0;
        {
            const doc::GroupScope group(document, "TORIENT");
            for (const std::uint64_t id : ids) {
                Entity* entity = context.drawing().findById(id);
                if (entity == nullptr || !engine::readsUpsideDown(*entity)) continue;
                document.modifyEntity(*entity, engine::turnAround);
                ++count;
            }
        }
        context.message(counted(count, "object") + " turned.");
        if (!selected || context.transparent) return;
        context.previous = ids;
        document.selection().clear();
    }
};

}  // namespace

KOVA_TOOL_COMMAND(TextAlign, "TEXTALIGN", "Align Text", "Modify", {"TA"})
KOVA_TOOL_COMMAND(TextFit, "TEXTFIT", "Fit Text", "Modify")
KOVA_REGISTER_COMMAND(TorientCommand)

}  // namespace kova::cmd::commands
