#pragma once

#include <memory>
#include <optional>

#include "engine/curves/edit_curve.hpp"
#include "engine/entities/polyline.hpp"

namespace kova::engine {

/// A curve taken at a point: the piece that lies there.
struct PickedCurve {
    const EditCurve* curve = nullptr;
    math::Vector2 point;  ///< on the curve
    double u = 0.0;       ///< its place there
    std::size_t piece = 0;

    PickedCurve(const EditCurve& of, const math::Vector2& pick);
    const CurvePiece& at() const { return curve->pieces()[piece]; }
};

/// Where a corner ends a curve: the part before or behind u stays.
struct CornerCut {
    double u = 0.0;
    bool keepsStart = true;
    std::size_t piece = 0;  ///< of a polyline; u - piece may lie beyond it
};

/// What joins two curves: from a place on the first to one on the second, straight or along an arc.
struct Corner {
    CornerCut first;
    CornerCut second;
    math::Vector2 from;
    math::Vector2 to;
    double bulge = 0.0;  ///< of the way from `from` to `to`
    bool sharp = false;  ///< both places are one
};

/// Apart: segments of one polyline with more than one other segment between them.
enum class CornerFault { None, Parallel, TooLarge, NoSolution, WrongKind, Apart };

/// The rounding of the corner between two curves of any kind (also segments of polylines, construction lines and rays)
/// on the sides that were picked. Radius 0: where they meet. Lines and arcs are prolonged for it, also elliptic ones;
/// splines are not. Parallel lines are joined by a half circle, from the end of the first one near the pick. Nothing,
/// with a fault, when there is none.
std::optional<Corner> filletCorner(const PickedCurve& a, const PickedCurve& b, double radius, CornerFault& fault);

/// The bevel between two straight curves, so far from where they meet along the first and the second.
std::optional<Corner> chamferCorner(const PickedCurve& a, const PickedCurve& b, double first, double second,
                                    CornerFault& fault);
/// The second distance of a bevel that leaves the first line at `angle` (radians) after `length`; negative: it never
/// reaches the second one.
double chamferDistance(const PickedCurve& a, const PickedCurve& b, double length, double angle);

/// The curve cut to the corner; a closed one stays whole. Null when nothing would be left.
std::unique_ptr<Entity> cutToCorner(const EditCurve& curve, const CornerCut& cut);
/// A corner between two segments of one polyline, as the polyline with it: a segment between them goes, the first and
/// last one of an open polyline close it. Null when they cannot have one.
std::unique_ptr<Entity> cornerInPolyline(const EditCurve& curve, const Corner& corner);

/// How corners of a polyline are cut: rounded, or bevelled by two distances or by one and an angle.
struct CornerMeasure {
    bool round = false;
    double radius = 0.0;
    double first = 0.0;
    double second = 0.0;
    std::optional<double> angle;  ///< radians, from the first line; instead of `second`
};
/// All corners between straight segments of a polyline cut. An arc that lies in such a corner gives way to the
/// rounding.
struct PolylineCorners {
    std::unique_ptr<PolylineEntity> polyline;
    int cut = 0;
    int tooShort = 0;
    int parallel = 0;
};
PolylineCorners cutPolylineCorners(const PolylineEntity& polyline, const CornerMeasure& measure);

}  // namespace kova::engine
