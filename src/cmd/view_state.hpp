#pragma once

#include <optional>
#include <string>

#include "doc/document.hpp"
#include "math/bounds2.hpp"

namespace kova::cmd {

/// What a view shows, in coordinates of the current space.
struct ViewWindow {
    math::Vector2 center;
    double width = 0.0;
    double height = 0.0;
};

/// The current view: of the model tab, of the viewport through which model space is worked on, or of the sheet.
ViewWindow viewWindow(const engine::Drawing& drawing);
/// Shows a part of the current space, as part of the open group, and notes the view before for ZOOM Previous. The view
/// keeps its proportions; the height counts. Error text, empty on success.
std::string showWindow(doc::Document& document, const math::Vector2& center, double height);
/// The same for a box, all of which is shown; an empty one shows the limits.
std::string showBox(doc::Document& document, const math::Bounds2& box);
/// The view before, which is forgotten. Error text, empty on success.
std::string showPrevious(doc::Document& document);

/// The drawing limits, or the paper of the current layout.
math::Bounds2 limitsOfSpace(const engine::Drawing& drawing);

}  // namespace kova::cmd
