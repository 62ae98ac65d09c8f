#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kova::strings {

// Numbers as text and back, the same under every locale: the point is a point. Everything that reads or prints a real
// number goes through here; `printf` and `strtod` would take the user's decimal comma.

/// Reads the decimal number that [from, to) begins with: an optional "-", digits with a point among them, an exponent.
/// Gives the end of it, or null (and leaves `value`) when there is none. A number too small for a double is zero, one
/// too large is infinite; "inf", "nan" and hexadecimal numbers are none.
const char* readReal(const char* from, const char* to, double& value);
/// The real that is all of a text, "+" in front allowed; nothing for any other text and for one too large.
std::optional<double> parseReal(std::string_view text);
/// The integer that is all of a text, "+" in front allowed.
std::optional<std::int64_t> parseInteger(std::string_view text);
/// The hexadecimal number that is all of a text, without a sign.
std::optional<std::uint64_t> parseHex(std::string_view text);

/// Room that writeShortest needs at most.
inline constexpr std::size_t kShortestSize = 25;
/// Writes the shortest text that reads back the same double; gives its end.
inline char* writeShortest(char* at, double value) { return std::to_chars(at, at + kShortestSize, value).ptr; }
/// The shortest decimal text that reads back the same double ("0.1", "3", "1e+30").
std::string shortest(double value);
/// With so many digits behind the point (at most 400), as printf's %.*f.
std::string fixed(double value, int decimals);
/// With so many digits behind the point and an exponent, as printf's %.*e ("1.50e+01").
std::string scientific(double value, int decimals);
/// With so many digits in all, trailing zeros left out, an exponent for the large and the small: as printf's %.*g.
std::string general(double value, int digits);

/// Upper case hexadecimal digits, as handles are written.
std::string hexText(std::uint64_t value);

}  // namespace kova::strings
