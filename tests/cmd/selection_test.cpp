#include "cmd/selection.hpp"

#include <gtest/gtest.h>

#include "cmd/console.hpp"

namespace kova::cmd {
namespace {

using Ids = std::vector<std::uint64_t>;
constexpr const char* kHelp = "Select objects (pick, or ALL), Enter to finish:";

/// Three level lines, 100 long, at y 0, 10 and 20, and a command that selects.
class Selecting : public ::testing::Test {
protected:
    Selecting() {
        for (int i = 0; i < 3; ++i) ids.push_back(c.addLine(0, 10.0 * i, 100, 10.0 * i).id());
        c.feed("ERASE");
    }
    Console c;
    Ids ids;
};

TEST_F(Selecting, ShowsWhatWasFoundAndActsOnEnter) {
    EXPECT_EQ(c.prompt(), "Select objects:");
    c.feed("50,0");
    EXPECT_EQ(c.prompt(), "1 found. Select objects or press Enter:");
    c.feed("50,10");
    EXPECT_EQ(c.selected(), (Ids{ids[0], ids[1]}));
    c.feed("50,10");
    EXPECT_EQ(c.prompt(), "2 found. Select objects or press Enter:");
    EXPECT_EQ(c.feed(""), Lines{"2 objects erased."});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.count(), 1u);
    EXPECT_TRUE(c.selected().empty());
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: ERASE"});
    EXPECT_EQ(c.count(), 3u);
}

TEST_F(Selecting, AllAndEnterRunTheOperationOnce) {
    c.feed("all");
    EXPECT_EQ(c.prompt(), "3 found. Select objects or press Enter:");
    c.feed("");
    EXPECT_EQ(c.count(), 0u);
    EXPECT_EQ(c.document.history().undoCount(), 1u);
    c.run({"ERASE", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.document.history().undoCount(), 1u);
}

TEST_F(Selecting, OtherTextGivesTheLongPrompt) {
    for (const char* text : {"xyz", "12", "win", "al", "1,2,x", "wi"}) {
        c.feed(text);
        EXPECT_EQ(c.prompt(), kHelp) << text;
    }
    EXPECT_TRUE(c.selected().empty());
    c.feed("_all");
    EXPECT_EQ(c.selected().size(), 3u);
}

TEST_F(Selecting, WindowAndCrossingByTwoCorners) {
    c.feed("W");
    EXPECT_EQ(c.prompt(), "Specify first corner:");
    EXPECT_EQ(c.feed("abc"), Lines{"Invalid point."});
    c.feed("-1,-1");
    EXPECT_EQ(c.prompt(), "Specify opposite corner:");
    c.feed("@102,12");
    EXPECT_EQ(c.selected(), (Ids{ids[0], ids[1]}));
    EXPECT_EQ(c.prompt(), "2 found. Select objects or press Enter:");
    c.run({"crossing", "50,15", "51,25"});
    EXPECT_EQ(c.selected().size(), 3u);
    EXPECT_EQ(c.run({"W", "200,200", "300,300"}), Lines{"0 found"});
    // Enter at a corner gives the window up, not the selection.
    c.run({"W", ""});
    EXPECT_FALSE(c.idle());
    EXPECT_EQ(c.prompt(), "3 found. Select objects or press Enter:");
}

TEST_F(Selecting, APointOnEmptySpaceStartsAWindow) {
    c.feed("-5,5");
    EXPECT_EQ(c.prompt(), "Specify opposite corner:");
    c.feed("50,15");
    EXPECT_TRUE(c.selected().empty());
    // From right to left it takes what it crosses.
    c.run({"50,15", "40,5"});
    EXPECT_EQ(c.selected(), Ids{ids[1]});
    c.run({"BOX", "60,25", "55,15"});
    EXPECT_EQ(c.selected(), (Ids{ids[1], ids[2]}));
}

TEST_F(Selecting, PolygonsAndFence) {
    c.feed("WP");
    EXPECT_EQ(c.prompt(), "First polygon point:");
    c.run({"-5,-5", "105,-5", "9,9"});
    EXPECT_EQ(c.prompt(), "Specify endpoint of line or [Undo]:");
    c.run({"U", "105,15", "-5,15", ""});
    EXPECT_EQ(c.selected(), (Ids{ids[0], ids[1]}));
    c.run({"R", "CP", "40,5", "60,5", "50,12", ""});
    EXPECT_EQ(c.selected(), Ids{ids[0]});
    EXPECT_EQ(c.prompt(), "Remove objects:");
    c.run({"A", "F", "50,19", "50,21", ""});
    EXPECT_EQ(c.selected(), (Ids{ids[0], ids[2]}));
    // Too few points select nothing.
    EXPECT_EQ(c.run({"F", "1,1", ""}), Lines{"0 found"});
    EXPECT_EQ(c.run({"WP", "1,1", "2,2", ""}), Lines{"0 found"});
}

TEST_F(Selecting, LastPreviousRemoveAddUndo) {
    EXPECT_EQ(c.feed("P"), Lines{"No previous selection set."});
    c.feed("L");
    EXPECT_EQ(c.selected(), Ids{ids[2]});
    EXPECT_EQ(c.run({"R", "L"}), Lines{"1 removed, 0 total"});
    EXPECT_EQ(c.prompt(), "Remove objects:");
    c.feed("U");
    EXPECT_EQ(c.selected(), Ids{ids[2]});
    c.feed("U");
    EXPECT_TRUE(c.selected().empty());
    EXPECT_EQ(c.feed("U"), Lines{"Nothing to undo."});
    c.run({"A", "ALL", "U"});
    EXPECT_TRUE(c.selected().empty());
    c.run({"50,0", "50,20", ""});
    // The erased ones are gone, so that the previous set is what is left of it.
    EXPECT_EQ(c.run({"ERASE", "P"}), Lines{"No previous selection set."});
    c.run({"", "UNDO", "ERASE", "P"});
    EXPECT_EQ(c.selected(), (Ids{ids[0], ids[2]}));
    c.run({"R", "ALL", ""});
    EXPECT_EQ(c.count(), 3u);
}

TEST_F(Selecting, SingleEndsAfterOnePickAndGroupsAreTakenWhole) {
    c.run({"SI", "50,10"});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.count(), 2u);
    engine::Group group;
    group.name = "Pair";
    for (const std::size_t i : {0, 2}) group.memberHandles.push_back(c.drawing().findById(ids[i])->handle());
    c.drawing().groups.add(group);
    c.run({"ERASE", "G", "None"});
    EXPECT_EQ(c.lines.back(), "Invalid group name.");
    c.feed("pair");
    EXPECT_EQ(c.selected(), (Ids{ids[0], ids[2]}));
    c.run({"R", "G", "pair", "A"});
    EXPECT_TRUE(c.selected().empty());
    // One pick takes the whole group, unless picks are set to single objects.
    c.feed("50,20");
    EXPECT_EQ(c.selected().size(), 2u);
    c.run({"", "UNDO", "PICKSTYLE 0", "ERASE", "50,20"});
    EXPECT_EQ(c.selected(), Ids{ids[2]});
}

TEST_F(Selecting, CancelKeepsTheDrawingAndClearsTheSelection) {
    c.run({"ALL"});
    EXPECT_TRUE(c.processor.cancel());
    EXPECT_TRUE(c.idle());
    EXPECT_FALSE(c.processor.cancel());
    EXPECT_EQ(c.count(), 3u);
    EXPECT_TRUE(c.selected().empty());
}

TEST_F(Selecting, OneShotsBesideItRefreshThePrompt) {
    c.feed("'SELECTALL");
    EXPECT_EQ(c.prompt(), "3 found. Select objects or press Enter:");
    c.feed("'DESELECT");
    EXPECT_EQ(c.prompt(), "Select objects:");
    EXPECT_EQ(c.feed("'ERASE"), Lines{"No objects selected."});
    EXPECT_EQ(c.count(), 3u);
}

TEST(SelectCommands, SelectKeepsItsSelectionForTheNextCommand) {
    Console c;
    const auto a = c.addLine(0, 0, 100, 0).id();
    const auto b = c.addLine(0, 10, 100, 10).id();
    c.feed("SELECT");
    EXPECT_EQ(c.prompt(), "Select objects:");
    c.feed("50,0");
    EXPECT_EQ(c.prompt(), "1 object(s) selected. Pick more or press Enter:");
    c.feed("nonsense");
    EXPECT_EQ(c.prompt(), kHelp);
    c.run({"50,10", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.selected(), (Ids{a, b}));
    EXPECT_EQ(c.feed("SELECT").size(), 0u);
    EXPECT_EQ(c.prompt(), "2 object(s) selected. Pick more or press Enter:");
    c.run({"R", "L", ""});
    EXPECT_EQ(c.selected(), Ids{a});
    // ERASE acts at once on what is selected.
    EXPECT_EQ(c.feed("E"), Lines{"1 object erased."});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.count(), 1u);
    EXPECT_EQ(c.feed("SELECTALL"), Lines{"1 found."});
    c.feed("DESELECT");
    EXPECT_EQ(c.feed("SELECTLAST"), Lines{"1 found."});
    c.feed("ERASE");
    EXPECT_EQ(c.count(), 0u);
    EXPECT_EQ(c.feed("SELECTLAST"), Lines{"0 found."});
    EXPECT_EQ(c.feed("OOPS"), Lines{"1 object restored."});
}

TEST(SelectCommands, OopsBringsBackTheLastRemovalOnce) {
    Console c;
    EXPECT_EQ(c.feed("OOPS"), Lines{"Nothing to restore."});
    const auto kept = c.addLine(0, 0, 1, 0).handle();
    const auto gone = c.addLine(0, 5, 1, 5).handle();
    c.run({"SELECTLAST", "ERASE", "LINE 2,2 3,3", ""});
    EXPECT_EQ(c.feed("OOPS"), Lines{"1 object restored."});
    EXPECT_EQ(c.count(), 3u);
    EXPECT_NE(c.drawing().findByHandle(gone), nullptr);
    EXPECT_NE(c.drawing().findByHandle(kept), nullptr);
    EXPECT_EQ(c.feed("OOPS"), Lines{"Nothing to restore."});
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: OOPS"});
    EXPECT_EQ(c.count(), 2u);
    EXPECT_EQ(c.feed("OOPS"), Lines{"1 object restored."});
    // An undone removal leaves nothing to bring back.
    c.run({"UNDO 3"});
    EXPECT_EQ(c.count(), 2u);
    EXPECT_EQ(c.feed("OOPS"), Lines{"Nothing to restore."});
}

}  // namespace
}  // namespace kova::cmd
