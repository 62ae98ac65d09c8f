#include <gtest/gtest.h>

#include "cmd/console.hpp"

namespace kova::cmd {
namespace {

using engine::LineEntity;
using math::Vector2;

std::vector<std::pair<Vector2, Vector2>> lines(Console& console) {
    std::vector<std::pair<Vector2, Vector2>> out;
    for (const engine::Entity* e : console.entities())
        if (const auto* line = dynamic_cast<const LineEntity*>(e)) out.emplace_back(line->start, line->end);
    return out;
}

TEST(Line, DrawsFromPointToPointEachAnUndoableStep) {
    Console c;
    c.feed("LINE");
    EXPECT_EQ(c.prompt(), "Specify first point:");
    c.feed("1,1");
    EXPECT_EQ(c.prompt(), "Specify next point or [Close/Undo]:");
    EXPECT_EQ(c.count(), 0u);
    c.run({"@4,0", "@0,3"});
    EXPECT_EQ(c.prompt(), "Specify next point or [Close/Undo]:");
    ASSERT_EQ(c.count(), 2u);
    EXPECT_EQ(lines(c)[1], std::make_pair(Vector2(5, 1), Vector2(5, 4)));
    EXPECT_TRUE(c.feed("").empty());
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.prompt(), "Command:");
    EXPECT_EQ(c.document.history().undoCount(), 2u);
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: LINE"});
    EXPECT_EQ(c.count(), 1u);
}

TEST(Line, ClosesFromThreePointsOn) {
    Console c;
    c.run({"L", "0,0", "10,0", "c"});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.count(), 1u);
    c.run({"L", "0,0", "10,0", "10,10", "Close"});
    EXPECT_TRUE(c.idle());
    ASSERT_EQ(c.count(), 4u);
    EXPECT_EQ(lines(c)[3], std::make_pair(Vector2(10, 10), Vector2(0, 0)));
}

TEST(Line, UndoTakesSegmentsBackButNotTheFirstPoint) {
    Console c;
    c.run({"LINE", "U", "0,0", "U"});
    EXPECT_EQ(c.prompt(), "Specify next point or [Close/Undo]:");
    c.run({"10,0", "20,0", "undo", "10,5"});
    ASSERT_EQ(c.count(), 2u);
    EXPECT_EQ(lines(c)[1], std::make_pair(Vector2(10, 0), Vector2(10, 5)));
    c.run({"u", "u", "u", "@1,0"});
    ASSERT_EQ(c.count(), 1u);
    EXPECT_EQ(lines(c)[0], std::make_pair(Vector2(0, 0), Vector2(1, 0)));
    // The tool's own U is a step of its own: undoing it brings the segment back.
    c.run({"u", "", "UNDO"});
    EXPECT_EQ(c.count(), 1u);
}

TEST(Line, IgnoresWhatIsNoPointOrKeyword) {
    Console c;
    c.run({"LINE", "0,0"});
    for (const char* text : {"cl", "clo", "un", "abc", "@", "<", ",", "1,2,x", " c", "(list 1)"}) {
        EXPECT_TRUE(c.feed(text).empty()) << text;
        EXPECT_EQ(c.prompt(), "Specify next point or [Close/Undo]:") << text;
    }
    EXPECT_EQ(c.count(), 0u);
}

TEST(Line, BareNumbersMeasureTowardsTheOrigin) {
    Console c;
    c.run({"LINE", "10,0", "4", "@3", ""});
    ASSERT_EQ(c.count(), 2u);
    EXPECT_TRUE(lines(c)[0].second.near_equal({6, 0}));
    EXPECT_TRUE(lines(c)[1].second.near_equal({3, 0}));
}

TEST(Line, InlineWordsAnswerThePromptsAndTheRestIsALine) {
    Console c;
    c.feed("LINE 0,0 10,0 10,10 C CIRCLE 5,5 2");
    EXPECT_TRUE(c.idle());
    ASSERT_EQ(c.count(), 4u);
    EXPECT_EQ(c.entities().back()->type(), engine::EntityType::Circle);
    c.feed("line 0,0");
    EXPECT_EQ(c.prompt(), "Specify next point or [Close/Undo]:");
}

TEST(Line, TwoBlanksBetweenInlineWordsAreAnEnter) {
    Console c;
    c.feed("LINE 0,0 10,0  CIRCLE 5,5 2");
    EXPECT_TRUE(c.idle());
    ASSERT_EQ(c.count(), 2u);
    // Enters that are left when the command has ended are no command, and stay where they stand in what follows.
    c.feed("CIRCLE 5,5 3   LINE 0,0 1,1  LINE 0,0 2,2  ");
    EXPECT_EQ(c.count(), 5u);
    EXPECT_FALSE(c.idle());
    // A default; blanks at the ends, tabs and the words of one-shot commands mean nothing more.
    c.run({"", "  DONUT  2 0,10", "", "LINE\t \t0,0 \t3,3", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.count(), 7u);
    EXPECT_EQ(c.feed("UNDO   2").size(), 2u);
}

TEST(Line, SurvivesOneShotCommandsThatTakeItsLinesAway) {
    Console c;
    c.run({"LINE", "0,0", "1,0", "2,0"});
    EXPECT_EQ(c.feed("'UNDO"), Lines{"Undone: LINE"});
    EXPECT_EQ(c.count(), 1u);
    c.run({"U", "U"});
    EXPECT_EQ(c.count(), 0u);
    c.run({"5,5", "6,6"});
    EXPECT_EQ(c.count(), 2u);
    c.run({"'SELECTALL", "'ERASE"});
    EXPECT_EQ(c.count(), 0u);
    c.run({"U", "9,9", "'NEW", "U", "8,8"});
    EXPECT_FALSE(c.idle());
    EXPECT_EQ(c.count(), 1u);
    c.feed("");
    EXPECT_TRUE(c.idle());
}

TEST(Line, TransparentRulesFollowTheKindOfCommand) {
    Console c;
    c.run({"LINE", "0,0"});
    EXPECT_EQ(c.feed("'REGEN"), Lines{"Regenerating model."});
    EXPECT_EQ(c.feed("'ZOOM"), Lines{"'ZOOM: cannot be used transparently."});
    EXPECT_EQ(c.feed("'_line"), Lines{"'_line: cannot be used transparently."});
    EXPECT_EQ(c.feed("'FOO"), Lines{"Unknown command: FOO"});
    EXPECT_TRUE(c.feed("'").empty());
    EXPECT_EQ(c.prompt(), "Specify next point or [Close/Undo]:");
    c.feed("");
    EXPECT_EQ(c.feed("'"), Lines{"Unknown command: '"});
}

TEST(Line, ClicksAddPointsAndCloseExactlyOnTheFirst) {
    Console c;
    c.feed("LINE");
    Tool& tool = *c.processor.tool();
    for (const Vector2& p : {Vector2{0, 0}, Vector2{10, 0}, Vector2{10, 10}}) tool.mousePress(p, kLeftButton);
    tool.mousePress({0, 1e-12}, kLeftButton);
    EXPECT_TRUE(tool.isActive());
    EXPECT_EQ(c.count(), 3u);
    tool.mousePress({0, 0}, kLeftButton);
    EXPECT_FALSE(tool.isActive());
    EXPECT_EQ(c.count(), 4u);
}

TEST(Line, TakesTheCurrentPropertiesAndWorldCoordinates) {
    Console c;
    c.run({"-LAYER", "M", "Walls", "", "COLOR", "red", "UCS", "10,20", "", "LINE", "0,0", "5,0", ""});
    ASSERT_EQ(c.count(), 1u);
    EXPECT_EQ(c.entities()[0]->layer, "Walls");
    EXPECT_EQ(c.entities()[0]->color, engine::Color::index(1));
    EXPECT_EQ(lines(c)[0], std::make_pair(Vector2(10, 20), Vector2(15, 20)));
}

}  // namespace
}  // namespace kova::cmd
