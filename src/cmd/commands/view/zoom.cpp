#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "cmd/prompts/text_or_point.hpp"
#include "edit/view_state.hpp"
#include "engine/entities/viewport.hpp"
#include "engine/model/name.hpp"

namespace kova::cmd::commands {

namespace {

using math::Bounds2;
using math::Vector2;

/// A scale as ZOOM takes it: "2" of the limits, "2x" of the present view, "2xp" of paper units.
struct ZoomScale {
    enum class Of { Limits, View, Paper };
    double factor = 1.0;
    Of of = Of::Limits;
};

std::optional<ZoomScale> parseScale(std::string_view text) {
    const std::string upper = engine::upperCase(trimmed(text));
    std::string_view number = upper;
    ZoomScale scale;
    if (number.ends_with("XP")) {
        scale.of = ZoomScale::Of::Paper;
        number.remove_suffix(2);
    } else if (number.ends_with("X")) {
        scale.of = ZoomScale::Of::View;
        number.remove_suffix(1);
    }
    const std::optional<double> value = parseNumber(number);
    // A scale of paper may be given as a fraction: 1/50xp.
    if (!value) {
        const std::size_t slash = number.find('/');
        if (slash == std::string_view::npos) return std::nullopt;
        const auto above = parseNumber(number.substr(0, slash));
        const auto below = parseNumber(number.substr(slash + 1));
        if (!above || !below || !(*below > 0.0)) return std::nullopt;
        scale.factor = *above / *below;
    } else {
        scale.factor = *value;
    }
    if (!(scale.factor > 0.0)) return std::nullopt;
    return scale;
}

/// ZOOM: which part of the space is seen.
class ZoomTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        for (;;) {
            const Answer answer = co_await ask.text(
                "Specify corner of window, enter a scale factor (nX or nXP), or "
                "[All/Center/Dynamic/Extents/Previous/Scale/Window/Object] <real time>:",
                "All Center Dynamic Extents Previous Scale Window Object Left Vmax");
            if (answer.isEnter()) {
                message("Zooming in real time needs a window, which kovacad-cli does not have.");
                co_return;
            }
            if (answer.is("DYNAMIC")) {
                message("Dynamic zoom needs a window, which kovacad-cli does not have.");
                co_return;
            }
            if (answer.is("ALL")) co_return change([&] { return showExtents(document(), limitsOfSpace(drawing())); });
            if (answer.is("EXTENTS") || answer.is("VMAX")) co_return change([&] { return showExtents(document()); });
            if (answer.is("PREVIOUS")) co_return change([&] { return showPrevious(document()); });
            if (answer.is("CENTER")) co_return co_await center(ask);
            if (answer.is("LEFT")) co_return co_await corner(ask);
            if (answer.is("OBJECT")) co_return co_await objects(ask);
            if (answer.is("WINDOW")) {
                const Answer first = co_await ask.point("Specify first corner:");
                if (first.isPoint()) co_await window(ask, first.point);
                co_return;
            }
            if (answer.is("SCALE")) {
                const Answer typed = co_await ask.text("Enter a scale factor (nX or nXP):");
                const auto scale = parseScale(typed.text);
                if (!scale) {
                    message("Invalid value.");
                    co_return;
                }
                co_return zoom(*scale);
            }
            if (const auto scale = parseScale(answer.text)) co_return zoom(*scale);
            if (parseNumber(answer.text)) {
                message("Invalid value.");
                continue;
            }
            const PointOfText typed = co_await pointOfText(ask, document(), answer.text, ask.lastPoint());
            if (typed.point) {
                co_await window(ask, *typed.point);
                co_return;
            }
            if (typed.told) continue;
            message("Invalid point or option keyword.");
        }
    }

private:
    template <class Show>
    void change(Show&& show) {
        const doc::GroupScope group(document(), "ZOOM");
        message(show());
        repaint();
    }
    void showArea(const Bounds2& box) {
        change([&] { return showBox(document(), box); });
    }
    void show(const Vector2& center, double height, double z = 0.0) {
        change([&] { return showWindow(document(), center, height, z); });
    }

    /// The height of a view under a scale; 0: there is none.
    double heightFor(const ZoomScale& scale) const {
        const ViewWindow now = viewWindow(drawing());
        if (scale.of == ZoomScale::Of::View) return now.height / scale.factor;
        if (scale.of == ZoomScale::Of::Limits) {
            const Bounds2 limits = limitsOfSpace(drawing());
            const double ratio = now.height > 0.0 && now.width > 0.0 ? now.width / now.height : 1.0;
            return std::max(limits.height(), limits.width() / ratio) / scale.factor;
        }
        const engine::ViewportEntity* viewport = drawing().activeViewport();
        return viewport != nullptr ? std::abs(viewport->height) / scale.factor : 0.0;
    }

    void zoom(const ZoomScale& scale) {
        const double height = heightFor(scale);
        if (!(height > 0.0)) return message("A scale of paper units needs a viewport of a layout.");
        const ViewWindow now = viewWindow(drawing());
        show(now.center, height, now.z);
    }

    Dialogue center(Ask& ask) {
        const ViewWindow now = viewWindow(drawing());
        const Answer point = co_await ask.point("Specify center point:");
        const Vector2 center = point.isPoint() ? point.point : now.center;
        co_await magnify(ask, center, false);
    }

    /// Lower left corner of the view, as old scripts give it.
    Dialogue corner(Ask& ask) {
        const Answer point = co_await ask.point("Specify lower left corner:");
        if (point.isPoint()) co_await magnify(ask, point.point, true);
    }

    Dialogue magnify(Ask& ask, Vector2 at, bool lowerLeft) {
        const ViewWindow now = viewWindow(drawing());
        for (;;) {
            std::string prompt = withDefault("Enter magnification or height", lengthDefault(drawing(), now.height));
            const Answer answer = co_await ask.text(std::move(prompt));
            double height = now.height;
            if (answer.isText()) {
                const auto scale = parseScale(answer.text);
                if (!scale) {
                    message("Invalid value.");
                    continue;
                }
                height = scale->of == ZoomScale::Of::Limits ? scale->factor : heightFor(*scale);
                if (!(height > 0.0)) {
                    message("A scale of paper units needs a viewport of a layout.");
                    continue;
                }
            }
            const double width = now.height > 0.0 ? height * now.width / now.height : height;
            show(lowerLeft ? at + Vector2{width / 2.0, height / 2.0} : at, height);
            co_return;
        }
    }

    Dialogue window(Ask& ask, Vector2 first) {
        const Answer second = co_await ask.point("Specify opposite corner:", {}, first);
        if (!second.isPoint()) co_return;
        Bounds2 box;
        box.expand(first);
        box.expand(second.point);
        showArea(box);
    }

    Dialogue objects(Ask& ask) {
        const Answer selected = co_await ask.selection();
        Bounds2 box;
        for (const std::uint64_t id : selected.ids)
            if (const engine::Entity* entity = drawing().findById(id)) box.expand(entity->bounds());
        if (!box.is_empty()) showArea(box);
    }
};

/// PAN: moves what is seen.
class PanTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer first = co_await ask.point("Specify base point or displacement:");
        if (!first.isPoint()) {
            message("Panning in real time needs a window, which kovacad-cli does not have.");
            co_return;
        }
        const Answer second = co_await ask.point("Specify second point:", {}, first.point);
        const Vector2 by = second.isPoint() ? second.point - first.point : first.point - drawing().ucs.origin;
        const ViewWindow now = viewWindow(drawing());
        const doc::GroupScope group(document(), "PAN");
        message(showWindow(document(), now.center - by, now.height, now.z));
        repaint();
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Zoom, "ZOOM", "Zoom", "View", {"Z"})
KOVA_TOOL_COMMAND(Pan, "PAN", "Pan", "View", {"P"})

}  // namespace kova::cmd::commands
