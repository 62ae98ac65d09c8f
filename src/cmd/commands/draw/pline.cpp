#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/polyline.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

/// PLINE: lines and arcs in one polyline, which enters the drawing when the command ends, by cancelling too.
class PlineTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer first = co_await ask.point("Specify start point:");
        if (!first.isPoint()) co_return;
        startWidth_ = endWidth_ = engine::sysVarReal(drawing(), "PLINEWID");
        message("Current line-width is " + lengthText(drawing(), endWidth_));
        vertices_.push_back({first.point});
        ask.onCancel([this] { commit(false); });
        bool arcs = false;
        while (!done_) {
            ask.setLastPoint(last());
            if (arcs)
                co_await askArc(ask, arcs);
            else
                co_await askLine(ask, arcs);
        }
    }

private:
    struct Vertex {
        Vector2 point;
        double bulge = 0.0;  ///< of the segment to the next vertex
        double startWidth = 0.0;
        double endWidth = 0.0;
    };

    const Vector2& last() const { return vertices_.back().point; }

    /// Direction in which the polyline arrives at its last vertex.
    Vector2 tangent() const {
        if (vertices_.size() < 2) {
            const auto before = lastCurveEnd(document());
            return before ? before->direction : drawing().ucs.xAxis;
        }
        const Vertex& from = vertices_[vertices_.size() - 2];
        const Vector2 chord = (last() - from.point).normalized();
        const Vector2 turn = Vector2::from_angle(2.0 * std::atan(from.bulge));
        return {chord.x * turn.x - chord.y * turn.y, chord.x * turn.y + chord.y * turn.x};
    }

    void addSegment(const Vector2& to, double bulge) {
        if (!to.is_finite() || !std::isfinite(bulge)) return message("Invalid input.");
        if (to == last()) return;  // a segment without length has no direction for what follows
        Vertex& from = vertices_.back();
        from.bulge = bulge;
        from.startWidth = startWidth_;
        from.endWidth = endWidth_;
        startWidth_ = endWidth_;
        vertices_.push_back({to});
        repaint();
    }

    void close(double bulge) {
        Vertex& from = vertices_.back();
        from.bulge = bulge;
        from.startWidth = startWidth_;
        from.endWidth = endWidth_;
        commit(true);
    }

    void undoSegment() {
        if (vertices_.size() < 2) return message("All segments already undone.");
        vertices_.pop_back();
        startWidth_ = vertices_.back().startWidth;
        endWidth_ = vertices_.back().endWidth;
        repaint();
    }

    void commit(bool closed) {
        done_ = true;
        if (vertices_.size() < 2) return;
        auto polyline = std::make_unique<engine::PolylineEntity>();
        for (const Vertex& v : vertices_) polyline->addVertex(v.point, v.bulge, v.startWidth, v.endWidth);
        polyline->closed = closed;
        polyline->ltgen = engine::sysVarInt(drawing(), "PLINEGEN") != 0;
        addNew(document(), std::move(polyline), "PLINE");
    }

    Dialogue askLine(Ask& ask, bool& arcs) {
        const bool closable = vertices_.size() > 1;
        const Answer answer =
            co_await ask.point(closable ? "Specify next point or [Arc/Close/Halfwidth/Length/Undo/Width]:"
                                        : "Specify next point or [Arc/Halfwidth/Length/Undo/Width]:",
                               closable ? "Arc Close Halfwidth Length Undo Width" : "Arc Halfwidth Length Undo Width");
        if (answer.isEnter())
            commit(false);
        else if (answer.isPoint())
            addSegment(answer.point, 0.0);
        else if (answer.is("ARC"))
            arcs = true;
        else if (answer.is("CLOSE"))
            close(0.0);
        else if (answer.is("UNDO"))
            undoSegment();
        else if (answer.is("LENGTH"))
            co_await askLength(ask);
        else
            co_await askWidths(ask, answer.is("HALFWIDTH"));
    }

    Dialogue askLength(Ask& ask) {
        const Answer length = co_await ask.distance("Specify length of line:", {}, last());
        if (length.isNumber()) addSegment(last() + tangent() * length.number, 0.0);
    }

    Dialogue askWidths(Ask& ask, bool half) {
        const double share = half ? 2.0 : 1.0;
        std::string question = withDefault(half ? "Specify starting half-width" : "Specify starting width",
                                           lengthDefault(drawing(), startWidth_ / share));
        const Answer start = co_await ask.distance(std::move(question), {}, last(), kNotNegative);
        const double from = start.isNumber() ? start.number * share : startWidth_;
        question = withDefault(half ? "Specify ending half-width" : "Specify ending width",
                               lengthDefault(drawing(), from / share));
        const Answer end = co_await ask.distance(std::move(question), {}, last(), kNotNegative);
        startWidth_ = from;
        endWidth_ = end.isNumber() ? end.number * share : from;
        engine::setSysVar(drawing(), "PLINEWID", endWidth_);
    }

    Dialogue askArc(Ask& ask, bool& arcs) {
        const bool closable = vertices_.size() > 1;
        const Answer answer = co_await ask.point(
            closable
                ? "Specify endpoint of arc or [Angle/CEnter/CLose/Direction/Halfwidth/Line/Radius/Second "
                  "pt/Undo/Width]:"
                : "Specify endpoint of arc or [Angle/CEnter/Direction/Halfwidth/Line/Radius/Second pt/Undo/Width]:",
            closable ? "Angle CEnter CLose Direction Halfwidth Line Radius Second Undo Width"
                     : "Angle CEnter Direction Halfwidth Line Radius Second Undo Width");
        if (answer.isEnter())
            commit(false);
        else if (answer.isPoint())
            addSegment(answer.point, math::bulgeFromTangent(last(), tangent(), answer.point));
        else if (answer.is("LINE"))
            arcs = false;
        else if (answer.is("CLOSE"))
            close(math::bulgeFromTangent(last(), tangent(), vertices_.front().point));
        else if (answer.is("UNDO"))
            undoSegment();
        else if (answer.is("ANGLE"))
            co_await arcByAngle(ask);
        else if (answer.is("CENTER"))
            co_await arcByCenter(ask);
        else if (answer.is("DIRECTION"))
            co_await arcByDirection(ask);
        else if (answer.is("RADIUS"))
            co_await arcByRadius(ask);
        else if (answer.is("SECOND"))
            co_await arcBySecond(ask);
        else
            co_await askWidths(ask, answer.is("HALFWIDTH"));
    }

    /// An included angle other than 0, less than a full turn. Nothing: Enter.
    Task<std::optional<double>> askIncluded(Ask& ask) {
        for (;;) {
            const Answer answer = co_await ask.angle("Specify included angle:", {}, last());
            if (!answer.isNumber()) co_return std::nullopt;
            const double angle = includedAngle(answer, drawing());
            if (angle != 0.0 && std::abs(angle) < math::kTwoPi) co_return angle;
            message("Invalid value.");
        }
    }

    Dialogue arcByAngle(Ask& ask) {
        const std::optional<double> angle = co_await askIncluded(ask);
        if (!angle) co_return;
        const Answer end = co_await ask.point("Specify endpoint of arc or [CEnter/Radius]:", "CEnter Radius", last());
        if (end.isPoint()) {
            addSegment(end.point, math::bulgeFromSweep(*angle));
        } else if (end.is("CENTER")) {
            const Answer center = co_await ask.point("Specify center point of arc:", {}, last());
            if (center.isPoint()) addAround(center.point, *angle);
        } else if (end.is("RADIUS")) {
            const Answer radius = co_await ask.distance("Specify radius of arc:", {}, last(), kPositive);
            if (radius.isNumber()) co_await arcAlongChord(ask, radius.number, *angle);
        }
    }

    /// An arc about a centre from the last point.
    void addAround(const Vector2& center, double angle) {
        addSegment(math::Matrix4::rotation_about(center, angle).transform_point(last()), math::bulgeFromSweep(angle));
    }

    Dialogue arcAlongChord(Ask& ask, double radius, double angle) {
        std::string question =
            withDefault("Specify direction of chord for arc", angleText(drawing(), tangent().angle()));
        const Answer answer = co_await ask.angle(std::move(question), {}, last());
        const double direction = answer.isNumber() ? worldDirection(answer, drawing()) : tangent().angle();
        const double chord = 2.0 * radius * std::sin(std::abs(angle) / 2.0);
        addSegment(last() + math::unitAt(direction) * chord, math::bulgeFromSweep(angle));
    }

    Dialogue arcByCenter(Ask& ask) {
        const Answer center = co_await ask.point("Specify center point of arc:", {}, last());
        if (!center.isPoint() || center.point == last()) co_return;
        const Vector2 arm = last() - center.point;
        for (;;) {
            const Answer end = co_await ask.point("Specify endpoint of arc or [Angle/Length]:", "Angle Length", last());
            if (end.isPoint()) {
                const double sweep = math::sweepAngle(arm.angle(), (end.point - center.point).angle());
                if (sweep < math::kTwoPi) co_return addAround(center.point, sweep);
                message("Invalid input.");
            } else if (end.is("ANGLE")) {
                const std::optional<double> angle = co_await askIncluded(ask);
                if (angle) addAround(center.point, *angle);
                co_return;
            } else if (end.is("LENGTH")) {
                const Answer chord = co_await ask.distance("Specify length of chord:", {}, last());
                if (!chord.isNumber()) co_return;
                const double half = std::abs(chord.number) / (2.0 * arm.length());
                if (half > 0.0 && half <= 1.0) {
                    const double sweep = 2.0 * std::asin(half);
                    co_return addAround(center.point, chord.number > 0.0 ? sweep : math::kTwoPi - sweep);
                }
                message("Invalid value.");
            } else {
                co_return;
            }
        }
    }

    Dialogue arcByDirection(Ask& ask) {
        const Answer direction =
            co_await ask.angle("Specify the tangent direction for the start point of arc:", {}, last());
        if (!direction.isNumber()) co_return;
        const Vector2 tangent = math::unitAt(worldDirection(direction, drawing()));
        const Answer end = co_await ask.point("Specify endpoint of the arc:", {}, last());
        if (end.isPoint()) addSegment(end.point, math::bulgeFromTangent(last(), tangent, end.point));
    }

    Dialogue arcByRadius(Ask& ask) {
        Range range;
        range.nonZero = true;
        const Answer radius = co_await ask.distance("Specify radius of arc:", {}, last(), range);
        if (!radius.isNumber()) co_return;
        const double r = std::abs(radius.number);
        for (;;) {
            const Answer end = co_await ask.point("Specify endpoint of arc or [Angle]:", "Angle", last());
            if (end.is("ANGLE")) {
                const std::optional<double> angle = co_await askIncluded(ask);
                if (angle) co_await arcAlongChord(ask, r, *angle);
                co_return;
            }
            if (!end.isPoint()) co_return;
            const double half = last().distance_to(end.point) / (2.0 * r);
            if (half > 0.0 && half <= 1.0 + 1e-12) {
                // A negative radius asks for the longer of the two arcs.
                const double sweep = 2.0 * std::asin(std::min(half, 1.0));
                co_return addSegment(end.point,
                                     math::bulgeFromSweep(radius.number > 0.0 ? sweep : math::kTwoPi - sweep));
            }
            message("Invalid input.");
        }
    }

    Dialogue arcBySecond(Ask& ask) {
        const Answer through = co_await ask.point("Specify second point on arc:", {}, last());
        if (!through.isPoint()) co_return;
        const Answer end = co_await ask.point("Specify end point of arc:");
        if (end.isPoint()) addSegment(end.point, math::bulgeThrough(last(), through.point, end.point));
    }

    std::vector<Vertex> vertices_;
    double startWidth_ = 0.0;
    double endWidth_ = 0.0;
    bool done_ = false;
};

}  // namespace

KOVA_TOOL_COMMAND(Pline, "PLINE", "Polyline", "Draw", {"PL"})

}  // namespace kova::cmd::commands
