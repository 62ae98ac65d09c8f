#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "math/vector2.hpp"

namespace kova::engine {

class Entity;

// What the commands for texts do with TEXT, MTEXT and attribute definitions; other kinds are left alone.

bool isPlacedText(const Entity& entity);
/// The box of the letters as they are drawn, in drawing coordinates: lower left, lower right, upper right, upper left
/// as they are read. Nothing for other kinds and for texts without letters.
std::optional<std::array<math::Vector2, 4>> letterBox(const Entity& entity);
/// Height of capital letters; 0 for other kinds.
double letterHeight(const Entity& entity);
/// The direction that the text reads in, radians.
double readingAngle(const Entity& entity);
/// The point that holds the text in its place.
math::Vector2 textAnchor(const Entity& entity);

/// The point that would hold the text under another justification (TextHAlign, TextVAlign), the text where it stands.
/// For multiline text baseline justifications keep the row of its attachment.
math::Vector2 textAnchorAs(const Entity& entity, std::int32_t hAlign, std::int32_t vAlign);
/// Gives the text that justification; it does not move. Aligned and fit text gets its ends for points, and loses them
/// under other justifications; multiline text takes these two as left.
void justifyText(Entity& entity, std::int32_t hAlign, std::int32_t vAlign);

/// Scales the text about a point; its elevation stays.
void scaleText(Entity& entity, double factor, const math::Vector2& base);
/// Stands on its head: reads at an angle in (90, 270] degrees.
bool readsUpsideDown(const Entity& entity);
/// Turns a text by 180 degrees about its middle.
void turnAround(Entity& entity);
/// Stretches a line of text along its direction, so that its letters begin at `start` and end level with `end`. False
/// for other kinds, vertical text and an end that is not ahead of the start.
bool fitTextLine(Entity& entity, const math::Vector2& start, const math::Vector2& end);

}  // namespace kova::engine
