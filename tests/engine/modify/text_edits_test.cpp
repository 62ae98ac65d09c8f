#include <gtest/gtest.h>

#include "engine/model/drawing.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/entities/text.hpp"
#include "engine/modify/text_content.hpp"
#include "engine/modify/text_placing.hpp"
#include "math/angles.hpp"

namespace kova::engine {
namespace {

using math::Vector2;

template <class Kind>
Kind& add(Drawing& drawing, Kind entity) {
    return static_cast<Kind&>(drawing.modelSpace().append(std::make_unique<Kind>(std::move(entity))));
}

void expectSameBox(const Entity& entity, const std::array<Vector2, 4>& before) {
    const auto after = letterBox(entity);
    ASSERT_TRUE(after.has_value());
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR((*after)[i].x, before[i].x, 1e-6);
        EXPECT_NEAR((*after)[i].y, before[i].y, 1e-6);
    }
}

TEST(TextPlacing, JustifyingMovesNoLine) {
    Drawing drawing;
    for (const std::int32_t generation : {0, 2, 4})
        for (const double x : {3.0, 1e7}) {
            TextEntity model;
            model.content = "Agj %%c20";
            model.position = {x, -2.0};
            model.rotation = 0.7;
            model.oblique = 0.2;
            model.widthFactor = 0.8;
            model.generation = generation;
            TextEntity& text = add(drawing, model);
            const auto before = *letterBox(text);
            // From every justification to the next, the two between points among them.
            for (std::int32_t h = 0; h <= 5; ++h)
                for (std::int32_t v = 0; v <= 3; ++v) {
                    SCOPED_TRACE(testing::Message() << generation << ' ' << x << ' ' << h << ' ' << v);
                    justifyText(text, h, v);
                    EXPECT_EQ(text.hAlign, h);
                    EXPECT_EQ(text.hasSecondPoint(), h == kHAlignAligned || h == kHAlignFit);
                    expectSameBox(text, before);
                }
        }
}

TEST(TextPlacing, MultilineTextKeepsItsBox) {
    Drawing drawing;
    MTextEntity model;
    model.content = "one two\\Pthree";
    model.position = {10, 20};
    model.width = 40;
    MTextEntity& text = add(drawing, model);
    const auto frame = text.box();
    justifyText(text, kHAlignRight, kVAlignBottom);
    EXPECT_EQ(text.attachment, kAttachBottomRight);
    EXPECT_NEAR(text.position.x, 50, 1e-9);
    EXPECT_NEAR(text.box()[0].y, frame[0].y, 1e-9);
    justifyText(text, kHAlignCenter, kVAlignBaseline);  // keeps the row
    EXPECT_EQ(text.attachment, kAttachBottomCenter);
    EXPECT_NEAR(text.position.x, 30, 1e-9);
}

TEST(TextPlacing, ScalingFittingTurning) {
    Drawing drawing;
    TextEntity model;
    model.content = "HELLO";
    model.position = {5, 5};
    model.elevation = 3;
    TextEntity& text = add(drawing, model);
    scaleText(text, 2.0, textAnchorAs(text, kHAlignRight, kVAlignBaseline));
    EXPECT_DOUBLE_EQ(text.height, 5);
    EXPECT_DOUBLE_EQ(text.elevation, 3);
    EXPECT_LT(text.position.x, 5);

    EXPECT_FALSE(fitTextLine(text, {0, 0}, {-5, 0}));
    EXPECT_TRUE(fitTextLine(text, {1, 2}, {31, 40}));  // along the text's own direction
    const auto box = *letterBox(text);
    EXPECT_NEAR(box[0].x, 1, 1e-9);
    EXPECT_NEAR(box[1].x, 31, 1e-9);
    EXPECT_DOUBLE_EQ(text.rotation, 0);

    for (const auto& [degrees, turned] :
         {std::pair{90.0, false}, {91.0, true}, {180.0, true}, {270.0, true}, {271.0, false}, {-45.0, false}}) {
        text.rotation = math::toRadians(degrees);
        EXPECT_EQ(readsUpsideDown(text), turned) << degrees;
    }
    text.rotation = math::kPi;
    const auto before = *letterBox(text);
    turnAround(text);
    EXPECT_FALSE(readsUpsideDown(text));
    const auto after = *letterBox(text);
    EXPECT_NEAR((after[0] - before[2]).length(), 0, 1e-9);
}

TEST(TextPlacing, NothingToHold) {
    Drawing drawing;
    TextEntity& empty = add(drawing, TextEntity());
    EXPECT_FALSE(letterBox(empty).has_value());
    justifyText(empty, kHAlignFit, kVAlignBaseline);
    EXPECT_FALSE(fitTextLine(empty, {0, 0}, {1, 0}));
    TextEntity& bad = add(drawing, TextEntity());
    bad.content = "x";
    bad.position = {std::numeric_limits<double>::quiet_NaN(), 0};
    EXPECT_FALSE(letterBox(bad).has_value());
    justifyText(bad, kHAlignRight, kVAlignTop);
    turnAround(bad);
}

TEST(TextContent, CaseKeepsCodes) {
    EXPECT_EQ(withCase("%%c20 bore %%uhole%%u", false, LetterCase::Upper), "%%c20 BORE %%uHOLE%%u");
    EXPECT_EQ(withCase("{\\fArial|b1;first \\H2x;LINE\\Psecond}", true, LetterCase::Upper),
              "{\\fArial|b1;FIRST \\H2x;LINE\\PSECOND}");
    EXPECT_EQ(withCase("{\\fArial|b1;first} LINE. next ONE", true, LetterCase::Sentence),
              "{\\fArial|b1;First} line. Next one");
    EXPECT_EQ(withCase("don't STOP-me \xc3\xa4rger", false, LetterCase::Title), "Don't Stop-Me \xc3\x84rger");
    EXPECT_EQ(withCase("aBc", false, LetterCase::Toggle), "AbC");
    EXPECT_EQ(withCase("\\U+00e4b", false, LetterCase::Upper), "\\U+00e4B");
    for (const char* broken : {"\\", "{\\H", "%%", "\\S1/2", "\\U+12", "}}{{", "\xff\xfe"})
        withCase(broken, true, LetterCase::Upper);
}

TEST(TextContent, ReplacingAcrossFormats) {
    std::string text = "{\\C1;Ro}{\\C2;om} room \\H2x;ROOM";
    EXPECT_EQ(countOccurrences(text, true, "room"), 3u);
    EXPECT_EQ(replaceOccurrences(text, true, "room", "a{b"), 3u);
    EXPECT_EQ(plainText(text), "a{b a{b a{b");
    EXPECT_EQ(text.find("\\C1;"), 1u);
    std::string line = "%%c20 %%d";
    EXPECT_EQ(countOccurrences(line, false, "c"), 0u);  // part of a code
    EXPECT_EQ(replaceOccurrences(line, false, "\xc2\xb0", " deg"), 1u);
    EXPECT_EQ(line, "%%c20  deg");
    std::string same = "aaa";
    EXPECT_EQ(replaceOccurrences(same, false, "aa", "b"), 1u);
    EXPECT_EQ(same, "ba");
    EXPECT_EQ(countOccurrences("text", false, ""), 0u);
}

}  // namespace
}  // namespace kova::engine
