#include "cmd/registered_twice.hpp"
#include "cmd/registry.hpp"

#include <gtest/gtest.h>

#include <set>

#include "cmd/processor.hpp"
#include "engine/model/sysvar.hpp"

namespace kova::cmd {
namespace {

constexpr const char* kNames =
    "3DCONFIG 3DFACE 3DORBIT 3DPOLY ABOUT ACTPLAY ACTRECORD ACTSTOP ADCENTER ADDSELECTED ALIASEDIT ALIGN "
    "ANGBASE ANGDIR ANNOALLVISIBLE ANNOAUTOSCALE ANNORESET APERTURE ARC AREA ARRAY ARRAYEDIT ARRAYPATH "
    "ARRAYPOLAR ARRAYRECT ATTDEF ATTDIA ATTDISP ATTEDIT ATTEXT ATTMODE ATTREQ ATTSYNC AUDIT AUPREC AUTOSNAP "
    "AUTOTRACKING BACTION BACTIONTOOL BASE BATTMAN BCLOSE BCOUNT BEDIT BLIPMODE BLOCK BLOOKUPTABLE BOUNDARY "
    "BPARAMETER BREAK BREAKLINE BURST BVSTATE CAL CAMERA CANNOSCALE CECOLOR CELTSCALE CELTYPE CELWEIGHT "
    "CETRANSPARENCY CHAMFER CHAMFERA CHAMFERB CHANGE CHPROP CHSPACE CIRCLE CLAYER CLEANSCREEN CLOSE CMDECHO "
    "COLOR COMMANDLINE COMMANDS CONVERTPOLY CONVERTPSTYLES COORDS COPY COPYBASE COPYCLIP COPYTOLAYER "
    "CPLOTSTYLE CROSSINGAREACOLOR CURSORSIZE CUSTOMIZE CUTCLIP CVPORT DBLCLKEDIT DBLIST DDEDIT DDEMODES "
    "DDPTYPE DDVPOINT DELAY DELOBJ DESELECT DIMADEC DIMALIGNED DIMALT DIMALTD DIMALTF DIMALTTD DIMALTU "
    "DIMANGULAR DIMARC DIMASZ DIMATFIT DIMAUNIT DIMBASELINE DIMCEN DIMCENTER DIMCLRD DIMCLRE DIMCLRT "
    "DIMCONTINUE DIMDEC DIMDIAMETER DIMDISASSOCIATE DIMDLE DIMDLI DIMEDIT DIMEXE DIMEXO DIMFRAC DIMGAP "
    "DIMINSPECT DIMJOGGED DIMJUST DIMLFAC DIMLIM DIMLINEAR DIMLUNIT DIMORDINATE DIMRADIUS DIMREASSOCIATE "
    "DIMREGEN DIMRND DIMSCALE DIMSE1 DIMSE2 DIMSPACE DIMSTYLE DIMTAD DIMTEDIT DIMTFAC DIMTIH DIMTM DIMTMOVE "
    "DIMTOFL DIMTOH DIMTOL DIMTP DIMTSZ DIMTXT DIMZIN DISPSILH DIST DIVIDE DONUT DRAGMODE DRAWORDER DSETTINGS "
    "DVIEW DWGPROPS DWGUNITS DWGWORKFLOW DXFOUT DYNMODE DYNPICOORDS EATTEDIT EDGEMODE ELEV ELEVATION ELLIPSE "
    "ERASE ETRANSMIT EXOFFSET EXPERT EXPLODE EXPORT EXPORTIMAGE EXTEND EXTRACTDATA FACETRES FIELD FILEDIA "
    "FILLET FILLETRAD FILLMODE FILTER FIND FLATTEN FRAME GATTE GETSEL GPURENDER GRADIENT GRAPHSCR GRID "
    "GRIPBLOCK GRIPCOLOR GRIPCONTOUR GRIPHOT GRIPMULTIFUNCTIONAL GRIPOBJLIMIT GRIPS GRIPSIZE GRIPTIPS GROUP "
    "HATCH HATCHEDIT HATCHPATTERN HATCHTOBACK HELIX HELP HIDEOBJECTS HIGHLIGHT HPANG HPASSOC HPDOUBLE "
    "HPGAPTOL HPINHERIT HPMAXLINES HPORIGINMODE HPQUICKPREVIEW HPSCALE HPSPACE HYPERLINK HYPERLINKOPEN ID "
    "IMAGEADJUST IMAGEATTACH IMAGECLIP IMAGEFRAME IMPORT INDEXCTL INPUTHISTORYMODE INSERT INSUNITS ISAVEBAK "
    "ISOLATEOBJECTS ISOLINES JOIN JUSTIFYTEXT LAYCUR LAYDEL LAYER LAYERP LAYERPALETTE LAYERSTATE LAYFRZ "
    "LAYISO LAYLCK LAYLOCKFADECTL LAYMCH LAYMCUR LAYMRG LAYOFF LAYON LAYOUT LAYOUTREGENCTL LAYTHW LAYTRANS "
    "LAYULK LAYUNISO LAYWALK LEADER LENGTHEN LIMCHECK LIMITS LINE LINETYPE LISPRELOAD LIST LTSCALE LUPREC "
    "LWDISPLAY LWEIGHT MASSPROP MATCHPROP MAXSORT MBUTTONPAN MEASURE MEASUREGEOM MEASUREMENT MENUBAR MIRROR "
    "MIRRTEXT MLEADER MLEADERALIGN MLEADERCOLLECT MLEADEREDIT MLEADERSTYLE MLINE MOCORO MOVE MOVEBAK MPEDIT "
    "MREDO MSLTSCALE MSPACE MTEXT MVIEW NAVBAR NAVSWHEEL NAVVCUBE NCOPY NEW NEWSHOT OBJECTISOLATIONMODE "
    "OBJECTSCALE OFFSET OOPS OPEN OPTIONS ORTHO OSMODE OSOPTIONS OVERKILL PAGESETUP PAN PASTEBLOCK PASTECLIP "
    "PASTEORIG PDFEXPORT PDMODE PDSIZE PEDIT PEDITACCEPT PELLIPSE PICKADD PICKBOX PICKDRAG PICKFIRST "
    "PICKSTYLE PLAN PLINE PLINEGEN PLINETYPE PLINEWID PLOT PLOTSTYLEEDITOR PLOTTERMANAGER POINT POINTSTYLE "
    "POLAR POLARANG POLYGON PREVIEW PREVIEWEFFECT PROPERTIESCLOSE PROXYGRAPHICS PSLTSCALE PSPACE PSTYLEMODE "
    "PUBLISH PURGE PYLOAD PYRELOAD PYSCRIPT QDIM QLEADER QNEW QSELECT QTEXT QUICKPROPERTIES RAY RECOVER "
    "RECTANGLE REDO REDRAW REFCLOSE REFEDIT REGEN REGENALL REGENAUTO REGION REINIT RENAME REVCLOUD REVERSE "
    "RIBBON ROLLOVERTIPS ROTATE SAVE SAVEAS SAVEFILEPATH SAVETIME SCALE SCALELISTEDIT SCALETEXT SCRIPT "
    "SCROLLBAR SDI SELECT SELECTALL SELECTIONAREA SELECTIONAREAOPACITY SELECTIONCYCLING SELECTIONPREVIEW "
    "SELECTLAST SELECTSIMILAR SETBYLAYER SETVAR SHELL SHORTCUTMENU SHOWURLS SNAP SNAPANG SNAPBASE SNAPISOPAIR "
    "SNAPSTYL SOLID SORTENTS SPACETRANS SPELL SPLFRAME SPLINE SPLINEDIT SPLINESEGS STANDARDS STARTUP STATUS "
    "STRETCH STYLE STYLESMANAGER SURFTAB1 SURFTAB2 SVGEXPORT TABLE TABLEDIT TABLESTYLE TCASE TCIRCLE TCOUNT "
    "TEMPOVERRIDES TEXT TEXTALIGN TEXTFILL TEXTFIT TEXTMASK TEXTSCR TEXTSIZE TEXTTOFRONT TEXTUNMASK THEME "
    "THICKNESS TIME TOLERANCE TOOLBAR TOOLPALETTES TOOLTIPS TORIENT TRACEWID TRIM TXT2MTXT UCS UCSICON UNDO "
    "UNGROUP UNISOLATEOBJECTS UNITS UPDATEFIELD VIEW VIEWCUBE VIEWPLAY VIEWRES VISRETAIN VPLAYER VPOINT "
    "VPSCALE VSCURRENT WBLOCK WINDOWAREACOLOR WIPEOUT WORKSPACE XATTACH XBIND XCLIP XDLIST XDWGFADECTL XLINE "
    "XLIST XLOADCTL XPLODE XREF XREFNOTIFY ZOOM ZOOMFACTOR";

constexpr const char* kOneShot =
    "ABOUT ADCENTER CLEANSCREEN CLOSE COMMANDLINE CONVERTPOLY COPYCLIP CUTCLIP DESELECT DWGWORKFLOW DXFOUT "
    "ERASE EXPLODE EXTRACTDATA FLATTEN GRAPHSCR HATCHTOBACK HIDEOBJECTS HYPERLINKOPEN ISOLATEOBJECTS LAYCUR "
    "LAYTHW LAYULK LAYON LAYERPALETTE LAYUNISO LAYERP LISPRELOAD MENUBAR NEW OOPS OPTIONS PSPACE PAGESETUP "
    "PASTEORIG PLAN PLOTSTYLEEDITOR PROPERTIESCLOSE PYLOAD PYRELOAD QNEW QUICKPROPERTIES REDO REGEN RIBBON "
    "SAVE SELECTALL SELECTLAST SETBYLAYER TORIENT TEXTSCR TEXTTOFRONT THEME TOOLBAR TOOLPALETTES TXT2MTXT "
    "UNDO UNGROUP UNISOLATEOBJECTS UPDATEFIELD";

CommandRegistry& registry() {
    CommandRegistry::instance().resetAliases();
    return CommandRegistry::instance();
}

class NamedCommand final : public Command {
public:
    NamedCommand(const char* name, std::vector<std::string> aliases = {})
        : Command(name, "", "Draw", std::move(aliases)) {}
};

TEST(Registry, KnowsEveryNameOfTheCommandTable) {
    const std::vector<std::string> names = splitWords(kNames);
    ASSERT_EQ(names.size(), 490u);
    static const std::set<std::string> categories = {"Draw",     "Modify",  "Edit",     "View",  "Format", "Insert",
                                                     "Annotate", "Inquiry", "Settings", "Tools", "File",   "Help"};
    for (const std::string& name : names) {
        const Command* command = registry().find(name);
        ASSERT_NE(command, nullptr) << name;
        EXPECT_EQ(command->name(), name);
        EXPECT_FALSE(command->title().empty()) << name;
        EXPECT_TRUE(categories.contains(command->category())) << name << ": " << command->category();
    }
}

TEST(Registry, NothingIsRegisteredTwice) { EXPECT_EQ(registeredTwice(), std::vector<std::string>{}); }

TEST(Registry, ExactlyTheListedCommandsAreOneShot) {
    const std::vector<std::string> words = splitWords(kOneShot);
    const std::set<std::string> oneShot(words.begin(), words.end());
    for (Command* command : registry().commands())
        EXPECT_EQ(!command->isInteractive(), oneShot.contains(command->name())) << command->name();
    for (Command* command : registry().commands())
        EXPECT_EQ(command->createTool() != nullptr, command->isInteractive()) << command->name();
}

TEST(Registry, ServesEveryVariableAndSetting) {
    for (const engine::SysVarDef& def : engine::sysVarTable())
        EXPECT_NE(registry().find(def.name), nullptr) << def.name;
    for (const engine::SettingsRow& row : engine::settingsRegistry())
        EXPECT_NE(registry().find(row.name), nullptr) << row.name;
    // What reads a planned name's own dialogue must not be taken by a variable of the same name.
    EXPECT_EQ(registry().find("AREA")->category(), "Inquiry");
    EXPECT_EQ(registry().find("DIMSTYLE")->category(), "Format");
}

TEST(Registry, EveryAliasReachesItsOwnCommand) {
    for (const Command* command : registry().commands())
        for (const std::string& alias : command->aliases()) {
            const Command* found = registry().find(alias);
            ASSERT_NE(found, nullptr) << alias;
            EXPECT_EQ(found->name(), command->name()) << alias;
        }
    const std::pair<const char*, const char*> known[] = {
        {"L", "LINE"},      {"C", "CIRCLE"},      {"A", "ARC"},
        {"PL", "PLINE"},    {"REC", "RECTANGLE"}, {"RECTANG", "RECTANGLE"},
        {"DT", "TEXT"},     {"DTEXT", "TEXT"},    {"MT", "MTEXT"},
        {"T", "MTEXT"},     {"DO", "DONUT"},      {"DOUGHNUT", "DONUT"},
        {"H", "HATCH"},     {"BH", "HATCH"},      {"I", "INSERT"},
        {"B", "BLOCK"},     {"E", "ERASE"},       {"DEL", "ERASE"},
        {"M", "MOVE"},      {"CO", "COPY"},       {"RO", "ROTATE"},
        {"SC", "SCALE"},    {"MI", "MIRROR"},     {"O", "OFFSET"},
        {"TR", "TRIM"},     {"EX", "EXTEND"},     {"F", "FILLET"},
        {"CHA", "CHAMFER"}, {"BR", "BREAK"},      {"X", "EXPLODE"},
        {"S", "STRETCH"},   {"J", "JOIN"},        {"AR", "ARRAY"},
        {"AL", "ALIGN"},    {"AA", "AREA"},       {"LA", "LAYER"},
        {"Z", "ZOOM"},      {"U", "UNDO"},        {"ADC", "ADCENTER"},
        {"DC", "ADCENTER"}, {"-VP", "VPOINT"},    {"VP", "DDVPOINT"}};
    for (const auto& [alias, name] : known) {
        ASSERT_NE(registry().find(alias), nullptr) << alias;
        EXPECT_EQ(registry().find(alias)->name(), name) << alias;
    }
}

TEST(Registry, StripsPrefixesOnlyOnAMiss) {
    for (const char* typed : {"line", "_line", ".LINE", "-Line", "_.-line", "__LINE", "l", "_l", ".-_L"})
        EXPECT_NE(registry().find(typed), nullptr) << typed;
    for (const char* typed : {"", "_", "___", "-", "_.-", " line", "line ", "LINEX", "'line", "_ line"})
        EXPECT_EQ(registry().find(typed), nullptr) << typed;
    EXPECT_FALSE(registry().resolve("_line").commandLine);
    EXPECT_FALSE(registry().resolve(".line").commandLine);
    EXPECT_TRUE(registry().resolve("-layer").commandLine);
    EXPECT_TRUE(registry().resolve("_.-layer").commandLine);
    EXPECT_EQ(registry().resolve("___").command, nullptr);
}

TEST(Registry, AliasesCanBeEditedAndReset) {
    CommandRegistry own;
    ASSERT_TRUE(own.add(std::make_unique<NamedCommand>("FIRST", std::vector<std::string>{"F", "SECOND"})));
    EXPECT_FALSE(own.add(std::make_unique<NamedCommand>("FIRST")));
    ASSERT_TRUE(own.add(std::make_unique<NamedCommand>("SECOND", std::vector<std::string>{"F", "S"})));
    // A name goes before an alias, and the first to claim an alias keeps it.
    EXPECT_EQ(own.find("second")->name(), "SECOND");
    EXPECT_EQ(own.find("f")->name(), "FIRST");
    EXPECT_TRUE(own.setAlias("q", "second"));
    EXPECT_EQ(own.find("Q")->name(), "SECOND");
    EXPECT_FALSE(own.setAlias("FIRST", "SECOND"));
    EXPECT_FALSE(own.setAlias("x", "THIRD"));
    EXPECT_FALSE(own.setAlias("", "FIRST"));
    EXPECT_TRUE(own.removeAlias("s"));
    EXPECT_FALSE(own.removeAlias("s"));
    EXPECT_EQ(own.find("S"), nullptr);
    own.resetAliases();
    EXPECT_EQ(own.find("Q"), nullptr);
    EXPECT_EQ(own.find("S")->name(), "SECOND");
}

}  // namespace
}  // namespace kova::cmd
