#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "math/vector3.hpp"

namespace kova::engine {

class Drawing;

enum class SysVarType : std::uint8_t { Integer, Real, String, Point };

/// A system variable's value. Points carry a z that 2-D variables leave at 0.
using SysVarValue = std::variant<std::int32_t, double, std::string, math::Vector3>;

/// Where a variable is kept, as a set of bits.
namespace saved {
inline constexpr unsigned Nowhere = 0;   ///< lives while the drawing is open
inline constexpr unsigned Native = 1;    ///< in the native file's "systemVariables"
inline constexpr unsigned Header = 2;    ///< in the DXF and DWG header
inline constexpr unsigned Profile = 4;   ///< a setting of the program, never read from a file
}  // namespace saved

/// Which command serves a variable of the same name.
enum class SysVarCommand : std::uint8_t {
    Plain,   ///< the generic command of the variable's type: "Enter new value for NAME <v>:"
    Toggle,  ///< the generic on/off command
    Own      ///< a command of that name with a dialogue of its own, or none but SETVAR
};

/// One row of the system-variable table: everything that the program knows about a variable.
struct SysVarDef {
    std::string_view name;
    SysVarType type = SysVarType::Integer;
    SysVarValue fallback;             ///< value in a new metric drawing
    double minimum = 0.0;             ///< of numbers; meaningless unless minimum < maximum
    double maximum = 0.0;
    bool readOnly = false;
    unsigned saved = saved::Native;
    SysVarCommand command = SysVarCommand::Plain;
    std::string_view description;
    std::int16_t dxfCode = 0;         ///< group code of the value in a DXF header
    bool degrees = false;             ///< held in radians, asked and shown in degrees at the prompt
    /// A variable that is another view of the drawing (CLAYER, EXTMIN, DIMTXT ...) is read and set through these;
    /// null: the value stands in the drawing's maps. set returns an error text, empty on success.
    SysVarValue (*get)(const Drawing&) = nullptr;
    std::string (*set)(Drawing&, const SysVarValue&) = nullptr;

    bool ranged() const { return minimum < maximum; }
};

/// The whole table, ordered by name.
std::span<const SysVarDef> sysVarTable();
/// Null for an unknown name (case ignored).
const SysVarDef* findSysVar(std::string_view name);

/// A row of the settings registry: what a settings dialog shows and checks.
struct SettingsRow {
    std::string_view name;
    std::string_view description;
    std::string_view category;
    std::int32_t minimum;
    std::int32_t maximum;
};
std::span<const SettingsRow> settingsRegistry();

/// The variable's value as LIST, SETVAR and prompts show it: integers plain, reals in shortest form,
/// texts in quotes for SETVAR's listing only when `quoted`, points as "x,y" or "x,y,z".
std::string sysVarText(const SysVarValue& value, bool quoted = false);

/// Reads any variable: through its row's get, or from the drawing's maps, or its default. Nothing for an unknown name.
std::optional<SysVarValue> getSysVar(const Drawing& drawing, std::string_view name);
/// Checks type and range and sets the variable (integers convert to reals; whole reals to integers).
/// Returns an error text, empty on success; nothing changes on an error. Read-only variables are refused.
std::string setSysVar(Drawing& drawing, std::string_view name, const SysVarValue& value);

// Shorthands for code that knows the type; a wrong type or unknown name gives the fallback.
std::int32_t sysVarInt(const Drawing& drawing, std::string_view name, std::int32_t fallback = 0);
double sysVarReal(const Drawing& drawing, std::string_view name, double fallback = 0.0);
std::string sysVarString(const Drawing& drawing, std::string_view name, std::string_view fallback = {});

/// The starting values of the unit and scale variables.
enum class UnitSystem : std::uint8_t { Imperial = 0, Metric = 1 };
void applyStartingValues(Drawing& drawing, UnitSystem units);

}  // namespace kova::engine
