#pragma once

#include <array>

#include "kdraw/fields/object.hpp"

namespace kdraw {

/// The clip of a block reference.
class SpatialFilter : public Object {
public:
    using Matrix = std::array<double, 12>;  ///< three rows of four
    static constexpr Matrix kIdentity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};

    std::vector<Vector2> points;  ///< two: corners of a rectangle
    Vector3 extrusion{0.0, 0.0, 1.0};
    Vector3 origin;
    std::int16_t shown = 1;
    std::int16_t frontOn = 0;
    double front = 0.0;
    std::int16_t backOn = 0;
    double back = 0.0;
    Matrix inverseInsert = kIdentity;  ///< inverse of the reference's transform when it was clipped
    Matrix toClip = kIdentity;

    void describe(Fields& f) override;
};

}  // namespace kdraw
