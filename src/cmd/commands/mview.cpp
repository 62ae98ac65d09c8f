#include "cmd/dialogue.hpp"
#include "cmd/drawing_aids.hpp"
#include "cmd/format.hpp"
#include "cmd/name_prompts.hpp"
#include "cmd/registry.hpp"
#include "cmd/viewports.hpp"

namespace kova::cmd::commands {

namespace {

using engine::ViewportEntity;
using math::Bounds2;
using math::Vector2;

/// Frame of a viewport within a frame, in shares of its width and height.
struct Share {
    double x0, y0, x1, y1;
};

/// True for what a viewport may be clipped by.
bool isClosedShape(const engine::Entity& entity) {
    switch (entity.type()) {
        case engine::EntityType::Circle:
        case engine::EntityType::Ellipse:
        case engine::EntityType::Polyline:
        case engine::EntityType::Spline:
        case engine::EntityType::Region:
            return true;
        default:
            return false;
    }
}

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

    /// The viewports among selected objects.
    std::vector<ViewportEntity*> chosen(const std::vector<std::uint64_t>& ids) const {
        std::vector<ViewportEntity*> found;
        for (const std::uint64_t id : ids) {
            auto* viewport = dynamic_cast<ViewportEntity*>(drawing().findById(id));
            if (viewport != nullptr && !viewport->isSheet()) found.push_back(viewport);
        }
        return found;
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
        edit(chosen(selected.ids), [on](ViewportEntity& viewport) {
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
        edit(chosen(selected.ids), [locked](ViewportEntity& viewport) {
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
        edit(chosen(selected.ids), [](ViewportEntity& viewport) { viewport.vpFrozenLayers.clear(); });
    }

    Dialogue byObject(Ask& ask) {
        const Answer pick = co_await ask.object("Select object to clip viewport:", {}, isClosedShape);
        const engine::Entity* entity = pick.isObject() ? drawing().findById(pick.id) : nullptr;
        if (entity == nullptr) co_return;
        const Bounds2 frame = entity->bounds();
        if (!(frame.width() > 0.0) || !(frame.height() > 0.0)) {
            message("The object does not enclose an area.");
            co_return;
        }
        add(std::vector<Bounds2>(1, frame), Bounds2{});
        message("Viewports are rectangles here: the window takes the object's extents.");
    }

    Dialogue polygonal(Ask& ask) {
        const Answer start = co_await ask.point("Specify start point:");
        if (!start.isPoint()) co_return;
        std::vector<Vector2> points(1, start.point);
        for (;;) {
            const char* prompt =
                points.size() < 3 ? "Specify next point or [Undo]:" : "Specify next point or [Close/Undo]:";
            const Answer next = co_await ask.point(prompt, "Close Undo", points.back());
            if (next.isPoint()) points.push_back(next.point);
            if (next.is("UNDO") && points.size() > 1) points.pop_back();
            if (next.isEnter() || next.is("CLOSE")) break;
        }
        Bounds2 frame;
        for (const Vector2& p : points) frame.expand(p);
        if (points.size() < 3 || !(frame.width() > 0.0) || !(frame.height() > 0.0)) {
            message("A viewport needs three points that enclose an area.");
            co_return;
        }
        add(std::vector<Bounds2>(1, frame), Bounds2{});
        message("Viewports are rectangles here: the window takes the polygon's extents.");
    }

    /// A viewport of a named view, or the ways to one.
    Dialogue named(Ask& ask, bool namedView) {
        engine::NamedView view;
        if (namedView) {
            for (;;) {
                const Answer answer = co_await ask.text("Enter view name:");
                if (answer.isEnter()) co_return;
                const engine::NamedView* known = drawing().namedViews.find(engine::Name(typedName(answer.text)));
                if (known != nullptr) {
                    view = *known;
                    break;
                }
                message("Cannot find view " + quoted(typedName(answer.text)) + ".");
            }
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
        const Vector2 half{view.width / 2.0, view.height / 2.0};
        if (frame) add(std::vector<Bounds2>(1, *frame), Bounds2{view.center - half, view.center + half});
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
