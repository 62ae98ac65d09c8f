#pragma once

#include <cmath>
#include <stdexcept>
#include <string>

namespace kova::math {

/// The model's default tolerance, absolute, in drawing units.
inline constexpr double kTolerance = 1e-10;

/// A point or direction in the drawing plane, in drawing units.
struct Vector2 {
    double x = 0.0;
    double y = 0.0;

    constexpr Vector2() = default;
    constexpr Vector2(double px, double py) : x(px), y(py) {}

    static constexpr Vector2 zero() { return {}; }
    static constexpr Vector2 unit_x() { return {1.0, 0.0}; }
    static constexpr Vector2 unit_y() { return {0.0, 1.0}; }
    /// The unit vector at `radians` counter-clockwise from +x.
    static Vector2 from_angle(double radians) { return {std::cos(radians), std::sin(radians)}; }

    constexpr Vector2 operator+(const Vector2& o) const { return {x + o.x, y + o.y}; }
    constexpr Vector2 operator-(const Vector2& o) const { return {x - o.x, y - o.y}; }
    constexpr Vector2 operator-() const { return {-x, -y}; }
    constexpr Vector2 operator*(double s) const { return {x * s, y * s}; }
    constexpr Vector2 operator/(double s) const { return {x / s, y / s}; }
    friend constexpr Vector2 operator*(double s, const Vector2& v) { return v * s; }
    constexpr Vector2& operator+=(const Vector2& o) { return *this = *this + o; }
    constexpr Vector2& operator-=(const Vector2& o) { return *this = *this - o; }
    constexpr Vector2& operator*=(double s) { return *this = *this * s; }

    /// Exact comparison; see near_equal for a tolerant one.
    constexpr bool operator==(const Vector2& o) const { return x == o.x && y == o.y; }
    constexpr bool operator!=(const Vector2& o) const { return !(*this == o); }

    double length() const { return std::sqrt(length_squared()); }
    constexpr double length_squared() const { return x * x + y * y; }
    /// This vector with length 1; the zero vector when its length is below 1e-10.
    Vector2 normalized() const {
        const double l = length();
        return l < kTolerance ? Vector2{} : *this / l;
    }
    double distance_to(const Vector2& o) const { return (o - *this).length(); }
    constexpr double dot(const Vector2& o) const { return x * o.x + y * o.y; }
    /// z of the 3-D cross product; positive when `o` lies counter-clockwise of this.
    constexpr double cross(const Vector2& o) const { return x * o.y - y * o.x; }
    /// Direction in (-pi, pi].
    double angle() const { return std::atan2(y, x); }
    /// Unsigned angle between the two vectors in [0, pi]; 0 when the product of the lengths is below 1e-10.
    double angle_to(const Vector2& o) const;
    /// this + (o - this) * t; t is not clamped.
    constexpr Vector2 lerp(const Vector2& o, double t) const { return *this + (o - *this) * t; }
    /// The vector turned a quarter turn counter-clockwise.
    constexpr Vector2 perpendicular() const { return {-y, x}; }
    bool near_equal(const Vector2& o, double eps = kTolerance) const {
        return std::abs(x - o.x) <= eps && std::abs(y - o.y) <= eps;
    }
    bool is_finite() const { return std::isfinite(x) && std::isfinite(y); }

    /// Component 0 or 1; any other index throws std::out_of_range ("Vector2 index out of range").
    double operator[](std::size_t index) const {
        if (index > 1) throw std::out_of_range("Vector2 index out of range");
        return index == 0 ? x : y;
    }
    static constexpr std::size_t size() { return 2; }
    const double* begin() const { return &x; }
    const double* end() const { return &y + 1; }

    /// "Vector2(x, y)".
    std::string text() const;
};

}  // namespace kova::math
