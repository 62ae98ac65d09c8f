#pragma once

#include "kdraw/fields/object.hpp"

namespace kdraw {

/// A subdivision mesh.
class MeshEntity : public Entity {
public:
    void describe(Fields& f) override;

    struct Edge {
        std::int32_t from = 0, to = 0;
    };
    std::uint16_t version = 2;
    bool blendCrease = false;
    std::int32_t level = 0;  ///< of subdivision
    std::vector<Vector3> vertices;
    std::vector<std::int32_t> faces;  ///< for each face the number of its corners, then these, from 0
    std::vector<Edge> edges;
    std::vector<double> creases;  ///< one for each edge
    std::int32_t overrides = 0;   ///< number of properties that single parts have; such records are not written
};

}  // namespace kdraw
