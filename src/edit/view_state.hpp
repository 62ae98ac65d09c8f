#pragma once

#include <optional>
#include <string>

#include "doc/document.hpp"
#include "math/bounds2.hpp"

namespace kova::cmd {

/// A view: how it looks at space, and the part of it that is seen. Lies in the coordinates of the view (see
/// engine::worldToView), about the target.
struct ViewState {
    math::Vector3 direction{0, 0, 1};  ///< from the target to the viewer
    math::Vector3 target;
    double twist = 0.0;    ///< radians
    math::Vector2 center;  ///< of what is seen, from the target
    double width = 0.0;
    double height = 0.0;

    math::Matrix4 toView() const;
    /// The point of space at the centre, at the depth of the target.
    math::Vector3 middle() const;
};

/// What a view shows, in coordinates of the current space.
struct ViewWindow {
    math::Vector2 center;
    double width = 0.0;
    double height = 0.0;
    double z = 0.0;  ///< of the centre, in views that do not look straight down
};

/// The current view: of the model tab, of the viewport through which model space is worked on, or of the sheet.
ViewState viewState(const engine::Drawing& drawing);
/// Makes it look so, as part of the open group, and notes the view before for ZOOM Previous. The proportions of the
/// view stay; the height counts. Error text, empty on success.
std::string setViewState(doc::Document& document, const ViewState& state);
/// Looks from a direction at all that the current space has, about the world's origin. As part of the open group; error
/// text, empty on success.
std::string lookFrom(doc::Document& document, const math::Vector3& direction, double twist);

ViewWindow viewWindow(const engine::Drawing& drawing);
/// Shows a part of the current space, as part of the open group, and notes the view before for ZOOM Previous. The view
/// keeps its proportions; the height counts. Error text, empty on success.
std::string showWindow(doc::Document& document, const math::Vector2& center, double height, double z = 0.0);
/// The same for a box of the plan, all of which is shown; an empty one shows the limits.
std::string showBox(doc::Document& document, const math::Bounds2& box);
/// All that the current space has, and the box as well.
std::string showExtents(doc::Document& document, const math::Bounds2& box = {});
/// The view before, which is forgotten. Error text, empty on success.
std::string showPrevious(doc::Document& document);

/// The named view as a view of its own.
ViewState stateOf(const engine::NamedView& view);
/// A view under a name; the name is the caller's.
engine::NamedView namedView(const ViewState& state);

/// The drawing limits, or the paper of the current layout.
math::Bounds2 limitsOfSpace(const engine::Drawing& drawing);

}  // namespace kova::cmd
