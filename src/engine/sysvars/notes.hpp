#pragma once

#include <string>

#include "engine/model/sysvar.hpp"

namespace kova::engine {

/// A line for the user who set the variable: that it has no effect here and why, or what keeps it from having one. Empty
/// when there is nothing to say.
std::string sysVarNote(const Drawing& drawing, const SysVarDef& def);

}  // namespace kova::engine
