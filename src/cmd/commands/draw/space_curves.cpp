#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "cmd/prompts/space_point.hpp"
#include "engine/entities/face3d.hpp"
#include "engine/entities/polyline3d.hpp"
#include "engine/entities/spline.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;
using math::Vector3;

/// 3DFACE: faces with three or four corners in space, each from the last edge of the one before.
class Face3dTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        for (int i = 0; i < 2; ++i)
            if (!co_await askCorner(ask, i)) co_return;
        for (;;) {
            if (!co_await askCorner(ask, 2)) co_return;
            if (!co_await askCorner(ask, 3)) {
                corners_[3] = corners_[2];
                hidden_[3] = false;
            }
            add();
            // The next face begins with the last edge.
            const bool triangle = corners_[3] == corners_[2];
            corners_[0] = corners_[triangle ? 1 : 2];
            corners_[1] = corners_[triangle ? 2 : 3];
            hidden_[0] = false;
            hidden_[1] = false;
        }
    }

private:
    Task<bool> askCorner(Ask& ask, int i) {
        const char* prompts[] = {"Specify first point or [Invisible]:", "Specify second point or [Invisible]:",
                                 "Specify third point or [Invisible] <exit>:",
                                 "Specify fourth point or [Invisible] <create three-sided face>:"};
        const auto index = static_cast<std::size_t>(i);
        hidden_[index] = false;
        for (;;) {
            const Answer answer = co_await ask.point(prompts[index], "Invisible");
            if (answer.is("INVISIBLE")) {
                hidden_[index] = true;
                continue;
            }
            if (!answer.isPoint()) co_return false;
            corners_[index] = spacePoint(answer, lastZ_, drawing());
            lastZ_ = corners_[index].z;
            co_return true;
        }
    }

    void add() {
        auto face = std::make_unique<engine::Face3DEntity>();
        face->corners = corners_;
        for (int i = 0; i < 4; ++i)
            if (hidden_[static_cast<std::size_t>(i)]) face->edgeFlags |= 1 << i;
        document().applyCurrentProperties(*face);
        const doc::GroupScope group(document(), "3DFACE");
        document().addEntity(std::move(face));
    }

    std::array<Vector3, 4> corners_;
    std::array<bool, 4> hidden_{};
    double lastZ_ = 0.0;
};

/// 3DPOLY: straight segments in space; what was drawn is kept when the command is cancelled.
class Poly3dTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer first = co_await ask.point("Specify start point of polyline:");
        if (!first.isPoint()) co_return;
        points_.push_back(spacePoint(first, 0.0, drawing()));
        ask.onCancel([this] { commit(false); });
        for (;;) {
            const std::size_t n = points_.size();
            const Answer next = co_await ask.point(
                n < 3 ? "Specify endpoint of line or [Undo]:" : "Specify endpoint of line or [Close/Undo]:",
                n < 3 ? "Undo" : "Close Undo", points_.back().xy());
            if (next.isPoint()) {
                points_.push_back(spacePoint(next, points_.back().z, drawing()));
            } else if (next.is("UNDO")) {
                if (n > 1)
                    points_.pop_back();
                else
                    message("All segments already undone.");
            } else {
                co_return commit(next.is("CLOSE"));
            }
        }
    }

private:
    void commit(bool closed) {
        if (points_.size() < 2) return;
        auto polyline = std::make_unique<engine::Polyline3DEntity>(std::move(points_), closed);
        points_.clear();
        document().applyCurrentProperties(*polyline);
        const doc::GroupScope group(document(), "3DPOLY");
        document().addEntity(std::move(polyline));
    }

    std::vector<Vector3> points_;
};

/// HELIX: a spline that winds up round an axis, and remembers that it is one.
class HelixTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        turns_ = remembered(document(), "helixTurns", turns_);
        ccw_ = remembered(document(), "helixClockwise", 0.0) == 0.0;
        message("Number of turns = " + lengthText(drawing(), turns_) + (ccw_ ? "   Twist=CCW" : "   Twist=CW"));
        const Answer center = co_await ask.point("Specify center point of base:");
        if (!center.isPoint()) co_return;
        base_ = spacePoint(center, 0.0, drawing());
        const double last = remembered(document(), "helixRadius", 1.0);
        const std::optional<double> bottom = co_await askRadius(ask, "base", last);
        if (!bottom) co_return;
        baseRadius_ = *bottom;
        remember(document(), "helixRadius", baseRadius_);
        const std::optional<double> top = co_await askRadius(ask, "top", baseRadius_);
        if (!top) co_return;
        topRadius_ = *top;
        if (!(baseRadius_ > 0.0) && !(topRadius_ > 0.0)) co_return message("Invalid value.");
        co_await askHeight(ask);
    }

private:
    /// Bounds of what is computed for one helix.
    static constexpr double kMaxTurns = 500.0;
    static constexpr int kPiecesPerTurn = 16;

    Task<std::optional<double>> askRadius(Ask& ask, const char* which, double fallback) {
        std::string prompt =
            withDefault("Specify " + std::string(which) + " radius or [Diameter]", lengthDefault(drawing(), fallback));
        Answer answer = co_await ask.distance(std::move(prompt), "Diameter", base_.xy(), kNotNegative);
        if (answer.isEnter()) co_return fallback;
        if (answer.isNumber()) {
            // A point also tells where the curve begins.
            if (!isTyped(answer) && answer.number > 0.0) start_ = (answer.point - base_.xy()).angle();
            co_return answer.number;
        }
        prompt = withDefault("Specify diameter", lengthDefault(drawing(), 2.0 * fallback));
        answer = co_await ask.distance(std::move(prompt), {}, base_.xy(), kNotNegative);
        co_return answer.isNumber() ? answer.number / 2.0 : fallback;
    }

    Dialogue askHeight(Ask& ask) {
        double height = remembered(document(), "helixHeight", 1.0);
        std::optional<double> pitch;
        for (;;) {
            std::string prompt = withDefault("Specify helix height or [Axis endpoint/Turns/turn Height/tWist]",
                                             lengthDefault(drawing(), height));
            const Answer answer = co_await ask.distance(std::move(prompt), "Axis Turns Height tWist", base_.xy());
            if (answer.isEnter() || answer.isNumber()) {
                height = answer.numberOr(height);
                if (pitch && *pitch > 0.0) turns_ = std::abs(height) / *pitch;
                if (!(turns_ > 0.0) || turns_ > kMaxTurns) {
                    message("Invalid value.");
                    continue;
                }
                remember(document(), "helixHeight", height);
                co_return add(height);
            }
            if (answer.is("AXIS")) {
                const Answer end = co_await ask.point("Specify axis endpoint:", {}, base_.xy());
                if (!end.isPoint()) co_return;
                const Vector3 axis = spacePoint(end, base_.z, drawing()) - base_;
                const double length = axis.length();
                if (!(length > 0.0) || !std::isfinite(length)) {
                    message("The two points coincide.");
                    continue;
                }
                if (pitch && *pitch > 0.0) turns_ = std::clamp(length / *pitch, 1e-6, kMaxTurns);
                remember(document(), "helixHeight", length);
                if (axis.x == 0.0 && axis.y == 0.0) co_return add(axis.z);
                co_return add(length, axis / length);
            }
            if (answer.is("TURNS")) {
                Range range;
                range.minimum = 1e-6;
                range.maximum = kMaxTurns;
                prompt = withDefault("Enter number of turns", lengthDefault(drawing(), turns_));
                const Answer count = co_await ask.number(std::move(prompt), {}, range);
                turns_ = count.numberOr(turns_);
                pitch.reset();
            } else if (answer.is("HEIGHT")) {
                prompt =
                    withDefault("Specify distance between turns", lengthDefault(drawing(), std::abs(height) / turns_));
                const Answer step = co_await ask.distance(std::move(prompt), {}, base_.xy(), kPositive);
                if (step.isNumber()) pitch = step.number;
            } else {
                const Answer twist = co_await ask.keyword(ccw_ ? "Enter twist direction of helix [CW/CCW] <CCW>:"
                                                               : "Enter twist direction of helix [CW/CCW] <CW>:",
                                                          "CW CCW");
                if (!twist.isEnter()) ccw_ = twist.is("CCW");
            }
        }
    }

    /// Upright, or about a slanting axis.
    void add(double height, const std::optional<Vector3>& axis = {}) {
        auto spline = std::make_unique<engine::SplineEntity>();
        const int count = std::max(1, static_cast<int>(std::ceil(turns_ * kPiecesPerTurn)));
        const double total = turns_ * math::kTwoPi * (ccw_ ? 1.0 : -1.0);
        const auto place = [&](double share) {
            const double r = baseRadius_ + (topRadius_ - baseRadius_) * share;
            return base_.xy() + r * math::unitAt(start_ + total * share);
        };
        const auto slope = [&](double share) {
            const double r = baseRadius_ + (topRadius_ - baseRadius_) * share;
            const Vector2 d = math::unitAt(start_ + total * share);
            return d * (topRadius_ - baseRadius_) + d.perpendicular() * (r * total);
        };
        // Cubics with the helix's own points and tangents; z grows evenly.
        const double third = 1.0 / (3.0 * count);
        const auto put = [&](const Vector2& p, double share) {
            spline->controlPoints.push_back(p);
            spline->controlZ.push_back(base_.z + height * share);
        };
        put(place(0.0), 0.0);
        spline->knots.assign(4, 0.0);
        for (int i = 0; i < count; ++i) {
            const double from = static_cast<double>(i) / count;
            const double to = static_cast<double>(i + 1) / count;
            put(place(from) + slope(from) * third, from + third);
            put(place(to) - slope(to) * third, to - third);
            put(place(to), to);
            spline->knots.insert(spline->knots.end(), 3, to);
        }
        spline->knots.push_back(1.0);
        for (const Vector2& p : spline->controlPoints)
            if (!p.is_finite() || !std::isfinite(height)) return message("Invalid input.");
        engine::HelixData data;
        data.axisBase = base_;
        data.start = Vector3(place(0.0), base_.z);
        data.axis = {0, 0, height < 0.0 ? -1.0 : 1.0};
        data.topRadius = topRadius_;
        data.turns = turns_;
        data.turnHeight = std::abs(height) / turns_;
        data.ccw = ccw_;
        spline->helix = data;
        if (axis) {
            const auto moved = [](const Vector3& by) { return math::Matrix4::translation(by.x, by.y, by.z); };
            spline->transform(moved(base_) * math::Matrix4::object_to_world(*axis) * moved(-base_));
        }
        remember(document(), "helixTurns", turns_);
        remember(document(), "helixClockwise", ccw_ ? 0.0 : 1.0);
        document().applyCurrentProperties(*spline);
        const doc::GroupScope group(document(), "HELIX");
        document().addEntity(std::move(spline));
    }

    Vector3 base_;
    double baseRadius_ = 1.0;
    double topRadius_ = 1.0;
    double start_ = 0.0;
    double turns_ = 3.0;
    bool ccw_ = true;
};

}  // namespace

KOVA_TOOL_COMMAND(Face3d, "3DFACE", "3D Face", "Draw", {"3F"})
KOVA_TOOL_COMMAND(Poly3d, "3DPOLY", "3D Polyline", "Draw", {"3P"})
KOVA_TOOL_COMMAND(Helix, "HELIX", "Helix", "Draw")

}  // namespace kova::cmd::commands
