#pragma once

#include <string>

#include "cmd/dialogue.hpp"
#include "engine/entities/tolerance.hpp"

namespace kova::cmd {

/// Asks for the parts of a geometric tolerance: symbol, value, material condition, three datums, or its whole text with
/// codes. False: nothing was given.
Task<bool> askTolerance(Ask& ask, engine::ToleranceEntity& tolerance);

/// Lines until an empty one, joined as paragraphs of multiline text. `first` and `next` are the prompts; the result is
/// empty when the first line is.
Task<std::string> askParagraphs(Ask& ask, std::string first, std::string next);

}  // namespace kova::cmd
