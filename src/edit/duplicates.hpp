#pragma once

#include <vector>

#include "doc/document.hpp"

namespace kova::cmd {

/// What counts as a duplicate, and what is put together.
struct DuplicateRules {
    /// Properties that need not agree: one bit each.
    enum Ignore : unsigned {
        kColor = 1,
        kLayer = 2,
        kLinetype = 4,
        kLinetypeScale = 8,
        kLineweight = 16,
        kThickness = 32,
        kTransparency = 64,
        kPlotStyle = 128,
        kAllProperties = 255  ///< there are no materials
    };
    unsigned ignore = 0;
    double tolerance = 1e-6;        ///< drawing units
    bool optimizePolylines = true;  ///< idle vertices go, and lines that lie on polylines
    bool ignoreWidths = false;      ///< also where segments have widths
    bool breakPolylines = true;     ///< segments that lie on an earlier polyline go
    bool partialOverlap = true;     ///< lines and arcs that share a stretch become one
    bool endToEnd = true;           ///< so do those that only touch
    bool keepAssociated = true;     ///< of two duplicates the one goes that no dimension is tied to
};

struct DuplicateCounts {
    std::size_t duplicates = 0;
    std::size_t overlaps = 0;  ///< objects, and segments of polylines
};

/// Removes what lies on another one of the entities, as part of the open group; the ones drawn first stay. Time grows
/// as n log n.
DuplicateCounts removeDuplicates(doc::Document& document, const std::vector<std::uint64_t>& ids,
                                 const DuplicateRules& rules);

}  // namespace kova::cmd
