#include "cmd/prompts/dimension_tool.hpp"
#include "edit/new_entities.hpp"
#include "cmd/registry.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd::commands {

namespace {

using engine::DimensionType;
using math::Vector2;

/// What DIMLINEAR and DIMALIGNED ask first: two origins, or an object that gives them.
class LengthTool : public DimensionTool {
protected:
    /// The origins; false: given up.
    Task<bool> askOrigins(Ask& ask) {
        const Answer first = co_await ask.point("Specify first extension line origin or <select object>:");
        if (first.isEnter()) {
            const bool found = co_await askObject(ask);
            co_return found;
        }
        dim_.def1 = first.point;
        for (;;) {
            const Answer second = co_await ask.point("Specify second extension line origin:", "", first.point);
            if (!second.isPoint()) co_return false;
            dim_.def2 = second.point;
            if (second.point != first.point) co_return true;
            message("The two points coincide.");
        }
    }

    /// A circle was picked here: its origins lie across it, as the direction asks.
    std::optional<engine::MeasuredArc> circle_;
    Vector2 circlePick_;

    /// Lays the origins across the circle, the second one in the direction of `angle`.
    void crossCircle(double angle) {
        const Vector2 arm = math::unitAt(angle) * circle_->radius;
        dim_.def1 = circle_->center - arm;
        dim_.def2 = circle_->center + arm;
        links_.clear();
        if (circleHandle_ == 0) return;
        links_.push_back({1, engine::LinkKind::OnCircle, circleHandle_, 0, math::normalizeAngle(angle + math::kPi)});
        links_.push_back({2, engine::LinkKind::OnCircle, circleHandle_, 0, math::normalizeAngle(angle)});
    }
    void finishAs(const char* label) {
        if (circle_)
            placeLinked(label, links_);
        else
            place(label, {1, 2});
    }

private:
    Task<bool> askObject(Ask& ask) {
        const Answer picked = co_await askDimensioned(ask, "Select object to dimension:", hasPiece);
        const auto piece = pieceAt(document(), picked);
        if (!piece) co_return false;
        dim_.def1 = piece->a;
        dim_.def2 = piece->b;
        ask.setLastPoint(piece->b);
        if (piece->full) {
            circle_ = piece->arc;
            circlePick_ = picked.point;
            circleHandle_ = piece->handle;
        }
        co_return true;
    }

    std::uint64_t circleHandle_ = 0;
    std::vector<engine::DimensionLink> links_;
};

class DimLinearTool final : public LengthTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        start(DimensionType::Rotated);
        const bool ready = co_await askOrigins(ask);
        if (!ready) co_return;
        for (;;) {
            const Answer at =
                co_await ask.point("Specify dimension line location or [Mtext/Text/Angle/Horizontal/Vertical/Rotated]:",
                                   "Mtext Text Angle Horizontal Vertical Rotated");
            if (at.isEnter()) co_return;
            if (at.isPoint()) {
                locate(at.point);
                break;
            }
            guessDirection();
            const bool taken = co_await takeTextOption(ask, at);
            if (taken) continue;
            if (at.is("ROTATED")) {
                const Answer angle = co_await ask.angle("Specify angle of dimension line <0>:");
                direct(angle.isNumber() ? worldDirection(angle, drawing()) : ucsRotation(drawing()));
                continue;
            }
            const bool horizontal = at.is("HORIZONTAL");
            direct(ucsRotation(drawing()) + (horizontal ? 0.0 : math::kPi / 2.0));
            const bool done = co_await askLine(ask);
            if (!done) co_return;
            break;
        }
        finishAs("DIMLINEAR");
    }

private:
    /// The location once the direction was named; false: given up.
    Task<bool> askLine(Ask& ask) {
        for (;;) {
            const Answer at =
                co_await ask.point("Specify dimension line location or [Mtext/Text/Angle]:", kTextOptions);
            if (at.isEnter()) co_return false;
            if (at.isPoint()) {
                locate(at.point);
                co_return true;
            }
            co_await takeTextOption(ask, at);
        }
    }

    void direct(double angle) {
        directed_ = true;
        dim_.linearRotation = angle;
        if (circle_) crossCircle(angle);
    }

    /// What the text options show as measured before a place was named: the horizontal length, where there is one.
    void guessDirection() {
        if (directed_ || circle_) return;
        const Vector2 way = dim_.def2 - dim_.def1;
        const bool upright = std::abs(way.dot(math::unitAt(ucsRotation(drawing())))) <= 1e-9 * way.length();
        dim_.linearRotation = ucsRotation(drawing()) + (upright ? math::kPi / 2.0 : 0.0);
    }

    void locate(const Vector2& p) {
        if (!directed_) direct(ucsRotation(drawing()) + (isHorizontal(p) ? 0.0 : math::kPi / 2.0));
        dim_.dimLine = p;
        takeUserText(p);
    }

    /// Beside the box of the two origins the line is vertical, above and below it horizontal.
    bool isHorizontal(const Vector2& p) const {
        const Vector2 x = math::unitAt(ucsRotation(drawing()));
        const auto beyond = [&](const Vector2& axis) {
            double low = std::min(dim_.def1.dot(axis), dim_.def2.dot(axis));
            double high = std::max(dim_.def1.dot(axis), dim_.def2.dot(axis));
            if (circle_) {
                low = circle_->center.dot(axis) - circle_->radius;
                high = low + 2.0 * circle_->radius;
            }
            return std::max({low - p.dot(axis), p.dot(axis) - high, 0.0});
        };
        if (!circle_) {
            // A length of nothing is never meant.
            const Vector2 way = dim_.def2 - dim_.def1;
            if (std::abs(way.dot(x)) <= 1e-9 * way.length()) return false;
            if (std::abs(way.dot(x.perpendicular())) <= 1e-9 * way.length()) return true;
        }
        return beyond(x) <= beyond(x.perpendicular());
    }

    bool directed_ = false;
};

class DimAlignedTool final : public LengthTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        start(DimensionType::Aligned);
        const bool ready = co_await askOrigins(ask);
        if (!ready) co_return;
        // Across a circle it runs from where that was picked.
        if (circle_) crossCircle((circle_->center - circlePick_).angle());
        for (;;) {
            const Answer at =
                co_await ask.point("Specify dimension line location or [Mtext/Text/Angle]:", kTextOptions);
            if (at.isEnter()) co_return;
            if (at.isPoint()) {
                dim_.dimLine = at.point;
                takeUserText(at.point);
                break;
            }
            co_await takeTextOption(ask, at);
        }
        finishAs("DIMALIGNED");
    }
};

}  // namespace

KOVA_TOOL_COMMAND(DimLinear, "DIMLINEAR", "Linear Dimension", "Annotate", {"DLI", "DIMLIN"})
KOVA_TOOL_COMMAND(DimAligned, "DIMALIGNED", "Aligned Dimension", "Annotate", {"DAL", "DIMALI"})

}  // namespace kova::cmd::commands
