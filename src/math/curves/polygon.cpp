#include "math/curves/polygon.hpp"

#include <cmath>

#include "math/curves/curves.hpp"

namespace kova::math {

namespace {

double bulgeAt(std::span<const double> bulges, std::size_t i) { return i < bulges.size() ? bulges[i] : 0.0; }

/// x - sin x without cancellation for small x.
double minusSine(double x) {
    if (std::abs(x) > 0.2) return x - std::sin(x);
    const double x2 = x * x;
    return x * x2 / 6.0 * (1.0 - x2 / 20.0 * (1.0 - x2 / 42.0 * (1.0 - x2 / 72.0 * (1.0 - x2 / 110.0))));
}

/// Signed area between an arc and its chord.
double segmentArea(const CircularArc& arc) { return 0.5 * arc.radius * arc.radius * minusSine(arc.sweep); }

/// Which side of the line from a to b p lies on: above 0 to its left. A p on the line counts as moved a little to the
/// right, or up when the line is level, so that every p has one side and areas that share an edge share no point.
double side(const Vector2& a, const Vector2& b, const Vector2& p) {
    const double cross = (b - a).cross(p - a);
    if (cross != 0.0) return cross;
    return a.y == b.y ? b.x - a.x : a.y - b.y;
}

/// Does the ray from p to +x cross the edge?
bool crosses(const Vector2& a, const Vector2& b, const Vector2& p) {
    if ((a.y > p.y) == (b.y > p.y)) return false;
    // Measured from the lower end always, so that an edge gives one answer in both directions.
    return a.y < b.y ? side(a, b, p) > 0.0 : side(b, a, p) > 0.0;
}

}  // namespace

double signedArea(std::span<const Vector2> points) { return signedArea(points, {}); }

double signedArea(std::span<const Vector2> points, std::span<const double> bulges) {
    if (points.size() < 2) return 0.0;
    // Measured from the first point: far from the origin the products would lose the area.
    const Vector2 origin = points[0];
    double sum = 0.0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Vector2& a = points[i];
        const Vector2& b = points[i + 1 == points.size() ? 0 : i + 1];
        sum += 0.5 * (a - origin).cross(b - origin);
        if (const auto arc = arcFromBulge(a, b, bulgeAt(bulges, i))) sum += segmentArea(*arc);
    }
    return sum;
}

double area(std::span<const Vector2> points) { return std::abs(signedArea(points)); }

Vector2 centroid(std::span<const Vector2> points) { return centroid(points, {}); }

Vector2 centroid(std::span<const Vector2> points, std::span<const double> bulges) {
    if (points.empty()) return {};
    const Vector2 origin = points[0];
    double area = 0.0;
    double outline = 0.0;  // a measure of size for the test whether the area vanishes
    Vector2 moment;
    Vector2 sum;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Vector2 a = points[i] - origin;
        const Vector2 b = points[i + 1 == points.size() ? 0 : i + 1] - origin;
        const double triangle = 0.5 * a.cross(b);
        area += triangle;
        moment += (a + b) * (triangle / 3.0);
        sum += a;
        outline += a.distance_to(b);
        if (const auto arc = arcFromBulge(a, b, bulgeAt(bulges, i))) {
            const double segment = segmentArea(*arc);
            const double half = std::sin(arc->sweep / 2.0);
            area += segment;
            outline += arc->length();
            moment +=
                arc->center * segment + unitAt(arc->start + arc->sweep / 2.0) *
                                            (2.0 / 3.0 * arc->radius * arc->radius * arc->radius * half * half * half);
        }
    }
    if (!(std::abs(area) > 1e-14 * outline * outline)) return origin + sum / static_cast<double>(points.size());
    return origin + moment / area;
}

double perimeter(std::span<const Vector2> points, std::span<const double> bulges) {
    double sum = 0.0;
    for (std::size_t i = 0; i < points.size(); ++i)
        sum += bulgeLength(points[i], points[i + 1 == points.size() ? 0 : i + 1], bulgeAt(bulges, i));
    return sum;
}

bool pointInPolygon(const Vector2& p, std::span<const Vector2> points) { return pointInPolygon(p, points, {}); }

bool pointInPolygon(const Vector2& p, std::span<const Vector2> points, std::span<const double> bulges) {
    bool inside = false;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Vector2& a = points[i];
        const Vector2& b = points[i + 1 == points.size() ? 0 : i + 1];
        if (crosses(a, b, p)) inside = !inside;
        const double bulge = bulgeAt(bulges, i);
        if (bulge == 0.0) continue;
        // An arc adds or takes away the area between itself and its chord.
        const auto arc = arcFromBulge(a, b, bulge);
        if (!arc || !((p - arc->center).length() < arc->radius)) continue;
        // Ask for the chord's side in one direction only, as crosses() does.
        const bool lower = a.y < b.y || (a.y == b.y && a.x < b.x);
        const double s = lower ? side(a, b, p) : -side(b, a, p);
        if (bulge > 0.0 ? s < 0.0 : s > 0.0) inside = !inside;
    }
    return inside;
}

}  // namespace kova::math
