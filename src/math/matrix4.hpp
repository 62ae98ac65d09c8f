#pragma once

#include <array>
#include <cmath>
#include <optional>

#include "math/vector2.hpp"
#include "math/vector3.hpp"

namespace kova::math {

/// A 4 x 4 transform of points in space, row major, applied to column vectors (m * p).
struct Matrix4 {
    std::array<double, 16> m{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

    double operator()(int row, int column) const { return m[static_cast<std::size_t>(row * 4 + column)]; }
    double& operator()(int row, int column) { return m[static_cast<std::size_t>(row * 4 + column)]; }

    static Matrix4 identity() { return {}; }
    static Matrix4 translation(double dx, double dy, double dz = 0.0);
    static Matrix4 translation(const Vector2& d) { return translation(d.x, d.y); }
    static Matrix4 scaling(double sx, double sy, double sz = 1.0);
    /// Rotation about the z axis, radians, counter-clockwise.
    static Matrix4 rotation_z(double radians);
    static Matrix4 rotation_about(const Vector2& center, double radians);
    /// Uniform scale in x, y and z about a point of the plane.
    static Matrix4 scaling_about(const Vector2& center, double factor);
    /// Mirror image in the line through a and b; the identity when they coincide.
    static Matrix4 mirror(const Vector2& a, const Vector2& b);
    /// Maps coordinates of the object system of an extrusion direction into world coordinates, after the
    /// arbitrary axis rule of DXF: Ax = Wy x N when |Nx| and |Ny| are below 1/64, else Wz x N.
    static Matrix4 object_to_world(const Vector3& normal);

    Matrix4 operator*(const Matrix4& o) const;
    bool operator==(const Matrix4& o) const { return m == o.m; }
    /// The inverse, or nothing when the matrix is singular.
    std::optional<Matrix4> inverse() const;
    /// Determinant of the upper left 2 x 2 part: the signed area scale of the drawing plane.
    double plane_determinant() const { return m[0] * m[5] - m[1] * m[4]; }

    /// Carries a point through the full matrix; divides by w when w is neither 0 nor 1.
    Vector3 transform_point(const Vector3& p) const;
    Vector2 transform_point(const Vector2& p) const {
        if (m[12] == 0.0 && m[13] == 0.0 && m[15] == 1.0)
            return {m[0] * p.x + m[1] * p.y + m[3], m[4] * p.x + m[5] * p.y + m[7]};
        return transform_point(Vector3{p}).xy();
    }
    /// Carries a direction through the matrix without its translation.
    Vector3 transform_direction(const Vector3& d) const {
        return {m[0] * d.x + m[1] * d.y + m[2] * d.z, m[4] * d.x + m[5] * d.y + m[6] * d.z,
                m[8] * d.x + m[9] * d.y + m[10] * d.z};
    }
    Vector2 transform_direction(const Vector2& d) const {
        return {m[0] * d.x + m[1] * d.y, m[4] * d.x + m[5] * d.y};
    }
};

/// What a matrix does to the drawing plane, split into parts that entities understand.
struct PlaneParts {
    double rotation = 0.0;  ///< angle of the image of +x, radians
    double scaleX = 1.0;    ///< length of the image of +x
    double scaleY = 1.0;    ///< length of the image of +y
    bool mirrored = false;  ///< the plane is turned over
    bool uniform = true;    ///< a similarity: angles keep their size
};
PlaneParts planeParts(const Matrix4& m);

}  // namespace kova::math
