#pragma once

#include <functional>

#include "doc/document.hpp"
#include "engine/entities/viewport.hpp"

namespace kova::cmd {

// From a layout's sheet onto what its viewports show of the model.

/// The window of the current layout in front at a point of the sheet that shows the model straight from above; null:
/// none, or model space is current.
engine::ViewportEntity* viewportAt(doc::Document& document, const math::Vector2& p);

/// The entity of the model nearest to what shows at a point of the sheet, within pickTolerance; null: none.
engine::Entity* pickThroughViewport(doc::Document& document, const math::Vector2& p,
                                    const std::function<bool(const engine::Entity&)>& filter = {});

/// True when an entity of the model shows in a viewport: neither hidden nor on a layer that is off or frozen there.
bool showsIn(const engine::Drawing& drawing, const engine::ViewportEntity& viewport, const engine::Entity& entity);

}  // namespace kova::cmd
