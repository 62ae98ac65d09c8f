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
    {"3DFACE", "3D Face", "Draw", false, "3F"},
    {"3DORBIT", "3D Orbit", "View", false, "3DO ORBIT"},
    {"3DPOLY", "3D Polyline", "Draw", false, "3P"},
    {"ABOUT", "About", "Help", true},
    {"ACTPLAY", "Play Action Macro", "Tools", false},
    {"ACTRECORD", "Record Action Macro", "Tools", false, "ARR"},
    {"ACTSTOP", "Stop Recording", "Tools", false, "ARS"},
    {"ADCENTER", "Design Center", "Insert", true, "ADC DC DCENTER"},
    {"ADDSELECTED", "Add Selected", "Draw", false},
    {"ALIGN", "Align", "Modify", false, "AL"},
    {"ANNORESET", "Reset Annotation Positions", "Annotate", false},
    {"ARC", "Arc", "Draw", false, "A"},
    {"AREA", "Area", "Inquiry", false, "AA"},
    {"ARRAY", "Array", "Modify", false, "AR"},
    {"ARRAYEDIT", "Edit Array", "Modify", false},
    {"ARRAYPATH", "Path Array", "Modify", false},
    {"ARRAYPOLAR", "Polar Array", "Modify", false},
    {"ARRAYRECT", "Rectangular Array", "Modify", false},
    {"ATTDEF", "Define Attribute", "Insert", false, "ATT"},
    {"ATTDISP", "Attribute Display", "View", false},
    {"ATTEDIT", "Edit Attributes", "Insert", false, "ATE ATTE"},
    {"ATTEXT", "Extract Attributes", "Tools", false, "DDATTEXT"},
    {"ATTSYNC", "Synchronize Attributes", "Insert", false},
    {"AUDIT", "Audit", "File", false},
    {"BACTION", "Block Action", "Insert", false, "AC"},
    {"BACTIONTOOL", "Block Action Tool", "Insert", false},
    {"BATTMAN", "Block Attribute Manager", "Insert", false},
    {"BCLOSE", "Close Block Editor", "Insert", false, "BC"},
    {"BCOUNT", "Count Blocks", "Inquiry", false},
    {"BEDIT", "Block Editor", "Insert", false, "BE"},
    {"BLOCK", "Make Block", "Insert", false, "B"},
    {"BLOOKUPTABLE", "Block Lookup Table", "Insert", false},
    {"BOUNDARY", "Boundary", "Draw", false, "BO BPOLY"},
    {"BPARAMETER", "Block Parameter", "Insert", false, "PARAM"},
    {"BREAK", "Break", "Modify", false, "BR"},
    {"BREAKLINE", "Break Line", "Draw", false},
    {"BURST", "Burst", "Modify", false},
    {"BVSTATE", "Block Visibility States", "Insert", false, "BVS"},
    {"CAL", "Calculator", "Tools", false},
    {"CAMERA", "Camera", "View", false, "CAM"},
    {"CHAMFER", "Chamfer", "Modify", false, "CHA"},
    {"CHANGE", "Change", "Modify", false},
    {"CHPROP", "Change Properties", "Modify", false},
    {"CHSPACE", "Change Space", "Modify", false},
    {"CLEANSCREEN", "Clean Screen", "View", true, "CLEANSCREENON CLEANSCREENOFF"},
    {"COMMANDLINE", "Command Line", "View", true, "CLI"},
    {"CONVERTPOLY", "Convert Polylines", "Modify", true},
    {"CONVERTPSTYLES", "Convert Plot Styles", "Format", false},
    {"COPY", "Copy", "Modify", false, "CO CP"},
    {"COPYBASE", "Copy with Base Point", "Edit", false},
    {"COPYCLIP", "Copy to Clipboard", "Edit", true},
    {"COPYTOLAYER", "Copy to Layer", "Format", false},
    {"CUSTOMIZE", "Customize", "Tools", false, "CUI TOOLPALETTESCUSTOMIZE"},
    {"CUTCLIP", "Cut to Clipboard", "Edit", true},
    {"DBLIST", "List Database", "Inquiry", false},
    {"DDEDIT", "Edit Text", "Modify", false, "ED TEXTEDIT TEDIT"},
    {"DDEMODES", "Object Creation Modes", "Format", false},
    {"DDPTYPE", "Point Type", "Format", false, "PTYPE"},
    {"DDVPOINT", "Viewpoint Presets", "View", false, "VP"},
    {"DIMALIGNED", "Aligned Dimension", "Annotate", false, "DAL DIMALI"},
    {"DIMANGULAR", "Angular Dimension", "Annotate", false, "DAN DIMANG"},
    {"DIMARC", "Arc Length Dimension", "Annotate", false, "DAR"},
    {"DIMBASELINE", "Baseline Dimension", "Annotate", false, "DBA DIMBASE"},
    {"DIMCENTER", "Center Mark", "Annotate", false, "DCE"},
    {"DIMCONTINUE", "Continued Dimension", "Annotate", false, "DCO DIMCONT"},
    {"DIMDIAMETER", "Diameter Dimension", "Annotate", false, "DDI DIMDIA"},
    {"DIMDISASSOCIATE", "Disassociate Dimensions", "Annotate", false, "DDA"},
    {"DIMEDIT", "Edit Dimensions", "Annotate", false, "DED DIMED"},
    {"DIMINSPECT", "Inspection Dimension", "Annotate", false},
    {"DIMJOGGED", "Jogged Radius Dimension", "Annotate", false, "DJO JOG"},
    {"DIMLINEAR", "Linear Dimension", "Annotate", false, "DLI DIMLIN"},
    {"DIMORDINATE", "Ordinate Dimension", "Annotate", false, "DOR DIMORD"},
    {"DIMRADIUS", "Radius Dimension", "Annotate", false, "DRA DIMRAD"},
    {"DIMREASSOCIATE", "Reassociate Dimensions", "Annotate", false, "DRE"},
    {"DIMREGEN", "Update Dimensions", "Annotate", false},
    {"DIMSPACE", "Space Dimensions", "Annotate", false},
    {"DIMSTYLE", "Dimension Style", "Format", false, "D DST DIMSTY DDIM"},
    {"DIMTEDIT", "Move Dimension Text", "Annotate", false, "DIMTED"},
    {"DIVIDE", "Divide", "Draw", false, "DIV"},
    {"DONUT", "Donut", "Draw", false, "DO DOUGHNUT"},
    {"DRAWORDER", "Draw Order", "Modify", false, "DR"},
    {"DSETTINGS", "Drafting Settings", "Tools", false, "DS SE DDRMODES"},
    {"DVIEW", "Dynamic View", "View", false, "DV"},
    {"DWGPROPS", "Drawing Properties", "File", false},
    {"DWGUNITS", "Drawing Units", "Format", false},
    {"DWGWORKFLOW", "DWG Workflow", "File", true},
    {"DXFOUT", "Export DXF", "File", true},
    {"EATTEDIT", "Enhanced Attribute Edit", "Insert", false},
    {"ELEV", "Elevation and Thickness", "Settings", false},
    {"ELLIPSE", "Ellipse", "Draw", false, "EL"},
    {"ETRANSMIT", "Package Drawing", "File", false, "ZIP"},
    {"EXOFFSET", "Extended Offset", "Modify", false},
    {"EXPLODE", "Explode", "Modify", true, "X"},
    {"EXPORT", "Export", "File", false, "EXP"},
    {"EXPORTIMAGE", "Export Image", "File", false, "PNGOUT JPGOUT BMPOUT"},
    {"EXTEND", "Extend", "Modify", false, "EX"},
    {"EXTRACTDATA", "Extract Data", "Tools", true, "DATAEXTRACTION EATTEXT"},
    {"FIELD", "Field", "Insert", false},
    {"FILLET", "Fillet", "Modify", false, "F"},
    {"FILTER", "Object Filter", "Edit", false, "FI"},
    {"FIND", "Find and Replace", "Edit", false},
    {"FLATTEN", "Flatten", "Modify", true},
    {"GATTE", "Global Attribute Edit", "Insert", false},
    {"GETSEL", "Select by Layer and Type", "Edit", false},
    {"GRADIENT", "Gradient", "Draw", false, "GD"},
    {"GRID", "Grid", "Settings", false},
    {"GROUP", "Group", "Edit", false, "G"},
    {"HATCH", "Hatch", "Draw", false, "H BH"},
    {"HATCHEDIT", "Edit Hatch", "Modify", false, "HE"},
    {"HATCHPATTERN", "Hatch Pattern", "Draw", false},
    {"HATCHTOBACK", "Hatches to Back", "Modify", true, "HB"},
    {"HELIX", "Helix", "Draw", false},
    {"HELP", "Help", "Help", false, "?"},
    {"HIDEOBJECTS", "Hide Objects", "View", true},
    {"HYPERLINK", "Hyperlink", "Insert", false},
    {"HYPERLINKOPEN", "Show Hyperlink", "Insert", true},
    {"IMAGEADJUST", "Adjust Image", "Insert", false, "IAD"},
    {"IMAGEATTACH", "Attach Image", "Insert", false, "IAT IMAGE IM"},
    {"IMAGECLIP", "Clip Image", "Insert", false, "ICL"},
    {"IMPORT", "Import", "File", false, "IMP"},
    {"INSERT", "Insert Block", "Insert", false, "I DDINSERT"},
    {"ISOLATEOBJECTS", "Isolate Objects", "View", true, "ISOLATE"},
    {"JOIN", "Join", "Modify", false, "J"},
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
    {"LAYOUT", "Layout", "Insert", false, "LO"},
    {"LAYTHW", "Thaw All Layers", "Format", true},
    {"LAYTRANS", "Translate Layers", "Format", false},
    {"LAYULK", "Unlock Object's Layer", "Format", true},
    {"LAYUNISO", "Unisolate Layers", "Format", true},
    {"LAYWALK", "Walk through Layers", "Format", false},
    {"LEADER", "Leader", "Annotate", false, "LEAD"},
    {"LENGTHEN", "Lengthen", "Modify", false, "LEN"},
    {"LISPRELOAD", "Reload LISP Files", "Tools", true},
    {"LIST", "List", "Inquiry", false, "LI LS"},
    {"MASSPROP", "Mass Properties", "Inquiry", false},
    {"MATCHPROP", "Match Properties", "Modify", false, "MA PAINTER"},
    {"MEASURE", "Measure", "Draw", false, "ME"},
    {"MEASUREGEOM", "Measure Geometry", "Inquiry", false, "MEA"},
    {"MENUBAR", "Menu Bar", "View", true},
    {"MIRROR", "Mirror", "Modify", false, "MI"},
    {"MLEADER", "Multileader", "Annotate", false, "MLD"},
    {"MLEADERALIGN", "Align Multileaders", "Annotate", false, "MLA"},
    {"MLEADERCOLLECT", "Collect Multileaders", "Annotate", false, "MLC"},
    {"MLEADEREDIT", "Edit Multileader", "Annotate", false, "MLE AIMLEADEREDITADD"},
    {"MLEADERSTYLE", "Multileader Style", "Format", false, "MLS"},
    {"MLINE", "Multiline", "Draw", false, "ML"},
    {"MOCORO", "Move Copy Rotate", "Modify", false},
    {"MPEDIT", "Edit Polylines", "Modify", false},
    {"MSPACE", "Model Space", "View", false, "MS"},
    {"MTEXT", "Multiline Text", "Annotate", false, "MT T"},
    {"MVIEW", "Layout Viewport", "View", false, "MV"},
    {"NAVBAR", "Navigation Bar", "View", false},
    {"NAVSWHEEL", "Steering Wheel", "View", false, "WHEEL"},
    {"NAVVCUBE", "View Cube", "View", false, "CUBE"},
    {"NCOPY", "Copy Nested Objects", "Modify", false},
    {"NEWSHOT", "New Shot", "View", false},
    {"OBJECTSCALE", "Object Scales", "Annotate", false},
    {"OFFSET", "Offset", "Modify", false, "O"},
    {"OPTIONS", "Options", "Tools", true, "OP PREFERENCES"},
    {"OVERKILL", "Remove Duplicates", "Modify", false},
    {"PAGESETUP", "Page Setup", "File", true},
    {"PAN", "Pan", "View", false, "P"},
    {"PASTEBLOCK", "Paste as Block", "Edit", false},
    {"PASTECLIP", "Paste", "Edit", false},
    {"PASTEORIG", "Paste to Original Coordinates", "Edit", true},
    {"PDFEXPORT", "Export PDF", "File", false, "EXPORTPDF"},
    {"PEDIT", "Edit Polyline", "Modify", false, "PE"},
    {"PLAN", "Plan View", "View", true},
    {"PLINE", "Polyline", "Draw", false, "PL"},
    {"PLOT", "Plot", "File", false, "PRINT"},
    {"PLOTSTYLEEDITOR", "Plot Style Editor", "File", true},
    {"PLOTTERMANAGER", "Plotter Manager", "File", false},
    {"POINT", "Point", "Draw", false, "PO"},
    {"POINTSTYLE", "Point Style", "Format", false},
    {"POLAR", "Polar Tracking", "Settings", false},
    {"POLYGON", "Polygon", "Draw", false, "POL"},
    {"PREVIEW", "Plot Preview", "File", false, "PRE"},
    {"PROPERTIESCLOSE", "Close Properties", "View", true, "PRCLOSE"},
    {"PSPACE", "Paper Space", "View", true, "PS"},
    {"PUBLISH", "Publish", "File", false},
    {"PURGE", "Purge", "File", false, "PU"},
    {"PYLOAD", "Load Python Files", "Tools", true},
    {"PYRELOAD", "Reload Python Files", "Tools", true},
    {"PYSCRIPT", "Run Python Script", "Tools", false},
    {"QDIM", "Quick Dimension", "Annotate", false},
    {"QLEADER", "Quick Leader", "Annotate", false, "LE"},
    {"QSELECT", "Quick Select", "Edit", false},
    {"QUICKPROPERTIES", "Quick Properties", "View", true, "QP"},
    {"RAY", "Ray", "Draw", false},
    {"RECOVER", "Recover", "File", false},
    {"RECTANGLE", "Rectangle", "Draw", false, "REC RECTANG"},
    {"REFCLOSE", "Close Reference Edit", "Insert", false},
    {"REFEDIT", "Edit Reference", "Insert", false},
    {"REGION", "Region", "Draw", false, "REG"},
    {"RENAME", "Rename", "Format", false, "REN"},
    {"REVCLOUD", "Revision Cloud", "Draw", false},
    {"REVERSE", "Reverse", "Modify", false},
    {"RIBBON", "Ribbon", "View", true, "DASHBOARD"},
    {"ROTATE", "Rotate", "Modify", false, "RO"},
    {"SCALE", "Scale", "Modify", false, "SC"},
    {"SCALELISTEDIT", "Edit Scale List", "Format", false},
    {"SCALETEXT", "Scale Text", "Modify", false},
    {"SELECTSIMILAR", "Select Similar", "Edit", false},
    {"SETBYLAYER", "Set to ByLayer", "Modify", true},
    {"SHELL", "System Shell", "Tools", false, "SH"},
    {"SHOWURLS", "Show Hyperlinks", "Inquiry", false},
    {"SNAP", "Snap", "Settings", false, "SN"},
    {"SOLID", "2D Solid", "Draw", false, "SO"},
    {"SPACETRANS", "Translate between Spaces", "Inquiry", false},
    {"SPELL", "Check Spelling", "Tools", false, "SP"},
    {"SPLINE", "Spline", "Draw", false, "SPL"},
    {"SPLINEDIT", "Edit Spline", "Modify", false, "SPE"},
    {"STANDARDS", "Standards", "Tools", false, "STA"},
    {"STATUS", "Status", "Inquiry", false},
    {"STRETCH", "Stretch", "Modify", false, "S"},
    {"STYLE", "Text Style", "Format", false, "ST"},
    {"STYLESMANAGER", "Plot Style Manager", "File", false},
    {"SVGEXPORT", "Export SVG", "File", false},
    {"TABLE", "Table", "Annotate", false, "TB"},
    {"TABLEDIT", "Edit Table Cell", "Modify", false},
    {"TABLESTYLE", "Table Style", "Format", false, "TS"},
    {"TCASE", "Change Text Case", "Modify", false},
    {"TCIRCLE", "Enclose Text", "Modify", false},
    {"TCOUNT", "Number Texts", "Modify", false},
    {"TEXT", "Single-Line Text", "Annotate", false, "DT DTEXT"},
    {"TEXTALIGN", "Align Text", "Modify", false, "TA"},
    {"TEXTFIT", "Fit Text", "Modify", false},
    {"TEXTMASK", "Mask Text", "Modify", false},
    {"TEXTTOFRONT", "Annotation to Front", "Modify", true},
    {"TEXTUNMASK", "Unmask Text", "Modify", false},
    {"THEME", "Theme", "View", true},
    {"TOLERANCE", "Tolerance", "Annotate", false, "TOL"},
    {"TOOLBAR", "Toolbar", "View", true, "TO"},
    {"TOOLPALETTES", "Tool Palettes", "Tools", true, "TP"},
    {"TORIENT", "Orient Text", "Modify", true},
    {"TRIM", "Trim", "Modify", false, "TR"},
    {"TXT2MTXT", "Text to Multiline Text", "Modify", true},
    {"UCSICON", "UCS Icon", "View", false},
    {"UNGROUP", "Ungroup", "Edit", true},
    {"UNISOLATEOBJECTS", "End Object Isolation", "View", true, "UNISOLATE UNHIDE"},
    {"UNITS", "Units", "Format", false, "UN DDUNITS"},
    {"UPDATEFIELD", "Update Fields", "Tools", true},
    {"VIEW", "Named Views", "View", false, "V"},
    {"VIEWCUBE", "View Cube Display", "View", false},
    {"VIEWPLAY", "Play View", "View", false},
    {"VIEWRES", "View Resolution", "View", false},
    {"VPLAYER", "Viewport Layers", "Format", false},
    {"VPOINT", "Viewpoint", "View", false, "-VP"},
    {"VPSCALE", "Viewport Scale", "Inquiry", false},
    {"VSCURRENT", "Visual Style", "View", false, "VS"},
    {"WBLOCK", "Write Block", "File", false, "W"},
    {"WIPEOUT", "Wipeout", "Draw", false},
    {"WORKSPACE", "Workspace", "Tools", false, "WS"},
    {"XATTACH", "Attach Reference", "Insert", false, "XA"},
    {"XBIND", "Bind Reference Symbols", "Insert", false, "XB"},
    {"XCLIP", "Clip Reference", "Insert", false, "XC"},
    {"XDLIST", "List Extended Data", "Inquiry", false},
    {"XLINE", "Construction Line", "Draw", false, "XL"},
    {"XLIST", "List Nested Object", "Inquiry", false},
    {"XPLODE", "Extended Explode", "Modify", false, "XP"},
    {"XREF", "External References", "Insert", false, "XR ER"},
    {"ZOOM", "Zoom", "View", false, "Z"},
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
    std::unique_ptr<Tool> createTool() override {
        return oneShot_ ? nullptr : std::make_unique<PlannedTool>(name());
    }

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
