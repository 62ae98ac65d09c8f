// Leaders, multileaders and tolerances.
#include "cmd/draw_harness.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/dimensions/leader.hpp"
#include "engine/entities/dimensions/mleader.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/entities/dimensions/tolerance.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::LeaderEntity;
using engine::MLeaderEntity;
using engine::MTextEntity;
using engine::ToleranceEntity;
using math::Vector2;

TEST(Leader, PointsFormatAndText) {
    DrawConsole c;
    c.run({"LEADER", "0,0", "10,10", "99,99", "U", "20,20", "F", "S", "F", "N", "", "first", "second", ""});
    ASSERT_EQ(c.count(), 2u);
    const auto& leader = dynamic_cast<LeaderEntity&>(*c.entities()[0]);
    const auto& text = c.last<MTextEntity>();
    expectPoints(leader.vertices, {{0, 0}, {10, 10}, {20, 20}});
    EXPECT_TRUE(leader.splined);
    EXPECT_FALSE(leader.hasArrow);
    EXPECT_TRUE(leader.hookLine);
    EXPECT_EQ(leader.annotationHandle, text.handle());
    EXPECT_FALSE(leader.drawsText());
    EXPECT_EQ(text.content, "first\\Psecond");
    EXPECT_GT(text.position.x, 20);
    EXPECT_EQ(c.lastStep(), "LEADER");
    c.feed("U");
    EXPECT_EQ(c.count(), 0u);
    // Flat to the left: no hook, the text on that side.
    c.run({"LEAD", "0,0", "-30,1", "", "left", ""});
    EXPECT_FALSE(dynamic_cast<LeaderEntity&>(*c.entities()[0]).hookLine);
    EXPECT_LE(c.last<MTextEntity>().bounds().max.x, -29.0);
    // Undo keeps the first two points; one point makes nothing.
    EXPECT_EQ(c.run({"LEAD", "0,0", "5,5", "U"}).back(), "Nothing to undo.");
    c.run({"", "", "N"});
    EXPECT_EQ(c.count(), 3u);
    c.run({"LEAD", "0,0", ""});
    EXPECT_EQ(c.count(), 3u);
}

TEST(Leader, OtherAnnotations) {
    DrawConsole c;
    c.run({"LEADER", "0,0", "20,20", "", "", "T", "PO", "%%c0.1", "M", "A(M)", "B", ""});
    const auto& tolerance = c.last<ToleranceEntity>();
    EXPECT_EQ(tolerance.first.symbol, "j");
    EXPECT_EQ(tolerance.first.toleranceMC, "m");
    EXPECT_EQ(tolerance.first.datum1, "A");
    EXPECT_EQ(tolerance.first.datum1MC, "m");
    EXPECT_EQ(tolerance.first.datum2, "B");
    EXPECT_GT(tolerance.insertion.x, 20);
    EXPECT_EQ(dynamic_cast<LeaderEntity&>(*c.entities()[0]).annotationHandle, tolerance.handle());
    // A copy, to the left of its leader.
    c.run({"LEADER", "100,0", "80,20", "", "", "C", "L"});
    EXPECT_LE(c.last<ToleranceEntity>().bounds().max.x, 80.0);
    c.drawing().addBlock("Mark")->entities.append(std::make_unique<engine::LineEntity>(Vector2{0, 0}, Vector2{1, 0}));
    c.run({"LEADER", "0,50", "20,70", "", "", "B", "nosuch", "mark", "", "2", "90"});
    const auto& mark = c.last<engine::BlockReferenceEntity>();
    expectNear(mark.insert, {20, 70});
    EXPECT_DOUBLE_EQ(mark.scaleX, 2);
    EXPECT_NEAR(mark.rotation, math::kPi / 2, 1e-12);
}

TEST(QLeader, SettingsStay) {
    DrawConsole c;
    c.run({"QLEADER", "0,0", "10,10", "20,10", "15", "one", "two", ""});
    const auto& first = dynamic_cast<LeaderEntity&>(*c.entities()[0]);
    EXPECT_EQ(first.vertices.size(), 3u);
    EXPECT_DOUBLE_EQ(c.last<MTextEntity>().width, 15);
    c.run({"LE", "S", "N", "SP", "2", "0,0", "10,10"});
    EXPECT_TRUE(c.idle());
    EXPECT_TRUE(c.last<LeaderEntity>().splined);
    c.run({"LE", "0,50", "10,60"});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.last<LeaderEntity>().vertices.size(), 2u);
}

TEST(MLeader, OrdersAndOptions) {
    DrawConsole c;
    c.run({"MLEADER", "0,0", "20,20", "note", "more", ""});
    const auto& plain = c.only<MLeaderEntity>();
    expectPoints(plain.heads.at(0).vertices, {{0, 0}, {20, 20}});
    EXPECT_EQ(plain.textContent, "note\\Pmore");
    expectNear(plain.connectionPoint(plain.heads[0]),
               plain.landingPoint(plain.heads[0]) + Vector2{plain.effectiveLandingDistance(), 0});
    c.run({"MLD", "L", "20,50", "0,40", "x", ""});
    expectPoints(c.last<MLeaderEntity>().heads.at(0).vertices, {{0, 40}, {20, 50}});
    c.run({"MLD", "C", "50,80", "x", "", "90,60"});  // the arrow lies right of the text
    EXPECT_EQ(c.last<MLeaderEntity>().side(), -1.0);
    expectNear(c.last<MLeaderEntity>().contentPos, {50, 80});
    c.run({"MLD", "", "M", "3", "F", "90", "C", "N", "A", "N", "X", "0,0", "1,30", "30,30"});
    EXPECT_TRUE(c.idle());
    const auto& bent = c.last<MLeaderEntity>();
    expectPoints(bent.heads.at(0).vertices, {{0, 0}, {0, 30}, {30, 30}});
    EXPECT_EQ(bent.contentType, engine::MLeaderContent::None);
    EXPECT_FALSE(bent.hasLanding);
    c.drawing().addBlock("Tag")->entities.append(std::make_unique<engine::LineEntity>(Vector2{0, 0}, Vector2{5, 5}));
    c.run({"MLD", "O", "C", "B", "tag", "", "0,0", "20,-20"});
    EXPECT_EQ(c.last<MLeaderEntity>().blockName, "Tag");
    EXPECT_EQ(c.last<MLeaderEntity>().contentType, engine::MLeaderContent::Block);
}

/// Options are meant for the leader that is being drawn: neither its style nor those drawn before follow them.
TEST(MLeader, OptionsHoldForTheNewLeader) {
    DrawConsole c;
    c.run({"MLEADER", "0,0", "20,20", "first", ""});
    c.run({"MLEADER", "O", "L", "P", "X", "0,50", "20,70", "second", ""});
    ASSERT_TRUE(c.idle()) << c.prompt();
    EXPECT_EQ(c.last<MLeaderEntity>().style().leaderLineType, 2);
    EXPECT_EQ(dynamic_cast<MLeaderEntity&>(*c.entities()[0]).style().leaderLineType, 1);
    EXPECT_EQ(c.drawing().mleaderStyles.find("Standard")->leaderLineType, 1);
    c.run({"MLEADER", "0,90", "20,99", "third", ""});
    EXPECT_FALSE(c.last<MLeaderEntity>().overrides);
    // Matched with another one it looks like that.
    c.run({"MATCHPROP", "10,60", "10,10", ""});
    EXPECT_EQ(dynamic_cast<MLeaderEntity&>(*c.entities()[0]).style().leaderLineType, 2);
}

TEST(MLeader, BlocksAskForTheirValues) {
    DrawConsole c;
    c.run({"ATTDEF", "", "NO", "Item number", "1", "0,0", "2", ""});
    c.run({"CIRCLE", "0,0", "5", "BLOCK", "Balloon", "0,0", "-9,-9", "9,9", ""});
    c.run({"MLEADER", "O", "C", "B", "Balloon", "X", "50,0", "70,20"});
    EXPECT_EQ(c.prompt(), "Item number <1>:");
    c.feed("27");
    ASSERT_TRUE(c.idle()) << c.prompt();
    const auto& balloon = c.last<MLeaderEntity>();
    ASSERT_EQ(balloon.attributes.size(), 1u);
    EXPECT_EQ(balloon.attributes[0].tag, "NO");
    ASSERT_EQ(balloon.placedAttributes().size(), 1u);
    EXPECT_EQ(balloon.placedAttributes()[0].value, "27");
    expectNear(balloon.placedAttributes()[0].position, balloon.contentPos);
    c.run({"EXPLODE", "L", ""});
    ASSERT_EQ(c.last<engine::BlockReferenceEntity>().attributes.size(), 1u);
    EXPECT_EQ(c.last<engine::BlockReferenceEntity>().attributes[0].value, "27");
    c.run({"SETVAR", "ATTREQ", "0", "MLEADER", "O", "C", "B", "Balloon", "X", "50,80", "70,90"});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.last<MLeaderEntity>().placedAttributes().at(0).value, "1");
}

TEST(MLeader, LinesAddedAndRemoved) {
    DrawConsole c;
    c.run({"MLEADER", "0,0", "20,20", "x", "", "MLEADEREDIT", "10,10", "40,0", "20,20", "R", "35,5", "300,300", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.lines.back(), "No leader line found.");
    const auto& leader = c.only<MLeaderEntity>();
    ASSERT_EQ(leader.heads.size(), 1u);
    expectNear(leader.heads[0].vertices[0], {0, 0});
    c.feed("U");
    EXPECT_EQ(c.only<MLeaderEntity>().heads.size(), 2u);
}

TEST(NamedStyles, MadeEditedRenamedDeleted) {
    DrawConsole c;
    c.run({"MLEADERSTYLE", "N", "Notes", "", "MLS", "E", "", "TEXTHEIGHT", "6", "textFrame", "on", "textHeight", "x",
           "name", "leaderColor", "1", "firstSegmentAngle", "45", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.drawing().currentMLeaderStyle, "Notes");
    const auto* style = c.drawing().mleaderStyles.find("Notes");
    ASSERT_NE(style, nullptr);
    EXPECT_DOUBLE_EQ(style->textHeight, 6);
    EXPECT_TRUE(style->textFrame);
    EXPECT_EQ(style->leaderColor, engine::Color::index(1));
    EXPECT_NEAR(style->firstSegmentAngle, math::kPi / 4, 1e-12);
    c.run({"MLEADER", "0,0", "20,20", "x", ""});
    EXPECT_DOUBLE_EQ(c.last<MLeaderEntity>().effectiveTextHeight(), 6);
    c.run({"MLS", "R", "Notes", "Remarks", "MLS", "S", "standard"});
    EXPECT_EQ(c.last<MLeaderEntity>().styleName, "Remarks");
    EXPECT_EQ(c.run({"MLS", "D", "remarks"}).back(), "Style \"remarks\" is in use and stays.");
    c.run({"ERASE", "ALL", "", "MLS", "D", "Remarks"});
    EXPECT_EQ(c.drawing().mleaderStyles.find("Remarks"), nullptr);
    c.run({"TABLESTYLE", "N", "Parts", "", "TS", "E", "", "rows.title.alignment", "2", ""});
    EXPECT_EQ(c.drawing().tableStyles.find("Parts")->title.alignment, 2);
}

TEST(Tolerance, PartsOrText) {
    DrawConsole c;
    c.run({"TOLERANCE", "FL", "0.05", "", "", "10,10"});
    EXPECT_EQ(c.only<ToleranceEntity>().first.symbol, "c");
    EXPECT_EQ(c.only<ToleranceEntity>().first.toleranceValue, "0.05");
    EXPECT_FALSE(c.only<ToleranceEntity>().bounds().is_empty());
    c.run({"TOL", "X", "{\\Fgdt;j}%%v%%c0.1%%vA", "30,10"});
    EXPECT_EQ(c.last<ToleranceEntity>().first.symbol, "j");
    EXPECT_EQ(c.run({"TOL", "", "", "", ""}).back(), "The tolerance is empty.");
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.count(), 2u);
}

}  // namespace
}  // namespace kova::cmd
