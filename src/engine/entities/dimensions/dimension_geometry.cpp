#include "engine/entities/dimensions/dimension_geometry.hpp"

#include <cmath>

#include "math/curves/curves.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

/// Sine of the least angle between an oblique extension line and the dimension line.
constexpr double kLeastOblique = 1e-3;

Vector2 linearDirection(const DimensionEntity& d) {
    if (d.kind() == DimensionType::Aligned) {
        const Vector2 along = (d.def2 - d.def1).normalized();
        if (along != Vector2{}) return along;
    }
    return math::unitAt(d.linearRotation);
}

std::optional<AngularFrame> threePointFrame(const DimensionEntity& d) {
    AngularFrame f;
    f.center = d.def3;
    f.radius = d.dimLine.distance_to(d.def3);
    const Vector2 a = d.def1 - d.def3;
    const Vector2 b = d.def2 - d.def3;
    if (a.length() < math::kTolerance || b.length() < math::kTolerance) return std::nullopt;
    f.start = math::normalizeAngle(a.angle());
    const double other = math::normalizeAngle(b.angle());
    const double through = (d.dimLine - d.def3).angle();
    f.origin1 = d.def1;
    f.origin2 = d.def2;
    if (!math::angleInSweep(through, f.start, other)) {
        f.swapped = true;
        std::swap(f.origin1, f.origin2);
        f.sweep = math::sweepAngle(other, f.start);
        f.start = other;
    } else {
        f.sweep = math::sweepAngle(f.start, other);
    }
    return f;
}

/// The end of the line a-b at which an extension line along `ray` to the radius begins; nothing when the arc crosses
/// the line itself.
std::optional<Vector2> lineOrigin(const Vector2& a, const Vector2& b, const Vector2& center, const Vector2& ray,
                                  double radius) {
    const double ta = (a - center).dot(ray);
    const double tb = (b - center).dot(ray);
    const bool aFirst = ta < tb;
    const double low = aFirst ? ta : tb;
    const double high = aFirst ? tb : ta;
    if (radius > high) return aFirst ? b : a;
    if (radius < low) return aFirst ? a : b;
    return std::nullopt;
}

std::optional<AngularFrame> twoLineFrame(const DimensionEntity& d) {
    const Vector2 u = (d.def2 - d.def1).normalized();
    const Vector2 v = (d.def4 - d.def3).normalized();
    const double cross = u.cross(v);
    if (std::abs(cross) < 1e-9) return std::nullopt;
    AngularFrame f;
    f.center = d.def1 + u * ((d.def3 - d.def1).cross(v) / cross);
    // The sector in which the dimension line point lies: its coordinates along the two lines tell by their signs.
    const Vector2 q = d.dimLine - f.center;
    f.radius = q.length();
    const Vector2 ray1 = q.cross(v) / cross < 0.0 ? -u : u;
    const Vector2 ray2 = u.cross(q) / cross < 0.0 ? -v : v;
    f.origin1 = lineOrigin(d.def1, d.def2, f.center, ray1, f.radius);
    f.origin2 = lineOrigin(d.def3, d.def4, f.center, ray2, f.radius);
    f.swapped = ray1.cross(ray2) < 0.0;
    if (f.swapped) std::swap(f.origin1, f.origin2);
    f.start = math::normalizeAngle((f.swapped ? ray2 : ray1).angle());
    f.sweep = ray1.angle_to(ray2);
    return f;
}

std::optional<AngularFrame> arcLengthFrame(const DimensionEntity& d) {
    AngularFrame f;
    f.center = d.def3;
    const Vector2 a = d.def1 - d.def3;
    const Vector2 b = d.def2 - d.def3;
    if (a.length() < math::kTolerance || b.length() < math::kTolerance) return std::nullopt;
    f.radius = d.dimLine.distance_to(d.def3);
    f.start = math::normalizeAngle(a.angle());
    f.sweep = math::sweepAngle(f.start, math::normalizeAngle(b.angle()));
    f.origin1 = d.def1;
    f.origin2 = d.def2;
    return f;
}

}  // namespace

LinearFrame linearFrame(const DimensionEntity& d) {
    LinearFrame f;
    f.dir = linearDirection(d);
    f.extension = f.dir.perpendicular();
    if (d.obliqueAngle != 0.0) {
        const Vector2 oblique = math::unitAt(d.obliqueAngle);
        if (std::abs(oblique.cross(f.dir)) > kLeastOblique) f.extension = oblique;
    }
    const Vector2 normal = f.dir.perpendicular();
    const double rise = f.extension.dot(normal);
    const auto foot = [&](const Vector2& origin) {
        return origin + f.extension * ((d.dimLine - origin).dot(normal) / rise);
    };
    f.p1 = foot(d.def1);
    f.p2 = foot(d.def2);
    // The dimension line runs from the first origin to the second.
    const double along = (f.p2 - f.p1).dot(f.dir);
    if (along < 0.0) f.dir = -f.dir;
    f.length = std::abs(along);
    return f;
}

Vector2 AngularFrame::pointAt(double angle) const { return center + radius * math::unitAt(angle); }

std::optional<AngularFrame> angularFrame(const DimensionEntity& d) {
    switch (d.kind()) {
        case DimensionType::Angular2Line:
            return twoLineFrame(d);
        case DimensionType::Angular3Point:
            return threePointFrame(d);
        case DimensionType::ArcLength:
            return arcLengthFrame(d);
        default:
            return std::nullopt;
    }
}

RadialFrame radialFrame(const DimensionEntity& d) {
    RadialFrame f;
    if (d.kind() == DimensionType::Diameter) {
        const bool first = (d.dimLine - d.def1).length_squared() <= (d.dimLine - d.def2).length_squared();
        f.nearPoint = first ? d.def1 : d.def2;
        f.farPoint = first ? d.def2 : d.def1;
        f.center = (d.def1 + d.def2) / 2.0;
    } else {
        f.center = d.def1;
        f.nearPoint = d.def2;
        f.farPoint = d.def1;
    }
    f.radius = f.nearPoint.distance_to(f.center);
    f.dir = (f.nearPoint - f.center).normalized();
    if (f.dir == Vector2{}) f.dir = {1, 0};
    return f;
}

Vector2 ordinateAxis(const DimensionEntity& d) {
    const Vector2 x = math::unitAt(d.linearRotation);
    return d.kind() == DimensionType::OrdinateX ? x.perpendicular() : x;
}

double readableAngle(double angle) {
    if (!std::isfinite(angle)) return 0.0;
    // A vertical line is read from the right even when rounding leaves it a little beyond 90 degrees.
    constexpr double kSlack = 1e-6;
    double a = std::remainder(angle, math::kTwoPi);
    if (a > math::kPi / 2 + kSlack) a -= math::kPi;
    if (a <= -math::kPi / 2 + kSlack) a += math::kPi;
    return a;
}

bool dimensionIsFinite(const DimensionEntity& d) {
    const bool angles =
        std::isfinite(d.linearRotation) && std::isfinite(d.obliqueAngle) && std::isfinite(d.textRotation);
    if (!angles || !d.def1.is_finite() || !d.def2.is_finite() || !d.userText.is_finite()) return false;
    switch (d.kind()) {
        case DimensionType::Ordinate:
        case DimensionType::OrdinateX:
            return d.def3.is_finite();
        case DimensionType::Angular2Line:
        case DimensionType::ArcLength:
            return d.dimLine.is_finite() && d.def3.is_finite() && d.def4.is_finite();
        case DimensionType::Angular3Point:
            return d.dimLine.is_finite() && d.def3.is_finite();
        default:
            return d.dimLine.is_finite() && (!d.jogged || (d.jogCenter.is_finite() && d.jogPoint.is_finite()));
    }
}

}  // namespace kova::engine
