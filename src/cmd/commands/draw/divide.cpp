#include "engine/curves/curve_ruler.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/pick_request.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/point.hpp"
#include "engine/model/outline.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

/// More marks than this are refused.
constexpr double kMaxMarks = 1e6;

/// What DIVIDE and MEASURE share: the curve, and points or blocks along it.
class MarkingTool : public DialogueTool {
protected:
    /// Asks for the curve; false when there is none.
    Task<bool> askCurve(Ask& ask, const char* prompt) {
        PickRequest request;
        request.prompt = prompt;
        request.usable = isCurve;
        request.refusal = "Cannot mark that object.";
        const Answer picked = co_await askPick(ask, std::move(request));
        const engine::Entity* entity = picked.isObject() ? drawing().findById(picked.id) : nullptr;
        if (entity == nullptr) co_return false;
        pick_ = picked.point;
        ruler_.emplace(*entity);
        co_return ruler_->length() > 0.0 && std::isfinite(ruler_->length());
    }

    /// Name and alignment of the block to insert; false when given up.
    Task<bool> askBlock(Ask& ask) {
        for (;;) {
            const Answer name = co_await ask.text("Enter name of block to insert:");
            if (!name.isText()) co_return false;
            const engine::Block* block = drawing().findBlock(engine::Name(typedName(name.text)));
            if (block != nullptr) {
                block_ = block->name;
                break;
            }
            message("Cannot find block \"" + typedName(name.text) + "\".");
        }
        align_ = co_await askYesNo(ask, "Align block with object? [Yes/No] <Y>:", true);
        co_return true;
    }

    void mark(double length) {
        const CurveRuler::Place place = ruler_->at(length);
        std::unique_ptr<engine::Entity> entity;
        if (block_.empty()) {
            entity = std::make_unique<engine::PointEntity>(place.point);
        } else {
            auto reference = std::make_unique<engine::BlockReferenceEntity>(block_, place.point);
            reference->rotation = align_ ? place.direction.angle() : ucsRotation(drawing());
            entity = std::move(reference);
        }
        applyCurrentValues(document(), *entity);
        document().addEntity(std::move(entity));
    }

    std::optional<CurveRuler> ruler_;
    Vector2 pick_;
    engine::Name block_;
    bool align_ = true;
};

class DivideTool final : public MarkingTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (!co_await askCurve(ask, "Select object to divide:")) co_return;
        Answer count = co_await ask.integer("Enter the number of segments or [Block]:", 2, 32767, "Block");
        if (count.is("BLOCK")) {
            if (!co_await askBlock(ask)) co_return;
            count = co_await ask.integer("Enter the number of segments:", 2, 32767);
        }
        if (!count.isNumber()) co_return;
        const doc::GroupScope group(document(), "DIVIDE");
        const int n = count.integer();
        for (int i = ruler_->closed() ? 0 : 1; i < n; ++i) mark(ruler_->length() * i / n);
    }
};

class MeasureTool final : public MarkingTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (!co_await askCurve(ask, "Select object to measure:")) co_return;
        for (;;) {
            Answer step = co_await ask.distance("Specify length of segment or [Block]:", "Block", {}, kPositive);
            if (step.is("BLOCK")) {
                if (!co_await askBlock(ask)) co_return;
                step = co_await ask.distance("Specify length of segment:", {}, {}, kPositive);
            }
            if (!step.isNumber()) co_return;
            const double length = ruler_->length();
            if (!(length / step.number <= kMaxMarks)) {
                message("Invalid value.");
                continue;
            }
            // From the end nearest to the pick; a closed curve from its start.
            const bool back = !ruler_->closed() &&
                              pick_.distance_to(ruler_->at(length).point) < pick_.distance_to(ruler_->at(0.0).point);
            const doc::GroupScope group(document(), "MEASURE");
            const auto count = static_cast<long>(std::floor(length / step.number * (1.0 + 1e-12)));
            for (long i = 1; i <= count; ++i) {
                const double along = std::min(static_cast<double>(i) * step.number, length);
                mark(back ? length - along : along);
            }
            co_return;
        }
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Divide, "DIVIDE", "Divide", "Draw", {"DIV"})
KOVA_TOOL_COMMAND(Measure, "MEASURE", "Measure", "Draw", {"ME"})

}  // namespace kova::cmd::commands
