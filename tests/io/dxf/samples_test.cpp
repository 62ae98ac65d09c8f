// Drawings of other programs, as they stand beside the checkout: nothing of them may get lost unsaid.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

#include "engine/model/drawing.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/entities/solid2d.hpp"
#include "engine/entities/solid3d.hpp"
#include "engine/entities/spline.hpp"
#include "io/dxf/dxf_load.hpp"
#include "io/dxf/dxf_save.hpp"

namespace kova::test {

namespace fs = std::filesystem;
using namespace engine;
using Counts = std::map<std::string, std::size_t>;

namespace {

fs::path samplesFolder() { return fs::path(KOVA_SOURCE_DIR) / "../shared/samples/dxf"; }

/// Counts records the plain way: pairs of lines, group 0 within BLOCKS and ENTITIES.
Counts recordsIn(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::string code;
    std::string value;
    std::string section;
    bool sectionNext = false;
    std::size_t linkedColumns = 0;
    bool inColumns = false;
    Counts counts;
    while (std::getline(file, code) && std::getline(file, value)) {
        const auto trim = [](std::string& s) {
            s.erase(0, s.find_first_not_of(" \t"));
            s.erase(s.find_last_not_of(" \t\r") + 1);
        };
        trim(code);
        trim(value);
        if (code == "2" && sectionNext) section = value;
        sectionNext = code == "0" && value == "SECTION";
        if (code == "0" && value == "EOF") break;
        if (code == "0" && (section == "BLOCKS" || section == "ENTITIES")) ++counts[value];
        // Columns that stand in entities of their own become part of the first one.
        if (code == "1000" && value == "ACAD_MTEXT_COLUMNS_BEGIN") inColumns = true;
        if (code == "1000" && value == "ACAD_MTEXT_COLUMNS_END") inColumns = false;
        if (code == "1005" && inColumns) ++linkedColumns;
    }
    for (const char* structure : {"SECTION", "ENDSEC", "BLOCK", "ENDBLK", "SEQEND", "VERTEX"}) counts.erase(structure);
    if (linkedColumns > 0) counts["MTEXT"] -= linkedColumns;
    return counts;
}

/// The record that an entity stands in, and the attributes that it carries.
void count(const EntityList& list, Counts& counts) {
    for (const Entity& e : list) {
        std::string name;
        switch (e.type()) {
            case EntityType::Polyline:
            case EntityType::Polyline3D:
            case EntityType::Mesh:
            case EntityType::Polyface:
                name = "polylines";
                break;
            case EntityType::Dimension:
                name = "dimensions";
                break;
            case EntityType::Solid2D:
                name = static_cast<const Solid2DEntity&>(e).trace ? "TRACE" : "SOLID";
                break;
            case EntityType::Solid3D: {
                const auto kind = static_cast<const Solid3DEntity&>(e).kind;
                name = kind == Solid3DEntity::BodyKind::Solid    ? "3DSOLID"
                       : kind == Solid3DEntity::BodyKind::Region ? "REGION"
                                                                 : "BODY";
                break;
            }
            case EntityType::Spline:
                name = static_cast<const SplineEntity&>(e).helix ? "HELIX" : "SPLINE";
                break;
            default:
                name = std::string(dxfName(e.type()));
                break;
        }
        ++counts[name];
        if (const auto* reference = dynamic_cast<const BlockReferenceEntity*>(&e))
            if (!reference->attributes.empty()) counts["ATTRIB"] += reference->attributes.size();
    }
}

Counts entitiesOf(const Drawing& d) {
    Counts counts;
    count(d.modelSpace(), counts);
    for (const auto& block : d.blocks()) count(block->entities, counts);
    for (const auto& layout : d.layouts()) count(layout->entities, counts);
    return counts;
}

/// Several records make one kind.
Counts merged(Counts counts) {
    const auto move = [&](const char* from, const char* to) {
        if (const auto found = counts.find(from); found != counts.end()) {
            counts[to] += found->second;
            counts.erase(from);
        }
    };
    move("LWPOLYLINE", "polylines");
    move("POLYLINE", "polylines");
    move("MESH", "polylines");
    for (const char* name : {"DIMENSION", "ARC_DIMENSION", "LARGE_RADIAL_DIMENSION"}) move(name, "dimensions");
    return counts;
}

std::vector<fs::path> samples() {
    std::vector<fs::path> files;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(samplesFolder(), error))
        if (entry.path().extension() == ".dxf") files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

std::string describe(const Counts& counts) {
    std::ostringstream out;
    for (const auto& [name, n] : counts) out << name << " " << n << ", ";
    return out.str();
}

}  // namespace

TEST(DxfSamples, EveryRecordIsReadOrSaid) {
    const auto files = samples();
    if (files.empty()) GTEST_SKIP() << "no sample drawings beside the checkout (" << samplesFolder() << ")";
    // What this program has no kind for.
    const std::set<std::string> foreign = {"LIGHT", "ACAD_PROXY_ENTITY"};
    for (const fs::path& path : files) {
        SCOPED_TRACE(path.filename().string());
        Drawing d;
        io::dxf::DxfLoadReport report;
        ASSERT_EQ(io::dxf::loadDxf(path.string(), d, &report), "");
        const Counts expected = merged(recordsIn(path));
        Counts found = entitiesOf(d);
        for (const auto& [name, n] : report.skipped.counts()) {
            EXPECT_TRUE(foreign.count(name) != 0) << n << " " << name << " were skipped";
            found[name] += n;
        }
        EXPECT_EQ(found, expected) << "read:     " << describe(found) << "\nexpected: " << describe(expected);
        EXPECT_EQ(report.skipped.empty() && report.leftOut.empty(), report.lines.empty());
    }
}

/// One drawing, saved by another program in several releases: it must be the same drawing each time.
TEST(DxfSamples, ReleasesOfOneDrawingAgree) {
    if (samples().empty()) GTEST_SKIP() << "no sample drawings beside the checkout (" << samplesFolder() << ")";
    std::string first;
    for (const char* release : {"2000", "2004", "2007", "2010", "2013", "2018"}) {
        SCOPED_TRACE(release);
        Drawing d;
        ASSERT_EQ(io::dxf::loadDxf((samplesFolder() / (std::string("example_") + release + ".dxf")).string(), d), "");
        std::ostringstream shape;
        const auto box = d.extents(d.modelSpace());
        shape.precision(9);
        shape << describe(entitiesOf(d)) << d.layers.size() << " " << d.blocks().size() << " " << d.layouts().size()
              << " " << d.textStyles.size() << " " << box.min.x << " " << box.min.y << " " << box.max.x << " "
              << box.max.y;
        for (const auto& layout : d.layouts()) shape << " " << layout->name.view() << ":" << layout->entities.size();
        if (first.empty()) first = shape.str();
        EXPECT_EQ(shape.str(), first);
    }
}

/// What another program wrote holds the same entities after this program has saved it.
TEST(DxfSamples, SavedAgainTheyHoldTheSame) {
    const auto files = samples();
    if (files.empty()) GTEST_SKIP() << "no sample drawings beside the checkout (" << samplesFolder() << ")";
    for (const fs::path& path : files) {
        SCOPED_TRACE(path.filename().string());
        Drawing first;
        ASSERT_EQ(io::dxf::loadDxf(path.string(), first), "");
        io::dxf::DxfSaveReport saved;
        Drawing second;
        io::dxf::DxfLoadReport report;
        ASSERT_EQ(io::dxf::loadDxfText(io::dxf::dxfText(first, &saved), second, &report), "");
        EXPECT_TRUE(report.lines.empty()) << report.lines.front();
        EXPECT_EQ(second.entityCount() + saved.dropped, first.entityCount());
        const auto before = first.extents(first.modelSpace());
        const auto after = second.extents(second.modelSpace());
        EXPECT_EQ(before.min, after.min);
        EXPECT_EQ(before.max, after.max);
        EXPECT_EQ(first.layers.size(), second.layers.size());
        EXPECT_EQ(first.blocks().size(), second.blocks().size());
        EXPECT_EQ(first.layouts().size(), second.layouts().size());
    }
}

}  // namespace kova::test
