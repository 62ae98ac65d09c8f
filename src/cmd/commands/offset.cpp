#include "engine/offset_entity.hpp"

#include "cmd/dialogue.hpp"
#include "cmd/drawing_aids.hpp"
#include "cmd/format.hpp"
#include "cmd/registry.hpp"
#include "cmd/step_group.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

/// OFFSET: parallels at a distance or through points, one object after the other. Erase and Layer hold for the program.
class OffsetTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (!co_await askDistance(ask)) co_return;
        StepGroup group(document(), "OFFSET");
        for (;;) {
            Ask::Request request;
            request.kind = Ask::Kind::Object;
            request.prompt = "Select object to offset or [Exit/Undo] <Exit>:";
            request.keywords = parseKeywords("Exit Undo");
            request.filter = engine::canOffset;
            request.refusal = "Cannot offset that object.";
            const Answer picked = co_await ask.request(std::move(request));
            if (picked.is("Undo")) {
                if (!group.drop()) message("Nothing to undo.");
                continue;
            }
            if (!picked.isObject()) co_return;
            if (!co_await askSides(ask, group, picked.id)) co_return;
        }
    }

private:
    static constexpr const char* kErase = "offsetErase";
    static constexpr const char* kCurrentLayer = "offsetCurrentLayer";

    bool erases() const { return remembered(document(), kErase, 0.0) != 0.0; }
    bool takesCurrentLayer() const { return remembered(document(), kCurrentLayer, 0.0) != 0.0; }

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
                remember(document(), kErase, chosen ? 1.0 : 0.0);
                continue;
            }
            if (answer.is("Layer")) {
                const char* prompt = takesCurrentLayer()
                                         ? "Enter layer option for offset objects [Current/Source] <Current>:"
                                         : "Enter layer option for offset objects [Current/Source] <Source>:";
                const Answer layer = co_await ask.keyword(prompt, "Current Source");
                if (!layer.isEnter()) remember(document(), kCurrentLayer, layer.is("Current") ? 1.0 : 0.0);
                continue;
            }
            if (answer.isNumber()) distance_ = answer.number;
            if (answer.isEnter()) distance_ = std::max(last, 0.0);
            if (answer.is("Through")) distance_ = 0.0;
            engine::setSysVar(drawing(), "OFFSETDIST", distance_ > 0.0 ? distance_ : -1.0);
            co_return true;
        }
    }

    /// The side or point for one object, or (Multiple) several. False: the command is to end.
    Task<bool> askSides(Ask& ask, StepGroup& group, std::uint64_t id) {
        bool multiple = false;
        for (;;) {
            std::string prompt = distance_ > 0.0 ? "Specify point on side to offset or [Exit/Multiple/Undo] <Exit>:"
                                                 : "Specify through point or [Exit/Multiple/Undo] <Exit>:";
            if (multiple) {
                prompt = distance_ > 0.0 ? "Specify point on side to offset or [Exit/Undo] <next object>:"
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
                continue;
            }
            engine::Entity* source = drawing().findById(id);
            if (source == nullptr) co_return true;
            const std::uint64_t made = offset(group, *source, side.point);
            if (!multiple) co_return true;
            if (made != 0) id = made;
        }
    }

    /// Adds the parallels towards a point. Gives the id of the first one, from which Multiple goes on; 0: none.
    std::uint64_t offset(StepGroup& group, engine::Entity& source, const Vector2& side) {
        const std::optional<double> through = engine::offsetDistanceTo(source, side);
        if (!through) {
            message("Requires a point off the object.");
            return 0;
        }
        const auto gap = static_cast<math::OffsetGap>(std::clamp(engine::sysVarInt(drawing(), "OFFSETGAPTYPE"), 0, 2));
        const double distance = distance_ > 0.0 ? std::copysign(distance_, *through) : *through;
        std::vector<std::unique_ptr<engine::Entity>> parallels = engine::offsetEntity(source, distance, gap);
        if (parallels.empty()) {
            message("No parallel at that offset.");
            return 0;
        }
        group.begin();
        std::uint64_t first = 0;
        for (std::unique_ptr<engine::Entity>& parallel : parallels) {
            if (takesCurrentLayer()) parallel->layer = drawing().currentLayer;
            const std::uint64_t id = document().addEntity(std::move(parallel)).id();
            if (first == 0) first = id;
        }
        if (erases()) document().removeEntity(source);
        return first;
    }

    double distance_ = 0.0;  ///< 0: through a point
};

}  // namespace

KOVA_TOOL_COMMAND(Offset, "OFFSET", "Offset", "Modify", {"O"})

}  // namespace kova::cmd::commands
