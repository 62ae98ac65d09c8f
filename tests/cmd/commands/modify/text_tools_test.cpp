#include <fstream>

#include "cmd/draw_harness.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/table_entity.hpp"
#include "engine/entities/text.hpp"
#include "engine/entities/wipeout.hpp"
#include "engine/modify/text_placing.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::MTextEntity;
using engine::TextEntity;
using math::Vector2;

TextEntity& addText(Console& c, const std::string& content, Vector2 at, double height = 2.5) {
    TextEntity text;
    text.content = content;
    text.position = at;
    text.height = height;
    return c.add(text);
}

/// An undo may put another object in an entity's place: texts are looked up by their place in the drawing.
TextEntity& textAt(Console& c, std::size_t index) { return dynamic_cast<TextEntity&>(*c.entities().at(index)); }

TEST(ScaleText, HeightFactorMatchAndUndo) {
    DrawConsole c;
    addText(c, "one", {0, 0});
    addText(c, "two", {50, 0}, 5);
    c.run({"SCALETEXT", "ALL", "", "", "4"});
    EXPECT_DOUBLE_EQ(textAt(c, 0).height, 4);
    EXPECT_DOUBLE_EQ(textAt(c, 1).height, 4);
    expectNear(textAt(c, 1).position, {50, 0});
    c.feed("U");
    EXPECT_DOUBLE_EQ(textAt(c, 1).height, 5);
    c.run({"SCALETEXT", "ALL", "", "E", "S", "R", "2", "1"});
    EXPECT_DOUBLE_EQ(textAt(c, 0).height, 1.25);
    EXPECT_DOUBLE_EQ(textAt(c, 1).height, 2.5);
    c.run({"SCALETEXT", "0,0", "", "MC", "M", "50,0"});
    EXPECT_DOUBLE_EQ(textAt(c, 0).height, 2.5);
    EXPECT_LT(textAt(c, 0).position.x, 0);
    EXPECT_EQ(c.run({"SCALETEXT", "ALL", "", "", "0"}).back(), "Invalid value.");
}

TEST(JustifyText, TextsStay) {
    DrawConsole c;
    TextEntity& a = addText(c, "label", {3, 4});
    const auto before = *engine::letterBox(a);
    EXPECT_EQ(c.run({"JUSTIFYTEXT", "ALL", "", "MR"}).back(), "1 object changed.");
    EXPECT_EQ(a.vAlign, engine::kVAlignMiddle);
    const auto after = *engine::letterBox(a);
    expectNear(after[0], before[0]);
    EXPECT_EQ(c.lastStep(), "JUSTIFYTEXT");
}

TEST(TextAlign, ModesAlongALine) {
    DrawConsole c;
    TextEntity& a = addText(c, "a", {0, 0});
    TextEntity& b = addText(c, "b", {10, 3});
    TextEntity& d = addText(c, "d", {30, -2});
    c.run({"TEXTALIGN", "ALL", "", "0,0", "100,0"});
    expectNear(b.position, {10, 0});
    expectNear(d.position, {30, 0});
    c.run({"TA", "O", "D", "ALL", "", "0,0", "0,-40"});
    expectNear(a.position, {0, 0});
    expectNear(b.position, {0, -20});
    expectNear(d.position, {0, -40});
    // A line without a point for the coordinate that is kept.
    const auto said = c.run({"TA", "O", "V", "ALL", "", "P", "0,0", "50,0"});
    EXPECT_EQ(said.back(), "The texts cannot be aligned along that line.");
    c.run({"O", "S", "5", "0,-50"});
    EXPECT_GT(a.position.y, b.position.y);
    EXPECT_TRUE(c.idle());
    EXPECT_NEAR((*engine::letterBox(b))[2].y, a.position.y - 5, 1.0);  // the gap counts from the letters
}

TEST(TextFit, WidthFollows) {
    DrawConsole c;
    addText(c, "wide", {0, 0});
    EXPECT_EQ(c.run({"TEXTFIT", "0,0", "-9,0"}).back(), "The text cannot end there.");
    c.run({"30,7"});
    EXPECT_NEAR((*engine::letterBox(textAt(c, 0)))[1].x, 30, 1e-9);
    c.run({"TEXTFIT", "0,0", "S", "10,10", "20,10"});
    expectNear((*engine::letterBox(textAt(c, 0)))[0], {10, (*engine::letterBox(textAt(c, 0)))[0].y});
    EXPECT_NEAR((*engine::letterBox(textAt(c, 0)))[1].x, 20, 1e-9);
}

TEST(Torient, SelectedElseAll) {
    DrawConsole c;
    TextEntity& a = addText(c, "up", {0, 0});
    TextEntity& b = addText(c, "down", {50, 0});
    b.rotation = math::kPi;
    c.add(TextEntity(b)).layer = "Fixed";
    engine::Layer fixed;
    fixed.name = "Fixed";
    fixed.locked = true;
    c.drawing().layers.add(fixed);
    EXPECT_EQ(c.feed("TORIENT"), Lines{"1 object turned."});
    EXPECT_NEAR(std::cos(b.rotation), 1.0, 1e-12);
    EXPECT_DOUBLE_EQ(a.rotation, 0);
    c.feed("U");
    EXPECT_NEAR(std::cos(textAt(c, 1).rotation), -1.0, 1e-12);
}

TEST(TextMask, BehindTheTextAndGone) {
    DrawConsole c;
    addText(c, "masked", {0, 0});
    c.addLine(-10, 1, 50, 1);
    c.run({"TEXTMASK", "O", "0.5", "0,0", ""});
    ASSERT_EQ(c.count(), 3u);
    const auto all = c.entities();
    ASSERT_EQ(all[0]->type(), engine::EntityType::Wipeout);
    EXPECT_EQ(all[1]->type(), engine::EntityType::Text);
    EXPECT_FALSE(static_cast<engine::WipeoutEntity*>(all[0])->showFrame);
    EXPECT_NEAR(static_cast<engine::WipeoutEntity*>(all[0])->vertices[0].x, (*engine::letterBox(*all[1]))[0].x - 1.25,
                1e-9);
    // Masked anew, with another kind: the old one goes.
    c.run({"TEXTMASK", "MA", "S", "0,0", ""});
    EXPECT_EQ(c.count(), 3u);
    EXPECT_EQ(c.drawing().groups.size(), 1u);
    EXPECT_EQ(c.run({"TEXTUNMASK", "0,0", ""}).back(), "1 mask removed.");
    EXPECT_EQ(c.count(), 2u);
    EXPECT_EQ(c.drawing().groups.size(), 0u);
    c.feed("U");
    EXPECT_EQ(c.count(), 3u);
    EXPECT_EQ(c.drawing().groups.size(), 1u);
}

TEST(TCircle, ShapesAndSizes) {
    DrawConsole c;
    const auto box = *engine::letterBox(addText(c, "tag", {0, 0}));
    addText(c, "long tag", {50, 0});
    c.run({"TCIRCLE", "ALL", "", "0", "C", "C"});
    ASSERT_EQ(c.count(), 4u);
    const auto& first = *static_cast<engine::CircleEntity*>(c.entities()[2]);
    EXPECT_DOUBLE_EQ(first.radius, c.last<engine::CircleEntity>().radius);
    expectNear(first.center, (box[0] + box[2]) / 2.0);
    c.run({"TCIRCLE", "0,0", "", "1", "R", "V"});
    const auto& frame = c.last<engine::PolylineEntity>();
    EXPECT_TRUE(frame.closed);
    expectNear(frame.vertices[0], box[0] - Vector2{2.5, 2.5});
    c.run({"TCIRCLE", "0,0", "", "", "S", "C", "H"});
    EXPECT_TRUE(c.last<engine::PolylineEntity>().hasBulges());
}

TEST(TextLetters, CaseCountAndOneParagraph) {
    DrawConsole c;
    addText(c, "second", {0, -5});
    addText(c, "first", {0, 0});
    c.run({"TCASE", "ALL", "", "T"});
    EXPECT_EQ(static_cast<TextEntity*>(c.entities()[0])->content, "Second");
    c.run({"TCOUNT", "ALL", "", "Y", "10,5", "S"});
    EXPECT_EQ(static_cast<TextEntity*>(c.entities()[0])->content, "Second 15");
    EXPECT_EQ(static_cast<TextEntity*>(c.entities()[1])->content, "First 10");
    c.run({"TCOUNT", "ALL", "", "", "x", "7", "F", "1"});
    EXPECT_EQ(static_cast<TextEntity*>(c.entities()[0])->content, "Second 75");
    c.feed("U");
    c.run({"SELECTALL", "TXT2MTXT"});
    const auto& text = c.only<MTextEntity>();
    EXPECT_EQ(text.content, "First 10 Second 15");
    EXPECT_EQ(text.attachment, engine::kAttachTopLeft);
    c.feed("U");
    EXPECT_EQ(c.count(), 2u);
}

TEST(Find, ListsAndReplaces) {
    DrawConsole c;
    addText(c, "Room 12", {0, 0});
    MTextEntity paragraph;
    paragraph.content = "{\\C1;ro}om\\Pbath ROOM";
    c.add(paragraph);
    const auto found = c.run({"FIND", "room", "", ""});
    ASSERT_EQ(found.size(), 3u);
    EXPECT_TRUE(found[0].starts_with("0, ")) << found[0];
    EXPECT_TRUE(found[0].ends_with(", Room 12")) << found[0];
    EXPECT_EQ(found[2], "Found 3 occurrences in 2 objects.");
    EXPECT_EQ(c.run({"FIND", "room", "Hall", "S"}).back(), "Replaced 3 occurrences in 2 objects.");
    EXPECT_EQ(static_cast<TextEntity*>(c.entities()[0])->content, "Hall 12");
    EXPECT_EQ(c.lastStep(), "FIND");
}

TEST(Spell, RefusedWithoutAList) {
    DrawConsole c;
    addText(c, "Gate vlave M8", {0, 0});
    EXPECT_EQ(c.feed("SPELL").front(),
              "\"Check Spelling\" needs its dialog, which kovacad-cli cannot show; cancelled.");
    EXPECT_TRUE(c.idle());
    const std::string path = testing::TempDir() + "kova_words.txt";
    std::ofstream(path) << "gate\nvalve\n";
    const Lines said{"vlave", "1 unknown word."};
    EXPECT_EQ(c.feed("SPELL " + path), said);
}

TEST(TablEdit, CellByPickOrPlace) {
    DrawConsole c;
    c.run({"TABLE", "3", "2", "0,0", "Title", "."});
    const auto cell = [&](int row, int column) {
        const auto* found = c.only<engine::TableEntity>().cell(row, column);
        return found != nullptr ? found->content : std::string();
    };
    c.run({"TABLEDIT", "1,-1"});
    EXPECT_EQ(c.prompt(), "Enter cell text <Title>:");
    c.feed("New title");
    EXPECT_EQ(cell(0, 0), "New title");
    EXPECT_EQ(c.run({"TABLEDIT", "", "1,-1", "9,9"}).back(), "The table has rows 1 to 4 and columns 1 to 3.");
    c.run({"3,2", "body"});
    EXPECT_EQ(cell(2, 1), "body");
    c.run({"TABLEDIT", "", "L", "1,3", "."});  // the cell is covered by the title
    EXPECT_EQ(cell(0, 0), "");
    c.feed("U");
    EXPECT_EQ(cell(0, 0), "New title");
}

TEST(TablEdit, TableSizedByTwoCorners) {
    DrawConsole c;
    EXPECT_EQ(c.run({"TABLE", "D"}).back(),
              "\"Select a Data Link\" needs its dialog, which kovacad-cli cannot show; cancelled.");
    EXPECT_TRUE(c.idle());
    c.run({"TABLE", "A", "A", "W", "20", "H", "10", "0,0", "81,-49", "."});
    EXPECT_EQ(c.only<engine::TableEntity>().cols, 4);
    EXPECT_EQ(c.only<engine::TableEntity>().rows, 5);  // three of data below title and header
}

TEST(TextLetters, DynamicColumns) {
    DrawConsole c;
    c.run({"MTEXT", "0,0", "C", "D", "30", "5", "20", "W", "100", "words", ""});
    const auto& text = c.only<MTextEntity>();
    EXPECT_EQ(text.columns.type, 2);
    EXPECT_DOUBLE_EQ(text.columns.gutter, 5);
    EXPECT_DOUBLE_EQ(text.definedHeight, 20);
}

}  // namespace
}  // namespace kova::cmd
