#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/refusals.hpp"
#include "cmd/registry.hpp"
#include "engine/curves/break_line.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

/// BREAKLINE: a line with a zigzag in it, for parts that are not drawn to their end.
class BreakLineTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        message("Block = none, Size = " + lengthText(drawing(), size()) +
                ", Extension = " + lengthText(drawing(), extension()));
        Answer first;
        for (;;) {
            first = co_await ask.point("Specify first point for breakline or [Block/Size/Extension]:",
                                       "Block Size Extension");
            if (first.isPoint()) break;
            if (first.isEnter()) co_return;
            if (first.is("Block")) {
                message(needsDialog("Break Line"));
                co_return;
            }
            if (first.is("Size"))
                co_await askMeasure(ask, kSize, "Breakline symbol size", kPositive);
            else
                co_await askMeasure(ask, kExtension, "Breakline extension distance", kNotNegative);
        }
        Vector2 end;
        for (;;) {
            const Answer second = co_await ask.point("Specify second point for breakline:");
            if (!second.isPoint()) co_return;
            end = second.point;
            if (end != first.point) break;
            message("The points must be different.");
        }
        const Answer at = co_await ask.point("Specify location for break symbol <Midpoint>:");
        const Vector2 place = at.isPoint() ? at.point : first.point.lerp(end, 0.5);
        const double dimScale = engine::sysVarReal(drawing(), "DIMSCALE", 1.0);
        const double scale = dimScale > 0.0 ? dimScale : 1.0;
        const double symbol = size() * scale;
        auto line = engine::breakLine(first.point, end, place, symbol, extension() * scale);
        if (!line) {
            message("The points are too close together for a symbol of size " + lengthText(drawing(), symbol) + ".");
            co_return;
        }
        addNew(document(), std::move(line), "BREAKLINE");
    }

private:
    static constexpr const char* kSize = "breaklineSize";
    static constexpr const char* kExtension = "breaklineExtension";

    double size() const { return remembered(document(), kSize, 1.0); }
    double extension() const { return remembered(document(), kExtension, 1.0); }

    Dialogue askMeasure(Ask& ask, const char* name, std::string question, Range range) {
        const std::string last = lengthDefault(drawing(), remembered(document(), name, 1.0));
        const Answer answer = co_await ask.distance(withDefault(question, last), {}, {}, range);
        if (answer.isNumber()) remember(document(), name, answer.number);
    }
};

}  // namespace

KOVA_TOOL_COMMAND(BreakLine, "BREAKLINE", "Break Line", "Draw", {})

}  // namespace kova::cmd::commands
