#include "cmd/point_input.hpp"

#include <charconv>

#include "math/angles.hpp"
#include "strings/numbers.hpp"

namespace kova::cmd {

using math::Vector2;

PointContext PointContext::of(const engine::Drawing& drawing) {
    PointContext context;
    const auto base = drawing.realVariables.find("ANGBASE");
    if (base != drawing.realVariables.end()) context.angleBase = base->second;
    const auto direction = drawing.integerVariables.find("ANGDIR");
    context.clockwise = direction != drawing.integerVariables.end() && direction->second == 1;
    if (!drawing.ucs.isWorld()) context.ucs = &drawing.ucs;
    return context;
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
    return text;
}

std::optional<double> parseNumber(std::string_view text) {
    return strings::parseReal(trimmed(text));
}

std::optional<int> parseInteger(std::string_view text) {
    const auto value = strings::parseInteger(trimmed(text));
    if (!value || *value < std::numeric_limits<int>::min() || *value > std::numeric_limits<int>::max())
        return std::nullopt;
    return static_cast<int>(*value);
}

std::optional<double> parseAngleInput(std::string_view text, const PointContext& context) {
    const auto degrees = parseNumber(text);
    if (!degrees) return std::nullopt;
    return (context.clockwise ? -*degrees : *degrees) * math::kDegree + context.angleBase;
}

namespace {

/// The offset of polar or Cartesian input; nothing when it is neither.
std::optional<Vector2> parseOffset(std::string_view text, const PointContext& context) {
    if (const auto at = text.find('<'); at != std::string_view::npos) {
        const auto distance = parseNumber(text.substr(0, at));
        const auto angle = parseAngleInput(text.substr(at + 1), context);
        if (!distance || !angle) return std::nullopt;
        return Vector2::from_angle(*angle) * *distance;
    }
    const auto comma = text.find(',');
    if (comma == std::string_view::npos) return std::nullopt;
    std::string_view second = text.substr(comma + 1);
    if (const auto next = second.find(','); next != std::string_view::npos) {
        // Points at prompts are 2-D: the third coordinate must be a number and is dropped.
        if (!parseNumber(second.substr(next + 1))) return std::nullopt;
        second = second.substr(0, next);
    }
    const auto x = parseNumber(text.substr(0, comma));
    const auto y = parseNumber(second);
    if (!x || !y) return std::nullopt;
    return Vector2{*x, *y};
}

}  // namespace

std::optional<Vector2> parsePointInput(std::string_view text, const Vector2& basePoint, const Vector2& cursorDirection,
                                       const PointContext& context) {
    if (text.empty()) return std::nullopt;
    text = trimmed(text);
    bool relative = false;
    if (!text.empty() && text.front() == '@') {
        relative = true;
        text = trimmed(text.substr(1));
        if (!text.empty() && text.front() == '*') text = trimmed(text.substr(1));
    }
    std::optional<Vector2> result;
    if (text.find('<') != std::string_view::npos || text.find(',') != std::string_view::npos) {
        const auto offset = parseOffset(text, context);
        if (!offset) return std::nullopt;
        if (relative)
            result = basePoint + (context.ucs != nullptr ? context.ucs->directionToWorld(*offset) : *offset);
        else
            result = context.ucs != nullptr ? context.ucs->toWorld(*offset) : *offset;
    } else {
        const auto number = parseNumber(text);
        if (!number) return std::nullopt;
        if (cursorDirection.length() > math::kTolerance)
            result = basePoint + cursorDirection.normalized() * *number;
        else
            result = context.ucs != nullptr ? context.ucs->toWorld({*number, 0.0}) : Vector2{*number, 0.0};
    }
    if (!result->is_finite()) return std::nullopt;
    return result;
}

}  // namespace kova::cmd
