#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/prompts/named_views.hpp"
#include "cmd/registry.hpp"
#include "cmd/prompts/space_point.hpp"
#include "engine/model/view_frame.hpp"

// CAMERA, VIEWPLAY, NEWSHOT: ways to named views.

namespace kova::cmd::commands {

namespace {

using engine::Name;
using math::Vector3;

/// The film that lens lengths are meant for, millimetres.
constexpr double kFilmWidth = 36.0;
constexpr double kFilmHeight = 24.0;

/// CAMERA: a view from one place to another, kept under a name.
class CameraTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        height_ = engine::sysVarReal(drawing(), "CAMERAHEIGHT");
        lens_ = std::max(engine::sysVarReal(drawing(), "LENSLENGTH", 50.0), 1e-3);
        message("Current camera settings: Height=" + lengthDefault(drawing(), height_) +
                "  Lens Length=" + lengthDefault(drawing(), lens_) + " mm");
        name_ = freeName();
        const Answer from = co_await ask.point("Specify camera location:");
        if (!from.isPoint()) co_return;
        camera_ = place(from, height_);
        const bool aimed = co_await askTarget(ask);
        if (!aimed) co_return;
        for (;;) {
            const Answer option =
                co_await ask.keyword("Enter an option [?/Name/LOcation/Height/Target/LEns/Clipping/View/eXit] <eXit>:",
                                     "? Name LOcation Height Target LEns Clipping View eXit");
            if (option.isEnter() || option.is("EXIT")) break;
            if (option.is("?")) {
                const std::string filter = co_await askNamesToList(ask, "Enter camera name(s) to list <*>:");
                listViews(drawing(), filter, ask);
            } else if (option.is("NAME")) {
                std::string prompt = withDefault("Enter name for new camera", name_);
                const std::optional<Name> name = co_await askNewView(ask, document(), std::move(prompt), name_);
                if (name) name_ = name->str();
            } else if (option.is("LOCATION")) {
                const Answer again = co_await ask.point("Specify camera location:");
                if (again.isPoint()) camera_ = place(again, height_);
            } else if (option.is("HEIGHT")) {
                std::string prompt = withDefault("Specify camera height", lengthDefault(drawing(), camera_.z));
                const Answer height = co_await ask.distance(std::move(prompt));
                if (height.isNumber()) camera_.z = height.number;
            } else if (option.is("TARGET")) {
                co_await askTarget(ask);
            } else if (option.is("LENS")) {
                std::string prompt = withDefault("Specify lens length in mm", lengthDefault(drawing(), lens_));
                const Answer lens = co_await ask.number(std::move(prompt), {}, kPositive);
                lens_ = lens.numberOr(lens_);
            } else if (option.is("CLIPPING")) {
                message("Clipping planes are not kept; pictures show everything before and behind the target.");
            } else {
                const bool show = co_await askYesNo(ask, "Switch to camera view? [Yes/No] <No>:", false);
                if (show) co_return store(true);
            }
        }
        store(false);
    }

private:
    /// A place given without a z stands at the height.
    Vector3 place(const Answer& answer, double height) const {
        const std::string_view text = trimmed(answer.text);
        const bool level = std::count(text.begin(), text.end(), ',') < 2;
        const Vector3 p = spacePoint(answer, 0.0, drawing());
        return level && height != 0.0 ? Vector3(p.xy(), height) : p;
    }

    Task<bool> askTarget(Ask& ask) {
        for (;;) {
            const Answer to = co_await ask.point("Specify target location:", {}, camera_.xy());
            if (!to.isPoint()) co_return false;
            target_ = spacePoint(to, camera_.z, drawing());
            if (target_ != camera_) co_return true;
            message("The target must lie away from the camera.");
        }
    }

    std::string freeName() const {
        for (int number = 1;; ++number) {
            std::string name = "Camera" + std::to_string(number);
            if (!drawing().namedViews.contains(Name(name))) return name;
        }
    }

    void store(bool show) {
        ViewState state;
        const Vector3 way = camera_ - target_;
        if (way == Vector3{}) return message("The target must lie away from the camera.");
        const double distance = way.length();
        state.direction = engine::usableDirection(way);
        state.target = target_;
        state.width = distance * kFilmWidth / lens_;
        state.height = distance * kFilmHeight / lens_;
        engine::NamedView view = namedView(state);
        view.name = Name(name_);
        const doc::GroupScope group(document(), "CAMERA");
        storeView(document(), view);
        if (show) message(restoreView(document(), view));
        repaint();
    }

    Vector3 camera_;
    Vector3 target_;
    double height_ = 0.0;
    double lens_ = 50.0;
    std::string name_;
};

/// VIEWPLAY: the end of a named view's motion, which is the view.
class ViewplayTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const std::optional<engine::NamedView> view = co_await askKnownView(ask, drawing(), "Enter view name:");
        if (!view) co_return;
        const doc::GroupScope group(document(), "VIEWPLAY");
        message(restoreView(document(), *view));
        repaint();
    }
};

/// NEWSHOT: keeps the present view, without a motion.
class NewshotTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const std::optional<Name> name = co_await askNewView(ask, document(), "Enter view name to save:");
        if (!name) co_return;
        engine::NamedView view = namedView(viewState(drawing()));
        view.name = *name;
        const doc::GroupScope group(document(), "NEWSHOT");
        storeView(document(), std::move(view));
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Camera, "CAMERA", "Camera", "View", {"CAM"})
KOVA_TOOL_COMMAND(Viewplay, "VIEWPLAY", "Play View", "View")
KOVA_TOOL_COMMAND(Newshot, "NEWSHOT", "New Shot", "View")

}  // namespace kova::cmd::commands
