#pragma once

#include <QImage>

#include "render/request.hpp"

class QPainter;

namespace kova::render {

/// Plots a drawing into a painter whose device has the request's size.
void render(QPainter& painter, const engine::Drawing& drawing, const RenderRequest& request);

/// The drawing as a picture: sizes below 16 are raised to 16; model space, or the active layout when TILEMODE is 0.
QImage renderImage(const engine::Drawing& drawing, int width, int height,
                   const std::function<std::vector<engine::Entity*>(engine::EntityList&, const math::Bounds2&)>& query = {});

}  // namespace kova::render
