#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "math/bounds2.hpp"
#include "math/matrix4.hpp"
#include "math/vector2.hpp"

namespace kova::engine {

/// One step of a path. Arcs are elliptic: point(t) = center + u cos t + v sin t, t from t0 to t1
/// (t1 < t0 runs clockwise); they start at the current point and stay arcs under every affine transform.
struct PathElement {
    enum class Kind : std::uint8_t { Move, Line, Arc, Cubic, Close };
    Kind kind = Kind::Move;
    math::Vector2 p;       ///< Move, Line, Cubic: the end point. Arc: the end point too
    math::Vector2 a;       ///< Arc: u. Cubic: first control point
    math::Vector2 b;       ///< Arc: v. Cubic: second control point
    math::Vector2 center;  ///< Arc
    double t0 = 0.0;       ///< Arc, radians
    double t1 = 0.0;
};
using PathView = std::span<const PathElement>;

/// A sequence of curves in drawing coordinates, kept exact until a consumer asks for a tolerance.
class Path {
public:
    Path& moveTo(const math::Vector2& p);
    Path& lineTo(const math::Vector2& p);
    /// Circular arc about `center`, radians; t1 < t0 runs clockwise. Starts a new figure when there is none; else a
    /// line leads to the arc's start unless the current point lies there.
    Path& arc(const math::Vector2& center, double radius, double t0, double t1);
    Path& ellipticArc(const math::Vector2& center, const math::Vector2& u, const math::Vector2& v, double t0,
                      double t1);
    /// The arc of a polyline segment: `bulge` is the tangent of a quarter of its included angle (0: straight).
    Path& bulgeTo(const math::Vector2& to, double bulge);
    Path& cubicTo(const math::Vector2& c1, const math::Vector2& c2, const math::Vector2& p);
    Path& close();
    Path& polygon(std::span<const math::Vector2> points, bool closed = true);
    Path& append(PathView other);

    void clear() { elements_.clear(); }
    void reserve(std::size_t count) { elements_.reserve(count); }
    bool empty() const { return elements_.empty(); }
    PathView view() const { return elements_; }
    operator PathView() const { return elements_; }  // NOLINT
    math::Vector2 current() const { return elements_.empty() ? math::Vector2{} : elements_.back().p; }

private:
    friend void transformPath(PathView path, const math::Matrix4& m, Path& out);
    /// After Close, the next element begins a new figure where the closed one began.
    void continueFigure();

    std::vector<PathElement> elements_;
    math::Vector2 start_;
};

/// Exact extents (extremes of arcs and cubics, not of their control points). A Move alone draws nothing.
math::Bounds2 pathBounds(PathView path);
/// The path under an affine map of the plane; replaces what `out` holds.
void transformPath(PathView path, const math::Matrix4& m, Path& out);
/// One polyline per figure, no chord farther from its curve than `tolerance` (drawing units, above 0);
/// at most 4096 chords a curve element. A closed figure ends in its first point. Points that are not finite are left
/// out.
std::vector<std::vector<math::Vector2>> flattenPath(PathView path, double tolerance);
/// The nearest point of the path to p; p itself for an empty path.
math::Vector2 nearestOnPath(PathView path, const math::Vector2& p);

/// A place on a path: the element and the parameter in [0, 1] along it.
struct PathPlace {
    math::Vector2 point;
    double distance = 0.0;  ///< from the point that was asked for
    std::size_t element = 0;
    double t = 0.0;
};
/// The place nearest to p; nothing when the path draws nothing.
std::optional<PathPlace> nearestPlace(PathView path, const math::Vector2& p);
/// The point of an element at t in [0, 1]; `from` is the end of the element before (for Close: of the last one, the
/// element's own p being the figure's start).
math::Vector2 elementPoint(const PathElement& e, const math::Vector2& from, double t);
/// Direction and speed of an element there: the derivative by t.
math::Vector2 elementTangent(const PathElement& e, const math::Vector2& from, double t);
double elementLength(const PathElement& e, const math::Vector2& from);
math::Bounds2 elementBounds(const PathElement& e, const math::Vector2& from);
double pathLength(PathView path);
/// Signed area of the figures, each closed by a straight line; positive where they run counter-clockwise. Exact for all
/// elements (Green's theorem; cubics by Gauss-Legendre quadrature of the degree that suffices).
double pathArea(PathView path);
/// True when p lies inside the figures, open ones taken as closed. Points on the outline fall on either side.
bool insidePath(PathView rings, const math::Vector2& p, bool evenOdd = true);

}  // namespace kova::engine
