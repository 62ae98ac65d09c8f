#include "engine/curves/reversed.hpp"

#include <algorithm>

#include "engine/entities/line.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/polyline3d.hpp"
#include "engine/entities/spline.hpp"

namespace kova::engine {

bool canReverse(const Entity& entity) {
    switch (entity.type()) {
        case EntityType::Line:
        case EntityType::Polyline:
        case EntityType::Polyline3D:
        case EntityType::Spline:
            return true;
        default:
            return false;
    }
}

namespace {

void reverseSpline(SplineEntity& spline) {
    std::reverse(spline.controlPoints.begin(), spline.controlPoints.end());
    std::reverse(spline.fitPoints.begin(), spline.fitPoints.end());
    std::reverse(spline.controlZ.begin(), spline.controlZ.end());
    std::reverse(spline.weights.begin(), spline.weights.end());
    if (!spline.knots.empty()) {
        const double ends = spline.knots.front() + spline.knots.back();
        std::reverse(spline.knots.begin(), spline.knots.end());
        for (double& knot : spline.knots) knot = ends - knot;
    }
    if (spline.helix) {
        // From the top down: the same turns about the same axis.
        HelixData& helix = *spline.helix;
        const math::Vector3 axis = helix.axis.normalized();
        const math::Vector3 arm = helix.start - helix.axisBase;
        const double baseRadius = (arm - axis * arm.dot(axis)).length();
        const math::Vector3 top = axis * (helix.turns * helix.turnHeight);
        if (!spline.controlPoints.empty())
            helix.start = math::Vector3(spline.controlPoints.front(),
                                        spline.controlZ.empty() ? spline.elevation : spline.controlZ.front());
        helix.axisBase = helix.axisBase + top;
        helix.axis = -helix.axis;
        helix.topRadius = baseRadius;
    }
}

}  // namespace

void reverseDirection(Entity& entity) {
    switch (entity.type()) {
        case EntityType::Line: {
            auto& line = static_cast<LineEntity&>(entity);
            const math::Vector3 from = line.start3();
            line.setEnds(line.end3(), from);
            break;
        }
        case EntityType::Polyline:
            static_cast<PolylineEntity&>(entity).reverse();
            break;
        case EntityType::Polyline3D: {
            auto& polyline = static_cast<Polyline3DEntity&>(entity);
            std::reverse(polyline.vertices.begin(), polyline.vertices.end());
            std::reverse(polyline.frame.begin(), polyline.frame.end());
            break;
        }
        case EntityType::Spline:
            reverseSpline(static_cast<SplineEntity&>(entity));
            break;
        default:
            break;
    }
}

}  // namespace kova::engine
