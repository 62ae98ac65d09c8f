#pragma once

#include "kdraw/fields/object.hpp"

// Circles, arcs, ellipses.

namespace kdraw {

class CircleEntity : public Entity {
public:
    void describe(Fields& f) override;

    Vector3 center;  ///< in the object plane
    double radius = 1.0;
    double thickness = 0.0;
    Vector3 normal{0.0, 0.0, 1.0};
};

/// Counter-clockwise about the normal.
class ArcEntity : public CircleEntity {
public:
    void describe(Fields& f) override;

    double startAngle = 0.0, endAngle = 0.0;  ///< radians
};

class EllipseEntity : public Entity {
public:
    void describe(Fields& f) override;

    Vector3 center;
    Vector3 majorAxis{1.0, 0.0, 0.0};  ///< from the centre
    Vector3 normal{0.0, 0.0, 1.0};
    double ratio = 1.0;                          ///< minor to major axis, 0 to 1
    double startParameter = 0.0;                 ///< radians, of the eccentric angle
    double endParameter = 6.283185307179586477;  ///< 2 pi for a whole one
};

}  // namespace kdraw
