#include "cmd/dialogue.hpp"
#include "edit/entity_copies.hpp"
#include "cmd/prompts/displacement.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

class RotateTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        const Answer base = co_await ask.point("Specify base point:");
        if (!base.isPoint()) co_return;
        bool copy = false;
        for (;;) {
            const Answer answer =
                co_await ask.angle("Specify rotation angle or [Copy/Reference] <0>:", "Copy Reference", base.point);
            if (answer.is("Copy")) {
                copy = true;
                message("Rotating a copy of the selected objects.");
                continue;
            }
            double angle = 0.0;
            if (answer.is("Reference")) {
                const std::optional<double> turned = co_await byReference(ask, base.point);
                if (!turned) co_return;
                angle = *turned;
            } else if (answer.isNumber()) {
                angle = turn(answer);
            }
            apply(selected.ids, math::Matrix4::rotation_about(base.point, angle), copy);
            co_return;
        }
    }

private:
    /// What an answer says about how far to turn: a typed angle is no direction, so ANGBASE does not count in it; a
    /// point's direction counts from the UCS x axis.
    double turn(const Answer& answer) const {
        const PointContext context = PointContext::of(drawing());
        if (parseAngleInput(answer.text, context)) return answer.number - context.angleBase;
        return answer.number - drawing().ucs.xAxis.angle();
    }

    Task<std::optional<double>> byReference(Ask& ask, math::Vector2 base) {
        // Both are directions: what they are counted from cancels out.
        const double zero = PointContext::of(drawing()).angleBase;
        const double from = co_await askReference(ask, document(), "Specify the reference angle <0>:", true, zero);
        const Answer to = co_await ask.angle("Specify the new angle or [Points] <0>:", "Points", base);
        if (to.is("Points")) {
            const std::optional<double> direction = co_await askByTwoPoints(ask, true);
            if (!direction) co_return std::nullopt;
            co_return *direction - from;
        }
        co_return to.numberOr(zero) - from;
    }

    void apply(const std::vector<std::uint64_t>& ids, const math::Matrix4& matrix, bool copy) {
        if (!copy && matrix == math::Matrix4::identity()) return;
        const doc::GroupScope group(document(), "ROTATE");
        if (copy)
            addCopies(document(), ids, matrix);
        else
            document().transformEntities(ids, matrix);
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Rotate, "ROTATE", "Rotate", "Modify", {"RO"})

}  // namespace kova::cmd::commands
