#pragma once

#include <vector>

#include "cmd/dialogue.hpp"

namespace kova::cmd {

/// Asks for the boundary of a clip, in drawing coordinates: along a polyline, by points or by two corners along the
/// axes of the current coordinate system. `question` names the options [Select polyline/Polygonal/Rectangular/Invert
/// clip]; Invert switches `inverted`. Fewer than three points: given up, with a line that says why.
Task<std::vector<math::Vector2>> askClipBoundary(Ask& ask, doc::Document& document, const char* question,
                                                 bool* inverted);

}  // namespace kova::cmd
