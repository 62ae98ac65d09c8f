// Units, drafting aids, limits and coordinates.
#include "engine/model/drawing.hpp"
#include "engine/sysvars/rows.hpp"
#include "math/angles.hpp"

namespace kova::engine::rows {

namespace {

math::Vector3 space(const math::Vector2& p) { return math::Vector3(p); }
math::Vector2 plane(const SysVarValue& value) { return std::get<math::Vector3>(value).xy(); }

}  // namespace

std::vector<SysVarDef> draftingVariables() {
    return {
        // Units
        angle("ANGBASE", 0.0, kHeader, "Direction of angle 0, counter-clockwise from the x axis").code(50),
        toggle("ANGDIR", 0, kHeader, "Sense of angles: 0 counter-clockwise, 1 clockwise").code(70),
        integer("AUNITS", 0, 0, 4, kHeader,
                "Format of angles: 0 degrees, 1 degrees/minutes/seconds, 2 grads, 3 radians, 4 surveyor's units")
            .code(70),
        integer("AUPREC", 0, 0, 8, kHeader, "Decimals of angles").code(70),
        integer("LUNITS", 2, 1, 5, kHeader,
                "Format of lengths: 1 scientific, 2 decimal, 3 engineering, 4 architectural, 5 fractional")
            .code(70),
        integer("LUPREC", 4, 0, 8, kHeader, "Decimals of lengths, or power of two of the denominator").code(70),
        toggle("UNITMODE", 0, kHeader, "Lengths and angles shown as they are typed (1) or as reports show them (0)")
            .code(70),
        integer("INSUNITS", 4, 0, 24, kHeader, "Unit of the drawing, for scaling what is inserted").code(70),
        integer("INSUNITSDEFSOURCE", 4, 0, 24, kProfile, "Unit taken for inserted drawings without one"),
        integer("INSUNITSDEFTARGET", 4, 0, 24, kProfile, "Unit taken for drawings without one when inserting"),
        toggle("MEASUREMENT", 1, kHeader, "Hatch patterns and linetypes of 0 inches, 1 millimetres").code(70).looks(),

        // Coordinates and limits
        integer("COORDS", 1, 0, 3, kProfile, "Shown coordinates: off, running, polar while dragging"),
        toggle("LIMCHECK", 0, saved::Header, "Points outside the limits are refused")
            .code(70)
            .get([](const Drawing& d) -> SysVarValue { return d.limits.check ? 1 : 0; })
            .set([](Drawing& d, const SysVarValue& v) {
                d.limits.check = std::get<std::int32_t>(v) != 0;
                return std::string();
            }),
        point("LIMMIN", {0, 0, 0}, saved::Header, "Lower left corner of the limits")
            .code(10)
            .get([](const Drawing& d) -> SysVarValue { return space(d.limits.lower); })
            .set([](Drawing& d, const SysVarValue& v) {
                d.limits.lower = plane(v);
                return std::string();
            }),
        point("LIMMAX", {420, 297, 0}, saved::Header, "Upper right corner of the limits")
            .code(10)
            .get([](const Drawing& d) -> SysVarValue { return space(d.limits.upper); })
            .set([](Drawing& d, const SysVarValue& v) {
                d.limits.upper = plane(v);
                return std::string();
            }),
        point("INSBASE", {0, 0, 0}, saved::Header, "Insertion base point of the drawing")
            .code(10)
            .get([](const Drawing& d) -> SysVarValue { return space(d.basePoint); })
            .set([](Drawing& d, const SysVarValue& v) {
                d.basePoint = plane(v);
                return std::string();
            }),
        point("LASTPOINT", {0, 0, 0}, saved::Nowhere, "The last point entered, for @ at a prompt")
            .get([](const Drawing& d) -> SysVarValue { return space(d.lastPoint); })
            .set([](Drawing& d, const SysVarValue& v) {
                d.lastPoint = plane(v);
                return std::string();
            }),

        // Snap, grid, tracking
        toggle("ORTHOMODE", 0, kHeader, "Pointer movement along the axes only").code(70),
        toggle("SNAPMODE", 0, kDrawing, "Pointer movement in steps"),
        point("SNAPUNIT", {10, 10, 0}, kDrawing, "Steps of the snap, along x and y"),
        angle("SNAPANG", 0.0, kHeader, "Rotation of snap, grid and ortho axes").code(50),
        point("SNAPBASE", {0, 0, 0}, saved::Nowhere, "Origin of snap and grid")
            .get([](const Drawing& d) -> SysVarValue { return space(d.snapBase); })
            .set([](Drawing& d, const SysVarValue& v) {
                d.snapBase = plane(v);
                return std::string();
            }),
        toggle("SNAPSTYL", 0, kDrawing, "Standard (0) or isometric (1) snap"),
        integer("SNAPISOPAIR", 0, 0, 2, kDrawing, "Isometric plane: 0 left, 1 top, 2 right"),
        toggle("SNAPTYPE", 0, kProfile, "Snap to the grid (0) or along polar directions (1)"),
        toggle("GRIDMODE", 0, kDrawing, "Grid shown"),
        point("GRIDUNIT", {10, 10, 0}, kDrawing, "Distance of grid lines, along x and y"),
        integer("GRIDMAJOR", 5, 1, 100, kDrawing, "Minor grid lines per major line"),
        integer("GRIDDISPLAY", 2, 0, 15, kDrawing,
                "Grid behaviour, sum of: 1 beyond the limits, 2 adaptive, 4 finer subdivision, 8 follows the UCS"),
        positive("POLARANG", 90.0, kProfile, "Step of polar tracking in degrees"),
        string("POLARADDANG", "", kProfile, "Further polar angles in degrees, separated by semicolons"),
        size("POLARDIST", 0.0, kProfile, "Step along polar directions"),
        integer("POLARMODE", 0, 0, 15, kProfile, "Polar and object snap tracking"),
        integer(
            "OSMODE", 4133, 0, 32767, kProfile | saved::Header,
            "Running object snaps, sum of: 1 end, 2 mid, 4 center, 8 node, 16 quadrant, 32 intersection, 64 insert, "
            "128 perpendicular, 256 tangent, 512 nearest, 2048 apparent intersection, 4096 extension, "
            "8192 parallel, 16384 off for now")
            .code(70),
        integer("OSNAPCOORD", 2, 0, 2, kProfile, "Typed coordinates: 0 snapped, 1 as typed, 2 as typed but in scripts"),
        integer("OSOPTIONS", 7, 0, 7, kProfile,
                "Object snap ignores, sum of: 1 hatches, 2 negative z, 4 ends of dimension extension lines"),
        integer("AUTOSNAP", 63, 0, 63, kProfile,
                "Snap and tracking aids, sum of: 1 marker, 2 tip, 4 magnet, 8 polar, 16 object snap tracking, 32 tips"),
        toggle("AUTOTRACKING", 1, kProfile, "Object snap tracking"),
        integer("TRACKPATH", 0, 0, 3, kProfile, "How tracking lines are shown"),
        integer("APERTURE", 10, 1, 50, kProfile, "Size of the object snap target in pixels")
            .prompt("Object snap target height (1-50 pixels)"),
        integer("DYNMODE", 3, -3, 3, kProfile,
                "Input boxes at the cursor: 1 pointer, 2 dimensions; negative: off for now"),
        toggle("DYNPICOORDS", 0, kProfile, "Second point in the pointer box relative (0) or absolute (1)"),
        integer("DRAGMODE", 2, 0, 2, kProfile, "Dragged previews: 0 off, 1 on request, 2 always").own(),
        toggle("BLIPMODE", 0, kProfile, "Marker crosses at picked points").prompt("Enter mode [ON/OFF]"),
        toggle("TEMPOVERRIDES", 1, kProfile, "Keys that override a drafting aid while held"),

        // How commands work
        toggle("EDGEMODE", 0, kProfile, "TRIM and EXTEND take edges as if they were longer"),
        integer("PROJMODE", 1, 0, 2, kProfile, "TRIM and EXTEND project: 0 not, 1 to the UCS, 2 to the view"),
        toggle("TRIMMODE", 1, kProfile, "FILLET and CHAMFER trim the objects"),
        integer("OFFSETGAPTYPE", 0, 0, 2, kProfile, "Corners of offset polylines: 0 extended, 1 round, 2 bevelled"),
        toggle("COPYMODE", 0, kProfile, "COPY ends after one copy (1) or repeats (0)"),
        integer("DELOBJ", 3, -3, 3, kProfile,
                "Sources of made objects: 0 kept, 1 profile curves removed, 2 paths too, 3 for solids only; "
                "negative: asked"),
        toggle("PEDITACCEPT", 0, kProfile, "PEDIT converts objects without asking"),
        integer("EXPERT", 0, 0, 5, kSession, "How many kinds of are-you-sure questions are left out"),
        toggle("CMDECHO", 1, kSession, "Prompts are shown while LISP runs commands"),
        toggle("NOMUTT", 0, kSession, "Messages are kept back"),
        toggle("TEXTEVAL", 0, kSession, "LISP expressions in typed text are evaluated"),
        toggle("CMDDIA", 1, kProfile, "Commands open dialogs"),
        toggle("FILEDIA", 1, kProfile, "Commands open file dialogs; 0: file names are typed"),
        toggle("LISPINIT", 1, kProfile, "LISP functions and variables end with the drawing"),
        integer("MENUECHO", 0, 0, 15, kSession, "What menus echo"),
    };
}

}  // namespace kova::engine::rows
