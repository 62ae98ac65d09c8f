#pragma once

#include <string_view>

#include "engine/model/name.hpp"
#include "engine/model/outline.hpp"

namespace kova::engine {

class Drawing;

/// The standard arrow blocks. Each is 1 long and points along +x with its tip at the origin; the line it ends comes
/// from -x.
enum class ArrowKind : std::uint8_t {
    ClosedFilled,  ///< "" or "."
    Closed,
    ClosedBlank,
    Dot,
    DotSmall,
    DotBlank,
    Open,
    Open30,
    Open90,
    Origin,
    Origin2,
    Oblique,
    ArchTick,
    Integral,
    None,
    BoxFilled,
    BoxBlank,
    DatumFilled,
    DatumBlank,
    Small,
    User,  ///< a block of the drawing
};
inline constexpr int kStandardArrowCount = 20;

/// The kind that a block name means, with or without its underscore, without regard to case; User for any other name.
ArrowKind arrowKind(std::string_view blockName);
/// The block name of a standard kind, as files hold it: "" for ClosedFilled, "_DOT", ... ; empty for User.
std::string_view arrowBlockName(ArrowKind kind);

/// How far before the tip the line must end, as a fraction of the arrow's size: 1 for heads with a body or an opening,
/// 0 for ticks, open arrows and none.
double arrowLineGap(ArrowKind kind);
/// True for heads that stand across the line and have no length along it (ticks, dots of half size, none).
bool arrowIsTick(ArrowKind kind);

/// Emits an arrow head with its tip at `tip`, pointing along `direction` (length 1), `size` long, in `style`. A user
/// block that the drawing does not hold is drawn closed and filled.
void emitArrow(OutlineSink& sink, const OutlineStyle& style, const Drawing* drawing, Name blockName,
               const math::Vector2& tip, const math::Vector2& direction, double size);

}  // namespace kova::engine
