#pragma once

#include <memory>
#include <span>
#include <vector>

#include "engine/entities/polyline.hpp"
#include "engine/model/entity.hpp"

namespace kova::engine {

/// What becomes of a gap between ends that are to be joined.
enum class JoinGap : std::uint8_t { Extend, Add, Both };

struct JoinOptions {
    double fuzz = 0.0;            ///< ends no farther apart (drawing units) are joined; rounding is always allowed for
    JoinGap gap = JoinGap::Both;  ///< Both: extended where the ends meet, else a segment is added
    bool overGaps = false;        ///< lines in one line and arcs of one circle are joined whatever lies between them
    bool gapsIfAll = false;  ///< as overGaps, where that makes one of them all: lines first, arcs if nothing else joins
    bool toPolylines = false;  ///< also what could be a line, arc or circle becomes a polyline
    bool overlaps = false;     ///< lines in one line and arcs of one curve that share a stretch are joined
    bool inSpace = false;      ///< also what leaves the world's plane: to polylines and splines in space
};

/// Objects that became one.
struct JoinedChain {
    std::unique_ptr<Entity> made;      ///< with the properties of the first of `members`
    std::vector<std::size_t> members;  ///< indexes of the objects that went into it, the lowest first
};

/// Joins lines, arcs, elliptic arcs, open polylines and open splines that meet end to end: into lines where they lie in
/// one line, arcs and circles where they lie on one (elliptic ones likewise), splines where one of them is a curve,
/// else into polylines. What does not lie in one plane z = const becomes a polyline in space, or a spline when there
/// are arcs in it. Objects that meet nothing are in no chain. Takes n log n, whatever their order.
std::vector<JoinedChain> joinEntities(std::span<const Entity* const> entities, const JoinOptions& options);

/// A line, arc, circle, spline or ellipse as a polyline (curves by chords, `precision` of them to a piece); null for
/// any other kind.
std::unique_ptr<PolylineEntity> polylineFrom(const Entity& entity, int precision = 10);

}  // namespace kova::engine
