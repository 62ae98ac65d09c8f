#include "cmd/prompts/space_point.hpp"

namespace kova::cmd {

using math::Vector3;

Vector3 spacePoint(const Answer& answer, double lastZ, const engine::Drawing& drawing) {
    std::string_view text = trimmed(answer.text);
    const bool relative = text.starts_with('@');
    const auto first = text.find(',');
    const auto second = first == std::string_view::npos ? first : text.find(',', first + 1);
    std::optional<double> z;
    if (second != std::string_view::npos) z = parseNumber(text.substr(second + 1));
    if (relative) return {answer.point.x, answer.point.y, lastZ + z.value_or(0.0)};
    return {answer.point.x, answer.point.y, z ? *z : engine::sysVarReal(drawing, "ELEVATION")};
}

std::optional<Vector3> typedDirection(std::string_view text) {
    double values[3] = {0.0, 0.0, 0.0};
    std::size_t count = 0;
    for (std::string_view rest = trimmed(text); count < 3; ++count) {
        const std::size_t comma = rest.find(',');
        const std::optional<double> value = parseNumber(rest.substr(0, comma));
        if (!value) return std::nullopt;
        values[count] = *value;
        if (comma == std::string_view::npos) {
            ++count;
            break;
        }
        if (count == 2) return std::nullopt;
        rest.remove_prefix(comma + 1);
    }
    if (count < 2) return std::nullopt;
    return Vector3{values[0], values[1], values[2]};
}

}  // namespace kova::cmd
