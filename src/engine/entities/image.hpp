#pragma once

#include <array>
#include <string>

#include "engine/model/entity.hpp"
#include "math/curves/path.hpp"

namespace kova::engine {

/// A raster image file placed in the drawing. The picture fills the frame spanned from its lower left corner by
/// `width` along and `height` across the direction of `rotation`; a negative extent mirrors it.
class ImageEntity final : public Entity {
    KOVA_ENTITY(ImageEntity, Image)

    std::string filePath;
    math::Vector2 insertion;  ///< lower left corner
    double width = 1.0;       ///< drawing units
    double height = 1.0;
    double rotation = 0.0;         ///< radians
    std::int32_t brightness = 50;  ///< 0..100
    std::int32_t contrast = 50;    ///< 0..100
    std::int32_t fade = 0;         ///< 0..100
    bool showFrame = true;
    std::int32_t imageTransparency = 0;  ///< not 0: transparent pixels let through what lies below
    std::int32_t pixelWidth = 0;         ///< size of the file's picture; 0: not known
    std::int32_t pixelHeight = 0;
    /// Outline of the part that is shown, in drawing coordinates; two points are opposite corners of a rectangle
    /// that stands along the image's edges. Empty: all of it.
    std::vector<math::Vector2> clipBoundary;
    bool clipEnabled = false;

    /// Lower left, lower right, upper right, upper left corner of the whole picture in drawing coordinates.
    std::array<math::Vector2, 4> corners() const;
    /// The boundary of what is shown, closed, without a repeated point: the clip polygon when clipping is on, else
    /// the corners.
    std::vector<math::Vector2> frame() const;
    bool isClipped() const { return clipEnabled && clipBoundary.size() >= 2; }
};

}  // namespace kova::engine
