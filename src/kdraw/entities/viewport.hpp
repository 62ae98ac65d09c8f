#pragma once

#include "kdraw/fields/object.hpp"

namespace kdraw {

/// A viewport of a layout.
class ViewportEntity : public Entity {
public:
    void describe(Fields& f) override;
    bool isOn() const { return (status & kOff) == 0; }

    static constexpr std::uint32_t kOff = 0x20000;

    Vector3 center;  ///< on the sheet
    double width = 1.0, height = 1.0;
    Vector3 target;
    Vector3 direction{0.0, 0.0, 1.0};
    double twist = 0.0;  ///< radians
    double viewHeight = 1.0;
    double lensLength = 50.0;
    double frontClip = 0.0, backClip = 0.0;
    double snapAngle = 0.0;  ///< radians
    Vector2 viewCenter;      ///< in view coordinates
    Vector2 snapBase;
    Vector2 snapSpacing{10.0, 10.0}, gridSpacing{10.0, 10.0};
    std::uint16_t circleZoom = 1000;
    std::uint16_t gridMajor = 5;
    std::uint32_t status = 0;  ///< as group 90
    std::string styleSheet;
    std::uint8_t renderMode = 0;
    bool ucsAtOrigin = false;
    bool ownUcs = true;
    Vector3 ucsOrigin, ucsXAxis{1.0, 0.0, 0.0}, ucsYAxis{0.0, 1.0, 0.0};
    double ucsElevation = 0.0;
    std::uint16_t orthographicKind = 0;
    std::uint16_t shadePlot = 0;
    bool defaultLights = true;
    std::uint8_t defaultLighting = 1;
    double brightness = 0.0, contrast = 0.0;
    Color ambient = Color::fromIndex(250);
    std::vector<Handle> frozenLayers;
    Handle clipBoundary = 0;
    Handle oldHeader = 0;  ///< R2000
    Handle namedUcs = 0, baseUcs = 0;
    Handle background = 0;
    Handle visualStyle = 0;
    Handle shadePlotObject = 0;
    Handle sun = 0;
    /// Groups only: 1 the sheet itself, then counted up within the layout. Records do not have it: the first viewport
    /// of a layout is the sheet.
    std::int32_t number = 0;
};

}  // namespace kdraw
