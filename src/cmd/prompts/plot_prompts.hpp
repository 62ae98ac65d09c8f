#pragma once

#include <string>
#include <string_view>

#include "cmd/dialogue.hpp"
#include "engine/outline/plot_page.hpp"

namespace kova::cmd {

/// Asks for the part of the space that is plotted. `layoutArea`: the whole sheet of a layout is one of the choices.
Task<> askPlotArea(Ask& ask, engine::Drawing& drawing, engine::PlotPage& page, std::string choices);
/// Asks for paper, units, orientation, area, scale, offset, plot styles and lineweights, in the order in which scripts
/// answer a detailed plot configuration.
Task<> askPageSetup(Ask& ask, engine::Drawing& drawing, engine::PlotPage& page, bool askArea);

/// The kind of file that an output device's name stands for ("PDF", "... To PDF.pc3", "SVG", "PNG"); nothing for
/// devices that this program does not have. "None" and an empty name are PDF.
std::optional<engine::PlotFormat> plotDevice(std::string_view name);
/// ".pdf" and its like.
std::string_view plotExtension(engine::PlotFormat format);
/// Where a plot goes when no file is named: the drawing's file with the layout's name and the format's extension.
std::string defaultPlotFile(const engine::Drawing& drawing, engine::Name layout, engine::PlotFormat format);
/// The file that an answer names: the default for an empty one; the extension is added where there is none.
std::string plotFile(const std::string& answer, const std::string& fallback, engine::PlotFormat format);

/// The plot scale as prompts show it: "Fit", "1=50".
std::string plotScaleText(const engine::PageSetup& setup);
/// Takes a scale as "Fit", "1=50", "1:50" or "0.02", in the setup's paper units. False: no scale.
bool parsePlotScale(std::string_view text, engine::PageSetup& setup);

/// Writes the pages and reports in one line a file: "Plotted: ...". Formats other than PDF write a file a page.
void writePlot(ToolHost& host, const std::vector<engine::PlotPage>& pages, engine::PlotFormat format,
               const std::string& path);

}  // namespace kova::cmd
