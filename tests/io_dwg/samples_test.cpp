// Drawings of other programs, as they stand beside the checkout as DWG and DXF: both must give the same drawing.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "engine/drawing.hpp"
#include "io/dwg/dwg_load.hpp"
#include "io/dxf/dxf_load.hpp"
#include "io/native/native_file.hpp"
#include "io_dwg/drawing_difference.hpp"
#include "kdraw/database.hpp"
#include "kdraw/decoder.hpp"

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
        for (const std::string& line : result.lines) ADD_FAILURE() << path.filename() << ": " << line;
        ASSERT_EQ(io::dxf::loadDxf(twin.string(), fromDxf), "");
        // Objects that this program keeps as they came: each format has its own form of them.
        const std::vector<std::string> found = differences(fromDwg, fromDxf, {"objectDictionary", "nextHandle"});
        EXPECT_TRUE(found.empty()) << path.filename() << ": " << found.size() << " differences (DWG | DXF)" << listed(found);
    }
    EXPECT_GE(compared, 20);
}

}  // namespace kova::test
