#include "engine/entities/circle.hpp"

#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "doc/pick/object_snap.hpp"
#include "doc/pick/picking.hpp"
#include "cmd/registry.hpp"
#include "cmd/prompts/text_or_point.hpp"
#include "engine/model/outline.hpp"
#include "math/curves/curves.hpp"
#include "math/kernels/tangent_circles.hpp"

namespace kova::cmd::commands {

namespace {

using math::TangentCircle;
using math::TangentCurve;
using math::Vector2;

/// Finds the straight line or circle in an entity's shape that lies nearest to a point.
class TangentSink final : public engine::OutlineSink {
public:
    explicit TangentSink(const Vector2& p) : p_(p) {}
    using OutlineSink::fill;
    using OutlineSink::stroke;

    void stroke(engine::PathView path, const engine::OutlineStyle&, const engine::StrokeOptions&) override {
        Vector2 from;
        for (const engine::PathElement& e : path) {
            offer(e, from);
            from = e.p;
        }
    }
    void fill(engine::PathView, const engine::OutlineStyle&, const engine::FillOptions&) override {}
    void text(const engine::TextRun&, const engine::OutlineStyle&) override {}
    void unbounded(const Vector2& base, const Vector2& direction, bool, const engine::OutlineStyle&) override {
        const double along = (p_ - base).dot(direction);
        take(p_.distance_to(base + direction * along), TangentCurve::line(base, base + direction));
    }

    const std::optional<TangentCurve>& curve() const { return curve_; }

private:
    void offer(const engine::PathElement& e, const Vector2& from) {
        using Kind = engine::PathElement::Kind;
        if (e.kind == Kind::Move || e.kind == Kind::Cubic) return;
        const bool arc = e.kind == Kind::Arc;
        const double radius = e.a.length();
        if (arc ? !(radius > 0.0) ||
                      !e.b.near_equal(e.a.perpendicular() * (e.a.cross(e.b) < 0.0 ? -1.0 : 1.0), 1e-9 * radius)
                : from == e.p)
            return;
        engine::PathElement move;
        move.p = from;
        const engine::PathElement pair[2] = {move, e};
        if (const auto place = engine::nearestPlace(pair, p_))
            take(place->distance, arc ? TangentCurve::circle(e.center, radius) : TangentCurve::line(from, e.p));
    }
    void take(double distance, const TangentCurve& curve) {
        if (curve_ && !(distance < distance_)) return;
        distance_ = distance;
        curve_ = curve;
    }

    Vector2 p_;
    double distance_ = 0.0;
    std::optional<TangentCurve> curve_;
};

std::optional<TangentCurve> tangentCurve(const engine::Entity& entity, const Vector2& p) {
    TangentSink sink(p);
    entity.emit(sink, engine::outlineStyle(entity));
    return sink.curve();
}

bool hasTangentCurve(const engine::Entity& entity) { return tangentCurve(entity, {}).has_value(); }

/// An object that the circle is to touch, and where it was picked.
struct Pick {
    Vector2 point;
    TangentCurve curve;
};

/// Of several circles the one that touches nearest to the picks; null: there is none.
const TangentCircle* nearestToPicks(const std::vector<TangentCircle>& circles, std::span<const Pick> picks) {
    const TangentCircle* best = nullptr;
    double least = 0.0;
    for (const TangentCircle& circle : circles) {
        double distance = 0.0;
        for (std::size_t i = 0; i < picks.size(); ++i) distance += circle.touch[i].distance_to(picks[i].point);
        if (best != nullptr && !(distance < least)) continue;
        best = &circle;
        least = distance;
    }
    return best;
}

class CircleTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer first =
            co_await ask.point("Specify center point for circle or [3P/2P/Ttr (tan tan radius)]:", "3P 2P Ttr TTT");
        if (first.isEnter()) co_return;
        if (first.is("3P")) co_return co_await threePoints(ask);
        if (first.is("2P")) co_return co_await twoPoints(ask);
        if (first.is("TTR")) co_return co_await tangentRadius(ask);
        if (first.is("TTT")) co_return co_await threeTangents(ask);
        const std::optional<double> radius = co_await askRadius(ask, first.point, true);
        if (radius) add(first.point, *radius);
    }

private:
    double lastRadius() const { return engine::sysVarReal(drawing(), "CIRCLERAD"); }

    std::string radiusPrompt(const char* what) const {
        const double last = lastRadius();
        return std::string(what) + (last > 0.0 ? " <" + lengthDefault(drawing(), last) + ">:" : ":");
    }

    /// A radius above 0; with a centre also as a point of the circle, or by its diameter. Nothing: given up.
    Task<std::optional<double>> askRadius(Ask& ask, std::optional<Vector2> center, bool diameter) {
        const double last = lastRadius();
        const char* keywords = diameter ? "Diameter" : "";
        std::string prompt =
            radiusPrompt(diameter ? "Specify radius of circle or [Diameter]" : "Specify radius of circle");
        Answer answer = co_await ask.distance(std::move(prompt), keywords, center, kPositive);
        double share = 1.0;
        if (answer.is("DIAMETER")) {
            std::string text = "Specify diameter of circle";
            text += last > 0.0 ? " <" + lengthDefault(drawing(), 2.0 * last) + ">:" : ":";
            answer = co_await ask.distance(std::move(text), {}, center, kPositive);
            share = 0.5;
        }
        if (answer.isNumber()) co_return answer.number* share;
        if (last > 0.0) co_return last;
        co_return std::nullopt;
    }

    /// A point of the circle as a circle without radius, or after TAN what the circle touches. Nothing: given up.
    Task<std::optional<Pick>> askOnCircle(Ask& ask, const char* prompt) {
        for (;;) {
            const Answer answer = co_await ask.text(prompt);
            if (!answer.isText()) co_return std::nullopt;
            std::string_view rest = trimmed(answer.text);
            const std::size_t blank = std::min(rest.find(' '), rest.size());
            const auto words = parseSnapWords(rest.substr(0, blank));
            const bool tangent = words && words->kinds == engine::snap::kTangent && !words->followsPointer;
            if (tangent) {
                rest = trimmed(rest.substr(blank));
                if (engine::equalNoCase(rest.substr(0, 3), "to ")) rest = trimmed(rest.substr(3));
                std::string pick(rest);
                if (pick.empty()) {
                    const Answer more = co_await ask.text("to");
                    if (!more.isText()) continue;
                    pick = more.text;
                }
                const PointOfText at = co_await pointOfText(ask, document(), pick, ask.lastPoint());
                const engine::Entity* entity = at.point ? pickEntity(document(), *at.point, hasTangentCurve) : nullptr;
                if (entity != nullptr) co_return Pick{*at.point, *tangentCurve(*entity, *at.point)};
                if (!at.told) message(at.point ? "No tangent found for specified point." : "Invalid input.");
                continue;
            }
            const PointOfText at = co_await pointOfText(ask, document(), answer.text, ask.lastPoint(), cursor());
            if (at.point) {
                ask.setLastPoint(*at.point);
                co_return Pick{*at.point, TangentCurve::circle(*at.point, 0.0)};
            }
            if (!at.told) message("Invalid input.");
        }
    }

    static bool isPlainPoint(const Pick& pick) { return !pick.curve.isLine && pick.curve.radius == 0.0; }

    Dialogue threePoints(Ask& ask) {
        const std::optional<Pick> a = co_await askOnCircle(ask, "Specify first point on circle:");
        if (!a) co_return;
        const std::optional<Pick> b = co_await askOnCircle(ask, "Specify second point on circle:");
        if (!b) co_return;
        for (;;) {
            const std::optional<Pick> c = co_await askOnCircle(ask, "Specify third point on circle:");
            if (!c) co_return;
            if (!isPlainPoint(*a) || !isPlainPoint(*b) || !isPlainPoint(*c)) {
                const Pick picks[] = {*a, *b, *c};
                addNearest(math::tangentCircles(a->curve, b->curve, c->curve), picks);
                co_return;
            }
            if (const auto center = math::circumcenter(a->point, b->point, c->point))
                co_return add(*center, center->distance_to(a->point));
            message("The three points lie on one line.");
        }
    }

    Dialogue twoPoints(Ask& ask) {
        const Answer a = co_await ask.point("Specify first end point of circle's diameter:");
        if (!a.isPoint()) co_return;
        for (;;) {
            const Answer b = co_await ask.point("Specify second end point of circle's diameter:");
            if (!b.isPoint()) co_return;
            if (b.point != a.point) co_return add((a.point + b.point) / 2.0, a.point.distance_to(b.point) / 2.0);
            message("The two points coincide.");
        }
    }

    Task<std::optional<Pick>> askTangent(Ask& ask, const char* prompt) {
        const Answer answer = co_await ask.object(prompt, {}, hasTangentCurve);
        const engine::Entity* entity = answer.isObject() ? drawing().findById(answer.id) : nullptr;
        if (entity == nullptr) co_return std::nullopt;
        co_return Pick{answer.point, *tangentCurve(*entity, answer.point)};
    }

    Dialogue tangentRadius(Ask& ask) {
        const std::optional<Pick> a = co_await askTangent(ask, "Specify point on object for first tangent of circle:");
        if (!a) co_return;
        const std::optional<Pick> b = co_await askTangent(ask, "Specify point on object for second tangent of circle:");
        if (!b) co_return;
        const std::optional<double> radius = co_await askRadius(ask, std::nullopt, false);
        if (!radius) co_return;
        const Pick picks[] = {*a, *b};
        addNearest(math::tangentCircles(a->curve, b->curve, *radius), picks);
    }

    Dialogue threeTangents(Ask& ask) {
        const std::optional<Pick> a = co_await askTangent(ask, "Specify point on object for first tangent of circle:");
        if (!a) co_return;
        const std::optional<Pick> b = co_await askTangent(ask, "Specify point on object for second tangent of circle:");
        if (!b) co_return;
        const std::optional<Pick> c = co_await askTangent(ask, "Specify point on object for third tangent of circle:");
        if (!c) co_return;
        const Pick picks[] = {*a, *b, *c};
        addNearest(math::tangentCircles(a->curve, b->curve, c->curve), picks);
    }

    void addNearest(const std::vector<TangentCircle>& circles, std::span<const Pick> picks) {
        if (const TangentCircle* circle = nearestToPicks(circles, picks))
            add(circle->center, circle->radius);
        else
            message("Circle does not exist.");
    }

    void add(const Vector2& center, double radius) {
        if (!center.is_finite() || !std::isfinite(radius)) return message("Circle does not exist.");
        auto circle = std::make_unique<engine::CircleEntity>(center, radius);
        applyCurrentValues(document(), *circle);
        engine::setSysVar(drawing(), "CIRCLERAD", radius);
        const doc::GroupScope group(document(), "CIRCLE");
        document().addEntity(std::move(circle));
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Circle, "CIRCLE", "Circle", "Draw", {"C"})

}  // namespace kova::cmd::commands
