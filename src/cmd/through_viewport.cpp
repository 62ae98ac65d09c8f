#include "cmd/through_viewport.hpp"

#include "cmd/picking.hpp"
#include "cmd/viewports.hpp"
#include "doc/spatial_index.hpp"

namespace kova::cmd {

using engine::ViewportEntity;
using math::Vector2;

ViewportEntity* viewportAt(doc::Document& document, const Vector2& p) {
    engine::Drawing& drawing = document.drawing();
    const engine::Layout* layout = drawing.activeLayout();
    if (layout == nullptr || &drawing.currentSpace() != &layout->entities) return nullptr;
    const std::vector<ViewportEntity*> all = viewportsOf(*layout);
    for (auto it = all.rbegin(); it != all.rend(); ++it) {
        const ViewportEntity& viewport = **it;
        const bool usable = viewport.isOn() && viewport.showsPlan() && viewport.viewScale > 0.0;
        if (usable && viewport.frame().contains_point(p)) return *it;
    }
    return nullptr;
}

bool showsIn(const engine::Drawing& drawing, const ViewportEntity& viewport, const engine::Entity& entity) {
    const engine::Layer* layer = drawing.layers.find(entity.layer);
    return entity.visible && (layer == nullptr || layer->isVisible()) && !viewport.isFrozenHere(entity.layer);
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
