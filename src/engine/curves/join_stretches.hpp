#pragma once

#include <optional>
#include <span>
#include <vector>

#include "engine/curves/join.hpp"

namespace kova::engine {

/// True when an entity can be joined to others: a line, arc, elliptic arc, polyline or spline of the world plane; in
/// space also lines, splines and 3-D polylines that leave it.
bool isJoinable(const Entity& entity, bool inSpace);

/// Lines that overlap in one line, and arcs (elliptic ones too) that overlap on one circle or ellipse, each lot as what
/// it covers. `same`: ends nearer to each other than this (drawing units) are one. Takes n log n.
std::vector<JoinedChain> joinOverlaps(std::span<const Entity* const> entities, double same);

/// What stands in line with the first object, or on its circle or ellipse, over all gaps: arcs counter-clockwise from
/// it. Nothing when there is no such object, or the first one is of another kind.
std::optional<JoinedChain> joinOverGaps(std::span<const Entity* const> entities, double same);

}  // namespace kova::engine
