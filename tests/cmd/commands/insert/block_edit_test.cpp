// Blocks taken apart and edited: XPLODE, BATTMAN, REFEDIT; attributes of several lines.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "cmd/commands/insert/block_samples.hpp"
#include "cmd/draw_harness.hpp"
#include "engine/pick/nested_picking.hpp"
#include "engine/entities/attribute_definition.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/ellipse.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/entities/text.hpp"
#include "strings/numbers.hpp"

namespace kova::cmd {
namespace {

using engine::AttributeDefinitionEntity;
using engine::Block;
using engine::BlockReferenceEntity;
using engine::CircleEntity;
using engine::LineEntity;
using math::Vector2;

AttributeDefinitionEntity definition(const std::string& tag, const std::string& value, Vector2 at = {}) {
    AttributeDefinitionEntity d;
    d.tag = tag;
    d.prompt = tag + "?";
    d.defaultValue = value;
    d.insertion = at;
    return d;
}

std::string pointText(const Vector2& p) { return strings::shortest(p.x) + "," + strings::shortest(p.y); }

/// "Part": a line along x and a circle; "Outer": a "Part" at 100,0 and a line.
class Blocks : public ::testing::Test {
protected:
    Blocks() {
        addPartAndOuter(c.drawing());
        engine::setProfileVariable("ATTREQ", 0);
    }
    BlockReferenceEntity& place(const char* block, Vector2 at) { return c.add(BlockReferenceEntity(block, at)); }
    std::vector<engine::Entity*> contents(const char* block) {
        return c.drawing().findBlock(block)->entities.entities();
    }
    std::string text(const std::vector<std::string>& lines) {
        std::string all;
        for (const std::string& line : lines) all += line + "\n";
        return all;
    }
    DrawConsole c;
};

// Attributes of several lines ------------------------------------------------------------------------------------

TEST_F(Blocks, AttributesOfSeveralLines) {
    c.run({"ATTDEF", "M", "L"});
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "AFLAGS"), 48);
    c.run({"", "ADDRESS", "Where?", "Main Street", "Town", ""});
    EXPECT_EQ(c.prompt(), "Specify start point of text or [Justify/Style]:");
    c.run({"J", "TL", "0,0", "2", "0"});
    EXPECT_TRUE(c.idle());
    const auto& made = c.last<AttributeDefinitionEntity>();
    EXPECT_TRUE(made.multiline && made.locked);
    EXPECT_EQ(made.defaultValue, "Main Street\\PTown");

    engine::setProfileVariable("ATTREQ", 1);
    c.run({"BLOCK", "Card", "0,0", "L", ""});
    c.run({"INSERT", "Card", "50,0", "2", "", "0"});
    EXPECT_EQ(c.prompt(), "Where? <Main Street\\PTown>:");
    c.run({"First", "Second", "Third"});
    EXPECT_FALSE(c.idle());
    c.feed("");
    EXPECT_TRUE(c.idle());
    auto& reference = c.last<BlockReferenceEntity>();
    ASSERT_EQ(reference.attributes.size(), 1u);
    const engine::BlockAttribute& attribute = reference.attributes[0];
    EXPECT_EQ(attribute.value, "First\\PSecond\\PThird");
    EXPECT_EQ(attribute.plainValue(), "First\nSecond\nThird");
    EXPECT_TRUE(attribute.multiline && attribute.locked);
    EXPECT_EQ(attribute.textHeight, 4.0);
    // Three lines, 5/3 of the height apart, hang below the point.
    const math::Bounds2 box = reference.bounds();
    EXPECT_NEAR(box.max.y, 0.0, 0.5);
    EXPECT_NEAR(box.min.y, -(4.0 + 2.0 * 4.0 * 5.0 / 3.0), 1.5);
    EXPECT_LT(reference.distanceTo({51, -9}), 1e-9);
    // A locked attribute keeps its place, and goes with the reference.
    reference.moveGrip(1, {0, 0});
    expectNear(attribute.position, {50, 0});
    reference.transform(math::Matrix4::scaling(2, 2, 2));
    EXPECT_EQ(reference.attributes[0].textHeight, 8.0);

    c.run({"BURST", "L", ""});
    const auto& burst = c.last<engine::MTextEntity>();
    EXPECT_EQ(burst.content, "First\\PSecond\\PThird");
    EXPECT_EQ(burst.attachment, engine::kAttachTopLeft);
    EXPECT_EQ(burst.height, 8.0);
    c.run({"ATTDEF", "M", "L", "", ""});
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "AFLAGS"), 0);
}

TEST_F(Blocks, EachCopyOfAGridShowsItsAttributes) {
    Block& part = *c.drawing().findBlock("Part");
    part.entities.append(std::make_unique<AttributeDefinitionEntity>(definition("A", "value", {0, 5})));
    c.run({"MINSERT", "Part", "0,0", "", "", "90", "2", "3", "100", "200"});
    const auto& grid = c.last<BlockReferenceEntity>();
    EXPECT_LT(grid.distanceTo({-106, 401}), 1e-9);  // row 1, column 2, turned
    c.run({"BURST", "L", ""});
    std::size_t texts = 0;
    bool last = false;
    for (const engine::Entity* entity : c.entities())
        if (const auto* text = dynamic_cast<const engine::TextEntity*>(entity)) {
            ++texts;
            last = last || text->position.near_equal({-105, 400}, 1e-9);
        }
    EXPECT_EQ(texts, 6u);
    EXPECT_TRUE(last);
    EXPECT_EQ(c.count(), 6u * 3u);
}

TEST_F(Blocks, SyncTurnsLinesIntoOneAndBack) {
    Block& part = *c.drawing().findBlock("Part");
    part.entities.append(std::make_unique<AttributeDefinitionEntity>(definition("A", "x")));
    c.run({"INSERT", "Part", "0,0", "", "", ""});
    c.last<BlockReferenceEntity>().attributes[0].value = "50{%}";
    c.run({"BATTMAN", "part", "E", "A", "", "", "", "M", "", "X"});
    EXPECT_EQ(c.last<BlockReferenceEntity>().attributes[0].value, "50\\{%\\}");
    EXPECT_EQ(c.last<BlockReferenceEntity>().attributes[0].plainValue(), "50{%}");
    c.last<BlockReferenceEntity>().attributes[0].value = "one\\Ptwo";
    c.run({"BATTMAN", "part", "E", "A", "", "", "", "M", "", ""});
    EXPECT_EQ(c.last<BlockReferenceEntity>().attributes[0].value, "one two");
}

// BATTMAN ------------------------------------------------------------------------------------------------------------

TEST_F(Blocks, BattmanEditsDefinitionsAndReferences) {
    Block& part = *c.drawing().findBlock("Part");
    for (const char* tag : {"A", "B", "C"})
        part.entities.append(std::make_unique<AttributeDefinitionEntity>(definition(tag, tag)));
    c.run({"INSERT", "Part", "0,0", "", "", ""});
    const auto tags = [&] {
        std::string all;
        for (const auto& a : c.last<BlockReferenceEntity>().attributes) all += a.tag + "=" + a.value + " ";
        return all;
    };
    EXPECT_EQ(tags(), "A=A B=B C=C ");
    const Lines lines = c.run({"BATTMAN", "Outer", "nothing", "?", "", "Part"});
    EXPECT_NE(text(lines).find("Block \"Outer\" has no attributes."), std::string::npos);
    EXPECT_NE(text(lines).find("Block \"nothing\" not found."), std::string::npos);
    EXPECT_NE(text(lines).find("  B  prompt \"B?\"  default \"B\""), std::string::npos);
    EXPECT_EQ(c.prompt(), "Enter an option [Edit/Remove/MOve up/move Down/Sync/eXit] <eXit>:");
    c.run({"MO", "c", "E", "b"});
    EXPECT_EQ(c.prompt(), "Enter tag name <B>:");
    c.run({"a", "two words", "bee", "Which bee?", "none", "I", "", "R", "A", "X"});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(tags(), "C=C BEE=B ");
    EXPECT_TRUE(c.last<BlockReferenceEntity>().attributes[1].invisible);
    EXPECT_EQ(contents("Part").size(), 4u);
    const auto& bee = dynamic_cast<const AttributeDefinitionEntity&>(*contents("Part")[3]);
    EXPECT_EQ(bee.prompt, "Which bee?");
    EXPECT_EQ(bee.defaultValue, "none");
    EXPECT_EQ(c.lastStep(), "BATTMAN");
    c.feed("U");
    EXPECT_EQ(tags(), "A=A B=B C=C ");
    EXPECT_EQ(contents("Part").size(), 5u);
    // Constant attributes are no longer held by references.
    c.run({"BATTMAN", "Part", "E", "A", "", "", "", "C", "", ""});
    EXPECT_EQ(tags(), "B=B C=C ");
}

// XPLODE -------------------------------------------------------------------------------------------------------------

TEST_F(Blocks, XplodeGivesPartsProperties) {
    c.run({"LAYER", "N", "L,M", ""});
    auto& reference = place("Part", {0, 0});
    reference.layer = "L";
    contents("Part")[0]->color = engine::Color::byBlock();
    reference.color = engine::Color::index(3);
    c.run({"XPLODE", "L", ""});
    EXPECT_EQ(c.prompt(),
              "Enter an option [All/Color/LAyer/LType/LWeight/Inherit from parent block/Explode] <Explode>:");
    c.feed("I");
    EXPECT_TRUE(c.idle());
    ASSERT_EQ(c.count(), 2u);
    EXPECT_EQ(c.entities()[0]->layer, engine::Name("L"));
    EXPECT_EQ(c.entities()[0]->color, engine::Color::index(3));
    EXPECT_EQ(c.lastStep(), "XPLODE");
    c.feed("U");
    ASSERT_EQ(c.count(), 1u);

    c.run({"XP", "ALL", "", "A", "5", "none", "DASHED", "0.5", "nowhere", "M"});
    EXPECT_TRUE(c.idle());
    ASSERT_EQ(c.count(), 2u);
    EXPECT_EQ(c.entities()[1]->layer, engine::Name("M"));
    EXPECT_EQ(c.entities()[1]->color, engine::Color::index(5));
    EXPECT_EQ(c.entities()[1]->linetype, engine::Name("DASHED"));
    EXPECT_EQ(c.entities()[1]->lineweight, 50);
    c.feed("U");
    ASSERT_EQ(c.count(), 1u);
    EXPECT_EQ(c.drawing().linetypes.find(engine::Name("DASHED")), nullptr);

    place("Part", {50, 0});
    c.addLine(0, 80, 1, 80);
    const Lines lines = c.run({"XP", "ALL", "", "I", "C", "1", "E"});
    EXPECT_NE(text(lines).find("3 objects found. 1 invalid."), std::string::npos);
    ASSERT_EQ(c.count(), 5u);
    EXPECT_EQ(c.entities()[1]->color, engine::Color::index(1));
    EXPECT_EQ(c.entities()[4]->color.method, engine::ColorMethod::ByLayer);
}

// REFEDIT ------------------------------------------------------------------------------------------------------------

TEST_F(Blocks, RefeditChangesTheBlockInPlace) {
    auto& reference = place("Part", {100, 100});
    reference.scaleX = 2.0;
    reference.scaleY = -1.0;
    reference.rotation = 0.5;
    place("Part", {300, 0});
    c.addLine(100, 100, 400, 400);
    const std::uint64_t circle = contents("Part")[1]->handle();
    const Vector2 onLine = reference.blockMatrix().transform_point(Vector2{5, 0});
    c.feed("REFEDIT");
    c.feed(pointText(onLine));
    EXPECT_EQ(c.prompt(), "Enter object selection method [All/Nested] <All>:");
    c.run({"", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.lastStep(), "REFEDIT");
    ASSERT_EQ(c.count(), 5u);
    // Only the working set can be selected; what is drawn now belongs to it.
    c.run({"SELECT", "ALL", ""});
    EXPECT_EQ(c.selected().size(), 2u);
    c.run({"LINE", "100,100", "110,100", ""});
    c.run({"ERASE", pointText(onLine), ""});
    c.run({"REFCLOSE", ""});
    EXPECT_TRUE(c.idle());
    ASSERT_EQ(c.count(), 3u);
    const auto now = contents("Part");
    ASSERT_EQ(now.size(), 2u);
    // The circle was not touched, although the reference shows it as an ellipse.
    ASSERT_EQ(now[0]->type(), engine::EntityType::Circle);
    EXPECT_EQ(now[0]->handle(), circle);
    expectNear(static_cast<CircleEntity&>(*now[0]).center, {0, 20}, 0.0);
    // The line comes back to where it was drawn.
    const auto& line = dynamic_cast<const LineEntity&>(*now[1]);
    const auto& placed = dynamic_cast<const BlockReferenceEntity&>(*c.entities()[0]);
    EXPECT_TRUE(placed.visible);
    expectNear(placed.blockMatrix().transform_point(line.end), {110, 100});
    c.run({"SELECT", "ALL", ""});
    EXPECT_EQ(c.selected().size(), 3u);

    // Each half is one step; undone far enough there is no edit any more.
    c.feed("U");
    EXPECT_EQ(c.count(), 5u);
    EXPECT_NE(c.document.referenceEdit(), nullptr);
    EXPECT_EQ(contents("Part").size(), 2u);
    c.run({"U", "U", "U"});
    EXPECT_EQ(c.count(), 3u);
    EXPECT_EQ(c.document.referenceEdit(), nullptr);
    EXPECT_EQ(c.run({"REFCLOSE"}), Lines{"No reference is being edited."});
}

TEST_F(Blocks, RefeditNestedLevelsAndDiscard) {
    place("Outer", {0, 0});
    c.run({"REFEDIT", "105,0"});
    EXPECT_EQ(c.prompt(), "Select nesting level [Ok/Next] <Next>:");
    c.run({"", "O", "N", "100,22", "", "N"});
    EXPECT_TRUE(c.idle());
    ASSERT_NE(c.document.referenceEdit(), nullptr);
    EXPECT_EQ(c.document.referenceEdit()->block, engine::Name("Part"));
    // Only the circle was taken.
    EXPECT_EQ(c.last<CircleEntity>().radius, 2.0);
    expectNear(c.last<CircleEntity>().center, {100, 20});
    c.run({"MOVE", "L", "", "0,0", "0,5"});
    EXPECT_NE(text(c.run({"REFEDIT"})).find("is being edited"), std::string::npos);
    EXPECT_TRUE(c.idle());
    c.run({"REFCLOSE", "S"});
    ASSERT_EQ(contents("Part").size(), 2u);
    EXPECT_EQ(contents("Part")[0]->type(), engine::EntityType::Line);
    expectNear(static_cast<CircleEntity&>(*contents("Part")[1]).center, {0, 25});

    c.run({"REFEDIT", "105,0", "O", "", ""});
    EXPECT_EQ(c.document.referenceEdit()->block, engine::Name("Outer"));
    c.run({"ERASE", "ALL", ""});
    c.run({"CIRCLE", "0,0", "1"});
    c.run({"REFCLOSE", "D"});
    EXPECT_EQ(c.count(), 1u);
    EXPECT_EQ(contents("Outer").size(), 2u);
    // A block cannot be saved into itself.
    c.run({"REFEDIT", "105,0", "O", "", ""});
    c.run({"INSERT", "Outer", "0,0", "", "", ""});
    EXPECT_EQ(c.run({"REFCLOSE", ""}), Lines{"Block \"Outer\" references itself."});
    EXPECT_NE(c.document.referenceEdit(), nullptr);
    c.run({"REFCLOSE", "D"});
    EXPECT_EQ(contents("Outer").size(), 2u);
    // Grids are refused.
    c.last<BlockReferenceEntity>().rows = 2;
    EXPECT_EQ(c.run({"REFEDIT", "105,0", "O"}),
              Lines({"Reference: \"Outer\"", "References in a grid cannot be edited."}));
}

/// Files that are drawings in memory.
class ReferenceConsole : public DrawConsole {
public:
    std::string readDrawing(const std::string&, engine::Drawing& drawing) override { return fill(drawing); }
    std::string readReference(const std::string&, engine::Drawing& drawing) override { return fill(drawing); }
    std::string writeDrawing(const engine::Drawing& drawing, const std::string& path) override {
        calls.push_back("write " + path);
        if (!failure.empty()) return failure;
        file.clear();
        layers.clear();
        blocks = drawing.blocks().size();
        for (const engine::Entity& entity : drawing.modelSpace()) file.push_back(entity.clone());
        for (const auto& layer : drawing.layers) layers += layer.name.str() + " ";
        return {};
    }
    std::string fill(engine::Drawing& drawing) {
        engine::Layer walls;
        walls.name = "Walls";
        drawing.layers.add(walls);
        for (const auto& entity : file) drawing.modelSpace().append(entity->clone());
        return {};
    }
    std::vector<std::unique_ptr<engine::Entity>> file;
    std::string layers;
    std::size_t blocks = 0;
};

TEST(Refedit, ExternalReferencesAreSavedToTheirFiles) {
    ReferenceConsole c;
    const auto path = std::filesystem::temp_directory_path() / ("kova_plan_" + std::to_string(::getpid()) + ".dxf");
    std::ofstream(path).put('x');
    auto wall = std::make_unique<LineEntity>(Vector2{0, 0}, Vector2{10, 0});
    wall->layer = "Walls";
    c.file.push_back(std::move(wall));
    c.run({"XATTACH", path.string(), "", "100,0", "", "", ""});
    ASSERT_EQ(c.count(), 1u);
    c.run({"REFEDIT", "105,0", "", ""});
    ASSERT_EQ(c.count(), 2u);
    c.run({"MOVE", "L", "", "0,0", "0,7"});
    c.run({"CIRCLE", "100,0", "1"});
    c.failure = "Disk full";
    EXPECT_EQ(c.run({"REFCLOSE", ""}), Lines{"Disk full"});
    EXPECT_EQ(c.count(), 3u);
    c.failure.clear();
    c.run({"REFCLOSE", ""});
    EXPECT_TRUE(c.idle());
    ASSERT_EQ(c.count(), 1u);
    ASSERT_EQ(c.file.size(), 2u);
    EXPECT_EQ(c.file[0]->layer, engine::Name("Walls"));
    expectNear(static_cast<LineEntity&>(*c.file[0]).start, {0, 7});
    EXPECT_EQ(c.file[1]->type(), engine::EntityType::Circle);
    EXPECT_EQ(c.layers.find('|'), std::string::npos) << c.layers;
    EXPECT_EQ(c.blocks, 0u);  // a file that held the reference would be its own
    EXPECT_EQ(c.last<BlockReferenceEntity>().block()->entities.size(), 2u);
    std::filesystem::remove(path);
}

// Picking within references -----------------------------------------------------------------------------------------

TEST_F(Blocks, NestedPicksEndInCyclesAndGrids) {
    auto& reference = place("Outer", {0, 0});
    const auto found = pickNested(reference, {100, 22.5});
    ASSERT_TRUE(found);
    EXPECT_EQ(found->entity->type(), engine::EntityType::Circle);
    EXPECT_EQ(found->chain.size(), 2u);
    EXPECT_NE(text(c.run({"XLIST", "100,22"})).find("Block name:  \"Part\" in \"Outer\""), std::string::npos);
    reference.columns = 3;
    reference.columnSpacing = 1000.0;
    const auto third = pickNested(reference, {2105, 0});
    ASSERT_TRUE(third);
    expectNear(third->matrices.back().transform_point(Vector2{0, 0}), {2100, 0});
    c.drawing().findBlock("Part")->entities.append(std::make_unique<BlockReferenceEntity>("Outer", Vector2{1, 1}));
    EXPECT_TRUE(pickNested(reference, {0, 51}));
}

}  // namespace
}  // namespace kova::cmd
