#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/named_views.hpp"
#include "cmd/registry.hpp"
#include "edit/viewports.hpp"
#include "engine/entities/polyline.hpp"
#include "math/angles.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd::commands {

namespace {

using engine::ViewportEntity;
using math::Bounds2;
using math::Vector2;

/// Frame of a viewport within a frame, in shares of its width and height.
struct Share {
    double x0, y0, x1, y1;
};

/// MVIEW: the windows of a layout onto the model.
class MviewTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (drawing().tileMode) {
            message("** Command not allowed in Model Tab **");
            co_return;
        }
        if (drawing().activeViewport() != nullptr) {
            const doc::GroupScope group(document(), "MVIEW");
            leaveViewport(document());
        }
        const Answer first = co_await ask.point(
            "Specify corner of viewport or "
            "[ON/OFF/Fit/Shadeplot/Lock/NEw/NAmed/Object/Polygonal/Restore/LAyer/2/3/4] <Fit>:",
            "ON OFF Fit Shadeplot Lock NEw NAmed Object Polygonal Restore LAyer 2 3 4");
        if (first.isPoint()) co_return co_await corner(ask, first.point);
        if (first.isEnter() || first.is("FIT")) {
            std::vector<Bounds2> frames(1, sheet());
            co_return add(frames);
        }
        if (first.is("ON") || first.is("OFF")) co_return co_await switchOn(ask, first.is("ON"));
        if (first.is("LOCK")) co_return co_await lock(ask);
        if (first.is("SHADEPLOT")) {
            message("Shaded plots need hidden-line views, which kovacad-cli does not make.");
            co_return;
        }
        if (first.is("OBJECT")) co_return co_await byObject(ask);
        if (first.is("POLYGONAL")) co_return co_await polygonal(ask);
        if (first.is("LAYER")) co_return co_await resetLayers(ask);
        if (first.is("RESTORE")) {
            message("The drawing keeps no named viewport arrangements.");
            co_return;
        }
        if (first.is("NEW") || first.is("NAMED")) co_return co_await named(ask, first.is("NAMED"));
        co_await arrangement(ask, first.word);
    }

private:
    Bounds2 sheet() const {
        const engine::Layout* layout = drawing().activeLayout();
        return layout != nullptr ? printableArea(*layout) : Bounds2{{}, {420, 297}};
    }

    void add(const std::vector<Bounds2>& frames, const Bounds2& model = {}) {
        const doc::GroupScope group(document(), "MVIEW");
        for (const Bounds2& frame : frames) document().addEntity(makeViewport(document(), frame, model));
        repaint();
    }

    /// A box by a corner and the opposite one; nothing when it has no area.
    Task<std::optional<Bounds2>> box(Ask& ask, Vector2 first) {
        for (;;) {
            const Answer second = co_await ask.point("Specify opposite corner:", {}, first);
            if (!second.isPoint()) co_return std::nullopt;
            Bounds2 frame;
            frame.expand(first);
            frame.expand(second.point);
            if (frame.width() > 0.0 && frame.height() > 0.0) co_return frame;
            message("A viewport needs a width and a height.");
        }
    }

    Dialogue corner(Ask& ask, Vector2 first) {
        const std::optional<Bounds2> frame = co_await box(ask, first);
        if (frame) add(std::vector<Bounds2>(1, *frame), Bounds2{});
    }

    void edit(const std::vector<ViewportEntity*>& viewports, const std::function<void(ViewportEntity&)>& change) {
        if (viewports.empty()) return message("No viewports selected.");
        const doc::GroupScope group(document(), "MVIEW");
        for (ViewportEntity* viewport : viewports)
            document().modifyEntity(*viewport,
                                    [&](engine::Entity& entity) { change(static_cast<ViewportEntity&>(entity)); });
        repaint();
    }

    Dialogue switchOn(Ask& ask, bool on) {
        const Answer selected = co_await ask.selection();
        edit(viewportsAmong(drawing(), selected.ids), [on](ViewportEntity& viewport) {
            viewport.on = on;
            viewport.statusFlags =
                on ? viewport.statusFlags & ~ViewportEntity::kOff : viewport.statusFlags | ViewportEntity::kOff;
        });
    }

    Dialogue lock(Ask& ask) {
        const Answer state = co_await ask.keyword("Viewport View Locking [ON/OFF]:", "ON OFF");
        if (state.isEnter()) co_return;
        const bool locked = state.is("ON");
        const Answer selected = co_await ask.selection();
        edit(viewportsAmong(drawing(), selected.ids), [locked](ViewportEntity& viewport) {
            viewport.locked = locked;
            viewport.statusFlags = locked ? viewport.statusFlags | ViewportEntity::kLocked
                                          : viewport.statusFlags & ~ViewportEntity::kLocked;
        });
    }

    Dialogue resetLayers(Ask& ask) {
        const bool reset = co_await askYesNo(
            ask, "Reset viewport layer property overrides back to global properties? [Yes/No] <N>:", false);
        if (!reset) co_return;
        const Answer selected = co_await ask.selection();
        edit(viewportsAmong(drawing(), selected.ids),
             [](ViewportEntity& viewport) { viewport.vpFrozenLayers.clear(); });
    }

    /// A viewport within an entity of the sheet, as part of the open group.
    void addWithin(const engine::Entity& border) {
        std::unique_ptr<ViewportEntity> viewport = makeViewport(document(), border.bounds());
        viewport->clipHandle = border.handle();
        viewport->statusFlags |= ViewportEntity::kNonRectangular;
        document().addEntity(std::move(viewport));
        repaint();
    }

    Dialogue byObject(Ask& ask) {
        for (;;) {
            const Answer pick = co_await ask.object(
                "Select object to clip viewport:", {},
                [](const engine::Entity& entity) { return entity.type() != engine::EntityType::Viewport; });
            const engine::Entity* entity = pick.isObject() ? drawing().findById(pick.id) : nullptr;
            if (entity == nullptr) co_return;
            if (!canBoundViewport(*entity)) {
                message("A closed polyline, circle, ellipse, spline or region is needed.");
                continue;
            }
            if (boundedViewports(drawing()).contains(entity->handle())) {
                message("The object bounds a viewport already.");
                continue;
            }
            const doc::GroupScope group(document(), "MVIEW");
            co_return addWithin(*entity);
        }
    }

    /// The outline of a viewport, as it is drawn.
    struct Corner {
        Vector2 point;
        double bulge = 0.0;  ///< of the segment to the next one
    };

    static Vector2 arrival(const std::vector<Corner>& corners) {
        if (corners.size() < 2) return {1, 0};
        const Corner& from = corners[corners.size() - 2];
        const Vector2 chord = (corners.back().point - from.point).normalized();
        const Vector2 turn = Vector2::from_angle(2.0 * std::atan(from.bulge));
        return {chord.x * turn.x - chord.y * turn.y, chord.x * turn.y + chord.y * turn.x};
    }

    static void addCorner(std::vector<Corner>& corners, const Vector2& to, double bulge) {
        if (!to.is_finite() || !std::isfinite(bulge) || to == corners.back().point) return;
        corners.back().bulge = bulge;
        corners.push_back({to});
    }

    Dialogue polygonal(Ask& ask) {
        const Answer start = co_await ask.point("Specify start point:");
        if (!start.isPoint()) co_return;
        std::vector<Corner> corners(1);
        corners.front().point = start.point;
        bool arcs = false;
        for (;;) {
            const bool closable = corners.size() > 1;
            ask.setLastPoint(corners.back().point);
            const char* prompt = closable ? "Specify next point or [Arc/Close/Length/Undo]:"
                                          : "Specify next point or [Arc/Length/Undo]:";
            const char* words = closable ? "Arc Close Length Undo" : "Arc Length Undo";
            if (arcs) {
                prompt = closable ? "Enter an arc boundary option [Angle/CEnter/CLose/Direction/Line/Radius/Second "
                                    "pt/Undo/Endpoint of arc] <Endpoint>:"
                                  : "Enter an arc boundary option [Angle/CEnter/Direction/Line/Radius/Second "
                                    "pt/Undo/Endpoint of arc] <Endpoint>:";
                words = closable ? "Angle CEnter CLose Direction Line Radius Second Undo Endpoint"
                                 : "Angle CEnter Direction Line Radius Second Undo Endpoint";
            }
            const Vector2 last = corners.back().point;
            const Answer next = co_await ask.point(prompt, words, last);
            if (next.isPoint()) {
                addCorner(corners, next.point, arcs ? math::bulgeFromTangent(last, arrival(corners), next.point) : 0.0);
            } else if (next.is("UNDO")) {
                if (corners.size() > 1)
                    corners.pop_back();
                else
                    message("All segments already undone.");
                corners.back().bulge = 0.0;
            } else if (next.is("ARC")) {
                arcs = true;
            } else if (next.is("LINE")) {
                arcs = false;
            } else if (next.is("LENGTH")) {
                const Answer length = co_await ask.distance("Specify length of line:", {}, last);
                if (length.isNumber()) addCorner(corners, last + arrival(corners) * length.number, 0.0);
            } else if (next.isEnter() || next.is("CLOSE")) {
                if (arcs && next.is("CLOSE"))
                    corners.back().bulge = math::bulgeFromTangent(last, arrival(corners), corners.front().point);
                break;
            } else {
                co_await arc(ask, corners, next.word);
            }
        }
        // Ending where it began is closing.
        if (corners.size() > 2 && corners.back().point == corners.front().point) corners.pop_back();
        auto outline = std::make_unique<engine::PolylineEntity>();
        for (const Corner& corner : corners) outline->addVertex(corner.point, corner.bulge);
        outline->closed = true;
        if (!canBoundViewport(*outline)) {
            message("A viewport needs an outline that encloses an area.");
            co_return;
        }
        const doc::GroupScope group(document(), "MVIEW");
        document().applyCurrentProperties(*outline);
        addWithin(document().addEntity(std::move(outline)));
    }

    /// One arc of an outline by the option named.
    Dialogue arc(Ask& ask, std::vector<Corner>& corners, std::string option) {
        const Vector2 last = corners.back().point;
        if (option == "ENDPOINT") {
            const Answer end = co_await ask.point("Specify endpoint of arc:", {}, last);
            if (end.isPoint()) addCorner(corners, end.point, math::bulgeFromTangent(last, arrival(corners), end.point));
        } else if (option == "ANGLE") {
            const Answer angle = co_await ask.angle("Specify included angle:", {}, last);
            const double sweep = angle.isNumber() ? includedAngle(angle, drawing()) : 0.0;
            if (sweep == 0.0 || std::abs(sweep) >= math::kTwoPi) co_return message("Invalid value.");
            const Answer end = co_await ask.point("Specify endpoint of arc:", {}, last);
            if (end.isPoint()) addCorner(corners, end.point, math::bulgeFromSweep(sweep));
        } else if (option == "CENTER") {
            const Answer center = co_await ask.point("Specify center point of arc:", {}, last);
            if (!center.isPoint() || center.point == last) co_return;
            const Answer end = co_await ask.point("Specify endpoint of arc:", {}, last);
            if (!end.isPoint()) co_return;
            const double sweep = math::sweepAngle((last - center.point).angle(), (end.point - center.point).angle());
            if (!(sweep < math::kTwoPi)) co_return message("Invalid input.");
            const math::Matrix4 turn = math::Matrix4::rotation_about(center.point, sweep);
            addCorner(corners, turn.transform_point(last), math::bulgeFromSweep(sweep));
        } else if (option == "DIRECTION") {
            const Answer direction =
                co_await ask.angle("Specify the tangent direction for the start point of arc:", {}, last);
            if (!direction.isNumber()) co_return;
            const Answer end = co_await ask.point("Specify endpoint of arc:", {}, last);
            const Vector2 tangent = math::unitAt(worldDirection(direction, drawing()));
            if (end.isPoint()) addCorner(corners, end.point, math::bulgeFromTangent(last, tangent, end.point));
        } else if (option == "RADIUS") {
            const Answer radius = co_await ask.distance("Specify radius of arc:", {}, last, kPositive);
            if (!radius.isNumber()) co_return;
            const Answer end = co_await ask.point("Specify endpoint of arc:", {}, last);
            if (!end.isPoint()) co_return;
            const double half = last.distance_to(end.point) / (2.0 * radius.number);
            if (!(half > 0.0) || half > 1.0 + 1e-12) co_return message("Invalid input.");
            addCorner(corners, end.point, math::bulgeFromSweep(2.0 * std::asin(std::min(half, 1.0))));
        } else {
            const Answer through = co_await ask.point("Specify second point on arc:", {}, last);
            if (!through.isPoint()) co_return;
            const Answer end = co_await ask.point("Specify end point of arc:");
            if (end.isPoint()) addCorner(corners, end.point, math::bulgeThrough(last, through.point, end.point));
        }
    }

    /// A viewport of a named view, or the ways to one.
    Dialogue named(Ask& ask, bool namedView) {
        engine::NamedView view;
        if (namedView) {
            const std::optional<engine::NamedView> known = co_await askKnownView(ask, drawing(), "Enter view name:");
            if (!known) co_return;
            view = *known;
        } else {
            const Answer first = co_await ask.point("Specify first corner of the model's window:");
            if (!first.isPoint()) co_return;
            const std::optional<Bounds2> window = co_await box(ask, first.point);
            if (!window) co_return;
            view.center = window->center();
            view.width = window->width();
            view.height = window->height();
        }
        const Answer first = co_await ask.point("Specify corner of viewport:");
        if (!first.isPoint()) co_return;
        const std::optional<Bounds2> frame = co_await box(ask, first.point);
        if (!frame) co_return;
        const ViewState state = stateOf(view);
        std::unique_ptr<ViewportEntity> viewport = makeViewport(document(), *frame);
        const math::Vector3 middle = state.middle();
        viewport->viewDirection = state.direction;
        viewport->viewTwist = state.twist;
        viewport->viewTarget = middle.xy();
        viewport->viewTargetZ = middle.z;
        const double scale = std::min(frame->width() / state.width, frame->height() / state.height);
        if (std::isfinite(scale) && scale > 0.0) viewport->viewScale = scale;
        const doc::GroupScope group(document(), "MVIEW");
        document().addEntity(std::move(viewport));
        repaint();
    }

    /// Two, three or four viewports within one frame.
    Dialogue arrangement(Ask& ask, std::string count) {
        std::vector<Share> shares;
        if (count == "2") {
            const Answer answer = co_await ask.keyword("Enter viewport arrangement [Horizontal/Vertical] <Vertical>:",
                                                       "Horizontal Vertical");
            if (answer.is("HORIZONTAL"))
                shares.assign({{0, 0.5, 1, 1}, {0, 0, 1, 0.5}});
            else
                shares.assign({{0, 0, 0.5, 1}, {0.5, 0, 1, 1}});
        } else if (count == "3") {
            const Answer answer =
                co_await ask.keyword("Enter viewport arrangement [Horizontal/Vertical/Above/Below/Left/Right] <Right>:",
                                     "Horizontal Vertical Above Below Left Right");
            constexpr double a = 1.0 / 3.0;
            constexpr double b = 2.0 / 3.0;
            if (answer.is("HORIZONTAL"))
                shares.assign({{0, b, 1, 1}, {0, a, 1, b}, {0, 0, 1, a}});
            else if (answer.is("VERTICAL"))
                shares.assign({{0, 0, a, 1}, {a, 0, b, 1}, {b, 0, 1, 1}});
            else if (answer.is("ABOVE"))
                shares.assign({{0, 0.5, 1, 1}, {0, 0, 0.5, 0.5}, {0.5, 0, 1, 0.5}});
            else if (answer.is("BELOW"))
                shares.assign({{0, 0, 1, 0.5}, {0, 0.5, 0.5, 1}, {0.5, 0.5, 1, 1}});
            else if (answer.is("LEFT"))
                shares.assign({{0, 0, 0.5, 1}, {0.5, 0.5, 1, 1}, {0.5, 0, 1, 0.5}});
            else
                shares.assign({{0.5, 0, 1, 1}, {0, 0.5, 0.5, 1}, {0, 0, 0.5, 0.5}});
        } else {
            shares.assign({{0, 0.5, 0.5, 1}, {0.5, 0.5, 1, 1}, {0, 0, 0.5, 0.5}, {0.5, 0, 1, 0.5}});
        }
        Bounds2 frame = sheet();
        const Answer first = co_await ask.point("Specify first corner or [Fit] <Fit>:", "Fit");
        if (first.isPoint()) {
            const std::optional<Bounds2> chosenFrame = co_await box(ask, first.point);
            if (!chosenFrame) co_return;
            frame = *chosenFrame;
        }
        std::vector<Bounds2> frames;
        for (const Share& s : shares)
            frames.emplace_back(frame.min + Vector2{s.x0 * frame.width(), s.y0 * frame.height()},
                                frame.min + Vector2{s.x1 * frame.width(), s.y1 * frame.height()});
        add(frames);
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Mview, "MVIEW", "Layout Viewport", "View", {"MV"})

}  // namespace kova::cmd::commands
