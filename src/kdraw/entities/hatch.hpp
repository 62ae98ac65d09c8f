#pragma once

#include "kdraw/fields/object.hpp"

namespace kdraw {

/// A hatch, solid fill or gradient. All points lie in the object plane.
class HatchEntity : public Entity {
public:
    void describe(Fields& f) override;

    enum EdgeKind : std::uint8_t { kLine = 1, kArc = 2, kEllipse = 3, kSpline = 4 };
    struct SplineEdge {
        std::int32_t degree = 3;
        bool rational = false, periodic = false;
        std::vector<double> knots;
        std::vector<Vector3> control;  ///< z: weight
        std::vector<Vector2> fit;
        Vector2 startTangent, endTangent;  ///< with fit points
    };
    struct Edge {
        std::uint8_t kind = kLine;
        Vector2 a;                      ///< start, or centre
        Vector2 b;                      ///< end, or major axis from the centre
        double size = 1.0;              ///< radius, or ratio of the axes
        double start = 0.0, end = 0.0;  ///< radians; measured clockwise on clockwise edges
        bool counterClockwise = true;
        std::vector<SplineEdge> spline;  ///< one for the kind kSpline
    };
    struct Path {
        static constexpr std::uint32_t kExternal = 1, kPolyline = 2, kDerived = 4, kTextBox = 8, kOutermost = 16;
        std::uint32_t flags = kExternal;
        std::vector<Edge> edges;
        bool bulged = false, closed = true;
        std::vector<Vector3> vertices;  ///< of a polyline; z: bulge
        std::vector<Handle> sources;    ///< boundary objects
    };
    struct PatternLine {
        double angle = 0.0;  ///< radians
        Vector2 base;
        Vector2 offset;  ///< to the next line, in drawing coordinates
        std::vector<double> dashes;
    };
    struct Stop {
        double value = 0.0;
        Color color;
    };
    struct Gradient {
        std::int32_t on = 0;
        std::int32_t reserved = 0;
        double angle = 0.0, shift = 0.0;
        std::int32_t singleColor = 0;
        double tint = 0.0;
        std::vector<Stop> stops;
        std::string name;
    };

    Gradient gradient;  ///< R2004 and later
    double elevation = 0.0;
    Vector3 normal{0.0, 0.0, 1.0};
    std::string pattern;
    bool solid = false;
    bool associative = false;
    std::vector<Path> paths;
    std::uint16_t style = 0;        ///< 0 normal, 1 outer, 2 ignore
    std::uint16_t patternKind = 1;  ///< 0 user-defined, 1 predefined, 2 custom
    double angle = 0.0;             ///< radians
    double scale = 1.0;             ///< or spacing
    bool doubled = false;
    std::vector<PatternLine> lines;
    double pixelSize = 0.0;  ///< with derived paths
    std::vector<Vector2> seeds;

private:
    void describeGradient(Fields& f);
    void describePath(Fields& f, Path& path, std::size_t& sources);
    void describeEdge(Fields& f, Edge& edge);
    void describeSpline(Fields& f, SplineEdge& spline);
    void describePattern(Fields& f);
};

}  // namespace kdraw
