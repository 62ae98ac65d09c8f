#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "cmd/draw_harness.hpp"
#include "engine/entities/attribute_definition.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/text.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::AttributeDefinitionEntity;
using engine::BlockReferenceEntity;
using math::Vector2;

/// A block with two attributes and two references of it, the second one on layer "L".
class Attributes : public ::testing::Test {
protected:
    Attributes() {
        engine::Block& block = *c.drawing().addBlock("Bolt");
        block.entities.append(std::make_unique<engine::LineEntity>(Vector2{0, 0}, Vector2{4, 0}));
        block.entities.append(std::make_unique<AttributeDefinitionEntity>(definition("SIZE", "M8", {0, 1})));
        block.entities.append(std::make_unique<AttributeDefinitionEntity>(definition("LEN", "20", {0, 5})));
        engine::setProfileVariable("ATTREQ", 0);
        c.run({"INSERT", "Bolt", "0,0", "", "", ""});
        c.run({"INSERT", "Bolt", "100,0", "2", "", "90"});
        c.run({"LAYER", "N", "L", ""});
        references()[1]->layer = "L";
    }
    static AttributeDefinitionEntity definition(const std::string& tag, const std::string& value, Vector2 at) {
        AttributeDefinitionEntity d;
        d.tag = tag;
        d.defaultValue = value;
        d.insertion = at;
        return d;
    }
    std::vector<BlockReferenceEntity*> references() {
        std::vector<BlockReferenceEntity*> found;
        for (engine::Entity* e : c.entities())
            if (auto* reference = dynamic_cast<BlockReferenceEntity*>(e)) found.push_back(reference);
        return found;
    }
    std::string value(std::size_t reference, std::size_t attribute) {
        return references().at(reference)->attributes.at(attribute).value;
    }
    DrawConsole c;
};

// ATTDEF ---------------------------------------------------------------------------------------------------

TEST(Attdef, AsksForModesTagAndPlace) {
    DrawConsole c;
    EXPECT_EQ(c.feed("ATTDEF").front(),
              "Current attribute modes:  Invisible=N  Constant=N  Verify=N  Preset=N  Lock position=N  Annotative=N  "
              "Multiple lines=N");
    c.feed("I");
    EXPECT_EQ(c.feed("V").front().substr(0, 60), "Current attribute modes:  Invisible=Y  Constant=N  Verify=Y ");
    c.feed("");
    EXPECT_EQ(c.prompt(), "Enter attribute tag name:");
    EXPECT_EQ(c.feed("two words"), Lines{"Invalid attribute tag."});
    c.feed("part-no");
    EXPECT_EQ(c.prompt(), "Enter attribute prompt:");
    c.feed("Number of the part");
    EXPECT_EQ(c.prompt(), "Enter default attribute value:");
    c.feed("A 1");
    EXPECT_EQ(c.prompt(), "Specify start point of text or [Justify/Style]:");
    c.run({"J", "MC", "5,6", "3", "45"});
    EXPECT_TRUE(c.idle());
    const auto& d = c.only<AttributeDefinitionEntity>();
    EXPECT_EQ(d.tag, "PART-NO");
    EXPECT_EQ(d.prompt, "Number of the part");
    EXPECT_EQ(d.defaultValue, "A 1");
    EXPECT_TRUE(d.invisible && d.verify && !d.constant && !d.preset);
    EXPECT_EQ(d.hAlign, engine::kHAlignCenter);
    EXPECT_EQ(d.vAlign, engine::kVAlignMiddle);
    EXPECT_EQ(d.textHeight, 3.0);
    EXPECT_NEAR(d.rotation, math::kPi / 4.0, 1e-12);
    EXPECT_EQ(c.lastStep(), "ATTDEF");
    // The modes stay for the next one, which Enter puts below; a constant attribute has no prompt.
    c.run({"ATTDEF", "I", "V", "C", "", "FIX"});
    EXPECT_EQ(c.prompt(), "Enter attribute value:");
    c.run({"steel", ""});
    EXPECT_TRUE(c.idle());
    const auto& next = c.last<AttributeDefinitionEntity>();
    EXPECT_TRUE(next.constant);
    EXPECT_NEAR(next.insertion.distance_to({5, 6}), 5.0, 1e-9);
    EXPECT_EQ(next.textHeight, 3.0);
}

TEST(Attdef, DefinitionsAreAskedForInTheOrderOfPicks) {
    DrawConsole c;
    for (const char* tag : {"A", "B"}) c.run({"ATTDEF", "", tag, "", "", tag[0] == 'A' ? "0,0" : "50,0", "", ""});
    c.run({"BLOCK", "Two", "0,0", "50,0", "0,0", ""});
    c.run({"INSERT", "Two", "0,0", "", "", ""});
    EXPECT_EQ(c.prompt(), "B:");
    c.run({"second", "first"});
    EXPECT_EQ(c.only<BlockReferenceEntity>().attributes[0].tag, "B");
    EXPECT_EQ(c.only<BlockReferenceEntity>().attributes[1].value, "first");
}

// ATTEDIT --------------------------------------------------------------------------------------------------

TEST_F(Attributes, AreChangedAllAtOnceByFilters) {
    c.run({"ATTEDIT", "N", "N"});
    EXPECT_EQ(c.prompt(), "Enter block name specification <*>:");
    c.run({"", "SIZE"});
    EXPECT_EQ(c.prompt(), "Enter attribute value specification <*>:");
    EXPECT_EQ(c.feed(""), Lines{"2 attributes selected."});
    c.feed("8");
    EXPECT_EQ(c.feed("10"), Lines{"2 attributes changed."});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(value(0, 0), "M10");
    EXPECT_EQ(value(1, 0), "M10");
    EXPECT_EQ(value(1, 1), "20");
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: ATTEDIT"});
    EXPECT_EQ(value(0, 0), "M8");
    // Locked layers keep theirs.
    c.run({"LAYER", "LO", "L", ""});
    EXPECT_EQ(c.run({"ATTEDIT", "N", "N", "", "", "", "2", "3"}).back(), "1 attribute changed.");
    EXPECT_EQ(value(0, 1), "30");
    EXPECT_EQ(value(1, 1), "20");
}

TEST_F(Attributes, AreEditedOneByOne) {
    const Lines lines = c.run({"ATTEDIT", "", "", "LEN", "", "0,0", ""});
    EXPECT_EQ(lines.back(), "LEN = \"20\"");
    EXPECT_EQ(c.prompt(), "Enter an option [Value/Position/Height/Angle/Style/Layer/Color/Next] <N>:");
    c.run({"V", "R", "35 mm", "H", "0.5", "P", "7,8", "A", "90", "L", "Nowhere", "L", "C", "1"});
    c.run({"N"});
    EXPECT_TRUE(c.idle());
    const engine::BlockAttribute& a = references()[0]->attributes[1];
    EXPECT_EQ(a.value, "35 mm");
    EXPECT_EQ(a.textHeight, 0.5);
    expectNear(a.position, {7, 8});
    EXPECT_NEAR(a.rotation, math::kPi / 2.0, 1e-12);
    EXPECT_EQ(a.layer, "L");
    EXPECT_EQ(a.color, engine::Color::index(1));
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: ATTEDIT"});
    EXPECT_EQ(value(0, 1), "20");
}

TEST_F(Attributes, AreAskedForAgainByEattedit) {
    c.run({"EATTEDIT", "0,0"});
    EXPECT_EQ(c.prompt(), "SIZE <M8>:");
    c.run({"M12", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(value(0, 0), "M12");
    EXPECT_EQ(value(0, 1), "20");
}

// ATTSYNC, ATTDISP -----------------------------------------------------------------------------------------

TEST_F(Attributes, FollowTheirDefinitions) {
    engine::Block& block = *c.drawing().findBlock("Bolt");
    block.entities.take(*block.entities.last());  // LEN
    static_cast<AttributeDefinitionEntity*>(block.entities.last())->insertion = {3, 3};
    block.entities.append(std::make_unique<AttributeDefinitionEntity>(definition("MAT", "steel", {0, 9})));
    references()[1]->attributes[0].value = "M6";
    EXPECT_EQ(c.run({"ATTSYNC", "?", ""}), Lines{"  \"Bolt\""});
    EXPECT_EQ(c.run({"N", "Nut"}), Lines{"No matching names found."});
    EXPECT_EQ(c.feed("bolt"), Lines{"2 block references updated."});
    EXPECT_TRUE(c.idle());
    const auto& second = *references()[1];
    ASSERT_EQ(second.attributes.size(), 2u);
    EXPECT_EQ(second.attributes[0].value, "M6");
    expectNear(second.attributes[0].position, {94, 6});
    EXPECT_EQ(second.attributes[0].textHeight, 5.0);
    EXPECT_EQ(second.attributes[1].value, "steel");
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: ATTSYNC"});
    EXPECT_EQ(references()[1]->attributes[1].tag, "LEN");
}

TEST_F(Attributes, GetOneValueByGatte) {
    EXPECT_EQ(c.run({"GATTE", "B", "Bolt", "COLOR"}), Lines{"Attribute \"COLOR\" not found."});
    c.feed("len");
    EXPECT_EQ(c.prompt(), "Number of inserts in drawing = 2  Process all of them? [Yes/No] <Yes>:");
    EXPECT_EQ(c.run({"", "99"}), Lines{"2 attributes changed."});
    EXPECT_EQ(value(0, 1), "99");
    EXPECT_EQ(value(1, 1), "99");
    EXPECT_EQ(value(1, 0), "M8");
}

TEST_F(Attributes, BecomeTextsByBurst) {
    references()[1]->attributes[1].invisible = true;
    EXPECT_EQ(c.run({"BURST", "ALL", ""}), Lines{"2 block references exploded."});
    std::vector<std::string> texts;
    for (const engine::Entity* e : c.entities())
        if (const auto* text = dynamic_cast<const engine::TextEntity*>(e)) texts.push_back(text->content);
    EXPECT_EQ(texts, (std::vector<std::string>{"M8", "20", "M8"}));
    EXPECT_EQ(c.count(), 5u);
    // The second line came from layer "0" of the block.
    EXPECT_EQ(c.entities()[3]->layer, "L");
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: BURST"});
    EXPECT_EQ(c.count(), 2u);
}

// Extraction -----------------------------------------------------------------------------------------------

TEST_F(Attributes, AreExtractedAsText) {
    c.addLine(0, 0, 1, 1);
    EXPECT_EQ(c.feed("EXTRACTDATA"),
              (Lines{"Block,Layer,X,Y,Attributes", "Bolt,0,0,0,SIZE=M8,LEN=20", "Bolt,L,100,0,SIZE=M8,LEN=20",
                     "Type,Count", "Block Reference,2", "Line,1", "Layer,Count", "0,2", "L,1"}));
    EXPECT_EQ(c.run({"BCOUNT", ""}),
              (Lines{"Press ENTER to select all or select objects.", "Block....Count", "Bolt.....2"}));
    const std::string folder = ::testing::TempDir();
    std::ofstream(folder + "kova_columns.txt") << "BL:NAME C008000\r\nSIZE C003000\nLEN N006001\n";
    const Lines lines = c.run({"ATTEXT", "C", folder + "kova_columns.txt", folder + "kova_extract"});
    EXPECT_EQ(lines.back(), "2 records in extract file.");
    std::stringstream text;
    text << std::ifstream(folder + "kova_extract.txt").rdbuf();
    EXPECT_EQ(text.str(), "'Bolt','M8',20.0\r\n'Bolt','M8',20.0\r\n");
    c.run({"ATTEXT", "O", "3,0", "", "S", folder + "kova_columns", folder + "kova_extract"});
    text.str({});
    text << std::ifstream(folder + "kova_extract.txt").rdbuf();
    EXPECT_EQ(text.str(), "Bolt    M8   20.0\r\n");
    std::ofstream(folder + "kova_columns.txt") << "SIZE words\n";
    EXPECT_EQ(c.run({"ATTEXT", "C", folder + "kova_columns.txt"}), Lines{"Invalid template file."});
    EXPECT_TRUE(c.idle());
    std::filesystem::remove(folder + "kova_columns.txt");
    std::filesystem::remove(folder + "kova_extract.txt");
}

TEST_F(Attributes, AreShownByAttdisp) {
    c.feed("ATTDISP");
    EXPECT_EQ(c.prompt(), "Enter attribute visibility setting [Normal/ON/OFF] <Normal>:");
    c.feed("OFF");
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "ATTMODE"), 0);
    EXPECT_NEAR(references()[0]->bounds().max.y, 0.0, 1e-9);
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: ATTDISP"});
    EXPECT_GT(references()[0]->bounds().max.y, 1.0);
}

}  // namespace
}  // namespace kova::cmd
