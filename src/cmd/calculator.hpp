#pragma once

#include <string>
#include <string_view>

#include "doc/document.hpp"
#include "math/expression.hpp"

namespace kova::cmd {

/// What an expression of CAL gives, in the current coordinate system. "name = expression" stores the value for the
/// session. Besides the evaluator's own functions: stored names, @ (LASTPOINT), system variables by name or as
/// getvar(name), w2u(p), u2w(p). What needs a pick (cur, end, mid, cen, rad ...) is an error.
math::ExpressionResult calculate(doc::Document& document, std::string_view text);

/// A value as CAL prints it: "2.5", "(1 2 0)".
std::string calculatorText(const math::ExpressionValue& value);

}  // namespace kova::cmd
