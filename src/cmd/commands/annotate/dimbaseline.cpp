#include "cmd/prompts/dimension_tool.hpp"
#include "edit/new_entities.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/dimensions/dimension_geometry.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd::commands {

namespace {

using engine::DimensionEntity;
using engine::DimensionType;
using math::Vector2;

bool canContinue(const engine::Entity& entity) {
    const auto* dimension = dynamic_cast<const DimensionEntity*>(&entity);
    if (dimension == nullptr) return false;
    switch (dimension->kind()) {
        case DimensionType::Rotated:
        case DimensionType::Aligned:
        case DimensionType::Ordinate:
        case DimensionType::OrdinateX:
            return true;
        default:
            return dimension->isAngular() && engine::angularFrame(*dimension).has_value();
    }
}

/// DIMBASELINE and DIMCONTINUE: rows of dimensions that go on from one that stands. Those of a baseline share its first
/// origin and lie DIMDLI apart; continued ones stand in one line.
class RowTool : public DimensionTool {
protected:
    RowTool(const char* label, bool baseline) : label_(label), baseline_(baseline) {}

    Dialogue dialogue(Ask& ask) override {
        // The dimension made last, if a row can go on from it.
        if (DimensionEntity* last = lastDimension(document());
            last != nullptr && canContinue(*last) && document().isSelectable(*last))
            begin(*last, !baseline_);
        else {
            const bool chosen = co_await choose(ask);
            if (!chosen) co_return;
        }
        for (;;) {
            const bool ordinate = isOrdinate();
            const char* prompt = ordinate ? "Specify feature location or [Undo/Select] <Select>:"
                                          : "Specify a second extension line origin or [Undo/Select] <Select>:";
            const Answer answer = co_await ask.point(prompt, "Undo Select", origin_);
            if (answer.isPoint()) {
                addNext(answer.point);
            } else if (answer.is("UNDO")) {
                undoStep();
            } else {
                const bool chosen = co_await choose(ask);
                if (!chosen) co_return;
            }
        }
    }

private:
    bool isOrdinate() const {
        return dim_.kind() == DimensionType::Ordinate || dim_.kind() == DimensionType::OrdinateX;
    }
    bool isAngle() const { return dim_.isAngular(); }

    Task<bool> choose(Ask& ask) {
        const char* prompt = baseline_ ? "Select base dimension:" : "Select continued dimension:";
        const Answer picked = co_await ask.object(prompt, {}, canContinue);
        const auto* base =
            picked.isObject() ? dynamic_cast<const DimensionEntity*>(drawing().findById(picked.id)) : nullptr;
        if (base == nullptr) co_return false;
        // The extension line that lies nearer to the pick is the one to go on from.
        Vector2 first = base->def1;
        Vector2 second = base->def2;
        if (base->isAngular()) {
            const auto frame = engine::angularFrame(*base);
            first = frame->pointAt(frame->start);
            second = frame->pointAt(frame->end());
            if (frame->swapped) std::swap(first, second);
        } else {
            const auto frame = engine::linearFrame(*base);
            const auto distance = [&](const Vector2& from, const Vector2& to) {
                return picked.point.distance_to(math::closestOnSegment(picked.point, from, to));
            };
            begin(*base, distance(second, frame.p2) < distance(first, frame.p1));
            co_return true;
        }
        begin(*base, picked.point.distance_to(second) < picked.point.distance_to(first));
        co_return true;
    }

    /// Goes on from a dimension's first or second origin.
    void begin(const DimensionEntity& base, bool fromSecond) {
        steps_.clear();
        start(base.subType);
        if (engine::sysVarInt(drawing(), "DIMCONTINUEMODE", 1) != 0) {
            dim_.dimStyleName = base.dimStyleName;
            dim_.styleOverrides = base.styleOverrides;
            dim_.nameOverrides = base.nameOverrides;
            dim_.styleOverrides.erase("DIMUPT");
            dim_.textHeight = base.textHeight;
            dim_.arrowSize = base.arrowSize;
            dim_.extGap = base.extGap;
            dim_.extExtension = base.extExtension;
        }
        dim_.linearRotation = base.linearRotation;
        dim_.obliqueAngle = base.obliqueAngle;
        dim_.def3 = base.def3;
        dim_.dimLine = base.dimLine;
        dim_.def2 = base.def2;
        origin_ = fromSecond ? base.def2 : base.def1;
        if (isOrdinate()) return;
        if (isAngle()) {
            const auto frame = engine::angularFrame(base);
            dim_.subType = DimensionType::Angular3Point;
            dim_.def3 = frame->center;
            // The row runs on in the sense in which the first dimension was given.
            const bool fromEnd = fromSecond != frame->swapped;
            origin_ = originOf(*frame, fromEnd);
            // A baseline grows from its origin over the dimension, a row away from it.
            forward_ = baseline_ ? !fromEnd : fromEnd;
            step_ = Vector2{1, 0};
            return;
        }
        const engine::LinearFrame frame = engine::linearFrame(base);
        if (base.kind() == DimensionType::Aligned) {
            dim_.subType = DimensionType::Rotated;
            dim_.linearRotation = (base.def2 - base.def1).angle();
        }
        // Away from the origins.
        const Vector2 normal = frame.dir.perpendicular();
        step_ = (base.dimLine - base.def1).dot(normal) < 0.0 ? -normal : normal;
    }

    static Vector2 originOf(const engine::AngularFrame& frame, bool end) {
        const auto& known = end ? frame.origin2 : frame.origin1;
        return known ? *known : frame.pointAt(end ? frame.end() : frame.start);
    }

    double spacing() const {
        const engine::DimStyle style = styleInForce();
        return style.baselineSpacing * dimensionScale(drawing(), style);
    }

    void addNext(const Vector2& p) {
        if (!isOrdinate() && p == origin_) return message("The two points coincide.");
        Step step{0, dim_.def1, dim_.def2, dim_.dimLine, origin_};
        if (isOrdinate()) {
            // The leaders end in one line.
            const Vector2 axis = engine::ordinateAxis(dim_);
            dim_.def1 = p;
            dim_.def2 = p + axis * ((dim_.def2 - p).dot(axis));
        } else {
            dim_.def1 = origin_;
            dim_.def2 = p;
            if (isAngle())
                placeArc(p);
            else if (baseline_)
                dim_.dimLine += step_ * spacing();
        }
        if (isAngle())
            step.id = place(label_, {1, 2, 3});
        else if (isOrdinate())
            step.id = place(label_, {1});
        else
            step.id = place(label_, {1, 2});
        if (step.id == 0) return goBack(step);
        steps_.push_back(step);
        if (!baseline_) origin_ = p;
    }

    /// Puts the dimension line in the middle of the new arc, which turns the same way as the row.
    void placeArc(const Vector2& p) {
        const Vector2 center = dim_.def3;
        const double radius = dim_.dimLine.distance_to(center) + (baseline_ ? spacing() : 0.0);
        const double from = (origin_ - center).angle();
        const double to = (p - center).angle();
        const double middle =
            forward_ ? from + math::sweepAngle(from, to) / 2.0 : to + math::sweepAngle(to, from) / 2.0;
        dim_.dimLine = center + math::unitAt(middle) * radius;
    }

    /// A dimension of the row, and what the next one was to be made from before it.
    struct Step {
        std::uint64_t id;
        Vector2 def1;
        Vector2 def2;
        Vector2 dimLine;
        Vector2 origin;
    };

    void undoStep() {
        if (steps_.empty()) return message("Nothing to undo.");
        const Step step = steps_.back();
        steps_.pop_back();
        if (engine::Entity* entity = drawing().findById(step.id)) {
            const doc::GroupScope group(document(), label_);
            document().removeEntity(*entity);
        }
        goBack(step);
        repaint();
    }

    void goBack(const Step& step) {
        dim_.def1 = step.def1;
        dim_.def2 = step.def2;
        dim_.dimLine = step.dimLine;
        origin_ = step.origin;
    }

    const char* label_;
    bool baseline_;
    Vector2 origin_;
    Vector2 step_;
    bool forward_ = true;
    std::vector<Step> steps_;
};

class DimBaselineTool final : public RowTool {
public:
    DimBaselineTool() : RowTool("DIMBASELINE", true) {}
};

class DimContinueTool final : public RowTool {
public:
    DimContinueTool() : RowTool("DIMCONTINUE", false) {}
};

}  // namespace

KOVA_TOOL_COMMAND(DimBaseline, "DIMBASELINE", "Baseline Dimension", "Annotate", {"DBA", "DIMBASE"})
KOVA_TOOL_COMMAND(DimContinue, "DIMCONTINUE", "Continued Dimension", "Annotate", {"DCO", "DIMCONT"})

}  // namespace kova::cmd::commands
