#include "engine/entities/wipeout.hpp"

#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "cmd/pick_request.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/polyline.hpp"
#include "math/curves/polygon.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

bool isClosedPolyline(const engine::Entity& entity) {
    const auto* polyline = dynamic_cast<const engine::PolylineEntity*>(&entity);
    return polyline != nullptr && polyline->closed && !polyline->hasBulges() && polyline->vertices.size() > 2;
}

class WipeoutTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer first =
            co_await ask.point("Specify first point or [Frames/Polyline] <Polyline>:", "Frames Polyline");
        if (first.is("FRAMES")) co_return co_await askFrames(ask);
        if (!first.isPoint()) co_return co_await fromPolyline(ask);
        std::vector<Vector2> points{first.point};
        for (;;) {
            const std::size_t n = points.size();
            const Answer next = co_await ask.point(n == 1   ? "Specify next point:"
                                                   : n == 2 ? "Specify next point or [Undo]:"
                                                            : "Specify next point or [Close/Undo]:",
                                                   n == 1   ? ""
                                                   : n == 2 ? "Undo"
                                                            : "Close Undo",
                                                   points.back());
            if (next.isPoint()) {
                if (next.point != points.back()) points.push_back(next.point);
            } else if (next.is("UNDO")) {
                points.pop_back();
            } else {
                break;
            }
        }
        const doc::GroupScope group(document(), "WIPEOUT");
        add(std::move(points));
    }

private:
    Dialogue askFrames(Ask& ask) {
        const int mode = engine::sysVarInt(drawing(), "WIPEOUTFRAME", 1);
        std::string prompt = withDefault("Enter mode [ON/OFF/Display but not plot]", mode == 0   ? "OFF"
                                                                                     : mode == 1 ? "ON"
                                                                                                 : "Display");
        const Answer answer = co_await ask.keyword(std::move(prompt), "ON OFF Display");
        if (answer.isEnter()) co_return;
        document().setVariable("WIPEOUTFRAME", answer.is("OFF") ? 0 : answer.is("ON") ? 1 : 2);
    }

    Dialogue fromPolyline(Ask& ask) {
        PickRequest request;
        request.prompt = "Select a closed polyline:";
        request.usable = isClosedPolyline;
        const Answer picked = co_await askPick(ask, std::move(request));
        if (!picked.isObject()) co_return;
        const bool erase = co_await askYesNo(ask, "Erase polyline? [Yes/No] <No>:", false);
        auto* polyline = dynamic_cast<engine::PolylineEntity*>(drawing().findById(picked.id));
        if (polyline == nullptr) co_return;
        const doc::GroupScope group(document(), "WIPEOUT");
        add(polyline->vertices);
        if (erase) document().removeEntity(*polyline);
    }

    void add(std::vector<Vector2> points) {
        if (points.size() < 3 || !(math::area(points) > 0.0)) return message("Invalid input.");
        auto wipeout = std::make_unique<engine::WipeoutEntity>(std::move(points));
        applyCurrentValues(document(), *wipeout);
        document().addEntity(std::move(wipeout));
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Wipeout, "WIPEOUT", "Wipeout", "Draw")

}  // namespace kova::cmd::commands
