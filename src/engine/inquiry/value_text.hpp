#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "engine/model/drawing.hpp"
#include "math/vector2.hpp"

namespace kova::cmd {

/// "1 object", "3 objects".
std::string counted(std::size_t count, std::string_view noun);

/// A length as reports show it, in the drawing's units and decimals (LUNITS, LUPREC): "2.5000".
std::string lengthText(const engine::Drawing& drawing, double length);
/// The same as a prompt shows a default: without trailing zeros.
std::string lengthDefault(const engine::Drawing& drawing, double length);
/// A direction in the drawing's angle units (AUNITS, AUPREC, ANGBASE, ANGDIR).
std::string angleText(const engine::Drawing& drawing, double radians);
/// A point as a prompt shows a default, in the current UCS: "10,2.5".
std::string pointDefault(const engine::Drawing& drawing, const math::Vector2& world);

/// A handle as users know it: hexadecimal digits in upper case.
std::string handleText(std::uint64_t handle);

/// The text in double quotes.
std::string inQuotes(std::string_view text);

}  // namespace kova::cmd
