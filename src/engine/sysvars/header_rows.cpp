// Values of drawing files that this program has no other use for: they are kept and given back.
#include "engine/model/drawing.hpp"
#include "engine/sysvars/rows.hpp"
#include "math/angles.hpp"

namespace kova::engine::rows {

std::vector<SysVarDef> headerVariables() {
    return {
        // Shading and hidden lines
        integer("SHADEDGE", 3, 0, 3, kHeader, "Edges of shaded faces").code(70),
        integer("SHADEDIF", 70, 0, 100, kHeader, "Share of diffuse light in percent").code(70),
        integer("HIDETEXT", 1, 0, 2, kHeader, "Texts are hidden like objects").code(280),
        integer("HALOGAP", 0, 0, 100, kHeader, "Gap where a line passes behind another, in percent of a unit")
            .code(280),
        integer("OBSCOLOR", 257, 0, 257, kHeader, "Color of hidden lines; 257: as the object").code(70),
        integer("OBSLTYPE", 0, 0, 11, kHeader, "Linetype of hidden lines; 0: not shown").code(280),
        integer("INTERSECTIONCOLOR", 257, 0, 257, kHeader, "Color of lines of intersection; 257: as the object")
            .code(70),
        toggle("INTERSECTIONDISPLAY", 0, kHeader, "Lines of intersection shown").code(290),
        integer("CSHADOW", 0, 0, 3, kHeader, "Shadows of new objects").code(280),
        real("SHADOWPLANELOCATION", 0.0, kHeader, "Height of the ground for shadows").code(40),
        colorIndex("INTERFERECOLOR", 1, 0, kHeader, "Color of interference bodies").code(62),
        integer("ENDCAPS", 0, 0, 3, kHeader, "Ends of lines with a width").code(280),
        integer("JOINSTYLE", 0, 0, 3, kHeader, "Joints of lines with a width").code(280),

        // Cameras, walking, light, place on the earth
        toggle("CAMERADISPLAY", 0, kHeader, "Cameras shown").code(290),
        real("CAMERAHEIGHT", 0.0, kHeader, "Height of new cameras").code(40),
        realRange("STEPSPERSEC", 2.0, 1.0, 30.0, kHeader, "Steps in a second when walking").code(40),
        realRange("STEPSIZE", 50.0, 1e-6, 1e6, kHeader, "Length of a step when walking").code(40),
        toggle("LIGHTGLYPHDISPLAY", 1, kHeader, "Lights shown").code(280),
        toggle("TILEMODELIGHTSYNCH", 1, kHeader, "Lighting is the same in all viewports").code(280),
        integer("LIGHTINGUNITS", 2, 0, 2, kDrawing, "Units of light"),
        real("LATITUDE", 37.795, kHeader, "Latitude of the drawing in degrees").code(40),
        real("LONGITUDE", -122.394, kHeader, "Longitude of the drawing in degrees").code(40),
        real("NORTHDIRECTION", 0.0, kHeader, "Direction of north from the y axis").code(40),
        integer("TIMEZONE", -8000, -12000, 13000, kHeader, "Time zone in thousandths of an hour").code(70),

        // Solids and surfaces
        integer("SOLIDHIST", 0, 0, 1, kHeader, "New solids keep their history").code(280),
        integer("SHOWHIST", 1, 0, 2, kHeader, "History of solids shown").code(280),
        positive("PSOLWIDTH", 5.0, kHeader, "Width of new wall solids").code(40),
        positive("PSOLHEIGHT", 80.0, kHeader, "Height of new wall solids").code(40),
        angle("LOFTANG1", math::kPi / 2.0, kHeader, "Draft angle at the first section of lofts").code(40),
        angle("LOFTANG2", math::kPi / 2.0, kHeader, "Draft angle at the last section of lofts").code(40),
        real("LOFTMAG1", 0.0, kHeader, "Magnitude of the draft at the first section").code(40),
        real("LOFTMAG2", 0.0, kHeader, "Magnitude of the draft at the last section").code(40),
        integer("LOFTPARAM", 7, 0, 15, kHeader, "Shape of lofts").code(70),
        integer("LOFTNORMALS", 1, 0, 6, kHeader, "Normals of lofts at their sections").code(280),
        real("3DDWFPREC", 2.0, kHeader, "Precision of 3-D DWF output").code(40),

        // Paper space twins, stacked text, the rest
        real("PSVPSCALE", 0.0, kHeader, "View scale of new viewports; 0: fit").code(40),
        real("PELEVATION", 0.0, kHeader, "Elevation in paper space").code(40),
        toggle("PLIMCHECK", 0, kHeader, "Limits are checked in paper space").code(70),
        point("PLIMMIN", {0, 0, 0}, kHeader, "Lower left limit of paper space").code(10),
        point("PLIMMAX", {420, 297, 0}, kHeader, "Upper right limit of paper space").code(10),
        point("PINSBASE", {0, 0, 0}, kHeader, "Insertion base point of paper space").code(10),
        integer("UCSORTHOVIEW", 0, 0, 6, kHeader, "Orthographic kind of the current UCS").code(70),
        integer("PUCSORTHOVIEW", 0, 0, 6, kHeader, "Orthographic kind of the UCS of paper space").code(70),
        integer("TSTACKALIGN", 1, 0, 2, kHeader, "Alignment of stacked text"),
        integer("TSTACKSIZE", 70, 25, 125, kHeader, "Size of stacked text in percent"),
        toggle("REALWORLDSCALE", 1, kHeader, "Materials are scaled with the drawing's unit").code(290),
        integer("LAYEREVAL", 0, 0, 2, kDrawing, "When new layers are told of"),
        integer("LAYERNOTIFY", 0, 0, 63, kDrawing, "Where new layers are told of"),
        toggle("EXTNAMES", 1, kHeader, "Names of up to 255 characters").code(290),
        toggle("OLESTARTUP", 0, kHeader, "Programs of embedded objects are started for plotting").code(290),
        toggle("DIMTXTDIRECTION", 0, kHeader, "Dimension text reads from right to left").code(70),
        real("DIMMZF", 100.0, kHeader, "Factor below which the subunit of lengths is used").code(40),
        string("DIMMZS", "", kHeader, "Subunit of lengths").code(1),
        real("DIMALTMZF", 100.0, kHeader, "Factor below which the subunit of alternate units is used").code(40),
        string("DIMALTMZS", "", kHeader, "Subunit of alternate units").code(1),
    };
}

}  // namespace kova::engine::rows
