#pragma once

#include "kdraw/fields/object.hpp"

// Images, wipeouts, underlays.

namespace kdraw {

class ImageEntity : public Entity {
public:
    void describe(Fields& f) override { describeImage(f, "AcDbRasterImage"); }

    static constexpr std::uint16_t kRectangle = 1, kPolygon = 2;

    std::int32_t version = 0;
    Vector3 position;           ///< lower left corner
    Vector3 u{1.0, 0.0, 0.0};   ///< one pixel along the width
    Vector3 v{0.0, 1.0, 0.0};   ///< one pixel along the height
    Vector2 size{1.0, 1.0};     ///< in pixels
    std::uint16_t display = 7;  ///< 1 show, 2 show when not aligned, 4 clip, 8 transparent
    bool clipping = true;
    std::uint8_t brightness = 50, contrast = 50, fade = 0;
    bool clipInside = false;  ///< R2010 and later
    std::uint16_t boundaryKind = kRectangle;
    /// In pixels, y downwards, from the middle of the upper left one. A rectangle has two corners; a polygon repeats
    /// its first one.
    std::vector<Vector2> boundary;
    Handle definition = 0;  ///< IMAGEDEF
    Handle reactor = 0;     ///< IMAGEDEF_REACTOR

protected:
    void describeImage(Fields& f, std::string_view marker);
};

class WipeoutEntity : public ImageEntity {
public:
    void describe(Fields& f) override { describeImage(f, "AcDbWipeout"); }
};

/// A page of a PDF, DWF or DGN file below the drawing.
class UnderlayEntity : public Entity {
public:
    void describe(Fields& f) override;

    Vector3 normal{0.0, 0.0, 1.0};
    Vector3 position;
    double rotation = 0.0;  ///< radians
    Vector3 scale{1.0, 1.0, 1.0};
    std::uint8_t flags = 2;  ///< 1 clip, 2 on, 4 monochrome, 8 adjusted to the background, 16 clip inside
    std::uint8_t contrast = 100, fade = 0;
    std::vector<Vector2> boundary;
    Handle definition = 0;
};

}  // namespace kdraw
