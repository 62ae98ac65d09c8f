#pragma once

#include "engine/model/entity.hpp"
#include "math/curves/path.hpp"
#include "math/angles.hpp"

namespace kova::engine {

/// An ellipse or elliptic arc in world coordinates: point(t) = center + major cos t + minor sin t, counter-clockwise
/// about the normal from startParam to endParam (radians); equal parameters are a full turn.
class EllipseEntity final : public Entity {
    KOVA_ENTITY(EllipseEntity, Ellipse)

    EllipseEntity(const math::Vector2& middle, const math::Vector2& majorAxis, double ratio, double from = 0.0,
                  double to = math::kTwoPi)
        : center(middle), major(majorAxis), minorRatio(ratio), startParam(from), endParam(to) {}

    math::Vector2 center;
    math::Vector2 major{1, 0};  ///< end of the major axis relative to the centre
    double minorRatio = 0.5;    ///< minor to major axis
    double startParam = 0.0;
    double endParam = math::kTwoPi;

    /// The minor axis in plan: a quarter turn from the major one about the normal.
    math::Vector2 minor() const;
    /// The axes in space; the major one stands at right angles to the normal.
    math::Vector3 major3() const;
    math::Vector3 minor3() const;
    double sweep() const { return math::sweepAngle(startParam, endParam); }
    bool isFull() const;
    math::Vector2 pointAt(double param) const;
    math::Vector2 startPoint() const { return pointAt(startParam); }
    math::Vector2 endPoint() const { return pointAt(endParam); }
    Path path() const;
    double length() const;
    /// Sets both axes from two conjugate radii: point(t) = center + u cos t + v sin t, t as startParam and endParam
    /// stand; the parameters are turned along, the normal becomes that of the plane of u and v on the side of `up`.
    void setConjugate(const math::Vector3& u, const math::Vector3& v, const math::Vector3& up);
};

}  // namespace kova::engine
