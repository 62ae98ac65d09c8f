// A drawing that is saved as DWG and opened again is the same drawing, up to what the format cannot hold.
#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <fstream>
#include <sstream>

#include "engine/model/drawing.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/point.hpp"
#include "engine/entities/solid3d.hpp"
#include "engine/entities/text.hpp"
#include "engine/entities/viewport.hpp"
#include "io/dwg/dwg_load.hpp"
#include "io/dwg/dwg_save.hpp"
#include "io/dwg/drawing_difference.hpp"
#include "io/dxf/rich_drawing.hpp"
#include "io/native/sample_drawing.hpp"
#include "kdraw/database/database.hpp"
#include "kdraw/database/decoder.hpp"
#include "kdraw/objects/layout.hpp"

namespace kova::test {

namespace {

/// Saves and opens the drawing in all versions that are written.
void expectIdentity(const engine::Drawing& drawing) {
    const QTemporaryDir folder;
    for (const char* version : {"R2010", "R2013", "R2018"}) {
        SCOPED_TRACE(version);
        const std::string path = folder.filePath("drawing.dwg").toStdString();
        io::dwg::DwgSaveReport report;
        ASSERT_EQ(io::dwg::saveDwg(drawing, path, version, &report), "");
        EXPECT_EQ(report.dropped, 0u);
        engine::Drawing again;
        const io::dwg::DwgLoadResult result = io::dwg::loadDwg(path, again);
        ASSERT_TRUE(result.success) << result.message;
        for (const std::string& line : result.lines) ADD_FAILURE() << line;
        const std::vector<std::string> found = differences(drawing, again);
        EXPECT_TRUE(found.empty()) << found.size() << " differences (saved | opened)" << listed(found);
    }
}

}  // namespace

TEST(DwgIdentity, NewDrawing) {
    engine::Drawing drawing;
    expectIdentity(drawing);
}

TEST(DwgIdentity, EveryKindAndRecordWithEveryField) {
    engine::Drawing drawing;
    fillDrawing(drawing);
    soundShapes(drawing);
    expectIdentity(drawing);
}

TEST(DwgIdentity, EveryKindAsAUserDrawsIt) {
    engine::Drawing drawing;
    fillRichDrawing(drawing);
    expectIdentity(drawing);
}

/// Names are the same without regard to case in every alphabet, not only in A to Z.
TEST(DwgIdentity, NamesThatDifferInTheCaseOfALetter) {
    engine::Drawing drawing;
    const auto layer = [&](const char* name) {
        engine::Layer record;
        record.name = engine::Name(name);
        drawing.layers.add(record);
    };
    layer("Möbel");
    layer("СТЕНЫ");
    engine::TextStyle style;
    style.name = engine::Name("Größe");
    drawing.textStyles.add(style);
    engine::Block& block = *drawing.addBlock("Tür");
    auto part = std::make_unique<engine::PointEntity>();
    part->layer = engine::Name("möbel");
    block.entities.append(std::move(part));
    auto text = std::make_unique<engine::TextEntity>();
    text->content = "x";
    text->textStyle = engine::Name("GRÖßE");
    text->layer = engine::Name("MÖBEL");
    drawing.modelSpace().append(std::move(text));
    auto reference = std::make_unique<engine::BlockReferenceEntity>();
    reference->blockName = engine::Name("TÜR");
    reference->layer = engine::Name("стены");
    drawing.modelSpace().append(std::move(reference));
    const QTemporaryDir folder;
    const std::string path = folder.filePath("drawing.dwg").toStdString();
    io::dwg::DwgSaveReport report;
    ASSERT_EQ(io::dwg::saveDwg(drawing, path, "", &report), "");
    EXPECT_EQ(report.dropped, 0u);
    engine::Drawing again;
    ASSERT_TRUE(io::dwg::loadDwg(path, again).success);
    EXPECT_EQ(again.layers.size(), drawing.layers.size());
    EXPECT_EQ(again.textStyles.size(), drawing.textStyles.size());
    ASSERT_NE(again.findBlock(engine::Name("tür")), nullptr);
    std::vector<std::string> found;
    for (const engine::Entity& e : again.modelSpace()) {
        found.push_back(e.layer.str());
        if (const auto* one = dynamic_cast<const engine::TextEntity*>(&e)) found.push_back(one->textStyle.str());
        if (const auto* one = dynamic_cast<const engine::BlockReferenceEntity*>(&e)) found.push_back(one->blockName.str());
    }
    for (const engine::Entity& e : again.findBlock(engine::Name("tür"))->entities) found.push_back(e.layer.str());
    EXPECT_EQ(found, (std::vector<std::string>{"Möbel", "Größe", "СТЕНЫ", "Tür", "Möbel"}));
}

TEST(DwgIdentity, SolidsThatAreOnlyTextAreCounted) {
    engine::Drawing drawing;
    auto solid = std::make_unique<engine::Solid3DEntity>();
    solid->sat = "400 0 1 0\nEnd-of-ACIS-data\n";
    drawing.modelSpace().append(std::move(solid));
    drawing.modelSpace().append(std::make_unique<engine::PointEntity>());
    const QTemporaryDir folder;
    const std::string path = folder.filePath("drawing.dwg").toStdString();
    io::dwg::DwgSaveReport report;
    ASSERT_EQ(io::dwg::saveDwg(drawing, path, "", &report), "");
    EXPECT_EQ(report.total, 2u);
    EXPECT_EQ(report.dropped, 1u);
    engine::Drawing again;
    ASSERT_TRUE(io::dwg::loadDwg(path, again).success);
    EXPECT_EQ(again.modelSpace().size(), 1u);
}

/// Other programs take the first viewport of a layout for the sheet itself.
TEST(DwgIdentity, FirstViewportOfALayoutIsTheSheet) {
    engine::Drawing drawing;
    fillRichDrawing(drawing);
    const QTemporaryDir folder;
    const std::string path = folder.filePath("drawing.dwg").toStdString();
    ASSERT_EQ(io::dwg::saveDwg(drawing, path, "2018"), "");
    std::ifstream in(path, std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    kdraw::Database database;
    ASSERT_EQ(kdraw::decode(bytes.str(), database), "");
    std::size_t layouts = 0;
    for (const auto& object : database.objects) {
        const auto* layout = dynamic_cast<const kdraw::Layout*>(object.get());
        if (layout == nullptr || layout->viewports.empty()) continue;
        ++layouts;
        const engine::Entity* window = drawing.findByHandle(layout->viewports.front());
        EXPECT_TRUE(window == nullptr || static_cast<const engine::ViewportEntity*>(window)->isSheet());
        EXPECT_GE(layout->viewports.size(), 2u);
    }
    EXPECT_EQ(layouts, 2u);
}

}  // namespace kova::test
