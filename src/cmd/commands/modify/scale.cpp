#include "cmd/dialogue.hpp"
#include "edit/entity_copies.hpp"
#include "cmd/prompts/displacement.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

class ScaleTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        const Answer base = co_await ask.point("Specify base point:");
        if (!base.isPoint()) co_return;
        bool copy = false;
        for (;;) {
            const Answer answer = co_await ask.distance(
                "Specify scale factor or [Copy/Reference] <1>:", "Copy Reference", base.point, kPositive);
            if (answer.is("Copy")) {
                copy = true;
                message("Scaling a copy of the selected objects.");
                continue;
            }
            double factor = answer.numberOr(1.0);
            if (answer.is("Reference")) {
                const std::optional<double> ratio = co_await byReference(ask, base.point);
                if (!ratio) co_return;
                factor = *ratio;
            }
            apply(selected.ids, base.point, factor, copy);
            co_return;
        }
    }

private:
    Task<std::optional<double>> byReference(Ask& ask, math::Vector2 base) {
        const double from = co_await askReference(ask, document(), "Specify reference length <1>:", false, 1.0);
        const Answer to = co_await ask.distance("Specify new length or [Points] <1>:", "Points", base, kPositive);
        if (to.is("Points")) {
            const std::optional<double> length = co_await askByTwoPoints(ask, false);
            if (!length) co_return std::nullopt;
            co_return *length / from;
        }
        co_return to.numberOr(1.0) / from;
    }

    void apply(const std::vector<std::uint64_t>& ids, const math::Vector2& base, double factor, bool copy) {
        // A quotient of lengths may leave the range of numbers at either end.
        if (!(factor > 0.0) || !std::isfinite(factor)) return message("Invalid value.");
        if (!copy && factor == 1.0) return;
        const math::Matrix4 matrix = math::Matrix4::scaling_about(base, factor);
        const doc::GroupScope group(document(), "SCALE");
        if (copy)
            addCopies(document(), ids, matrix);
        else
            document().transformEntities(ids, matrix);
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Scale, "SCALE", "Scale", "Modify", {"SC"})

}  // namespace kova::cmd::commands
