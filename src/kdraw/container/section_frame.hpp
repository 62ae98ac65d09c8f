// The frame around the header variables and the classes: begin mark, size, body, CRC, end mark.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "kdraw/fields/version.hpp"

namespace kdraw {

/// The two framed sections, each with marks of its own.
enum class FramedSection { Header, Classes };

/// Finds the body in a framed section. `maintenance` is Container::maintenance, which decides between two layouts of
/// the size; the other one is tried when the CRC does not fit. Wrong marks and CRCs become notes. Returns an error
/// text, empty on success; `body` is a part of `bytes`.
std::string readFrame(FramedSection kind, Version version, int maintenance, std::string_view bytes,
                      std::string_view& body, std::vector<std::string>& notes);

/// The framed section around a body, for the versions that are written.
std::string writeFrame(FramedSection kind, Version version, std::string_view body);

}  // namespace kdraw
