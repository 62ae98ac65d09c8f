#include "cmd/draw_harness.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/entities/text.hpp"
#include "engine/text/text_line.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::MTextEntity;
using engine::TextEntity;
using math::Vector2;

TEST(Text, LinesBelowEachOther) {
    DrawConsole c;
    c.run({"TEXT", "10,20", "3", "90", "First line", "  second ", ""});
    const auto all = c.entities();
    ASSERT_EQ(all.size(), 2u);
    const auto& first = *static_cast<TextEntity*>(all[0]);
    const auto& second = *static_cast<TextEntity*>(all[1]);
    EXPECT_EQ(first.content, "First line");
    EXPECT_DOUBLE_EQ(first.height, 3);
    EXPECT_NEAR(first.rotation, math::kPi / 2, 1e-12);
    expectNear(second.position, {15, 20});  // below, as it is read
    // Height and angle stay; Enter at the start goes on below the last line.
    c.run({"DT", "0,0", "", "", "third", ""});
    EXPECT_DOUBLE_EQ(c.last<TextEntity>().height, 3);
    EXPECT_NEAR(c.last<TextEntity>().rotation, math::kPi / 2, 1e-12);
    c.run({"DT", "", "fourth", ""});
    expectNear(c.last<TextEntity>().position, {5, 0});
    EXPECT_EQ(c.count(), 4u);
    c.feed("U");
    EXPECT_EQ(c.count(), 3u);  // a step for each line
}

TEST(Text, InlineTextGoesOnToTheEndOfTheLine) {
    DrawConsole c;
    c.run({"TEXT 0,0 2 0 Ground  floor, plan", ""});
    EXPECT_EQ(c.only<TextEntity>().content, "Ground  floor, plan");
    c.run({"TEXT 0,0 2 0 \"North wall\" second one \"\""});
    EXPECT_TRUE(c.idle());
    ASSERT_EQ(c.count(), 3u);
    EXPECT_EQ(static_cast<TextEntity*>(c.entities()[1])->content, "North wall");
    EXPECT_EQ(c.last<TextEntity>().content, "second one");
    c.run({"-MTEXT 0,0 W 50 All of it", "more", ""});
    EXPECT_EQ(c.last<MTextEntity>().content, "All of it\\Pmore");
}

TEST(Text, Justifications) {
    DrawConsole c;
    c.run({"TEXT", "J", "MC", "5,5", "2", "0", "mid", ""});
    EXPECT_EQ(c.last<TextEntity>().hAlign, engine::kHAlignCenter);
    EXPECT_EQ(c.last<TextEntity>().vAlign, engine::kVAlignMiddle);
    c.run({"TEXT", "R", "5,5", "2", "0", "right", ""});
    EXPECT_EQ(c.last<TextEntity>().hAlign, engine::kHAlignRight);
    // Align asks neither height nor angle, Fit no angle.
    c.run({"TEXT", "J", "A", "0,0", "30,0", "aligned", ""});
    EXPECT_EQ(c.last<TextEntity>().hAlign, engine::kHAlignAligned);
    expectNear(c.last<TextEntity>().fitEnd, {30, 0});
    c.run({"TEXT", "J", "F", "0,0", "0,30", "4", "fit", ""});
    EXPECT_DOUBLE_EQ(c.last<TextEntity>().height, 4);
    EXPECT_TRUE(c.last<TextEntity>().hasSecondPoint());
    EXPECT_EQ(c.count(), 4u);
}

TEST(Text, StylesWithTheirOwnHeight) {
    DrawConsole c;
    engine::TextStyle style;
    style.name = "Notes";
    style.height = 7;
    style.widthFactor = 0.8;
    c.drawing().textStyles.add(style);
    EXPECT_EQ(c.run({"TEXT", "S", "none such"}), Lines{"Text style \"none such\" not found."});
    c.run({"notes", "1,1", "0", "styled", ""});  // no question about the height
    const auto& text = c.only<TextEntity>();
    EXPECT_EQ(text.textStyle, "Notes");
    EXPECT_DOUBLE_EQ(text.height, 7);
    EXPECT_DOUBLE_EQ(text.widthFactor, 0.8);
    EXPECT_EQ(c.drawing().currentTextStyle, "Notes");
}

TEST(Mtext, FrameOptionsAndParagraphs) {
    DrawConsole c;
    c.run({"MTEXT", "0,0", "H", "4", "J", "BR", "L", "E", "1.5x", "60,-20", "One", "two words", ""});
    const auto& text = c.only<MTextEntity>();
    EXPECT_EQ(text.content, "One\\Ptwo words");
    EXPECT_DOUBLE_EQ(text.height, 4);
    EXPECT_DOUBLE_EQ(text.width, 60);
    EXPECT_EQ(text.attachment, engine::kAttachBottomRight);
    expectNear(text.position, {60, -20});
    EXPECT_TRUE(text.lineSpacingExact);
    EXPECT_DOUBLE_EQ(text.lineSpacingFactor, 1.5);
    EXPECT_EQ(c.lastStep(), "MTEXT");
    c.run({"T", "5,5", "R", "90", "W", "40", "turned", ""});
    EXPECT_DOUBLE_EQ(c.last<MTextEntity>().width, 40);
    EXPECT_NEAR(c.last<MTextEntity>().rotation, math::kPi / 2, 1e-12);
    // Nothing typed, or cancelled: no text.
    c.run({"MT", "0,0", "10,10", ""});
    c.run({"MT", "0,0", "10,10", "lost"});
    c.processor.cancel();
    EXPECT_EQ(c.count(), 2u);
}

TEST(Mtext, ColumnsAndSpacingByDistance) {
    DrawConsole c;
    c.run({"MTEXT", "0,0", "H", "3", "C", "S", "2", "30", "5", "40", "L", "", "10", "W", "65", "text", ""});
    const auto& text = c.only<MTextEntity>();
    EXPECT_EQ(text.columns.count, 2);
    EXPECT_DOUBLE_EQ(text.columns.width, 30);
    EXPECT_DOUBLE_EQ(text.lineSpacingFactor, 2.0);
}

}  // namespace
}  // namespace kova::cmd
