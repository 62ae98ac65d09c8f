#include "engine/entities/ellipse.hpp"

#include "engine/model/object_plane.hpp"
#include "engine/model/outline.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

using math::Vector2;
using math::Vector3;

namespace {

constexpr double kFullSweep = math::kTwoPi - 1e-12;

}  // namespace

Vector3 EllipseEntity::major3() const {
    const Vector3 n = normal();
    // The z that brings the axis into the plane of the normal; none is known for a plane on edge.
    const double z = std::abs(n.z) > 1e-9 ? -(major.x * n.x + major.y * n.y) / n.z : 0.0;
    return Vector3(major, z == 0.0 ? 0.0 : z);
}

Vector3 EllipseEntity::minor3() const { return normal().cross(major3()) * minorRatio; }

Vector2 EllipseEntity::minor() const { return minor3().xy(); }

bool EllipseEntity::isFull() const { return sweep() >= kFullSweep; }

Vector2 EllipseEntity::pointAt(double param) const {
    const Vector2 d = math::unitAt(param);
    return center + major * d.x + minor() * d.y;
}

Path EllipseEntity::path() const {
    Path path;
    path.ellipticArc(center, major, minor(), startParam, startParam + sweep());
    if (isFull()) path.close();
    return path;
}

double EllipseEntity::length() const {
    const double a = major3().length();
    return math::lengthOf({{}, {a, 0.0}, {0.0, a * minorRatio}, startParam, startParam + sweep()});
}

void EllipseEntity::setConjugate(const Vector3& u, const Vector3& v, const Vector3& up) {
    const bool full = isFull();
    const double shift = math::principalShift(u.dot(u), u.dot(v), v.dot(v));
    const Vector2 d = math::unitAt(shift);
    const Vector3 longest = u * d.x + v * d.y;
    const Vector3 shortest = v * d.x - u * d.y;
    Vector3 n = longest.cross(shortest).normalized();
    bool reversed = false;
    if (n != Vector3{} && n.is_finite()) {
        reversed = n.dot(up) < 0.0;
        if (reversed) n = -n;
        if (n.near_equal({0, 0, 1}, 1e-12)) n = {0, 0, 1};
        setNormal(n);
    }
    major = longest.xy();
    const double length = longest.length();
    if (length > 0.0) minorRatio = shortest.length() / length;
    if (full) {
        startParam = 0.0;
        endParam = math::kTwoPi;
        return;
    }
    if (shift == 0.0 && !reversed) return;
    const double first = startParam - shift;
    const double last = endParam - shift;
    startParam = math::normalizeAngle(reversed ? -last : first);
    endParam = math::normalizeAngle(reversed ? -first : last);
}

math::Bounds2 EllipseEntity::bounds() const {
    return math::boundsOf(math::EllipticArc{center, major, minor(), startParam, startParam + sweep()});
}

void EllipseEntity::transform(const math::Matrix4& m) {
    const Vector3 moved = m.transform_point(Vector3(center, elevation));
    const Vector3 u = m.transform_direction(major3());
    const Vector3 v = m.transform_direction(minor3());
    const bool plan = isPlanar(m) && inWorldPlane(*this);
    const Vector3 up = plan ? Vector3{0, 0, 1} : m.transform_direction(normal());
    center = moved.xy();
    elevation = moved.z;
    const double ratio = minorRatio;
    const bool similar = plan && math::planeParts(m).uniform;
    transformExtrusion(*this, m);
    setConjugate(u, v, up);
    // A similarity keeps the ratio, to the last bit.
    if (similar && ratio <= 1.0) minorRatio = ratio;
}

double EllipseEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }
Vector2 EllipseEntity::nearestPoint(const Vector2& p) const { return nearestOnPath(path(), p); }

std::vector<Vector2> EllipseEntity::gripPoints() const {
    const Vector2 across = minor();
    std::vector<Vector2> grips{center, center + major, center + across, center - major, center - across};
    if (!isFull()) {
        grips.push_back(startPoint());
        grips.push_back(endPoint());
    }
    return grips;
}

void EllipseEntity::moveGrip(std::size_t index, const Vector2& to) {
    const double reach = to.distance_to(center);
    if (index == 0) {
        center = to;
        return;
    }
    if (index >= 1 && index <= 4) {
        // An axis keeps its direction and takes the new length; the other axis stays.
        const bool alongMajor = index % 2 == 1;
        const double length = alongMajor ? major.length() : minor().length();
        if (!(reach >= math::kTolerance) || !std::isfinite(reach) || !(major.length() > 0.0)) return;
        if (alongMajor) {
            major *= reach / length;
            minorRatio *= length / reach;
        } else {
            minorRatio = length > 0.0 ? minorRatio * reach / length : reach / major.length();
        }
        if (minorRatio > 1.0) setConjugate(major3(), minor3(), normal());
        return;
    }
    if (index > 6 || isFull()) return;
    const Vector2 across = minor();
    const double det = major.cross(across);
    const Vector2 d = to - center;
    if (!(std::abs(det) > 0.0) || !(reach > 0.0)) return;
    (index == 5 ? startParam : endParam) =
        math::normalizeAngle(std::atan2(major.cross(d) / det, d.cross(across) / det));
}

void EllipseEntity::describe(FieldVisitor& v) {
    v.point("center", center);
    v.point("major", major);
    v.number("minorRatio", minorRatio);
    v.angle("startParam", startParam);
    v.angle("endParam", endParam);
}

void EllipseEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    StrokeOptions options;
    options.patternThroughVertices = true;
    sink.stroke(path(), style, options);
}

std::size_t EllipseEntity::sizeInBytes() const { return sizeof *this + extrasSize(); }

}  // namespace kova::engine
