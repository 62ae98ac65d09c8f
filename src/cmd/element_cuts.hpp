#pragma once

#include "engine/element_cuts.hpp"

namespace kova::cmd {

using engine::cutElement;

}  // namespace kova::cmd
