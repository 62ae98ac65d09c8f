// Variables that drawings, scripts and profiles carry and that change nothing in a program without a window, or of its
// kind: whoever sets one is told so.
#include <unordered_map>

#include "engine/sysvars/notes.hpp"

namespace kova::engine {

namespace {

struct IdleGroup {
    std::string_view reason;
    std::string_view names;  ///< separated by blanks
};

constexpr IdleGroup kGroups[] = {
    {"there is no window",
     "BLIPMODE COORDS CURSORSIZE CROSSINGAREACOLOR DBLCLKEDIT DRAGMODE DYNMODE DYNPICOORDS GPURENDER GRIPBLOCK GRIPCOLOR "
     "GRIPCONTOUR GRIPHOT GRIPHOVER GRIPMULTIFUNCTIONAL GRIPOBJLIMIT GRIPS GRIPSIZE GRIPTIPS HIGHLIGHT HPQUICKPREVIEW "
     "INPUTHISTORYMODE LAYOUTREGENCTL MAXACTVP MBUTTONPAN MENUBAR MENUECHO NAVBAR NAVVCUBEDISPLAY PICKDRAG "
     "PREVIEWEFFECT QPMODE REGENAUTO REGENMODE RIBBONSTATE ROLLOVERTIPS SCROLLBAR SDI SELECTIONAREA "
     "SELECTIONAREAOPACITY SELECTIONCYCLING SELECTIONPREVIEW SHORTCUTMENU STARTUP TEMPOVERRIDES TOOLTIPS COLORTHEME "
     "WINDOWAREACOLOR ZOOMFACTOR FIELDDISPLAY XDWGFADECTL LAYLOCKFADECTL UCSICON GRIDMODE GRIDMAJOR GRIDDISPLAY"},
    {"there is no pointer to guide", "AUTOTRACKING ORTHOMODE OSMODE OSNAPCOORD OSOPTIONS POLARADDANG POLARDIST POLARMODE SNAPMODE TRACKPATH"},
    {"picks add to the selection", "PICKADD"},
    {"commands ask on the command line", "ATTDIA CMDDIA"},
    {"pictures and plots show lineweights as they are plotted", "LWDISPLAY"},
    {"curves are drawn as fine as the picture shows", "VIEWRES WHIPARC TEXTQLTY"},
    {"solids are drawn by their edges alone",
     "DISPSILH FACETRES ISOLINES SHADEDGE SHADEDIF INTERFERECOLOR INTERSECTIONCOLOR INTERSECTIONDISPLAY HALOGAP "
     "OBSCOLOR OBSLTYPE HIDETEXT CSHADOW SHADOWPLANELOCATION"},
    {"underlays are not drawn", "PDFFRAME DWFFRAME DGNFRAME"},
    {"foreign objects are kept and not drawn", "PROXYSHOW PROXYGRAPHICS"},
    {"the drawing order holds everywhere", "SORTENTS"},
    {"drawings and references are always loaded whole", "INDEXCTL TREEDEPTH XLOADCTL DEMANDLOAD"},
    {"annotative objects are shown at every scale", "ANNOALLVISIBLE"},
    {"OBJECTSCALE adds scales", "ANNOAUTOSCALE"},
    {"no command here makes what it is for",
     "CMATERIAL SKETCHINC SKPOLY SURFTAB1 SURFTAB2 TRACEWID PSOLHEIGHT PSOLWIDTH LOFTANG1 LOFTANG2 LOFTMAG1 LOFTMAG2 "
     "LOFTNORMALS LOFTPARAM SOLIDHIST SHOWHIST REALWORLDSCALE 3DDWFPREC OLESTARTUP CAMERADISPLAY "
     "LIGHTGLYPHDISPLAY LIGHTINGUNITS TILEMODELIGHTSYNCH STEPSIZE STEPSPERSEC LATITUDE LONGITUDE NORTHDIRECTION "
     "TIMEZONE UCSORTHOVIEW PUCSORTHOVIEW WORLDVIEW LAYEREVAL LAYERNOTIFY EXTNAMES SAVEFIDELITY PROJECTNAME"},
    {"drawings without a unit are inserted as large as they are", "INSUNITSDEFSOURCE INSUNITSDEFTARGET"},
    {"multileaders take the scale of their style", "MLEADERSCALE"},
    {"MLINE asks for its style", "CMLSTYLE"},
    {"PLAN shows the plan of a UCS", "UCSFOLLOW"},
    {"typed text is taken as it stands", "TEXTEVAL"},
    {"messages are always shown", "NOMUTT"},
    {"drawings are saved on command only", "SAVETIME SAVEFILEPATH"},
    {"a font that is not found is replaced by one of its kind", "FONTALT"},
    {"page setups name their plot style table", "STYLESHEET PSTYLEPOLICY"},
    {"REFEDIT opens every drawing", "XEDIT"},
    {"limits are checked in model space", "PLIMCHECK PLIMMIN PLIMMAX"},
    {"lines have round ends and joints", "ENDCAPS JOINSTYLE"},
    {"polylines are always light ones (LWPOLYLINE), those of files too", "PLINETYPE"},
};

/// Why a variable of this name is only kept and does nothing; empty: it does its job.
std::string_view idleReason(std::string_view name) {
    static const std::unordered_map<std::string_view, std::string_view> reasons = [] {
        std::unordered_map<std::string_view, std::string_view> map;
        for (const IdleGroup& group : kGroups)
            for (std::string_view rest = group.names; !rest.empty();) {
                const std::size_t end = std::min(rest.find(' '), rest.size());
                map.emplace(rest.substr(0, end), group.reason);
                rest.remove_prefix(std::min(end + 1, rest.size()));
            }
        return map;
    }();
    const auto found = reasons.find(name);
    return found != reasons.end() ? found->second : std::string_view{};
}

}  // namespace

std::string sysVarNote(const Drawing& drawing, const SysVarDef& def) {
    const std::string name(def.name);
    if (const std::string_view reason = idleReason(def.name); !reason.empty())
        return name + " is kept, but has no effect here: " + std::string(reason) + ".";
    // FRAME stands above the variables of the single kinds.
    if (name != "IMAGEFRAME" && name != "WIPEOUTFRAME" && name != "XCLIPFRAME") return {};
    const std::int32_t all = sysVarInt(drawing, "FRAME", 3);
    return all == 3 ? std::string() : "FRAME = " + std::to_string(all) + " overrides it. Set FRAME to 3 to let it count.";
}

}  // namespace kova::engine
