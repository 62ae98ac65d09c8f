#include "kdraw/database/classes.hpp"

#include "kdraw/groups/dxf_fields.hpp"

namespace kdraw {

namespace {

constexpr std::size_t kMaxClasses = 32768;

struct Release {
    const char* name;
    std::int32_t version, maintenance;
};
/// The releases that introduced the classes, as files have them.
constexpr Release kReleases[] = {
    {"ACDBDICTIONARYWDFLT", 22, 42},
    {"ACDBPLACEHOLDER", 22, 42},
    {"LAYOUT", 22, 42},
    {"DICTIONARYVAR", 20, 0},
    {"TABLESTYLE", 25, 20},
    {"MATERIAL", 23, 14},
    {"VISUALSTYLE", 26, 0},
    {"SCALE", 27, 1},
    {"MLEADERSTYLE", 33, 329},
    {"CELLSTYLEMAP", 27, 1},
    {"SORTENTSTABLE", 20, 0},
    {"SPATIAL_FILTER", 20, 0},
    {"PLOTSETTINGS", 22, 42},
    {"IMAGE", 20, 0},
    {"IMAGEDEF", 20, 0},
    {"IMAGEDEF_REACTOR", 20, 0},
    {"RASTERVARIABLES", 20, 0},
    {"WIPEOUT", 33, 329},
    {"WIPEOUTVARIABLES", 25, 0},
    {"MULTILEADER", 33, 329},
    {"ACAD_TABLE", 25, 20},
    {"ARC_DIMENSION", 25, 20},
    {"HELIX", 26, 0},
    {"MESH", 29, 0},
    {"DBCOLOR", 23, 14},
    {"PDFDEFINITION", 26, 0},
    {"PDFUNDERLAY", 26, 0},
    {"LARGE_RADIAL_DIMENSION", 25, 20},
};

}  // namespace

void ClassRecord::describe(Fields& f) {
    if (f.dxf()) {
        f.text(1, dxfName);
        f.text(2, cppName);
        f.text(3, application);
        f.bl(90, proxyFlags);
        f.bl(91, instances);
        f.b(280, wasZombie);
        bool entity = itemClass == kEntities;
        f.b(281, entity);
        itemClass = entity ? kEntities : kObjects;
        return;
    }
    f.bs(0, number);
    f.bs(0, proxyFlags);
    f.text(0, application);
    f.text(0, cppName);
    f.text(0, dxfName);
    f.b(0, wasZombie);
    f.bs(0, itemClass);
    if (f.before(Version::R2004)) return;
    f.bl(0, instances);
    f.bl(0, dwgVersion);
    f.bl(0, maintenance);
    f.bl(0, unknown1);
    f.bl(0, unknown2);
}

ClassRecord classOf(const ObjectKind& kind, std::uint16_t number) {
    ClassRecord record;
    record.number = number;
    record.proxyFlags = kind.proxyFlags;
    record.application = kind.application != nullptr ? kind.application : "ObjectDBX Classes";
    record.cppName = kind.cppClass;
    record.dxfName = kind.dxfName;
    record.itemClass = kind.entity ? ClassRecord::kEntities : ClassRecord::kObjects;
    for (const Release& release : kReleases)
        if (record.dxfName == release.name) {
            record.dwgVersion = release.version;
            record.maintenance = release.maintenance;
        }
    return record;
}

void describeClasses(Fields& f, std::vector<ClassRecord>& classes) {
    std::uint16_t last = static_cast<std::uint16_t>(ClassRecord::kFirst - 1 + classes.size());
    f.bs(0, last);
    int zero = 0;
    f.rc(0, zero);
    f.rc(0, zero);
    bool one = true;
    f.b(0, one);
    if (!f.reading()) {
        for (ClassRecord& record : classes) record.describe(f);
        return;
    }
    classes.clear();
    for (std::size_t n = ClassRecord::kFirst; n <= last && n < kMaxClasses && !f.failed(); ++n) {
        ClassRecord record;
        record.describe(f);
        if (!f.failed()) classes.push_back(std::move(record));
    }
}

bool readOldClass(Fields& f, std::vector<ClassRecord>& classes) {
    ClassRecord record;
    record.describe(f);
    if (f.failed() || classes.size() >= kMaxClasses) return false;
    classes.push_back(std::move(record));
    return true;
}

void writeClassGroups(std::vector<ClassRecord>& classes, DxfOutput& out) {
    DxfWriteFields fields(out);
    for (ClassRecord& record : classes) {
        out.word(0, "CLASS");
        record.describe(fields);
    }
}

void readClassGroups(std::vector<ClassRecord>& classes, DxfInput& in) {
    if (classes.size() >= kMaxClasses) return;
    DxfReadFields fields(in);
    ClassRecord record;
    record.number = static_cast<std::uint16_t>(ClassRecord::kFirst + classes.size());
    record.describe(fields);
    for (const Release& release : kReleases)
        if (record.dxfName == release.name) {
            record.dwgVersion = release.version;
            record.maintenance = release.maintenance;
        }
    if (!record.dxfName.empty()) classes.push_back(std::move(record));
}

}  // namespace kdraw
