#pragma once

#include <optional>
#include <string>

#include "script/lisp/machine.hpp"

namespace kova::script::lisp {

/// The path of an existing file: as given, beside the drawing, or in one of the program's folders; with `program`
/// also with ".lsp" behind it. Nothing when there is none.
std::optional<std::string> findProgramFile(const Machine& machine, const std::string& name, bool program);

}  // namespace kova::script::lisp
