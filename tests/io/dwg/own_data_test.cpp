// Own data goes through DWG with the groups that it stands beside, and counts as it does in DXF files.
#include <gtest/gtest.h>


#include "engine/model/drawing.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/model/sysvar.hpp"
#include "io/byte_sink.hpp"
#include "io/dwg/dwg_load.hpp"
#include "io/dwg/dwg_save.hpp"
#include "io/dxf/dxf_save.hpp"
#include "io/dxf/edited_drawing.hpp"
#include "kdraw/database/database.hpp"
#include "kdraw/database/dxf_file_input.hpp"
#include "kdraw/database/encoder.hpp"

namespace kova::test {

using namespace engine;

namespace {

/// The drawing as DWG, its groups changed on the way, opened again.
void throughDwg(const Drawing& drawing, kdraw::Version version, const std::function<std::string(std::string)>& change,
                Drawing& result) {
    struct Text final : io::ByteSink {
        std::string bytes;
        bool write(const char* data, std::size_t size) override {
            bytes.append(data, size);
            return true;
        }
    } text;
    ASSERT_TRUE(io::dxf::writeDxfForDwg(drawing, text));
    kdraw::Database database;
    ASSERT_EQ(kdraw::databaseFromDxf(change(text.bytes), database), "");
    database.version = version;
    std::string bytes;
    ASSERT_EQ(kdraw::encode(database, bytes), "");
    ASSERT_TRUE(io::dwg::loadDwgBytes(bytes, result).success);
}

const DimensionEntity* dimensionOf(const Drawing& drawing) {
    for (const Entity& e : drawing.modelSpace())
        if (const auto* found = dynamic_cast<const DimensionEntity*>(&e)) return found;
    return nullptr;
}

const HatchEntity* hatchOf(const Drawing& drawing) {
    for (const Entity& e : drawing.modelSpace())
        if (const auto* found = dynamic_cast<const HatchEntity*>(&e)) return found;
    return nullptr;
}

}  // namespace

TEST(DwgOwnData, CountsWhileTheGroupsAreAsTheyWereWritten) {
    Drawing drawing;
    addMovables(drawing);
    setSysVar(drawing, "LTSCALE", 2.0);
    for (const kdraw::Version version : {kdraw::Version::R2010, kdraw::Version::R2013, kdraw::Version::R2018}) {
        Drawing same;
        throughDwg(drawing, version, [](std::string text) { return text; }, same);
        ASSERT_TRUE(dimensionOf(same) != nullptr && hatchOf(same) != nullptr);
        EXPECT_EQ(dimensionOf(same)->dimLine, (math::Vector2{15, 3}));
        EXPECT_EQ(sysVarReal(same, "LTSCALE"), 2.0);
        Drawing moved;
        throughDwg(drawing, version, [](const std::string& text) {
            std::string edited = movedElsewhere(text);
            const std::string variable = "9\n$LTSCALE\n40\n";
            const std::size_t at = edited.find(variable);
            EXPECT_NE(at, std::string::npos);
            return edited.insert(at + variable.size(), "7");  // 72.0
        }, moved);
        ASSERT_TRUE(dimensionOf(moved) != nullptr && hatchOf(moved) != nullptr);
        EXPECT_TRUE(dimensionOf(moved)->def1.near_equal({110, 50}, 1e-9));
        EXPECT_GT(dimensionOf(moved)->dimLine.x, 100.0);
        EXPECT_EQ(dimensionOf(moved)->inspectLabel, "A");
        EXPECT_NEAR(hatchOf(moved)->bounds().min.x, 101.0, 1e-6);
        EXPECT_EQ(sysVarReal(moved, "LTSCALE"), 72.0);
    }
}

TEST(DwgOwnData, TimesAndExtrusionsOfAttributesAreKept) {
    Drawing drawing;
    drawing.realVariables["TDCREATE"] = 2451544.5;
    drawing.realVariables["TDUCREATE"] = 2451544.375;
    drawing.realVariables["TDUPDATE"] = 2451600.25;
    drawing.realVariables["TDUUPDATE"] = 2451600.125;
    drawing.realVariables["TDEDITED"] = 1.5;
    drawing.addBlock("B");
    auto reference = std::make_unique<BlockReferenceEntity>(Name("B"), math::Vector2{1, 0});
    BlockAttribute a;
    a.tag = "T";
    a.value = "abc";
    a.position = {10, 5};
    a.plane = AttributePlane{{0, 0, -1}, 2.0};
    reference->attributes.push_back(a);
    drawing.modelSpace().append(std::move(reference));
    Drawing again;
    throughDwg(drawing, kdraw::Version::R2018, [](std::string text) { return text; }, again);
    for (const char* name : {"TDCREATE", "TDUCREATE", "TDUPDATE", "TDUUPDATE"})
        EXPECT_NEAR(sysVarReal(again, name), drawing.realVariables[name], 1e-7) << name;
    EXPECT_NEAR(sysVarReal(again, "TDINDWG"), 1.5, 0.01);
    const auto* r = dynamic_cast<const BlockReferenceEntity*>(again.modelSpace().first());
    ASSERT_NE(r, nullptr);
    ASSERT_EQ(r->attributes.size(), 1U);
    ASSERT_TRUE(r->attributes[0].plane.has_value());
    EXPECT_EQ(r->attributes[0].plane->normal, (math::Vector3{0, 0, -1}));
    EXPECT_EQ(r->attributes[0].plane->elevation, 2.0);
    EXPECT_EQ(r->attributes[0].position, (math::Vector2{10, 5}));
}

// A file of another program has local times only.
TEST(DwgOwnData, TimesOfOtherProgramsAreKept) {
    Drawing timed;
    timed.realVariables["TDCREATE"] = 2451544.5;
    timed.realVariables["TDUPDATE"] = 2451600.25;
    Drawing again;
    throughDwg(timed, kdraw::Version::R2013, [](std::string text) {
        // Without the program's own marks.
        for (const char* mark : {"KOVA_DRAWING", "KOVA_DIM"})
            for (std::size_t at = 0; (at = text.find(mark, at)) != std::string::npos;) text.replace(at, 4, "XXXX");
        return text;
    }, again);
    EXPECT_NEAR(sysVarReal(again, "TDCREATE"), 2451544.5, 1e-7);
    EXPECT_NEAR(sysVarReal(again, "TDUPDATE"), 2451600.25, 1e-7);
    EXPECT_NEAR(sysVarReal(again, "TDUCREATE"), 2451544.5, 0.6);
}

}  // namespace kova::test
