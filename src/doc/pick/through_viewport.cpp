#include "doc/pick/through_viewport.hpp"

#include "doc/pick/picking.hpp"
#include "edit/viewports.hpp"
#include "doc/spatial_index.hpp"

namespace kova::cmd {

using engine::ViewportEntity;
using math::Vector2;

namespace {

/// The windows of the current layout that show the model straight from above, those in front first; none while model
/// space is current.
std::vector<ViewportEntity*> planViewports(doc::Document& document) {
    engine::Drawing& drawing = document.drawing();
    const engine::Layout* layout = drawing.activeLayout();
    if (layout == nullptr || &drawing.currentSpace() != &layout->entities) return {};
    std::vector<ViewportEntity*> all = viewportsOf(*layout);
    std::erase_if(all, [](const ViewportEntity* viewport) {
        return !viewport->isOn() || !viewport->showsPlan() || !(viewport->viewScale > 0.0);
    });
    std::reverse(all.begin(), all.end());
    return all;
}

}  // namespace

ViewportEntity* viewportAt(doc::Document& document, const Vector2& p) {
    for (ViewportEntity* viewport : planViewports(document))
        if (viewport->frame().contains_point(p)) return viewport;
    return nullptr;
}

bool showsIn(const engine::Drawing& drawing, const ViewportEntity& viewport, const engine::Entity& entity) {
    return isShown(drawing, entity) && !viewport.isFrozenHere(entity.layer);
}

bool showsAt(doc::Document& document, const engine::Entity& entity, const Vector2& p) {
    const engine::Drawing& drawing = document.drawing();
    const ViewportEntity* viewport = viewportAt(document, p);
    return viewport != nullptr && entity.owner() == &drawing.modelSpace() && showsIn(drawing, *viewport, entity);
}

std::optional<Vector2> shownOnSheet(doc::Document& document, const engine::Entity& entity) {
    for (const ViewportEntity* viewport : planViewports(document)) {
        const Vector2 middle = viewport->frame().center();
        const Vector2 p = viewport->toPaper(entity.nearestPoint(viewport->toModel(middle)));
        if (viewportAt(document, p) == viewport && showsAt(document, entity, p)) return p;
    }
    return std::nullopt;
}

engine::Entity* pickThroughViewport(doc::Document& document, const Vector2& p,
                                    const std::function<bool(const engine::Entity&)>& filter) {
    const ViewportEntity* viewport = viewportAt(document, p);
    if (viewport == nullptr) return nullptr;
    engine::Drawing& drawing = document.drawing();
    const double reach = pickTolerance(document) / viewport->viewScale;
    if (!std::isfinite(reach)) return nullptr;
    return document.spatialIndex(drawing.modelSpace())
        .nearest(viewport->toModel(p), reach, [&](const engine::Entity& entity) {
            return showsIn(drawing, *viewport, entity) && (!filter || filter(entity));
        });
}

}  // namespace kova::cmd
