#pragma once

#include <cmath>
#include <stdexcept>
#include <string>

#include "math/vector2.hpp"

namespace kova::math {

/// A point or direction in space, in drawing units.
struct Vector3 {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    constexpr Vector3() = default;
    constexpr Vector3(double px, double py, double pz) : x(px), y(py), z(pz) {}
    constexpr explicit Vector3(const Vector2& v, double pz = 0.0) : x(v.x), y(v.y), z(pz) {}

    constexpr Vector2 xy() const { return {x, y}; }

    constexpr Vector3 operator+(const Vector3& o) const { return {x + o.x, y + o.y, z + o.z}; }
    constexpr Vector3 operator-(const Vector3& o) const { return {x - o.x, y - o.y, z - o.z}; }
    constexpr Vector3 operator-() const { return {-x, -y, -z}; }
    constexpr Vector3 operator*(double s) const { return {x * s, y * s, z * s}; }
    constexpr Vector3 operator/(double s) const { return {x / s, y / s, z / s}; }
    friend constexpr Vector3 operator*(double s, const Vector3& v) { return v * s; }

    constexpr bool operator==(const Vector3& o) const { return x == o.x && y == o.y && z == o.z; }
    constexpr bool operator!=(const Vector3& o) const { return !(*this == o); }

    constexpr double dot(const Vector3& o) const { return x * o.x + y * o.y + z * o.z; }
    constexpr Vector3 cross(const Vector3& o) const {
        return {y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x};
    }
    double length() const { return std::sqrt(dot(*this)); }
    constexpr double length_squared() const { return dot(*this); }
    /// This vector with length 1; the zero vector when its length is below 1e-10.
    Vector3 normalized() const {
        const double l = length();
        return l < kTolerance ? Vector3{} : *this / l;
    }
    bool near_equal(const Vector3& o, double eps = kTolerance) const {
        return std::abs(x - o.x) <= eps && std::abs(y - o.y) <= eps && std::abs(z - o.z) <= eps;
    }
    bool is_finite() const { return std::isfinite(x) && std::isfinite(y) && std::isfinite(z); }

    /// Component 0, 1 or 2; any other index throws std::out_of_range ("Vector3 index out of range").
    double operator[](std::size_t index) const {
        if (index > 2) throw std::out_of_range("Vector3 index out of range");
        return index == 0 ? x : index == 1 ? y : z;
    }
    static constexpr std::size_t size() { return 3; }

    /// "Vector3(x, y, z)".
    std::string text() const;
};

}  // namespace kova::math
