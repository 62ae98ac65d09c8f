// Drawings of other programs, as they stand beside the checkout as DWG and DXF: both must give the same drawing.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include <QTemporaryDir>

#include "engine/model/drawing.hpp"
#include "engine/entities/solid3d.hpp"
#include "io/dwg/dwg_load.hpp"
#include "io/dwg/dwg_save.hpp"
#include "io/dxf/dxf_load.hpp"
#include "io/native/native_file.hpp"
#include "io/dwg/drawing_difference.hpp"
#include "kdraw/database/database.hpp"
#include "kdraw/database/decoder.hpp"

namespace kova::test {

namespace fs = std::filesystem;

namespace {

fs::path samplesFolder() { return fs::path(KOVA_SOURCE_DIR) / "../shared/samples"; }

std::string bytesOf(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

std::vector<fs::path> dwgFiles() {
    std::vector<fs::path> files;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(samplesFolder() / "dwg", error))
        if (entry.path().extension() == ".dwg") files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

/// Where a drawing's two files do not hold the same.
struct KnownDifference {
    const char* file;  ///< beginning of its name
    const char* what;  ///< beginning of the difference
};
constexpr KnownDifference kKnown[] = {
    // Records of R2010 and later have no room for the size of a leader's annotation.
    {"Leader_201", "/entities[1838]/annotationWidth"},
    {"Leader_2010", "/entities[2525]/annotationWidth"},
    // This DXF was written with the leader drawn anew, with another hook line than in the DWG ...
    {"Leader_2010", "/entities[2525]/hookLine"},
    {"Leader_2010", "/entities[2525]/vertices[3]"},
    // ... and this one after a layer and an application had been added.
    {"Leader_2018", "/entities[1838]/layer"},
    {"Leader_2018", "/layers[\"0 @ 1\"]"},
    {"Leader_2018", "/appIds"},
    {"example_2018", "/appIds"},
    // The curve that stands for a helix is made anew when a DXF is written.
    {"Helix_2007", "/entities[447]/controlPoints"},
    {"Helix_2007", "/entities[447]/controlZ"},
    {"Helix_2007", "/entities[447]/knots"},
    // A curve that only comes near its fit points: the DWG has the points, the DXF the curve that its program chose.
    {"example_", "/entities[2196]/controlPoints"},
    {"example_", "/entities[2196]/knots"},
    // Solids are text in DXF before R2013, with the program's heading in all of them.
    {"example_20", "/entities[374]/modelerVersion"},
    {"example_20", "/entities[374]/sa"},
    {"example_20", "/entities[737]/modelerVersion"},
    {"example_20", "/entities[737]/sa"},
    {"example_20", "/entities[893]/modelerVersion"},
    {"example_20", "/entities[893]/sa"},
};

bool isKnown(const std::string& file, const std::string& difference) {
    return std::any_of(std::begin(kKnown), std::end(kKnown), [&](const KnownDifference& known) {
        return file.starts_with(known.file) && difference.starts_with(known.what);
    });
}

}  // namespace

TEST(DwgSamples, EveryRecordDecodes) {
    const std::vector<fs::path> files = dwgFiles();
    if (files.empty()) GTEST_SKIP() << "no samples beside the checkout";
    for (const fs::path& path : files) {
        kdraw::Database database;
        ASSERT_EQ(kdraw::decode(bytesOf(path), database), "") << path.filename();
        std::map<std::string, int> faults;
        for (const auto& skipped : database.skipped) ++faults["skipped type " + std::to_string(skipped.type)];
        for (const auto& uneven : database.uneven) {
            std::string name = "uneven type " + std::to_string(uneven.type);
            for (const auto& record : database.classes)
                if (record.number == uneven.type) name += " " + record.dxfName;
            ++faults[name];
        }
        for (const std::string& note : database.notes) ++faults[note];
        for (const auto& [what, count] : faults)
            ADD_FAILURE() << path.filename().string() << ": " << count << " x " << what;
        EXPECT_GT(database.objects.size(), 50u) << path.filename();
    }
}

TEST(DwgSamples, GiveTheSameDrawingAsTheirDxf) {
    const std::vector<fs::path> files = dwgFiles();
    if (files.empty()) GTEST_SKIP() << "no samples beside the checkout";
    int compared = 0;
    for (const fs::path& path : files) {
        const fs::path twin = samplesFolder() / "dxf" / (path.stem().string() + ".dxf");
        if (!fs::exists(twin)) continue;
        ++compared;
        engine::Drawing fromDwg;
        engine::Drawing fromDxf;
        const io::dwg::DwgLoadResult result = io::dwg::loadDwg(path.string(), fromDwg);
        ASSERT_TRUE(result.success) << path.filename() << ": " << result.message;
        for (const std::string& line : result.lines)
            EXPECT_TRUE(line.starts_with("Not kept: ") || line.ends_with(": 1 LIGHT.")) << path.filename() << ": " << line;
        ASSERT_EQ(io::dxf::loadDxf(twin.string(), fromDxf), "");
        // The two were saved one after the other.
        for (const char* time : {"TDCREATE", "TDUCREATE", "TDUPDATE", "TDUUPDATE", "TDEDITED", "TDUSRTIMER"})
            fromDwg.realVariables[time] = fromDxf.realVariables[time];
        // Objects that this program keeps as they came: each format has its own form of them.
        std::vector<std::string> found = differences(fromDwg, fromDxf, {"objectDictionary", "nextHandle"});
        std::erase_if(found, [&](const std::string& line) { return isKnown(path.filename().string(), line); });
        EXPECT_TRUE(found.empty()) << path.filename() << ": " << found.size() << " differences (DWG | DXF)"
                                   << listed(found);
    }
    EXPECT_GE(compared, 20);
}

/// Attributes, nested blocks, layouts, draw order, groups, clips, images, overrides, extended data of other programs.
TEST(DwgSamples, StayTheSameWhenSavedAgain) {
    const std::vector<fs::path> files = dwgFiles();
    if (files.empty()) GTEST_SKIP() << "no samples beside the checkout";
    const QTemporaryDir folder;
    const std::string path = folder.filePath("again.dwg").toStdString();
    std::size_t turn = 0;
    for (const fs::path& file : files) {
        engine::Drawing drawing;
        ASSERT_TRUE(io::dwg::loadDwg(file.string(), drawing).success) << file.filename();
        // Solids of R2000 are text, which no written version holds.
        std::vector<std::string> lost;
        for (engine::Entity& e : drawing.modelSpace())
            if (e.type() == engine::EntityType::Solid3D && static_cast<engine::Solid3DEntity&>(e).sab.empty())
                lost.push_back("/entities[" + std::to_string(e.handle()) + "]: ");
        constexpr const char* kVersions[] = {"R2010", "R2013", "R2018"};
        const char* version = kVersions[turn++ % std::size(kVersions)];
        io::dwg::DwgSaveReport report;
        ASSERT_EQ(io::dwg::saveDwg(drawing, path, version, &report), "") << file.filename();
        EXPECT_EQ(report.dropped, lost.size()) << file.filename();
        engine::Drawing again;
        const io::dwg::DwgLoadResult result = io::dwg::loadDwg(path, again);
        ASSERT_TRUE(result.success) << file.filename() << ": " << result.message;
        for (const std::string& line : result.lines) ADD_FAILURE() << file.filename() << ": " << line;
        std::vector<std::string> found = differences(drawing, again);
        std::erase_if(found, [&](const std::string& line) {
            for (const std::string& entity : lost)
                if (line.starts_with(entity) && line.ends_with("| missing")) return true;
            // References of kept records to objects that the drawing has in other forms have nothing to point to.
            return line.starts_with("/objectDictionary/") && line.find("/data[") != line.npos &&
                   line.ends_with("| \"0\"");
        });
        EXPECT_TRUE(found.empty()) << file.filename() << " as " << version << ": " << found.size()
                                   << " differences (opened | opened again)" << listed(found, 20);
    }
}

}  // namespace kova::test
