#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "engine/model/layer.hpp"

namespace kova::cmd {

// Layer state files (.las): lines in pairs of group code and value.
//   0 LAYERSTATEDICTIONARY, then for each state 0 LAYERSTATE, 1 name, 301 description, 91 mask, and for each layer 8
//   name, 90 flags, 62 colour (420 a true colour), 370 lineweight, 6 linetype, 2 plot style, 440 transparency.
// Mask and flags: 1 off, 2 frozen, 4 locked, 8 not plotted; the mask besides 32 colour, 64 linetype, 128 lineweight,
// 256 plot style, 1024 transparency.

std::string layerStateText(const engine::LayerState& state);

/// All states of a file; none when it holds none. States without a valid name are passed over.
std::vector<engine::LayerState> parseLayerStates(std::string_view text);

}  // namespace kova::cmd
