#pragma once

#include <functional>
#include <optional>

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

/// A point of the sheet where an entity of the model shows through a window of the current layout; nothing: nowhere.
std::optional<math::Vector2> shownOnSheet(doc::Document& document, const engine::Entity& entity);
/// True when the window at a point of the sheet shows an entity of the model, be it elsewhere within the window.
bool showsAt(doc::Document& document, const engine::Entity& entity, const math::Vector2& p);

}  // namespace kova::cmd
