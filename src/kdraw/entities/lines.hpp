#pragma once

#include <array>

#include "kdraw/fields/object.hpp"

// Points, straight lines and plane faces.

namespace kdraw {

class LineEntity : public Entity {
public:
    void describe(Fields& f) override;

    Vector3 start, end;
    double thickness = 0.0;
    Vector3 normal{0.0, 0.0, 1.0};
};

class PointEntity : public Entity {
public:
    void describe(Fields& f) override;

    Vector3 position;
    double thickness = 0.0;
    Vector3 normal{0.0, 0.0, 1.0};
    double xAxisAngle = 0.0;  ///< radians; turns the symbol only
};

/// A base point and a direction of length 1.
class RayEntity : public Entity {
public:
    void describe(Fields& f) override;

    Vector3 base;
    Vector3 direction{1.0, 0.0, 0.0};

protected:
    void describeAs(Fields& f, std::string_view marker);
};

class XlineEntity : public RayEntity {
public:
    void describe(Fields& f) override;
};

/// SOLID and TRACE.
class SolidEntity : public Entity {
public:
    void describe(Fields& f) override;

    double thickness = 0.0;
    double elevation = 0.0;
    std::array<Vector2, 4> corners;  ///< the outline runs 0, 1, 3, 2
    Vector3 normal{0.0, 0.0, 1.0};
};

class FaceEntity : public Entity {
public:
    void describe(Fields& f) override;

    std::array<Vector3, 4> corners;
    std::uint16_t invisibleEdges = 0;  ///< bit n: edge n + 1
};

/// A shape of a shape file. Records know the number in the file; DXF knows the name.
class ShapeEntity : public Entity {
public:
    void describe(Fields& f) override;

    Vector3 position;
    double size = 1.0;
    double rotation = 0.0;
    double widthFactor = 1.0;
    double oblique = 0.0;
    double thickness = 0.0;
    std::uint16_t number = 0;
    std::string name;  ///< of DXF only
    Vector3 normal{0.0, 0.0, 1.0};
    Handle style = 0;  ///< STYLE that is a shape file
};

}  // namespace kdraw
