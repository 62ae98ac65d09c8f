#include "cmd/commands/modify/parallel_tool.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/pick_request.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

/// EXOFFSET: OFFSET with its settings at every prompt.
class ExtendedOffsetTool final : public ParallelTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        tellSettings();
        StepGroup group(document(), "EXOFFSET");
        co_await askDistance(ask);
        for (;;) {
            PickRequest request = objectRequest("Select object to offset or [Options/Undo]:", "Options Undo");
            const Answer picked = co_await askPick(ask, std::move(request));
            if (picked.isEnter()) co_return;
            if (picked.is("Options"))
                co_await askOption(ask);
            else if (picked.is("Undo"))
                undo(group);
            else
                co_await askSides(ask, group, picked.id);
        }
    }

private:
    int gapType() const { return std::clamp(engine::sysVarInt(drawing(), "OFFSETGAPTYPE"), 0, 2); }
    const char* gapName() const {
        constexpr const char* kNames[] = {"Extended", "Filleted", "Chamfered"};
        return kNames[gapType()];
    }

    void tellSettings() {
        const double last = engine::sysVarReal(drawing(), "OFFSETDIST", -1.0);
        std::string text = "Distance = ";
        text += last > 0.0 ? lengthText(drawing(), last) : "Through";
        text += ", Layer = ";
        text += takesCurrentLayer() ? "Current" : "Source";
        text += ", Gaptype = ";
        message(text + gapName());
    }

    Dialogue askDistance(Ask& ask) {
        const double last = engine::sysVarReal(drawing(), "OFFSETDIST", -1.0);
        const std::string fallback = last > 0.0 ? lengthDefault(drawing(), last) : "Through";
        const Answer answer = co_await ask.distance(withDefault("Specify offset distance or [Through]", fallback),
                                                    "Through", {}, kPositive);
        setDistance(answer.isEnter() ? std::max(last, 0.0) : answer.numberOr(0.0));
    }

    Dialogue askOption(Ask& ask) {
        const Answer option =
            co_await ask.keyword("Enter an option [Distance/Layer/Gaptype]:", "Distance Layer Gaptype");
        if (option.is("Distance")) co_await askDistance(ask);
        if (option.is("Layer")) co_await askLayer(ask, "Specify layer for offset objects [Current/Source]");
        if (!option.is("Gaptype")) co_return;
        const Answer gap = co_await ask.keyword(
            withDefault("Specify gap type for offset polylines [Extended/Filleted/Chamfered]", gapName()),
            "Extended Filleted Chamfered");
        if (gap.isEnter()) co_return;
        const std::int32_t type = gap.is("Extended") ? 0 : gap.is("Filleted") ? 1 : 2;
        document().setVariable("OFFSETGAPTYPE", engine::SysVarValue(type));
    }

    void undo(StepGroup& group) {
        if (!group.drop()) message("Nothing to undo.");
    }

    /// One object, to one side or (Multiple) on and on, until Enter.
    Dialogue askSides(Ask& ask, StepGroup& group, std::uint64_t id) {
        bool multiple = false;
        std::vector<std::uint64_t> chain(1, id);
        for (;;) {
            std::string prompt = distance() > 0.0 ? "Specify point on side to offset or " : "Specify through point or ";
            prompt += multiple ? "[Options/Undo]:" : "[Options/Multiple/Undo]:";
            const Answer side =
                co_await ask.point(std::move(prompt), multiple ? "Options Undo" : "Options Multiple Undo");
            if (side.isEnter()) co_return;
            if (side.is("Options")) {
                co_await askOption(ask);
                continue;
            }
            if (side.is("Multiple")) {
                multiple = true;
                continue;
            }
            if (side.is("Undo")) {
                undo(group);
                if (!multiple) co_return;
                if (chain.size() > 1) chain.pop_back();
                continue;
            }
            engine::Entity* source = drawing().findById(chain.back());
            if (source == nullptr) co_return;
            const std::uint64_t made = offset(group, *source, side.point, false);
            if (made != 0) chain.push_back(made);
            if (made != 0 && !multiple) co_return;
        }
    }
};

}  // namespace

KOVA_TOOL_COMMAND(ExtendedOffset, "EXOFFSET", "Extended Offset", "Modify", {})

}  // namespace kova::cmd::commands
