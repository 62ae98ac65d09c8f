// Files, references, attributes, layouts, the drawing's names and times, the current view.
#include <filesystem>

#include "engine/model/drawing.hpp"
#include "engine/entities/viewport.hpp"
#include "engine/sysvars/host.hpp"
#include "engine/sysvars/rows.hpp"
#include "engine/model/view_frame.hpp"
#include "math/angles.hpp"

namespace kova::engine::rows {

namespace {

using Point = math::Vector3;

/// The part of the drawing's path before or behind the last slash.
std::string folderOf(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}
std::string fileOf(const std::string& path) { return path.substr(folderOf(path).size()); }

SysVarValue drawingFolder(const Drawing& d) {
    std::string folder = folderOf(d.fileName);
    if (!folder.empty()) return folder;
    std::error_code error;
    folder = std::filesystem::current_path(error).string();
    if (folder.empty() || folder.back() != '/') folder += '/';
    return folder;
}

SysVarValue tileMode(const Drawing& d) { return d.tileMode ? 1 : 0; }

std::string setTileMode(Drawing& d, const SysVarValue& value) {
    const bool model = std::get<std::int32_t>(value) != 0;
    if (!model && d.activeLayout() == nullptr) {
        if (d.layouts().empty()) return "The drawing has no layout.";
        d.activeLayoutName = d.layouts().front()->name;
    }
    d.tileMode = model;
    return {};
}

SysVarValue currentTab(const Drawing& d) { return d.tileMode ? std::string("Model") : d.activeLayoutName.str(); }

std::string setCurrentTab(Drawing& d, const SysVarValue& value) {
    const std::string& text = std::get<std::string>(value);
    if (equalNoCase(text, "Model")) {
        d.tileMode = true;
        return {};
    }
    const Layout* layout = d.findLayout(Name(text));
    if (layout == nullptr) return "Layout \"" + text + "\" not found.";
    d.activeLayoutName = layout->name;
    d.tileMode = false;
    return {};
}

/// Corners of the extents; an empty space has the "no extents" values of drawing files.
SysVarValue lowerExtent(const Drawing& d) {
    const math::Bounds2 box = d.extents(d.currentSpace());
    return box.is_empty() ? Point(1e20, 1e20, 1e20) : Point(box.min);
}
SysVarValue upperExtent(const Drawing& d) {
    const math::Bounds2 box = d.extents(d.currentSpace());
    return box.is_empty() ? Point(-1e20, -1e20, -1e20) : Point(box.max);
}

/// The viewport through which model space is worked on; null in the model tab and on paper.
const ViewportEntity* windowInUse(const Drawing& d) { return d.tileMode ? nullptr : d.activeViewport(); }

/// How far the view is turned.
SysVarValue twistOfView(const Drawing& d) {
    if (const ViewportEntity* v = windowInUse(d)) return v->viewTwist;
    return viewTwist(d.currentView.viewDirection, d.currentView.upHint);
}

std::int32_t viewportNumber(const Drawing& d) {
    const SysVarEnvironment& environment = sysVarEnvironment();
    if (environment.viewport) return environment.viewport(d);
    if (d.tileMode) return 2;
    const ViewportEntity* active = d.activeViewport();
    return active != nullptr ? std::max(2, active->vpId) : 1;
}

std::string setViewport(Drawing& d, const SysVarValue& value) {
    const std::int32_t number = std::get<std::int32_t>(value);
    if (number == viewportNumber(d)) return {};
    const SysVarEnvironment& environment = sysVarEnvironment();
    if (environment.setViewport) return environment.setViewport(d, number);
    const Layout* layout = d.tileMode ? nullptr : d.activeLayout();
    if (layout != nullptr && number == 1) {
        d.activeViewportId = 0;
        return {};
    }
    if (layout != nullptr)
        for (const Entity& entity : layout->entities) {
            if (entity.type() != EntityType::Viewport) continue;
            const auto& viewport = static_cast<const ViewportEntity&>(entity);
            if (viewport.vpId != number || !viewport.isOn()) continue;
            d.activeViewportId = viewport.id();
            return {};
        }
    return "Cannot set CVPORT to that value.";
}

SysVarValue elapsed(const Drawing& d) {
    const double opened = sysVarReal(d, "TDOPENED", 0.0);
    const double before = sysVarReal(d, "TDEDITED", 0.0);
    return opened > 0.0 ? before + std::max(0.0, julianNow() - opened) : before;
}

std::string setElapsed(Drawing& d, const SysVarValue& value) {
    d.realVariables["TDEDITED"] = std::max(0.0, std::get<double>(value));
    d.realVariables["TDOPENED"] = julianNow();
    return {};
}

}  // namespace

std::vector<SysVarDef> fileVariables() {
    return {
        // Saving and opening
        integer("SAVETIME", 10, 0, 600, kProfile, "Minutes between automatic saves; 0: none"),
        toggle("ISAVEBAK", 1, kProfile, "Saving keeps the old file as .bak"),
        string("SAVEFILEPATH", temporaryFolder(), kProfile, "Folder of automatic saves; . for the temporary folder"),
        string("MOVEBAK", "", kProfile, "Folder to which .bak files are moved after saving")
            .prompt("Enter new value for MOVEBAK, or . for none"),
        integer("SAVEFIDELITY", 1, 0, 1, kProfile, "Annotative objects keep their look in older formats"),
        integer("DEMANDLOAD", 3, 0, 3, kProfile, "When programs of foreign objects are loaded"),
        integer("FIELDEVAL", 31, 0, 31, kDrawing,
                "Fields are updated when, sum of: 1 opening, 2 saving, 4 plotting, 8 transmitting, 16 regenerating"),
        toggle("FIELDDISPLAY", 1, kProfile, "Fields shown with a grey background"),
        string("FONTALT", "simplex.shx", kProfile, "Font for fonts that are not found"),

        // References and attributes
        toggle("ATTDIA", 1, kProfile, "INSERT asks for attribute values in a dialog"),
        toggle("ATTREQ", 1, kProfile, "INSERT asks for attribute values; 0: takes the defaults"),
        integer("AFLAGS", 0, 0, 63, kSession,
                "Modes of new attributes, sum of: 1 invisible, 2 constant, 4 verified, 8 preset, 16 locked in place"),
        toggle("VISRETAIN", 1, kHeader, "Own settings of the layers of references are kept").code(70),
        integer("XLOADCTL", 2, 0, 2, kProfile, "References are loaded 0 whole, 1 on demand, 2 on demand from a copy"),
        integer("XREFNOTIFY", 2, 0, 2, kProfile, "Missing or changed references are told: 0 not, 1 icon, 2 messages"),
        integer("XREFTYPE", 0, 0, 1, kProfile, "New references are attached (0) or overlaid (1)"),
        toggle("XEDIT", 1, kDrawing, "The drawing may be edited in place where it is referenced"),
        toggle("BINDTYPE", 0, kProfile, "Bound names become file$0$name (0) or name (1)"),
        string("PROJECTNAME", "", kHeader, "Name of the project, for finding references").code(1),
        string("HYPERLINKBASE", "", kHeader, "Folder of relative links").code(1),
        string("STYLESHEET", "", kHeader, "Plot style table of the model tab").code(1),
        toggle("PSTYLEMODE", 1, kHeader, "Plot styles 0 by name, 1 by color").code(290).readOnly(),
        toggle("PSTYLEPOLICY", 1, kProfile, "Plot styles of new drawings 0 by name, 1 by color"),

        // Layouts and views
        toggle("TILEMODE", 1, saved::Header, "Model tab (1) or a layout (0)").code(70).get(tileMode).set(setTileMode),
        string("CTAB", "Model", kHeader, "Current tab").code(1).get(currentTab).set(setCurrentTab),
        integer("CVPORT", 2, 1, 32767, saved::Nowhere, "Number of the current viewport; 1: paper")
            .get([](const Drawing& d) -> SysVarValue { return viewportNumber(d); })
            .set(setViewport),
        point("EXTMIN", {1e20, 1e20, 1e20}, saved::Header, "Lower left corner of what is drawn")
            .code(10)
            .readOnly()
            .get(lowerExtent),
        point("EXTMAX", {-1e20, -1e20, -1e20}, saved::Header, "Upper right corner of what is drawn")
            .code(10)
            .readOnly()
            .get(upperExtent),
        point("VIEWCTR", {210, 148.5, 0}, saved::Nowhere, "Center of the view")
            .readOnly()
            .get([](const Drawing& d) -> SysVarValue {
                const ViewportEntity* v = windowInUse(d);
                return v != nullptr ? Point(v->viewTarget) : Point(d.currentView.center);
            }),
        real("VIEWSIZE", 297.0, saved::Nowhere, "Height of the view")
            .readOnly()
            .get([](const Drawing& d) -> SysVarValue {
                const ViewportEntity* v = windowInUse(d);
                return v != nullptr && v->viewScale > 0.0 ? std::abs(v->height) / v->viewScale : d.currentView.height;
            }),
        point("VIEWDIR", {0, 0, 1}, saved::Nowhere, "Direction from the target to the viewer")
            .readOnly()
            .get([](const Drawing& d) -> SysVarValue {
                const ViewportEntity* v = windowInUse(d);
                return v != nullptr ? v->viewDirection : d.currentView.viewDirection;
            }),
        point("TARGET", {0, 0, 0}, saved::Nowhere, "Target of the view")
            .readOnly()
            .get([](const Drawing& d) -> SysVarValue {
                const ViewportEntity* v = windowInUse(d);
                return v != nullptr ? Point(v->viewTarget, v->viewTargetZ) : d.currentView.target;
            }),
        angle("VIEWTWIST", 0.0, saved::Nowhere, "Rotation of the view").readOnly().get(twistOfView),
        integer("VIEWMODE", 0, 0, 31, saved::Nowhere, "Kind of view; 1 perspective").readOnly(),
        string("UCSNAME", "", saved::Header, "Name of the current UCS")
            .code(2)
            .readOnly()
            .get([](const Drawing& d) -> SysVarValue { return d.currentUcs.str(); }),
        point("UCSORG", {0, 0, 0}, saved::Header, "Origin of the current UCS")
            .code(10)
            .readOnly()
            .get([](const Drawing& d) -> SysVarValue { return Point(d.ucs.origin); }),
        point("UCSXDIR", {1, 0, 0}, saved::Header, "X axis of the current UCS")
            .code(10)
            .readOnly()
            .get([](const Drawing& d) -> SysVarValue { return Point(d.ucs.xAxis); }),
        point("UCSYDIR", {0, 1, 0}, saved::Header, "Y axis of the current UCS")
            .code(10)
            .readOnly()
            .get([](const Drawing& d) -> SysVarValue { return Point(d.ucs.yAxis); }),
        toggle("WORLDUCS", 1, saved::Nowhere, "The current UCS is the world's")
            .readOnly()
            .get([](const Drawing& d) -> SysVarValue { return d.ucs.isWorld() ? 1 : 0; }),

        // The drawing's file and times
        string("DWGNAME", "Drawing1.kvcad", saved::Nowhere, "File name of the drawing")
            .readOnly()
            .get([](const Drawing& d) -> SysVarValue {
                return d.fileName.empty() ? std::string("Drawing1.kvcad") : fileOf(d.fileName);
            }),
        string("DWGPREFIX", "", saved::Nowhere, "Folder of the drawing").readOnly().get(drawingFolder),
        toggle("DWGTITLED", 0, saved::Nowhere, "The drawing has a file name")
            .readOnly()
            .get([](const Drawing& d) -> SysVarValue { return d.fileName.empty() ? 0 : 1; }),
        string("SAVENAME", "", saved::Nowhere, "Path to which the drawing was saved or from which it was opened")
            .readOnly()
            .get([](const Drawing& d) -> SysVarValue { return d.fileName; }),
        string("SAVEFILE", "", saved::Nowhere, "Path of the automatic save").readOnly(),
        real("TDCREATE", 0.0, kHeader, "When the drawing was made, as Julian date, local time").code(40).readOnly(),
        real("TDUCREATE", 0.0, kHeader, "When the drawing was made, universal time").code(40).readOnly(),
        real("TDUPDATE", 0.0, kHeader, "When the drawing was last saved, local time").code(40).readOnly(),
        real("TDUUPDATE", 0.0, kHeader, "When the drawing was last saved, universal time").code(40).readOnly(),
        real("TDINDWG", 0.0, kHeader, "Days for which the drawing has been open")
            .code(40)
            .readOnly()
            .get(elapsed)
            .set(setElapsed),
        real("TDEDITED", 0.0, saved::Nowhere, "Days for which the drawing was open before this time").readOnly(),
        real("TDOPENED", 0.0, saved::Nowhere, "When the drawing was opened this time").readOnly(),
        real("TDUSRTIMER", 0.0, kHeader, "Days counted by the user's timer").code(40).readOnly(),
        toggle("USRTIMER", 1, kHeader, "The user's timer runs").code(70),
        integer("HANDLES", 1, 0, 1, saved::Nowhere, "Objects have handles").readOnly(),
    };
}

}  // namespace kova::engine::rows

namespace kova::engine {

void noteSaveTime(Drawing& drawing) {
    const double now = julianNow();
    const double opened = sysVarReal(drawing, "TDOPENED");
    const double days = opened > 0.0 ? std::max(0.0, now - opened) : 0.0;
    auto& reals = drawing.realVariables;
    reals["TDEDITED"] = sysVarReal(drawing, "TDEDITED") + days;
    if (sysVarInt(drawing, "USRTIMER", 1) != 0) reals["TDUSRTIMER"] = sysVarReal(drawing, "TDUSRTIMER") + days;
    reals["TDOPENED"] = now;
    reals["TDUPDATE"] = now;
    reals["TDUUPDATE"] = julianNow(true);
}

}  // namespace kova::engine
