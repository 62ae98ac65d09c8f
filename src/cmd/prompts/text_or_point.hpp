#pragma once

#include "cmd/dialogue.hpp"

namespace kova::cmd {

/// A line given to a prompt that asks for a text, taken as a point.
struct PointOfText {
    std::optional<math::Vector2> point;
    bool told = false;  ///< there is none, and the user has been told why (or gave it up)
};

/// Reads a line as a point with everything that point prompts take; asks on for the points that words wait for.
/// Relative input starts at `base`; the last point of the command is left as it is. Bare numbers run towards the
/// cursor, where one is given.
Task<PointOfText> pointOfText(Ask& ask, doc::Document& document, std::string line, math::Vector2 base,
                              std::optional<math::Vector2> cursor = {});

}  // namespace kova::cmd
