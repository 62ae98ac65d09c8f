#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "cmd/dialogue.hpp"
#include "engine/model/color.hpp"
#include "engine/model/drawing.hpp"

namespace kova::cmd {

/// Asks for a colour: 1-255, a name, ByLayer, ByBlock, "r,g,b", or T and then the triple. Nothing: Enter.
/// `byValue`: ByLayer and ByBlock are refused, as a layer cannot have them.
Task<std::optional<engine::Color>> askColor(Ask& ask, std::string prompt, bool byValue = false);

/// The lineweights that drawings know, in hundredths of a millimetre, ascending.
std::span<const int> lineweights();
/// "0.25 mm", "ByLayer", "ByBlock", "Default".
std::string lineweightText(int lineweight);
/// What a user types for one: millimetres, "ByLayer", "ByBlock", "Default"; a width between two known ones becomes the
/// nearer. Nothing for any other text.
std::optional<int> parseLineweight(std::string_view text);

/// A linetype by name, loaded from the built-in library when the drawing does not hold it yet, undoably; null when
/// neither knows it.
const engine::Linetype* useLinetype(doc::Document& document, engine::Name name);

}  // namespace kova::cmd
