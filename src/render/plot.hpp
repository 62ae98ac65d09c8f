#pragma once

#include <QByteArray>
#include <span>

#include "engine/outline/plot_page.hpp"
#include "render/request.hpp"
#include "render/view.hpp"

namespace kova::render {

/// Where a page's drawing lies on its paper.
struct PagePlacement {
    double width = 0.0;  ///< of the paper, millimetres
    double height = 0.0;
    double scale = 1.0;  ///< millimetres for a drawing unit
    View view;           ///< to dots, from the paper's upper left corner
    math::Bounds2 clip;  ///< in dots
};
/// Lays a page out. A layout's own area is its sheet, whose origin is the paper's lower left corner; any other area
/// stands within the margins, fitted or to scale, in their middle or from their lower left corner, moved by the offset.
PagePlacement placePage(const engine::Drawing& drawing, const engine::PlotPage& page, double dpi);

using SpaceQuery = std::function<std::vector<engine::Entity*>(engine::EntityList&, const math::Bounds2&)>;

/// Plots pages into the bytes of a file: PDF holds them all; the other formats hold the first one. PDF and SVG keep
/// lines as lines and text in installed fonts as text. Empty when a picture would be too large or there is no page.
QByteArray plot(const engine::Drawing& drawing, std::span<const engine::PlotPage> pages, engine::PlotFormat format,
                const SpaceQuery& query = {});

}  // namespace kova::render
