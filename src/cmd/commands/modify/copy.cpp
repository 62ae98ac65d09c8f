#include "cmd/dialogue.hpp"
#include "edit/entity_copies.hpp"
#include "cmd/prompts/displacement.hpp"
#include "cmd/registry.hpp"
#include "doc/step_group.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

/// What one array may add, so that a slip of the finger does not fill the memory.
constexpr std::size_t kMaxCopies = 1'000'000;

/// COPY: copies from a base point to one or (COPYMODE 0) several second points, each taken back by itself with
/// U, all of them one step of UNDO.
class CopyTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        ids_ = selected.ids;
        bool multiple = engine::sysVarInt(drawing(), "COPYMODE") == 0;
        Answer first;
        for (;;) {
            std::string prompt = "Specify base point or [Displacement/mOde";
            prompt += multiple ? "] <Displacement>:" : "/Multiple] <Displacement>:";
            first = co_await ask.point(std::move(prompt), "Displacement mOde Multiple");
            if (first.is("Multiple")) {
                multiple = true;  // for this time only
            } else if (first.is("mOde")) {
                multiple = co_await askMode(ask, multiple);
            } else {
                break;
            }
        }
        if (!first.isPoint()) {
            const Answer by = co_await ask.point("Specify displacement <0,0,0>:", {}, Vector2{});
            if (by.isPoint()) copy(displacementOf(drawing(), by.point), 1);
            co_return;
        }
        co_await copies(ask, first.point, multiple);
    }

private:
    /// How far the copies go, and how many in a row.
    struct Step {
        Vector2 by;
        int times = 1;
    };

    Task<bool> askMode(Ask& ask, bool multiple) {
        std::string prompt = "Enter a copy mode option [Single/Multiple] <";
        prompt += multiple ? "Multiple>:" : "Single>:";
        const Answer answer = co_await ask.keyword(std::move(prompt), "Single Multiple");
        if (answer.isEnter()) co_return multiple;
        const bool chosen = answer.is("Multiple");
        document().setVariable("COPYMODE", engine::SysVarValue(std::int32_t{chosen ? 0 : 1}));
        co_return chosen;
    }

    Dialogue copies(Ask& ask, Vector2 base, bool multiple) {
        bool any = false;
        StepGroup steps(document(), "COPY");
        for (;;) {
            const char* prompt = any ? "Specify second point or [Array/Exit/Undo] <Exit>:"
                                     : "Specify second point or [Array] <use first point as displacement>:";
            const char* keywords = any ? "Array Exit Undo" : "Array";
            const Answer second = co_await ask.point(prompt, keywords, base);
            if (second.is("Undo")) {
                if (!steps.drop()) message("Nothing to undo.");
                continue;
            }
            if (second.is("Exit") || (second.isEnter() && any)) co_return;
            if (second.isEnter()) {
                copy(displacementOf(drawing(), base), 1);
                co_return;
            }
            Step step;
            if (second.is("Array"))
                step = co_await array(ask, base);
            else
                step.by = second.point - base;
            if (step.times > 0 && fits(step.times)) {
                steps.begin();
                copy(step.by, step.times);
            }
            if (!multiple) co_return;
            any = true;
        }
    }

    /// A row of items, the original among them, to the second item or (Fit) to the last one.
    Task<Step> array(Ask& ask, Vector2 base) {
        const Answer number = co_await ask.integer("Enter number of items to array:", 2, 32767);
        Step step;
        step.times = 0;
        if (!number.isNumber()) co_return step;
        const int added = number.integer() - 1;
        bool fit = false;
        for (;;) {
            const char* prompt = fit ? "Specify second point or [Array]:" : "Specify second point or [Fit]:";
            const char* keywords = fit ? "Array" : "Fit";
            const Answer second = co_await ask.point(prompt, keywords, base);
            if (second.isEnter()) co_return step;
            if (second.isPoint()) {
                const Vector2 way = second.point - base;
                step.by = fit ? way / static_cast<double>(added) : way;
                step.times = added;
                co_return step;
            }
            fit = second.is("Fit");
        }
    }

    bool fits(int times) {
        if (times == 1 || ids_.size() <= kMaxCopies / static_cast<std::size_t>(times)) return true;
        message("Too many objects to array.");
        return false;
    }

    void copy(const Vector2& by, int times) {
        const doc::GroupScope group(document(), "COPY");
        for (int i = 1; i <= times; ++i)
            addCopies(document(), ids_, math::Matrix4::translation(by * static_cast<double>(i)));
    }

    std::vector<std::uint64_t> ids_;
};

}  // namespace

KOVA_TOOL_COMMAND(Copy, "COPY", "Copy", "Modify", {"CO", "CP"})

}  // namespace kova::cmd::commands
