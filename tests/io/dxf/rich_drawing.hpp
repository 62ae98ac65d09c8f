#pragma once

#include "engine/model/drawing.hpp"

namespace kova::test {

/// Fills a drawing with entities of all kinds, each with every field set to something sound, records in every table,
/// blocks with attributes, and layouts: what a careful user could have drawn.
void fillRichDrawing(engine::Drawing& drawing);

}  // namespace kova::test
