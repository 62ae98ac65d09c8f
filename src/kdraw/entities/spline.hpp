#pragma once

#include "kdraw/fields/object.hpp"

// Splines and helices.

namespace kdraw {

/// A curve by control points and knots, or by the points that it goes through. Records hold one of the two: control
/// points when there are any.
class SplineEntity : public Entity {
public:
    void describe(Fields& f) override { describeSpline(f); }

    bool byFitPoints() const { return control.empty() && !fit.empty(); }

    static constexpr std::int32_t kChords = 0, kSquareRoot = 1, kUniform = 2, kCustomKnots = 15;

    std::int32_t degree = 3;
    bool rational = false, closed = false, periodic = false;
    std::int32_t knotParameter = kCustomKnots;  ///< how knots follow from fit points; R2013 and later
    double knotTolerance = 1e-7, controlTolerance = 1e-7, fitTolerance = 1e-10;
    std::vector<double> knots;
    std::vector<Vector3> control;
    std::vector<double> weights;       ///< empty, or one for each control point
    Vector3 startTangent, endTangent;  ///< zero: none
    std::vector<Vector3> fit;
    Vector3 normal{0.0, 0.0, 1.0};  ///< groups only
    bool planar = false;            ///< groups only

protected:
    void describeSpline(Fields& f);

private:
    void readGroups(DxfInput& in);
    void writeGroups(DxfOutput& out);
};

class HelixEntity : public SplineEntity {
public:
    void describe(Fields& f) override;

    std::int32_t release = 29, maintenance = 63;
    Vector3 axisBase, start, axis{0.0, 0.0, 1.0};
    double radius = 1.0, turns = 3.0, turnHeight = 1.0;
    bool counterClockwise = true;
    std::uint8_t constraint = 1;  ///< 0 turn height, 1 turns, 2 height
};

}  // namespace kdraw
