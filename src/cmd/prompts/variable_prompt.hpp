#pragma once

#include "cmd/dialogue.hpp"
#include "doc/document.hpp"
#include "engine/model/sysvar.hpp"

namespace kova::cmd::commands {

/// Asks for a variable's new value, as its own command and SETVAR do, and sets it in one undo group of that label.
/// Enter keeps the value; what the variable refuses is answered in one line and asked again. A read-only variable
/// is shown instead.
Task<void> editVariable(Ask& ask, doc::Document& document, const engine::SysVarDef& def, std::string label);

/// "NAME = value", as a value is shown without being asked for.
std::string variableLine(const engine::Drawing& drawing, const engine::SysVarDef& def);

}  // namespace kova::cmd::commands
