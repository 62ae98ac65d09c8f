#include "cmd/commands/planned.hpp"

#include <algorithm>

#include "cmd/processor.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

/// A command that has its name, but nothing behind it yet. A row counts only while no real command of that name
/// registers itself.
struct PlannedRow {
    std::string_view name;
    const char* title;
    const char* category;
    bool oneShot;
    const char* aliases = "";
};

/// In the order of their names.
constexpr PlannedRow kPlanned[] = {
    {"3DCONFIG", "3D Configuration", "View", false, "GRAPHICSCONFIG"},
    {"3DORBIT", "3D Orbit", "View", false, "3DO ORBIT"},
    {"ABOUT", "About", "Help", true},
    {"ACTPLAY", "Play Action Macro", "Tools", false},
    {"ACTRECORD", "Record Action Macro", "Tools", false, "ARR"},
    {"ACTSTOP", "Stop Recording", "Tools", false, "ARS"},
    {"ADCENTER", "Design Center", "Insert", true, "ADC DC DCENTER"},
    {"ANNORESET", "Reset Annotation Positions", "Annotate", false},
    {"ARRAYEDIT", "Edit Array", "Modify", false},
    {"AUDIT", "Audit", "File", false},
    {"BACTION", "Block Action", "Insert", false, "AC"},
    {"BACTIONTOOL", "Block Action Tool", "Insert", false},
    {"BATTMAN", "Block Attribute Manager", "Insert", false},
    {"BCLOSE", "Close Block Editor", "Insert", false, "BC"},
    {"BEDIT", "Block Editor", "Insert", false, "BE"},
    {"BLOOKUPTABLE", "Block Lookup Table", "Insert", false},
    {"BPARAMETER", "Block Parameter", "Insert", false, "PARAM"},
    {"BREAKLINE", "Break Line", "Draw", false},
    {"BVSTATE", "Block Visibility States", "Insert", false, "BVS"},
    {"CAL", "Calculator", "Tools", false},
    {"CAMERA", "Camera", "View", false, "CAM"},
    {"CHSPACE", "Change Space", "Modify", false},
    {"CLEANSCREEN", "Clean Screen", "View", true, "CLEANSCREENON CLEANSCREENOFF"},
    {"COMMANDLINE", "Command Line", "View", true, "CLI"},
    {"CONVERTPOLY", "Convert Polylines", "Modify", true},
    {"CONVERTPSTYLES", "Convert Plot Styles", "Format", false},
    {"COPYTOLAYER", "Copy to Layer", "Format", false},
    {"CUSTOMIZE", "Customize", "Tools", false, "CUI TOOLPALETTESCUSTOMIZE"},
    {"DDEMODES", "Object Creation Modes", "Format", false},
    {"DDPTYPE", "Point Type", "Format", false, "PTYPE"},
    {"DDVPOINT", "Viewpoint Presets", "View", false, "VP"},
    {"DSETTINGS", "Drafting Settings", "Tools", false, "DS SE DDRMODES"},
    {"DVIEW", "Dynamic View", "View", false, "DV"},
    {"DWGPROPS", "Drawing Properties", "File", false},
    {"DWGUNITS", "Drawing Units", "Format", false},
    {"DWGWORKFLOW", "DWG Workflow", "File", true},
    {"ELEV", "Elevation and Thickness", "Settings", false},
    {"ETRANSMIT", "Package Drawing", "File", false, "ZIP"},
    {"EXOFFSET", "Extended Offset", "Modify", false},
    {"EXPORTIMAGE", "Export Image", "File", false, "PNGOUT JPGOUT BMPOUT"},
    {"FIELD", "Field", "Insert", false},
    {"FILTER", "Object Filter", "Edit", false, "FI"},
    {"FIND", "Find and Replace", "Edit", false},
    {"FLATTEN", "Flatten", "Modify", true},
    {"GETSEL", "Select by Layer and Type", "Edit", false},
    {"GRID", "Grid", "Settings", false},
    {"HATCHEDIT", "Edit Hatch", "Modify", false, "HE"},
    {"HATCHPATTERN", "Hatch Pattern", "Draw", false},
    {"HELP", "Help", "Help", false, "?"},
    {"HIDEOBJECTS", "Hide Objects", "View", true},
    {"HYPERLINK", "Hyperlink", "Insert", false},
    {"HYPERLINKOPEN", "Show Hyperlink", "Insert", true},
    {"IMAGEADJUST", "Adjust Image", "Insert", false, "IAD"},
    {"IMAGEATTACH", "Attach Image", "Insert", false, "IAT IMAGE IM"},
    {"IMAGECLIP", "Clip Image", "Insert", false, "ICL"},
    {"ISOLATEOBJECTS", "Isolate Objects", "View", true, "ISOLATE"},
    {"JUSTIFYTEXT", "Justify Text", "Modify", false},
    {"LAYCUR", "Objects to Current Layer", "Format", true},
    {"LAYDEL", "Delete Layer", "Format", false},
    {"LAYERP", "Previous Layer States", "Format", true},
    {"LAYERPALETTE", "Layer Palette", "Format", true},
    {"LAYERSTATE", "Layer States", "Format", false, "LAS LMAN"},
    {"LAYFRZ", "Freeze Object's Layer", "Format", false},
    {"LAYISO", "Isolate Layers", "Format", false},
    {"LAYLCK", "Lock Object's Layer", "Format", false},
    {"LAYMCH", "Match Layer", "Format", false},
    {"LAYMCUR", "Make Object's Layer Current", "Format", false, "AI_MOLC"},
    {"LAYMRG", "Merge Layers", "Format", false},
    {"LAYOFF", "Turn Object's Layer Off", "Format", false},
    {"LAYON", "Turn All Layers On", "Format", true},
    {"LAYTHW", "Thaw All Layers", "Format", true},
    {"LAYTRANS", "Translate Layers", "Format", false},
    {"LAYULK", "Unlock Object's Layer", "Format", true},
    {"LAYUNISO", "Unisolate Layers", "Format", true},
    {"LAYWALK", "Walk through Layers", "Format", false},
    {"MASSPROP", "Mass Properties", "Inquiry", false},
    {"MENUBAR", "Menu Bar", "View", true},
    {"MLEADERALIGN", "Align Multileaders", "Annotate", false, "MLA"},
    {"MLEADERCOLLECT", "Collect Multileaders", "Annotate", false, "MLC"},
    {"MOCORO", "Move Copy Rotate", "Modify", false},
    {"MPEDIT", "Edit Polylines", "Modify", false},
    {"NAVSWHEEL", "Steering Wheel", "View", false, "WHEEL"},
    {"NAVVCUBE", "View Cube", "View", false, "CUBE"},
    {"NCOPY", "Copy Nested Objects", "Modify", false},
    {"NEWSHOT", "New Shot", "View", false},
    {"OBJECTSCALE", "Object Scales", "Annotate", false},
    {"OPTIONS", "Options", "Tools", true, "OP PREFERENCES"},
    {"PAGESETUP", "Page Setup", "File", true},
    {"PLAN", "Plan View", "View", true},
    {"PLOTSTYLEEDITOR", "Plot Style Editor", "File", true},
    {"PLOTTERMANAGER", "Plotter Manager", "File", false},
    {"POINTSTYLE", "Point Style", "Format", false},
    {"POLAR", "Polar Tracking", "Settings", false},
    {"PREVIEW", "Plot Preview", "File", false, "PRE"},
    {"PROPERTIESCLOSE", "Close Properties", "View", true, "PRCLOSE"},
    {"QUICKPROPERTIES", "Quick Properties", "View", true, "QP"},
    {"RECOVER", "Recover", "File", false},
    {"REFCLOSE", "Close Reference Edit", "Insert", false},
    {"REFEDIT", "Edit Reference", "Insert", false},
    {"RIBBON", "Ribbon", "View", true, "DASHBOARD"},
    {"SCALELISTEDIT", "Edit Scale List", "Format", false},
    {"SCALETEXT", "Scale Text", "Modify", false},
    {"SETBYLAYER", "Set to ByLayer", "Modify", true},
    {"SHELL", "System Shell", "Tools", false, "SH"},
    {"SHOWURLS", "Show Hyperlinks", "Inquiry", false},
    {"SNAP", "Snap", "Settings", false, "SN"},
    {"SPACETRANS", "Translate between Spaces", "Inquiry", false},
    {"SPELL", "Check Spelling", "Tools", false, "SP"},
    {"SPLINEDIT", "Edit Spline", "Modify", false, "SPE"},
    {"STANDARDS", "Standards", "Tools", false, "STA"},
    {"STYLESMANAGER", "Plot Style Manager", "File", false},
    {"TABLEDIT", "Edit Table Cell", "Modify", false},
    {"TCASE", "Change Text Case", "Modify", false},
    {"TCIRCLE", "Enclose Text", "Modify", false},
    {"TCOUNT", "Number Texts", "Modify", false},
    {"TEXTALIGN", "Align Text", "Modify", false, "TA"},
    {"TEXTFIT", "Fit Text", "Modify", false},
    {"TEXTMASK", "Mask Text", "Modify", false},
    {"TEXTUNMASK", "Unmask Text", "Modify", false},
    {"THEME", "Theme", "View", true},
    {"TOOLBAR", "Toolbar", "View", true, "TO"},
    {"TOOLPALETTES", "Tool Palettes", "Tools", true, "TP"},
    {"TORIENT", "Orient Text", "Modify", true},
    {"TXT2MTXT", "Text to Multiline Text", "Modify", true},
    {"UCSICON", "UCS Icon", "View", false},
    {"UNISOLATEOBJECTS", "End Object Isolation", "View", true, "UNISOLATE UNHIDE"},
    {"UPDATEFIELD", "Update Fields", "Tools", true},
    {"VIEWCUBE", "View Cube Display", "View", false},
    {"VIEWPLAY", "Play View", "View", false},
    {"VPOINT", "Viewpoint", "View", false, "-VP"},
    {"VPSCALE", "Viewport Scale", "Inquiry", false},
    {"VSCURRENT", "Visual Style", "View", false, "VS"},
    {"WORKSPACE", "Workspace", "Tools", false, "WS"},
    {"XDLIST", "List Extended Data", "Inquiry", false},
    {"XLIST", "List Nested Object", "Inquiry", false},
    {"XPLODE", "Extended Explode", "Modify", false, "XP"},
};

static_assert(std::ranges::is_sorted(kPlanned, {}, &PlannedRow::name));

std::string notYet(const std::string& name) { return name + " is not available yet."; }

class PlannedTool final : public Tool {
public:
    explicit PlannedTool(std::string name) : name_(std::move(name)) {}
    void begin() override {
        message(notYet(name_));
        finish();
    }
    void textInput(const std::string&) override {}

private:
    std::string name_;
};

class PlannedCommand final : public Command {
public:
    explicit PlannedCommand(const PlannedRow& row)
        : Command(std::string(row.name), row.title, row.category, splitWords(row.aliases)), oneShot_(row.oneShot) {}
    bool isAvailable() const override { return false; }
    bool isInteractive() const override { return !oneShot_; }
    void execute(CommandContext& context) override { context.message(notYet(name())); }
    std::unique_ptr<Tool> createTool() override { return oneShot_ ? nullptr : std::make_unique<PlannedTool>(name()); }

private:
    bool oneShot_;
};

}  // namespace

bool isPlannedCommand(std::string_view name) {
    return std::ranges::binary_search(kPlanned, name, {}, &PlannedRow::name);
}

void addPlannedCommands(CommandRegistry& registry) {
    for (const PlannedRow& row : kPlanned) registry.add(std::make_unique<PlannedCommand>(row));
}

}  // namespace kova::cmd::commands
