#include "engine/model/name.hpp"
#include "engine/model/sysvar.hpp"
#include "engine/sysvars/rows.hpp"
#include "strings/case_fold.hpp"

namespace kova::engine {

namespace {

std::vector<SysVarDef> mergedTable() {
    std::vector<SysVarDef> table;
    for (std::vector<SysVarDef> (*family)() :
         {rows::draftingVariables, rows::objectVariables, rows::dimensionVariables, rows::displayVariables,
          rows::fileVariables, rows::sessionVariables, rows::headerVariables}) {
        std::vector<SysVarDef> part = family();
        table.insert(table.end(), std::make_move_iterator(part.begin()), std::make_move_iterator(part.end()));
    }
    std::sort(table.begin(), table.end(), [](const SysVarDef& a, const SysVarDef& b) { return a.name < b.name; });
    return table;
}

const std::vector<SysVarDef>& table() {
    static const std::vector<SysVarDef> merged = mergedTable();
    return merged;
}

constexpr std::string_view kSettings = "Settings";
constexpr std::int32_t kLarge = 1000000000;

// In the order in which a settings dialog shows them. Lengths have whole-number limits here; HPNAME is a text.
constexpr SettingsRow kRegistry[] = {
    {"AUNITS", "Angular Units Format", kSettings, 0, 4},
    {"LUNITS", "Linear Units Format", kSettings, 1, 5},
    {"PROJMODE", "Trim/Extend Projection", kSettings, 0, 2},
    {"OFFSETGAPTYPE", "Offset Gap Type", kSettings, 0, 2},
    {"DIMASSOC", "Dimension Associativity", kSettings, 0, 2},
    {"FIELDEVAL", "Field Update Settings", kSettings, 0, 31},
    {"MAXACTVP", "Max Active Viewports", kSettings, 2, 64},
    {"TREEDEPTH", "Spatial Index Depth", kSettings, -32768, 32767},
    {"HPISLANDDETECTION", "Hatch Island Detection", kSettings, 0, 2},
    {"GRIDMAJOR", "Major Grid Frequency", kSettings, 1, 100},
    {"PICKAUTO", "Automatic Windowing", kSettings, 0, 7},
    {"TRIMMODE", "Fillet/Chamfer Trim", kSettings, 0, 1},
    {"TEXTEVAL", "Text Evaluation", kSettings, 0, 1},
    {"WHIPARC", "True Circle Display", kSettings, 0, 1},
    {"TRANSPARENCYDISPLAY", "Transparency Display", kSettings, 0, 1},
    {"CIRCLERAD", "Default Circle Radius", kSettings, 0, kLarge},
    {"OFFSETDIST", "Default Offset Distance", kSettings, -kLarge, kLarge},
    {"DONUTID", "Default Donut Inside Dia.", kSettings, 0, kLarge},
    {"DONUTOD", "Default Donut Outside Dia.", kSettings, 0, kLarge},
    {"MLEADERSCALE", "Multileader Scale", kSettings, 0, kLarge},
    {"HPNAME", "Default Hatch Pattern", kSettings, 0, 0},
};

}  // namespace

std::span<const SysVarDef> sysVarTable() { return table(); }

const SysVarDef* findSysVar(std::string_view name) {
    char upper[32];
    if (name.empty() || name.size() > sizeof upper) return nullptr;
    std::transform(name.begin(), name.end(), upper, strings::upperAscii);
    const std::string_view key(upper, name.size());
    const auto it = std::lower_bound(table().begin(), table().end(), key,
                                     [](const SysVarDef& def, std::string_view k) { return def.name < k; });
    return it != table().end() && it->name == key ? &*it : nullptr;
}

std::span<const SettingsRow> settingsRegistry() { return kRegistry; }

}  // namespace kova::engine
