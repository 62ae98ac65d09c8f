#pragma once

#include <string>
#include <string_view>

#include "engine/model/drawing.hpp"

namespace kova::engine {

/// Values of PageSetup::plotArea.
enum class PlotArea : std::int32_t { Display = 0, Extents = 1, Limits = 2, View = 3, Window = 4, Layout = 5 };

/// PageSetup::scaleType of a scale that is in no list of standard ones; 1 to 32 are.
inline constexpr std::int32_t kCustomPlotScale = 33;

/// One page of a plot: which space, and how it stands on the paper.
struct PlotPage {
    Name layout;           ///< empty: model space
    PageSetup setup;       ///< paper, area, scale, offset, plot styles
    math::Bounds2 window;  ///< drawing units; the area for PlotArea::Window and PlotArea::View
    bool upsideDown = false;
    bool scaleLineweights = false;  ///< lineweights grow and shrink with the plot's scale
};

/// What is written.
enum class PlotFormat { Pdf, Svg, Png, Jpg, Bmp };

/// A sheet of paper that is known by name. Millimetres, the longer side first.
struct PaperSize {
    std::string_view name;
    double width;
    double height;
};
/// All known sheets, ISO ones first.
std::span<const PaperSize> paperSizes();
/// A sheet by what users and page setups call it: "A3", "ISO A3", "ISO full bleed A3 (420.00 x 297.00 MM)",
/// "ISO_A3_(297.00_x_420.00_MM)", "Letter", "ANSI B", "500 x 300". Nothing for other texts.
std::optional<math::Vector2> parsePaperSize(std::string_view text);

/// How colours become ink under a plot style table.
enum class PlotColors : std::uint8_t { AsDrawn, Black, Grey };
/// By the name of the table: "monochrome" prints index colours black, "grayscale" all colours as greys.
PlotColors plotColors(std::string_view plotStyleTable);

/// The page setup that a plot of model space starts with: the sheet of the first layout, the extents fitted and
/// centred, landscape.
PageSetup modelPageSetup(const Drawing& drawing);
/// A page as its layout's setup (or, for an empty name, model space's) describes it; model space when there is no
/// such layout.
PlotPage plotPage(const Drawing& drawing, Name layout);
/// The part of the page's space that is plotted, drawing units; empty when there is nothing to be seen. A layout's
/// own area is its sheet.
math::Bounds2 plottedBox(const Drawing& drawing, const PlotPage& page);

}  // namespace kova::engine
