#include <chrono>

#include "edit/clipboard.hpp"
#include "cmd/draw_harness.hpp"
#include "engine/kinds/all.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::Color;
using engine::Name;
using math::Vector2;

template <class Kind>
Kind& as(Console& c, std::size_t index) {
    return dynamic_cast<Kind&>(*c.entities().at(index));
}

class ClipboardTest : public testing::Test {
protected:
    ClipboardTest() { Clipboard::instance().clear(); }
};

// Clipboard ------------------------------------------------------------------------------------------------

TEST_F(ClipboardTest, CopiesCutsAndPastesInOneDrawing) {
    Console c;
    EXPECT_EQ(c.feed("PASTECLIP"), Lines{"The clipboard is empty."});
    EXPECT_EQ(c.feed("PASTEORIG"), Lines{"The clipboard is empty."});
    c.addLine(10, 20, 13, 24);
    EXPECT_EQ(c.run({"COPYCLIP", "ALL", ""}), Lines{"1 object copied."});
    EXPECT_EQ(c.document.history().undoCount(), 0u);
    c.feed("PASTECLIP");
    EXPECT_EQ(c.prompt(), "Specify insertion point:");
    c.feed("100,100");
    ASSERT_EQ(c.count(), 2u);
    EXPECT_EQ(as<engine::LineEntity>(c, 1).start, Vector2(100, 100));  // the lower left corner was the base
    EXPECT_NE(c.entities()[0]->handle(), c.entities()[1]->handle());
    // P is what came in.
    EXPECT_EQ(c.run({"CUTCLIP", "P", ""}), Lines{"1 object cut."});
    EXPECT_EQ(c.count(), 1u);
    EXPECT_EQ(c.feed("PASTEORIG"), Lines{"1 object pasted."});
    EXPECT_EQ(as<engine::LineEntity>(c, 1).start, Vector2(100, 100));
    c.run({"COPYBASE", "10,20", "ALL", "", "PASTECLIP", "0,0"});
    EXPECT_EQ(c.count(), 4u);
    EXPECT_EQ(as<engine::LineEntity>(c, 3).start, Vector2(90, 80));
    c.feed("UNDO");
    EXPECT_EQ(c.count(), 2u);
}

TEST_F(ClipboardTest, CarriesLayersStylesAndBlocksToAnotherDrawing) {
    {
        Console source;
        source.drawing().layers.ensure("WALLS").color = Color::index(4);
        source.drawing().layers.ensure("UNUSED");
        engine::TextStyle style;
        style.name = "NOTES";
        source.drawing().textStyles.add(style);
        engine::Block* block = source.drawing().addBlock("DOOR");
        block->entities.append(std::make_unique<engine::LineEntity>(Vector2{0, 0}, Vector2{1, 0})).layer = "WALLS";
        source.add(engine::BlockReferenceEntity(Name("DOOR"), Vector2{5, 5}));
        engine::TextEntity text;
        text.textStyle = "NOTES";
        text.content = "x";
        source.add(text);
        source.run({"COPYBASE", "0,0", "ALL", ""});
    }
    // The source is gone; the clipboard has all that is needed.
    Console c;
    c.run({"PASTECLIP", "10,0"});
    ASSERT_EQ(c.count(), 2u);
    EXPECT_EQ(as<engine::BlockReferenceEntity>(c, 0).insert, Vector2(15, 5));
    ASSERT_NE(c.drawing().findBlock("DOOR"), nullptr);
    EXPECT_EQ(c.drawing().findBlock("DOOR")->entities.size(), 1u);
    ASSERT_NE(c.drawing().layers.find("WALLS"), nullptr);
    EXPECT_EQ(c.drawing().layers.find("WALLS")->color, Color::index(4));
    EXPECT_FALSE(c.drawing().layers.contains("UNUSED"));
    EXPECT_TRUE(c.drawing().textStyles.contains("NOTES"));
    EXPECT_EQ(c.document.history().undoCount(), 1u);
    c.feed("UNDO");
    EXPECT_EQ(c.drawing().findBlock("DOOR"), nullptr);
    EXPECT_FALSE(c.drawing().layers.contains("WALLS"));
    // As a block of its own, twice.
    c.run({"PASTEBLOCK", "50,50", "PASTEBLOCK", "60,60"});
    ASSERT_EQ(c.count(), 2u);
    const auto& reference = as<engine::BlockReferenceEntity>(c, 0);
    EXPECT_TRUE(reference.blockName.str().starts_with("A$C"));
    EXPECT_NE(reference.blockName, as<engine::BlockReferenceEntity>(c, 1).blockName);
    ASSERT_NE(reference.block(), nullptr);
    EXPECT_EQ(reference.block()->entities.size(), 2u);
    EXPECT_EQ(reference.bounds().max.x, 56.0);
}

// Groups ---------------------------------------------------------------------------------------------------

TEST(Groups, NamesStandInQuotesAndAreListedByWildCards) {
    Console c;
    c.addLine(0, 0, 0, 10);
    c.addLine(100, 0, 100, 10);
    EXPECT_EQ(c.run({"GROUP", "N", "\"my grp\"", "0,5", ""}).back(), "Group \"my grp\" has been created.");
    c.run({"-GROUP", "C", "\"Other one\"", "", "100,5", ""});
    EXPECT_TRUE(c.drawing().groups.contains("Other one"));
    EXPECT_EQ(c.run({"-GROUP", "REN", "\"Other one\"", "\"Next one\""}), Lines{});
    EXPECT_TRUE(c.drawing().groups.contains("Next one"));
    c.run({"SELECT", "G", "\"MY GRP\"", ""});
    EXPECT_EQ(c.selected(), std::vector{c.entities()[0]->id()});
    // "?" asks which ones, wherever a name is asked for.
    for (const char* way : {"-GROUP ?", "-GROUP A ?", "-GROUP C ?", "GROUP N ?"}) {
        c.feed(way);
        EXPECT_EQ(c.prompt(), "Enter group name(s) to list <*>:") << way;
        EXPECT_EQ(c.feed(""), (Lines{"my grp: 1 object, selectable", "Next one: 1 object, selectable"}));
        c.processor.cancel();
    }
    EXPECT_EQ(c.run({"-GROUP", "?", "n*"}), Lines{"Next one: 1 object, selectable"});
    EXPECT_EQ(c.run({"-GROUP", "?", "z*"}), Lines{"No matching names found."});
}

TEST(Groups, AreMadePickedAsOneAndDissolved) {
    Console c;
    for (int i = 0; i < 4; ++i) c.addLine(i * 100, 0, i * 100, 10);
    c.feed("GROUP");
    EXPECT_EQ(c.prompt(), "Select objects or [Name/Description]:");
    c.run({"N", "pair", "0,5"});
    EXPECT_EQ(c.prompt(), "Select objects or [Name/Description]:");
    EXPECT_EQ(c.run({"100,5", ""}).back(), "Group \"pair\" has been created.");
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.drawing().groups.find("PAIR")->memberHandles.size(), 2u);
    EXPECT_EQ(c.document.history().undoLabel(), "GROUP");
    c.run({"MOVE", "0,5", "", "0,0", "0,1"});
    EXPECT_EQ(as<engine::LineEntity>(c, 1).start, Vector2(100, 1));
    EXPECT_EQ(c.run({"G", "200,5", ""}).back(), "Unnamed group has been created.");
    EXPECT_TRUE(c.drawing().groups.contains("*A1"));

    c.run({"-GROUP", "A", "pair", "300,5", ""});
    EXPECT_EQ(c.drawing().groups.find("pair")->memberHandles.size(), 3u);
    c.run({"-GROUP", "O", "pair", "R"});
    EXPECT_EQ(c.drawing().groups.find("pair")->memberHandles.front(), c.entities()[3]->handle());
    c.run({"-GROUP", "O", "pair", "0", "2"});
    EXPECT_EQ(c.drawing().groups.find("pair")->memberHandles.back(), c.entities()[3]->handle());
    c.run({"-GROUP", "S", "pair", "", "-GROUP", "R", "pair", "300,5", ""});
    EXPECT_FALSE(c.drawing().groups.find("pair")->selectable);
    EXPECT_EQ(c.drawing().groups.find("pair")->memberHandles.size(), 2u);
    c.run({"-GROUP", "REN", "pair", "couple"});
    EXPECT_TRUE(c.drawing().groups.contains("couple"));
    EXPECT_EQ(c.run({"-GROUP", "", "couple"}).back(), "Group \"couple\" already exists.");
    c.run({"third", "the words"});
    EXPECT_EQ(c.prompt(), "Select entities:");
    c.run({"300,5", ""});
    EXPECT_EQ(c.drawing().groups.find("third")->description, "the words");
    EXPECT_EQ(c.run({"UNGROUP", "0,5", ""}), Lines{"1 group dissolved."});
    EXPECT_FALSE(c.drawing().groups.contains("couple"));
    EXPECT_EQ(c.run({"SELECTALL", "UNGROUP"}).back(), "2 groups dissolved.");
    EXPECT_TRUE(c.drawing().groups.empty());
}

// OVERKILL -------------------------------------------------------------------------------------------------

TEST(Overkill, RemovesDuplicatesAndJoinsOverlaps) {
    Console c;
    c.addLine(0, 0, 10, 0);
    c.addLine(10, 0, 0, 0);                             // the same, drawn the other way
    c.addLine(0, 0, 10, 1e-7).color = Color::index(1);  // another colour
    c.add(engine::CircleEntity(Vector2{50, 0}, 5.0));
    c.add(engine::CircleEntity(Vector2{50, 1e-8}, 5.0));
    c.add(engine::CircleEntity(Vector2{50, 0}, 6.0));
    auto lines = c.run({"OVERKILL", "ALL", "", ""});
    EXPECT_EQ(lines, (Lines{"2 duplicate(s) deleted.", "0 overlapping object(s) or segment(s) deleted."}));
    EXPECT_EQ(c.count(), 4u);
    EXPECT_EQ(as<engine::LineEntity>(c, 0).start, Vector2(0, 0));  // the first one stays
    EXPECT_EQ(c.document.history().undoCount(), 1u);
    c.run({"UNDO", "OVERKILL", "ALL", "", "I", "C", ""});
    EXPECT_EQ(c.count(), 3u);

    Console o;
    o.addLine(1e6, 0, 1e6 + 10, 10);
    o.addLine(1e6 + 20, 20, 1e6 + 5, 5);
    o.addLine(1e6 + 20, 20, 1e6 + 30, 30);  // end to end
    o.addLine(1e6 + 31, 31, 1e6 + 40, 40);  // apart
    o.addLine(1e6, 1, 1e6 + 10, 11);        // parallel
    lines = o.run({"OVERKILL", "ALL", "", ""});
    EXPECT_EQ(lines, (Lines{"0 duplicate(s) deleted.", "2 overlapping object(s) or segment(s) deleted."}));
    ASSERT_EQ(o.count(), 3u);
    EXPECT_EQ(as<engine::LineEntity>(o, 0).start, Vector2(1e6, 0));
    expectNear(as<engine::LineEntity>(o, 0).end, {1e6 + 30, 30}, 1e-8);
    o.run({"UNDO", "OVERKILL", "ALL", "", "E", "N", "T", "N", ""});
    EXPECT_EQ(o.count(), 5u);
}

TEST(Overkill, ArcsOfOneCircleAndPolylines) {
    Console c;
    c.add(engine::ArcEntity(Vector2{0, 0}, 5.0, 0.0, 2.0));
    c.add(engine::ArcEntity(Vector2{0, 0}, 5.0, 1.0, 4.0));
    c.run({"OVERKILL", "ALL", "", ""});
    ASSERT_EQ(c.count(), 1u);
    EXPECT_NEAR(as<engine::ArcEntity>(c, 0).sweep(), 4.0, 1e-9);
    c.add(engine::ArcEntity(Vector2{0, 0}, 5.0, 3.5, 0.5));  // closes the turn
    c.run({"OVERKILL", "ALL", "", ""});
    ASSERT_EQ(c.count(), 1u);
    EXPECT_EQ(as<engine::CircleEntity>(c, 0).radius, 5.0);
    c.add(engine::ArcEntity(Vector2{0, 0}, 5.0, 0.0, 2.0));
    c.run({"OVERKILL", "ALL", "", ""});
    EXPECT_EQ(c.count(), 1u);
    c.run({"ERASE", "ALL", ""});
    c.add(engine::PolylineEntity({{0, 0}, {5, 0}, {5, 0}, {10, 0}, {10, 10}, {10, 5}}));
    EXPECT_EQ(c.run({"OVERKILL", "ALL", "", ""}).back(), "2 overlapping object(s) or segment(s) deleted.");
    expectPoints(as<engine::PolylineEntity>(c, 0).vertices, {{0, 0}, {10, 0}, {10, 10}, {10, 5}});
}

TEST(Overkill, GrowsAsNLogN) {
    Console c;
    constexpr int kMany = 50000;
    for (int i = 0; i < kMany; ++i) {
        c.addLine(i, 0, i + 0.5, 0);
        c.add(engine::CircleEntity(Vector2{0, 0}, 1.0 + i));  // all about one centre
    }
    for (int i = 0; i < kMany; i += 10) c.addLine(i, 0, i + 0.5, 0);
    const auto start = std::chrono::steady_clock::now();
    c.run({"OVERKILL", "ALL", "", ""});
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_EQ(c.count(), 2u * kMany);
    EXPECT_LT(seconds, 100.0);
    RecordProperty("seconds", std::to_string(seconds));
}

// SELECTSIMILAR, ADDSELECTED -------------------------------------------------------------------------------

TEST(SelectSimilar, ByKindAndTheChosenProperties) {
    Console c;
    c.addLine(0, 0, 0, 10);
    c.addLine(100, 0, 100, 10).color = Color::index(1);
    c.addLine(200, 0, 200, 10).layer = "OTHER";
    c.add(engine::CircleEntity(Vector2{300, 0}, 5.0));
    for (const char* name : {"A", "B"})
        c.drawing().addBlock(name)->entities.append(std::make_unique<engine::LineEntity>(Vector2{0, 0}, Vector2{0, 9}));
    c.add(engine::BlockReferenceEntity(Name("A"), Vector2{400, 0}));
    c.add(engine::BlockReferenceEntity(Name("B"), Vector2{500, 0}));
    EXPECT_EQ(c.run({"SELECTSIMILAR", "0,5", ""}).back(), "2 found.");
    EXPECT_EQ(c.selected().size(), 2u);
    c.feed("DESELECT");
    c.run({"SELECTSIMILAR", "SE", "1", "0,5", ""});  // the colour instead of the layer
    EXPECT_EQ(c.selected().size(), 2u);
    EXPECT_TRUE(c.document.selection().contains(c.entities()[2]->id()));
    c.run({"DESELECT", "SELECTSIMILAR", "SE", "128", "400,0", ""});
    EXPECT_EQ(c.selected().size(), 1u);
}

TEST(AddSelected, DrawsTheKindInItsPropertiesAndPutsTheCurrentOnesBack) {
    Console c;
    c.drawing().layers.ensure("WALLS");
    auto& line = c.addLine(0, 0, 10, 0);
    line.layer = "WALLS";
    line.color = Color::index(2);
    line.lineweight = 35;
    c.run({"ADDSELECTED", "5,0"});
    EXPECT_EQ(c.prompt(), "Specify first point:");
    c.feed("0,50");
    EXPECT_EQ(c.drawing().currentLayer, "0");
    c.run({"10,50", ""});
    EXPECT_TRUE(c.idle());
    ASSERT_EQ(c.count(), 2u);
    EXPECT_EQ(c.entities()[1]->layer, "WALLS");
    EXPECT_EQ(c.entities()[1]->color, Color::index(2));
    EXPECT_EQ(c.entities()[1]->lineweight, 35);
    EXPECT_EQ(c.drawing().currentColor, Color::byLayer());
    EXPECT_EQ(c.document.history().undoCount(), 1u);
    EXPECT_EQ(c.run({"ADDSELECTED", "900,900"}), Lines{"No object found."});
    c.processor.cancel();
    EXPECT_TRUE(c.idle());
}

}  // namespace
}  // namespace kova::cmd
