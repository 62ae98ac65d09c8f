#include "engine/model/object_plane.hpp"

namespace kova::engine {

using math::Matrix4;
using math::Vector2;
using math::Vector3;

namespace {

/// The tolerance of files, in which such a normal counts as +z.
constexpr double kPlaneTolerance = 1e-9;

}  // namespace

bool inWorldPlane(const Entity& entity) {
    const Vector3 n = entity.normal();
    return n.near_equal({0, 0, 1}, kPlaneTolerance) || !n.is_finite();
}

Matrix4 objectPlane(const Entity& entity) {
    const Matrix4 lift = Matrix4::translation(0.0, 0.0, entity.elevation);
    return inWorldPlane(entity) ? lift : Matrix4::object_to_world(entity.normal()) * lift;
}

Vector2 planFromObject(const Entity& entity, const Vector2& p) {
    return inWorldPlane(entity) ? p : objectPlane(entity).transform_point(p);
}

std::optional<Vector2> objectFromPlan(const Entity& entity, const Vector2& p) {
    if (inWorldPlane(entity)) return p;
    return planePoint(objectPlane(entity), p);
}

std::optional<Vector2> planePoint(const Matrix4& plane, const Vector2& p) {
    const double det = plane.plane_determinant();
    if (std::abs(det) < 1e-9) return std::nullopt;
    const Vector2 d = p - plane.transform_point(Vector2{});
    const Vector2 ix = plane.transform_direction(Vector2::unit_x());
    const Vector2 iy = plane.transform_direction(Vector2::unit_y());
    return Vector2{d.cross(iy) / det, ix.cross(d) / det};
}

bool isPlanar(const Matrix4& m) {
    return m(0, 2) == 0.0 && m(1, 2) == 0.0 && m(2, 0) == 0.0 && m(2, 1) == 0.0 && m(3, 0) == 0.0 && m(3, 1) == 0.0 &&
           m(3, 2) == 0.0 && m(3, 3) == 1.0;
}

Matrix4 transformObjectPlane(Entity& entity, const Matrix4& m) {
    if (isPlanar(m) && inWorldPlane(entity)) {
        entity.elevation = m(2, 2) * entity.elevation + m(2, 3);
        entity.setThickness(entity.thickness() * m(2, 2));
        return m;
    }
    const Matrix4 toWorld = m * objectPlane(entity);
    const Vector3 x = toWorld.transform_direction(Vector3{1, 0, 0});
    const Vector3 y = toWorld.transform_direction(Vector3{0, 1, 0});
    const Vector3 z = toWorld.transform_direction(Vector3{0, 0, 1});
    Vector3 normal = x.cross(y).normalized();
    if (normal == Vector3{} || !normal.is_finite()) normal = entity.normal();  // the plane shrank to a line
    // A mirror image keeps the side that the normal pointed to; the coordinates turn over instead.
    if (normal.dot(z) < 0.0) normal = -normal;
    // Free of rounding where it matters most: back in the world plane means exactly back.
    if (normal.near_equal({0, 0, 1}, 1e-12)) normal = {0, 0, 1};
    const Matrix4 axes = Matrix4::object_to_world(normal);
    Matrix4 toObject;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column) toObject(row, column) = axes(column, row);
    Matrix4 plane = toObject * toWorld;
    entity.elevation = plane.transform_point(Vector3{}).z;
    entity.setThickness(entity.thickness() * normal.dot(z));
    entity.setNormal(normal);
    return plane;
}

void transformExtrusion(Entity& entity, const Matrix4& m) {
    if (isPlanar(m) && inWorldPlane(entity)) {
        entity.setThickness(entity.thickness() * m(2, 2));
        return;
    }
    const Vector3 n = m.transform_direction(entity.normal());
    const double length = n.length();
    if (!(length > 0.0) || !std::isfinite(length)) return;
    entity.setNormal(n / length);
    entity.setThickness(entity.thickness() * length);
}

}  // namespace kova::engine
