#pragma once

#include <array>
#include <optional>

#include "math/curves/curves.hpp"
#include "math/vector2.hpp"

namespace kova::math {

/// Up to two points; those of a line come in the order of its direction.
struct Hits {
    int count = 0;
    std::array<Vector2, 2> points;

    void add(const Vector2& p) {
        if (count < 2) points[static_cast<std::size_t>(count++)] = p;
    }
    const Vector2* begin() const { return points.data(); }
    const Vector2* end() const { return points.data() + count; }
    const Vector2& operator[](int i) const { return points[static_cast<std::size_t>(i)]; }
};

/// Parameters of the meeting point of two unbounded lines a + (a2 - a) s and b + (b2 - b) t; nothing when they are
/// parallel (the sine of their angle is below 1e-12) or a line has no direction.
struct LineParameters {
    double s;
    double t;
};
std::optional<LineParameters> lineParameters(const Vector2& a, const Vector2& a2, const Vector2& b, const Vector2& b2);

/// Unbounded lines through a, a2 and b, b2.
std::optional<Vector2> lineLine(const Vector2& a, const Vector2& a2, const Vector2& b, const Vector2& b2);
/// Segments; ends count, within `eps`. Of two segments in one line that touch in a single point only, that point.
std::optional<Vector2> segmentSegment(const Vector2& a, const Vector2& a2, const Vector2& b, const Vector2& b2,
                                      double eps = kTolerance);

/// Unbounded line and circle. A line that passes the circle within `eps` touches it once.
Hits lineCircle(const Vector2& a, const Vector2& b, const Vector2& center, double radius, double eps = kTolerance);
Hits segmentCircle(const Vector2& a, const Vector2& b, const Vector2& center, double radius, double eps = kTolerance);
/// Circles that come within `eps` of touching touch once; coincident circles have no hits.
Hits circleCircle(const Vector2& c1, double r1, const Vector2& c2, double r2, double eps = kTolerance);

/// Arcs (any sense); ends count, within `eps`. Arcs of one circle hit where an end of one lies on the other.
bool onArc(const Vector2& p, const CircularArc& arc, double eps = kTolerance);
Hits lineArc(const Vector2& a, const Vector2& b, const CircularArc& arc, double eps = kTolerance);
Hits segmentArc(const Vector2& a, const Vector2& b, const CircularArc& arc, double eps = kTolerance);
Hits arcArc(const CircularArc& a, const CircularArc& b, double eps = kTolerance);

/// Unbounded line and full ellipse center + u cos t + v sin t.
Hits lineEllipse(const Vector2& a, const Vector2& b, const Vector2& center, const Vector2& u, const Vector2& v);

}  // namespace kova::math
