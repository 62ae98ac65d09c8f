#pragma once

#include <string>

#include "edit/array_items.hpp"
#include "cmd/dialogue.hpp"

namespace kova::cmd {

// Questions that the array commands share. Numbers can be given as an expression, too: option Expression. Enter keeps
// the value.

/// Rows, columns or items in one direction.
inline constexpr int kMostInArray = 32767;

/// An expression until one gives a number; nothing: Enter.
Task<std::optional<double>> askExpression(Ask& ask, std::string fallback);
Task<int> askArrayCount(Ask& ask, std::string question, int fallback);
/// The distance from one column, row or level to the next, or over all of them.
Task<double> askArrayPitch(Ask& ask, const engine::Drawing& drawing, std::string what, int count, double fallback);
Task<void> askArrayRows(Ask& ask, const engine::Drawing& drawing, ArrayRows& rows);
Task<void> askArrayLevels(Ask& ask, const engine::Drawing& drawing, ArrayRows& rows);
Task<void> askArrayColumns(Ask& ask, const engine::Drawing& drawing, RectangularArray& array);
Task<void> askAngleBetween(Ask& ask, const engine::Drawing& drawing, PolarArray& array);
Task<void> askFillAngle(Ask& ask, const engine::Drawing& drawing, PolarArray& array);
Task<void> askTurnItems(Ask& ask, PolarArray& array);
Task<void> askPathMethod(Ask& ask, PathArray& array);
Task<void> askPathItems(Ask& ask, const engine::Drawing& drawing, PathArray& array, CurveRuler path);
Task<void> askAlignItems(Ask& ask, PathArray& array);

/// Sets the angle from item to item; whole turns become a full circle.
void setAngleBetween(PolarArray& array, double between);

}  // namespace kova::cmd
