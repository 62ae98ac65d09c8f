#pragma once

#include <string>

#include "kdraw/fields/object.hpp"

namespace kdraw {

/// A page setup. Lengths of paper in millimetres.
class PlotSettings : public Object {
public:
    std::string pageSetup;
    std::string printer = "none_device";
    int plotFlags = 0;  ///< bits of group 70: 4 centred, 16 standard scale, 32 plot styles, 128 lineweights, 1024 model
    double left = 6.35, bottom = 19.05, right = 6.35, top = 19.05;
    double paperWidth = 210.0, paperHeight = 297.0;  ///< of the sheet before it is turned
    std::string media = "ISO_A4_(210.00_x_297.00_MM)";
    Vector2 plotOrigin;
    std::int16_t paperUnit = 1;  ///< 0 inch, 1 millimetre, 2 pixel
    std::int16_t rotation = 0;   ///< quarter turns
    std::int16_t plotType = 5;   ///< 0 display, 1 extents, 2 limits, 3 view, 4 window, 5 layout
    Vector2 windowLower, windowUpper;
    std::string plotViewName;  ///< R2000 only; a reference later
    double realUnits = 1.0, drawingUnits = 1.0;
    std::string styleSheet;
    std::int16_t scaleType = 16;  ///< 16: 1:1
    double scaleFactor = 1.0;
    Vector2 imageOrigin;
    std::int16_t shadeMode = 0, shadeResolution = 2, shadeDpi = 300;
    Handle plotView = 0;
    Handle shadeObject = 0;

    void describe(Fields& f) override;
};

class Layout : public PlotSettings {
public:
    std::string name;
    std::int32_t tab = 0;  ///< 0: the model tab
    std::int16_t layoutFlags = 1;
    Vector3 ucsOrigin;
    Vector2 limitsMin, limitsMax{12.0, 9.0};
    Vector3 insertionBase;
    Vector3 ucsXAxis{1.0, 0.0, 0.0}, ucsYAxis{0.0, 1.0, 0.0};
    double elevation = 0.0;
    std::int16_t orthographic = 0;
    Vector3 extentsMin{1e20, 1e20, 1e20}, extentsMax{-1e20, -1e20, -1e20};
    Handle block = 0;           ///< BLOCK_HEADER of its space
    Handle activeViewport = 0;  ///< last active one
    Handle baseUcs = 0, namedUcs = 0;
    std::vector<Handle> viewports;  ///< VIEWPORT entities, the overall one first

    void describe(Fields& f) override;
};

}  // namespace kdraw
