#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "doc/document.hpp"
#include "engine/entities/viewport.hpp"
#include "math/bounds2.hpp"

namespace kova::cmd {

/// The windows of a layout, without the sheet's own view, in drawing order.
std::vector<engine::ViewportEntity*> viewportsOf(const engine::Layout& layout);
/// The windows of the active layout among these entities, also by what bounds them; each once.
std::vector<engine::ViewportEntity*> viewportsAmong(const engine::Drawing& drawing,
                                                    const std::vector<std::uint64_t>& ids);
/// The one of the active layout that MSPACE enters, of those that are on: the one that was left last, else the newest;
/// null: none.
engine::ViewportEntity* usualViewport(const doc::Document& document);
/// Handles of the entities that bound viewports of the active layout, with the viewports.
std::unordered_map<std::uint64_t, engine::ViewportEntity*> boundedViewports(const engine::Drawing& drawing);

/// Makes model space current through a viewport of the active layout, as part of the open group. Error text, empty on
/// success.
std::string enterViewport(doc::Document& document, const engine::ViewportEntity& viewport);
/// Makes the paper current.
void leaveViewport(doc::Document& document);

/// A new window onto the model at a place of the sheet, on the current layer, with the layout's next number; it shows
/// all of `model` (all there is when that is empty).
std::unique_ptr<engine::ViewportEntity> makeViewport(doc::Document& document, const math::Bounds2& frame,
                                                     const math::Bounds2& model = {});
/// True for what may bound a viewport: closed curves and regions that enclose an area.
bool canBoundViewport(const engine::Entity& entity);
/// Part of the layout's sheet within its margins.
math::Bounds2 printableArea(const engine::Layout& layout);

}  // namespace kova::cmd
