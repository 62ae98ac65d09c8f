// Drawings of other programs, as they stand beside the checkout as DWG and DXF: both must give the same drawing.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "engine/drawing.hpp"
#include "io/dwg/dwg_load.hpp"
#include "io/dxf/dxf_load.hpp"
#include "io/native/native_file.hpp"
#include "kdraw/database.hpp"
#include "kdraw/decoder.hpp"

namespace kova::test {

namespace fs = std::filesystem;
using nlohmann::json;

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

json jsonOf(const engine::Drawing& drawing) { return json::parse(io::native::nativeText(drawing)); }

bool sameNumber(double a, double b) { return std::abs(a - b) <= 1e-9 * std::max({1.0, std::abs(a), std::abs(b)}); }

/// A list whose items have handles or names, by these.
std::map<std::string, const json*> keyed(const json& list) {
    std::map<std::string, const json*> map;
    for (const json& item : list)
        for (const char* key : {"handle", "name"})
            if (item.is_object() && item.contains(key)) {
                map.emplace(item[key].dump(), &item);
                break;
            }
    if (map.size() != list.size()) map.clear();
    return map;
}

/// What differs, a line each; numbers may differ by 1e-9.
void compare(const std::string& path, const json& a, const json& b, std::vector<std::string>& out) {
    const auto shown = [](const json& value) { return value.dump().substr(0, 80); };
    if (a.is_number() && b.is_number()) {
        if (!sameNumber(a.get<double>(), b.get<double>())) out.push_back(path + ": " + shown(a) + " | " + shown(b));
    } else if (a.is_object() && b.is_object()) {
        for (const auto& [key, value] : a.items()) {
            if (b.contains(key))
                compare(path + "/" + key, value, b[key], out);
            else
                out.push_back(path + "/" + key + ": " + shown(value) + " | missing");
        }
        for (const auto& [key, value] : b.items())
            if (!a.contains(key)) out.push_back(path + "/" + key + ": missing | " + shown(value));
    } else if (a.is_array() && b.is_array()) {
        const auto left = keyed(a);
        const auto right = keyed(b);
        if (!left.empty() && !right.empty()) {
            for (const auto& [key, value] : left) {
                const auto found = right.find(key);
                if (found == right.end())
                    out.push_back(path + "[" + key + "]: " + shown(*value) + " | missing");
                else
                    compare(path + "[" + key + "]", *value, *found->second, out);
            }
            for (const auto& [key, value] : right)
                if (left.find(key) == left.end()) out.push_back(path + "[" + key + "]: missing | " + shown(*value));
            return;
        }
        if (a.size() != b.size())
            out.push_back(path + ": " + std::to_string(a.size()) + " | " + std::to_string(b.size()) + " items: " + shown(a) +
                          " | " + shown(b));
        for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
            compare(path + "[" + std::to_string(i) + "]", a[i], b[i], out);
    } else if (a != b) {
        out.push_back(path + ": " + shown(a) + " | " + shown(b));
    }
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
        std::vector<std::string> differences;
        json left = jsonOf(fromDwg);
        json right = jsonOf(fromDxf);
        // Objects that this program keeps as they came: each format has its own form of them.
        for (json* drawing : {&left, &right})
            for (const char* member : {"objectDictionary", "nextHandle"}) drawing->erase(member);
        compare("", left, right, differences);
        std::string list;
        for (std::size_t i = 0; i < std::min<std::size_t>(differences.size(), 60); ++i) list += "\n  " + differences[i];
        EXPECT_TRUE(differences.empty()) << path.filename() << ": " << differences.size() << " differences (DWG | DXF)" << list;
    }
    EXPECT_GE(compared, 20);
}

}  // namespace kova::test
