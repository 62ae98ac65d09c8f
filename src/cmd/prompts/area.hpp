#pragma once

#include "cmd/dialogue.hpp"
#include "doc/document.hpp"

namespace kova::cmd {

/// The dialogue of AREA, which MEASUREGEOM shares: points (with arcs), objects, adding up and taking off. Prints what it
/// measures and publishes AREA and PERIMETER. With `height` every area asked for gives a volume (MEASUREGEOM Volume).
Dialogue measureArea(Ask& ask, doc::Document& document, bool height = false);

}  // namespace kova::cmd
