// What new objects take, the settings of single drawing commands, and the hatch settings.
#include "engine/model/drawing.hpp"
#include "engine/sysvars/rows.hpp"
#include "math/angles.hpp"

namespace kova::engine::rows {

namespace {

std::string quotedName(std::string_view text) { return " \"" + std::string(text) + "\"."; }

/// Reads and sets one of the drawing's current styles; only records of the table are taken.
template <auto kTable, auto kCurrent>
SysVarValue currentStyle(const Drawing& d) {
    return (d.*kCurrent).str();
}
template <auto kTable, auto kCurrent>
std::string setCurrentStyle(Drawing& d, const SysVarValue& value, std::string_view kind) {
    const std::string& text = std::get<std::string>(value);
    const auto* record = (d.*kTable).find(Name(text));
    if (record == nullptr) return "Unknown " + std::string(kind) + quotedName(text);
    d.*kCurrent = record->name;
    return {};
}

std::string setCurrentLayer(Drawing& d, const SysVarValue& value) {
    const std::string& text = std::get<std::string>(value);
    const Layer* layer = d.layers.find(Name(text));
    if (layer == nullptr) return "Unknown layer" + quotedName(text);
    if (layer->frozen) return "A frozen layer cannot be current:" + quotedName(text);
    d.currentLayer = layer->name;
    return {};
}

std::string setCurrentColor(Drawing& d, const SysVarValue& value) {
    const std::optional<Color> color = parseColor(std::get<std::string>(value));
    if (!color) return "Invalid color. Enter ByLayer/ByBlock/1-255:";
    d.currentColor = *color;
    return {};
}

std::string setCurrentLinetype(Drawing& d, const SysVarValue& value) {
    const std::string& text = std::get<std::string>(value);
    const Linetype* linetype = d.loadLinetype(Name(text));
    if (linetype == nullptr) return "Unknown linetype" + quotedName(text);
    d.currentLinetype = linetype->name;
    return {};
}

std::string setTransparency(Drawing& d, const SysVarValue& value) {
    std::string text = std::get<std::string>(value);
    if (equalNoCase(text, "ByLayer")) {
        text = "ByLayer";
    } else if (equalNoCase(text, "ByBlock")) {
        text = "ByBlock";
    } else {
        int percent = -1;
        const auto result = std::from_chars(text.data(), text.data() + text.size(), percent);
        if (result.ec != std::errc{} || result.ptr != text.data() + text.size() || percent < 0 || percent > 90)
            return "Invalid value. Enter ByLayer/ByBlock/0-90:";
        text = std::to_string(percent);
    }
    d.stringVariables["CETRANSPARENCY"] = text;
    return {};
}

std::string setPlotStyle(Drawing& d, const SysVarValue& value) {
    const std::string& text = std::get<std::string>(value);
    std::string& current = d.stringVariables["CPLOTSTYLE"];
    if (equalNoCase(text, current)) return {};
    // Drawings whose plot styles follow the colours have no current plot style to choose.
    if (text.empty() || sysVarInt(d, "PSTYLEMODE", 1) != 0) return "Cannot set CPLOTSTYLE to that value.";
    current = text;
    return {};
}

std::string setAnnotationScale(Drawing& d, const SysVarValue& value) {
    const std::string& text = std::get<std::string>(value);
    const AnnotationScale* scale = d.annotationScales.find(Name(text));
    if (scale == nullptr) return "Unknown annotation scale" + quotedName(text);
    d.stringVariables["CANNOSCALE"] = scale->name.str();
    return {};
}

SysVarValue annotationScaleValue(const Drawing& d) {
    const AnnotationScale* scale = d.annotationScales.find(Name(sysVarString(d, "CANNOSCALE", "1:1")));
    if (scale == nullptr || !(scale->drawingUnits > 0.0) || !(scale->paperUnits > 0.0)) return 1.0;
    return scale->paperUnits / scale->drawingUnits;
}

std::string setHatchName(Drawing& d, const SysVarValue& value) {
    const std::string& text = std::get<std::string>(value);
    std::string name = text;
    if (!text.empty() && !equalNoCase(text, "SOLID") && !text.starts_with('_')) {
        const HatchPattern* pattern = d.findHatchPattern(Name(text));
        if (pattern == nullptr) return "Unknown pattern" + quotedName(text);
        name = pattern->name.str();
    }
    d.stringVariables["HPNAME"] = name;
    return {};
}

bool isWeightOfObjects(const SysVarValue& value) {
    constexpr int codes[] = {-3, -2, -1, 0,  5,  9,  13,  15,  18,  20,  25,  30,  35, 40,
                             50, 53, 60, 70, 80, 90, 100, 106, 120, 140, 158, 200, 211};
    return std::find(std::begin(codes), std::end(codes), std::get<std::int32_t>(value)) != std::end(codes);
}

bool isWidth(const SysVarValue& value) { return isWeightOfObjects(value) && std::get<std::int32_t>(value) >= 0; }

bool isPointMode(const SysVarValue& value) {
    const std::int32_t mode = std::get<std::int32_t>(value);
    return (mode & 31) <= 4 && mode >= 0 && mode <= 100;
}

bool isSomeSize(const SysVarValue& value) { return std::get<std::int32_t>(value) != 0; }

}  // namespace

std::vector<SysVarDef> objectVariables() {
    return {
        // Properties
        string("CLAYER", "0", saved::Header, "Current layer")
            .code(8)
            .get([](const Drawing& d) -> SysVarValue { return d.currentLayer.str(); })
            .set(setCurrentLayer),
        string("CECOLOR", "BYLAYER", saved::Header, "Color of new objects")
            .code(62)
            .get([](const Drawing& d) -> SysVarValue { return colorText(d.currentColor); })
            .set(setCurrentColor),
        string("CELTYPE", "ByLayer", saved::Header, "Linetype of new objects")
            .code(6)
            .get([](const Drawing& d) -> SysVarValue { return d.currentLinetype.str(); })
            .set(setCurrentLinetype),
        integer("CELWEIGHT", -1, -3, 211, kHeader,
                "Lineweight of new objects in hundredths of a millimetre; -1 ByLayer, -2 ByBlock, -3 default")
            .code(370)
            .accepts(isWeightOfObjects),
        positive("CELTSCALE", 1.0, kHeader, "Linetype scale of new objects").code(40),
        string("CETRANSPARENCY", "ByLayer", kDrawing, "Transparency of new objects: ByLayer, ByBlock or 0-90 percent")
            .set(setTransparency),
        string("CPLOTSTYLE", "ByColor", kDrawing, "Plot style of new objects").set(setPlotStyle),
        string("CMATERIAL", "ByLayer", kDrawing, "Material of new objects"),
        string("CANNOSCALE", "1:1", kDrawing, "Current annotation scale").set(setAnnotationScale),
        real("CANNOSCALEVALUE", 1.0, saved::Nowhere, "Current annotation scale as a factor")
            .readOnly()
            .get(annotationScaleValue),
        string("TEXTSTYLE", "Standard", saved::Header, "Style of new texts")
            .code(7)
            .get(currentStyle<&Drawing::textStyles, &Drawing::currentTextStyle>)
            .set([](Drawing& d, const SysVarValue& v) {
                return setCurrentStyle<&Drawing::textStyles, &Drawing::currentTextStyle>(d, v, "text style");
            }),
        string("CTABLESTYLE", "Standard", saved::Nowhere, "Style of new tables")
            .get(currentStyle<&Drawing::tableStyles, &Drawing::currentTableStyle>)
            .set([](Drawing& d, const SysVarValue& v) {
                return setCurrentStyle<&Drawing::tableStyles, &Drawing::currentTableStyle>(d, v, "table style");
            }),
        string("CMLEADERSTYLE", "Standard", saved::Nowhere, "Style of new multileaders")
            .get(currentStyle<&Drawing::mleaderStyles, &Drawing::currentMLeaderStyle>)
            .set([](Drawing& d, const SysVarValue& v) {
                return setCurrentStyle<&Drawing::mleaderStyles, &Drawing::currentMLeaderStyle>(d, v,
                                                                                               "multileader style");
            }),
        real("ELEVATION", 0.0, kHeader, "Z of new objects").code(40),
        real("THICKNESS", 0.0, kHeader, "Extrusion of new flat objects").code(40),
        integer("LWDEFAULT", 25, 0, 211, kProfile, "Lineweight that stands for \"default\"").accepts(isWidth),
        toggle("LWUNITS", 1, kProfile, "Lineweights shown in 0 inches, 1 millimetres"),

        // Sizes that commands take as defaults
        positive("TEXTSIZE", 2.5, kHeader, "Height of new texts in styles without one").code(40),
        size("PLINEWID", 0.0, kHeader, "Width of new polylines").code(40),
        positive("TRACEWID", 1.0, kHeader, "Width of new traces").code(40),
        size("FILLETRAD", 0.0, kHeader, "Radius of FILLET").code(40),
        size("CHAMFERA", 0.0, kHeader, "First distance of CHAMFER").code(40),
        size("CHAMFERB", 0.0, kHeader, "Second distance of CHAMFER").code(40),
        size("CHAMFERC", 0.0, kHeader, "Length of CHAMFER by length and angle").code(40),
        angle("CHAMFERD", 0.0, kHeader, "Angle of CHAMFER by length and angle").code(40),
        toggle("CHAMMODE", 0, kDrawing, "CHAMFER by two distances (0) or by length and angle (1)"),
        real("OFFSETDIST", 1.0, kDrawing, "Distance of OFFSET; negative: through a point"),
        size("CIRCLERAD", 0.0, kDrawing, "Radius that CIRCLE offers; 0: none"),
        size("DONUTID", 0.5, kDrawing, "Inside diameter of DONUT"),
        positive("DONUTOD", 1.0, kDrawing, "Outside diameter of DONUT"),
        integer("POLYSIDES", 4, 3, 1024, kDrawing, "Number of sides of POLYGON"),
        positive("SKETCHINC", 1.0, kHeader, "Step of SKETCH").code(40),
        integer("SKPOLY", 0, 0, 2, kHeader, "SKETCH makes 0 lines, 1 a polyline, 2 a spline").code(70),
        size("MLEADERSCALE", 1.0, kDrawing, "Size factor of multileaders; 0: from viewport or annotation scale"),
        string("CMLSTYLE", "Standard", kHeader, "Style of new multilines").code(2),
        integer("CMLJUST", 0, 0, 2, kHeader, "Justification of multilines: 0 top, 1 zero, 2 bottom").code(70),
        real("CMLSCALE", 20.0, kHeader, "Scale of multilines").code(40),
        string("INSNAME", "", kDrawing, "Block name that INSERT offers"),

        // Kinds of objects
        toggle("PLINEGEN", 0, kHeader, "Linetypes of new polylines run through their vertices").code(70),
        integer("PLINETYPE", 2, 0, 2, kProfile, "Kind of polylines made: 0 heavy, 1 light, 2 light, also on opening"),
        toggle("PELLIPSE", 0, kHeader, "ELLIPSE makes 0 an ellipse, 1 a polyline").code(70),
        integer("PDMODE", 0, 0, 100, kHeader,
                "Look of points: 0 dot, 1 none, 2 plus, 3 cross, 4 tick; added 32 circle, 64 square, 96 both")
            .code(70)
            .accepts(isPointMode)
            .looks(),
        real("PDSIZE", 0.0, kHeader, "Size of points; 0: 5 % of the view, negative: percent of the view")
            .code(40)
            .looks(),
        toggle("MIRRTEXT", 0, kHeader, "MIRROR turns texts round (1) or keeps them readable (0)").code(70),
        integer("SPLINESEGS", 8, -32768, 32767, kHeader, "Segments of a spline-fit stretch; negative: arcs are fitted")
            .code(70)
            .accepts(isSomeSize),
        toggle("SPLFRAME", 0, kHeader, "Control frames of splines shown").code(70).looks(),
        integer("SPLINETYPE", 6, 5, 6, kHeader, "Spline curves of PEDIT: 5 quadratic, 6 cubic").code(70),
        integer("SPLDEGREE", 3, 1, 5, kSession, "Degree of new splines by control points"),
        integer("SPLKNOTS", 0, 0, 2, kSession, "Knots of new fit splines: 0 chord, 1 square root, 2 uniform"),
        toggle("SPLMETHOD", 0, kSession, "SPLINE asks for 0 fit points, 1 control points"),
        integer("SURFTAB1", 6, 2, 32766, kHeader, "Divisions of meshes along M").code(70),
        integer("SURFTAB2", 6, 2, 32766, kHeader, "Divisions of meshes along N").code(70),
        integer("SURFTYPE", 6, 5, 8, kHeader, "Smooth surface of PEDIT: 5 quadratic, 6 cubic, 8 Bezier").code(70),
        integer("SURFU", 6, 0, 200, kHeader, "Density of smooth surfaces along M").code(70),
        integer("SURFV", 6, 0, 200, kHeader, "Density of smooth surfaces along N").code(70),

        // Hatches
        string("HPNAME", "ANSI31", kDrawing, "Pattern of HATCH").own().set(setHatchName),
        angle("HPANG", 0.0, kHeader, "Angle of hatch patterns").code(50),
        positive("HPSCALE", 1.0, kHeader, "Scale of hatch patterns").code(40),
        positive("HPSPACE", 1.0, kDrawing, "Distance of lines of user-defined patterns"),
        toggle("HPDOUBLE", 0, kDrawing, "User-defined patterns crossed"),
        integer("HPISLANDDETECTION", 1, 0, 2, kDrawing, "Islands in hatches: 0 normal, 1 outer, 2 ignored"),
        point("HPORIGIN", {0, 0, 0}, kDrawing, "Origin of hatch patterns"),
        toggle("HPASSOC", 1, kProfile, "Hatches follow their boundary"),
        realRange("HPGAPTOL", 0.0, 0.0, 5000.0, kProfile, "Largest gap in a boundary that is taken as closed"),
        toggle("HPINHERIT", 0, kProfile, "Inherited hatches take the new origin (0) or that of their source (1)"),
        integer("HPORIGINMODE", 0, 0, 5, kProfile,
                "Patterns start at 0 HPORIGIN, 1 bottom left, 2 bottom right, 3 top right, 4 top left, 5 center of the "
                "boundary's box"),
        realRange("HPMAXLINES", 1000000.0, 100.0, 10000000.0, kProfile, "Most lines of one hatch"),
        toggle("HPQUICKPREVIEW", 1, kProfile, "Preview of hatches while picking"),
        integer("HPDRAWORDER", 3, 0, 4, kProfile,
                "Drawing order of hatches: 0 as made, 1 back, 2 front, 3 behind and 4 before their boundary"),
        toggle("HPSEPARATE", 0, kProfile, "Several areas become several hatches"),
        toggle("HPBOUND", 1, kProfile, "BOUNDARY makes 0 regions, 1 polylines"),
        string("HPCOLOR", "", kDrawing, "Color of new hatches; empty: the current color"),
        string("HPLAYER", "", kDrawing, "Layer of new hatches; empty: the current layer"),
        string("HPTRANSPARENCY", "", kDrawing, "Transparency of new hatches; empty: the current one"),
    };
}

}  // namespace kova::engine::rows
