#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/text/mtext_layout.hpp"
#include "engine/model/entity.hpp"
#include "math/curves/path.hpp"

namespace kova::engine {

/// A last segment steeper than this (radians) is joined to its text by a hook line.
inline constexpr double kLeaderHookAngle = 15.0 * 3.14159265358979323846 / 180.0;

/// A leader: an arrow, a straight or smooth line, and what it points to. The text stands in the leader itself or is an
/// entity of its own (annotationHandle), which then draws itself.
class LeaderEntity final : public Entity {
    KOVA_ENTITY(LeaderEntity, Leader)

    std::vector<math::Vector2> vertices;  ///< from the arrow; the hook line's end is not among them
    std::string annotation;               ///< multiline text with inline codes; drawn when there is no annotationHandle
    double arrowSize = 0.0;               ///< drawing units; 0: the dimension style's, times its scale
    double textHeight = 0.0;              ///< likewise
    bool hasArrow = true;
    bool splined = false;
    bool hookLine = false;     ///< a short horizontal line, one arrow long, joins the last vertex to the text
    std::int32_t hookDir = 1;  ///< 1: the hook runs towards +x, 0: towards -x
    Name arrowBlock;           ///< empty: the dimension style's leader arrow
    std::uint64_t annotationHandle = 0;
    double annotationWidth = 0.0;  ///< wrap width of the text; 0: not wrapped
    Name dimStyleName = commonNames().standard;

    double effectiveArrowSize() const;
    double effectiveTextHeight() const;
    /// Direction of the hook line and of the text from it: (1, 0) or (-1, 0).
    math::Vector2 hookDirection() const { return {hookDir != 0 ? 1.0 : -1.0, 0.0}; }
    /// Where the line ends: the last vertex or the end of the hook line.
    math::Vector2 endPoint() const;
    /// The line with its hook.
    Path path() const;
    /// The text's layout input; valid while the leader stands unchanged.
    MTextBlock textBlock() const;
    /// The text stands in the leader itself: it has one, and no entity of its own carries it.
    bool drawsText() const;
};

}  // namespace kova::engine
