#include "cmd/commands/modify/parallel_tool.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/pick_request.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

/// OFFSET: parallels at a distance or through points, one object after the other. Erase and Layer hold for the program.
class OffsetTool final : public ParallelTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (!co_await askDistance(ask)) co_return;
        StepGroup group(document(), "OFFSET");
        for (;;) {
            PickRequest request = objectRequest("Select object to offset or [Exit/Undo] <Exit>:", "Exit Undo");
            const Answer picked = co_await askPick(ask, std::move(request));
            if (picked.is("Undo")) {
                if (!group.drop()) message("Nothing to undo.");
                continue;
            }
            if (!picked.isObject()) co_return;
            if (!co_await askSides(ask, group, picked.id)) co_return;
        }
    }

private:
    /// The distance, or "through" (0). False: given up.
    Task<bool> askDistance(Ask& ask) {
        std::string settings =
            erases() ? "Current settings: Erase source=Yes  Layer=" : "Current settings: Erase source=No  Layer=";
        settings += takesCurrentLayer() ? "Current" : "Source";
        settings += "  OFFSETGAPTYPE=" + std::to_string(engine::sysVarInt(drawing(), "OFFSETGAPTYPE"));
        message(settings);
        for (;;) {
            const double last = engine::sysVarReal(drawing(), "OFFSETDIST", -1.0);
            const std::string fallback = last > 0.0 ? lengthDefault(drawing(), last) : "Through";
            const Answer answer =
                co_await ask.distance(withDefault("Specify offset distance or [Through/Erase/Layer]", fallback),
                                      "Through Erase Layer", {}, kPositive);
            if (answer.is("Erase")) {
                const bool erase = erases();
                const char* prompt = erase ? "Erase source object after offsetting? [Yes/No] <Yes>:"
                                           : "Erase source object after offsetting? [Yes/No] <No>:";
                const bool chosen = co_await askYesNo(ask, prompt, erase);
                setErases(chosen);
                continue;
            }
            if (answer.is("Layer")) {
                co_await askLayer(ask, "Enter layer option for offset objects [Current/Source]");
                continue;
            }
            setDistance(answer.isEnter() ? std::max(last, 0.0) : answer.numberOr(0.0));
            co_return true;
        }
    }

    /// The side or point for one object, or (Multiple) several. False: the command is to end.
    Task<bool> askSides(Ask& ask, StepGroup& group, std::uint64_t id) {
        bool multiple = false;
        std::vector<std::uint64_t> chain(1, id);
        for (;;) {
            std::string prompt = distance() > 0.0 ? "Specify point on side to offset or [Exit/Multiple/Undo] <Exit>:"
                                                  : "Specify through point or [Exit/Multiple/Undo] <Exit>:";
            if (multiple) {
                prompt = distance() > 0.0 ? "Specify point on side to offset or [Exit/Undo] <next object>:"
                                          : "Specify through point or [Exit/Undo] <next object>:";
            }
            const Answer side = co_await ask.point(std::move(prompt), multiple ? "Exit Undo" : "Exit Multiple Undo");
            if (side.is("Exit")) co_return false;
            if (side.isEnter()) co_return multiple;
            if (side.is("Multiple")) {
                multiple = true;
                continue;
            }
            if (side.is("Undo")) {
                if (!group.drop()) message("Nothing to undo.");
                if (!multiple) co_return true;
                if (chain.size() > 1) chain.pop_back();
                continue;
            }
            engine::Entity* source = drawing().findById(chain.back());
            if (source == nullptr) co_return true;
            const std::uint64_t made = offset(group, *source, side.point, erases());
            if (made == 0) continue;
            if (!multiple) co_return true;
            chain.push_back(made);
        }
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Offset, "OFFSET", "Offset", "Modify", {"O"})

}  // namespace kova::cmd::commands
