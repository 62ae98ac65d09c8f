#pragma once

#include "engine/model/entity.hpp"
#include "math/curves/path.hpp"

namespace kova::engine {

/// What a vertex of an old-style polyline carries beyond its place, bulge and widths.
struct PolylineRecord {
    std::int32_t vertex = 0;  ///< index into the polyline's vertices
    std::int32_t flags = 0;   ///< kExtraVertex ...
    double tangent = 0.0;     ///< direction of the curve here, radians; counts with kTangent
    std::int32_t id = 0;      ///< vertex identifier; 0: none

    static constexpr std::int32_t kExtraVertex = 1;   ///< added by curve fitting
    static constexpr std::int32_t kTangent = 2;       ///< has a tangent for curve fitting
    static constexpr std::int32_t kSplineVertex = 8;  ///< made by spline fitting
    static constexpr std::int32_t kFramePoint = 16;   ///< control point of a spline frame

    void describe(FieldVisitor& v);
};

/// A polyline of straight segments and arcs. Coordinates are those of the object plane of its normal (the world plane
/// for +z). bulges, startWidths and endWidths run parallel to the vertices and may be shorter: what is missing is 0.
class PolylineEntity final : public Entity {
    KOVA_ENTITY(PolylineEntity, Polyline)

    explicit PolylineEntity(std::vector<math::Vector2> points, bool isClosed = false)
        : vertices(std::move(points)), closed(isClosed) {}

    std::vector<math::Vector2> vertices;
    /// Tangent of a quarter of the included angle of the arc to the next vertex, positive counter-clockwise.
    std::vector<double> bulges;
    std::vector<double> startWidths;
    std::vector<double> endWidths;
    bool closed = false;
    bool ltgen = false;          ///< the linetype runs on through the vertices
    bool spline = false;         ///< the vertices approximate a spline whose frame is in `fit`
    std::int32_t curveType = 0;  ///< 0 none, 5 quadratic B-spline, 6 cubic B-spline, 8 Bezier surface curve
    std::vector<PolylineRecord> records;
    std::vector<math::Vector2> fit;  ///< the frame: the vertices before curve or spline fitting

    double bulge(std::size_t i) const { return i < bulges.size() ? bulges[i] : 0.0; }
    double startWidth(std::size_t i) const { return i < startWidths.size() ? startWidths[i] : 0.0; }
    double endWidth(std::size_t i) const { return i < endWidths.size() ? endWidths[i] : 0.0; }
    /// Setters that grow the list to the vertex count first; an index beyond the vertices is ignored.
    void setBulge(std::size_t i, double value);
    void setWidths(std::size_t i, double start, double end);
    bool hasBulges() const;
    bool hasWidths() const;
    /// Number of segments: one fewer than the vertices, or as many when closed.
    std::size_t segmentCount() const;
    /// The vertex at the far end of segment i.
    const math::Vector2& segmentEnd(std::size_t i) const;
    void addVertex(const math::Vector2& p, double bulge = 0.0, double startWidth = 0.0, double endWidth = 0.0);
    /// Inserts a vertex before index `at` (at most the vertex count), keeping the parallel lists in step.
    void insertVertex(std::size_t at, const math::Vector2& p, double bulge = 0.0, double startWidth = 0.0,
                      double endWidth = 0.0);
    void eraseVertex(std::size_t at);
    /// Turns the direction round, with bulges and widths.
    void reverse();

    /// The centre line in object plane coordinates.
    Path path() const;
    double length() const;
    /// Area enclosed (an open polyline closed by a straight line), never negative.
    double area() const;
};

}  // namespace kova::engine
