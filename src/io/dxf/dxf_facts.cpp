#include "io/dxf/dxf_facts.hpp"

#include "engine/model/name.hpp"

namespace kova::io::dxf {

namespace {

constexpr std::string_view kObjects = "ObjectDBX Classes";

constexpr ClassRow kClasses[] = {
    {"LAYOUT", "AcDbLayout", kObjects, 0, false},
    {"MLEADERSTYLE", "AcDbMLeaderStyle", "ACDB_MLEADERSTYLE_CLASS", 4095, false},
    {"TABLESTYLE", "AcDbTableStyle", kObjects, 4095, false},
    {"MULTILEADER", "AcDbMLeader", "ACDB_MLEADER_CLASS", 1025, true},
    {"ACAD_TABLE", "AcDbTable", kObjects, 1025, true},
    {"ARC_DIMENSION", "AcDbArcDimension", kObjects, 1025, true},
    {"LARGE_RADIAL_DIMENSION", "AcDbRadialDimensionLarge", kObjects, 1025, true},
    {"HELIX", "AcDbHelix", kObjects, 1025, true},
    {"IMAGE", "AcDbRasterImage", kObjects, 2175, true},
    {"IMAGEDEF", "AcDbRasterImageDef", kObjects, 0, false},
    {"IMAGEDEF_REACTOR", "AcDbRasterImageDefReactor", kObjects, 1, false},
    {"RASTERVARIABLES", "AcDbRasterVariables", kObjects, 0, false},
    {"ACDBDICTIONARYWDFLT", "AcDbDictionaryWithDefault", kObjects, 0, false},
    {"ACDBPLACEHOLDER", "AcDbPlaceHolder", kObjects, 0, false},
    {"SPATIAL_FILTER", "AcDbSpatialFilter", kObjects, 0, false},
    {"WIPEOUT", "AcDbWipeout", "WipeOut", 2175, true},
    {"WIPEOUTVARIABLES", "AcDbWipeoutVariables", "WipeOut", 0, false},
    {"PLOTSETTINGS", "AcDbPlotSettings", kObjects, 0, false},
    {"SCALE", "AcDbScale", kObjects, 1153, false},
};

constexpr std::string_view kHeader[] = {
    "ACADVER",       "ACADMAINTVER", "HANDSEED",    "INSUNITS",   "LUNITS",    "LUPREC",    "AUNITS",    "AUPREC",
    "ANGBASE",       "ANGDIR",       "MEASUREMENT", "PSTYLEMODE", "EXTMIN",    "EXTMAX",    "LIMMIN",    "LIMMAX",
    "LIMCHECK",      "INSBASE",      "CLAYER",      "CELTYPE",    "CECOLOR",   "CELTSCALE", "ELEVATION", "THICKNESS",
    "TEXTSTYLE",     "DIMSTYLE",     "DIMTXSTY",    "DIMSAH",     "DIMBLK",    "DIMBLK1",   "DIMBLK2",   "DIMLDRBLK",
    "DIMLTYPE",      "DIMLTEX1",     "DIMLTEX2",    "CELWEIGHT",  "UCSNAME",   "UCSORG",    "UCSXDIR",   "UCSYDIR",
    "TILEMODE",      "CTAB",         "LTSCALE",     "TEXTSIZE",   "PDMODE",    "PDSIZE",    "FILLMODE",  "MIRRTEXT",
    "PLINEWID",      "SPLFRAME",     "SPLINESEGS",  "LWDISPLAY",  "PSLTSCALE", "MSLTSCALE", "FILLETRAD", "CHAMFERA",
    "CHAMFERB",      "TRACEWID",     "FACETRES",    "ATTMODE",    "ISOLINES",  "PLINEGEN",  "PELLIPSE",  "QTEXTMODE",
    "VISRETAIN",     "SURFTAB1",     "SURFTAB2",    "SORTENTS",   "INDEXCTL",  "DISPSILH",  "MAXACTVP",  "TREEDEPTH",
    "PROXYGRAPHICS", "SPLINETYPE",   "TEXTQLTY",    "SKPOLY",     "SKETCHINC", "OSMODE",    "SNAPANG",   "DIMSCALE",
    "DIMASZ",        "DIMTXT",       "DIMEXO",      "DIMEXE",     "DIMGAP",    "DIMDLE",    "DIMTAD",    "DIMDEC",
    "DIMTIH",        "DIMTOH",       "DIMLFAC",     "DIMRND",     "DIMDLI",    "DIMSE1",    "DIMSE2",    "DIMTOFL",
    "DIMJUST",       "HPSCALE",      "HPANG",       "TDCREATE",   "TDUCREATE", "TDUPDATE",  "TDUUPDATE", "TDINDWG",
    "TDUSRTIMER",    "USRTIMER",
};

constexpr std::int32_t kLineweights[] = {0,  5,  9,  13, 15, 18,  20,  25,  30,  35,  40,  50,
                                         53, 60, 70, 80, 90, 100, 106, 120, 140, 158, 200, 211};

constexpr std::string_view kApplications[] = {
    "ACAD",
    "KOVA_ASSOC",
    "KOVA_ANNOTATIVE",
    "KOVA_IMAGE",
    "KOVA_DYNBLOCK",
    "KOVA_REGION",
    "KOVA_MLINE_",
    "KOVA_DIM",
    "KOVA_TEXTMASK",
    "KOVA_ARRAY",
    "KOVA_HYPERLINK",
    "KOVA_GRADIENT",
    "KOVA_LEADERTEXT",
    "KOVA_TABLESTYLE",
    "KOVA_XCLIP",
    "KOVA_LEADERSTYLE",
    "KOVA_MLOWNSIZE",
    "KOVA_FIELDS",
};

constexpr long double kPi = 3.14159265358979323846264338327950288L;

}  // namespace

std::span<const ClassRow> classTable() { return kClasses; }
std::span<const std::string_view> headerVariables() { return kHeader; }
std::span<const std::string_view> registeredApplications() { return kApplications; }

bool isLineweight(std::int32_t lineweight) {
    if (lineweight >= -3 && lineweight < 0) return true;
    return std::binary_search(std::begin(kLineweights), std::end(kLineweights), lineweight);
}

std::int32_t nearestLineweight(std::int32_t lineweight) {
    if (lineweight < 0) return lineweight >= -3 ? lineweight : -1;
    const auto* above = std::lower_bound(std::begin(kLineweights), std::end(kLineweights), lineweight);
    if (above == std::end(kLineweights)) return 211;
    if (above == std::begin(kLineweights) || *above == lineweight) return *above;
    return lineweight - above[-1] < *above - lineweight ? above[-1] : *above;
}

std::string_view ownApplication(engine::EntityType type) {
    using enum engine::EntityType;
    switch (type) {
        case MText:
            return "KOVA_TEXTMASK";
        case Hatch:
            return "KOVA_GRADIENT";
        case Dimension:
            return "KOVA_DIM";
        case BlockReference:
            return "KOVA_DYNBLOCK";
        case Image:
            return "KOVA_IMAGE";
        case Leader:
            return "KOVA_LEADERTEXT";
        case MLine:
            return "KOVA_MLINE_DATA";
        case MLeader:
            return "KOVA_MLOWNSIZE";
        case Region:
            return "KOVA_REGION";
        default:
            return kOwnFallbackApplication;
    }
}

bool isReservedRootKey(std::string_view key) {
    constexpr std::string_view keys[] = {
        "ACAD_GROUP",        "ACAD_LAYOUT",        "ACAD_MLINESTYLE", "ACAD_MLEADERSTYLE",      "ACAD_TABLESTYLE",
        "ACAD_IMAGE_DICT",   "ACAD_PLOTSTYLENAME", "DWGPROPS",        "ACAD_PLOTSETTINGS",      "ACAD_SCALELIST",
        "ACAD_IMAGE_VARS",   "ACAD_MATERIAL",      "ACAD_COLOR",      "AcDbVariableDictionary", "ACAD_VISUALSTYLE",
        "ACAD_WIPEOUT_VARS", kDrawingKey,
    };
    return std::any_of(std::begin(keys), std::end(keys),
                       [&](std::string_view known) { return engine::equalNoCase(known, key); });
}

bool isOwnApplication(std::string_view application) {
    return application.size() > 5 && engine::equalNoCase(application.substr(0, 5), "KOVA_");
}

double radiansFromDegrees(double degrees) {
    return static_cast<double>(static_cast<long double>(degrees) * kPi / 180.0L);
}

bool radiansFromDegrees(std::string_view text, double& radians) {
    // A text of up to 17 digits names a double; only a longer one says more than that.
    std::size_t digits = 0;
    for (const char c : text) {
        if (c == 'e' || c == 'E') break;
        if (c >= '0' && c <= '9' && (digits > 0 || c != '0')) ++digits;
    }
    const char* const last = text.data() + text.size();
    if (digits <= 17) {
        double degrees = 0.0;
        const auto [end, error] = std::from_chars(text.data(), last, degrees);
        if (error != std::errc() || end != last) return false;
        radians = radiansFromDegrees(degrees);
        return true;
    }
    long double degrees = 0.0L;
    const auto [end, error] = std::from_chars(text.data(), last, degrees);
    if (error != std::errc() || end != last) return false;
    radians = static_cast<double>(degrees * kPi / 180.0L);
    return true;
}

std::size_t degreesText(double radians, char* out) {
    if (radians == 0.0) {
        out[0] = '0';
        out[1] = '.';
        out[2] = '0';
        return 3;
    }
    const long double wide = static_cast<long double>(radians) * 180.0L / kPi;
    const auto degrees = static_cast<double>(wide);
    char* end;
    // A double of degrees nearly always comes back as the same radians; only then is it short.
    if (radiansFromDegrees(degrees) == radians)
        end = std::to_chars(out, out + 40, degrees).ptr;
    else
        end = std::to_chars(out, out + 40, wide, std::chars_format::scientific, 20).ptr;
    if (std::find_if(out, end, [](char c) { return c == '.' || c == 'e'; }) == end) {
        *end++ = '.';
        *end++ = '0';
    }
    return static_cast<std::size_t>(end - out);
}

engine::Color colorOfRaw(std::int64_t value) {
    const auto raw = static_cast<std::uint32_t>(value);
    switch (raw >> 24) {
        case 0xC1:
            return engine::Color::byBlock();
        case 0xC2:
            return colorOfRgb(raw);
        case 0xC3:
            return engine::Color::fromBareIndex(static_cast<int>(raw & 0x1FF)).value_or(engine::Color());
        default:
            return engine::Color::byLayer();
    }
}

}  // namespace kova::io::dxf
