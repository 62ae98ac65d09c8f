#pragma once

#include "kdraw/fields/object.hpp"

namespace kdraw {

/// A multiline.
class MLineEntity : public Entity {
public:
    void describe(Fields& f) override;

    struct Element {
        std::vector<double> parameters;  ///< the offset along the miter, then where breaks begin and end
        std::vector<double> fill;
    };
    struct Vertex {
        Vector3 position, direction, miter;
        std::vector<Element> elements;
    };
    double scale = 1.0;
    std::uint8_t justification = 0;  ///< 0 top, 1 zero, 2 bottom
    Vector3 base;
    Vector3 normal{0.0, 0.0, 1.0};
    std::uint16_t flags = 1;  ///< 1 has vertices, 2 closed, 4 no caps at the start, 8 at the end
    std::uint8_t elementCount = 0;
    std::vector<Vertex> vertices;
    Handle style = 0;  ///< MLINESTYLE
};

}  // namespace kdraw
