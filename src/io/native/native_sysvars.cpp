#include "engine/model/sysvar.hpp"
#include "io/native/native_sections.hpp"

namespace kova::io::native {

using engine::Drawing;
using engine::SysVarDef;
using engine::SysVarType;
using engine::SysVarValue;

namespace {

/// Members that are there in every file.
constexpr std::string_view kAlwaysWritten[] = {"CTAB", "LUNITS", "LUPREC"};

/// The tab that is shown: "Model" or the active layout.
std::string currentTab(const Drawing& drawing) {
    return drawing.tileMode ? std::string("Model") : drawing.activeLayoutName.str();
}

/// The value of a map variable; nothing when it is not set.
std::optional<SysVarValue> storedValue(const Drawing& drawing, std::string_view name) {
    if (const auto it = drawing.integerVariables.find(name); it != drawing.integerVariables.end()) return it->second;
    if (const auto it = drawing.realVariables.find(name); it != drawing.realVariables.end()) return it->second;
    if (const auto it = drawing.stringVariables.find(name); it != drawing.stringVariables.end()) return it->second;
    return std::nullopt;
}

/// What the file keeps of a known variable.
std::optional<SysVarValue> valueToSave(const Drawing& drawing, const SysVarDef& def) {
    if (def.name == "TILEMODE" || def.name == "CTAB") return std::nullopt;  // written elsewhere
    if (def.name == "TDINDWG") {
        // The clock of the session does not count: the same drawing gives the same file.
        const double edited = engine::sysVarReal(drawing, "TDEDITED");
        return edited > 0.0 ? std::optional<SysVarValue>(edited) : std::nullopt;
    }
    const bool always =
        std::find(std::begin(kAlwaysWritten), std::end(kAlwaysWritten), def.name) != std::end(kAlwaysWritten);
    if (!always && ((def.saved & engine::saved::Native) == 0 || def.programWide())) return std::nullopt;
    if (def.get == nullptr) {
        if (auto stored = storedValue(drawing, def.name)) return stored;
        return always ? std::optional(engine::getSysVar(drawing, def)) : std::nullopt;
    }
    // What cannot be set cannot be read back.
    if (def.set == nullptr && !always) return std::nullopt;
    return def.get(drawing);
}

void writeValue(JsonWriter& out, const SysVarValue& value) {
    if (const auto* integer = std::get_if<std::int32_t>(&value))
        out.integer(*integer);
    else if (const auto* real = std::get_if<double>(&value))
        out.number(*real);
    else if (const auto* text = std::get_if<std::string>(&value))
        out.text(*text);
    else
        out.text(engine::sysVarText(value));
}

/// The JSON value as one of the variable's type; fails when its type is another one. Numbers beyond the variable's
/// range are brought into it.
SysVarValue valueOfType(const JsonTree& tree, JsonTree::Index i, const RecordReader& reader, const SysVarDef& def) {
    const auto limited = [&](double v) { return def.ranged() ? std::clamp(v, def.minimum, def.maximum) : v; };
    switch (def.type) {
        case SysVarType::Integer: {
            const std::int32_t v = reader.smallIntegerAt(i, def.name);
            return static_cast<std::int32_t>(limited(v));
        }
        case SysVarType::Real:
            return limited(tree.number(i));
        default:
            return std::string(tree.text(i));
    }
}

/// A variable that this program does not know is kept under its name, in the map of its JSON type.
void keepUnknown(const JsonTree& tree, JsonTree::Index i, const RecordReader& reader, Drawing& drawing) {
    const std::string name(tree.keyOf(i));
    drawing.integerVariables.erase(name);
    drawing.realVariables.erase(name);
    drawing.stringVariables.erase(name);
    switch (tree.type(i)) {
        case JsonType::Boolean:
            drawing.integerVariables[name] = tree.boolean(i) ? 1 : 0;
            break;
        case JsonType::Integer:
        case JsonType::Unsigned: {
            const double wide = tree.number(i);
            if (std::abs(wide) <= std::numeric_limits<std::int32_t>::max())
                drawing.integerVariables[name] = reader.smallIntegerAt(i, name);
            else
                drawing.realVariables[name] = wide;
            break;
        }
        case JsonType::Float:
            drawing.realVariables[name] = tree.real(i);
            break;
        case JsonType::Text:
            drawing.stringVariables[name] = tree.text(i);
            break;
        default:
            break;
    }
}

}  // namespace

void writeSystemVariables(JsonWriter& out, const Drawing& drawing) {
    std::map<std::string_view, SysVarValue> values;
    const auto addUnknown = [&](const auto& map) {
        for (const auto& [name, value] : map)
            if (engine::findSysVar(name) == nullptr) values.insert_or_assign(name, value);
    };
    addUnknown(drawing.integerVariables);
    addUnknown(drawing.realVariables);
    addUnknown(drawing.stringVariables);
    for (const SysVarDef& def : engine::sysVarTable())
        if (auto value = valueToSave(drawing, def)) values.insert_or_assign(def.name, std::move(*value));
    values.insert_or_assign("CTAB", currentTab(drawing));

    out.key("systemVariables");
    out.beginObject();
    for (const auto& [name, value] : values) {
        // An infinite number would come back as 0; without its member the variable has its default.
        if (const auto* real = std::get_if<double>(&value); real != nullptr && !std::isfinite(*real)) continue;
        out.key(name);
        writeValue(out, value);
    }
    out.endObject();
}

void readSystemVariables(JsonTree& tree, JsonTree::Index object, const RecordReader& reader, bool spaceIsGiven,
                         Drawing& drawing) {
    if (tree.type(object) != JsonType::Object) throwTypeError(JsonType::Object, tree.type(object));
    for (JsonTree::Index i = JsonTree::first(object), last = tree.end(object); i != last; i = tree.next(i)) {
        if (!tree.isMember(i)) continue;
        const std::string_view name = tree.keyOf(i);
        if (engine::equalNoCase(name, "TILEMODE")) {
            drawing.tileMode = reader.integerAt(i, name) != 0;
            continue;
        }
        if (engine::equalNoCase(name, "CTAB")) {
            const engine::Name tab(tree.text(i));
            if (spaceIsGiven) continue;
            drawing.tileMode = drawing.findLayout(tab) == nullptr;
            if (!drawing.tileMode) drawing.activeLayoutName = tab;
            continue;
        }
        const SysVarDef* def = engine::findSysVar(name);
        if (def == nullptr) {
            keepUnknown(tree, i, reader, drawing);
            continue;
        }
        if (def->programWide()) continue;
        // A value that the variable refuses all the same (a name that is not in its table) leaves it as it is.
        static_cast<void>(engine::loadSysVar(drawing, def->name, valueOfType(tree, i, reader, *def)));
    }
}

}  // namespace kova::io::native
