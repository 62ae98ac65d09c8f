#pragma once

#include <cstdint>
#include <vector>

#include "engine/model/color.hpp"
#include "engine/model/entity.hpp"
#include "math/angles.hpp"

namespace kova::engine {

/// One of the parallel lines of a multiline.
struct MLineElement {
    double offset = 0.0;  ///< from the axis, positive to the left of the direction of drawing; times the scale
    Color color;
    Name linetype = commonNames().byLayer;

    void describe(FieldVisitor& v);
    friend bool operator==(const MLineElement&, const MLineElement&) = default;
};

/// Which line runs through the picked points, as DXF stores it.
enum class MLineJustification : std::uint8_t { Top = 0, Zero = 1, Bottom = 2 };

/// Bits of MLineEntity::flags: those of a multiline style in DXF.
enum MLineFlags : std::int32_t {
    kMLineFill = 1,
    kMLineJoints = 2,  ///< lines across the joints
    kMLineStartSquare = 16,
    kMLineStartInnerArc = 32,
    kMLineStartRound = 64,  ///< arc between the outermost lines
    kMLineEndSquare = 256,
    kMLineEndInnerArc = 512,
    kMLineEndRound = 1024,
};

/// Parallel lines along a path, mitred at its corners.
class MLineEntity final : public Entity {
    KOVA_ENTITY(MLineEntity, MLine)

    std::vector<math::Vector2> vertices;
    double scale = 1.0;  ///< factor on the offsets; negative turns them over
    std::vector<MLineElement> elements{{0.5}, {-0.5}};
    MLineJustification justification = MLineJustification::Top;  ///< "justificationAcad" in files
    bool closed = false;
    Name styleName = commonNames().standard;
    std::int32_t flags = 0;             ///< MLineFlags
    Color fillColor;                    ///< with kMLineFill
    double startAngle = math::kPi / 2;  ///< direction of the start cap against the first segment, radians
    double endAngle = math::kPi / 2;

    /// The element's distance from the vertices' line: scale, offset and justification.
    double elementDistance(const MLineElement& element) const;
    /// Per vertex: the step from the vertex that moves a line to distance 1 (left). Points of element e lie at
    /// vertex + step * elementDistance(e). Coincident neighbours count as one; lengths are limited at sharp corners.
    std::vector<math::Vector2> miterSteps() const;
    /// Points of one element's line, as many as there are vertices.
    std::vector<math::Vector2> elementPoints(const MLineElement& element) const;

private:
    void emitJointsAndCaps(OutlineSink& sink, const OutlineStyle& style, const std::vector<math::Vector2>& steps,
                           std::vector<double>& distances) const;
};

}  // namespace kova::engine
