#pragma once

#include <functional>
#include <span>
#include <vector>

#include "engine/entities/mesh.hpp"
#include "engine/entities/polyline3d.hpp"

namespace kova::engine {

/// Points of the B-spline of that degree (at most the frame's points less one) over a frame, `steps` stretches of equal
/// parameter: an open curve runs from the first to the last point of the frame and has one point more than steps, a
/// closed one runs round. Empty for fewer than two points and for no steps.
std::vector<math::Vector3> frameCurve(std::span<const math::Vector3> frame, bool closed, int degree, std::size_t steps);

/// How many of these stretches give `segments` (the sign does not count; 1 to 200) to each side of a frame of that many
/// points; fewer to a side where there are very many of them.
std::size_t curveSteps(int segments, std::size_t points, bool closed);

/// Replaces the vertices by points of the B-spline (degree 2 or 3) that has them as control points, `segments` of them
/// to each side of the frame (1 to 200); they stand in `frame`. No effect on fewer than three vertices.
void fitWithSpline(Polyline3DEntity& polyline, int degree, int segments);
/// Takes that back.
void decurve(Polyline3DEntity& polyline);

/// Lets `edit` change the frame of a polyline with a curve, and makes the curve anew; any other one is changed itself.
void editFrame(Polyline3DEntity& polyline, int segments, const std::function<void(Polyline3DEntity&)>& edit);

/// What keeps a mesh from being smoothed.
enum class SmoothRefusal : std::uint8_t { None, TooFew, TooMany };
/// Replaces the vertices by points of the surface that has them as control points: 5 quadratic and 6 cubic B-spline (at
/// least 3 and 4 of them each way), 8 Bezier (at most 11). `u` stretches along M and `v` along N (2 to 200). A smoothed
/// mesh is smoothed anew from its frame.
SmoothRefusal smoothMesh(MeshEntity& mesh, int type, int u, int v);
/// Gives the frame back.
void desmoothMesh(MeshEntity& mesh);

/// Entities that became part of a polyline, by index.
using JoinedParts = std::vector<std::size_t>;
/// Lengthens an open polyline without a curve at both ends by lines, straight level polylines and other polylines in
/// space that meet it end to end within `same` times its largest coordinate (branches: the first of them); it closes
/// when its ends meet.
JoinedParts joinInSpace(Polyline3DEntity& polyline, std::span<const Entity* const> entities, double same = 1e-9);

}  // namespace kova::engine
