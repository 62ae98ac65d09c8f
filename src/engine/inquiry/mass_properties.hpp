#pragma once

#include <array>
#include <optional>
#include <span>
#include <vector>

#include "math/curves/path.hpp"
#include "math/vector3.hpp"

namespace kova::engine {

/// Integrals over a plane area, about the origin of its coordinates.
struct AreaMoments {
    double area = 0.0;
    double x = 0.0;   ///< of x, first moments
    double y = 0.0;   ///< of y
    double xx = 0.0;  ///< of x squared: the moment of inertia about the y axis
    double yy = 0.0;  ///< of y squared: about the x axis
    double xy = 0.0;  ///< the product of inertia

    AreaMoments& operator+=(const AreaMoments& o);
    AreaMoments operator*(double factor) const;
    math::Vector2 centroid() const;
    /// The same area seen from another origin.
    AreaMoments about(const math::Vector2& origin) const;
};

/// Moments of one closed figure, positive counter-clockwise; an open one is closed by a straight line. By Green's
/// theorem: exact for lines and cubics, to rounding for arcs.
AreaMoments figureMoments(PathView figure);
/// Moments of what lies inside an odd number of the path's figures, which do not cross each other.
AreaMoments evenOddMoments(PathView path);

/// A principal moment about the centroid and the direction of its axis.
struct PrincipalMoment {
    double moment = 0.0;
    math::Vector3 axis;
};
/// The principal moments of a plane area about its centroid; the first axis is the one nearer to the x axis.
std::array<PrincipalMoment, 2> principalMoments(const AreaMoments& moments);

/// Integrals over a body of density 1, about the origin of its coordinates.
struct VolumeMoments {
    double volume = 0.0;
    math::Vector3 first;     ///< of x, y, z
    math::Vector3 squares;   ///< of x^2, y^2, z^2
    math::Vector3 products;  ///< of xy, yz, zx

    VolumeMoments& operator+=(const VolumeMoments& o);
    VolumeMoments operator*(double factor) const;
    math::Vector3 centroid() const;
    VolumeMoments about(const math::Vector3& origin) const;
    /// Moments of inertia about the three axes.
    math::Vector3 inertia() const;
};
/// Principal moments about the centroid, the first axis being the one nearest to x, the second the one nearest to y.
std::array<PrincipalMoment, 3> principalMoments(const VolumeMoments& moments);

using Triangle = std::array<math::Vector3, 3>;
/// Moments of the body that triangles bound; nothing when they do not close it up (each edge must be run through as
/// often one way as the other). The volume is never negative.
std::optional<VolumeMoments> bodyMoments(std::span<const Triangle> triangles);

class Entity;
/// The faces of a mesh or polyface mesh as triangles, in drawing coordinates; empty for other kinds.
std::vector<Triangle> meshTriangles(const Entity& entity);

}  // namespace kova::engine
