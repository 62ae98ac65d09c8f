#include "edit/view_state.hpp"

#include <QVariant>

#include "engine/entities/viewport.hpp"
#include "engine/outline/spatial_sink.hpp"
#include "engine/model/view_frame.hpp"

namespace kova::cmd {

namespace {

using engine::Drawing;
using engine::ViewportEntity;
using math::Bounds2;
using math::Matrix4;
using math::Vector2;
using math::Vector3;

/// Views that ZOOM Previous can go back over, and where they are kept: with the document, neither saved nor undone.
constexpr qsizetype kHistory = 10;
constexpr const char* kHistoryName = "viewHistory";

/// The layout's own view of its sheet; null when none is kept.
ViewportEntity* sheetView(const Drawing& drawing) {
    const engine::Layout* layout = drawing.activeLayout();
    if (layout == nullptr) return nullptr;
    for (std::uint32_t slot = 0; slot < layout->entities.slotCount(); ++slot) {
        engine::Entity* entity = layout->entities.atSlot(slot);
        if (entity == nullptr || entity->type() != engine::EntityType::Viewport) continue;
        auto* viewport = static_cast<ViewportEntity*>(entity);
        if (viewport->isSheet()) return viewport;
    }
    return nullptr;
}

/// Which view is current: 0 the model tab's, else the id of a viewport; nothing for a sheet whose view is not kept.
std::optional<std::uint64_t> currentPlace(const Drawing& drawing) {
    if (drawing.tileMode) return 0;
    if (const ViewportEntity* viewport = drawing.activeViewport()) return viewport->id();
    if (const ViewportEntity* sheet = sheetView(drawing)) return sheet->id();
    return std::nullopt;
}

bool isUsable(const ViewState& state) {
    return state.center.is_finite() && state.target.is_finite() && std::isfinite(state.twist) &&
           std::isfinite(state.height) && state.height > 1e-300 && state.height < 1e300;
}

std::string apply(doc::Document& document, const ViewState& state) {
    Drawing& drawing = document.drawing();
    if (!isUsable(state)) return "Invalid value.";
    const std::optional<std::uint64_t> place = currentPlace(drawing);
    if (!place) return "The sheet is always shown whole here.";
    const ViewState now = viewState(drawing);
    const Vector3 direction = engine::usableDirection(state.direction);
    if (*place == 0) {
        document.editSettings([&](Drawing& d) {
            engine::NamedView& view = d.currentView;
            if (direction != engine::usableDirection(now.direction) || state.twist != now.twist) {
                view.viewDirection = direction;
                view.upHint = engine::viewUp(direction, state.twist);
            }
            view.target = state.target;
            view.center = state.center;
            view.width = now.height > 0.0 ? state.height * now.width / now.height : state.height;
            view.height = state.height;
            view.name = {};
        });
        return {};
    }
    ViewportEntity& viewport = static_cast<ViewportEntity&>(*drawing.findById(*place));
    if (viewport.locked && !viewport.isSheet()) return "Viewport is view-locked.";
    document.modifyEntity(viewport, [&](engine::Entity& entity) {
        auto& v = static_cast<ViewportEntity&>(entity);
        if (v.isSheet()) {
            v.viewTarget = v.center = state.center;
            v.width = now.height > 0.0 ? state.height * now.width / now.height : state.height;
            v.height = state.height;
            return;
        }
        v.viewDirection = direction;
        v.viewTwist = state.twist;
        const Vector3 middle = state.middle();
        v.viewTarget = middle.xy();
        v.viewTargetZ = middle.z;
        v.viewScale = std::abs(v.height) / state.height;
    });
    return {};
}

void note(doc::Document& document, const ViewState& view, std::uint64_t place) {
    QVariantList history = document.property(kHistoryName).toList();
    QVariantList entry{QVariant::fromValue(static_cast<qulonglong>(place))};
    for (const double v : {view.direction.x, view.direction.y, view.direction.z, view.target.x, view.target.y,
                           view.target.z, view.twist, view.center.x, view.center.y, view.width, view.height})
        entry.append(v);
    history.append(QVariant(entry));
    if (history.size() > kHistory) history.removeFirst();
    document.setProperty(kHistoryName, history);
}

/// The view that shows all of a box in its own coordinates.
void fit(ViewState& state, const Bounds2& box) {
    const double ratio = state.width > 0.0 && state.height > 0.0 ? state.width / state.height : 1.0;
    const double height = std::max(box.height(), box.width() / ratio);
    state.center = box.center();
    // A point alone keeps the scale.
    if (height > 0.0) state.height = height;
}

Bounds2 boxUnder(const Bounds2& box, const Matrix4& m) {
    Bounds2 out;
    if (box.is_empty()) return out;
    for (const Vector2& p : {box.min, Vector2{box.max.x, box.min.y}, box.max, Vector2{box.min.x, box.max.y}})
        out.expand(m.transform_point(p));
    return out;
}

/// True when the plan lies in the view as it is drawn, at most moved.
bool showsUprightPlan(const ViewState& state) { return state.twist == 0.0 && engine::isPlanView(state.direction); }

}  // namespace

Matrix4 ViewState::toView() const { return engine::worldToView(direction, target, twist); }

Vector3 ViewState::middle() const {
    if (center == Vector2{}) return target;
    const auto back = toView().inverse();
    return back ? back->transform_point(Vector3(center)) : target;
}

ViewState stateOf(const engine::NamedView& view) {
    ViewState state;
    state.direction = engine::usableDirection(view.viewDirection);
    state.target = view.target;
    state.twist = engine::viewTwist(view.viewDirection, view.upHint);
    state.center = view.center;
    state.width = std::abs(view.width);
    state.height = std::abs(view.height);
    return state;
}

engine::NamedView namedView(const ViewState& state) {
    engine::NamedView view;
    view.viewDirection = state.direction;
    view.target = state.target;
    view.upHint = engine::viewUp(state.direction, state.twist);
    view.center = state.center;
    view.width = state.width;
    view.height = state.height;
    return view;
}

ViewState viewState(const Drawing& drawing) {
    if (drawing.tileMode) return stateOf(drawing.currentView);
    ViewState state;
    if (const ViewportEntity* viewport = drawing.activeViewport()) {
        const double scale = viewport->viewScale > 0.0 ? viewport->viewScale : 1.0;
        state.direction = engine::usableDirection(viewport->viewDirection);
        state.target = Vector3(viewport->viewTarget, viewport->viewTargetZ);
        state.twist = viewport->viewTwist;
        state.width = std::abs(viewport->width) / scale;
        state.height = std::abs(viewport->height) / scale;
        return state;
    }
    const ViewportEntity* sheet = sheetView(drawing);
    const Bounds2 paper = limitsOfSpace(drawing);
    state.center = sheet != nullptr ? sheet->center : paper.center();
    state.width = sheet != nullptr ? sheet->width : paper.width();
    state.height = sheet != nullptr ? sheet->height : paper.height();
    return state;
}

std::string setViewState(doc::Document& document, const ViewState& state) {
    const ViewState before = viewState(document.drawing());
    const std::optional<std::uint64_t> place = currentPlace(document.drawing());
    std::string error = apply(document, state);
    if (error.empty() && place) note(document, before, *place);
    return error;
}

std::string lookFrom(doc::Document& document, const Vector3& direction, double twist) {
    const Drawing& drawing = document.drawing();
    ViewState state = viewState(drawing);
    state.direction = engine::usableDirection(direction);
    state.twist = twist;
    state.target = {};
    Bounds2 seen = engine::viewedExtents(drawing.currentSpace(), state.toView());
    if (seen.is_empty()) seen = boxUnder(limitsOfSpace(drawing), state.toView());
    fit(state, seen);
    return setViewState(document, state);
}

ViewWindow viewWindow(const Drawing& drawing) {
    const ViewState state = viewState(drawing);
    const Vector3 middle = state.middle();
    return {middle.xy(), state.width, state.height, engine::isPlanView(state.direction) ? 0.0 : middle.z};
}

std::string showWindow(doc::Document& document, const Vector2& center, double height, double z) {
    ViewState state = viewState(document.drawing());
    state.height = height;
    const Drawing& drawing = document.drawing();
    if (drawing.activeViewport() != nullptr && !drawing.tileMode) {
        state.target = Vector3(center, engine::isPlanView(state.direction) ? state.target.z : z);
        state.center = {};
    } else {
        state.center = state.toView().transform_point(Vector3(center, z)).xy();
    }
    return setViewState(document, state);
}

std::string showBox(doc::Document& document, const Bounds2& box) {
    const Bounds2 shown = box.is_empty() ? limitsOfSpace(document.drawing()) : box;
    ViewState state = viewState(document.drawing());
    if (!showsUprightPlan(state)) {
        fit(state, boxUnder(shown, state.toView()));
        return setViewState(document, state);
    }
    fit(state, shown);
    return showWindow(document, shown.center(), state.height);
}

std::string showExtents(doc::Document& document, const Bounds2& box) {
    const Drawing& drawing = document.drawing();
    ViewState state = viewState(drawing);
    if (showsUprightPlan(state)) {
        Bounds2 all = drawing.extents(drawing.currentSpace());
        all.expand(box);
        return showBox(document, all);
    }
    Bounds2 seen = engine::viewedExtents(drawing.currentSpace(), state.toView());
    seen.expand(boxUnder(box, state.toView()));
    if (seen.is_empty()) return showBox(document, {});
    fit(state, seen);
    return setViewState(document, state);
}

std::string showPrevious(doc::Document& document) {
    QVariantList history = document.property(kHistoryName).toList();
    const std::optional<std::uint64_t> place = currentPlace(document.drawing());
    for (qsizetype i = history.size(); place && i-- > 0;) {
        const QVariantList entry = history[i].toList();
        if (entry.size() != 12 || entry[0].toULongLong() != *place) continue;
        history.removeAt(i);
        document.setProperty(kHistoryName, history);
        const auto value = [&](qsizetype at) { return entry[at].toDouble(); };
        ViewState state;
        state.direction = {value(1), value(2), value(3)};
        state.target = {value(4), value(5), value(6)};
        state.twist = value(7);
        state.center = {value(8), value(9)};
        state.width = value(10);
        state.height = value(11);
        return apply(document, state);
    }
    return "No previous view saved.";
}

Bounds2 limitsOfSpace(const Drawing& drawing) {
    const engine::Layout* layout = drawing.activeLayout();
    if (drawing.currentSpaceIsModel() || layout == nullptr) return {drawing.limits.lower, drawing.limits.upper};
    return layout->pageSetup.sheet();
}

}  // namespace kova::cmd
