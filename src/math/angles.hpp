#pragma once

#include <cmath>
#include <numbers>

namespace kova::math {

inline constexpr double kPi = std::numbers::pi;
inline constexpr double kTwoPi = 2.0 * std::numbers::pi;
inline constexpr double kDegree = 0.017453292519943295;  ///< radians in one degree

constexpr double toRadians(double degrees) { return degrees * kDegree; }
constexpr double toDegrees(double radians) { return radians / kDegree; }

/// The same direction in [0, 2 pi).
inline double normalizeAngle(double radians) {
    double a = std::fmod(radians, kTwoPi);
    if (a < 0.0) a += kTwoPi;
    return a >= kTwoPi ? 0.0 : a;
}

/// Counter-clockwise sweep from `start` to `end` in (0, 2 pi]; equal angles are a full turn.
inline double sweepAngle(double start, double end) {
    double sweep = std::fmod(end - start, kTwoPi);
    while (sweep <= 0.0) sweep += kTwoPi;
    return sweep;
}

/// True when `angle` lies on the counter-clockwise sweep from `start` to `end` (ends included).
inline bool angleInSweep(double angle, double start, double end, double eps = 1e-12) {
    return normalizeAngle(angle - start) <= sweepAngle(start, end) + eps || normalizeAngle(start - angle) <= eps;
}

}  // namespace kova::math
