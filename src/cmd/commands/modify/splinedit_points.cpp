// The sub-dialogues of SPLINEDIT. The tolerance of the fit counts while the fit data are edited; files have no place
// for it, and the curve keeps the shape that it gave.
#include "cmd/commands/modify/splinedit.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"

namespace kova::cmd::commands {

using engine::SplineEntity;
using engine::SplineFit;
using math::Vector2;

namespace {

std::size_t nearestTo(const std::vector<Vector2>& points, const Vector2& p) {
    std::size_t best = 0;
    for (std::size_t i = 1; i < points.size(); ++i)
        if (points[i].distance_to(p) < points[best].distance_to(p)) best = i;
    return best;
}

}  // namespace

SplineEntity* SplineEditor::spline() const { return dynamic_cast<SplineEntity*>(document_.drawing().findById(id_)); }

bool SplineEditor::change(const std::function<bool(SplineEntity&)>& edit) {
    if (spline() == nullptr) return false;
    bool done = false;
    group_.begin();
    document_.modifyEntity(*spline(), [&](engine::Entity& e) { done = edit(static_cast<SplineEntity&>(e)); });
    if (!done) group_.drop();
    return done;
}

std::optional<SplineFit> SplineEditor::fit() const {
    if (spline() == nullptr) return {};
    std::optional<SplineFit> fit = engine::splineFit(*spline());
    if (fit) fit->tolerance = tolerance_;
    return fit;
}

bool SplineEditor::applyFit(SplineFit fit) {
    return change([&](SplineEntity& target) { return engine::applySplineFit(target, std::move(fit)); });
}

std::vector<Vector2> SplineEditor::points(bool fits) const {
    if (spline() == nullptr) return {};
    if (fits) return spline()->fitPoints;
    std::vector<Vector2> all = spline()->curve().points;
    all.resize(engine::splineVertexCount(*spline()));
    return all;
}

void SplineEditor::tell(Ask& ask, bool fits) const {
    const std::vector<Vector2> all = points(fits);
    if (marker_ < all.size())
        ask.message((fits ? "Fit point " : "Control vertex ") + std::to_string(marker_ + 1) + " at " +
                    pointDefault(document_.drawing(), all[marker_]));
}

Task<bool> SplineEditor::walk(Ask& ask, const Answer& answer, bool fits) {
    const std::vector<Vector2> all = points(fits);
    if (all.empty()) co_return false;
    if (answer.is("Select")) {
        const char* prompt = fits ? "Specify fit point <exit>:" : "Specify control vertex <exit>:";
        const Answer at = co_await ask.point(prompt);
        if (at.isPoint()) marker_ = nearestTo(all, at.point);
        co_return true;
    }
    if (answer.is("Next")) forward_ = true;
    if (answer.is("Previous")) forward_ = false;
    if (!answer.isEnter() && !answer.is("Next") && !answer.is("Previous")) co_return false;
    marker_ = (marker_ + (forward_ ? 1 : all.size() - 1)) % all.size();
    co_return true;
}

// Fit data -----------------------------------------------------------------------------------------------

Dialogue SplineEditor::fitData(Ask& ask) {
    for (;;) {
        const auto data = fit();
        if (!data) co_return ask.message("The spline has no fit data.");
        std::string prompt = "Enter a fit data option [Add/";
        prompt += data->closed ? "Open" : "Close";
        prompt += "/Delete/Kink/Move/Purge/Tangents/toLerance/eXit] <eXit>:";
        const Answer answer =
            co_await ask.keyword(std::move(prompt), "Add Open Close Delete Kink Move Purge Tangents toLerance eXit");
        if (answer.isEnter() || answer.is("eXit")) co_return;
        if (answer.is("Add")) {
            co_await addFit(ask);
        } else if (answer.is("Close") || answer.is("Open")) {
            const bool close = answer.is("Close");
            const bool done = change([close](SplineEntity& s) { return engine::setSplineClosed(s, close); });
            if (!done) ask.message("A closed spline needs at least three points.");
        } else if (answer.is("Delete")) {
            co_await removePoints(ask, true);
        } else if (answer.is("Kink")) {
            co_await onCurve(ask, true);
        } else if (answer.is("Move")) {
            co_await move(ask, true);
        } else if (answer.is("Purge")) {
            change([](SplineEntity& s) {
                s.fitPoints.clear();
                return true;
            });
            co_return;
        } else if (answer.is("Tangents")) {
            co_await tangents(ask);
        } else {
            const Answer value = co_await ask.distance(
                withDefault("Enter fit tolerance", lengthDefault(document_.drawing(), tolerance_)), {}, {},
                kNotNegative);
            if (!value.isNumber()) continue;
            const double before = std::exchange(tolerance_, value.number);
            if (applyFit(*fit())) continue;
            tolerance_ = before;
            ask.message("Too many fit points for a tolerance.");
        }
    }
}

/// New points follow the chosen one; in front of the first one of an open spline they may stand, too.
Dialogue SplineEditor::addFit(Ask& ask) {
    for (;;) {
        const Answer chosen = co_await ask.point("Specify existing fit point on spline <exit>:");
        if (!chosen.isPoint() || !fit()) co_return;
        std::size_t index = nearestTo(fit()->points, chosen.point);
        ask.message("Fit point " + std::to_string(index + 1) + " at " +
                    pointDefault(document_.drawing(), fit()->points[index]));
        bool before = false;
        if (index == 0 && !fit()->closed) {
            const Answer side = co_await ask.keyword("Add the new points [After/Before] <After>:", "After Before");
            before = side.is("Before");
        }
        for (;;) {
            const Answer added = co_await ask.point("Specify new fit point to add <exit>:", {}, points(true).at(index));
            if (!added.isPoint()) break;
            auto data = fit();
            if (!data) co_return;
            data->insert(before ? 0 : index + 1, added.point);
            if (!applyFit(std::move(*data)))
                ask.message("Invalid input.");
            else if (!before)
                ++index;
        }
    }
}

Dialogue SplineEditor::tangents(Ask& ask) {
    auto data = fit();
    if (!data || data->closed) co_return ask.message("A closed spline has no end tangents.");
    for (int i = 0; i < 2; ++i) {
        const bool end = i == 1;
        const char* prompt =
            end ? "Specify end tangent or [System default]:" : "Specify start tangent or [System default]:";
        const Vector2 base = end ? data->points.back() : data->points.front();
        const Answer answer = co_await ask.angle(prompt, "System", base);
        Vector2& tangent = end ? data->endTangent : data->startTangent;
        if (answer.is("System")) tangent = {};
        if (answer.isNumber()) tangent = Vector2::from_angle(worldDirection(answer, document_.drawing()));
    }
    applyFit(std::move(*data));
}

// Both ---------------------------------------------------------------------------------------------------

Dialogue SplineEditor::removePoints(Ask& ask, bool fits) {
    for (;;) {
        const char* prompt = fits ? "Specify fit point to delete <exit>:" : "Specify control vertex to delete <exit>:";
        const Answer answer = co_await ask.point(prompt);
        if (!answer.isPoint()) co_return;
        const std::size_t index = nearestTo(points(fits), answer.point);
        bool done = false;
        if (!fits) {
            done = change([&](SplineEntity& s) { return engine::removeSplineVertex(s, index); });
        } else if (auto data = fit(); data && data->points.size() > (data->closed ? 3U : 2U)) {
            data->erase(index);
            done = applyFit(std::move(*data));
        }
        if (!done) ask.message("The spline needs the points that are left.");
    }
}

Dialogue SplineEditor::onCurve(Ask& ask, bool kink) {
    for (;;) {
        const char* prompt =
            kink ? "Specify a point on the spline to add a kink <exit>:" : "Specify a point on the spline <exit>:";
        const Answer answer = co_await ask.point(prompt);
        if (!answer.isPoint()) co_return;
        const bool done = change([&](SplineEntity& s) {
            return kink ? engine::addSplineKink(s, answer.point) : engine::addSplineVertex(s, answer.point);
        });
        if (!done) ask.message("No point can be added there.");
    }
}

Dialogue SplineEditor::move(Ask& ask, bool fits) {
    marker_ = 0;
    forward_ = true;
    for (;;) {
        const std::vector<Vector2> all = points(fits);
        if (all.empty()) co_return;
        marker_ = std::min(marker_, all.size() - 1);
        tell(ask, fits);
        const char* prompt = forward_ ? "Specify new location or [Next/Previous/Select point/eXit] <N>:"
                                      : "Specify new location or [Next/Previous/Select point/eXit] <P>:";
        const Answer answer = co_await ask.point(prompt, "Next Previous Select eXit", all[marker_]);
        if (answer.is("eXit")) co_return;
        if (!answer.isPoint()) {
            const bool walked = co_await walk(ask, answer, fits);
            if (!walked) co_return;
            continue;
        }
        if (fits) {
            auto data = fit();
            if (!data) co_return;
            data->points[marker_] = answer.point;
            if (!applyFit(std::move(*data))) ask.message("Invalid input.");
        } else {
            change([&](SplineEntity& s) {
                engine::moveSplineVertex(s, marker_, answer.point);
                return true;
            });
        }
    }
}

// Control vertices ---------------------------------------------------------------------------------------

Dialogue SplineEditor::vertices(Ask& ask) {
    for (;;) {
        if (points(false).empty()) co_return;
        const Answer answer =
            co_await ask.keyword("Enter a vertex editing option [Add/Delete/Elevate order/Move/Weight/eXit] <eXit>:",
                                 "Add Delete Elevate Move Weight eXit");
        if (answer.isEnter() || answer.is("eXit")) co_return;
        if (answer.is("Add")) {
            co_await onCurve(ask, false);
        } else if (answer.is("Delete")) {
            co_await removePoints(ask, false);
        } else if (answer.is("Move")) {
            co_await move(ask, false);
        } else if (answer.is("Weight")) {
            co_await weights(ask);
        } else {
            const int order = spline()->curve().degree + 1;
            const Answer next = co_await ask.integer(withDefault("Enter new order", std::to_string(order)), order,
                                                     math::kMaxDegree + 1);
            if (!next.isNumber() || next.integer() == order) continue;
            const bool done = change([&](SplineEntity& s) { return engine::elevateSpline(s, next.integer() - 1); });
            if (!done) ask.message("Invalid value.");
        }
    }
}

Dialogue SplineEditor::weights(Ask& ask) {
    marker_ = 0;
    forward_ = true;
    Range range = kPositive;
    range.minimum = 1e-6;
    range.maximum = 1e6;
    for (;;) {
        if (spline() == nullptr) co_return;
        tell(ask, false);
        std::string prompt =
            "Enter new weight (current = " + lengthText(document_.drawing(), engine::splineWeight(*spline(), marker_)) +
            ") or [Next/Previous/Select point/eXit] <";
        prompt += forward_ ? "N>:" : "P>:";
        const Answer answer = co_await ask.number(std::move(prompt), "Next Previous Select eXit", range);
        if (answer.is("eXit")) co_return;
        if (!answer.isNumber()) {
            const bool walked = co_await walk(ask, answer, false);
            if (!walked) co_return;
            continue;
        }
        change([&](SplineEntity& s) {
            engine::setSplineWeight(s, marker_, answer.number);
            return true;
        });
    }
}

}  // namespace kova::cmd::commands
