#pragma once

#include <string>

#include "cmd/dialogue.hpp"
#include "engine/entities/dimensions/tolerance.hpp"

namespace kova::cmd {

/// Asks for the parts of a geometric tolerance: symbol, value, material condition, three datums, or its whole text with
/// codes. False: nothing was given.
Task<bool> askTolerance(Ask& ask, engine::ToleranceEntity& tolerance);

/// The value and the datums of a row, without its symbol.
Dialogue askToleranceRow(Ask& ask, engine::ToleranceRow& row);
/// One more row below the first one, its symbol too; nothing given adds nothing.
Dialogue askSecondToleranceRow(Ask& ask, engine::ToleranceEntity& tolerance);
/// A tolerance value and its material condition.
Dialogue askToleranceValue(Ask& ask, std::string prompt, std::string& value, std::string& condition);

/// Lines until an empty one, joined as paragraphs of multiline text. `first` and `next` are the prompts; the result is
/// empty when the first line is.
Task<std::string> askParagraphs(Ask& ask, std::string first, std::string next);

}  // namespace kova::cmd
