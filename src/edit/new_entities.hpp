#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "cmd/dialogue.hpp"
#include "doc/document.hpp"

namespace kova::cmd {

/// True for the kinds that THICKNESS extrudes.
bool takesThickness(engine::EntityType type);
/// Gives a new entity the current properties, ELEVATION and, where the kind can be extruded, THICKNESS.
void applyCurrentValues(doc::Document& document, engine::Entity& entity);
/// Adds a new entity with these values as a step of its own, labelled after the command.
engine::Entity& addNew(doc::Document& document, std::unique_ptr<engine::Entity> entity, const std::string& label);

/// Direction of the current coordinate system's x axis, radians in the world.
double ucsRotation(const engine::Drawing& drawing);
/// The world direction that an answer to Ask::angle means: a typed angle counts from the x axis of the current
/// coordinate system, a point already gave its direction in the world.
double worldDirection(const Answer& answer, const engine::Drawing& drawing);
/// An included angle, radians, positive counter-clockwise (clockwise with ANGDIR 1); ANGBASE has no part in it. A point
/// gives the direction it lies in, in [0, 2 pi).
double includedAngle(const Answer& answer, const engine::Drawing& drawing);
/// True when a measure was typed as a number instead of being shown by a point.
bool isTyped(const Answer& answer);

/// "question <fallback>:".
std::string withDefault(std::string_view question, std::string_view fallback);

/// The end of the line, arc or open polyline drawn last in the current space, and the direction it runs in there
/// (length 1). Nothing when there is none.
struct CurveEnd {
    math::Vector2 point;
    math::Vector2 direction;
};
std::optional<CurveEnd> lastCurveEnd(doc::Document& document);

// What a command remembers for its next call: kept with the document, neither saved nor undone.
double remembered(const doc::Document& document, const char* name, double fallback);
void remember(doc::Document& document, const char* name, double value);

}  // namespace kova::cmd
