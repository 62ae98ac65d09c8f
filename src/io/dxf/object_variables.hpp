#pragma once

#include <array>
#include <string_view>

namespace kova::io::dxf {

/// System variables that other programs keep in the dictionary of variables; written when they are not as usual.
inline constexpr std::array<std::string_view, 5> kDictionaryVariables{"FRAME", "WIPEOUTFRAME", "PDFFRAME", "XCLIPFRAME",
                                                                      "FIELDEVAL"};

}  // namespace kova::io::dxf
