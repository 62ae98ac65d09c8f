#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <variant>

#include "engine/model/entity.hpp"
#include "math/curves/path.hpp"
#include "engine/model/records.hpp"

namespace kova::engine {

struct GradientFill;

/// Straight edge of a hatch boundary.
struct HatchLineEdge {
    math::Vector2 start;
    math::Vector2 end;
};

/// Circular edge; runs from startAngle to endAngle (radians), clockwise when endAngle is the smaller one.
struct HatchArcEdge {
    math::Vector2 center;
    double radius = 1.0;
    double startAngle = 0.0;
    double endAngle = 0.0;
};

/// Elliptic edge: point(t) = center + u cos t + v sin t, from t0 to t1 (radians), which may run either way.
struct HatchEllipseEdge {
    math::Vector2 center;
    math::Vector2 u;
    math::Vector2 v;
    double t0 = 0.0;
    double t1 = 0.0;

    void describe(FieldVisitor& v);
};

struct HatchSplineEdge {
    std::int32_t degree = 3;
    std::vector<double> knots;
    std::vector<math::Vector2> control;
    std::vector<double> weights;  ///< empty: not rational
    bool periodic = false;
    std::vector<math::Vector2> fit;
    math::Vector2 startTangent;
    math::Vector2 endTangent;

    void describe(FieldVisitor& v);
};

using HatchEdge = std::variant<HatchLineEdge, HatchArcEdge, HatchEllipseEdge, HatchSplineEdge>;

/// One closed boundary: a polyline (vertices and bulges), or a list of edges in order.
struct HatchLoop {
    // Bits of `type`, those of DXF group 92.
    static constexpr std::int32_t kExternal = 1;
    static constexpr std::int32_t kPolyline = 2;
    static constexpr std::int32_t kDerived = 4;
    static constexpr std::int32_t kTextBox = 8;
    static constexpr std::int32_t kOutermost = 16;

    std::int32_t type = kExternal;
    bool inner = false;  ///< an island (a hole) of another loop
    std::vector<math::Vector2> vertices;
    std::vector<double> bulges;  ///< one per vertex, or shorter: what is missing is 0
    std::vector<HatchEdge> edges;
    /// Handles of the boundary objects that the loop follows; empty: it follows none.
    std::vector<std::uint64_t> sources;

    bool isPolyline() const { return edges.empty(); }
    /// The boundary as one closed figure. Edges out of order are chained by their ends.
    Path path() const;
    void describe(FieldVisitor& v);
};

struct HatchGradientStop {
    double value = 0.0;  ///< 0..1 along the gradient
    Color color = Color::index(5);

    void describe(FieldVisitor& v);
};

struct HatchGradient {
    std::string name = "LINEAR";  ///< LINEAR CYLINDER INVCYLINDER SPHERICAL INVSPHERICAL HEMISPHERICAL ... CURVED
    double angle = 0.0;           ///< radians
    double shift = 0.0;           ///< 0 centred, 1 shifted up left
    double tint = 0.0;            ///< one colour: share of white (above 0.5) or black mixed in at the far end
    bool singleColor = false;
    std::int32_t reserved = 0;
    std::vector<HatchGradientStop> stops;

    void describe(FieldVisitor& v);
};

/// An area filled with a pattern, a solid colour or a gradient. Coordinates are those of the object plane of its
/// normal (the world plane for +z).
class HatchEntity final : public Entity {
    KOVA_ENTITY(HatchEntity, Hatch)

    enum PatternType : std::int32_t { kUserDefined = 0, kPredefined = 1, kCustom = 2 };
    enum IslandStyle : std::int32_t { kNormal = 0, kOuter = 1, kIgnore = 2 };

    std::int32_t patternType = kPredefined;
    Name patternName{"SOLID"};
    double patternScale = 1.0;  ///< of a user-defined pattern: the spacing of its lines
    double patternAngle = 0.0;  ///< radians
    math::Vector2 patternOrigin;
    bool doubled = false;          ///< crossed by the same pattern at a right angle ("double")
    bool patternMirrored = false;  ///< the pattern is turned over: its y axis is reversed before scale and angle
    std::int32_t islandStyle = kNormal;
    std::vector<math::Vector2> seedPoints;
    /// The pattern when it is not taken from the library: families in definition form, as in a .pat file, to which
    /// scale, angle and origin still apply (see definitionFamily for files that keep final values).
    std::vector<HatchFamily> ownPattern;
    std::optional<HatchGradient> gradient;
    std::vector<HatchLoop> loops;

    /// Whether it follows boundary objects.
    bool isAssociative() const {
        return std::any_of(loops.begin(), loops.end(), [](const HatchLoop& loop) { return !loop.sources.empty(); });
    }
    /// Follows nothing from now on.
    void dissociate() {
        for (HatchLoop& loop : loops) loop.sources.clear();
    }
    bool isSolid() const { return gradient.has_value() || patternName == "SOLID"; }
    /// The families of lines as drawn: scaled, turned and placed in the object plane. `shift` stays along and across
    /// each family's own direction. Empty for a solid fill.
    std::vector<HatchFamily> families() const;
    /// The boundaries that count under the island style, to be filled even-odd; in the object plane.
    Path rings() const;
    /// All boundaries.
    Path boundary() const;
    /// Replaces the pattern by families in final form (as drawn), keeping the present scale, angle and origin.
    void setFinalPattern(const std::vector<HatchFamily>& families);
    /// Area inside the rings, from a polygon approximation within 1e-6 of the extents.
    double area() const;

private:
    /// The pattern before scale, angle and origin; lines at 45 degrees for a name that nothing knows.
    const std::vector<HatchFamily>* definition() const;
    void transformPattern(const math::Matrix4& plane, bool uniform);
    void transformLoop(HatchLoop& loop, const math::Matrix4& plane, bool uniform) const;
};

/// A family of a pattern definition as drawn with this scale, angle and origin.
HatchFamily placedFamily(const HatchFamily& definition, double scale, double angle, const math::Vector2& origin,
                         bool mirrored = false);
/// The inverse: the definition of which `placed` is the drawn form. A scale of 0 counts as 1.
HatchFamily definitionFamily(const HatchFamily& placed, double scale, double angle, const math::Vector2& origin,
                             bool mirrored = false);
/// A drawn family under an affine map of the plane; exact for its lines, their dashes and their offsets.
HatchFamily transformedFamily(const HatchFamily& placed, const math::Matrix4& m);

}  // namespace kova::engine
