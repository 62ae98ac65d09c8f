#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "edit/entity_copies.hpp"
#include "cmd/registry.hpp"
#include "doc/step_group.hpp"

namespace kova::cmd::commands {

namespace {

using math::Matrix4;
using math::Vector2;

/// MOCORO: moves, copies, turns and scales the same objects about one base point. The base point goes where the objects
/// go; a copy stays where it was put.
class MocoroTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        ids_ = selected.ids;
        const Answer first = co_await ask.point("Base point:");
        if (!first.isPoint()) co_return;
        bases_.push_back(first.point);
        StepGroup group(document(), "MOCORO");
        for (;;) {
            const Answer answer = co_await ask.keyword("[Move/Copy/Rotate/Scale/Base pnt/Undo/eXit] <eXit>:",
                                                       "Move Copy Rotate Scale Base Undo eXit");
            if (answer.isEnter() || answer.is("eXit")) co_return;
            const Vector2 base = bases_.back();
            if (answer.is("Undo")) {
                if (!group.drop())
                    message("Nothing to undo.");
                else
                    bases_.pop_back();
            } else if (answer.is("Base")) {
                const Answer to = co_await ask.point("Base point:", {}, base);
                if (!to.isPoint()) continue;
                group.begin();
                bases_.push_back(to.point);
            } else if (answer.is("Rotate")) {
                const Answer to = co_await ask.angle("Second Point or Rotation angle:", {}, base);
                if (to.isNumber()) apply(group, Matrix4::rotation_about(base, turn(to)), base);
            } else if (answer.is("Scale")) {
                const Answer to = co_await ask.distance("Second Point or Scale factor:", {}, base, kPositive);
                if (to.isNumber()) apply(group, Matrix4::scaling_about(base, to.number), base);
            } else {
                const Answer to = co_await ask.point("Second point of displacement:", {}, base);
                if (!to.isPoint()) continue;
                const Matrix4 way = Matrix4::translation(to.point - base);
                if (answer.is("Move")) {
                    apply(group, way, to.point);
                    continue;
                }
                group.begin();
                addCopies(document(), ids_, way);
                bases_.push_back(base);
            }
        }
    }

private:
    /// A typed angle says how far to turn, a point where the UCS x axis is to lie.
    double turn(const Answer& answer) const {
        return isTyped(answer) ? includedAngle(answer, drawing()) : answer.number - ucsRotation(drawing());
    }

    void apply(StepGroup& group, const Matrix4& matrix, const Vector2& base) {
        group.begin();
        document().transformEntities(ids_, matrix);
        bases_.push_back(base);
    }

    std::vector<std::uint64_t> ids_;
    std::vector<Vector2> bases_;  ///< the base point before each step, and the one now
};

}  // namespace

KOVA_TOOL_COMMAND(Mocoro, "MOCORO", "Move Copy Rotate", "Modify")

}  // namespace kova::cmd::commands
