#include "engine/curves/break_line.hpp"

#include <cmath>

namespace kova::engine {

using math::Vector2;

std::unique_ptr<PolylineEntity> breakLine(const Vector2& a, const Vector2& b, const Vector2& place, double size,
                                          double extension) {
    const double length = a.distance_to(b);
    if (!(size > 0.0) || !(size <= length) || !(extension >= 0.0) || !std::isfinite(length + extension) ||
        !place.is_finite())
        return nullptr;
    const Vector2 along = (b - a) / length;
    const Vector2 up = along.perpendicular();
    const double middle = std::clamp((place - a).dot(along), size / 2.0, length - size / 2.0);
    const auto at = [&](double run, double rise) { return a + along * run + up * rise; };
    return std::make_unique<PolylineEntity>(std::vector<Vector2>{
        at(-extension, 0.0), at(middle - size / 2.0, 0.0), at(middle - size / 6.0, size / 2.0),
        at(middle + size / 6.0, -size / 2.0), at(middle + size / 2.0, 0.0), at(length + extension, 0.0)});
}

}  // namespace kova::engine
