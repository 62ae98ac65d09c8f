#pragma once

#include "engine/entities/polyline.hpp"

namespace kova::engine {

/// Rounds a polyline into pairs of arcs that run smoothly through its vertices; records with a tangent give the
/// direction at their vertex. The vertices before stand in `fit`.
void fitWithArcs(PolylineEntity& polyline);
/// Replaces the vertices by points of the B-spline that has them as control points: degree 2 or 3, `segments` of them
/// to each side of the frame (1 to 200). The frame stands in `fit`.
void fitWithSpline(PolylineEntity& polyline, int degree, int segments);
/// Takes curve fitting back, and straightens the arcs of a polyline without any.
void decurve(PolylineEntity& polyline);

}  // namespace kova::engine
