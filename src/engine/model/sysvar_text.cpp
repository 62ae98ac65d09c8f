#include "engine/model/drawing.hpp"
#include "engine/model/sysvar.hpp"
#include "math/angles.hpp"
#include "strings/numbers.hpp"

namespace kova::engine {

namespace {

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
    return text;
}

/// A number to twelve digits, so that an angle that came from degrees shows as it was typed.
std::string roundedText(double value) {
    return strings::general(value, 12);
}

/// Minus zero reads as zero.
double plain(double value) { return value == 0.0 ? 0.0 : value; }

bool asksOnOff(const SysVarDef& def) { return def.prompt.find("[ON/OFF") != std::string_view::npos; }

}  // namespace

std::string sysVarText(const SysVarValue& value, bool quoted) {
    if (const auto* i = std::get_if<std::int32_t>(&value)) return std::to_string(*i);
    if (const auto* d = std::get_if<double>(&value)) return strings::shortest(plain(*d));
    if (const auto* s = std::get_if<std::string>(&value)) {
        std::string text(quoted ? 1 : 0, '"');
        text.append(*s).append(quoted ? 1 : 0, '"');
        return text;
    }
    const auto& p = std::get<math::Vector3>(value);
    std::string text = strings::shortest(plain(p.x)) + "," + strings::shortest(plain(p.y));
    if (p.z != 0.0) text.append(",").append(strings::shortest(p.z));
    return text;
}

std::string sysVarPromptText(const SysVarDef& def, const SysVarValue& value) {
    if (asksOnOff(def) && std::holds_alternative<std::int32_t>(value))
        return std::get<std::int32_t>(value) != 0 ? "ON" : "OFF";
    if (def.degrees && std::holds_alternative<double>(value))
        return roundedText(plain(math::toDegrees(std::get<double>(value))));
    return sysVarText(value);
}

std::string sysVarPrompt(const Drawing& drawing, const SysVarDef& def) {
    std::string text = def.prompt.empty() ? "Enter new value for " + std::string(def.name) : std::string(def.prompt);
    std::string value = sysVarPromptText(def, getSysVar(drawing, def));
    if (value.empty()) value.push_back('.');
    return text + " <" + value + ">:";
}

std::string sysVarRefusal(const SysVarDef& def) {
    if (!def.ranged()) return "Invalid value.";
    const auto bound = [&](double v) { return def.degrees ? roundedText(math::toDegrees(v)) : strings::shortest(v); };
    const std::string lead = "Invalid number. Enter ";
    if (def.maximum >= kSysVarNoLimit) {
        if (def.minimum <= -kSysVarNoLimit) return "Invalid value.";
        return lead +
               (def.aboveMinimum ? "a number greater than " + bound(def.minimum) : bound(def.minimum) + " or more") +
               ":";
    }
    return lead + bound(def.minimum) + (def.minimum < 0.0 ? " to " : "-") + bound(def.maximum) + ":";
}

std::string parseSysVar(const SysVarDef& def, std::string_view text, SysVarValue& value) {
    text = trimmed(text);
    switch (def.type) {
        case SysVarType::String:
            value = text == "." ? std::string() : std::string(text);
            return {};
        case SysVarType::Point: {
            SysVarValue p;
            if (std::string error = checkSysVar(def, std::string(text), p); !error.empty()) return error;
            value = p;
            return {};
        }
        case SysVarType::Integer:
            if (const std::optional<std::int64_t> number = strings::parseInteger(text);
                number && std::in_range<std::int32_t>(*number)) {
                value = static_cast<std::int32_t>(*number);
                return {};
            }
            if (def.minimum == 0.0 && def.maximum == 1.0) {
                const bool on = equalNoCase(text, "ON");
                if (on || equalNoCase(text, "OFF")) {
                    value = on ? 1 : 0;
                    return {};
                }
            }
            if (def.color) {
                const std::optional<Color> color = parseColor(text);
                if (color && color->method != ColorMethod::RGB) {
                    value = color->bareIndex();
                    return {};
                }
            }
            return sysVarRefusal(def);
        case SysVarType::Real:
            if (const std::optional<double> number = strings::parseReal(text)) {
                value = def.degrees ? math::toRadians(*number) : *number;
                return {};
            }
            return sysVarRefusal(def);
    }
    return sysVarRefusal(def);
}

}  // namespace kova::engine
