// The block editor and the tools of dynamic blocks.
#include <gtest/gtest.h>

#include "edit/block_editing.hpp"
#include "cmd/commands/insert/block_samples.hpp"
#include "cmd/draw_harness.hpp"
#include "engine/entities/dynamic_block.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/polyline.hpp"

namespace kova::cmd {
namespace {

using engine::Block;
using engine::BlockReferenceEntity;
using engine::CircleEntity;
using engine::LineEntity;
using math::Vector2;

/// "Part": a line along x and a circle; "Outer": a "Part" and a line. A "Part" and an "Outer" stand in model space.
class BlockEditor : public ::testing::Test {
protected:
    BlockEditor() {
        addPartAndOuter(c.drawing());
        id = c.add(BlockReferenceEntity("Part", {500, 0})).id();
        c.add(BlockReferenceEntity("Outer", {0, 500}));
        engine::setProfileVariable("ATTREQ", 0);
    }
    Block& block(const char* name = "Part") { return *c.drawing().findBlock(name); }
    std::vector<engine::Entity*> contents(const char* name = "Part") { return block(name).entities.entities(); }
    /// How many entities the user can reach.
    std::size_t reach() {
        c.run({"SELECT", "ALL", ""});
        const std::size_t count = c.selected().size();
        c.document.selection().clear();
        return count;
    }
    /// Undo puts other objects in an entity's place.
    BlockReferenceEntity& reference() { return static_cast<BlockReferenceEntity&>(*c.drawing().findById(id)); }
    math::Bounds2 box() { return reference().bounds(); }

    DrawConsole c;
    std::uint64_t id;
};

TEST_F(BlockEditor, CommandsWorkOnTheContents) {
    const auto line = contents()[0]->handle();
    EXPECT_EQ(c.run({"BCLOSE"}), Lines{"Not in the block editor."});
    c.run({"BEDIT", "nobody"});
    EXPECT_EQ(c.lines.back(), "Block \"nobody\" not found.");
    c.feed("part");
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.count(), 2u);
    EXPECT_EQ(reach(), 2u);
    c.run({"ERASE", "0,22", ""});
    c.run({"LINE", "0,0", "0,30", ""});
    c.run({"MOVE", "5,0", "", "0,0", "0,1"});
    // The definition, and so every picture and file of the drawing, is as before.
    EXPECT_EQ(contents().size(), 2u);
    EXPECT_NEAR(box().max.y, 22.0, 1e-9);
    EXPECT_EQ(c.drawing().modelSpace().size(), 2u);
    for (const auto& known : c.drawing().blocks()) EXPECT_NE(known->name, engine::Drawing::editedBlockName());
    EXPECT_EQ(c.run({"LAYOUT"}), Lines{"LAYOUT is not allowed in the block editor."});
    EXPECT_NE(c.run({"REFEDIT"}).back().find("BCLOSE"), std::string::npos);
    EXPECT_NE(c.run({"BEDIT"}).back().find("is open in the block editor"), std::string::npos);
    c.feed("BCLOSE");
    EXPECT_EQ(c.prompt(), "Save changes to \"Part\"? [Save/Discard] <Save>:");
    c.feed("");
    EXPECT_EQ(c.count(), 2u);
    ASSERT_EQ(contents().size(), 2u);
    EXPECT_EQ(contents()[0]->handle(), line);
    EXPECT_FALSE(block().isDynamic);
    EXPECT_NEAR(box().max.y, 30.0, 1e-9);
    EXPECT_EQ(reach(), 2u);

    // Undo goes back through the editor, redo forth again.
    c.feed("U");
    EXPECT_TRUE(c.document.blockEdit());
    EXPECT_EQ(c.count(), 2u);
    EXPECT_NEAR(box().max.y, 22.0, 1e-9);
    c.run({"U", "U", "U"});
    EXPECT_EQ(c.count(), 2u);
    EXPECT_TRUE(c.document.blockEdit());
    c.feed("U");
    EXPECT_FALSE(c.document.blockEdit());
    EXPECT_EQ(c.drawing().editedBlock(), nullptr);
    for (int i = 0; i < 5; ++i) c.feed("REDO");
    EXPECT_FALSE(c.document.blockEdit());
    EXPECT_NEAR(box().max.y, 30.0, 1e-9);
    EXPECT_EQ(contents()[0]->handle(), line);
}

TEST_F(BlockEditor, DiscardNestedBlocksAndRecursion) {
    c.run({"BEDIT", "Outer", "ERASE", "ALL", "", "BCLOSE", "D"});
    EXPECT_EQ(contents("Outer").size(), 2u);
    EXPECT_FALSE(c.document.blockEdit());

    c.run({"BEDIT", "Part"});
    for (const char* name : {"Part", "Outer"}) {
        c.run({"INSERT", name});
        EXPECT_EQ(c.lines.back(), "Block \"Part\" references itself.");
        c.feed("Other");
        c.processor.cancel();
    }
    // What comes in by another way is found out at the end.
    c.add(BlockReferenceEntity("Outer", {0, 0}));
    c.run({"BCLOSE", ""});
    EXPECT_EQ(c.lines.back(), "Block \"Part\" references itself.");
    EXPECT_TRUE(c.document.blockEdit());
    EXPECT_EQ(contents().size(), 2u);
    c.run({"ERASE", "L", "", "BCLOSE", "S"});
    EXPECT_FALSE(c.document.blockEdit());

    // A layer that only the editor's contents are on is in use; a new drawing ends the editor.
    c.run({"-LAYER", "M", "Fresh", "", "BEDIT", "Part", "CIRCLE", "0,0", "1", "-LAYER", "S", "0", ""});
    c.run({"-PURGE", "LA", "*", "N"});
    EXPECT_NE(c.drawing().layers.find("Fresh"), nullptr);
    c.document.setDrawing(std::make_unique<engine::Drawing>());
    EXPECT_EQ(c.run({"BCLOSE"}), Lines{"Not in the block editor."});
}

TEST_F(BlockEditor, ParametersAndActionsChangeReferences) {
    for (const char* name : {"BPARAMETER", "BACTION", "BACTIONTOOL", "BVSTATE", "BLOOKUPTABLE"})
        EXPECT_EQ(c.run({name}), Lines{std::string(name) + " is allowed in the block editor only."});
    c.run({"BEDIT", "Part"});
    c.run({"BPARAMETER", "L", "N", "Length", "V", "I", "5", "5", "100", "0,0", "10,0", "5,5"});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.lastStep(), "BPARAMETER");
    c.run({"BACTION", "9,0"});
    EXPECT_EQ(c.prompt(), "Enter action type [Array/Move/Scale/sTretch]:");
    c.run({"T", "", "8,-2", "12,2", "5,0", ""});
    EXPECT_TRUE(c.idle());
    c.run({"BPARAMETER", "F", "0,0", "0,1", ""});
    c.run({"BACTION", "Flip state1", "5,0", ""});
    c.run({"BPARAMETER", "R", "0,0", "5", "", ""});
    c.run({"BACTIONTOOL", "R", "Flip state1"});
    EXPECT_NE(c.lines.back().find("cannot have such an action"), std::string::npos);
    c.run({"Angle1", "ALL", ""});
    ASSERT_EQ(c.drawing().editedBlock()->dynActions.size(), 3u);
    // Erasing and drawing in front of what actions name does not confuse them.
    c.run({"LINE", "0,-5", "1,-5", ""});
    c.run({"ERASE", "0,22", ""});
    c.run({"BCLOSE", ""});
    ASSERT_TRUE(block().isDynamic);
    EXPECT_EQ(block().dynActions[0].affectedEntityIndices, std::vector<std::int32_t>{0});
    EXPECT_EQ(block().dynActions[2].affectedEntityIndices, std::vector<std::int32_t>{0});

    c.run({"BPROPERTIES", "505,0", "Length", "much"});
    EXPECT_EQ(c.lines.back(), "Invalid value.");
    c.run({"38", "?", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.lines[c.lines.size() - 3], "  \"Length\" = 40");
    EXPECT_NEAR(box().max.x, 540.0, 1e-9);
    c.run({"BPROPERTIES", "505,0", "Flip state1", "1", "X"});
    EXPECT_NEAR(box().min.x, 460.0, 1e-9);
    c.run({"BPROPERTIES", "470,0", "Angle1", "-90", "X"});
    EXPECT_NEAR(box().min.y, -40.0, 1e-9);  // turned down, and mirrored at the y axis it stays there
    c.feed("U");
    EXPECT_NEAR(box().min.x, 460.0, 1e-9);
    // Exploding gives what is shown.
    c.run({"EXPLODE", "470,0", ""});
    bool found = false;
    for (const engine::Entity* entity : c.entities())
        if (const auto* line = dynamic_cast<const LineEntity*>(entity))
            found = found || std::abs(std::min(line->start.x, line->end.x) - 460.0) < 1e-9;
    EXPECT_TRUE(found);

    // Without its parameter there is nothing to set.
    c.run({"BEDIT", "Part", "BPARAMETER", "D", "Length", "BCLOSE", ""});
    ASSERT_EQ(block().dynActions.size(), 2u);
    EXPECT_EQ(block().dynActions[0].parameterIndex, 0);
}

TEST_F(BlockEditor, EveryTypeOfParameter) {
    c.run({"BEDIT", "Part"});
    c.run({"BPARAMETER", "A", "0,0", "", "T", "1,0"});
    c.run({"BPARAMETER", "B", "10,0"});
    EXPECT_EQ(c.run({"BPARAMETER", "B"}), Lines{"The block has a base point parameter already."});
    c.run({"BPARAMETER", "O", "10,0", "10,5"});
    c.run({"BPARAMETER", "P", "0,0", "0,0", "10,0", ""});
    c.run({"BPARAMETER", "XY", "N", "Position1 X", "N", "Area", "0,0", "10,20"});
    c.run({"BPARAMETER", "K", "P", "N", "3,3"});
    const auto& all = c.drawing().editedBlock()->dynParams;
    ASSERT_EQ(all.size(), 6u);
    EXPECT_EQ(all[0].constraint, 1);
    EXPECT_EQ(all[3].name, "Distance1");
    EXPECT_EQ(all[4].name, "Area");
    EXPECT_FALSE(all[5].showProperties);
    c.run({"BACTION", "Area", "A", "ALL", "", "30", "15"});
    ASSERT_EQ(c.drawing().editedBlock()->dynActions.size(), 1u);
    EXPECT_EQ(c.drawing().editedBlock()->dynActions[0].arrayRowSpacing, 30.0);
    c.run({"BACTION", "Distance1", "P", "", "CP", "8,-1", "12,-1", "12,1", "", "ALL", ""});
    EXPECT_EQ(c.drawing().editedBlock()->dynActions.back().stretchFrame.size(), 3u);
    c.run({"U", "BACTION", "Lookup1"});
    EXPECT_EQ(c.drawing().editedBlock()->dynActions.back().type, "Lookup");
    c.run({"BCLOSE", ""});
    // The base point is the parameter's: the contents stand at it.
    EXPECT_EQ(block().base, (Vector2{10, 0}));
    EXPECT_NEAR(box().max.x, 500.0, 1e-9);
}

TEST_F(BlockEditor, VisibilityStates) {
    c.run({"BEDIT", "Part"});
    EXPECT_NE(c.run({"BVSTATE"}).back().find("no visibility parameter"), std::string::npos);
    c.run({"BPARAMETER", "V", "0,0"});
    c.run({"BVSTATE", "N", "VisibilityState0"});
    EXPECT_EQ(c.lines.back(), "Visibility state \"VisibilityState0\" already exists.");
    c.run({"Empty", "H"});
    EXPECT_EQ(reach(), 0u);
    // What is drawn belongs to the state shown.
    c.run({"CIRCLE", "0,0", "50"});
    c.run({"BVSTATE", "SH", "5,0", ""});
    EXPECT_EQ(reach(), 2u);
    c.run({"BVSTATE", "S", "visibilitystate0"});
    EXPECT_EQ(reach(), 2u);
    c.run({"BVSTATE", "H", "0,22", ""});
    c.run({"BVSTATE", "R", "VisibilityState0", "Plain"});
    c.feed("U");
    EXPECT_EQ(c.document.blockEdit()->state, "VisibilityState0");
    c.feed("REDO");
    c.run({"BVSTATE", "N", "Third", "", "BVSTATE", "D", "Third"});
    c.run({"BCLOSE", ""});
    ASSERT_EQ(block().visibilityStates.size(), 2u);
    EXPECT_EQ(block().visibilityStates[0].name, "Plain");
    EXPECT_EQ(block().visibilityStates[0].visibleEntityIndices, std::vector<std::int32_t>{0});
    EXPECT_EQ(block().visibilityStates[1].visibleEntityIndices, (std::vector<std::int32_t>{0, 2}));
    for (const engine::Entity* entity : contents()) EXPECT_TRUE(entity->visible);
    EXPECT_NEAR(box().max.y, 0.0, 1e-9);
    c.run({"BPROPERTIES", "505,0", "Visibility1", "empty", ""});
    EXPECT_NEAR(box().max.y, 50.0, 1e-9);
    EXPECT_EQ(reference().activeVisibilityState, "Empty");
    // Opened again, the editor shows the initial state.
    c.run({"BEDIT", "Part"});
    EXPECT_EQ(reach(), 1u);
    c.run({"BVSTATE", "I", "Empty", "BCLOSE", ""});
    EXPECT_EQ(block().dynParams[0].activeVisibility, "Empty");
}

TEST_F(BlockEditor, LookupTables) {
    c.run({"BEDIT", "Part"});
    EXPECT_NE(c.run({"BLOOKUPTABLE"}).back().find("no lookup parameter"), std::string::npos);
    c.run({"BPARAMETER", "L", "0,0", "10,0", ""});
    c.run({"BACTION", "Distance1", "S", "5,0", "", ""});
    c.run({"BPARAMETER", "K", "3,3"});
    c.run({"BLOOKUPTABLE", "", "A", "abc"});
    EXPECT_EQ(c.lines.back(), "Invalid value.");
    c.run({"10", "Short", "A", "30.0", "Long", "A", "5", "Wrong", "D", "3", "R", "", "?", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.lines[c.lines.size() - 2], "2: 30 | Long");
    c.run({"BCLOSE", ""});
    c.run({"BPROPERTIES", "505,0", "Lookup1", "Long", ""});
    EXPECT_NEAR(box().max.x, 530.0, 1e-9);
}

}  // namespace
}  // namespace kova::cmd
