#pragma once

#include <QImage>

#include "render/request.hpp"
#include "render/view.hpp"

class QPainter;

namespace kova::render {

/// Plots a drawing into a painter whose device has the request's size.
void render(QPainter& painter, const engine::Drawing& drawing, const RenderRequest& request);

/// Paints model space as the drawing's current view looks at it; `view` places the coordinates of that view. `everything`: the view shows the whole space, so that no index is asked.
void paintModel(QPainter& painter, const engine::Drawing& drawing, const View& view, const RenderRequest& request,
                bool everything);
/// Paints a layout's sheet with what its viewports show.
void paintLayout(QPainter& painter, const engine::Drawing& drawing, const engine::Layout& layout, const View& view,
                 const RenderRequest& request);

/// The drawing as a picture: sizes below 16 are raised to 16; model space, or the active layout when TILEMODE is 0.
QImage renderImage(
    const engine::Drawing& drawing, int width, int height,
    const std::function<std::vector<engine::Entity*>(engine::EntityList&, const math::Bounds2&)>& query = {});

}  // namespace kova::render
