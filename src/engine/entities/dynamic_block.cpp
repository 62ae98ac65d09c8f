#include "engine/entities/dynamic_block.hpp"

#include <charconv>

#include "math/angles.hpp"
#include "strings/numbers.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

constexpr std::string_view kParameterWords[] = {"",   "Alignment", "Base", "Point",      "Linear", "Polar",
                                                "XY", "Rotation",  "Flip", "Visibility", "Lookup"};
constexpr std::string_view kActionWords[] = {"",       "Array", "Flip",    "Lookup",       "Move",
                                             "Rotate", "Scale", "Stretch", "Polar Stretch"};

template <class Kind, std::size_t N>
Kind kindByWord(const std::string_view (&words)[N], std::string_view word) {
    for (std::size_t i = 1; i < N; ++i)
        if (equalNoCase(words[i], word)) return static_cast<Kind>(i);
    return Kind::Unknown;
}

/// The nearest value that the parameter allows.
double allowed(const DynParameter& parameter, double value, double fallback) {
    const std::vector<double>& list = parameter.valueList;
    if (parameter.constraint == 2 && !list.empty()) {
        double best = fallback;
        for (const double v : list)
            if (std::isfinite(v) && std::abs(v - value) < std::abs(best - value)) best = v;
        return best;
    }
    if (parameter.constraint != 1) return value;
    if (list.size() >= 2 && list[0] <= list[1]) value = std::clamp(value, list[0], list[1]);
    if (!(parameter.increment > 0.0)) return value;
    // Steps count from the definition's value, so that it is one of them.
    const double stepped = fallback + std::round((value - fallback) / parameter.increment) * parameter.increment;
    if (!std::isfinite(stepped)) return value;
    return list.size() >= 2 && (stepped < list[0] || stepped > list[1]) ? value : stepped;
}

bool sameNumber(double a, double b) { return std::abs(a - b) <= 1e-9 * std::max({1.0, std::abs(a), std::abs(b)}); }

const DynProperty* find(const std::vector<DynProperty>& properties, std::string_view name) {
    for (const DynProperty& property : properties)
        if (equalNoCase(property.name, name)) return &property;
    return nullptr;
}

/// Two texts of one property that mean the same value.
bool sameText(const DynProperty& property, std::string_view a, std::string_view b) {
    if (property.kind == DynProperty::Kind::Length || property.kind == DynProperty::Kind::Angle) {
        const auto x = strings::parseReal(a);
        const auto y = strings::parseReal(b);
        if (x && y) return sameNumber(*x, *y);
    }
    return equalNoCase(a, b);
}

/// The lookup value of the row that fits the reference.
std::string lookedUp(const BlockReferenceEntity& reference, const Block& block) {
    if (!block.lookupTable) return "Custom";
    const LookupTable& table = *block.lookupTable;
    const std::vector<DynProperty> properties = dynProperties(block);
    for (const std::vector<std::string>& row : table.rows) {
        std::string value;
        bool matches = true;
        for (std::size_t i = 0; matches && i < std::min(row.size(), table.columns.size()); ++i) {
            if (!table.columns[i].isInput) {
                value = row[i];
                continue;
            }
            const DynProperty* input = find(properties, table.columns[i].name);
            matches = input == nullptr || input->kind == DynProperty::Kind::Lookup ||
                      sameText(*input, row[i], dynValueText(reference, block, *input));
        }
        if (matches && !value.empty()) return value;
    }
    return "Custom";
}

std::string setLookup(BlockReferenceEntity& reference, const Block& block, std::string_view text) {
    if (!block.lookupTable) return "The block has no lookup table.";
    const LookupTable& table = *block.lookupTable;
    if (!table.allowReverseLookup) return "The lookup table gives values only.";
    const std::vector<DynProperty> properties = dynProperties(block);
    for (const std::vector<std::string>& row : table.rows) {
        const std::size_t count = std::min(row.size(), table.columns.size());
        bool found = false;
        for (std::size_t i = 0; i < count; ++i)
            found = found || (!table.columns[i].isInput && equalNoCase(row[i], text));
        if (!found) continue;
        for (std::size_t i = 0; i < count; ++i) {
            const DynProperty* input = table.columns[i].isInput ? find(properties, table.columns[i].name) : nullptr;
            if (input == nullptr || input->kind == DynProperty::Kind::Lookup) continue;
            if (std::string error = setDynValue(reference, block, *input, row[i]); !error.empty()) return error;
        }
        return {};
    }
    return "No such lookup value.";
}

}  // namespace

DynParameterKind kindOf(const DynParameter& parameter) {
    return kindByWord<DynParameterKind>(kParameterWords, parameter.type);
}

DynActionKind kindOf(const DynAction& action) {
    if (equalNoCase(action.type, "PolarStretch")) return DynActionKind::PolarStretch;
    return kindByWord<DynActionKind>(kActionWords, action.type);
}

std::string_view wordOf(DynParameterKind kind) { return kParameterWords[static_cast<std::size_t>(kind)]; }
std::string_view wordOf(DynActionKind kind) { return kActionWords[static_cast<std::size_t>(kind)]; }

bool fits(DynActionKind action, DynParameterKind parameter) {
    using P = DynParameterKind;
    using A = DynActionKind;
    switch (parameter) {
        case P::Point:
            return action == A::Move || action == A::Stretch;
        case P::Linear:
        case P::XY:
            return action == A::Array || action == A::Move || action == A::Scale || action == A::Stretch;
        case P::Polar:
            return action == A::PolarStretch || fits(action, P::Linear);
        case P::Rotation:
            return action == A::Rotate;
        case P::Flip:
            return action == A::Flip;
        case P::Lookup:
            return action == A::Lookup;
        default:
            return false;
    }
}

std::vector<DynProperty> dynProperties(const Block& block) {
    using Kind = DynProperty::Kind;
    std::vector<DynProperty> all;
    for (std::size_t i = 0; i < block.dynParams.size(); ++i) {
        const DynParameter& p = block.dynParams[i];
        const Vector2 way = p.endPoint - p.base;
        switch (kindOf(p)) {
            case DynParameterKind::Point:
                all.push_back({p.name + " X", Kind::Length, i, p.base.x - block.base.x, true});
                all.push_back({p.name + " Y", Kind::Length, i, p.base.y - block.base.y, true});
                break;
            case DynParameterKind::Linear:
                all.push_back({p.name, Kind::Length, i, way.length(), false});
                break;
            case DynParameterKind::Polar:
                all.push_back({p.name, Kind::Length, i, way.length(), false});
                all.push_back({p.name + " angle", Kind::Angle, i, way.angle(), true});
                break;
            case DynParameterKind::XY:
                all.push_back({p.name + " X", Kind::Length, i, way.x, true});
                all.push_back({p.name + " Y", Kind::Length, i, way.y, true});
                break;
            case DynParameterKind::Rotation:
                all.push_back({p.name, Kind::Angle, i, p.value, true});
                break;
            case DynParameterKind::Flip:
                all.push_back({p.name, Kind::Flip, i, p.flipState ? 1.0 : 0.0, false});
                break;
            case DynParameterKind::Visibility:
                all.push_back({p.name, Kind::Visibility, i, 0.0, false});
                break;
            case DynParameterKind::Lookup:
                all.push_back({p.name, Kind::Lookup, i, 0.0, false});
                break;
            default:
                break;
        }
    }
    return all;
}

double dynValue(const BlockReferenceEntity& reference, const DynProperty& property) {
    const auto& map = property.kind == DynProperty::Kind::Flip ? reference.dynFlipValues : reference.dynParamValues;
    const auto it = map.find(property.name);
    return it == map.end() || !std::isfinite(it->second) ? property.fallback : it->second;
}

std::string dynValueText(const BlockReferenceEntity& reference, const Block& block, const DynProperty& property) {
    switch (property.kind) {
        case DynProperty::Kind::Length:
            return strings::shortest(dynValue(reference, property));
        case DynProperty::Kind::Angle:
            // Degrees have a factor that is not exact.
            return strings::shortest(std::round(math::toDegrees(dynValue(reference, property)) * 1e10) / 1e10);
        case DynProperty::Kind::Flip:
            return dynValue(reference, property) != 0.0 ? "Flipped" : "Not flipped";
        case DynProperty::Kind::Visibility:
            break;
        case DynProperty::Kind::Lookup:
            return lookedUp(reference, block);
    }
    for (const VisibilityState& state : block.visibilityStates)
        if (equalNoCase(state.name, reference.activeVisibilityState)) return state.name;
    return property.parameter < block.dynParams.size() ? block.dynParams[property.parameter].activeVisibility
                                                       : std::string();
}

std::string setDynValue(BlockReferenceEntity& reference, const Block& block, const DynProperty& property,
                        std::string_view text) {
    if (property.parameter >= block.dynParams.size()) return "No such parameter.";
    const DynParameter& parameter = block.dynParams[property.parameter];
    if (property.kind == DynProperty::Kind::Visibility) {
        for (const VisibilityState& state : block.visibilityStates)
            if (equalNoCase(state.name, text)) {
                reference.activeVisibilityState = state.name;
                return {};
            }
        return "No such visibility state.";
    }
    if (property.kind == DynProperty::Kind::Lookup) return setLookup(reference, block, text);
    if (property.kind == DynProperty::Kind::Flip) {
        const bool on = equalNoCase(text, "Flipped") || text == "1";
        if (!on && !equalNoCase(text, "Not flipped") && text != "0") return "Enter Flipped or Not flipped.";
        reference.dynFlipValues[property.name] = on ? 1.0 : 0.0;
        return {};
    }
    std::optional<double> value = strings::parseReal(text);
    const bool isAngle = property.kind == DynProperty::Kind::Angle;
    if (value && isAngle) value = math::toRadians(*value);
    if (value && !(isAngle && kindOf(parameter) == DynParameterKind::Polar))
        value = allowed(parameter, *value, property.fallback);
    if (!value || (!property.mayBeNegative && !(*value > 0.0))) return "Invalid value.";
    reference.dynParamValues[property.name] = *value;
    return {};
}

void resetDynValues(BlockReferenceEntity& reference) {
    reference.dynParamValues.clear();
    reference.dynFlipValues.clear();
    reference.activeVisibilityState.clear();
}

}  // namespace kova::engine
