#include <algorithm>

#include "math/bounds2.hpp"
#include "math/matrix4.hpp"
#include "math/vector2.hpp"
#include "math/vector3.hpp"
#include "strings/numbers.hpp"

namespace kova::math {

double Vector2::angle_to(const Vector2& o) const {
    const double lengths = length() * o.length();
    if (lengths < kTolerance) return 0.0;
    return std::acos(std::clamp(dot(o) / lengths, -1.0, 1.0));
}

std::string Vector2::text() const { return "Vector2(" + strings::shortest(x) + ", " + strings::shortest(y) + ")"; }

std::string Vector3::text() const {
    return "Vector3(" + strings::shortest(x) + ", " + strings::shortest(y) + ", " + strings::shortest(z) + ")";
}

std::string Bounds2::text() const {
    return "BoundingBox2(min=(" + strings::shortest(min.x) + ", " + strings::shortest(min.y) + "), max=(" + strings::shortest(max.x) + ", " +
           strings::shortest(max.y) + "))";
}

Matrix4 Matrix4::translation(double dx, double dy, double dz) {
    Matrix4 r;
    r.m[3] = dx;
    r.m[7] = dy;
    r.m[11] = dz;
    return r;
}

Matrix4 Matrix4::scaling(double sx, double sy, double sz) {
    Matrix4 r;
    r.m[0] = sx;
    r.m[5] = sy;
    r.m[10] = sz;
    return r;
}

Matrix4 Matrix4::rotation_z(double radians) {
    Matrix4 r;
    const double c = std::cos(radians);
    const double s = std::sin(radians);
    r.m[0] = c;
    r.m[1] = -s;
    r.m[4] = s;
    r.m[5] = c;
    return r;
}

Matrix4 Matrix4::rotation_about(const Vector2& center, double radians) {
    return translation(center) * rotation_z(radians) * translation(-center);
}

Matrix4 Matrix4::scaling_about(const Vector2& center, double factor) {
    return translation(center) * scaling(factor, factor, factor) * translation(-center);
}

Matrix4 Matrix4::mirror(const Vector2& a, const Vector2& b) {
    const Vector2 d = (b - a).normalized();
    if (d == Vector2{}) return {};
    Matrix4 r;
    r.m[0] = d.x * d.x - d.y * d.y;
    r.m[1] = r.m[4] = 2.0 * d.x * d.y;
    r.m[5] = -r.m[0];
    return translation(a) * r * translation(-a);
}

Matrix4 Matrix4::object_to_world(const Vector3& normal) {
    const Vector3 n = normal.normalized();
    if (n == Vector3{} || n == Vector3{0, 0, 1}) return {};
    const bool nearZ = std::abs(n.x) < 1.0 / 64.0 && std::abs(n.y) < 1.0 / 64.0;
    const Vector3 ax = (nearZ ? Vector3{0, 1, 0}.cross(n) : Vector3{0, 0, 1}.cross(n)).normalized();
    const Vector3 ay = n.cross(ax).normalized();
    Matrix4 r;
    r.m = {ax.x, ay.x, n.x, 0, ax.y, ay.y, n.y, 0, ax.z, ay.z, n.z, 0, 0, 0, 0, 1};
    return r;
}

Matrix4 Matrix4::operator*(const Matrix4& o) const {
    Matrix4 r;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) {
            double sum = 0.0;
            for (int k = 0; k < 4; ++k) sum += (*this)(i, k) * o(k, j);
            r(i, j) = sum;
        }
    return r;
}

std::optional<Matrix4> Matrix4::inverse() const {
    // Gauss-Jordan with partial pivoting; 4 x 4 is too small for anything cleverer to pay.
    Matrix4 a = *this;
    Matrix4 r;
    for (int column = 0; column < 4; ++column) {
        int pivot = column;
        for (int row = column + 1; row < 4; ++row)
            if (std::abs(a(row, column)) > std::abs(a(pivot, column))) pivot = row;
        if (a(pivot, column) == 0.0 || !std::isfinite(a(pivot, column))) return std::nullopt;
        if (pivot != column)
            for (int k = 0; k < 4; ++k) {
                std::swap(a(pivot, k), a(column, k));
                std::swap(r(pivot, k), r(column, k));
            }
        const double scale = 1.0 / a(column, column);
        for (int k = 0; k < 4; ++k) {
            a(column, k) *= scale;
            r(column, k) *= scale;
        }
        for (int row = 0; row < 4; ++row) {
            if (row == column) continue;
            const double factor = a(row, column);
            if (factor == 0.0) continue;
            for (int k = 0; k < 4; ++k) {
                a(row, k) -= factor * a(column, k);
                r(row, k) -= factor * r(column, k);
            }
        }
    }
    return r;
}

Vector3 Matrix4::transform_point(const Vector3& p) const {
    Vector3 r{m[0] * p.x + m[1] * p.y + m[2] * p.z + m[3], m[4] * p.x + m[5] * p.y + m[6] * p.z + m[7],
              m[8] * p.x + m[9] * p.y + m[10] * p.z + m[11]};
    const double w = m[12] * p.x + m[13] * p.y + m[14] * p.z + m[15];
    return w == 0.0 || w == 1.0 ? r : r / w;
}

PlaneParts planeParts(const Matrix4& m) {
    const Vector2 ix = m.transform_direction(Vector2::unit_x());
    const Vector2 iy = m.transform_direction(Vector2::unit_y());
    PlaneParts parts;
    parts.rotation = ix.angle();
    parts.scaleX = ix.length();
    parts.scaleY = iy.length();
    parts.mirrored = ix.cross(iy) < 0.0;
    const double size = std::max(parts.scaleX, parts.scaleY);
    parts.uniform = std::abs(parts.scaleX - parts.scaleY) <= 1e-9 * size && std::abs(ix.dot(iy)) <= 1e-9 * size * size;
    return parts;
}

}  // namespace kova::math
