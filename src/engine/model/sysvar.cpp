#include "engine/model/sysvar.hpp"

#include "engine/model/drawing.hpp"
#include "engine/sysvars/rows.hpp"
#include "strings/numbers.hpp"

namespace kova::engine {

namespace {

constexpr std::size_t kMaxTextLength = 4096;

using ProfileMap = std::map<std::string, SysVarValue, std::less<>>;

ProfileMap& profile() {
    static ProfileMap values;
    return values;
}

/// What a map holds under a name; null when there is nothing.
template <class Map>
const typename Map::mapped_type* lookUp(const Map& map, std::string_view name) {
    const auto it = map.find(name);
    return it == map.end() ? nullptr : &it->second;
}

std::optional<math::Vector3> parsePoint(std::string_view text) {
    double numbers[3] = {0.0, 0.0, 0.0};
    std::size_t count = 0;
    while (true) {
        if (count == 3) return std::nullopt;
        const std::size_t comma = text.find(',');
        std::string_view field = text.substr(0, comma);
        while (field.starts_with(' ')) field.remove_prefix(1);
        while (field.ends_with(' ')) field.remove_suffix(1);
        const auto number = strings::parseReal(field);
        if (!number) return std::nullopt;
        numbers[count++] = *number;
        if (comma == std::string_view::npos) break;
        text.remove_prefix(comma + 1);
    }
    if (count < 2) return std::nullopt;
    return math::Vector3{numbers[0], numbers[1], numbers[2]};
}

/// A number as the row's type; nothing when it does not fit.
std::optional<SysVarValue> convertNumber(SysVarType type, double value) {
    if (!std::isfinite(value)) return std::nullopt;
    if (type == SysVarType::Real) return value;
    if (type != SysVarType::Integer || value != std::trunc(value) || std::abs(value) > 2147483647.0)
        return std::nullopt;
    return static_cast<std::int32_t>(value);
}

std::optional<SysVarValue> convertText(const SysVarDef& def, const std::string& text) {
    if (def.type == SysVarType::String) {
        const bool printable = std::none_of(text.begin(), text.end(),
                                            [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; });
        if (text.size() > kMaxTextLength || !printable) return std::nullopt;
        return text;
    }
    if (def.type == SysVarType::Point) {
        if (const std::optional<math::Vector3> p = parsePoint(text)) return *p;
        return std::nullopt;
    }
    if (!def.color) return std::nullopt;
    const std::optional<Color> color = parseColor(text);
    if (!color || color->method == ColorMethod::RGB) return std::nullopt;
    return color->bareIndex();
}

std::optional<SysVarValue> convert(const SysVarDef& def, const SysVarValue& value) {
    if (const auto* i = std::get_if<std::int32_t>(&value)) return convertNumber(def.type, *i);
    if (const auto* d = std::get_if<double>(&value)) return convertNumber(def.type, *d);
    if (const auto* s = std::get_if<std::string>(&value)) return convertText(def, *s);
    const auto& p = std::get<math::Vector3>(value);
    if (def.type != SysVarType::Point || !p.is_finite()) return std::nullopt;
    return p;
}

bool inRange(const SysVarDef& def, const SysVarValue& value) {
    if (!def.ranged()) return true;
    const auto* i = std::get_if<std::int32_t>(&value);
    const auto* d = std::get_if<double>(&value);
    if (i == nullptr && d == nullptr) return true;
    const double number = i != nullptr ? *i : *d;
    return number >= def.minimum && number <= def.maximum && !(def.aboveMinimum && number == def.minimum);
}

void store(Drawing& drawing, const SysVarDef& def, const SysVarValue& value) {
    const std::string name(def.name);
    switch (def.type) {
        case SysVarType::Integer:
            drawing.integerVariables[name] = std::get<std::int32_t>(value);
            break;
        case SysVarType::Real:
            drawing.realVariables[name] = std::get<double>(value);
            break;
        case SysVarType::String:
            drawing.stringVariables[name] = std::get<std::string>(value);
            break;
        // A point has no map of its own; it stands as text among the texts.
        case SysVarType::Point:
            drawing.stringVariables[name] = sysVarText(value);
            break;
    }
}

void storeProfile(const SysVarDef& def, const SysVarValue& value) {
    if (def.type == SysVarType::String && std::get<std::string>(value).empty() &&
        def.fallback != SysVarValue(std::string())) {
        profile().erase(std::string(def.name));  // "." takes a folder back to its default
        return;
    }
    profile()[std::string(def.name)] = value;
    // Object snap tracking as a switch of its own and as bit 16 of AUTOSNAP are one value.
    if (def.name == "AUTOSNAP") {
        profile()["AUTOTRACKING"] = (std::get<std::int32_t>(value) & 16) != 0 ? 1 : 0;
    } else if (def.name == "AUTOTRACKING") {
        const std::int32_t bits = std::get<std::int32_t>(*getProfileVariable("AUTOSNAP"));
        profile()["AUTOSNAP"] = std::get<std::int32_t>(value) != 0 ? bits | 16 : bits & ~16;
    }
}

const SysVarValue& profileValue(const SysVarDef& def) {
    const SysVarValue* value = lookUp(profile(), def.name);
    return value != nullptr ? *value : def.fallback;
}

std::string unknownName(std::string_view name) { return "Unknown variable name \"" + std::string(name) + "\"."; }

/// Sets a checked value wherever the row keeps it.
std::string assign(Drawing& drawing, const SysVarDef& def, const SysVarValue& value) {
    if (def.programWide()) {
        storeProfile(def, value);
        return {};
    }
    if (def.set != nullptr) {
        std::string error = def.set(drawing, value);
        if (!error.empty()) return error;
    } else {
        store(drawing, def, value);
    }
    if (def.changesLook) ++drawing.styleRevision;
    return {};
}

}  // namespace

std::string checkSysVar(const SysVarDef& def, const SysVarValue& value, SysVarValue& converted) {
    std::optional<SysVarValue> fit = convert(def, value);
    if (!fit || !inRange(def, *fit)) return sysVarRefusal(def);
    if (def.accepts != nullptr && !def.accepts(*fit)) return "Cannot set " + std::string(def.name) + " to that value.";
    converted = std::move(*fit);
    return {};
}

SysVarValue getSysVar(const Drawing& drawing, const SysVarDef& def) {
    if (def.get != nullptr) return def.get(drawing);
    if (def.programWide()) return profileValue(def);
    switch (def.type) {
        case SysVarType::Integer:
            if (const auto* v = lookUp(drawing.integerVariables, def.name)) return *v;
            break;
        case SysVarType::Real:
            if (const auto* v = lookUp(drawing.realVariables, def.name)) return *v;
            break;
        case SysVarType::String:
            if (const auto* v = lookUp(drawing.stringVariables, def.name)) return *v;
            break;
        case SysVarType::Point:
            if (const auto* v = lookUp(drawing.stringVariables, def.name))
                if (const std::optional<math::Vector3> p = parsePoint(*v)) return *p;
            break;
    }
    return def.fallback;
}

std::optional<SysVarValue> getSysVar(const Drawing& drawing, std::string_view name) {
    const SysVarDef* def = findSysVar(name);
    if (def == nullptr) return std::nullopt;
    return getSysVar(drawing, *def);
}

std::string setSysVar(Drawing& drawing, std::string_view name, const SysVarValue& value) {
    const SysVarDef* def = findSysVar(name);
    if (def == nullptr) return unknownName(name);
    if (def->readOnly) return std::string(def->name) + " is read only.";
    SysVarValue fit;
    if (std::string error = checkSysVar(*def, value, fit); !error.empty()) return error;
    return assign(drawing, *def, fit);
}

std::string loadSysVar(Drawing& drawing, std::string_view name, const SysVarValue& value) {
    const SysVarDef* def = findSysVar(name);
    if (def == nullptr) return unknownName(name);
    if (def->programWide()) return {};
    if (def->get != nullptr && def->set == nullptr) return {};
    SysVarValue fit;
    if (std::string error = checkSysVar(*def, value, fit); !error.empty()) return error;
    if (def->get != nullptr) return assign(drawing, *def, fit);
    // A set alone is a check against tables that may not have been read yet.
    store(drawing, *def, fit);
    if (def->changesLook) ++drawing.styleRevision;
    return {};
}

std::string publishSysVar(Drawing& drawing, std::string_view name, const SysVarValue& value) {
    const SysVarDef* def = findSysVar(name);
    if (def == nullptr) return unknownName(name);
    if (def->get != nullptr && def->set == nullptr) return std::string(def->name) + " is read only.";
    SysVarValue fit;
    if (std::string error = checkSysVar(*def, value, fit); !error.empty()) return error;
    return assign(drawing, *def, fit);
}

namespace {

/// A number from a value of any type; texts must be numbers from end to end.
std::optional<double> asNumber(const SysVarValue& value) {
    if (const auto* i = std::get_if<std::int32_t>(&value)) return *i;
    if (const auto* d = std::get_if<double>(&value)) return *d;
    const auto* text = std::get_if<std::string>(&value);
    return text != nullptr ? strings::parseReal(*text) : std::nullopt;
}

}  // namespace

std::int32_t sysVarInt(const Drawing& drawing, std::string_view name, std::int32_t fallback) {
    const std::optional<SysVarValue> value = getSysVar(drawing, name);
    const std::optional<double> number = value ? asNumber(*value) : std::nullopt;
    if (!number || !(std::abs(*number) <= 2147483647.0)) return fallback;
    return static_cast<std::int32_t>(*number);
}

double sysVarReal(const Drawing& drawing, std::string_view name, double fallback) {
    const std::optional<SysVarValue> value = getSysVar(drawing, name);
    return value ? asNumber(*value).value_or(fallback) : fallback;
}

std::string sysVarString(const Drawing& drawing, std::string_view name, std::string_view fallback) {
    std::optional<SysVarValue> value = getSysVar(drawing, name);
    if (!value || !std::holds_alternative<std::string>(*value)) return std::string(fallback);
    return std::get<std::string>(std::move(*value));
}

std::optional<SysVarValue> getProfileVariable(std::string_view name) {
    const SysVarDef* def = findSysVar(name);
    if (def == nullptr || !def->programWide()) return std::nullopt;
    return profileValue(*def);
}

std::string setProfileVariable(std::string_view name, const SysVarValue& value) {
    const SysVarDef* def = findSysVar(name);
    if (def == nullptr) return unknownName(name);
    if (def->readOnly || !def->programWide()) return std::string(def->name) + " is no setting of the program.";
    SysVarValue fit;
    if (std::string error = checkSysVar(*def, value, fit); !error.empty()) return error;
    storeProfile(*def, fit);
    return {};
}

const std::map<std::string, SysVarValue, std::less<>>& profileVariables() { return profile(); }

void resetProfileVariables() { profile().clear(); }

SysVarEnvironment& sysVarEnvironment() {
    static SysVarEnvironment environment;
    return environment;
}

}  // namespace kova::engine
