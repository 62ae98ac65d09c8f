#pragma once

#include <functional>

#include "engine/entities/polyline.hpp"

namespace kova::engine {

/// Rounds a polyline into pairs of arcs that run smoothly through its vertices; records with a tangent give the
/// direction at their vertex. The vertices before stand in `fit`.
void fitWithArcs(PolylineEntity& polyline);
/// Replaces the vertices by points of the B-spline that has them as control points: degree 2 or 3, `segments` of them
/// to each side of the frame (1 to 200; a negative number lets arcs run through the points). The frame stands in `fit`.
void fitWithSpline(PolylineEntity& polyline, int degree, int segments);
/// Takes curve fitting back, and straightens the arcs of a polyline without any. Tangents stay for the next fitting.
void decurve(PolylineEntity& polyline);

/// Lets `edit` change the frame of a fitted polyline, and fits it anew the same way; `segments` as for fitWithSpline.
/// Any other polyline is changed itself.
void editFrame(PolylineEntity& polyline, int segments, const std::function<void(PolylineEntity&)>& edit);

}  // namespace kova::engine
