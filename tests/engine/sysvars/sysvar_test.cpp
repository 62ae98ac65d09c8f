#include "engine/model/sysvar.hpp"

#include <gtest/gtest.h>

#include "engine/model/drawing.hpp"
#include "engine/entities/line.hpp"
#include "engine/sysvars/host.hpp"
#include "math/angles.hpp"

namespace kova::engine {
namespace {

class SysVar : public ::testing::Test {
protected:
    void SetUp() override { resetProfileVariables(); }
    void TearDown() override {
        resetProfileVariables();
        sysVarEnvironment() = {};
    }

    std::string set(std::string_view name, const SysVarValue& value) { return setSysVar(drawing, name, value); }
    std::string shown(std::string_view name) {
        const std::optional<SysVarValue> value = getSysVar(drawing, name);
        return value ? sysVarText(*value) : "(none)";
    }
    /// What a variable's own command does with a typed line.
    std::string type(std::string_view name, std::string_view text) {
        const SysVarDef* def = findSysVar(name);
        SysVarValue value;
        if (std::string error = parseSysVar(*def, text, value); !error.empty()) return error;
        return set(name, value);
    }

    Drawing drawing;
};

// The table ----------------------------------------------------------------------------------------------------

TEST_F(SysVar, RowsAreConsistent) {
    std::string_view last;
    for (const SysVarDef& def : sysVarTable()) {
        EXPECT_LT(last, def.name) << "out of order or twice";
        last = def.name;
        EXPECT_EQ(findSysVar(def.name), &def);
        EXPECT_FALSE(def.description.empty()) << def.name;
        EXPECT_EQ(static_cast<std::size_t>(def.type), def.fallback.index()) << def.name;
        SysVarValue checked;
        EXPECT_EQ(checkSysVar(def, def.fallback, checked), "") << def.name;
        EXPECT_EQ(checked, def.fallback) << def.name;
        // A value of its own type comes back, and program-wide values never stand in drawings.
        const SysVarValue value = getSysVar(drawing, def);
        EXPECT_EQ(value.index(), def.fallback.index()) << def.name;
        if (def.programWide()) {
            EXPECT_EQ(def.saved & saved::Native, 0u) << def.name;
            EXPECT_EQ(drawing.integerVariables.count(def.name) + drawing.realVariables.count(def.name) +
                          drawing.stringVariables.count(def.name),
                      0u)
                << def.name;
            EXPECT_EQ(def.get, nullptr) << def.name;
        }
        if (def.command == SysVarCommand::Toggle) {
            EXPECT_TRUE(def.type == SysVarType::Integer && def.minimum == 0 && def.maximum == 1) << def.name;
        }
        if (def.color || def.degrees) {
            EXPECT_EQ(def.type, def.color ? SysVarType::Integer : SysVarType::Real) << def.name;
        }
        if (!def.readOnly && def.get != nullptr) {
            EXPECT_NE(def.set, nullptr) << def.name;
        }
        if ((def.saved & saved::Header) != 0 && def.name != "PELLIPSE" && !def.name.starts_with("TSTACK")) {
            EXPECT_NE(def.dxfCode, 0) << def.name;
        }
    }
}

TEST_F(SysVar, NewDrawingsValuesAreTheTables) {
    // What a variable reads in a new metric drawing is its row's default, but for moments, paths and the machine.
    for (const SysVarDef& def : sysVarTable()) {
        if (def.readOnly && (def.name.starts_with("TD") || def.name.ends_with("DATE") || def.name == "MILLISECS" ||
                             def.name == "DWGPREFIX"))
            continue;
        EXPECT_EQ(sysVarText(getSysVar(drawing, def)), sysVarText(def.fallback)) << def.name;
    }
}

TEST_F(SysVar, DefaultsOfANewDrawing) {
    const std::pair<std::string_view, int> integers[] = {{"ISAVEBAK", 1},
                                                         {"SAVETIME", 10},
                                                         {"ANNOALLVISIBLE", 1},
                                                         {"ANNOAUTOSCALE", 0},
                                                         {"SCROLLBAR", 1},
                                                         {"NAVVCUBEDISPLAY", 3},
                                                         {"NAVBAR", 1},
                                                         {"GRIPS", 1},
                                                         {"HIGHLIGHT", 1},
                                                         {"ATTMODE", 1},
                                                         {"SURFTAB1", 6},
                                                         {"SURFTAB2", 6},
                                                         {"MAXACTVP", 64},
                                                         {"SPLINETYPE", 6},
                                                         {"ISOLINES", 4},
                                                         {"SPLINESEGS", 8},
                                                         {"TEXTQLTY", 50},
                                                         {"VISRETAIN", 1},
                                                         {"PROXYGRAPHICS", 1},
                                                         {"SORTENTS", 127},
                                                         {"FILLMODE", 1},
                                                         {"VIEWRES", 1000},
                                                         {"PICKADD", 2},
                                                         {"AUTOSNAP", 63},
                                                         {"ZOOMFACTOR", 60},
                                                         {"SELECTIONAREA", 1},
                                                         {"SELECTIONAREAOPACITY", 25},
                                                         {"WINDOWAREACOLOR", 150},
                                                         {"CROSSINGAREACOLOR", 100},
                                                         {"IMAGEFRAME", 1},
                                                         {"DYNMODE", 3},
                                                         {"APERTURE", 10},
                                                         {"GRIPSIZE", 5},
                                                         {"GRIPOBJLIMIT", 100},
                                                         {"CURSORSIZE", 5},
                                                         {"GRIDMAJOR", 5},
                                                         {"MBUTTONPAN", 1},
                                                         {"DBLCLKEDIT", 1},
                                                         {"PSLTSCALE", 1},
                                                         {"MSLTSCALE", 1},
                                                         {"LUNITS", 2},
                                                         {"LUPREC", 4},
                                                         {"FILEDIA", 1}};
    for (const auto& [name, value] : integers) {
        EXPECT_EQ(getSysVar(drawing, name), SysVarValue(value)) << name;
        EXPECT_EQ(sysVarInt(drawing, name, -99), value) << name;
    }
    for (const auto& [name, value] : {std::pair<std::string_view, double>{"FACETRES", 0.5},
                                      {"LTSCALE", 1.0},
                                      {"CELTSCALE", 1.0},
                                      {"POLARANG", 90.0},
                                      {"ANGBASE", 0.0}})
        EXPECT_EQ(getSysVar(drawing, name), SysVarValue(value)) << name;
    EXPECT_EQ(shown("CANNOSCALE"), "1:1");
    EXPECT_EQ(sysVarString(drawing, "cannoscale"), "1:1");
}

TEST_F(SysVar, EveryHeaderVariableIsThere) {
    // The variables of a DXF header that are no facts about the file itself.
    constexpr std::string_view names[] = {
        "INSUNITS",   "LUNITS",    "LUPREC",    "AUNITS",    "AUPREC",    "ANGBASE",       "ANGDIR",     "MEASUREMENT",
        "PSTYLEMODE", "EXTMIN",    "EXTMAX",    "LIMMIN",    "LIMMAX",    "LIMCHECK",      "INSBASE",    "CLAYER",
        "CELTYPE",    "CECOLOR",   "CELTSCALE", "ELEVATION", "THICKNESS", "TEXTSTYLE",     "DIMSTYLE",   "DIMTXSTY",
        "DIMSAH",     "DIMBLK",    "DIMBLK1",   "DIMBLK2",   "DIMLDRBLK", "DIMLTYPE",      "DIMLTEX1",   "DIMLTEX2",
        "CELWEIGHT",  "UCSNAME",   "UCSORG",    "UCSXDIR",   "UCSYDIR",   "TILEMODE",      "CTAB",       "LTSCALE",
        "TEXTSIZE",   "PDMODE",    "PDSIZE",    "FILLMODE",  "MIRRTEXT",  "PLINEWID",      "SPLFRAME",   "SPLINESEGS",
        "LWDISPLAY",  "PSLTSCALE", "MSLTSCALE", "FILLETRAD", "CHAMFERA",  "CHAMFERB",      "TRACEWID",   "FACETRES",
        "ATTMODE",    "ISOLINES",  "PLINEGEN",  "PELLIPSE",  "QTEXTMODE", "VISRETAIN",     "SURFTAB1",   "SURFTAB2",
        "SORTENTS",   "INDEXCTL",  "DISPSILH",  "MAXACTVP",  "TREEDEPTH", "PROXYGRAPHICS", "SPLINETYPE", "TEXTQLTY",
        "SKPOLY",     "SKETCHINC", "OSMODE",    "SNAPANG",   "DIMSCALE",  "DIMASZ",        "DIMTXT",     "DIMEXO",
        "DIMEXE",     "DIMGAP",    "DIMDLE",    "DIMTAD",    "DIMDEC",    "DIMTIH",        "DIMTOH",     "DIMLFAC",
        "DIMRND",     "DIMDLI",    "DIMSE1",    "DIMSE2",    "DIMTOFL",   "DIMJUST",       "HPSCALE",    "HPANG"};
    const std::map<std::string_view, int> codes{
        {"CLAYER", 8},   {"CELTYPE", 6},     {"TEXTSTYLE", 7},   {"DIMSTYLE", 2},     {"DIMTXSTY", 7},
        {"CECOLOR", 62}, {"CELWEIGHT", 370}, {"LWDISPLAY", 290}, {"SORTENTS", 280},   {"INDEXCTL", 280},
        {"ANGBASE", 50}, {"CTAB", 1},        {"LIMMIN", 10},     {"PSTYLEMODE", 290}, {"UCSNAME", 2},
        {"DIMBLK", 1},   {"DIMLTYPE", 6},    {"DIMDEC", 70},     {"DIMTXT", 40}};
    for (const std::string_view name : names) {
        const SysVarDef* def = findSysVar(name);
        ASSERT_NE(def, nullptr) << name;
        EXPECT_NE(def->saved & saved::Header, 0u) << name;
        EXPECT_NE(def->dxfCode, 0) << name;
        if (const auto it = codes.find(name); it != codes.end()) {
            EXPECT_EQ(def->dxfCode, it->second) << name;
        }
    }
}

TEST_F(SysVar, EverySettingOfTheCommandLineIsThere) {
    // Names that are commands and set the variable of the same name.
    constexpr std::string_view names[] = {"ANGBASE",
                                          "ANGDIR",
                                          "ANNOALLVISIBLE",
                                          "ANNOAUTOSCALE",
                                          "APERTURE",
                                          "ATTDIA",
                                          "ATTMODE",
                                          "ATTREQ",
                                          "AUPREC",
                                          "AUTOSNAP",
                                          "AUTOTRACKING",
                                          "BLIPMODE",
                                          "CANNOSCALE",
                                          "CECOLOR",
                                          "CELTSCALE",
                                          "CELTYPE",
                                          "CELWEIGHT",
                                          "CETRANSPARENCY",
                                          "CHAMFERA",
                                          "CHAMFERB",
                                          "CLAYER",
                                          "CMDECHO",
                                          "COORDS",
                                          "CPLOTSTYLE",
                                          "CROSSINGAREACOLOR",
                                          "CURSORSIZE",
                                          "CVPORT",
                                          "DBLCLKEDIT",
                                          "DELOBJ",
                                          "DIMADEC",
                                          "DIMALT",
                                          "DIMALTD",
                                          "DIMALTF",
                                          "DIMALTTD",
                                          "DIMALTU",
                                          "DIMASZ",
                                          "DIMATFIT",
                                          "DIMAUNIT",
                                          "DIMCEN",
                                          "DIMCLRD",
                                          "DIMCLRE",
                                          "DIMCLRT",
                                          "DIMDEC",
                                          "DIMDLE",
                                          "DIMDLI",
                                          "DIMEXE",
                                          "DIMEXO",
                                          "DIMFRAC",
                                          "DIMGAP",
                                          "DIMJUST",
                                          "DIMLFAC",
                                          "DIMLIM",
                                          "DIMLUNIT",
                                          "DIMRND",
                                          "DIMSCALE",
                                          "DIMSE1",
                                          "DIMSE2",
                                          "DIMTAD",
                                          "DIMTFAC",
                                          "DIMTIH",
                                          "DIMTM",
                                          "DIMTMOVE",
                                          "DIMTOFL",
                                          "DIMTOH",
                                          "DIMTOL",
                                          "DIMTP",
                                          "DIMTSZ",
                                          "DIMTXT",
                                          "DIMZIN",
                                          "DISPSILH",
                                          "DYNMODE",
                                          "DYNPICOORDS",
                                          "EDGEMODE",
                                          "ELEVATION",
                                          "EXPERT",
                                          "FACETRES",
                                          "FILEDIA",
                                          "FILLETRAD",
                                          "FILLMODE",
                                          "FRAME",
                                          "GPURENDER",
                                          "GRIPBLOCK",
                                          "GRIPCOLOR",
                                          "GRIPCONTOUR",
                                          "GRIPHOT",
                                          "GRIPMULTIFUNCTIONAL",
                                          "GRIPOBJLIMIT",
                                          "GRIPS",
                                          "GRIPSIZE",
                                          "GRIPTIPS",
                                          "HIGHLIGHT",
                                          "HPANG",
                                          "HPASSOC",
                                          "HPDOUBLE",
                                          "HPGAPTOL",
                                          "HPINHERIT",
                                          "HPMAXLINES",
                                          "HPORIGINMODE",
                                          "HPQUICKPREVIEW",
                                          "HPSCALE",
                                          "HPSPACE",
                                          "IMAGEFRAME",
                                          "INDEXCTL",
                                          "INPUTHISTORYMODE",
                                          "INSUNITS",
                                          "ISAVEBAK",
                                          "ISOLINES",
                                          "LAYLOCKFADECTL",
                                          "LAYOUTREGENCTL",
                                          "LIMCHECK",
                                          "LTSCALE",
                                          "LUPREC",
                                          "LWDISPLAY",
                                          "MAXSORT",
                                          "MBUTTONPAN",
                                          "MEASUREMENT",
                                          "MIRRTEXT",
                                          "MOVEBAK",
                                          "MSLTSCALE",
                                          "OBJECTISOLATIONMODE",
                                          "OSMODE",
                                          "OSOPTIONS",
                                          "PDMODE",
                                          "PDSIZE",
                                          "PEDITACCEPT",
                                          "PELLIPSE",
                                          "PICKADD",
                                          "PICKBOX",
                                          "PICKDRAG",
                                          "PICKFIRST",
                                          "PICKSTYLE",
                                          "PLINEGEN",
                                          "PLINETYPE",
                                          "PLINEWID",
                                          "POLARANG",
                                          "PREVIEWEFFECT",
                                          "PROXYGRAPHICS",
                                          "PSLTSCALE",
                                          "PSTYLEMODE",
                                          "QTEXT",
                                          "REGENAUTO",
                                          "ROLLOVERTIPS",
                                          "SAVEFILEPATH",
                                          "SAVETIME",
                                          "SCROLLBAR",
                                          "SDI",
                                          "SELECTIONAREA",
                                          "SELECTIONAREAOPACITY",
                                          "SELECTIONCYCLING",
                                          "SELECTIONPREVIEW",
                                          "SHORTCUTMENU",
                                          "SNAPANG",
                                          "SNAPBASE",
                                          "SNAPISOPAIR",
                                          "SNAPSTYL",
                                          "SORTENTS",
                                          "SPLFRAME",
                                          "SPLINESEGS",
                                          "STARTUP",
                                          "SURFTAB1",
                                          "SURFTAB2",
                                          "TEMPOVERRIDES",
                                          "TEXTFILL",
                                          "TEXTSIZE",
                                          "THICKNESS",
                                          "TOOLTIPS",
                                          "TRACEWID",
                                          "VISRETAIN",
                                          "WINDOWAREACOLOR",
                                          "XDWGFADECTL",
                                          "XLOADCTL",
                                          "XREFNOTIFY",
                                          "ZOOMFACTOR"};
    for (const std::string_view name : names) {
        const SysVarDef* def = findSysVar(name);
        ASSERT_NE(def, nullptr) << name;
        EXPECT_NE(def->command, SysVarCommand::Own) << name << " would have no command";
    }
    for (const char* name : {"AREA", "DIMSTYLE", "DRAGMODE", "VIEWRES", "UCSICON", "VSCURRENT", "NAVBAR", "MENUBAR"})
        EXPECT_EQ(findSysVar(name)->command, SysVarCommand::Own) << name;
}

TEST_F(SysVar, SettingsRegistry) {
    const std::span<const SettingsRow> rows = settingsRegistry();
    constexpr std::string_view names[] = {
        "AUNITS",    "LUNITS",     "PROJMODE",  "OFFSETGAPTYPE",     "DIMASSOC",
        "FIELDEVAL", "MAXACTVP",   "TREEDEPTH", "HPISLANDDETECTION", "GRIDMAJOR",
        "PICKAUTO",  "TRIMMODE",   "TEXTEVAL",  "WHIPARC",           "TRANSPARENCYDISPLAY",
        "CIRCLERAD", "OFFSETDIST", "DONUTID",   "DONUTOD",           "MLEADERSCALE",
        "HPNAME"};
    ASSERT_EQ(rows.size(), std::size(names));
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i].name, names[i]);
        EXPECT_EQ(rows[i].category, "Settings");
        const SysVarDef* def = findSysVar(rows[i].name);
        ASSERT_NE(def, nullptr) << rows[i].name;
        if (def->type != SysVarType::Integer) continue;
        EXPECT_EQ(rows[i].minimum, def->minimum) << rows[i].name;
        EXPECT_EQ(rows[i].maximum, def->maximum) << rows[i].name;
    }
    EXPECT_EQ(rows[0].description, "Angular Units Format");
    EXPECT_EQ(rows[0].maximum, 4);
    EXPECT_EQ(rows[20].description, "Default Hatch Pattern");
}

// Setting ------------------------------------------------------------------------------------------------------

TEST_F(SysVar, NamesAndTypes) {
    EXPECT_EQ(set("pdmode", 34), "");
    EXPECT_EQ(drawing.integerVariables.at("PDMODE"), 34);
    EXPECT_EQ(set("PDMODE", 3.0), "");
    EXPECT_EQ(getSysVar(drawing, "PdMode"), SysVarValue(3));
    EXPECT_EQ(set("PDSIZE", 2), "");
    EXPECT_EQ(getSysVar(drawing, "PDSIZE"), SysVarValue(2.0));
    EXPECT_EQ(set("SNAPBASE", std::string("3, 4")), "");
    EXPECT_EQ(drawing.snapBase, (math::Vector2{3, 4}));

    EXPECT_NE(set("PDMODE", std::string("3")), "");
    EXPECT_NE(set("PDMODE", 2.5), "");
    EXPECT_NE(set("PDMODE", 1e99), "");
    EXPECT_NE(set("PDSIZE", std::nan("")), "");
    EXPECT_NE(set("PDSIZE", HUGE_VAL), "");
    EXPECT_NE(set("CTAB", 1), "");
    EXPECT_NE(set("CLAYER", std::string("0\n1")), "");
    EXPECT_NE(set("HPNAME", std::string(10000, 'x')), "");
    EXPECT_NE(set("SNAPBASE", math::Vector3(1, HUGE_VAL, 0)), "");
    for (const char* text : {"1", "1,2,3,4", "1,", ",", "a,b", "1,nan", ""})
        EXPECT_NE(set("SNAPBASE", std::string(text)), "") << text;
    EXPECT_EQ(getSysVar(drawing, "PDMODE"), SysVarValue(3));
    EXPECT_EQ(set("NOSUCHVAR", 1), "Unknown variable name \"NOSUCHVAR\".");
    EXPECT_EQ(set("", 1), "Unknown variable name \"\".");
    EXPECT_FALSE(getSysVar(drawing, std::string(1000, 'A')));
}

TEST_F(SysVar, RangesAndRules) {
    EXPECT_EQ(set("SELECTIONAREAOPACITY", 101), "Invalid number. Enter 0-100:");
    EXPECT_EQ(set("LAYLOCKFADECTL", -91), "Invalid number. Enter -90 to 90:");
    EXPECT_EQ(set("TEXTSIZE", 0), "Invalid number. Enter a number greater than 0:");
    EXPECT_EQ(set("FILLETRAD", -1.0), "Invalid number. Enter 0 or more:");
    EXPECT_EQ(set("FILLETRAD", 0), "");
    EXPECT_EQ(set("DIMJOGANG", 0.01), "Invalid number. Enter 5-90:");
    for (const int bad : {5, 31, 37, 101, -1}) EXPECT_NE(set("PDMODE", bad), "") << bad;
    EXPECT_EQ(set("SPLINESEGS", 0), "Cannot set SPLINESEGS to that value.");
    EXPECT_EQ(set("CELWEIGHT", 26), "Cannot set CELWEIGHT to that value.");
    EXPECT_EQ(set("CELWEIGHT", -3), "");
    EXPECT_EQ(set("DIMLFAC", 0), "Cannot set DIMLFAC to that value.");
    EXPECT_EQ(set("DIMLWD", 26), "Cannot set DIMLWD to that value.");
    EXPECT_EQ(set("DIMLWD", 25), "");
}

TEST_F(SysVar, ReadOnly) {
    for (const char* name : {"EXTMIN", "DATE", "ACADVER", "VIEWSIZE", "UCSORG", "PSTYLEMODE", "AREA", "CMDNAMES"}) {
        const std::string before = shown(name);
        EXPECT_EQ(setSysVar(drawing, name, findSysVar(name)->fallback), std::string(name) + " is read only.");
        if (std::string_view(name) != "DATE") {
            EXPECT_EQ(shown(name), before);
        }
    }
    EXPECT_EQ(publishSysVar(drawing, "AREA", 12.5), "");
    EXPECT_EQ(getSysVar(drawing, "AREA"), SysVarValue(12.5));
    EXPECT_NE(publishSysVar(drawing, "EXTMIN", math::Vector3(1, 1, 0)), "");
    EXPECT_EQ(loadSysVar(drawing, "PSTYLEMODE", 0), "");
    EXPECT_EQ(shown("PSTYLEMODE"), "0");
}

TEST_F(SysVar, TypedValues) {
    EXPECT_EQ(type("FILLMODE", "off"), "");
    EXPECT_EQ(shown("FILLMODE"), "0");
    EXPECT_EQ(type("FILLMODE", " 1 "), "");
    EXPECT_EQ(type("FILLMODE", "yes"), "Invalid number. Enter 0-1:");
    EXPECT_EQ(type("PDMODE", "ON"), "Invalid number. Enter 0-100:");
    EXPECT_EQ(type("PDMODE", "3/4"), "Invalid number. Enter 0-100:");
    EXPECT_EQ(type("GRIPCOLOR", "red"), "");
    EXPECT_EQ(shown("GRIPCOLOR"), "1");
    EXPECT_EQ(type("GRIPCOLOR", "ByBlock"), "Invalid number. Enter 1-255:");
    EXPECT_EQ(type("DIMCLRD", "BYLAYER"), "");
    EXPECT_EQ(shown("DIMCLRD"), "256");
    EXPECT_EQ(type("ANGBASE", "30"), "");
    EXPECT_DOUBLE_EQ(sysVarReal(drawing, "ANGBASE"), math::kPi / 6);
    EXPECT_EQ(type("ANGBASE", "1e999"), "Invalid value.");
    EXPECT_EQ(type("SNAPUNIT", "2,3"), "");
    EXPECT_EQ(shown("SNAPUNIT"), "2,3");
    EXPECT_EQ(type("MOVEBAK", "/tmp/bak"), "");
    EXPECT_EQ(type("MOVEBAK", "."), "");
    EXPECT_EQ(shown("MOVEBAK"), "");
}

TEST_F(SysVar, Prompts) {
    const auto prompt = [&](const char* name) { return sysVarPrompt(drawing, *findSysVar(name)); };
    EXPECT_EQ(prompt("FILEDIA"), "Enter new value for FILEDIA <1>:");
    EXPECT_EQ(prompt("PDSIZE"), "Enter new value for PDSIZE <0>:");
    set("ANGBASE", math::toRadians(30));
    EXPECT_EQ(prompt("ANGBASE"), "Enter new value for ANGBASE <30>:");
    EXPECT_EQ(prompt("SNAPBASE"), "Enter new value for SNAPBASE <0,0>:");
    EXPECT_EQ(prompt("BLIPMODE"), "Enter mode [ON/OFF] <OFF>:");
    EXPECT_EQ(prompt("LTSCALE"), "Enter new linetype scale factor <1>:");
    EXPECT_EQ(prompt("APERTURE"), "Object snap target height (1-50 pixels) <10>:");
    EXPECT_EQ(prompt("MOVEBAK"), "Enter new value for MOVEBAK, or . for none <.>:");
    EXPECT_EQ(sysVarText(SysVarValue(-0.0)), "0");
    EXPECT_EQ(sysVarText(SysVarValue(std::string("a b")), true), "\"a b\"");
    EXPECT_EQ(sysVarText(SysVarValue(math::Vector3(1, 2.5, 0))), "1,2.5");
    EXPECT_EQ(sysVarText(SysVarValue(math::Vector3(1, 2, -3))), "1,2,-3");
}

TEST_F(SysVar, ProgramWideValuesAreNoDrawings) {
    EXPECT_EQ(set("FILEDIA", 0), "");
    Drawing other;
    EXPECT_EQ(sysVarInt(other, "FILEDIA", 9), 0);
    EXPECT_EQ(profileVariables().count("FILEDIA"), 1u);
    // A file does not change them, and keeps what belongs to a drawing.
    EXPECT_EQ(loadSysVar(other, "FILEDIA", 1), "");
    EXPECT_EQ(sysVarInt(drawing, "FILEDIA", 9), 0);
    EXPECT_EQ(loadSysVar(other, "PDMODE", 3), "");
    EXPECT_EQ(sysVarInt(drawing, "PDMODE", 9), 0);
    EXPECT_NE(setProfileVariable("PDMODE", 3), "");
    EXPECT_EQ(setProfileVariable("pickbox", 7), "");
    EXPECT_EQ(getProfileVariable("PICKBOX"), SysVarValue(7));
    EXPECT_NE(setProfileVariable("PICKBOX", 51), "");
    EXPECT_FALSE(getProfileVariable("PDMODE"));
    const std::string temporary = shown("SAVEFILEPATH");
    EXPECT_EQ(type("SAVEFILEPATH", "/tmp/x"), "");
    EXPECT_EQ(type("SAVEFILEPATH", "."), "");
    EXPECT_EQ(shown("SAVEFILEPATH"), temporary);
}

TEST_F(SysVar, PairsKeepInStep) {
    EXPECT_EQ(set("AUTOTRACKING", 0), "");
    EXPECT_EQ(shown("AUTOSNAP"), "47");
    EXPECT_EQ(set("AUTOSNAP", 16), "");
    EXPECT_EQ(shown("AUTOTRACKING"), "1");
    EXPECT_EQ(set("QTEXT", 1), "");
    EXPECT_EQ(shown("QTEXTMODE"), "1");
    EXPECT_EQ(set("DIMTOL", 1), "");
    EXPECT_EQ(set("DIMLIM", 1), "");
    EXPECT_EQ(shown("DIMTOL"), "0");
}

// Views of the drawing -----------------------------------------------------------------------------------------

TEST_F(SysVar, CurrentProperties) {
    Layer walls;
    walls.name = "Walls";
    drawing.layers.add(walls);
    EXPECT_EQ(set("CLAYER", std::string("WALLS")), "");
    EXPECT_TRUE(drawing.currentLayer.identical(Name("Walls")));
    EXPECT_EQ(set("CLAYER", std::string("Doors")), "Unknown layer \"Doors\".");
    drawing.layers.find("0")->frozen = true;
    EXPECT_NE(set("CLAYER", std::string("0")), "");
    EXPECT_EQ(shown("CLAYER"), "Walls");

    EXPECT_EQ(set("CECOLOR", std::string("bylayer")), "");
    EXPECT_EQ(set("CECOLOR", std::string("1")), "");
    EXPECT_EQ(drawing.currentColor, Color::index(1));
    EXPECT_NE(set("CECOLOR", std::string("1000")), "");
    EXPECT_EQ(set("CELTYPE", std::string("dashed")), "");
    EXPECT_EQ(shown("CELTYPE"), "Dashed");
    EXPECT_NE(drawing.linetypes.find("Dashed"), nullptr);
    EXPECT_EQ(set("CELTYPE", std::string("nonsense")), "Unknown linetype \"nonsense\".");
    EXPECT_EQ(set("CETRANSPARENCY", std::string("bylayer")), "");
    EXPECT_EQ(sysVarInt(drawing, "CETRANSPARENCY", 0), 0);
    EXPECT_EQ(set("CETRANSPARENCY", std::string("090")), "");
    EXPECT_EQ(sysVarInt(drawing, "CETRANSPARENCY", 0), 90);
    EXPECT_NE(set("CETRANSPARENCY", std::string("91")), "");
    EXPECT_EQ(set("TEXTSTYLE", std::string("Fancy")), "Unknown text style \"Fancy\".");
    EXPECT_EQ(set("CMLEADERSTYLE", std::string("STANDARD")), "");
    EXPECT_EQ(set("CTABLESTYLE", std::string("x")), "Unknown table style \"x\".");
    EXPECT_EQ(set("CPLOTSTYLE", std::string("Normal")), "Cannot set CPLOTSTYLE to that value.");
    EXPECT_EQ(set("CANNOSCALE", std::string("1:50")), "");
    EXPECT_DOUBLE_EQ(sysVarReal(drawing, "CANNOSCALEVALUE"), 0.02);
    EXPECT_EQ(set("CANNOSCALE", std::string("1:51")), "Unknown annotation scale \"1:51\".");
    // A file may name a scale before its list of scales is read.
    EXPECT_EQ(loadSysVar(drawing, "CANNOSCALE", std::string("1:51")), "");
    EXPECT_EQ(shown("CANNOSCALE"), "1:51");
    EXPECT_EQ(set("HPNAME", std::string("ansi37")), "");
    EXPECT_EQ(shown("HPNAME"), "ANSI37");
    EXPECT_NE(set("HPNAME", std::string("ANSI99")), "");
}

TEST_F(SysVar, TabsAndLayouts) {
    EXPECT_EQ(shown("CTAB"), "Model");
    EXPECT_EQ(set("CTAB", std::string("layout2")), "");
    EXPECT_FALSE(drawing.tileMode);
    EXPECT_EQ(shown("CTAB"), "Layout2");
    EXPECT_EQ(shown("TILEMODE"), "0");
    EXPECT_EQ(shown("CVPORT"), "1");
    EXPECT_EQ(set("TILEMODE", 1), "");
    EXPECT_EQ(shown("CTAB"), "Model");
    EXPECT_EQ(set("CTAB", std::string("Nowhere")), "Layout \"Nowhere\" not found.");
    EXPECT_EQ(set("CVPORT", 5), "Cannot set CVPORT to that value.");
    EXPECT_EQ(set("CVPORT", 2), "");
    drawing.activeLayoutName = "gone";
    EXPECT_EQ(set("TILEMODE", 0), "");
    EXPECT_EQ(shown("CTAB"), "Layout1");
    drawing.takeLayout("Layout1");
    drawing.takeLayout("Layout2");
    EXPECT_EQ(set("TILEMODE", 1), "");
    EXPECT_EQ(set("TILEMODE", 0), "The drawing has no layout.");
}

TEST_F(SysVar, ExtentsNamesAndEnvironment) {
    EXPECT_EQ(shown("EXTMIN"), "1e+20,1e+20,1e+20");
    EXPECT_EQ(shown("EXTMAX"), "-1e+20,-1e+20,-1e+20");
    auto line = std::make_unique<LineEntity>();
    line->start = {1, 2};
    line->end = {5, -3};
    drawing.modelSpace().append(std::move(line));
    EXPECT_EQ(shown("EXTMIN"), "1,-3");
    EXPECT_EQ(shown("EXTMAX"), "5,2");

    EXPECT_EQ(shown("DWGTITLED"), "0");
    drawing.fileName = "/home/ann/plans/ground floor.kvcad";
    EXPECT_EQ(shown("DWGNAME"), "ground floor.kvcad");
    EXPECT_EQ(shown("DWGPREFIX"), "/home/ann/plans/");
    EXPECT_EQ(shown("DWGTITLED"), "1");

    EXPECT_EQ(shown("CMDACTIVE"), "0");
    sysVarEnvironment().commandActive = [] { return 1; };
    sysVarEnvironment().commandNames = [] { return std::string("LINE"); };
    sysVarEnvironment().viewport = [](const Drawing&) { return 3; };
    EXPECT_EQ(shown("CMDACTIVE"), "1");
    EXPECT_EQ(shown("CMDNAMES"), "LINE");
    EXPECT_EQ(shown("CVPORT"), "3");

    drawing.ucs.origin = {1, 0};
    EXPECT_EQ(shown("WORLDUCS"), "0");
    EXPECT_EQ(shown("UCSORG"), "1,0");
    drawing.currentView.upHint = {1, 1, 0};
    EXPECT_DOUBLE_EQ(sysVarReal(drawing, "VIEWTWIST"), math::kPi / 4);
}

TEST_F(SysVar, Times) {
    const double date = sysVarReal(drawing, "DATE");
    EXPECT_GT(date, 2460000.0);  // 2023
    EXPECT_LT(date, 2500000.0);
    const double calendar = sysVarReal(drawing, "CDATE");
    EXPECT_GT(calendar, 20230101.0);
    EXPECT_LT(std::fmod(calendar, 1.0), 0.24);
    // The day changes at midnight: both tell the same hour.
    EXPECT_NEAR(std::fmod(date, 1.0) * 24.0, std::floor(std::fmod(calendar, 1.0) * 100.0 + 1e-6) + 0.5, 0.52);
    EXPECT_NEAR(sysVarReal(drawing, "TDCREATE"), date, 0.01);
    EXPECT_NEAR(sysVarReal(drawing, "TDINDWG"), 0.0, 0.01);
    EXPECT_EQ(loadSysVar(drawing, "TDINDWG", 12.5), "");
    EXPECT_NEAR(sysVarReal(drawing, "TDINDWG"), 12.5, 0.01);
    // Saving is an update, and what has been counted up to then is what a file holds.
    publishSysVar(drawing, "TDUPDATE", 2451545.0);
    publishSysVar(drawing, "TDOPENED", sysVarReal(drawing, "DATE") - 2.0);
    drawing.realVariables["TDUSRTIMER"] = 1.0;
    noteSaveTime(drawing);
    EXPECT_NEAR(sysVarReal(drawing, "TDUPDATE"), date, 0.01);
    EXPECT_NEAR(sysVarReal(drawing, "TDUUPDATE"), date, 0.6);
    EXPECT_NEAR(sysVarReal(drawing, "TDEDITED"), 14.5, 0.01);
    EXPECT_NEAR(sysVarReal(drawing, "TDINDWG"), 14.5, 0.01);
    EXPECT_NEAR(sysVarReal(drawing, "TDUSRTIMER"), 3.0, 0.01);
    // Starting values given a second time leave the time of making.
    publishSysVar(drawing, "TDCREATE", 2451545.0);
    applyStartingValues(drawing, UnitSystem::Imperial);
    EXPECT_EQ(sysVarReal(drawing, "TDCREATE"), 2451545.0);
}

// Dimension variables --------------------------------------------------------------------------------------------

TEST_F(SysVar, DimensionVariablesAreOverrides) {
    EXPECT_EQ(set("DIMTXT", 5), "");
    EXPECT_EQ(drawing.dimStyleOverrides, (std::map<std::string, double>{{"DIMTXT", 5.0}}));
    EXPECT_DOUBLE_EQ(drawing.dimStyles.find("Standard")->textHeight, 2.5);
    EXPECT_DOUBLE_EQ(drawing.effectiveDimStyle().textHeight, 5.0);
    EXPECT_EQ(shown("DIMTXT"), "5");
    EXPECT_EQ(set("DIMTXT", 2.5), "");
    EXPECT_TRUE(drawing.dimStyleOverrides.empty());
    EXPECT_NE(set("DIMTXT", 0), "");

    EXPECT_EQ(set("DIMZIN", 5), "");
    EXPECT_TRUE(drawing.effectiveDimStyle().suppressLeadingZeros);
    EXPECT_FALSE(drawing.effectiveDimStyle().suppressTrailingZeros);
    EXPECT_EQ(shown("DIMZIN"), "5");
    EXPECT_EQ(set("DIMSE1", 1), "");
    EXPECT_TRUE(drawing.effectiveDimStyle().suppressExtLine1);
    EXPECT_EQ(type("DIMCLRT", "green"), "");
    EXPECT_EQ(drawing.effectiveDimStyle().textColor, Color::index(3));
    EXPECT_EQ(type("DIMJOGANG", "60"), "");
    EXPECT_NEAR(drawing.effectiveDimStyle().jogAngle, math::kPi / 3, 1e-15);
    EXPECT_EQ(set("DIMPOST", std::string("<> mm")), "");
    EXPECT_EQ(drawing.effectiveDimStyle().postfix, "<> mm");
    EXPECT_EQ(drawing.dimStyleNameOverrides.at("DIMPOST"), "<> mm");

    // Restoring a style ends the overrides; its own values show through.
    DimStyle wide;
    wide.name = "Wide";
    wide.textGap = 4.0;
    drawing.dimStyles.add(wide);
    EXPECT_EQ(set("DIMSTYLE", std::string("wide")), "");
    EXPECT_TRUE(drawing.dimStyleOverrides.empty());
    EXPECT_TRUE(drawing.dimStyleNameOverrides.empty());
    EXPECT_EQ(shown("DIMGAP"), "4");
    EXPECT_EQ(shown("DIMTXT"), "2.5");
    EXPECT_EQ(set("DIMSTYLE", std::string("none")), "Unknown dimension style \"none\".");
}

TEST_F(SysVar, DimensionNames) {
    EXPECT_EQ(set("DIMBLK", std::string("dot")), "");
    EXPECT_EQ(drawing.effectiveDimStyle().arrowBlock, "_DOT");
    EXPECT_EQ(type("DIMBLK", "."), "");
    EXPECT_TRUE(drawing.dimStyleNameOverrides.empty());
    EXPECT_EQ(set("DIMBLK1", std::string("MyArrow")), "Block \"MyArrow\" not found.");
    drawing.addBlock("MyArrow");
    EXPECT_EQ(set("DIMBLK1", std::string("myarrow")), "");
    EXPECT_EQ(shown("DIMBLK1"), "MyArrow");
    EXPECT_EQ(set("DIMLTYPE", std::string("center")), "");
    EXPECT_EQ(shown("DIMLTYPE"), "Center");
    EXPECT_EQ(set("DIMLTEX1", std::string("nonsense")), "Unknown linetype \"nonsense\".");
    EXPECT_EQ(set("DIMLTYPE", std::string("BYBLOCK")), "");
    EXPECT_EQ(drawing.dimStyleNameOverrides.count("DIMLTYPE"), 0u);
    EXPECT_EQ(set("DIMTXSTY", std::string("Fancy")), "Unknown text style \"Fancy\".");

    EXPECT_EQ(shown("DIMDSEP"), ".");
    EXPECT_EQ(type("DIMDSEP", ","), "");
    EXPECT_EQ(drawing.effectiveDimStyle().decimalSeparator, ',');
    EXPECT_EQ(type("DIMDSEP", "\xC2\xB7"), "");
    EXPECT_EQ(drawing.effectiveDimStyle().decimalSeparator, 0xB7);
    EXPECT_EQ(shown("DIMDSEP"), "\xC2\xB7");
    EXPECT_NE(type("DIMDSEP", ",,"), "");
    EXPECT_EQ(type("DIMDSEP", "."), "");
    EXPECT_EQ(drawing.dimStyleOverrides.count("DIMDSEP"), 0u);
}

TEST_F(SysVar, DamagedOverridesDoNoHarm) {
    drawing.dimStyleOverrides = {{"DIMDEC", 1e300}, {"DIMTXT", -HUGE_VAL}, {"XYZ", 1.0}, {"DIMBLK", 2.0}};
    drawing.dimStyleNameOverrides = {{"DIMTXT", "abc"}};
    const DimStyle style = drawing.effectiveDimStyle();
    EXPECT_EQ(style.decimalPlaces, 2);
    EXPECT_DOUBLE_EQ(style.textHeight, 2.5);
    EXPECT_EQ(shown("DIMBLK"), "");
    EXPECT_EQ(shown("DIMDEC"), "2");
    EXPECT_EQ(shown("DIMTXT"), "2.5");
}

// Starting values --------------------------------------------------------------------------------------------------

TEST_F(SysVar, StartingValues) {
    const std::tuple<const char*, const char*, const char*> values[] = {{"INSUNITS", "1", "4"},
                                                                        {"MEASUREMENT", "0", "1"},
                                                                        {"LTSCALE", "1", "1"},
                                                                        {"DIMSCALE", "1", "1"},
                                                                        {"DIMTXT", "0.18", "2.5"},
                                                                        {"DIMASZ", "0.18", "2.5"},
                                                                        {"DIMZIN", "0", "8"},
                                                                        {"DIMEXE", "0.18", "1.25"},
                                                                        {"DIMEXO", "0.0625", "0.625"},
                                                                        {"DIMGAP", "0.09", "0.625"},
                                                                        {"DIMDLI", "0.38", "3.75"},
                                                                        {"DIMCEN", "0.09", "2.5"},
                                                                        {"DIMDEC", "4", "2"},
                                                                        {"DIMTAD", "0", "1"},
                                                                        {"DIMTIH", "1", "0"},
                                                                        {"DIMTOH", "1", "0"},
                                                                        {"DIMTOFL", "0", "1"},
                                                                        {"DIMALTF", "25.4", "0.03937007874"},
                                                                        {"DIMDSEP", ".", "."},
                                                                        {"TEXTSIZE", "0.2", "2.5"},
                                                                        {"LIMMAX", "12,9", "420,297"},
                                                                        {"SNAPUNIT", "0.5,0.5", "10,10"},
                                                                        {"GRIDUNIT", "0.5,0.5", "10,10"},
                                                                        {"HPSCALE", "1", "1"},
                                                                        {"VIEWCTR", "6,4.5", "210,148.5"}};
    set("DIMTXT", 7);
    for (const bool metric : {false, true}) {
        applyStartingValues(drawing, metric ? UnitSystem::Metric : UnitSystem::Imperial);
        EXPECT_TRUE(drawing.dimStyleOverrides.empty());
        for (const auto& [name, imperial, millimetres] : values)
            EXPECT_EQ(shown(name), metric ? millimetres : imperial) << name;
        EXPECT_EQ(drawing.isMetric(), metric);
        EXPECT_EQ(drawing.layouts()[0]->pageSetup.paperSizeName, metric ? "ISO A3" : "Letter");
        EXPECT_EQ(drawing.mleaderStyles.find("Standard")->textHeight, metric ? 4.0 : 0.18);
        EXPECT_EQ(drawing.tableStyles.find("Standard")->textHeight, metric ? 4.5 : 0.18);
    }
}

}  // namespace
}  // namespace kova::engine
