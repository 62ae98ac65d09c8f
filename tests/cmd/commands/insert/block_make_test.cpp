#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "cmd/draw_harness.hpp"
#include "engine/entities/attribute_definition.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/text.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::AttributeDefinitionEntity;
using engine::BlockReferenceEntity;
using engine::LineEntity;
using math::Vector2;

/// A console whose files are drawings that a test prepared, and that keeps what is written.
class FileConsole : public DrawConsole {
public:
    FileConsole() {
        folder = std::filesystem::temp_directory_path() / ("kova_blocks_" + std::to_string(::getpid()));
        std::filesystem::create_directories(folder);
    }
    ~FileConsole() override { std::filesystem::remove_all(folder); }

    std::string readDrawing(const std::string& path, engine::Drawing& drawing) override {
        calls.push_back("read " + path);
        if (failure.empty() && fill) fill(drawing);
        return failure;
    }
    std::string writeDrawing(const engine::Drawing& drawing, const std::string& path) override {
        calls.push_back("write " + path);
        written.clear();
        for (const engine::Entity& entity : drawing.modelSpace()) written.push_back(entity.clone());
        writtenBlocks.clear();
        for (const auto& block : drawing.blocks()) writtenBlocks.push_back(block->name.str());
        writtenLayers.clear();
        for (const auto& layer : drawing.layers) writtenLayers.push_back(layer.name.str());
        return failure;
    }
    /// An empty file, so that the name is found.
    std::string file(const std::string& name) {
        const std::filesystem::path path = folder / name;
        std::ofstream(path).put('x');
        return path.string();
    }

    std::filesystem::path folder;
    std::function<void(engine::Drawing&)> fill;
    std::vector<std::unique_ptr<engine::Entity>> written;
    std::vector<std::string> writtenBlocks;
    std::vector<std::string> writtenLayers;
};

AttributeDefinitionEntity attribute(const std::string& tag, const std::string& value, Vector2 at = {}) {
    AttributeDefinitionEntity definition;
    definition.tag = tag;
    definition.prompt = "What " + tag;
    definition.defaultValue = value;
    definition.insertion = at;
    return definition;
}

engine::Block& makeBlock(Console& c, const char* name, double size = 1.0) {
    engine::Block& block = *c.drawing().addBlock(name);
    block.entities.append(std::make_unique<LineEntity>(Vector2{0, 0}, Vector2{size, 0}));
    return block;
}

// BLOCK ----------------------------------------------------------------------------------------------------

TEST(Block, TakesTheObjectsAboutTheBasePointAndOopsBringsThemBack) {
    DrawConsole c;
    c.addLine(10, 10, 15, 10);
    c.addLine(100, 0, 101, 0);
    c.feed("BLOCK");
    EXPECT_EQ(c.prompt(), "Enter block name or [?]:");
    c.feed("Bolt");
    EXPECT_EQ(c.prompt(), "Specify insertion base point or [Annotative]:");
    c.run({"10,10", "12,10", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.count(), 1u);
    EXPECT_EQ(c.lastStep(), "BLOCK");
    const engine::Block* block = c.drawing().findBlock("BOLT");
    ASSERT_NE(block, nullptr);
    ASSERT_EQ(block->entities.size(), 1u);
    expectNear(static_cast<LineEntity*>(block->entities.first())->end, {5, 0});
    expectNear(block->base, {0, 0});
    c.feed("OOPS");
    EXPECT_EQ(c.count(), 2u);
    c.run({"UNDO", "UNDO"});
    EXPECT_EQ(c.count(), 2u);
    EXPECT_EQ(c.drawing().findBlock("Bolt"), nullptr);
    c.feed("REDO");
    EXPECT_EQ(c.count(), 1u);
    EXPECT_NE(c.drawing().findBlock("Bolt"), nullptr);
}

TEST(Block, AsksBeforeItRedefinesAndReferencesFollow) {
    DrawConsole c;
    makeBlock(c, "B");
    c.add(BlockReferenceEntity("B", {0, 0}));
    c.addLine(0, 50, 30, 50);
    c.feed("-BLOCK");
    c.feed("b");
    EXPECT_EQ(c.prompt(), "Block \"B\" already exists. Redefine it? [Yes/No] <N>:");
    c.feed("");
    EXPECT_EQ(c.prompt(), "Enter block name or [?]:");
    c.run({"B", "Y", "0,50"});
    const Lines lines = c.run({"15,50", ""});
    EXPECT_EQ(lines.back(), "Block \"B\" redefined.");
    ASSERT_EQ(c.count(), 1u);
    EXPECT_NEAR(c.entities()[0]->bounds().max.x, 30.0, 1e-9);
    c.feed("UNDO");
    EXPECT_NEAR(c.entities()[0]->bounds().max.x, 1.0, 1e-9);
    EXPECT_EQ(c.count(), 2u);
}

TEST(Block, RefusesToContainItself) {
    DrawConsole c;
    makeBlock(c, "Inner");
    engine::Block& outer = makeBlock(c, "Outer");
    outer.entities.append(std::make_unique<BlockReferenceEntity>("Inner", Vector2{}));
    c.add(BlockReferenceEntity("Outer", {0, 0}));
    const Lines lines = c.run({"BLOCK", "Inner", "Y", "0,0", "ALL", ""});
    EXPECT_EQ(lines.back(), "Block \"Inner\" references itself.");
    EXPECT_EQ(c.count(), 1u);
    EXPECT_EQ(c.drawing().findBlock("Inner")->entities.size(), 1u);
    EXPECT_FALSE(c.document.history().canUndo());
}

TEST(Block, ListsTheBlocksAndRefusesBadNames) {
    DrawConsole c;
    makeBlock(c, "Bolt");
    makeBlock(c, "Nut");
    c.drawing().addBlock("*U1");
    c.run({"BLOCK", "?"});
    EXPECT_EQ(c.prompt(), "Enter block(s) to list <*>:");
    EXPECT_EQ(c.feed("n*"), (Lines{"Defined blocks.", "  \"Nut\"",
                                   "User blocks: 2  External references: 0  Dependent blocks: 0  Unnamed blocks: 1"}));
    EXPECT_EQ(c.feed("a|b"), Lines{"Invalid block name \"a|b\"."});
    c.feed("");
    EXPECT_TRUE(c.idle());
}

TEST(Block, StandsInTheAxesOfTheCurrentSystem) {
    DrawConsole c;
    c.run({"UCS", "Z", "90"});
    c.addLine(0, 0, 0, 4);  // along x of the turned system
    c.run({"BLOCK", "B", "0,0", "ALL", ""});
    const auto* line = static_cast<LineEntity*>(c.drawing().findBlock("B")->entities.first());
    expectNear(line->end, {4, 0});
    // Put back where it was, it looks as it did.
    c.run({"INSERT", "B", "0,0", "1", "1", "0"});
    expectNear(c.entities()[0]->bounds().max, {0, 4});
}

// INSERT -----------------------------------------------------------------------------------------------------

TEST(Insert, AsksAsClassicScriptsExpect) {
    DrawConsole c;
    makeBlock(c, "B");
    c.feed("INSERT");
    EXPECT_EQ(c.prompt(), "Enter block name or [?]:");
    EXPECT_EQ(c.feed("Missing"), Lines{"Block \"Missing\" not found."});
    c.feed("b");
    EXPECT_EQ(c.prompt(), "Specify insertion point or [Basepoint/Scale/X/Y/Z/Rotate/Explode]:");
    c.feed("5,6");
    EXPECT_EQ(c.prompt(), "Enter X scale factor, specify opposite corner, or [Corner/XYZ] <1>:");
    EXPECT_EQ(c.feed("0"), Lines{"Invalid value."});
    c.feed("2");
    EXPECT_EQ(c.prompt(), "Enter Y scale factor <use X scale factor>:");
    c.feed("");
    EXPECT_EQ(c.prompt(), "Specify rotation angle <0>:");
    c.feed("90");
    EXPECT_TRUE(c.idle());
    const auto& reference = c.only<BlockReferenceEntity>();
    EXPECT_TRUE(reference.blockName.identical("B"));
    expectNear(reference.insert, {5, 6});
    EXPECT_EQ(reference.scaleX, 2.0);
    EXPECT_EQ(reference.scaleY, 2.0);
    EXPECT_NEAR(reference.rotation, math::kPi / 2.0, 1e-12);
    EXPECT_EQ(c.lastStep(), "INSERT");
    c.feed("INSERT");
    EXPECT_EQ(c.prompt(), "Enter block name or [?] <B>:");
}

TEST(Insert, OptionsTypedEarlySuppressTheQuestions) {
    DrawConsole c;
    makeBlock(c, "B");
    c.run({"INSERT", "B", "S", "3", "R", "30", "1,1"});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.last<BlockReferenceEntity>().scaleX, 3.0);
    EXPECT_EQ(c.last<BlockReferenceEntity>().scaleY, 3.0);
    c.run({"INSERT", "B", "X", "2", "Y", "-4", "1,1", "0"});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.last<BlockReferenceEntity>().scaleX, 2.0);
    EXPECT_EQ(c.last<BlockReferenceEntity>().scaleY, -4.0);
    // Another base point: what lies at (1,0) of the block comes to the point.
    c.run({"INSERT", "B", "Basepoint", "1,0", "10,0", "2", "", "90"});
    expectNear(c.last<BlockReferenceEntity>().bounds().max, {10, 0});
    // A corner gives both scales, XYZ a third one.
    c.run({"INSERT", "B", "0,0", "4,-3", "0"});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.last<BlockReferenceEntity>().scaleX, 4.0);
    EXPECT_EQ(c.last<BlockReferenceEntity>().scaleY, -3.0);
    c.run({"INSERT", "B", "0,0", "XYZ", "2", "3", "5", ""});
    EXPECT_EQ(c.last<BlockReferenceEntity>().scaleZ, 5.0);
}

TEST(Insert, AsksForAttributesAndVerifiesThem) {
    DrawConsole c;
    engine::Block& block = makeBlock(c, "B");
    block.entities.append(std::make_unique<AttributeDefinitionEntity>(attribute("NO", "1", {2, 0})));
    auto preset = attribute("KIND", "steel");
    preset.preset = true;
    block.entities.append(std::make_unique<AttributeDefinitionEntity>(preset));
    auto constant = attribute("FIX", "always");
    constant.constant = true;
    block.entities.append(std::make_unique<AttributeDefinitionEntity>(constant));
    auto verified = attribute("NAME", "");
    verified.verify = true;
    block.entities.append(std::make_unique<AttributeDefinitionEntity>(verified));
    c.run({"INSERT", "B", "10,0", "2", "2"});
    EXPECT_EQ(c.feed("90"), Lines{"Enter attribute values"});
    EXPECT_EQ(c.prompt(), "What NO <1>:");
    c.feed("");
    EXPECT_EQ(c.prompt(), "What NAME:");
    EXPECT_EQ(c.feed("two words"), Lines{"Verify attribute values"});
    EXPECT_EQ(c.prompt(), "What NAME <two words>:");
    c.feed("");
    EXPECT_TRUE(c.idle());
    const auto& reference = c.only<BlockReferenceEntity>();
    ASSERT_EQ(reference.attributes.size(), 3u);
    EXPECT_EQ(reference.attributes[0].value, "1");
    EXPECT_EQ(reference.attributes[1].value, "steel");
    EXPECT_EQ(reference.attributes[2].value, "two words");
    expectNear(reference.attributes[0].position, {10, 4});
    EXPECT_NEAR(reference.attributes[0].textHeight, 5.0, 1e-9);
    EXPECT_NEAR(reference.attributes[0].rotation, math::kPi / 2.0, 1e-9);

    engine::setProfileVariable("ATTREQ", 0);
    c.run({"INSERT", "B", "0,0", "", "", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.last<BlockReferenceEntity>().attributes[0].value, "1");
}

TEST(Insert, ExplodedLeavesTheParts) {
    DrawConsole c;
    engine::Block& block = makeBlock(c, "B");
    block.base = {1, 0};
    block.entities.append(std::make_unique<engine::CircleEntity>(Vector2{0, 0}, 1.0));
    c.run({"INSERT", "*B", "10,10", "2", "90"});
    EXPECT_TRUE(c.idle());
    ASSERT_EQ(c.count(), 2u);
    expectNear(static_cast<LineEntity*>(c.entities()[0])->start, {10, 8});
    EXPECT_NEAR(c.last<engine::CircleEntity>().radius, 2.0, 1e-9);
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: INSERT"});
    EXPECT_EQ(c.count(), 0u);
    block.explodable = false;
    EXPECT_EQ(c.run({"INSERT", "*B"}), Lines{"Block \"B\" cannot be exploded."});
    EXPECT_EQ(c.prompt(), "Enter block name or [?] <B>:");
    c.feed("");
    c.processor.cancel();
    EXPECT_EQ(c.run({"INSERT", "~"}),
              Lines{"\"Select Drawing File\" needs its dialog, which kovacad-cli cannot show; cancelled."});
    EXPECT_TRUE(c.idle());
}

TEST(Insert, DefinesABlockFromAFileWithWhatItNeeds) {
    FileConsole c;
    makeBlock(c, "*U1", 7.0);
    makeBlock(c, "Shared", 7.0);
    c.fill = [](engine::Drawing& d) {
        d.basePoint = {1, 1};
        engine::Layer layer;
        layer.name = "Steel";
        d.layers.add(layer);
        for (const char* name : {"*U1", "Shared"}) {
            d.addBlock(name)->entities.append(std::make_unique<LineEntity>(Vector2{0, 0}, Vector2{3, 0}));
            d.modelSpace().append(std::make_unique<BlockReferenceEntity>(name, Vector2{1, 1}));
        }
        d.modelSpace().entities()[0]->layer = "Steel";
    };
    const std::string path = c.file("part.dxf");
    c.run({"INSERT", "P=" + path, "10,10", "", "", ""});
    EXPECT_TRUE(c.idle());
    const engine::Block* block = c.drawing().findBlock("P");
    ASSERT_NE(block, nullptr);
    ASSERT_EQ(block->entities.size(), 2u);
    EXPECT_TRUE(c.drawing().layers.contains("Steel"));
    // The anonymous block came under another name, the named one is the drawing's own.
    const auto inner = block->entities.entities();
    EXPECT_EQ(static_cast<BlockReferenceEntity*>(inner[0])->blockName.str(), "*U2");
    EXPECT_NEAR(inner[0]->bounds().max.x, 4.0, 1e-9);
    EXPECT_NEAR(inner[1]->bounds().max.x, 8.0, 1e-9);
    expectNear(c.entities()[0]->bounds().min, {10, 10});
    EXPECT_NE(inner[0]->handle(), inner[1]->handle());
    c.feed("UNDO");
    EXPECT_EQ(c.drawing().findBlock("P"), nullptr);
    EXPECT_FALSE(c.drawing().layers.contains("Steel"));
    EXPECT_EQ(c.drawing().findBlock("*U2"), nullptr);
}

TEST(Insert, ABlockDefinedAnewStaysSoWhenItIsNotPlaced) {
    FileConsole c;
    makeBlock(c, "Part");
    c.fill = [](engine::Drawing& d) {
        for (int i = 0; i < 3; ++i)
            d.modelSpace().append(std::make_unique<engine::CircleEntity>(Vector2{0, 0}, 1.0 + i));
    };
    const std::string path = c.file("Part.kvcad");
    EXPECT_EQ(c.run({"INSERT", "Part=" + path, "Y", ""}), Lines{"Block \"Part\" redefined."});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.count(), 0u);
    EXPECT_EQ(c.drawing().findBlock("Part")->entities.size(), 3u);
    c.feed("U");
    EXPECT_EQ(c.drawing().findBlock("Part")->entities.size(), 1u);
    c.run({"INSERT", "Part=" + path, "Y"});
    c.processor.cancel();
    EXPECT_EQ(c.drawing().findBlock("Part")->entities.size(), 3u);
}

TEST(Insert, RefusesAFileThatWouldContainItself) {
    FileConsole c;
    makeBlock(c, "Part");
    engine::Block& holder = makeBlock(c, "Holder");
    holder.entities.append(std::make_unique<BlockReferenceEntity>("Part", Vector2{}));
    c.fill = [](engine::Drawing& d) {
        d.addBlock("Holder");
        d.modelSpace().append(std::make_unique<BlockReferenceEntity>("Holder", Vector2{}));
    };
    const std::string path = c.file("Part.kvcad");
    c.run({"INSERT", "Part=" + path, "Y", "0,0", "", ""});
    EXPECT_EQ(c.feed(""), Lines{"Block \"Part\" references itself."});
    EXPECT_EQ(c.count(), 0u);
    EXPECT_EQ(c.drawing().findBlock("Part")->entities.size(), 1u);
    c.failure = "damaged";
    EXPECT_EQ(c.run({"INSERT", "New=" + path}).back(), "Could not open " + path + ": damaged");
}

TEST(Insert, SurvivesTheLossOfItsBlock) {
    DrawConsole c;
    auto definition = attribute("NO", "1");
    makeBlock(c, "B").entities.append(std::make_unique<AttributeDefinitionEntity>(definition));
    c.run({"INSERT", "B", "0,0", "", "'NEW", "", "", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.count(), 0u);
}

TEST(Insert, ConvertsTheUnitsOfAFile) {
    FileConsole c;
    c.fill = [](engine::Drawing& d) {
        d.integerVariables["INSUNITS"] = 1;  // inches, into a drawing of millimetres
        d.modelSpace().append(std::make_unique<LineEntity>(Vector2{0, 0}, Vector2{2, 0}));
    };
    c.file("inch.kvcad");
    c.drawing().fileName = (c.folder / "main.kvcad").string();
    EXPECT_EQ(c.run({"INSERT", "inch", "0,0", "", "", ""}), Lines{"Units of the file converted, factor 25.4."});
    EXPECT_NEAR(c.only<BlockReferenceEntity>().bounds().max.x, 50.8, 1e-9);
}

TEST(Minsert, MakesAGrid) {
    DrawConsole c;
    makeBlock(c, "B");
    c.run({"MINSERT", "B", "0,0", "1", "1", "0"});
    EXPECT_EQ(c.prompt(), "Enter number of rows (---) <1>:");
    c.run({"2", "3"});
    EXPECT_EQ(c.prompt(), "Enter distance between rows or specify unit cell (---):");
    c.feed("5");
    EXPECT_EQ(c.prompt(), "Specify distance between columns (|||):");
    c.feed("-4");
    const auto& grid = c.only<BlockReferenceEntity>();
    EXPECT_EQ(grid.rows, 2);
    EXPECT_EQ(grid.columns, 3);
    EXPECT_EQ(grid.rowSpacing, 5.0);
    EXPECT_EQ(grid.columnSpacing, -4.0);
    EXPECT_EQ(c.lastStep(), "MINSERT");
    c.run({"MINSERT", "B", "0,0", "1", "1", "0", "2", "2", "1,1", "4,6"});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.last<BlockReferenceEntity>().rowSpacing, 5.0);
    EXPECT_EQ(c.last<BlockReferenceEntity>().columnSpacing, 3.0);
}

// XCLIP ------------------------------------------------------------------------------------------------------

TEST(Xclip, ShowsAPartInBlockCoordinates) {
    DrawConsole c;
    makeBlock(c, "B", 10.0).entities.append(std::make_unique<LineEntity>(Vector2{0, 0}, Vector2{0, 10}));
    auto& reference = c.add(BlockReferenceEntity("B", {100, 0}));
    reference.scaleX = reference.scaleY = 2.0;
    reference.rotation = math::kPi / 2.0;
    EXPECT_EQ(c.run({"XCLIP", "ALL", "", "OFF"}), Lines{"No clipping boundary found."});
    c.run({"XCLIP", "ALL", ""});
    EXPECT_EQ(c.prompt(), "Enter clipping option [ON/OFF/Clipdepth/Delete/generate Polyline/New boundary] <New>:");
    c.run({"", "", "95,-1", "101,8"});
    EXPECT_TRUE(c.idle());
    const auto& clipped = c.only<BlockReferenceEntity>();
    expectPoints(clipped.clipBoundary, {{-0.5, 2.5}, {-0.5, -0.5}, {4, -0.5}, {4, 2.5}});
    expectNear(clipped.bounds().min, {95, 0});
    expectNear(clipped.bounds().max, {100, 8});
    c.run({"XCLIP", "ALL", "", "P"});
    EXPECT_EQ(c.count(), 2u);
    expectNear(c.entities()[1]->bounds().min, {95, -1});
    c.feed("UNDO");
    c.run({"XCLIP", "ALL", "", "OFF"});
    expectNear(c.only<BlockReferenceEntity>().bounds().max, {100, 20});
    c.run({"XCLIP", "ALL", "", "N"});
    EXPECT_EQ(c.prompt(), "Delete old boundary(s)? [Yes/No] <Yes>:");
    EXPECT_EQ(c.run({"", "I"}), Lines{"Outside mode - Objects inside boundary will be hidden."});
    c.run({"P", "0,0", "1,0", "1,1", ""});
    EXPECT_TRUE(c.only<BlockReferenceEntity>().clipInverted);
    EXPECT_TRUE(c.only<BlockReferenceEntity>().isClipped());
    c.run({"XCLIP", "ALL", "", "D"});
    EXPECT_FALSE(c.only<BlockReferenceEntity>().isClipped());
}

// WBLOCK -----------------------------------------------------------------------------------------------------

TEST(Wblock, WritesObjectsAboutTheBasePointAndTakesThemAway) {
    FileConsole c;
    makeBlock(c, "Used");
    makeBlock(c, "Unused");
    c.run({"LAYER", "N", "Idle,Busy", ""});
    c.add(BlockReferenceEntity("Used", {10, 10})).layer = "Busy";
    const std::string path = (c.folder / "out").string();
    c.run({"WBLOCK", path, ""});
    EXPECT_EQ(c.prompt(), "Specify insertion base point:");
    c.run({"10,10", "ALL", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.calls.back(), "write " + path + ".kvcad");
    ASSERT_EQ(c.written.size(), 1u);
    expectNear(static_cast<BlockReferenceEntity&>(*c.written[0]).insert, {0, 0});
    EXPECT_EQ(c.writtenBlocks, std::vector<std::string>{"Used"});
    EXPECT_EQ(c.writtenLayers, (std::vector<std::string>{"0", "Defpoints", "Busy"}));
    EXPECT_EQ(c.count(), 0u);
    c.feed("OOPS");
    EXPECT_EQ(c.count(), 1u);
}

TEST(Wblock, WritesABlockOrTheWholeDrawing) {
    FileConsole c;
    makeBlock(c, "Bolt", 3.0).base = {1, 0};
    c.addLine(0, 0, 9, 9);
    c.run({"WBLOCK", c.file("bolt.dxf")});
    EXPECT_EQ(c.prompt(), "A drawing with this name already exists. Do you want to replace it? [Yes/No] <N>:");
    EXPECT_EQ(c.run({"Y", "="}).back(), "Saved: " + (c.folder / "bolt.dxf").string());
    ASSERT_EQ(c.written.size(), 1u);
    expectNear(static_cast<LineEntity&>(*c.written[0]).start, {-1, 0});
    c.run({"WBLOCK", (c.folder / "all.dxf").string(), "*"});
    ASSERT_EQ(c.written.size(), 1u);
    expectNear(static_cast<LineEntity&>(*c.written[0]).end, {9, 9});
    EXPECT_EQ(c.count(), 1u);
    EXPECT_EQ(c.run({"WBLOCK", (c.folder / "x.dxf").string(), "Nut"}), Lines{"Block \"Nut\" not found."});
}

TEST(Export, WritesTheDrawingByTheFilesExtension) {
    FileConsole c;
    c.addLine(0, 0, 9, 9);
    EXPECT_EQ(c.run({"EXPORT", "/nowhere/copy.DXF"}), Lines{"Saved: /nowhere/copy.DXF"});
    EXPECT_EQ(c.written.size(), 1u);
    EXPECT_EQ(c.run({"EXPORT", "copy.xyz"}), Lines{"Unsupported file type \".xyz\"."});
    c.failure = "no room";
    EXPECT_EQ(c.run({"EXPORT", "copy.kvcad"}), Lines{"no room"});
}

}  // namespace
}  // namespace kova::cmd
