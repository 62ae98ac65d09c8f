#include "engine/entities/mline.hpp"

#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

constexpr const char* kJustifications[] = {"Top", "Zero", "Bottom"};

class MlineTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        for (;;) {
            const int justification = std::clamp(engine::sysVarInt(drawing(), "CMLJUST"), 0, 2);
            const double scale = engine::sysVarReal(drawing(), "CMLSCALE", 20.0);
            const Answer first =
                co_await ask.point("Specify start point or [Justification/Scale/STyle]:", "Justification Scale STyle");
            if (first.isPoint()) {
                points_.push_back(first.point);
                break;
            }
            if (first.is("JUSTIFICATION")) {
                std::string prompt =
                    withDefault("Enter justification type [Top/Zero/Bottom]", kJustifications[justification]);
                const Answer kind = co_await ask.keyword(std::move(prompt), "Top Zero Bottom");
                for (int i = 0; i < 3; ++i)
                    if (kind.is(kJustifications[i])) engine::setSysVar(drawing(), "CMLJUST", i);
            } else if (first.is("SCALE")) {
                std::string prompt = withDefault("Enter mline scale", lengthDefault(drawing(), scale));
                const Answer answer = co_await ask.number(std::move(prompt));
                if (answer.isNumber()) engine::setSysVar(drawing(), "CMLSCALE", answer.number);
            } else if (first.is("STYLE")) {
                const Answer name = co_await ask.text("Enter mline style name or [?]:", "?");
                if (name.is("?"))
                    message("Standard");
                else if (name.isText() && !engine::equalNoCase(trimmed(name.text), "Standard"))
                    message("Multiline style " + inQuotes(trimmed(name.text)) + " not found.");
            } else {
                co_return;
            }
        }
        bool closed = false;
        for (;;) {
            const std::size_t n = points_.size();
            const Answer next = co_await ask.point(n == 1   ? "Specify next point:"
                                                   : n == 2 ? "Specify next point or [Undo]:"
                                                            : "Specify next point or [Close/Undo]:",
                                                   n == 1   ? ""
                                                   : n == 2 ? "Undo"
                                                            : "Close Undo",
                                                   points_.back());
            if (next.isPoint()) {
                if (next.point != points_.back()) points_.push_back(next.point);
            } else if (next.is("UNDO")) {
                points_.pop_back();
            } else {
                closed = next.is("CLOSE");
                break;
            }
        }
        if (points_.size() < 2) co_return;
        auto mline = std::make_unique<engine::MLineEntity>();
        mline->vertices = points_;
        mline->closed = closed;
        mline->scale = engine::sysVarReal(drawing(), "CMLSCALE", 20.0);
        mline->justification =
            static_cast<engine::MLineJustification>(std::clamp(engine::sysVarInt(drawing(), "CMLJUST"), 0, 2));
        addNew(document(), std::move(mline), "MLINE");
    }

private:
    std::vector<Vector2> points_;
};

}  // namespace

KOVA_TOOL_COMMAND(Mline, "MLINE", "Multiline", "Draw", {"ML"})

}  // namespace kova::cmd::commands
