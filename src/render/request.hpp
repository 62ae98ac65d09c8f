#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "engine/model/color.hpp"
#include "engine/model/drawing.hpp"
#include "engine/outline/plot_page.hpp"
#include "math/bounds2.hpp"

namespace kova::render {

/// What of a drawing is shown.
enum class Area : std::int16_t { Default = 0, Extents = 1, Display = 2, Window = 3 };

/// What becomes of colours, lineweights and transparency on paper.
struct PlotLook {
    engine::PlotColors colors = engine::PlotColors::AsDrawn;
    bool lineweights = true;  ///< false: all lines as thin as can be
    double lineweightFactor = 1.0;
    bool transparency = true;  ///< false: everything is opaque
    bool plotted = false;      ///< a plot: frames that are only shown stay away
};

class TextOutput;

/// One picture of a drawing.
struct RenderRequest {
    double width = 1600.0;   ///< pixels
    double height = 1000.0;  ///< pixels
    double dpi = 150.0;
    Area area = Area::Extents;
    math::Bounds2 window;       ///< drawing units, for Area::Window
    bool useScale = false;      ///< the fixed scale below instead of fitting
    double scalePaper = 1.0;    ///< paper millimetres ...
    double scaleDrawing = 1.0;  ///< ... per drawing units
    double offsetX = 0.0;       ///< millimetres, when not centred
    double offsetY = 0.0;
    bool centered = true;
    const engine::Layout* layout = nullptr;  ///< paper space; null: model space
    engine::Rgb background{255, 255, 255};
    PlotLook look;
    TextOutput* textOutput = nullptr;  ///< a device that keeps text as text; null: letters become shapes
    double dot = 1.0;  ///< pixels that an eye can tell apart: more than 1 where the device's dots are finer
    /// Entities of a space whose extents meet a box, in drawing order: how a small window onto a large drawing is
    /// found fast. Absent: all entities are looked at.
    std::function<std::vector<engine::Entity*>(engine::EntityList&, const math::Bounds2&)> query;

    double dotsPerMillimetre() const { return dpi / 25.4; }
};

}  // namespace kova::render
