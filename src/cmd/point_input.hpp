#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "engine/model/drawing.hpp"
#include "math/vector2.hpp"

namespace kova::cmd {

/// The settings that typed points depend on, read from a drawing once per input.
struct PointContext {
    double angleBase = 0.0;            ///< ANGBASE, radians
    bool clockwise = false;            ///< ANGDIR 1
    const engine::Ucs* ucs = nullptr;  ///< null: world coordinates

    static PointContext of(const engine::Drawing& drawing);
};

/// A decimal number, trimmed of blanks and tabs and consumed whole; nothing for any other text (3/4, 10mm, 1,5,
/// hexadecimal, inf, nan) and for values outside the range of a double.
std::optional<double> parseNumber(std::string_view text);
/// A whole number in the same manner.
std::optional<int> parseInteger(std::string_view text);

/// A typed point: absolute "x,y[,z]", relative "@x,y", polar "d<a" and "@d<a" (degrees), or direct distance entry.
/// `basePoint` is the running command's last point (the origin when there is none) and `cursorDirection` the cursor
/// minus the base point; world coordinates in and out. A bare number with the cursor on the base point is
/// the absolute point (number, 0), also behind "@". Nothing when the text is no point.
std::optional<math::Vector2> parsePointInput(std::string_view text, const math::Vector2& basePoint,
                                             const math::Vector2& cursorDirection, const PointContext& context = {});

/// An angle typed at a prompt in degrees, under ANGDIR and ANGBASE, as radians counter-clockwise from +x.
std::optional<double> parseAngleInput(std::string_view text, const PointContext& context);

std::string_view trimmed(std::string_view text);

}  // namespace kova::cmd
