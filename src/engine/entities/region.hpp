#pragma once

#include "engine/model/entity.hpp"
#include "math/curves/path.hpp"

namespace kova::engine {

/// One further boundary of a region.
struct RegionLoop {
    std::vector<math::Vector2> vertices;
    std::vector<double> bulges;  ///< as those of a polyline; may be shorter than the vertices

    void describe(FieldVisitor& v);
};

/// A plane area bounded by closed loops of lines and arcs. The first boundary is `vertices` with `bulges`, further ones
/// (holes and separate parts) are `loops`; what lies inside an odd number of them belongs to the region.
class RegionEntity final : public Entity {
    KOVA_ENTITY(RegionEntity, Region)

    std::vector<math::Vector2> vertices;
    std::vector<double> bulges;
    std::vector<RegionLoop> loops;

    /// All boundaries, each a closed figure.
    Path path() const;
    /// Area and centroid of the region (arcs exactly); the centroid of an empty region is the origin.
    double area() const;
    math::Vector2 centroid() const;
    double perimeter() const;
};

}  // namespace kova::engine
