#pragma once

#include <array>
#include <string>

#include "kdraw/fields/object.hpp"

namespace kdraw {

/// What a surface is made of. Procedural textures are not decoded: such a material counts as damaged.
class Material : public Object {
public:
    struct Shade {
        std::uint8_t method = 0;  ///< 0 current colour, 1 own
        double factor = 1.0;
        std::int32_t rgb = 0;
    };
    struct Map {
        double blend = 1.0;
        std::uint8_t projection = 2, tiling = 1, transform = 1;
        std::array<double, 16> matrix{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
        std::uint8_t source = 1;  ///< 0 scene, 1 file, 2 procedural
        std::string file;
    };

    std::string name, description;
    Shade ambient, diffuse, specular;
    Map diffuseMap, specularMap, reflectionMap, opacityMap, bumpMap, refractionMap;
    double gloss = 0.5, opacity = 1.0, refraction = 1.0;
    double translucence = 0.0, selfIllumination = 0.0, reflectivity = 0.0;
    std::int32_t illumination = 0, channels = 63, mode = 0;

    void describe(Fields& f) override;
};

}  // namespace kdraw
