#pragma once

#include "cmd/dialogue.hpp"
#include "doc/document.hpp"

namespace kova::cmd {

/// The dialogue of DIST, which MEASUREGEOM shares: distance and direction from point to point, or the length of a way
/// over several points. Prints what it measures and publishes DISTANCE. False: no point was given.
Task<bool> measureDistance(Ask& ask, doc::Document& document);

}  // namespace kova::cmd
