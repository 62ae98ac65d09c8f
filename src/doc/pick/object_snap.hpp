#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "doc/document.hpp"
#include "engine/pick/snap_points.hpp"

namespace kova::cmd {

/// What snap words ask for.
struct SnapWords {
    engine::SnapKinds kinds = 0;  ///< 0: the next point as it is (NON)
    bool followsPointer = false;  ///< one of the words (EXT, PAR) has no meaning without a pointer
};

/// Reads END MID CEN GCEN NOD QUA INT APP INS PER TAN NEA EXT PAR NON or a longer beginning of their whole words, each
/// with or without "_", several with commas between; nothing for any other text.
std::optional<SnapWords> parseSnapWords(std::string_view text);
/// The prompt for the pick: "of" or "to".
const char* snapPrompt(engine::SnapKinds kinds);
/// "No endpoint found for specified point."
std::string noSnapText(engine::SnapKinds kinds);

/// The point of these kinds that a pick in the current space means, within pickTolerance; on a layout's sheet also of
/// what its viewport shows there. `base`: where perpendiculars and tangents come from. Nothing: there is none.
std::optional<math::Vector2> snapTo(doc::Document& document, engine::SnapKinds kinds, const math::Vector2& pick,
                                    const std::optional<math::Vector2>& base = {});

}  // namespace kova::cmd
