#pragma once

#include "edit/duplicates.hpp"

namespace kova::engine {
class LineEntity;
class PolylineEntity;
}  // namespace kova::engine

namespace kova::cmd {

/// Puts together what overlaps among entities without duplicates, as part of the open group. Each function gives the
/// number of objects, or segments, that it removed.
class OverlapRemover {
public:
    OverlapRemover(doc::Document& document, const DuplicateRules& rules);
    ~OverlapRemover();
    OverlapRemover(const OverlapRemover&) = delete;
    OverlapRemover& operator=(const OverlapRemover&) = delete;

    /// Lines of one line that overlap, or touch.
    std::size_t lines(const std::vector<engine::LineEntity*>& all);
    /// Lines that lie on segments of polylines, and segments that lie on earlier polylines.
    std::size_t segments(const std::vector<engine::Entity*>& all);
    /// Arcs of one circle, and the circle itself.
    std::size_t arcs(const std::vector<engine::Entity*>& all);
    /// Vertices of a polyline that bend nothing.
    std::size_t polyline(engine::PolylineEntity& polyline);

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace kova::cmd
