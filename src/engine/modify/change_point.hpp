#pragma once

#include <optional>
#include <string>

#include "engine/model/name.hpp"
#include "math/vector2.hpp"

namespace kova::engine {

class Entity;

/// Changes an entity by one point of the drawing plane: the end of a line that is nearer comes to it, a circle goes
/// through it. With `ortho` lines become level or upright instead, turning about their other end. False: the kind has
/// no such change, or it would leave nothing.
bool takeChangePoint(Entity& entity, const math::Vector2& p, bool ortho = false);

/// The fields that a single-line text and an attribute definition share; a view of the entity.
struct TextFields {
    math::Vector2& position;  ///< in the object plane
    math::Vector2& second;    ///< of aligned and fit text
    Name& style;
    double& height;
    double& rotation;               ///< radians
    std::string& content;           ///< an attribute's default value
    std::string* tag = nullptr;     ///< of an attribute definition
    std::string* prompt = nullptr;  ///< of an attribute definition
};
/// Nothing for other kinds.
std::optional<TextFields> textFields(Entity& entity);

}  // namespace kova::engine
