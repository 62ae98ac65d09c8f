#pragma once

#include <span>

#include "engine/model/drawing.hpp"

namespace kova::engine {

/// Adds the table records that every drawing has, and these layers, where a loaded file lacks them; current names that
/// lead nowhere become the standard ones.
void ensureStandardRecords(Drawing& drawing, std::span<const Name> layers = {});

}  // namespace kova::engine
