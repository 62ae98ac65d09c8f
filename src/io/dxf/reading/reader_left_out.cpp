// What a file holds and the drawing has no place for: it is counted by kind, and told in one line.
#include <algorithm>
#include <cmath>

#include "io/dxf/dxf_facts.hpp"
#include "io/dxf/reading/reader.hpp"

namespace kova::io::dxf {

namespace {

/// Objects that say nothing of their own: they repeat what other objects say, or only stand for a name.
constexpr std::string_view kDerivedObjects[] = {"DICTIONARY", "ACDBDICTIONARYWDFLT", "ACDBPLACEHOLDER", "FIELDLIST",
                                                "IMAGEDEF_REACTOR"};

/// Settings of files that are read elsewhere, that are made anew, name the file or the moment, or say how the last program showed it.
constexpr std::string_view kPassingSettings[] = {
    "ACADMAINTVER",  "ACADVER",      "AUTHOR",          "KEYWORDS",  "SUBJECT",    "TITLE",      "CMATERIAL",       "COORDS",    "DRAGVS",     "DWGCODEPAGE", "EXTMAX",
    "EXTMIN",        "FINGERPRINTGUID", "HANDLING",     "HANDSEED",  "INTERFEREOBJVS", "INTERFEREVPVS",
    "LASTSAVEDBY",   "MENU",         "OSMODE",         "PEXTMAX",         "PEXTMIN",   "REQUIREDVERSIONS", "TDCREATE", "TDINDWG",
    "TDUCREATE",     "TDUPDATE",     "TDUSRTIMER",      "TDUUPDATE", "TIMEZONE",   "VERSIONGUID", "VIEWCTR",
    "VIEWDIR",       "VIEWSIZE"};

/// What other settings hold in a drawing where nobody set them. Those that are not here hold nothing then: no text, or
/// zero.
struct UsualValue {
    std::string_view name;
    std::string_view values;  ///< parted by blanks
};
constexpr UsualValue kUsualValues[] = {
    {"3DDWFPREC", "2"},
    {"ATTDIA", "0 1"},
    {"ATTREQ", "1"},
    {"AXISUNIT", "0.5 10"},
    {"BLIPMODE", "0 1"},
    {"CAMERAHEIGHT", "0"},
    {"CEPSNTYPE", "0"},
    {"CMLJUST", "0"},
    {"CMLSCALE", "1 20"},
    {"CHAMFERC", "0.5 1 20 25"},
    {"CMLSTYLE", "Standard"},
    {"CENTEREXE", "0.12 3.5"},
    {"CENTERLTYPEFILE", "acad.lin acadiso.lin"},
    {"CVIEWDETAILSTYLE", "Metric50 Imperial24"},
    {"CVIEWSECTIONSTYLE", "Metric50 Imperial24"},
    {"DGNFRAME", "0 2"},
    {"DIMALTMZF", "100"},
    {"DELOBJ", "1 3"},
    {"DIMASO", "1"},
    {"DIMASSOC", "1 2"},
    {"DIMMZF", "100"},
    {"DIMFIT", "3"},
    {"DIMSHO", "0 1"},
    {"DIMUNIT", "2"},
    {"DRAGMODE", "2"},
    {"DWFFRAME", "0 2"},
    {"EXTNAMES", "1"},
    {"FASTZOOM", "1"},
    {"FLATLAND", "0"},
    {"GRIDUNIT", "0 0.5 1 10"},
    {"HIDETEXT", "0 1"},
    {"INTERFERECOLOR", "1"},
    {"INTERSECTIONCOLOR", "257"},
    {"LAYEREVAL", "1"},
    {"LAYERNOTIFY", "15"},
    {"LATITUDE", "37.795 37.7950"},
    {"LENSLENGTH", "50"},
    {"LIGHTGLYPHDISPLAY", "1"},
    {"LIGHTINGUNITS", "0 1 2"},
    {"LOFTANG1", "1.570796326794897 90"},
    {"LOFTANG2", "1.570796326794897 90"},
    {"LOFTNORMALS", "1"},
    {"LOFTPARAM", "7"},
    {"LONGITUDE", "-122.394 -122.3940"},
    {"MAXACTVP", "64"},
    {"MEASUREMENT", "0 1"},
    {"OBSCOLOR", "257"},
    {"OBSCUREDCOLOR", "257"},
    {"OLESTARTUP", "0"},
    {"PDFFRAME", "0 1 2"},
    {"PICKSTYLE", "1"},
    {"PINSBASE", "0"},
    {"PLIMMAX", "12 9 420 297"},
    {"PSOLHEIGHT", "4 80"},
    {"PSOLWIDTH", "0.25 5"},
    {"PSTYLEMODE", "0 1"},
    {"PUCSXDIR", "1 0"},
    {"PUCSYDIR", "0 1"},
    {"REALWORLDSCALE", "1"},
    {"REGENMODE", "1"},
    {"SECTIONTHICKNESSINC", "0.05 1"},
    {"SHADEDGE", "3"},
    {"SHADEDIF", "70"},
    {"SHOWHIST", "1"},
    {"SNAPUNIT", "0 0.5 1 10"},
    {"SOLIDHIST", "0 1"},
    {"STEPSIZE", "6 50"},
    {"STEPSPERSEC", "2"},
    {"SURFTYPE", "6"},
    {"SURFU", "6"},
    {"SURFV", "6"},
    {"TILEMODELIGHTSYNCH", "1"},
    {"TSTACKALIGN", "1"},
    {"TSTACKSIZE", "70"},
    {"UNITMODE", "0"},
    {"USRTIMER", "1"},
    {"WIPEOUTFRAME", "0 1 2"},
    {"WORLDVIEW", "1"},
    {"XCLIPFRAME", "0 2"},
    {"XEDIT", "1"},
};

/// True when a value is in a list: the same text, or nearly the same number.
bool isOneOf(const Tag& value, std::string_view list) {
    const std::string_view text = value.trimmed();
    const double number = value.real();
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(' '), list.size());
        const std::string_view usual = list.substr(0, end);
        const double usualNumber = parseReal(usual);
        if (engine::equalNoCase(usual, text) ||
            (usualNumber != 0.0 && std::abs(number - usualNumber) < 1e-6 * std::abs(usualNumber)))
            return true;
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return false;
}

/// No text, or a number that is zero.
bool isNothing(const Tag& value) {
    const std::string_view text = value.trimmed();
    return text.empty() || text.find_first_not_of("0.+-eE ") == text.npos;
}

}  // namespace

void Reader::noteUnreadObjects() {
    index_.eachUnread([&](const Record& record) {
        if (std::find(std::begin(kDerivedObjects), std::end(kDerivedObjects), record.type) != std::end(kDerivedObjects))
            return;
        const Tag* title = record.find(2);
        // Every file has this one, whether there are multilines or not.
        if (record.type == "MLINESTYLE" && title != nullptr && engine::equalNoCase(title->trimmed(), "Standard"))
            return;
        leaveOut(record.type);
    });
    leaveOut("extension dictionary of another object", sharedDictionaries_);
    for (const HeaderValue& value : header_)
        if (!isHeaderVariableRead(value.name)) noteSetting(value.name, value.tags.front());
    // A few have their names told.
    constexpr std::size_t kFew = 3;
    if (otherSettings_.size() > kFew)
        leaveOut("settings", otherSettings_.size());
    else
        for (const std::string& name : otherSettings_) leaveOut("setting " + name);
}

void Reader::noteSetting(std::string_view name, const Tag& value) {
    if (const engine::DimVariable* variable = engine::findDimVariable(name)) {
        // Most repeat the current style. Names of arrows are written in many ways.
        const engine::DimValue now = engine::dimValue(drawing_.effectiveDimStyle(), *variable);
        const double* number = std::get_if<double>(&now);
        const double stated = value.real();
        if (!own_ && number != nullptr && name != "DIMJOGANG" && std::abs(*number - stated) > 1e-9 * std::abs(stated))
            leaveOut("override of the dimension style");
        return;
    }
    if (isNothing(value) || name.starts_with("UCS") ||
        std::find(std::begin(kPassingSettings), std::end(kPassingSettings), name) != std::end(kPassingSettings))
        return;
    for (const UsualValue& usual : kUsualValues)
        if (usual.name == name && isOneOf(value, usual.values)) return;
    otherSettings_.insert(std::string(name));
}

void Reader::noteRecordData(const Record& record) {
    for (const Tag& tag : record.tags) {
        if (tag.code != 1001) continue;
        const std::string_view application = tag.trimmed();
        const bool known = isOwnApplication(application) || application.starts_with("ACAD_DSTYLE_") ||
                           (record.type == "LAYER" &&
                            (application == "AcCmTransparency" || application == "AcAecLayerStandard")) ||
                           (record.type == "STYLE" && application == "ACAD");
        if (known) continue;
        leaveOut("extended data of " + std::string(record.type));
        return;
    }
}

void Reader::noteCommonGroup(const Tag& tag) {
    switch (tag.code) {
        case 284:
            if (tag.integer() != 0) leaveOut("shadow mode of an entity");
            break;
        case 347:
            leaveOut("material of an entity");
            break;
        case 348:
            leaveOut("visual style of an entity");
            break;
        case 390:
            leaveOut("plot style of an entity");
            break;
        case 430:
            leaveOut("colour book name");
            break;
        default:
            break;
    }
}

}  // namespace kova::io::dxf
