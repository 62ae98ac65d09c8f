#pragma once

#include <string>

#include "script/lisp/value.hpp"

namespace kova::script::lisp {

/// A real as it prints: ".0" behind a whole one, else six significant digits, and at least three decimals.
std::string realText(double value);
/// The text in double quotes, with its escapes.
std::string quotedText(std::string_view text);
/// A value as it prints: strings in quotes when `quoted` (PRIN1), else plain (PRINC). Throws LispError for texts
/// beyond 64 MiB.
std::string printed(const Value& value, bool quoted = true);

}  // namespace kova::script::lisp
