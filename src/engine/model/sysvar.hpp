#pragma once

#include <cstdint>
#include <functional>
#include <map>
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
inline constexpr unsigned Nowhere = 0;  ///< lives while the drawing is open
inline constexpr unsigned Native = 1;   ///< in the native file's "systemVariables"
inline constexpr unsigned Header = 2;   ///< in the DXF and DWG header
inline constexpr unsigned Profile = 4;  ///< a setting of the program, never read from a file
inline constexpr unsigned Session = 8;  ///< program-wide, too, but gone when the program ends
}  // namespace saved

/// Which command serves a variable of the same name.
enum class SysVarCommand : std::uint8_t {
    Plain,   ///< the generic command of the variable's type: "Enter new value for NAME <v>:"
    Toggle,  ///< the generic on/off command
    Own      ///< a command of that name with a dialogue of its own, or none but SETVAR
};

/// No limit on that side of a range.
inline constexpr double kSysVarNoLimit = 1e99;

/// One row of the system-variable table: everything that the program knows about a variable.
struct SysVarDef {
    std::string_view name;
    SysVarType type = SysVarType::Integer;
    SysVarValue fallback;  ///< value in a new metric drawing
    double minimum = 0.0;  ///< of numbers; meaningless unless minimum < maximum
    double maximum = 0.0;
    bool readOnly = false;
    unsigned saved = saved::Native;
    SysVarCommand command = SysVarCommand::Plain;
    std::string_view description;
    std::int16_t dxfCode = 0;  ///< group code of the value in a DXF header
    bool degrees = false;      ///< held in radians, asked and shown in degrees at the prompt
    /// A variable that is another view of the drawing (CLAYER, EXTMIN, DIMTXT ...) is read and set through these;
    /// null get: the value stands in the drawing's maps. set returns an error text, empty on success; a row may have
    /// a set alone, which checks and then stores the value in the maps itself.
    SysVarValue (*get)(const Drawing&) = nullptr;
    std::string (*set)(Drawing&, const SysVarValue&) = nullptr;
    bool aboveMinimum = false;  ///< the minimum itself is refused
    bool color = false;         ///< an integer that is a colour index: colour names are accepted when typed
    bool changesLook = false;   ///< may alter how entities look and how far they reach
    /// A rule beyond type and range; null: none.
    bool (*accepts)(const SysVarValue&) = nullptr;
    /// The command's question without the default and the colon; empty: "Enter new value for NAME". One with
    /// "[ON/OFF]" in it shows the default as ON or OFF.
    std::string_view prompt{};

    bool ranged() const { return minimum < maximum; }
    /// One value for the whole program, whatever drawing is open.
    bool programWide() const { return (saved & (saved::Profile | saved::Session)) != 0; }
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

// Texts ------------------------------------------------------------------------------------------------------

/// The variable's value as LIST, SETVAR and prompts show it: integers plain, reals in shortest form,
/// texts in quotes for SETVAR's listing only when `quoted`, points as "x,y" or "x,y,z".
std::string sysVarText(const SysVarValue& value, bool quoted = false);
/// The same as a prompt shows it: degrees for angles, ON and OFF where the question names them.
std::string sysVarPromptText(const SysVarDef& def, const SysVarValue& value);
/// The question of the variable's own command: "Enter new value for PDMODE <0>:".
std::string sysVarPrompt(const Drawing& drawing, const SysVarDef& def);
/// The answer to a value that the variable refuses: "Invalid number. Enter 0-100:" for ranges, else "Invalid value."
/// or "Cannot set NAME to that value.".
std::string sysVarRefusal(const SysVarDef& def);
/// Reads a typed value: a whole number, a real, an angle in degrees, a text ("." is the empty one), "x,y[,z]". On/off
/// variables take ON and OFF, colours their names. Error text, empty on success; range and rules are left to setSysVar.
std::string parseSysVar(const SysVarDef& def, std::string_view text, SysVarValue& value);

// Values -----------------------------------------------------------------------------------------------------

/// Reads any variable: through its row's get, or from the drawing's maps, or its default. Nothing for an unknown name.
std::optional<SysVarValue> getSysVar(const Drawing& drawing, std::string_view name);
SysVarValue getSysVar(const Drawing& drawing, const SysVarDef& def);
/// Checks type and range and sets the variable (integers convert to reals; whole reals to integers; "x,y[,z]" to
/// points). Returns an error text, empty on success; nothing changes on an error. Read-only variables are refused.
std::string setSysVar(Drawing& drawing, std::string_view name, const SysVarValue& value);
/// What file readers call: sets a variable that a drawing keeps, read-only ones too, and passes over those that are
/// the program's. Error text, empty on success.
std::string loadSysVar(Drawing& drawing, std::string_view name, const SysVarValue& value);
/// What commands call to publish a result (AREA, PERIMETER, DISTANCE, LASTANGLE, TDUPDATE ...): as setSysVar, for a
/// read-only variable that stands in the maps.
std::string publishSysVar(Drawing& drawing, std::string_view name, const SysVarValue& value);
/// Everything that setSysVar checks, without setting. Gives the value converted to the variable's type.
std::string checkSysVar(const SysVarDef& def, const SysVarValue& value, SysVarValue& converted);

// Shorthands for code that knows the type; a text that is a number counts as one. A wrong type or unknown name gives
// the fallback.
std::int32_t sysVarInt(const Drawing& drawing, std::string_view name, std::int32_t fallback = 0);
double sysVarReal(const Drawing& drawing, std::string_view name, double fallback = 0.0);
std::string sysVarString(const Drawing& drawing, std::string_view name, std::string_view fallback = {});

// The program's own values -----------------------------------------------------------------------------------

/// A program-wide variable's value; its default when it was never set. Nothing for other variables.
std::optional<SysVarValue> getProfileVariable(std::string_view name);
/// Sets a program-wide variable without a drawing (start-up, settings file). Error text, empty on success.
std::string setProfileVariable(std::string_view name, const SysVarValue& value);
/// The program-wide variables that were set since the program began, by name.
const std::map<std::string, SysVarValue, std::less<>>& profileVariables();
/// Puts all program-wide variables back to their defaults.
void resetProfileVariables();

/// What read-only variables tell of the running session. The session fills these in at start; an empty one gives a
/// harmless value.
struct SysVarEnvironment {
    std::function<std::int32_t()> modified;       ///< DBMOD: 0 when the drawing is as saved
    std::function<std::int32_t()> commandActive;  ///< CMDACTIVE: bits 1 a command, 4 script
    std::function<std::string()> commandNames;    ///< CMDNAMES: "LINE"; empty when idle
    std::function<std::int32_t()> undoControl;    ///< UNDOCTL: bits 1 on, 4 automatic groups, 8 a group is open
    std::function<std::int32_t()> undoMarks;      ///< UNDOMARKS
    std::function<std::string()> lastPrompt;      ///< LASTPROMPT
    std::function<std::int32_t(const Drawing&)> viewport;            ///< CVPORT: number of the current viewport
    std::function<std::string(Drawing&, std::int32_t)> setViewport;  ///< error text, empty on success
};
SysVarEnvironment& sysVarEnvironment();

// Starting values --------------------------------------------------------------------------------------------

/// The starting values of the unit and scale variables.
enum class UnitSystem : std::uint8_t { Imperial = 0, Metric = 1 };
/// Sets them, the limits, the view, the sizes of the "Standard" styles and the layouts' paper.
void applyStartingValues(Drawing& drawing, UnitSystem units);

}  // namespace kova::engine
