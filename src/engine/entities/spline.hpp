#pragma once

#include <optional>

#include "engine/model/entity.hpp"
#include "math/curves/path.hpp"
#include "math/curves/nurbs_edit.hpp"

namespace kova::engine {

/// What a spline remembers of the helix that it approximates.
struct HelixData {
    math::Vector3 axisBase;
    math::Vector3 start;          ///< start point of the curve; its distance from the axis is the base radius
    math::Vector3 axis{0, 0, 1};  ///< direction
    double topRadius = 1.0;
    double turns = 3.0;
    double turnHeight = 1.0;
    bool ccw = true;
    std::int32_t constraint = 1;  ///< what an edit keeps: 0 turn height, 1 turns, 2 height

    void describe(FieldVisitor& v);
};

/// A B-spline in world coordinates, rational when it has weights. A spline that has only fit points is the cubic
/// through them. z values stand in controlZ (parallel to the control points; empty: all at the elevation).
class SplineEntity final : public Entity {
    KOVA_ENTITY(SplineEntity, Spline)

    std::int32_t degree = 3;
    bool closed = false;
    std::vector<math::Vector2> controlPoints;
    std::vector<double> knots;  ///< control points + degree + 1 values, not decreasing; else a clamped uniform vector
    std::vector<math::Vector2> fitPoints;
    std::vector<double> controlZ;
    std::vector<double> weights;  ///< parallel to the control points; empty: all 1
    std::optional<HelixData> helix;

    /// The curve as drawn: Beziers, exact for polynomial degrees up to 3, else within 1e-6 of the extents.
    Path path() const;
    /// The part between two places of that path: piece number and parameter along it, as piece + t. Exactly the curve,
    /// of the same degree and with the same common properties, without fit points. `to` <= `from` runs over the start
    /// (of a closed curve). Null when nothing is left.
    std::unique_ptr<SplineEntity> part(double from, double to) const;
    /// Makes the control points and knots anew as the cubic through the fit points, with free ends or those directions;
    /// no effect without fit points.
    void fitThroughPoints(const math::Vector2& startTangent = {}, const math::Vector2& endTangent = {});
    /// Directions at the ends of an open curve; the zero vector at an end that runs out without curvature.
    std::pair<math::Vector2, math::Vector2> endTangents() const;
    /// The B-spline that is drawn: complete knots, z values as in controlZ; without points when there is nothing to draw.
    math::SplineData curve() const;
    /// Takes a curve over; it is no helix then. The fit points stay.
    void setCurve(math::SplineData curve);
    double length() const;
};

}  // namespace kova::engine
