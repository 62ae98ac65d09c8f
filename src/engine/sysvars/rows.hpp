#pragma once

// The vocabulary in which the families of the system-variable table write their rows; for sysvar_*.cpp only.

#include <vector>

#include "engine/model/sysvar.hpp"

namespace kova::engine::rows {

inline constexpr unsigned kDrawing = saved::Native;                 ///< kept in the drawing
inline constexpr unsigned kHeader = saved::Native | saved::Header;  ///< and in the header of DXF and DWG
inline constexpr unsigned kProfile = saved::Profile;
inline constexpr unsigned kSession = saved::Session;

using Getter = SysVarValue (*)(const Drawing&);
using Setter = std::string (*)(Drawing&, const SysVarValue&);

/// A row under construction: `toggle("FILLMODE", 1, kHeader, "...").code(70).looks()`.
struct Row {
    SysVarDef def;

    Row& code(int groupCode) {
        def.dxfCode = static_cast<std::int16_t>(groupCode);
        return *this;
    }
    Row& own() {
        def.command = SysVarCommand::Own;
        return *this;
    }
    Row& prompt(std::string_view text) {
        def.prompt = text;
        return *this;
    }
    Row& degrees() {
        def.degrees = true;
        return *this;
    }
    Row& looks() {
        def.changesLook = true;
        return *this;
    }
    Row& readOnly() {
        def.readOnly = true;
        return *this;
    }
    Row& get(Getter f) {
        def.get = f;
        return *this;
    }
    Row& set(Setter f) {
        def.set = f;
        return *this;
    }
    Row& accepts(bool (*f)(const SysVarValue&)) {
        def.accepts = f;
        return *this;
    }
    operator SysVarDef() const { return def; }  // NOLINT: rows are collected as definitions
};

inline Row row(std::string_view name, SysVarType type, SysVarValue fallback, unsigned where, std::string_view text) {
    Row r;
    r.def.name = name;
    r.def.type = type;
    r.def.fallback = std::move(fallback);
    r.def.saved = where;
    r.def.description = text;
    return r;
}

inline Row integer(std::string_view name, std::int32_t fallback, std::int32_t minimum, std::int32_t maximum,
                   unsigned where, std::string_view text) {
    Row r = row(name, SysVarType::Integer, fallback, where, text);
    r.def.minimum = minimum;
    r.def.maximum = maximum;
    return r;
}
/// 0 or 1, with the on/off command.
inline Row toggle(std::string_view name, std::int32_t fallback, unsigned where, std::string_view text) {
    Row r = integer(name, fallback, 0, 1, where, text);
    r.def.command = SysVarCommand::Toggle;
    return r;
}
/// A colour index from `minimum` (0: ByBlock and ByLayer are allowed, 1: they are not) to 255 or 256.
inline Row colorIndex(std::string_view name, std::int32_t fallback, std::int32_t minimum, unsigned where,
                      std::string_view text) {
    Row r = integer(name, fallback, minimum, minimum == 0 ? 256 : 255, where, text);
    r.def.color = true;
    return r;
}
/// Any finite number.
inline Row real(std::string_view name, double fallback, unsigned where, std::string_view text) {
    return row(name, SysVarType::Real, fallback, where, text);
}
inline Row realRange(std::string_view name, double fallback, double minimum, double maximum, unsigned where,
                     std::string_view text) {
    Row r = real(name, fallback, where, text);
    r.def.minimum = minimum;
    r.def.maximum = maximum;
    return r;
}
/// 0 or more.
inline Row size(std::string_view name, double fallback, unsigned where, std::string_view text) {
    return realRange(name, fallback, 0.0, kSysVarNoLimit, where, text);
}
/// More than 0.
inline Row positive(std::string_view name, double fallback, unsigned where, std::string_view text) {
    Row r = size(name, fallback, where, text);
    r.def.aboveMinimum = true;
    return r;
}
inline Row angle(std::string_view name, double radians, unsigned where, std::string_view text) {
    return real(name, radians, where, text).degrees();
}
inline Row string(std::string_view name, std::string_view fallback, unsigned where, std::string_view text) {
    return row(name, SysVarType::String, std::string(fallback), where, text);
}
inline Row point(std::string_view name, const math::Vector3& fallback, unsigned where, std::string_view text) {
    return row(name, SysVarType::Point, fallback, where, text);
}

// The families, each in a file of its own ----------------------------------------------------------------------
std::vector<SysVarDef> draftingVariables();   ///< units, drafting aids, limits, coordinates
std::vector<SysVarDef> objectVariables();     ///< what new objects take, hatch settings
std::vector<SysVarDef> dimensionVariables();  ///< the dimension variables and what belongs to dimensions
std::vector<SysVarDef> displayVariables();    ///< display, regeneration, selecting, grips, screen
std::vector<SysVarDef> fileVariables();       ///< files, references, attributes, layouts, the drawing's names
std::vector<SysVarDef> sessionVariables();    ///< what the program and the running command tell of themselves
std::vector<SysVarDef> headerVariables();     ///< values that are only kept because drawing files carry them

}  // namespace kova::engine::rows
