#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "engine/entities/polyline.hpp"
#include "engine/entities/polyline3d.hpp"
#include "engine/entities/spline.hpp"

namespace kova::engine {

/// The fit points of a spline and what else shapes the curve through them.
struct SplineFit {
    std::vector<math::Vector2> points;
    bool closed = false;
    math::Vector2 startTangent;  ///< direction; the zero vector: free
    math::Vector2 endTangent;
    std::vector<std::size_t> kinks;  ///< rising indexes of points where the curve may turn sharply
    double tolerance = 0.0;          ///< the curve may miss points by that much, drawing units

    /// Inserts a point before index `at`; the kinks stay where they are.
    void insert(std::size_t at, const math::Vector2& p);
    void erase(std::size_t at);
};

/// Fit points, tangents and kinks of a spline; nothing when it has no fit points, or stands in space.
std::optional<SplineFit> splineFit(const SplineEntity& spline);
/// Puts the curve through the points. False, and no change: fewer than two distinct points, or more than
/// kMostToleranced of them with a tolerance.
bool applySplineFit(SplineEntity& spline, SplineFit fit);
inline constexpr std::size_t kMostToleranced = 2000;

// Control vertices. A closed spline repeats its first vertices at the end; the functions count each once and keep
// what belongs together in step. All of them give up the fit points.

/// Number of different control vertices.
std::size_t splineVertexCount(const SplineEntity& spline);
void moveSplineVertex(SplineEntity& spline, std::size_t index, const math::Vector2& to);
/// 1 for a vertex without weight.
double splineWeight(const SplineEntity& spline, std::size_t index);
void setSplineWeight(SplineEntity& spline, std::size_t index, double weight);
/// A vertex more near the point of the curve next to p; the curve stays. False: there is no room.
bool addSplineVertex(SplineEntity& spline, const math::Vector2& p);
/// False when as few are left as its degree needs.
bool removeSplineVertex(SplineEntity& spline, std::size_t index);
/// The curve with a higher degree; it stays. False: not higher, or higher than math::kMaxDegree.
bool elevateSpline(SplineEntity& spline, int degree);
/// A point on the curve where it may be bent sharply: the curve stays, and has a fit point and a vertex there.
bool addSplineKink(SplineEntity& spline, const math::Vector2& p);

/// Closes a spline smoothly or opens it: through its fit points, else by its control vertices. False: too few of them.
bool setSplineClosed(SplineEntity& spline, bool closed);

/// A spline through these control vertices with clamped ends, or closed and smooth all round; of a lower degree where
/// they are too few. Null for fewer than two.
std::unique_ptr<SplineEntity> splineByVertices(const std::vector<math::Vector2>& vertices, int degree, bool closed);
/// The spline that a spline-fit polyline approximates, with its properties; null for any other one.
std::unique_ptr<SplineEntity> splineOfFrame(const PolylineEntity& polyline);
/// A spline in space by chords, `precision` of them to a piece between two knots. Null for one without a curve.
std::unique_ptr<Polyline3DEntity> polyline3dFrom(const SplineEntity& spline, int precision);

}  // namespace kova::engine
